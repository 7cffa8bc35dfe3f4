// The rules of the Arrow C data interface, as far as a consumer can see whether a producer keeps them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "xlatr/frames.h"

namespace xlatr::test {

// Collects what is wrong with arrays and their schemas.
class ArrowChecker {
 public:
  // `format` and the children of the schema say what the array must be.
  void check(const ArrowSchema& schema, const ArrowArray& array, const std::string& where = "array") {
    const std::string_view format = schema.format == nullptr ? "" : schema.format;
    require(schema.release != nullptr && array.release != nullptr, where, "is released");
    require(array.length >= 0 && array.offset >= 0, where, "has a negative length or offset");
    require(array.null_count >= -1 && array.null_count <= array.length, where, "has a wrong number of nulls");
    require(array.n_children == schema.n_children, where, "has other children than its schema");
    require((array.dictionary != nullptr) == (schema.dictionary != nullptr), where,
            "has no dictionary, or none is said");
    require(array.n_buffers == buffersOf(format), where, "has a wrong number of buffers");
    if (!wrong_.empty()) {
      return;
    }
    checkBuffers(format, (schema.flags & ARROW_FLAG_NULLABLE) != 0, array, where);
    for (std::int64_t at = 0; at < array.n_children; ++at) {
      const std::string name = where + "." + (schema.children[at]->name == nullptr ? "" : schema.children[at]->name);
      require(array.children[at]->length >= array.length + array.offset, name, "is shorter than its parent");
      check(*schema.children[at], *array.children[at], name);
    }
    if (schema.dictionary != nullptr) {
      check(*schema.dictionary, *array.dictionary, where + " (dictionary)");
    }
  }

  [[nodiscard]] const std::vector<std::string>& wrong() const { return wrong_; }

 private:
  void require(bool holds, const std::string& where, const char* what) {
    if (!holds) {
      wrong_.push_back(where + " " + what);
    }
  }

  static std::int64_t buffersOf(std::string_view format) {
    if (format == "+s") {
      return 1;
    }
    return format == "u" || format == "z" ? 3 : 2;
  }

  static std::size_t widthOf(std::string_view format) {
    switch (format.front()) {
      case 'C':
        return 1;
      case 'S':
        return 2;
      case 'I':
        return 4;
      default:
        return 8;
    }
  }

  void checkBuffers(std::string_view format, bool nullable, const ArrowArray& array, const std::string& where) {
    // Only the validity may be missing, and only where there are no nulls.
    require(array.buffers[0] != nullptr || array.null_count == 0, where, "has nulls and no validity");
    require(nullable || array.null_count == 0, where, "has nulls that its schema forbids");
    for (std::int64_t at = 0; at < array.n_buffers; ++at) {
      require(at == 0 || array.buffers[at] != nullptr, where, "lacks a buffer");
      require(reinterpret_cast<std::uintptr_t>(array.buffers[at]) % 8 == 0, where, "has a buffer that is not aligned");
    }
    if (format == "u" || format == "z") {
      checkOffsets(array, where);
    } else if (format != "+s" && wrong_.empty()) {
      touch(array.buffers[1], static_cast<std::size_t>(array.offset + array.length) * widthOf(format));
    }
    if (array.buffers[0] != nullptr) {
      touch(array.buffers[0], static_cast<std::size_t>(array.offset + array.length + 7) / 8);
    }
  }

  void checkOffsets(const ArrowArray& array, const std::string& where) {
    const auto* const offsets = static_cast<const std::int32_t*>(array.buffers[1]);
    require(offsets[0] >= 0, where, "has a negative offset");
    for (std::int64_t row = array.offset; row < array.offset + array.length; ++row) {
      require(offsets[row + 1] >= offsets[row], where, "has offsets that fall");
    }
    if (wrong_.empty()) {
      touch(array.buffers[2], static_cast<std::size_t>(offsets[array.offset + array.length]));
    }
  }

  // A sanitizer tells if a byte is not there.
  static void touch(const void* bytes, std::size_t count) {
    const volatile auto* const at = static_cast<const volatile unsigned char*>(bytes);
    for (std::size_t index = 0; index < count; ++index) {
      static_cast<void>(at[index]);
    }
  }

  std::vector<std::string> wrong_;
};

}  // namespace xlatr::test
