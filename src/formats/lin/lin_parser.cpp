// How a KorlMessage reads a line.
#include <optional>

#include "formats/lin/lin_message.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

using LinTokens = TokenCursor<' '>;

bool isDashes(std::string_view token) {
  return !token.empty() && token.find_first_not_of('-') == std::string_view::npos;
}

// Takes a token off the line and passes it to one of the enumerations' try forms. Dashes stand for a word that the
// writer did not know.
template <class Enum>
bool takeWord(LinTokens& tokens, std::optional<Enum> (*parse)(std::string_view) noexcept, Way way, Enum& field) {
  const std::string_view token = tokens.take();
  const auto value = parse(token);
  field = value.value_or(field);
  return value.has_value() || (!way.has(Quirk::LinNoneRefused) && isDashes(token));
}

// An empty text is a number for the strict parsers, but a missing token is not.
bool takeNumber(LinTokens& tokens, std::uint32_t& field, int base) {
  return !tokens.atEnd() && tryParseUInt32(tokens.take(), field, base);
}

// Frames with errors print "--" for each of their bytes.
bool takeData(LinTokens& tokens, Way way, KorlMessage& message) {
  std::uint32_t hidden = 0;
  for (std::uint32_t left = message.length; left > 0; --left) {
    std::uint8_t byte = 0;
    if (tokens.takeHexPairs({&byte, 1}) == 0) {
      if (tokens.take() != "--") {
        return false;
      }
      ++hidden;
    }
    message.data.push_back(byte);
  }
  if (hidden == 0 || way.has(Quirk::LinHiddenBytesAreZero)) {
    return true;
  }
  message.data.clear();
  return hidden == message.length;
}

// Codes joined by slashes, such as "CK/TO". An empty code between slashes is refused.
bool parseErrors(std::string_view text, std::uint32_t& flags) {
  for (std::size_t at = 0; at <= text.size();) {
    const std::string_view code = text.substr(at, text.find('/', at) - at);
    const auto value = tryErrorCodeFromText(code);
    if (!value) {
      return false;
    }
    flags |= static_cast<std::uint32_t>(*value);
    at += code.size() + 1;
  }
  return true;
}

bool takeTimestamp(LinTokens& tokens, KorlMessage& message) {
  std::uint64_t timestampUs = 0;
  if (tokens.atEnd() || !tryParseUInt64(tokens.take(), timestampUs)) {
    return false;
  }
  message.timestamp = UnsignedMicroseconds(timestampUs);
  return true;
}

// Dashes in the columns of a frame around the event's text.
bool takeEvent(LinTokens tokens, KorlMessage& message) {
  for (const std::string_view dashes : {"---", "--", "-"}) {
    if (tokens.take() != dashes) {
      return false;
    }
  }
  std::string_view text = trimmed(tokens.rest(), " ");
  // An empty text leaves nothing before the dashes of the checksum and its type.
  constexpr std::string_view kDashes = "--";
  for (int column = 0; column < 2; ++column) {
    if (text == kDashes || text.ends_with(" --")) {
      text = trimmed(text.substr(0, text.size() - kDashes.size()), " ");
    }
  }
  message.busEvent = true;
  message.length = static_cast<std::uint32_t>(text.size());
  message.data.assign(text.begin(), text.end());
  return true;
}

bool parse(LinTokens tokens, Way way, KorlMessage& message) {
  tokens.take();  // the line number
  if (!takeTimestamp(tokens, message)) {
    return false;
  }
  if (!way.has(Quirk::LinEventsRefused) && takeEvent(tokens, message)) {
    return true;
  }
  if (!takeWord(tokens, tryDirectionTypeFromText, way, message.direction) || !takeNumber(tokens, message.id, 16) ||
      !takeNumber(tokens, message.length, 10) || !takeData(tokens, way, message) ||
      !takeNumber(tokens, message.checksum, 16) ||
      !takeWord(tokens, tryChecksumTypeFromText, way, message.checksumType)) {
    return false;
  }
  const std::string_view last = tokens.take();
  // If more tokens follow, this one is not that of the errors.
  return last.empty() || !tokens.atEnd() || parseErrors(last, message.errorFlags);
}

}  // namespace

void KorlMessage::parseLine(std::string_view line, Way way) {
  parsingText.assign(line);
  valid = parse(LinTokens(parsingText), way, *this);
}

}  // namespace xlatr
