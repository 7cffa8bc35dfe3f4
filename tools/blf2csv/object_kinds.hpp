// Which objects become rows, and the cells of such a row.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "blf2csv/remarks.hpp"
#include "formats/blf/blf_log_objects.hpp"

namespace blf2csv {

using xlatr::blf_log::Object;

// The cells of a row that come from the body.
struct Cells {
  std::uint32_t id = 0;
  std::uint16_t channel = 0;  // 1-based
  std::uint32_t flags = 0;
  std::uint16_t flagsExt = 0;
  std::uint8_t ecc = 0;
  std::uint8_t canFdFlags = 0;
  std::uint8_t dir = 0;
  std::uint16_t crc = 0;  // checksum of a LIN frame
  std::uint8_t checksumModel = 0;
  std::span<const std::uint8_t> data;  // points into the object, or at zeros that live for ever
  std::string_view comment;            // why the row is no valid one, in words that live for ever; else empty
};

struct ObjectKind;

// The kind of objects of this type, or null when they have no row.
[[nodiscard]] const ObjectKind* findObjectKind(std::uint32_t type);

// The cells of an object of the kind. An object that is no frame, or whose body is too short for its cells, has none
// but id, channel and comment. What is shorter or longer than it should be is noted in `remarks`.
[[nodiscard]] Cells readCells(const ObjectKind& kind, const Object& object, Remarks& remarks);

}  // namespace blf2csv
