// The arguments of a target that calls the exported functions in any order.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <type_traits>

#include "scratch_folder.hpp"
#include "target.hpp"
#include "xlatr/objects.h"

namespace fuzz {

// Chooses arguments by bytes from the front of an input; by zeros when they are used up. Several arguments of one call
// are taken one after the other before it, since compilers differ in the order in which they work out arguments.
class Arguments {
 public:
  Arguments(std::span<const std::uint8_t> bytes, const ScratchFolder& folder) : bytes_(bytes), folder_(folder) {}

  [[nodiscard]] bool atEnd() const { return bytes_.empty(); }
  [[nodiscard]] const ScratchFolder& folder() const { return folder_; }

  std::uint8_t byte() {
    const auto taken = take(1);
    return taken.empty() ? std::uint8_t{0} : taken.front();
  }
  std::uint16_t word() {
    const std::uint8_t low = byte();
    return static_cast<std::uint16_t>(low | byte() << 8U);
  }
  // One of `count`; only the first 256 can be chosen.
  std::size_t choice(std::size_t count) { return byte() % count; }
  bool flag() { return (byte() & 1U) != 0; }
  // Now and then, for a place that may be null.
  bool isNull() { return byte() == std::numeric_limits<std::uint8_t>::max(); }
  std::span<const std::uint8_t> take(std::size_t count) {
    const auto taken = bytes_.first(std::min(count, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }

  double number() {
    constexpr std::array kNumbers{
        0.0, 1.0, 1.1, 1.2, 2.0, 2.1, 3.0, 4.1, 4.2, 8.1, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()};
    return kNumbers.at(choice(kNumbers.size()));
  }
  // A time of this century, or none.
  double days() { return number() * 10000.0; }
  // One flag, several, or one that no format has.
  TraceFormat format() {
    const std::uint8_t value = byte();
    return value < 8 ? TraceFormat{1} << value : TraceFormat{value} - 8;
  }
  // Null counts as empty. Valid until the next text or path.
  const char* text() {
    const std::uint8_t size = byte();
    const auto bytes = take(size);
    text_.assign(bytes.begin(), bytes.end());
    return size == std::numeric_limits<std::uint8_t>::max() ? nullptr : text_.c_str();
  }
  // A path for readers and writers: the source, a target of any kind, or a place where no file can be; never one
  // outside the folder. Valid until the next text or path.
  const char* path() {
    constexpr std::array kNames{"source.trc", "source.asc", "target",     "target.trc",  "none/target", "source.btrc",
                                "",           "source.mf4", "target.mf4", "source.ltrc", "source.btr",  "source.blf"};
    const std::size_t chosen = choice(kNames.size() + 1);
    if (chosen == kNames.size()) {
      return nullptr;
    }
    const std::string name = kNames.at(chosen);
    text_ = name.empty() ? name : folder_.path(name);
    return text_.c_str();
  }
  // The folder itself. Valid until the next text or path.
  const char* directory() {
    text_ = folder_.path("");
    return text_.c_str();
  }

 private:
  std::span<const std::uint8_t> bytes_;
  const ScratchFolder& folder_;
  std::string text_;
};

// Where a function puts a value, which it may read first; or no such place.
template <typename Value>
class Place {
 public:
  explicit Place(Arguments& arguments) : value_(chosen(arguments)), given_(arguments.flag()) {}

  [[nodiscard]] Value* get() { return given_ ? &value_ : nullptr; }

 private:
  static Value chosen(Arguments& arguments) {
    if constexpr (std::is_floating_point_v<Value>) {
      return arguments.number();
    } else {
      return arguments.byte();
    }
  }

  Value value_;
  const bool given_;
};

// A buffer of any size, or none. A copy in it is always terminated, and nothing is written after the terminator.
class TextBuffer {
 public:
  explicit TextBuffer(Arguments& arguments) : size_(arguments.byte()) { bytes_.fill(kUntouched); }

  [[nodiscard]] char* data() { return isNull() ? nullptr : bytes_.data(); }
  [[nodiscard]] std::uint32_t size() const { return size_; }

  // For a text of this length, which may hold zeros of its own.
  void requireTextOf(std::size_t length) const {
    if (room() == 0) {
      require(bytes_[0] == kUntouched);
      return;
    }
    const std::size_t copied = std::min(length, room() - 1);
    require(bytes_.at(copied) == '\0' && bytes_.at(copied + 1) == kUntouched);
  }
  // For a text whose length no function returns and which holds no zeros.
  void requireText() const { requireTextOf(::strnlen(bytes_.data(), room() == 0 ? 0 : room() - 1)); }

 private:
  static constexpr std::uint32_t kNullBuffer = std::numeric_limits<std::uint8_t>::max();
  static constexpr char kUntouched = '?';

  [[nodiscard]] bool isNull() const { return size_ == kNullBuffer; }
  [[nodiscard]] std::size_t room() const { return isNull() ? 0 : size_; }

  const std::uint32_t size_;
  std::array<char, kNullBuffer + 1> bytes_;
};

}  // namespace fuzz
