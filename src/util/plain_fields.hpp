// The fields of a line as nearly all lines have them: without anything unusual, and therefore quick to read.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "util/hex.hpp"
#include "util/little_endian.hpp"

namespace xlatr {

// What is between two fields: any number of blanks.
struct BlankRuns {
  static constexpr char character = ' ';
  static constexpr bool kRuns = true;
};

// One character, so that a field may be empty. It is none that stands in a field.
struct OneSeparator {
  char character;
  static constexpr bool kRuns = false;
};

// Takes the fields of a line one after the other. Each function returns false for a field that is not of its plain
// form, whatever else it may mean; the line is then for a parser that knows all forms, from its beginning. Accepts
// nothing that such a parser would read differently. The line must outlive the fields.
template <class Separator>
class PlainFieldsOf {
 public:
  explicit PlainFieldsOf(std::string_view line, Separator separator = {})
      : next_(line.data()), end_(next_ + line.size()), separator_(separator) {
    skipRun();
  }

  [[nodiscard]] bool atEnd() const { return next_ == end_; }
  [[nodiscard]] std::string_view rest() const { return {next_, left()}; }

  // A field of any characters but blanks and control characters. At the end of the line it is empty.
  [[nodiscard]] bool takeAny(std::string_view& field) requires(Separator::kRuns) {
    const char* const begin = next_;
    while (next_ != end_ && static_cast<unsigned char>(*next_) > ' ') {
      ++next_;
    }
    field = {begin, static_cast<std::size_t>(next_ - begin)};
    return endField();
  }
  [[nodiscard]] bool skipAny() requires(Separator::kRuns) {
    std::string_view ignored;
    return takeAny(ignored);
  }

  // This very field. Any other one stays, so that several words can be tried.
  [[nodiscard]] bool take(std::string_view word) {
    const std::string_view line = rest();
    const bool ends =
        line.size() == word.size() || (line.size() > word.size() && line[word.size()] == separator_.character);
    if (!ends || !line.starts_with(word)) {
      return false;
    }
    next_ += word.size();
    return endField();
  }

  // An empty field.
  [[nodiscard]] bool takeNothing() requires(!Separator::kRuns) { return endField(); }

  // A field of one character.
  [[nodiscard]] bool takeCharacter(char& character) {
    if (atEnd()) {
      return false;
    }
    character = *next_++;
    return endField();
  }

  // A number such as 12.345, in units of its ninth decimal or of another one, without a rounding. Up to nine digits
  // before the point and up to seven after it, and far enough from the end of the line, as times are.
  template <unsigned kDecimals>
  [[nodiscard]] bool takeScaled(std::int64_t& value) {
    static_assert(kDecimals < kPowers.size());
    constexpr std::size_t kFarEnough = 2 * kBlock + 2;
    if (left() < kFarEnough) {
      return false;
    }
    const std::size_t whole = takeDigits(value);
    if (whole == kBlock && *next_ >= '0' && *next_ <= '9') {
      value = value * 10 + (*next_++ - '0');
    }
    if (whole == 0 || *next_ != '.') {
      return false;
    }
    ++next_;
    std::int64_t part = 0;
    const std::size_t decimals = takeDigits(part);
    if (decimals == 0 || decimals == kBlock || decimals > kDecimals) {
      return false;
    }
    value = value * kPowers[kDecimals] + part * kPowers[kDecimals - decimals];
    return endField();
  }

  // Up to fifteen decimal digits, far enough from the end of the line.
  [[nodiscard]] bool takeLong(std::int64_t& value) {
    if (left() < 2 * kBlock) {
      return false;
    }
    const std::size_t digits = takeDigits(value);
    if (digits == kBlock) {
      std::int64_t part = 0;
      const std::size_t more = takeDigits(part);
      if (more == kBlock) {
        return false;
      }
      value = value * kPowers[more] + part;
    }
    return digits != 0 && endField();
  }

  // Up to nine decimal digits, perhaps with an `x` after them.
  [[nodiscard]] bool takeDecimal(std::uint32_t& value, bool& marked) {
    constexpr std::ptrdiff_t kMostDigits = 9;
    const char* const begin = next_;
    value = 0;
    for (; next_ != end_ && *next_ >= '0' && *next_ <= '9'; ++next_) {
      value = value * 10 + static_cast<std::uint32_t>(*next_ - '0');
    }
    const std::ptrdiff_t digits = next_ - begin;
    return digits != 0 && digits <= kMostDigits && takeMark(marked);
  }
  [[nodiscard]] bool takeDecimal(std::uint32_t& value) {
    bool marked = false;
    return takeDecimal(value, marked) && !marked;
  }

  // Up to eight hexadecimal digits, perhaps with an `x` after them.
  [[nodiscard]] bool takeHex(std::uint32_t& value, std::size_t& digits, bool& marked) {
    constexpr std::size_t kMostDigits = 8;
    const char* const begin = next_;
    value = 0;
    for (; next_ != end_; ++next_) {
      const int digit = hexDigitValue(*next_);
      if (digit < 0) {
        break;
      }
      value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    digits = static_cast<std::size_t>(next_ - begin);
    return digits != 0 && digits <= kMostDigits && takeMark(marked);
  }

  // As many fields of two hexadecimal digits as there are bytes, with one blank or separator between each two.
  [[nodiscard]] bool takeBytes(std::span<std::uint8_t> bytes) {
    constexpr std::size_t kColumns = 3;
    if (bytes.empty()) {
      return true;
    }
    const std::size_t length = bytes.size() * kColumns - 1;
    if (left() < length) {
      return false;
    }
    // What is wrong is collected, so that the loop has no other branch than its own.
    int wrong = takePair(next_, bytes[0]);
    const char* pair = next_ + kColumns;
    for (std::uint8_t& byte : bytes.subspan(1)) {
      wrong |= takePair(pair, byte) | (pair[-1] ^ separator_.character);
      pair += kColumns;
    }
    next_ += length;
    return wrong == 0 && endField();
  }

  // A field of twice as many hexadecimal digits as there are bytes.
  [[nodiscard]] bool takePairs(std::span<std::uint8_t> bytes) {
    constexpr std::size_t kColumns = 2;
    if (left() < bytes.size() * kColumns) {
      return false;
    }
    int wrong = 0;
    for (std::uint8_t& byte : bytes) {
      wrong |= takePair(next_, byte);
      next_ += kColumns;
    }
    return wrong == 0 && endField();
  }

 private:
  static constexpr std::size_t kBlock = 8;  // so many characters are looked at together
  static constexpr std::uint64_t kBlanks = 0x2020202020202020;
  static constexpr std::array<std::int64_t, 10> kPowers = {1,       10,        100,        1'000,       10'000,
                                                           100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

  // 0 if these are the digits of a byte, otherwise 1.
  static int takePair(const char* pair, std::uint8_t& byte) {
    const int both = hexDigitValue(pair[0]) * 16 | hexDigitValue(pair[1]);
    byte = static_cast<std::uint8_t>(both);
    return both < 0 ? 1 : 0;
  }

  [[nodiscard]] std::size_t left() const { return static_cast<std::size_t>(end_ - next_); }

  // Blocks of blanks first: where a column is empty there are many. The others are counted one by one, since processors
  // foresee most of them, and need not wait then for the place of the next field.
  void skipRun() {
    if constexpr (Separator::kRuns) {
      while (left() >= kBlock && load() == kBlanks) {
        next_ += kBlock;
      }
      while (next_ != end_ && *next_ == separator_.character) {
        ++next_;
      }
    }
  }

  bool takeMark(bool& marked) {
    marked = next_ != end_ && *next_ == 'x';
    next_ += marked ? 1 : 0;
    return endField();
  }

  // Whether the field ends here; goes on to the next one.
  bool endField() {
    if (next_ == end_) {
      return true;
    }
    if (*next_ != separator_.character) {
      return false;
    }
    ++next_;
    skipRun();
    return true;
  }

  [[nodiscard]] std::uint64_t load() const {
    return loadLittle<std::uint64_t>(reinterpret_cast<const std::uint8_t*>(next_));
  }

  // The digits at the start of the eight bytes there, and how many these are. Works on all eight at once.
  std::size_t takeDigits(std::int64_t& value) {
    constexpr std::uint64_t kZeros = 0x3030303030303030;
    constexpr std::uint64_t kHighHalves = 0xF0F0F0F0F0F0F0F0;
    constexpr std::uint64_t kSixes = 0x0606060606060606;
    const std::uint64_t digits = load() ^ kZeros;
    // A digit is below 10 now, and stays below 16 when 6 is added.
    const std::uint64_t others = (digits | (digits + kSixes)) & kHighHalves;
    const auto count = static_cast<std::size_t>(std::countr_zero(others)) / 8;
    if (count == 0) {
      return 0;
    }
    // The digits become the last ones of eight, with zeros before them. Each step joins neighbours.
    std::uint64_t joined = digits << (8 * (kBlock - count));
    joined = joined * 10 + (joined >> 8);
    joined = ((joined & 0x000000FF000000FF) * 0x000F424000000064 +
              ((joined >> 16) & 0x000000FF000000FF) * 0x0000271000000001) >>
             32;
    value = static_cast<std::int64_t>(joined & 0xFFFFFFFF);
    next_ += count;
    return count;
  }

  const char* next_;
  const char* end_;
  [[no_unique_address]] Separator separator_;
};

using PlainFields = PlainFieldsOf<BlankRuns>;
using PlainCells = PlainFieldsOf<OneSeparator>;

}  // namespace xlatr
