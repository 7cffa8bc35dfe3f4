#include "formats/trc/trc_parser.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>

#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "messages/can_dlc.hpp"
#include "util/numbers.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kMaxClassicLength = 8;
constexpr std::uint32_t kUnnumberedBus = 255;
constexpr std::string_view kNone = "-";

// Each of the parsers below returns false at the first token that is missing or can't be understood.

// Messages are numbered again on writing.
void skipNumber(TrcTokens& tokens) {
  tokens.take();
}

bool parseTime(TrcTokens& tokens, BrixMessage& message) {
  tokens.remains.time = tokens.take();
  const RealPrefix time = parseRealPrefix(tokens.remains.time, tokens.remains.timeDigits);
  message.timeOffset = RealMilliseconds(time.value);
  return time.consumed > 0;
}

// The strict number parsers read a missing token, which is empty, as 0; a line must hold it.
bool parseNumber(std::string_view token, std::uint32_t& value, int base) {
  return !token.empty() && tryParseUInt32(token, value, base);
}

bool parseIdentifier(TrcTokens& tokens, BrixMessage& message) {
  constexpr std::size_t kLongestBaseIdentifier = 4;
  const std::string_view token = tokens.take();
  message.extended = token.size() > kLongestBaseIdentifier;
  return parseNumber(token, message.id, 16);
}

bool parseBus(TrcTokens& tokens, BrixMessage& message) {
  return parseNumber(tokens.take(), message.bus, 10);
}

bool parseTypeWord(TrcTokens& tokens, BrixMessage& message) {
  const auto type = tryMessageTypeFromText(tokens.take());
  message.type = type.value_or(MessageType::Unknown);
  message.direction = message.type == MessageType::Tx ? MessageDirection::Tx : MessageDirection::Rx;
  return type.has_value();
}

bool parseReserved(TrcTokens& tokens, BrixMessage& message) {
  const std::string_view token = tokens.take();
  return token == kNone || (!token.empty() && tryParseInt16Hex(token, message.reserved));
}

bool parseClassicLength(TrcTokens& tokens, BrixMessage& message) {
  std::uint32_t length = 0;
  if (!parseNumber(tokens.take(), length, 10)) {
    return false;
  }
  message.length = std::min(length, kMaxClassicLength);
  return true;
}

bool parseByteToken(std::string_view token, std::uint8_t& value) {
  std::uint32_t number = 0;
  if (!parseNumber(token, number, 16) || number > 0xFF) {
    return false;
  }
  value = static_cast<std::uint8_t>(number);
  return true;
}

// Whether a byte of the payload must be exactly two digits long.
enum class ByteForm { AnyWidth, Pair };

bool parseData(TrcTokens& tokens, BrixMessage& message, ByteForm form) {
  auto& data = message.data;
  data.resize(std::min<std::size_t>(message.length, tokens.rest().size()));  // a byte has at least one character
  std::size_t count = tokens.takeHexPairs(data);
  while (count < data.size()) {
    if (form == ByteForm::Pair || !parseByteToken(tokens.take(), data[count])) {
      break;
    }
    ++count;
    count += tokens.takeHexPairs(std::span(data).subspan(count));
  }
  data.resize(count);
  return count == message.length;
}

// The words of the bus status, from its bits if the line does not spell them out.
void nameStatus(BrixMessage& message) {
  const auto& data = message.data;
  if (message.kind == MessageKind::ST && message.comment.empty() && message.length == 4 && data.size() == 4) {
    const std::uint32_t mask = std::uint32_t{data[0]} << 24 | std::uint32_t{data[1]} << 16 |
                               std::uint32_t{data[2]} << 8 | std::uint32_t{data[3]};
    message.comment = warningErrorsToText(mask);
  }
}

bool takeRemoteWord(TrcTokens& tokens, BrixMessage& message) {
  if (!equalsIgnoreCase(tokens.peek(), "RTR")) {
    return false;
  }
  message.remote = true;
  message.kind = MessageKind::RR;
  return true;
}

// What follows the bus and type columns in 1.0, 1.1 and 1.2.
bool parseClassicTail(TrcTokens& tokens, BrixMessage& message) {
  if (!parseIdentifier(tokens, message) || !parseClassicLength(tokens, message)) {
    return false;
  }
  if (message.id == kNoIdentifier) {
    message.type = MessageType::Warng;
  }
  if (equalsIgnoreCase(tokens.peek(), "ERROR")) {
    tokens.take();
    message.type = MessageType::Error;
  }
  if (message.type == MessageType::Warng) {
    message.kind = MessageKind::ST;
  } else if (message.type == MessageType::Error) {
    message.kind = MessageKind::ER;
  } else {
    message.kind = MessageKind::DT;
  }
  if (takeRemoteWord(tokens, message)) {
    return true;
  }
  if (!parseData(tokens, message, ByteForm::AnyWidth)) {
    return false;
  }
  const std::string_view rest = trimmed(tokens.rest(), " ");
  message.comment.assign(rest.substr(rest.rfind(' ') + 1));  // the last token; npos + 1 is 0
  return true;
}

// The column-based versions ------------------------------------------------------------------------------------------

// Whether lines of the version can have the columns of CAN XL.
enum class XlColumns { None, MayBe };

constexpr std::array kXlColumns = {trc_column::kVcid, trc_column::kSdt, trc_column::kAcceptance, trc_column::kRrs,
                                   trc_column::kSec};

MessageType typeOfKind(const BrixMessage& message) {
  switch (message.kind) {
    case MessageKind::DT:
    case MessageKind::RR:
      return message.direction == MessageDirection::Rx ? MessageType::Rx : MessageType::Tx;
    case MessageKind::ST:
      return MessageType::Warng;
    case MessageKind::EC:
    case MessageKind::ER:
      return MessageType::Error;
    default:
      return MessageType::Unknown;
  }
}

// An event's text is the rest of the line, its words joined by one blank.
void parseEvent(TrcTokens& tokens, BrixMessage& message) {
  while (!tokens.atEnd()) {
    if (!message.comment.empty()) {
      message.comment += ' ';
    }
    message.comment += tokens.take();
  }
}

// Status, error counter and error lines have no identifier and a fixed length. Lines of 2.0 leave the length out too
// and have their data right after the direction.
bool parseWithoutIdentifier(TrcTokens& tokens, XlColumns xlColumns, BrixMessage& message) {
  message.direction = MessageDirection::Rx;
  if (message.kind == MessageKind::ST) {
    message.length = 4;
  } else if (message.kind == MessageKind::EC) {
    message.length = 2;
    message.id = 0;
  } else {
    message.length = 5;
  }
  if (tryMessageDirectionFromText(tokens.peek())) {
    tokens.take();
    return parseData(tokens, message, ByteForm::Pair);
  }
  tokens.skip(3);  // identifier, direction, length
  if ((message.columnSet & trc_column::kReserved) != 0) {
    tokens.take();
  }
  if (xlColumns == XlColumns::MayBe) {
    const auto present = [&message](TrcColumnSet column) { return (message.columnSet & column) != 0; };
    tokens.skip(static_cast<std::size_t>(std::ranges::count_if(kXlColumns, present)));
  }
  return parseData(tokens, message, ByteForm::Pair);
}

// One of the columns that only CAN XL frames fill.
template <class Value>
bool parseXlColumn(TrcTokens& tokens, const BrixMessage& message, TrcColumnSet column, std::optional<Value>& field) {
  if ((message.columnSet & column) == 0) {
    return true;
  }
  const std::string_view token = tokens.take();
  if (message.kind != MessageKind::XL || token == kNone) {
    return true;
  }
  std::uint32_t value = 0;
  if (!parseNumber(token, value, 16) || value > std::numeric_limits<Value>::max()) {
    return false;
  }
  field = static_cast<Value>(value);
  return true;
}

bool parseXlColumns(TrcTokens& tokens, BrixMessage& message) {
  return parseXlColumn(tokens, message, trc_column::kVcid, message.xl.vcid) &&
         parseXlColumn(tokens, message, trc_column::kSdt, message.xl.sdt) &&
         parseXlColumn(tokens, message, trc_column::kAcceptance, message.xl.acceptance) &&
         parseXlColumn(tokens, message, trc_column::kRrs, message.xl.rrs) &&
         parseXlColumn(tokens, message, trc_column::kSec, message.xl.sec);
}

bool parseLengthOrDlc(TrcTokens& tokens, BrixMessage& message) {
  std::uint32_t value = 0;
  if (!parseNumber(tokens.take(), value, 10)) {
    return false;
  }
  if ((message.columnSet & trc_column::kDlc) != 0) {
    const auto length = message.kind == MessageKind::XL ? xlDlcToLength(value) : dlcToLength(value);
    if (!length) {
      return false;
    }
    value = *length;
  }
  message.length = value;
  return true;
}

bool parseFrame(TrcTokens& tokens, XlColumns xlColumns, BrixMessage& message) {
  if (!parseIdentifier(tokens, message)) {
    return false;
  }
  const auto direction = tryMessageDirectionFromText(tokens.take());
  if (!direction) {
    return false;
  }
  message.direction = *direction;
  if ((message.columnSet & trc_column::kReserved) != 0 && !parseReserved(tokens, message)) {
    return false;
  }
  if (xlColumns == XlColumns::MayBe && !parseXlColumns(tokens, message)) {
    return false;
  }
  if (!parseLengthOrDlc(tokens, message)) {
    return false;
  }
  message.remote = message.kind == MessageKind::RR;
  return message.remote || parseData(tokens, message, ByteForm::AnyWidth);
}

bool parseColumns(TrcTokens& tokens, XlColumns xlColumns, BrixMessage& message) {
  message.columnBased = true;
  if ((message.columnSet & trc_column::kNumber) != 0) {
    skipNumber(tokens);
  }
  if (!parseTime(tokens, message)) {
    return false;
  }
  const auto kind = tryMessageKindFromText(tokens.take());
  if (!kind) {
    return false;
  }
  message.kind = *kind;
  if ((message.columnSet & trc_column::kBus) == 0) {
    message.bus = 0;
  } else if (tokens.atEnd()) {
    return false;
  } else if (!parseBus(tokens, message)) {
    message.bus = kUnnumberedBus;
    tokens.remains.unnumberedBus = true;
  }
  bool understood = true;
  switch (message.kind) {
    case MessageKind::EV:
      parseEvent(tokens, message);
      break;
    case MessageKind::ST:
    case MessageKind::EC:
    case MessageKind::ER:
      understood = parseWithoutIdentifier(tokens, xlColumns, message);
      break;
    default:
      understood = parseFrame(tokens, xlColumns, message);
  }
  message.type = typeOfKind(message);
  return understood;
}

}  // namespace

bool parseTrc10(TrcTokens& tokens, BrixMessage& message) {
  skipNumber(tokens);
  message.type = MessageType::Rx;
  message.direction = MessageDirection::Rx;
  return parseTime(tokens, message) && parseClassicTail(tokens, message);
}

bool parseTrc11(TrcTokens& tokens, BrixMessage& message) {
  skipNumber(tokens);
  return parseTime(tokens, message) && parseTypeWord(tokens, message) && parseClassicTail(tokens, message);
}

bool parseTrc12(TrcTokens& tokens, BrixMessage& message) {
  skipNumber(tokens);
  return parseTime(tokens, message) && parseBus(tokens, message) && parseTypeWord(tokens, message) &&
         parseClassicTail(tokens, message);
}

bool parseTrc13(TrcTokens& tokens, BrixMessage& message) {
  skipNumber(tokens);
  if (!parseTime(tokens, message) || !parseBus(tokens, message) || !parseTypeWord(tokens, message) ||
      !parseIdentifier(tokens, message) || !parseReserved(tokens, message) || !parseClassicLength(tokens, message)) {
    return false;
  }
  if (message.type == MessageType::Warng) {
    message.kind = MessageKind::ST;
  } else if (message.type == MessageType::Error) {
    message.kind = message.id == 0 ? MessageKind::EC : MessageKind::ER;
  } else {
    message.kind = MessageKind::DT;
  }
  return takeRemoteWord(tokens, message) || parseData(tokens, message, ByteForm::AnyWidth);
}

bool parseTrc20(TrcTokens& tokens, BrixMessage& message) {
  return parseColumns(tokens, XlColumns::None, message);
}

bool parseTrc30(TrcTokens& tokens, BrixMessage& message) {
  return parseColumns(tokens, XlColumns::MayBe, message);
}

TrcLineRemains parseTrcLine(std::string_view line, const TrcVersion& version, BrixMessage& message) {
  TrcTokens tokens(line);
  message.valid = version.parse(tokens, message);
  if (message.valid) {
    nameStatus(message);
  }
  return tokens.remains;
}

}  // namespace xlatr
