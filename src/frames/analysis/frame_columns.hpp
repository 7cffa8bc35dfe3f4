// Frames as columns, wherever they lie.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/frame_batch.hpp"

namespace xlatr {

// The columns of a FrameBatch that are counted, or those of a caller. They stay with their owner.
struct FrameColumns {
  struct Attribute {
    const std::uint32_t* values = nullptr;   // null if no row has it
    const std::uint8_t* validity = nullptr;  // one bit a row; null if every row has it

    [[nodiscard]] bool has(std::size_t row) const {
      return values != nullptr && (validity == nullptr || (validity[row / 8] >> row % 8 & 1U) != 0);
    }
  };

  std::size_t rows = 0;
  const std::int64_t* times = nullptr;
  const std::uint8_t* kinds = nullptr;
  const std::uint16_t* buses = nullptr;
  const std::uint32_t* ids = nullptr;
  const std::uint16_t* flags = nullptr;
  const std::uint16_t* dlcs = nullptr;
  const std::int32_t* dataOffsets = nullptr;
  const std::uint8_t* data = nullptr;
  const std::uint64_t* places = nullptr;  // null: the frames are counted from 1
  Attribute busState = {};
  Attribute txErrors = {};
  Attribute rxErrors = {};
};

[[nodiscard]] FrameColumns columnsOf(const FrameBatch& batch);

}  // namespace xlatr
