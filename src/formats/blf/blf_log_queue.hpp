// Bytes on their way from one step to the next.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

namespace xlatr::blf_log {

// Bytes are added at the end and taken from the front. The storage grows to the most that was ever held at a time, and
// so does only as much as its user lets it. One thread at a time.
class ByteQueue {
 public:
  [[nodiscard]] std::size_t size() const { return end_ - begin_; }
  [[nodiscard]] bool empty() const { return begin_ == end_; }
  // What is held. Valid until the next call of `room`.
  [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {storage_.get() + begin_, size()}; }

  // Takes `count` bytes, at most all, from the front.
  void drop(std::size_t count) { begin_ += count; }

  // Where `count` more bytes can be written; they count once `add` is told how many were.
  [[nodiscard]] std::span<std::uint8_t> room(std::size_t count) {
    if (capacity_ - end_ < count) {
      makeRoom(count);
    }
    return {storage_.get() + end_, count};
  }
  void add(std::size_t count) { end_ += count; }

 private:
  void makeRoom(std::size_t count) {
    const std::size_t held = size();
    if (capacity_ - held < count) {
      const std::size_t capacity = std::max(held + count, 2 * capacity_);
      auto storage = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
      std::copy_n(storage_.get() + begin_, held, storage.get());
      storage_ = std::move(storage);
      capacity_ = capacity;
    } else {
      std::copy_n(storage_.get() + begin_, held, storage_.get());
    }
    begin_ = 0;
    end_ = held;
  }

  std::unique_ptr<std::uint8_t[]> storage_;
  std::size_t capacity_ = 0;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

// Where the text begins in the bytes; their size where it does not stand.
[[nodiscard]] inline std::size_t findText(std::span<const std::uint8_t> bytes, std::string_view text) {
  const auto found = std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()).find(text);
  return found == std::string_view::npos ? bytes.size() : found;
}

[[nodiscard]] inline bool startsWith(std::span<const std::uint8_t> bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

}  // namespace xlatr::blf_log
