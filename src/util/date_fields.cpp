#include "util/date_fields.hpp"

#include <algorithm>
#include <cstdint>
#include <span>

#include "util/date_names.hpp"
#include "util/failures.hpp"
#include "util/text.hpp"

namespace xlatr {

namespace {

constexpr std::string_view kDefaultLocale = "en-US";

constexpr char toLower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

// One character without case and accent. Only the accents in our names are known; any other character stays as it is
// and then matches no name.
struct FoldedCharacter {
  char letter = '\0';
  std::size_t size = 0;  // in bytes of the text
};

char foldAccent(unsigned char latin1) {
  constexpr unsigned char kFirstLower = 0xE0;
  constexpr unsigned char kLowerBit = 0x20;
  switch (latin1 < kFirstLower ? latin1 | kLowerBit : latin1) {
    case 0xE1:  // a with acute: Spanish
    case 0xE4:  // a with diaeresis: German
      return 'a';
    case 0xE9:  // e with acute: French, Spanish
      return 'e';
    case 0xEC:  // i with grave: Italian
      return 'i';
    case 0xFB:  // u with circumflex: French
      return 'u';
    default:
      return static_cast<char>(latin1);
  }
}

// `text` is not empty. In UTF-8 the letters of the second half of Latin-1 are the byte 0xC3 and their code less 0x40.
// In Latin-1 that byte is a letter that none of our names has, so the two encodings can't be mistaken for each other.
FoldedCharacter foldFirst(std::string_view text) {
  constexpr unsigned char kUtf8Lead = 0xC3;
  constexpr unsigned char kFirstLatin1Letter = 0xC0;
  const auto first = static_cast<unsigned char>(text[0]);
  if (first == kUtf8Lead && text.size() > 1 && (static_cast<unsigned char>(text[1]) & 0xC0U) == 0x80U) {
    return {foldAccent(static_cast<unsigned char>(static_cast<unsigned char>(text[1]) | 0x40U)), 2};
  }
  return {first >= kFirstLatin1Letter ? foldAccent(first) : toLower(text[0]), 1};
}

// How many bytes of the text the folded form takes, or 0 if the text does not begin with it.
std::size_t matchForm(std::string_view text, std::string_view form) {
  std::size_t position = 0;
  for (const char letter : form) {
    if (position >= text.size()) {
      return 0;
    }
    const FoldedCharacter folded = foldFirst(text.substr(position));
    if (folded.letter != letter) {
      return 0;
    }
    position += folded.size;
  }
  return position;
}

// The longest of the forms in one cell of the name tables.
std::size_t matchCell(std::string_view text, std::string_view cell) {
  std::size_t longest = 0;
  while (!cell.empty()) {
    const std::string_view form = cell.substr(0, cell.find(' '));
    longest = std::max(longest, matchForm(text, form));
    cell.remove_prefix(std::min(form.size() + 1, cell.size()));
  }
  return longest;
}

class Parser {
 public:
  Parser(std::string_view text, const platform::CalendarFields& fields, const DateNames& names)
      : text_(text), fields_(fields), names_(names) {}

  bool parse(std::string_view format) {
    for (std::size_t index = 0; index < format.size(); ++index) {
      const char character = format[index];
      bool matched = true;
      if (isSpaceCharacter(character)) {
        skipSpaces();
      } else if (character == '%' && index + 1 < format.size()) {
        matched = parseDirective(format[++index]);
      } else {
        matched = take(character);
      }
      if (!matched) {
        return false;
      }
    }
    return true;
  }

  void skipSpaces() {
    while (position_ < text_.size() && isSpaceCharacter(text_[position_])) {
      ++position_;
    }
  }

  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] const platform::CalendarFields& fields() const { return fields_; }

 private:
  bool parseDirective(char directive) {
    switch (directive) {
      case 'a':
        return parseName(names_.weekdays, 0, fields_.weekday);
      case 'b':
        return parseName(names_.months, 1, fields_.month);
      case 'd':
        return parseNumber(2, 1, 31, fields_.day);
      case 'm':
        return parseNumber(2, 1, 12, fields_.month);
      case 'Y':
        return parseNumber(4, 0, 9999, fields_.year);
      case 'H':
        return parseNumber(2, 0, 23, fields_.hour);
      case 'I':
        return parseNumber(2, 1, 12, fields_.hour);
      case 'M':
        return parseNumber(2, 0, 59, fields_.minute);
      case 'S':
        return parseNumber(2, 0, 60, fields_.second);
      case 'p':
        return parseMarker();
      case 'T':
        return parse("%H:%M:%S");
      case 'r':
        return parse("%I:%M:%S %p");
      default:
        return false;
    }
  }

  [[nodiscard]] std::string_view rest() const { return text_.substr(position_); }

  bool take(char character) {
    if (position_ >= text_.size() || text_[position_] != character) {
      return false;
    }
    ++position_;
    return true;
  }

  bool takeLetter(char letter) {
    if (position_ >= text_.size() || toLower(text_[position_]) != letter) {
      return false;
    }
    ++position_;
    return true;
  }

  bool parseNumber(std::size_t digits, std::int32_t lowest, std::int32_t highest, std::int32_t& out) {
    std::int32_t value = 0;
    std::size_t count = 0;
    while (count < digits && position_ < text_.size() && isDecimalDigit(text_[position_])) {
      value = value * 10 + (text_[position_] - '0');
      ++position_;
      ++count;
    }
    if (count == 0 || value < lowest || value > highest) {
      return false;
    }
    out = value;
    return true;
  }

  // The longest form counts, so that "mars" is not read as "mar" followed by an "s".
  bool parseName(std::span<const std::string_view> cells, std::int32_t first, std::int32_t& out) {
    std::size_t longest = 0;
    for (std::size_t index = 0; index < cells.size(); ++index) {
      const std::size_t size = matchCell(rest(), cells[index]);
      if (size > longest) {
        longest = size;
        out = first + static_cast<std::int32_t>(index);
      }
    }
    position_ += longest;
    if (longest > 0) {
      static_cast<void>(take('.'));
    }
    return longest > 0;
  }

  // Each point and each blank between the letters is optional: a reader that takes the first point of its text for that
  // of a fraction leaves "a. m." without its first one.
  bool parseMarker() {
    const bool afternoon = takeLetter('p');
    if (!afternoon && !takeLetter('a')) {
      return false;
    }
    static_cast<void>(take('.'));
    skipSpaces();
    if (!takeLetter('m')) {
      return false;
    }
    static_cast<void>(take('.'));
    // 12 AM is the first hour of the day and 12 PM the first after noon.
    fields_.hour = fields_.hour % 12 + (afternoon ? 12 : 0);
    return true;
  }

  std::string_view text_;
  platform::CalendarFields fields_;
  const DateNames& names_;
  std::size_t position_ = 0;
};

}  // namespace

std::optional<std::size_t> parseDateFields(std::string_view text, std::string_view format,
                                           platform::CalendarFields& fields, std::string_view locale) {
  const DateNames* const names = findDateNames(locale.empty() ? kDefaultLocale : locale);
  if (names == nullptr) {
    raiseFailure(FailureKind::Generic, "bad locale name");
  }
  Parser parser(text, fields, *names);
  parser.skipSpaces();
  if (!parser.parse(format)) {
    return std::nullopt;
  }
  fields = parser.fields();
  return parser.position();
}

}  // namespace xlatr
