#include "formats/asc/asc_status_parser.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "formats/asc/asc_tokens.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

// The pieces of a line between its colons. There are never more than five that matter.
struct Pieces {
  std::array<std::string_view, 5> pieces;
  std::size_t count = 0;
};

Pieces splitAtColons(std::string_view line) {
  Pieces result;
  TokenCursor<':'> cursor(line);
  while (!cursor.atEnd() && result.count < result.pieces.size()) {
    result.pieces[result.count++] = cursor.take();
  }
  return result;
}

// The time and the bus with which a status or error line begins. `tokensToBus` is the place of the bus.
bool parseStatusHead(std::string_view line, std::size_t tokensToBus, AscMessage& message) {
  AscTokens tokens(line);
  parseAscTime(tokens, message);
  tokens.skip(tokensToBus - 1);
  if (!parseByteWithPrefix(tokens.require(), message.bus)) {
    return false;
  }
  message.id = kNoIdentifier;
  message.flags = 0;
  return true;
}

void setErrorFrame(AscMessage& message) {
  message.valid = true;
  message.type = MessageType::Error;
  message.direction = MessageDirection::Rx;
  message.lineKind = AscLineKind::ErrorFrame;
}

const std::string* findItem(const KeyValues& items, std::string_view key) {
  const auto item = items.find(key);
  return item == items.end() ? nullptr : &item->second;
}

// Hexadecimal with "0X" in it.
bool parseErrorCode(std::string code, std::uint32_t& errorCode) {
  const std::size_t prefix = code.find("0X");
  if (prefix == std::string::npos) {
    return tryParseUInt32(code, errorCode, 10);
  }
  code.erase(prefix, 2);
  return tryParseUInt32(code, errorCode, 16);
}

}  // namespace

bool parseAscErrorCounters(std::string_view line, AscMessage& message) {
  AscTokens tokens(line);
  const Pieces parts = splitAtColons(line);
  TokenCursor<' '> transmit(parts.pieces[2]);
  const std::string_view transmitCount = transmit.take();
  if (!tokens.skip(3) || !parseStatusHead(line, 2, message) || parts.count != 4 ||
      !tryParseUInt64(parts.pieces[3], message.rxErrors) || !transmit.skip(1) || !transmit.atEnd() ||
      !tryParseUInt64(transmitCount, message.txErrors)) {
    return false;
  }
  message.valid = true;
  message.type = MessageType::Error;
  message.lineKind = AscLineKind::Status;
  return true;
}

bool parseAscStatusText(std::string_view line, AscMessage& message) {
  const Pieces parts = splitAtColons(line);
  if (!parseStatusHead(line, 2, message) || parts.count != 2) {
    return false;
  }
  message.commentText.assign(toUpperAscii(parts.pieces[1]));
  message.valid = true;
  message.type = MessageType::Warng;
  message.lineKind = AscLineKind::Status;
  return true;
}

bool parseAscErrorEcc(std::string_view line, AscMessage& message) {
  if (!parseStatusHead(line, 1, message)) {
    return false;
  }
  AscTokens tokens(line);
  tokens.skip(3);
  const bool eccIsFourth = containsIgnoreCase(tokens.take(), "ECC");
  const std::string_view bits = tokens.take();
  if (!eccIsFourth || bits.empty() || !tokens.atEnd() || !tryParseUInt32(bits, message.errorCode, 2)) {
    return false;
  }
  setErrorFrame(message);
  return true;
}

bool parseAscErrorFlags(std::string_view line, AscMessage& message) {
  if (!parseStatusHead(line, 1, message)) {
    return false;
  }
  KeyValues items;
  parseKeyValues(toUpperAscii(line), " \t", items);
  const std::string* const flagsItem = findItem(items, "FLAGS");
  std::uint32_t flags = 0;
  if (flagsItem == nullptr || !parseByteWithPrefix(*flagsItem, flags)) {
    return false;
  }
  if ((flags & 1) == 0) {
    return true;
  }
  const std::string* const codeItem = findItem(items, "CODE");
  if (codeItem == nullptr || !parseErrorCode(*codeItem, message.errorCode)) {
    return false;
  }
  setErrorFrame(message);
  return true;
}

}  // namespace xlatr
