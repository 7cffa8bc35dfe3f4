#include "formats/asc/asc_frame_parser.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "formats/asc/asc_tokens.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

// Each of the parsers below returns false at the first token that can't be understood.

// Where the mark of an extended identifier is, if there is one: at the end, for names have the letter anywhere.
std::size_t findExtendedMark(std::string_view token, const AscTokens& tokens) {
  if (tokens.has(Quirk::AscNamesMisread)) {
    return token.find('x');
  }
  return !token.empty() && (token.back() | 0x20) == 'x' ? token.size() - 1 : std::string_view::npos;
}

// Cuts off the mark of an extended identifier.
std::string_view takeExtendedMark(std::string_view token, const AscTokens& tokens, AscMessage& message) {
  const std::size_t mark = findExtendedMark(token, tokens);
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
      const std::string_view item = takeExtendedMark(tokens.require(), tokens, message);
      message.symbolicId = false;
      value = item.substr(0, item.find('X'));
      return true;
    }
  }
  return false;
}

// What classic frames of all versions have after time and bus on the compatible way: identifier and direction.
bool parseIdentifierAndType(AscTokens& tokens, AscMessage& message, std::string_view& identifier) {
  identifier = takeExtendedMark(tokens.require(), tokens, message);
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
  if (tokens.require() != "CANFD") {
    return false;
  }
  message.frameClass = AscFrameClass::Fd;
  if (!parseByteWithPrefix(tokens.require(), message.bus) || !parseTypeWord(tokens.require(), message)) {
    return false;
  }
  std::uint32_t identifier = 0;
  if (!tryParseUInt32(takeExtendedMark(tokens.require(), tokens, message), identifier, 16)) {
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

// The forms of the complete way
// ----------------------------------------------------------------------------------------

constexpr std::uint32_t kLongestClassic = 8;
constexpr std::uint32_t kLongestFd = 64;

bool parseBus(AscTokens& tokens, AscMessage& message) {
  constexpr std::uint32_t kHighest = 255;
  const std::string_view token = tokens.require();
  return (parseDigits(token, 10, message.bus) && message.bus <= kHighest) ||
         (token.size() > 2 && parseByteWithPrefix(token, message.bus));
}

bool parseDirection(AscTokens& tokens, AscMessage& message) {
  const std::string_view word = tokens.require();
  const bool transmitted = word == "Tx";
  message.type = transmitted ? MessageType::Tx : MessageType::Rx;
  message.direction = transmitted ? MessageDirection::Tx : MessageDirection::Rx;
  return transmitted || word == "Rx";
}

// A DLC in this base, or in the other one if it is none in this: 12 stands for nothing else.
bool parseDlc(std::string_view token, int base, std::uint32_t& dlc) {
  constexpr std::uint32_t kHighest = 15;
  const int other = base == 16 ? 10 : 16;
  return (parseDigits(token, base, dlc) && dlc <= kHighest) || (parseDigits(token, other, dlc) && dlc <= kHighest);
}

// BRS and ESI.
bool parseBit(std::string_view token, bool& bit) {
  bit = token == "1";
  return bit || token == "0";
}

// What may follow the bytes of a CANFD line: duration, bit count, flags. All that may follow these says nothing of the
// frame.
bool parseFlags(AscTokens& tokens, std::uint32_t bits, AscMessage& message) {
  tokens.skip(2);
  if (tokens.atEnd()) {
    message.flags = asc_flag::kEdl | bits;
    return true;
  }
  std::uint32_t flags = 0;
  if (!parseDigits(tokens.take(), 16, flags)) {
    return false;
  }
  message.flags = flags & asc_flag::kReadMask;
  message.flags |= (message.flags & asc_flag::kEdl) != 0 ? bits : 0U;
  return true;
}

// A CANFD line, from its bus on. The DLC and all but the length are as in parseFrameFd().
bool parseFdFrame(AscTokens& tokens, AscMessage& message) {
  if (!parseBus(tokens, message) || !parseDirection(tokens, message) ||
      !parseDigits(takeExtendedMark(tokens.require(), tokens, message), 16, message.id)) {
    return false;
  }
  message.frameClass = AscFrameClass::Fd;
  bool brs = false;
  bool esi = false;
  if (!parseBit(tokens.peek(), brs)) {
    message.commentText.assign(tokens.take());
  }
  std::uint32_t dlc = 0;
  if (!parseBit(tokens.require(), brs) || !parseBit(tokens.require(), esi) || !parseDlc(tokens.require(), 16, dlc) ||
      !parseDigits(tokens.require(), 10, message.length) || message.length > kLongestFd ||
      !parseData(tokens, message)) {
    return false;
  }
  tokens.dlc = dlc;
  return parseFlags(tokens, (brs ? asc_flag::kBrs : 0U) | (esi ? asc_flag::kEsi : 0U), message);
}

// Words that stand in the place of an identifier in lines of other kinds.
bool isNoName(std::string_view word) {
  return word.ends_with(':') || equalsIgnoreCase(word, "ErrorFrame") || equalsIgnoreCase(word, "OverloadFrame");
}

// Whether the identifier is known at last. One that the item after the data contradicts was a name.
bool takeIdItem(const AscTokens& tokens, std::string_view identifier, AscMessage& message) {
  const bool extended = message.extended;
  const bool named = message.symbolicId;
  std::string_view item;
  std::uint32_t id = 0;
  if (tokens.atEnd() || !findIdItem(tokens, message, item) || item.empty() || !tryParseUInt32Auto(item, id)) {
    message.extended = extended;
    return !named;
  }
  if (named || id != message.id || extended != message.extended) {
    if (isNoName(identifier)) {
      return false;
    }
    message.id = id;
    message.commentText.assign(identifier);
  }
  return true;
}

// A remote frame from its DLC on, which it may lack. An item such as "Length = 0" may follow it as well.
bool takeRemoteDlc(AscTokens& tokens, int base, AscMessage& message) {
  constexpr std::size_t kMostDigits = 2;
  message.flags |= asc_flag::kRemote;
  if (tokens.atEnd() || tokens.peek().size() > kMostDigits) {
    return true;
  }
  std::uint32_t dlc = 0;
  const bool known = parseDlc(tokens.take(), base, dlc);
  tokens.dlc = dlc;
  return known;
}

bool takeDataOfDlc(AscTokens& tokens, int base, AscMessage& message) {
  std::uint32_t dlc = 0;
  if (!parseDlc(tokens.require(), base, dlc)) {
    return false;
  }
  tokens.dlc = dlc;
  message.length = std::min(dlc, kLongestClassic);
  return parseData(tokens, message);
}

// A frame in any but a CANFD line. From 8 on the length is hexadecimal whatever the file's base.
bool parseClassicFrame(AscTokens& tokens, double version, AscMessage& message) {
  constexpr double kFirstVersionWithHexLength = 8.0;
  const int base = version < kFirstVersionWithHexLength ? baseOf(message) : 16;
  if (!parseBus(tokens, message)) {
    return false;
  }
  const std::string_view identifier = tokens.require();
  message.symbolicId = !parseDigits(takeExtendedMark(identifier, tokens, message), baseOf(message), message.id);
  if (!parseDirection(tokens, message)) {
    return false;
  }
  const std::string_view kind = tokens.require();
  if (kind != "d" && kind != "r") {
    return false;
  }
  const bool known = kind == "d" ? takeDataOfDlc(tokens, base, message) : takeRemoteDlc(tokens, base, message);
  return known && takeIdItem(tokens, identifier, message);
}

bool isIdentifier(const AscMessage& message) {
  constexpr std::uint32_t kHighestBase = 0x7FF;
  constexpr std::uint32_t kHighestExtended = 0x1FFFFFFF;
  return message.id <= (message.extended ? kHighestExtended : kHighestBase);
}

}  // namespace

bool parseAscFrame(std::string_view line, double version, AscMessage& message) {
  AscTokens tokens(line);
  const double majorVersion = std::floor(version);
  if (majorVersion == 0.0 || majorVersion == 7.0) {
    parseAscTime(tokens, message);
    return parseFrame7(tokens, message);
  }
  if (majorVersion < 8.0) {
    return false;  // nothing is known of such files
  }
  parseAscTime(tokens, message);
  return line.find(" CANFD ") != std::string_view::npos ? parseFrameFd(tokens, message) : parseFrame8(tokens, message);
}

bool parseAscFrameOfAnyVersion(AscTokens& tokens, double version, AscMessage& message) {
  const bool parsed = tokens.peek() == "CANFD" ? tokens.skip(1) && parseFdFrame(tokens, message)
                                               : parseClassicFrame(tokens, version, message);
  message.valid = parsed && !tokens.isShort() && isIdentifier(message);
  return message.valid;
}

}  // namespace xlatr
