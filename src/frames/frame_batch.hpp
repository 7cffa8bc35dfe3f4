// Frames as columns.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "frames/frame.hpp"
#include "util/aligned_allocator.hpp"

namespace xlatr {

// The memory of a column. Starts at an address that Arrow's readers like best.
template <typename Value>
using ColumnBuffer = std::vector<Value, AlignedAllocator<Value, 64>>;
// The same for one that has room for all rows from the beginning: what nobody fills costs no memory.
template <typename Value>
using UnsetColumnBuffer = std::vector<Value, UnsetAllocator<Value, 64>>;

// One bit a row, the lowest bit of a byte first (Arrow columnar format, "Validity bitmaps").
class RowBits {
 public:
  [[nodiscard]] bool at(std::size_t row) const { return (bytes_[row / 8] >> row % 8 & 1U) != 0; }
  void append(std::size_t row, bool value) {
    if (row % 8 == 0) {
      bytes_.push_back(0);
    }
    bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | unsigned{value} << row % 8);
  }
  void clear() { bytes_.clear(); }
  // Adds rows without the bit until there are as many.
  void grow(std::size_t rows) { bytes_.resize((rows + 7) / 8); }
  // Removes the rows from this one on.
  void shrink(std::size_t rows);
  void set(std::size_t row, bool value) {
    const auto bit = static_cast<std::uint8_t>(1U << row % 8);
    bytes_[row / 8] = static_cast<std::uint8_t>(value ? bytes_[row / 8] | bit : bytes_[row / 8] & ~bit);
  }
  [[nodiscard]] std::span<const std::uint8_t> bytes() const { return bytes_; }

 private:
  ColumnBuffer<std::uint8_t> bytes_;
};

// Up to kCapacity frames, laid out as Arrow lays out arrays (Arrow columnar format 1.x): a column of each field of
// `Frame`. Data and text are bytes with 32-bit offsets, of which there is one more than rows. A batch is used again and
// again: clearing keeps its memory, so that a reader that fills it allocates nothing after the first rounds. One thread
// at a time.
class FrameBatch {
 public:
  static constexpr std::size_t kCapacity = 16384;
  // A batch is full when it has this many bytes of data and text too, so that frames of any size can't make it large.
  static constexpr std::size_t kByteCapacity = std::size_t{4} << 20;
  // Sources cut longer texts, so that the offsets of a batch never come near their limit.
  static constexpr std::size_t kLongestText = 1'000'000;

  FrameBatch();

  // Removes the frames.
  void clear();
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool empty() const { return size_ == 0; }
  [[nodiscard]] bool full() const { return size() >= kCapacity || dataSize_ + text_.size() >= kByteCapacity; }

  // Copies the frame to the end. Whoever fills a batch stops when it is full; a frame that has no row any more raises
  // std::length_error.
  void append(const Frame& frame);

  // The fields of the next rows, for those who fill them column by column.
  struct FreeRows {
    std::int64_t* times;
    std::uint8_t* kinds;
    std::uint16_t* buses;
    std::uint32_t* ids;
    std::uint16_t* flags;
    std::uint16_t* dlcs;
    std::int32_t* dataEnds;  // in all data of the batch
    std::uint64_t* places;
    std::uint8_t* data;
    std::int32_t dataBegin;
  };
  // Room for so many rows, which together have up to `dataSize` bytes of data; std::length_error if they are too many.
  // What is written there counts once appendFilled() is called, and stays where it is until then.
  [[nodiscard]] FreeRows freeRows(std::size_t count, std::size_t dataSize);
  // Adds the rows, of which there is none without a value for each of the fields. They have no text and no attributes.
  void appendFilled(std::size_t count);

  // Keeps the rows that have something else than 0 here, in their order. As many as there are rows.
  void keep(std::span<const std::uint8_t> wanted);

  // Adds to all times; what goes beyond kFarthestNs stays there.
  void shiftTimes(std::int64_t byNs);
  // Gives each frame the bus that stands at the place of its own; the table is as long as there are buses, 65,536.
  void mapBuses(std::span<const std::uint16_t> table);

  // The frame of a row. Its data and text stay until the batch changes.
  [[nodiscard]] Frame at(std::size_t row) const;
  // The same into a frame that was used before, which takes less time than a new one.
  void get(std::size_t row, Frame& frame) const;

  // The columns.
  [[nodiscard]] std::span<const std::int64_t> times() const { return std::span(times_).first(size_); }  // nanoseconds
  [[nodiscard]] std::span<const std::uint8_t> kinds() const { return std::span(kinds_).first(size_); }  // FrameKind
  [[nodiscard]] std::span<const std::uint16_t> buses() const { return std::span(buses_).first(size_); }
  [[nodiscard]] std::span<const std::uint32_t> ids() const { return std::span(ids_).first(size_); }
  [[nodiscard]] std::span<const std::uint16_t> flags() const { return std::span(flags_).first(size_); }
  [[nodiscard]] std::span<const std::uint16_t> dlcs() const { return std::span(dlcs_).first(size_); }
  [[nodiscard]] std::span<const std::int32_t> dataOffsets() const { return std::span(dataOffsets_).first(size_ + 1); }
  [[nodiscard]] std::span<const std::uint8_t> data() const { return std::span(data_).first(dataSize_); }
  [[nodiscard]] std::span<const std::int32_t> textOffsets() const { return std::span(textOffsets_).first(size_ + 1); }
  [[nodiscard]] std::string_view text() const { return {text_.data(), text_.size()}; }
  [[nodiscard]] std::span<const std::uint8_t> textValidity() const { return textValidity_.bytes(); }

  [[nodiscard]] std::span<const std::uint64_t> places() const { return std::span(places_).first(size_); }

  // The attributes that a frame of this batch has, one bit each.
  [[nodiscard]] std::uint32_t attributes() const { return attributes_; }
  // The values of such an attribute, 0 where a row lacks it, and which rows have it.
  [[nodiscard]] std::span<const std::uint32_t> attribute(FrameAttribute attribute) const;
  [[nodiscard]] std::span<const std::uint8_t> attributeValidity(FrameAttribute attribute) const;

 private:
  struct AttributeColumn {
    ColumnBuffer<std::uint32_t> values;
    RowBits validity;

    // Makes it `rows` long; the new ones lack the attribute.
    void fillTo(std::size_t rows);
  };

  void appendAttributes(const FrameAttributes& attributes);
  // The place of so many more bytes after the data.
  [[nodiscard]] std::uint8_t* roomForData(std::size_t count) {
    if (count > data_.size() - dataSize_) {
      growData(count);
    }
    return data_.data() + dataSize_;
  }
  void growData(std::size_t count);

  // The columns of fixed width have kCapacity rows from the beginning, of which `size_` are in use.
  std::size_t size_ = 0;
  UnsetColumnBuffer<std::int64_t> times_;
  UnsetColumnBuffer<std::uint8_t> kinds_;
  UnsetColumnBuffer<std::uint16_t> buses_;
  UnsetColumnBuffer<std::uint32_t> ids_;
  UnsetColumnBuffer<std::uint16_t> flags_;
  UnsetColumnBuffer<std::uint16_t> dlcs_;
  UnsetColumnBuffer<std::int32_t> dataOffsets_;
  UnsetColumnBuffer<std::int32_t> textOffsets_;
  UnsetColumnBuffer<std::uint64_t> places_;
  UnsetColumnBuffer<std::uint8_t> data_;  // the first `dataSize_` bytes of it are in use
  std::size_t dataSize_ = 0;
  ColumnBuffer<char> text_;
  RowBits textValidity_;
  std::uint32_t attributes_ = 0;
  std::array<AttributeColumn, kFrameAttributeCount> attributeColumns_;
};

}  // namespace xlatr
