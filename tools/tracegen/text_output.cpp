#include "tracegen/text_output.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace tracegen {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::size_t kLargestPiece = std::size_t{16} * 1024;  // the longest payload in hexadecimal fits
constexpr std::string_view kDigits = "0123456789ABCDEF";

using DigitPair = std::array<char, 2>;

constexpr std::array<DigitPair, 256> makeHexPairs() {
  std::array<DigitPair, 256> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {kDigits[value / 16], kDigits[value % 16]};
  }
  return pairs;
}

constexpr std::array<DigitPair, 256> kHexPairs = makeHexPairs();

class DecimalDigits {
 public:
  explicit DecimalDigits(std::uint64_t value)
      : length_(static_cast<std::size_t>(std::to_chars(digits_.data(), digits_.data() + digits_.size(), value).ptr -
                                         digits_.data())) {}
  [[nodiscard]] std::string_view text() const { return {digits_.data(), length_}; }

 private:
  std::array<char, 20> digits_;  // room for the largest value
  std::size_t length_;
};

}  // namespace

TextOutput::TextOutput(Sink sink) : sink_(std::move(sink)), buffer_(kBufferSize) {}

char* TextOutput::grow(std::size_t count) {
  if (size_ + count > buffer_.size()) {
    flush();
  }
  char* const place = buffer_.data() + size_;
  size_ += count;
  return place;
}

void TextOutput::text(std::string_view text) {
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, kLargestPiece);
    std::copy(piece.begin(), piece.end(), grow(piece.size()));
    text.remove_prefix(piece.size());
  }
}

void TextOutput::blanks(std::size_t count) {
  std::fill_n(grow(count), count, ' ');
}

void TextOutput::decimalRight(std::uint64_t value, std::size_t width) {
  const DecimalDigits digits(value);
  if (digits.text().size() < width) {
    blanks(width - digits.text().size());
  }
  text(digits.text());
}

void TextOutput::decimalLeft(std::uint64_t value, std::size_t width) {
  const DecimalDigits digits(value);
  text(digits.text());
  if (digits.text().size() < width) {
    blanks(width - digits.text().size());
  }
}

void TextOutput::decimalFilled(std::uint64_t value, std::size_t digits) {
  char* const place = grow(digits);
  for (std::size_t at = digits; at > 0; --at) {
    place[at - 1] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

void TextOutput::hexFilled(std::uint32_t value, std::size_t digits) {
  char* const place = grow(digits);
  for (std::size_t at = digits; at > 0; --at) {
    place[at - 1] = kDigits[value % 16];
    value /= 16;
  }
}

void TextOutput::hexBytes(std::span<const std::uint8_t> data, char separator) {
  if (data.empty()) {
    return;
  }
  const std::size_t width = separator == '\0' ? 2 : 3;
  // One column less than all bytes take: no separator after the last.
  char* place = grow(data.size() * width - (width - 2));
  for (std::size_t index = 0; index < data.size(); ++index) {
    if (index > 0 && separator != '\0') {
      *place++ = separator;
    }
    const DigitPair& pair = kHexPairs[data[index]];
    *place++ = pair[0];
    *place++ = pair[1];
  }
}

void TextOutput::flush() {
  if (size_ > 0) {
    sink_(std::string_view(buffer_.data(), size_));
    handedOn_ += size_;
    size_ = 0;
  }
}

}  // namespace tracegen
