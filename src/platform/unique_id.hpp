// Identifiers that no two callers on any machine share.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace xlatr::platform {

// A GUID in its customary fields.
struct UniqueId {
  std::uint32_t data1 = 0;
  std::uint16_t data2 = 0;
  std::uint16_t data3 = 0;
  std::array<std::uint8_t, 8> data4{};

  bool operator==(const UniqueId&) const = default;
};

// A fresh random one (version 4), or nothing if the system has no randomness to give. Safe from any thread.
[[nodiscard]] std::optional<UniqueId> makeUniqueId();

}  // namespace xlatr::platform
