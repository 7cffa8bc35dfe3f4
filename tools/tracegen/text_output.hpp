// Text on its way out, collected in one buffer and handed on in large pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace tracegen {

// Takes the next piece of the output; the bytes are valid during the call.
using Sink = std::function<void(std::string_view)>;

// Memory stays at one buffer however much is written. What was not handed on yet is lost unless flush() is called: a
// destructor could not report that the sink failed.
class TextOutput {
 public:
  explicit TextOutput(Sink sink);

  void text(std::string_view text);
  void character(char value) { *grow(1) = value; }
  void blanks(std::size_t count);
  // Decimal without fill, or right- or left-aligned with blanks in at least `width` columns.
  void decimal(std::uint64_t value) { decimalRight(value, 0); }
  void decimalRight(std::uint64_t value, std::size_t width);
  void decimalLeft(std::uint64_t value, std::size_t width);
  // Decimal with leading zeros, the lowest `digits` digits of the value.
  void decimalFilled(std::uint64_t value, std::size_t digits);
  // Upper-case hexadecimal with leading zeros, the lowest `digits` digits of the value.
  void hexFilled(std::uint32_t value, std::size_t digits);
  // Each byte as two upper-case hexadecimal digits, joined by `separator`, or by nothing if that is zero.
  void hexBytes(std::span<const std::uint8_t> data, char separator);

  // Hands on what is in the buffer.
  void flush();
  // All bytes so far, those in the buffer included.
  [[nodiscard]] std::uint64_t written() const { return handedOn_ + size_; }

 private:
  // Room for `count` more bytes, at most kLargestPiece, which count as written.
  char* grow(std::size_t count);

  Sink sink_;
  std::vector<char> buffer_;
  std::size_t size_ = 0;
  std::uint64_t handedOn_ = 0;
};

}  // namespace tracegen
