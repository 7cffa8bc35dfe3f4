// The buffer in which a line is rendered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace xlatr {

// Text that is built piece by piece and thrown away as a whole. Its storage only grows, so that rendering a message
// allocates nothing once the longest line has been seen. One thread at a time.
class TextBuffer {
 public:
  void clear() { size_ = 0; }
  [[nodiscard]] bool empty() const { return size_ == 0; }
  [[nodiscard]] std::size_t size() const { return size_; }
  // Valid until the next change.
  [[nodiscard]] std::string_view view() const { return {storage_.get(), size_}; }

  // Makes the text `count` characters longer and returns where they are to be written.
  char* extend(std::size_t count) {
    char* const end = reserve(count);
    size_ += count;
    return end;
  }

  // Returns the end of the text, with room for `count` more characters. What is written there becomes part of the text
  // by calling `extendTo` with its end.
  char* reserve(std::size_t count) {
    if (capacity_ - size_ < count) {
      grow(count);
    }
    return storage_.get() + size_;
  }
  void extendTo(const char* end) { size_ = static_cast<std::size_t>(end - storage_.get()); }

  void append(char character) { *extend(1) = character; }
  // Neither memcpy nor memset may be given the null pointer that an empty text and a fresh buffer have.
  void append(std::string_view text) {
    if (!text.empty()) {
      std::memcpy(extend(text.size()), text.data(), text.size());
    }
  }
  void appendBlanks(std::size_t count) {
    if (count > 0) {
      std::memset(extend(count), ' ', count);
    }
  }

  // The text padded with blanks to `width` characters; longer texts stay whole.
  void appendRight(std::string_view text, std::size_t width) {
    appendBlanks(text.size() < width ? width - text.size() : 0);
    append(text);
  }
  void appendLeft(std::string_view text, std::size_t width) {
    append(text);
    appendBlanks(text.size() < width ? width - text.size() : 0);
  }

 private:
  void grow(std::size_t count);

  std::unique_ptr<char[]> storage_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace xlatr
