// The numbers that stand for the details of a frame in a record.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "messages/enumerations.hpp"

namespace xlatr {

// Errors are counted from 1: bit, form, stuff; what follows, and 0, is any other. Writers that know nothing of an
// error, or of its position, put this.
inline constexpr std::uint32_t kMdfNoErrorDetail = 255;
// The controllers count the bits of a frame from 3.
inline constexpr std::uint32_t kMdfFirstBitPosition = 3;

// Models of a LIN checksum, a signed number. Those below -1, which is none, are our own.
struct MdfChecksumModel {
  ChecksumType type;
  std::int8_t number;
};
inline constexpr std::int8_t kMdfNoChecksumModel = -1;
inline constexpr std::array kMdfChecksumModels = {
    MdfChecksumModel{ChecksumType::Unknown, -3},
    MdfChecksumModel{ChecksumType::Classic, 0},
    MdfChecksumModel{ChecksumType::Enhanced, 1},
    MdfChecksumModel{ChecksumType::Auto, -2},
};

[[nodiscard]] constexpr std::optional<ChecksumType> checksumTypeOfMdf(std::int64_t number) {
  for (const MdfChecksumModel& model : kMdfChecksumModels) {
    if (model.number == number) {
      return model.type;
    }
  }
  return std::nullopt;
}

}  // namespace xlatr
