// The fields of a block's data part, read and written by one description.
//
// A data part is a plain structure with a function that names its fields in the order of the file:
//
//   template <class Fields, class Self>
//   static void describe(Fields& fields, Self& self) {
//     fields.number("dgRecIdSize", self.dgRecIdSize);
//     fields.reserved(7);
//   }
//
// `Fields` is one of the classes below, or whatever else wants to know the fields (a printer of structures); `Self` is
// the structure, const for those that only look at it. The names serve such printers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "formats/mf4/block_failures.hpp"
#include "util/byte_growth.hpp"
#include "util/failures.hpp"
#include "util/little_endian.hpp"

namespace xlatr {

using Bytes = std::vector<std::uint8_t>;

// Takes fields from bytes. Bytes that end too early raise a ConverterProcessingException, kShortBytes; more bytes than
// the fields need, as newer versions of the standard add them at the end, are left alone.
class FieldReader {
 public:
  explicit FieldReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  template <class Number>
  void number(const char* /*name*/, Number& value) {
    value = loadLittle<Number>(take(sizeof(Number)).data());
  }
  // `count` numbers, which may come from the file: nothing is allocated for numbers that are not there.
  template <class Number>
  void array(const char* /*name*/, std::vector<Number>& values, std::uint64_t count) {
    if (count > rest_.size() / sizeof(Number)) {
      throwProcessingFailure(kShortBytes);
    }
    values.resize(static_cast<std::size_t>(count));
    for (Number& value : values) {
      value = loadLittle<Number>(take(sizeof(Number)).data());
    }
  }
  void text(const char* /*name*/, std::span<char> value) {
    const auto bytes = take(value.size());
    std::copy(bytes.begin(), bytes.end(), value.begin());
  }
  // All bytes up to the end.
  void rest(const char* /*name*/, Bytes& value) {
    value.assign(rest_.begin(), rest_.end());
    rest_ = {};
  }
  void reserved(std::size_t count) { static_cast<void>(take(count)); }

 private:
  std::span<const std::uint8_t> take(std::size_t count) {
    if (count > rest_.size()) {
      throwProcessingFailure(kShortBytes);
    }
    const auto taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

  std::span<const std::uint8_t> rest_;
};

// Appends fields to bytes; what is reserved is zero.
class FieldWriter {
 public:
  explicit FieldWriter(Bytes& bytes) : bytes_(bytes) {}

  template <class Number>
  void number(const char* /*name*/, Number value) {
    storeLittle(growBytes(bytes_, sizeof(Number)), value);
  }
  // The count is the one that the file states, which is the number of values.
  template <class Number>
  void array(const char* name, const std::vector<Number>& values, std::uint64_t /*count*/) {
    for (const Number value : values) {
      number(name, value);
    }
  }
  void text(const char* /*name*/, std::span<const char> value) {
    for (const char letter : value) {
      bytes_.push_back(static_cast<std::uint8_t>(letter));
    }
  }
  void rest(const char* /*name*/, const Bytes& value) { appendBytes(bytes_, value); }
  void reserved(std::size_t count) { growBytes(bytes_, count); }

 private:
  Bytes& bytes_;
};

}  // namespace xlatr
