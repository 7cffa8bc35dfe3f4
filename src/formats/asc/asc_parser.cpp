#include "formats/asc/asc_parser.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "util/numbers.hpp"
#include "util/text.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kSeparators = " \t";
constexpr std::string_view kCanFdWord = " CANFD ";

// The tokens of a line, taken one after the other. One that is not there ends the whole conversion; the text of that
// failure is what users of such logs know: endsAtALineThatIsTooShort.
class AscTokens : public TokenCursor<' ', '\t'> {
 public:
  using TokenCursor::TokenCursor;

  std::string_view require() {
    if (atEnd()) {
      throw std::out_of_range("invalid vector subscript");
    }
    return take();
  }
};

// Each of the parsers below answers false at the first token that can't be understood -------------------------------

void parseTime(AscTokens& tokens, AscMessage& message) {
  message.time = parseRealPrefix(tokens.require()).value;
}

// The forms of the number parsers that raise nothing, since tokens may rightly be something else.
bool storeByte(std::uint32_t number, std::uint32_t& value) {
  if (number > std::numeric_limits<std::uint8_t>::max()) {
    return false;
  }
  value = number;
  return true;
}

bool parseByteOfBase(std::string_view token, std::uint32_t& value, int base) {
  std::uint32_t number = 0;
  return tryParseUInt32(token, number, base) && storeByte(number, value);
}

// A byte may be hexadecimal behind "0x", but not binary behind "0b".
bool parseByteWithPrefix(std::string_view token, std::uint32_t& value) {
  const bool binary = token.size() > 2 && token[0] == '0' && toUpperAscii(token[1]) == 'B';
  std::uint32_t number = 0;
  return !binary && tryParseUInt32Auto(token, number) && storeByte(number, value);
}

// Cuts the mark of an extended identifier off.
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

// The "ID = ..." item that newer loggers put behind the data when the identifier field holds a name. Answers whether it
// is there, with its value without the marks of an extended one.
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

// Time excepted, the part that classic frames of all versions begin with: identifier and direction.
bool parseIdentifierAndType(AscTokens& tokens, AscMessage& message, std::string_view& identifier) {
  identifier = takeExtendedMark(tokens.require(), message);
  message.symbolicId = !tryParseUInt32(identifier, message.id, baseOf(message));
  if (!parseTypeWord(tokens.require(), message)) {
    return false;
  }
  message.valid = !message.symbolicId;
  return true;
}

// Up to 7.5 a remote frame is complete here. From 7.5 on an "ID" item decides about the frame format, while the value
// comes from the identifier field all the same, so that a name there stays no identifier:
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
  parseTime(tokens, message);
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

// Versions from 8 on, but for CANFD lines. The length is hexadecimal whatever the file's base.
bool parseFrame8(AscTokens& tokens, AscMessage& message) {
  constexpr double kFirstVersionWithRemoteLength = 8.5;
  parseTime(tokens, message);
  std::uint8_t bus = 0;
  if (!tryParseByte(tokens.require(), bus)) {
    return false;  // this is what sorts out the lines that are no frames
  }
  message.bus = bus;
  std::string_view identifier;
  if (!parseIdentifierAndType(tokens, message, identifier)) {
    return false;
  }
  // The item may stand anywhere from the seventh token on, the kind and the length being the fifth and the sixth.
  AscTokens behindLength = tokens;
  std::string_view item;
  if (behindLength.skip(2) && findIdItem(behindLength, message, item)) {
    // Where the item holds no number, that of the identifier field stands.
    static_cast<void>(tryParseUInt32Auto(item, message.id));
    message.valid = message.id < kNoIdentifier;
  }
  if (tokens.require() == "r") {
    message.flags |= asc_flag::kRemote;
    return message.fileVersion < kFirstVersionWithRemoteLength || parseByteOfBase(tokens.require(), message.length, 16);
  }
  return parseByteOfBase(tokens.require(), message.length, 16) && parseData(tokens, message);
}

// Flags stand behind the data and two more fields.
bool parseFdFlags(AscTokens tokens, AscMessage& message) {
  tokens.skip(std::size_t{message.length} + 2);
  std::uint32_t flags = 0;
  if (!tryParseUInt32(tokens.require(), flags, 16)) {
    return false;
  }
  message.flags = flags & asc_flag::kReadMask;
  return true;
}

// Duration and bit count in front of the flags, CRC and bit timing behind them. Lines with fewer or more than these are
// not valid, though all was read: refusesACanFdLineWithSixOrEightFieldsBehindTheFlags.
bool hasWholeTail(AscTokens& tokens) {
  constexpr std::size_t kFieldsWithFlags = 8;
  return tokens.skip(kFieldsWithFlags) && tokens.atEnd();
}

// A CANFD line. Its identifier and flags are hexadecimal whatever the file's base, its bus and length are not.
bool parseFrameFd(AscTokens& tokens, AscMessage& message) {
  parseTime(tokens, message);
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
  tokens.skip(2);  // ESI and the DLC, which the flags and the length tell, too
  if (!parseByteWithPrefix(tokens.require(), message.length) || !parseFdFlags(tokens, message) ||
      !parseData(tokens, message)) {
    return false;
  }
  message.valid = hasWholeTail(tokens);
  return true;
}

// Status and errors ---------------------------------------------------------------------------------------------------

constexpr std::string_view kMakersMark = "(ZELKWORKS)";

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

// Time, bus and what else a line of status or error begins with. `tokensToBus` is the place of the bus.
bool parseStatusHead(std::string_view line, std::size_t tokensToBus, AscMessage& message) {
  AscTokens tokens(line);
  parseTime(tokens, message);
  tokens.skip(tokensToBus - 1);
  if (!parseByteWithPrefix(tokens.require(), message.bus)) {
    return false;
  }
  message.id = kNoIdentifier;
  message.flags = 0;
  return true;
}

// "time CAN bus Status:error counter change (Zelkworks) - TxErr: n RxErr: n". A count of receive errors that is 0 is no
// number behind its blank, so that such a line is not valid: readsNoErrorCountersWithAReceiveCountOf0.
bool parseErrorCounters(std::string_view line, AscMessage& message) {
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

// "time CAN bus Status:text (Zelkworks)". The text is kept in upper case, with its mark.
bool parseStatusText(std::string_view line, AscMessage& message) {
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

// Each of the three below answers whether the line needs no further look.

bool parseStatus(std::string_view line, AscMessage& message) {
  if (!containsIgnoreCase(line, " CAN ") || !containsIgnoreCase(line, "STATUS:")) {
    return false;
  }
  if (containsIgnoreCase(line, "ERROR COUNTER CHANGE (ZELKWORKS)")) {
    return parseErrorCounters(line, message);
  }
  // A status of another maker is no frame, whatever else it looks like.
  return !containsIgnoreCase(line, kMakersMark) || parseStatusText(line, message);
}

void setErrorFrame(AscMessage& message) {
  message.valid = true;
  message.type = MessageType::Error;
  message.direction = MessageDirection::Rx;
  message.lineKind = AscLineKind::ErrorFrame;
}

// "time bus ErrorFrame ECC: bits". An error frame without a bit pattern tells nothing that could be converted.
bool parseErrorEcc(std::string_view line, AscMessage& message) {
  if (containsIgnoreCase(line, "CANFD")) {
    return false;
  }
  if (!containsIgnoreCase(line, "ECC")) {
    return true;
  }
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

const std::string* findItem(const KeyValues& items, std::string_view key) {
  const auto item = items.find(key);
  return item == items.end() ? nullptr : &item->second;
}

// "time bus ErrorFrame ECC: bits Flags = n Code = n ...", which newer loggers write. Bit 0 of the flags says whether
// the code is there.
bool parseErrorFlags(std::string_view line, AscMessage& message) {
  if (containsIgnoreCase(line, "CANFD") || !containsIgnoreCase(line, "FLAGS") || !parseStatusHead(line, 1, message)) {
    return false;
  }
  KeyValues items;
  parseKeyValues(toUpperAscii(line), kSeparators, items);
  const std::string* const flagsItem = findItem(items, "FLAGS");
  std::uint32_t flags = 0;
  if (flagsItem == nullptr || !parseByteWithPrefix(*flagsItem, flags)) {
    return false;
  }
  if ((flags & 1) == 0) {
    return true;
  }
  const std::string* const codeItem = findItem(items, "CODE");
  if (codeItem == nullptr) {
    return false;
  }
  std::string code = *codeItem;
  const std::size_t prefix = code.find("0X");
  const bool hexadecimal = prefix != std::string::npos;
  if (hexadecimal) {
    code.erase(prefix, 2);
  }
  if (!tryParseUInt32(code, message.errorCode, hexadecimal ? 16 : 10)) {
    return false;
  }
  setErrorFrame(message);
  return true;
}

// Classification ------------------------------------------------------------------------------------------------------

struct LineMark {
  std::string_view upperCase;
  AscLineKind kind;
};

// The first that a line holds says what it is.
constexpr std::array kLineMarks = {
    LineMark{"LOG TRIGGER EVENT", AscLineKind::LogTriggerEvent},
    LineMark{"TRIGGEREVENT", AscLineKind::TriggerEvent},
    LineMark{"LOG DIRECT START", AscLineKind::LogDirectStart},
    LineMark{"LOG DIRECT STOP", AscLineKind::LogDirectStop},
    LineMark{"BEGIN TRIGGERBLOCK", AscLineKind::BlockBegin},
    LineMark{"END TRIGGERBLOCK", AscLineKind::BlockEnd},
    LineMark{":=", AscLineKind::EnvironmentVariable},
    LineMark{"SV:", AscLineKind::SystemVariable},
    LineMark{"::", AscLineKind::Macro},
    LineMark{"GPS DEVICE", AscLineKind::GpsDevice},
    LineMark{"GPS-DEVICE", AscLineKind::GpsDevice},
    LineMark{"COMMENT:", AscLineKind::Comment},
    LineMark{"GMGROUP", AscLineKind::Marker},
    LineMark{"GMMARKER", AscLineKind::Marker},
    LineMark{"GMDESCRIPTION", AscLineKind::Marker},
    LineMark{"TFS:", AscLineKind::TestFeatureSet},
    LineMark{"STATISTIC:", AscLineKind::Statistic},
    LineMark{"OVERLOADFRAME", AscLineKind::OverloadFrame},
};

constexpr std::string_view kErrorFrameMark = "ERRORFRAME";

// All marks, and what lines of status and error are known by, have one of these characters. Without a way out of the
// loop the compiler looks at many of them at a time.
bool hasMarkCharacter(std::string_view line) {
  unsigned found = 0;
  for (const char character : line) {
    const char lower = static_cast<char>(character | 0x20);
    found |= static_cast<unsigned>(character == ':') | static_cast<unsigned>(lower == 'g') |
             static_cast<unsigned>(lower == 'm');
  }
  return found != 0;
}

// Whether the line can hold any of the marks, or be one of status or error: all of these have a colon, a "GG", "GP",
// "GM" or "G " or the "AM" of "FRAME" in them. Frames, which nearly all lines are, have none, not even those with a
// "Length" behind their data. An occasional yes for nothing does no harm.
bool mayBeMarked(std::string_view line) {
  if (!hasMarkCharacter(line)) {
    return false;
  }
  char last = '\0';
  for (const char original : line) {
    const char character = toUpperAscii(original);
    const bool inPair = (character == 'M' && (last == 'A' || last == 'G')) ||
                        (last == 'G' && (character == 'G' || character == 'P' || character == ' '));
    if (character == ':' || inPair) {
      return true;
    }
    last = character;
  }
  return false;
}

AscLineKind classify(std::string_view line) {
  for (const LineMark& mark : kLineMarks) {
    if (containsIgnoreCase(line, mark.upperCase)) {
      return mark.kind;
    }
  }
  if (containsIgnoreCase(line, kCanFdWord) && containsIgnoreCase(line, kErrorFrameMark)) {
    return AscLineKind::FdErrorFrame;
  }
  return AscLineKind::Unclassified;
}

// Answers whether the line needs no further look.
bool parseMarkedLine(std::string_view line, AscMessage& message) {
  message.lineKind = classify(line);
  if (message.lineKind != AscLineKind::Unclassified || parseStatus(line, message)) {
    return true;
  }
  return containsIgnoreCase(line, kErrorFrameMark) && (parseErrorEcc(line, message) || parseErrorFlags(line, message));
}

bool parseFrame(std::string_view line, double version, AscMessage& message) {
  AscTokens tokens(line);
  const double majorVersion = std::floor(version);
  if (majorVersion == 0.0 || majorVersion == 7.0) {
    return parseFrame7(tokens, message);
  }
  if (majorVersion < 8.0) {
    return false;  // nothing is known of such files
  }
  return line.find(kCanFdWord) != std::string_view::npos ? parseFrameFd(tokens, message) : parseFrame8(tokens, message);
}

}  // namespace

void parseAscLine(std::string_view line, double version, AscMessage& message) {
  if (mayBeMarked(line) && parseMarkedLine(line, message)) {
    return;
  }
  if (!parseFrame(line, version, message)) {
    message.valid = false;
    message.symbolicId = false;
  }
}

}  // namespace xlatr
