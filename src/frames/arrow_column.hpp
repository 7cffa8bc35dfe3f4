// One column of an Arrow array, whatever its type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "xlatr/frames.h"

namespace xlatr {

// What the values of a column are, by the format strings of the C data interface.
enum class ArrowType : std::uint8_t {
  Int8,
  UInt8,
  Int16,
  UInt16,
  Int32,
  UInt32,
  Int64,
  UInt64,
  Bool,
  Bytes32,     // text or binary with 32-bit offsets
  Bytes64,     // with 64-bit offsets
  BytesView,   // views of 16 bytes
  BytesFixed,  // binary of a fixed width
  List32,      // lists of bytes
  List64,
  ListFixed,
};

// The type of a column, from its schema.
struct ArrowColumnType {
  ArrowType type = ArrowType::Int64;
  std::int64_t unit = 1;                                   // nanoseconds of a duration
  std::int64_t width = 0;                                  // bytes of a value of fixed width
  std::shared_ptr<const ArrowColumnType> dictionary = {};  // of its values; the column itself holds indices then
  std::string name = {};

  // Nothing for a type that can't hold what frames are made of.
  [[nodiscard]] static std::optional<ArrowColumnType> of(const ArrowSchema& schema);

  [[nodiscard]] bool holdsNumbers() const { return dictionary ? dictionary->holdsNumbers() : type <= ArrowType::Bool; }
};

// The values of one array. Rows are counted from the first one of the array around it. The functions raise a
// FrameFailure of a bad argument for what breaks the rules of the interface as far as that can be seen.
class ArrowColumn {
 public:
  // `offset`: of the array around it.
  ArrowColumn(const ArrowColumnType& type, const ArrowArray& array, std::int64_t offset);

  [[nodiscard]] bool isNull(std::size_t row) const;
  // Of a column of numbers; a number above 2^63 - 1 is refused.
  [[nodiscard]] std::int64_t number(std::size_t row) const;
  // Of any other column. Belongs to the array.
  [[nodiscard]] std::span<const std::uint8_t> bytes(std::size_t row) const;
  [[nodiscard]] std::string_view text(std::size_t row) const {
    const auto characters = bytes(row);
    return {reinterpret_cast<const char*>(characters.data()), characters.size()};
  }

 private:
  [[nodiscard]] std::size_t place(std::size_t row) const { return row + offset_; }
  [[nodiscard]] std::int64_t rawNumber(std::size_t place) const;
  [[nodiscard]] std::span<const std::uint8_t> rawBytes(std::size_t place) const;
  [[nodiscard]] std::span<const std::uint8_t> view(std::size_t place) const;
  template <typename Value>
  [[nodiscard]] Value value(std::size_t buffer, std::size_t place) const;
  template <typename Offset>
  [[nodiscard]] std::span<const std::uint8_t> between(std::size_t place, const std::uint8_t* values) const;
  [[nodiscard]] const std::uint8_t* listValues() const;
  [[nodiscard]] std::size_t dictionaryPlace(std::size_t row) const;
  [[noreturn]] void refuse(const char* what) const;

  const ArrowColumnType* type_;
  const ArrowArray* array_;
  std::size_t offset_;
};

}  // namespace xlatr
