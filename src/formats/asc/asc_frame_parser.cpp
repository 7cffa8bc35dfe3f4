#include "formats/asc/asc_frame_parser.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "formats/asc/asc_tokens.hpp"

namespace xlatr {
namespace {

// Each of the parsers below returns false at the first token that can't be understood.

// Cuts off the mark of an extended identifier.
std::string_view takeExtendedMark(std::string_view token, AscMessage& message) {
  const std::size_t mark = token.find('x');
  message.extended = mark != std::string_view::npos;
  message.lineKind = message.extended ? AscLineKind::ExtendedFrame : AscLineKind::StandardFrame;
  return token.substr(0, mark);
}

int baseOf(const AscMessage& message) {
  return message.hexBase ? 16 : 10;
}

bool parseTypeWord(std::string_view token, AscMessage& message) {
  const auto type = tryMessageTypeFromText(token);
  if (!type) {
    return false;
  }
  message.type = *type;
  message.direction = *type == MessageType::Tx ? MessageDirection::Tx : MessageDirection::Rx;
  return true;
}

bool parseHexData(AscTokens& tokens, AscMessage& message) {
  auto& data = message.data;
  data.resize(std::min<std::size_t>(message.length, tokens.rest().size()));  // a byte has at least one character
  data.resize(tokens.takeHexPairs(data));
  if (data.size() < message.length) {
    tokens.require();
    return false;
  }
  return true;
}

bool parseDecimalData(AscTokens& tokens, AscMessage& message) {
  for (std::uint32_t count = message.length; count > 0; --count) {
    std::uint32_t value = 0;
    if (!parseByteOfBase(tokens.require(), value, 10)) {
      return false;
    }
    message.data.push_back(static_cast<std::uint8_t>(value));
  }
  return true;
}

bool parseData(AscTokens& tokens, AscMessage& message) {
  return message.hexBase ? parseHexData(tokens, message) : parseDecimalData(tokens, message);
}

// The "ID = ..." item that newer loggers write after the data if the identifier field holds a name. Returns whether it
// is there, with its value without the marks of an extended identifier.
bool findIdItem(AscTokens tokens, AscMessage& message, std::string_view& value) {
  // Most lines have no such item, and a search for two letters is much cheaper than one for a token.
  if (tokens.rest().find("ID") == std::string_view::npos) {
    return false;
  }
  while (!tokens.atEnd()) {
    if (tokens.take() == "ID") {
      tokens.require();  // the equals sign
      const std::string_view item = takeExtendedMark(tokens.require(), message);
      message.symbolicId = false;
      value = item.substr(0, item.find('X'));
      return true;
    }
  }
  return false;
}

// What classic frames of all versions have after time and bus: identifier and direction.
bool parseIdentifierAndType(AscTokens& tokens, AscMessage& message, std::string_view& identifier) {
  identifier = takeExtendedMark(tokens.require(), message);
  message.symbolicId = !tryParseUInt32(identifier, message.id, baseOf(message));
  if (!parseTypeWord(tokens.require(), message)) {
    return false;
  }
  message.valid = !message.symbolicId;
  return true;
}

// Up to 7.5 a remote frame is complete here. From 7.5 on an "ID" item decides on the frame format. The value still
// comes from the identifier field, so a name there does not become an identifier:
// readsTheIdentifierFieldOfARemoteFrameFrom75On.
void parseRemote7(const AscTokens& tokens, std::string_view identifier, AscMessage& message) {
  constexpr double kFirstVersionWithIdItem = 7.5;
  message.flags |= asc_flag::kRemote;
  std::string_view item;
  if (message.fileVersion >= kFirstVersionWithIdItem && findIdItem(tokens, message, item)) {
    message.valid = tryParseUInt32(identifier, message.id, baseOf(message)) && message.id < kNoIdentifier;
  }
}

// Versions below 8: time, bus, identifier, direction, "d" or "r", length, data.
bool parseFrame7(AscTokens& tokens, AscMessage& message) {
  parseAscTime(tokens, message);
  std::string_view identifier;
  if (!parseByteWithPrefix(tokens.require(), message.bus) || !parseIdentifierAndType(tokens, message, identifier)) {
    return false;
  }
  if (tokens.require() == "r") {
    parseRemote7(tokens, identifier, message);
    return true;
  }
  return parseByteOfBase(tokens.require(), message.length, baseOf(message)) && parseData(tokens, message);
}

// Versions from 8 on, except CANFD lines. The length is hexadecimal whatever the file's base.
bool parseFrame8(AscTokens& tokens, AscMessage& message) {
  constexpr double kFirstVersionWithRemoteLength = 8.5;
  parseAscTime(tokens, message);
  std::uint8_t bus = 0;
  if (!tryParseByte(tokens.require(), bus)) {
    return false;  // this sorts out the lines that are not frames
  }
  message.bus = bus;
  std::string_view identifier;
  if (!parseIdentifierAndType(tokens, message, identifier)) {
    return false;
  }
  // The item may be anywhere from the seventh token on; the kind and the length are the fifth and the sixth.
  AscTokens afterLength = tokens;
  std::string_view item;
  if (afterLength.skip(2) && findIdItem(afterLength, message, item)) {
    // If the item holds no number, that of the identifier field stays.
    static_cast<void>(tryParseUInt32Auto(item, message.id));
    message.valid = message.id < kNoIdentifier;
  }
  if (tokens.require() == "r") {
    message.flags |= asc_flag::kRemote;
    return message.fileVersion < kFirstVersionWithRemoteLength || parseByteOfBase(tokens.require(), message.length, 16);
  }
  return parseByteOfBase(tokens.require(), message.length, 16) && parseData(tokens, message);
}

// The flags come after the data and two more fields.
bool parseFdFlags(AscTokens tokens, AscMessage& message) {
  tokens.skip(std::size_t{message.length} + 2);
  std::uint32_t flags = 0;
  if (!tryParseUInt32(tokens.require(), flags, 16)) {
    return false;
  }
  message.flags = flags & asc_flag::kReadMask;
  return true;
}

// Duration and bit count come before the flags, CRC and bit timing after them. Lines with fewer or more fields are not
// valid, though everything was read: refusesACanFdLineWithSixOrEightFieldsAfterTheFlags.
bool hasWholeTail(AscTokens& tokens) {
  constexpr std::size_t kFieldsWithFlags = 8;
  return tokens.skip(kFieldsWithFlags) && tokens.atEnd();
}

// A CANFD line. Its identifier and flags are hexadecimal whatever the file's base, its bus and length are not.
bool parseFrameFd(AscTokens& tokens, AscMessage& message) {
  parseAscTime(tokens, message);
  if (tokens.require() != "CANFD") {
    return false;
  }
  message.frameClass = AscFrameClass::Fd;
  if (!parseByteWithPrefix(tokens.require(), message.bus) || !parseTypeWord(tokens.require(), message)) {
    return false;
  }
  std::uint32_t identifier = 0;
  if (!tryParseUInt32(takeExtendedMark(tokens.require(), message), identifier, 16)) {
    return false;
  }
  message.id = identifier;
  const std::string_view nameOrBrs = tokens.require();
  std::uint32_t brs = 0;
  if (!tryParseUInt32Auto(nameOrBrs, brs)) {
    message.commentText.assign(nameOrBrs);
    tokens.skip(1);
  }
  tokens.skip(2);  // ESI and the DLC, which the flags and the length tell as well
  if (!parseByteWithPrefix(tokens.require(), message.length) || !parseFdFlags(tokens, message) ||
      !parseData(tokens, message)) {
    return false;
  }
  message.valid = hasWholeTail(tokens);
  return true;
}

}  // namespace

bool parseAscFrame(std::string_view line, double version, AscMessage& message) {
  AscTokens tokens(line);
  const double majorVersion = std::floor(version);
  if (majorVersion == 0.0 || majorVersion == 7.0) {
    return parseFrame7(tokens, message);
  }
  if (majorVersion < 8.0) {
    return false;  // nothing is known of such files
  }
  return line.find(" CANFD ") != std::string_view::npos ? parseFrameFd(tokens, message) : parseFrame8(tokens, message);
}

}  // namespace xlatr
