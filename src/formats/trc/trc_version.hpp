// The file versions of TRC.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace xlatr {

enum class TrcVersion : std::uint8_t { V1_0, V1_1, V1_2, V1_3, V2_0, V2_1, V3_0 };

inline constexpr std::array kTrcVersionNumbers = {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0};

// The version that a number names; a number that is not exactly one of the known ones names none.
[[nodiscard]] constexpr std::optional<TrcVersion> trcVersion(double number) {
  for (std::size_t index = 0; index < kTrcVersionNumbers.size(); ++index) {
    if (kTrcVersionNumbers[index] == number) {
      return static_cast<TrcVersion>(index);
    }
  }
  return std::nullopt;
}

// Whether lines of the version have the columns that the file's header names.
[[nodiscard]] constexpr bool isColumnBased(TrcVersion version) {
  return version >= TrcVersion::V2_0;
}

}  // namespace xlatr
