#include "formats/asc/asc_bus_lines.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "formats/asc/asc_event_marks.hpp"
#include "formats/asc/asc_printer.hpp"
#include "messages/enumerations.hpp"
#include "messages/error_type.hpp"
#include "util/numbers.hpp"
#include "util/render.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kErrorWord = "ErrorFrame";
constexpr std::string_view kOverloadWord = "OverloadFrame";
constexpr std::string_view kCodeMark = "ECC:";
constexpr std::string_view kStatusMark = "Status:";
constexpr std::string_view kMark = "(Zelkworks)";
constexpr std::string_view kCounterChange = "error counter change";
constexpr std::string_view kTransmitCount = " - TxErr: ";
constexpr std::string_view kReceiveCount = " RxErr: ";
constexpr std::string_view kUserComment = "Comment: 0";  // of no other event

bool isTrimmed(std::string_view text) {
  return !text.empty() && trimmed(text).size() == text.size();
}

void setText(std::string_view text, Frame& frame) {
  if (!text.empty()) {
    frame.text = text;
  }
}

bool takeBus(AscTokens& tokens, Frame& frame) {
  std::uint32_t bus = 0;
  const bool known = !tokens.atEnd() && parseByteWithPrefix(tokens.take(), bus);
  frame.bus = static_cast<std::uint16_t>(bus);
  return known;
}

std::uint16_t directionOf(std::string_view word) {
  if (word == "Rx") {
    return frame_flag::kReceived;
  }
  return word == "Tx" ? frame_flag::kTransmitted : std::uint16_t{0};
}

std::string_view directionWord(const Frame& frame) {
  return frame.has(frame_flag::kTransmitted) ? "Tx" : "Rx";
}

// ---- error frames

// Two bits of type, one of direction, five of the position.
constexpr unsigned kTypeShift = 6;
constexpr std::uint32_t kReceiving = 0x20;
constexpr std::uint32_t kPositionMask = 0x1F;
constexpr std::uint32_t kHighestCode = 0xFF;

void takeErrorCode(std::uint32_t code, Frame& frame) {
  frame.set((code & kReceiving) != 0 ? frame_flag::kReceived : frame_flag::kTransmitted);
  frame.attributes.set(FrameAttribute::ErrorType, code >> kTypeShift);
  frame.attributes.set(FrameAttribute::ErrorPosition, code & kPositionMask);
}

bool hasErrorCode(const Frame& frame) {
  return frame.attributes.has(FrameAttribute::ErrorType) && frame.attributes.has(FrameAttribute::ErrorPosition);
}

// The number of an item such as "Code = 0x82".
std::optional<std::uint32_t> itemOf(std::string_view text, std::string_view key) {
  AscTokens tokens(text, Way::complete());
  std::string_view last;
  while (!tokens.atEnd()) {
    const std::string_view token = tokens.take();
    std::uint32_t value = 0;
    if (token == "=" && equalsIgnoreCase(last, key) && !tokens.atEnd() && tryParseUInt32Auto(tokens.peek(), value)) {
      return value;
    }
    last = token;
  }
  return std::nullopt;
}

// What stands between "ECC:" and the rest of the text, which is all that is left of it; nothing for other texts.
std::optional<std::uint32_t> takeCodeBits(std::string_view& text) {
  if (!startsWithIgnoreCase(text, kCodeMark)) {
    return std::nullopt;
  }
  AscTokens tokens(text.substr(kCodeMark.size()), Way::complete());
  std::uint32_t code = 0;
  if (tokens.atEnd() || !tryParseUInt32(tokens.take(), code, 2) || code > kHighestCode) {
    return std::nullopt;
  }
  text = trimmed(tokens.rest());
  return code;
}

// The first bit of the flags says whether the code is there.
std::optional<std::uint32_t> codeOfItems(std::string_view text) {
  const auto flags = itemOf(text, "FLAGS");
  const auto code = flags && (*flags & 1U) != 0 ? itemOf(text, "CODE") : std::nullopt;
  return code && *code <= kHighestCode ? code : std::nullopt;
}

void parseError(std::string_view text, Frame& frame) {
  frame.kind = FrameKind::Error;
  const auto bits = takeCodeBits(text);
  if (const auto code = bits ? bits : codeOfItems(text)) {
    takeErrorCode(*code, frame);
  }
  setText(text, frame);
}

// "CANFD 1 Rx ErrorFrame words"
bool parseFdError(AscTokens& tokens, Frame& frame) {
  if (!takeBus(tokens, frame)) {
    return false;
  }
  std::string_view word = tokens.take();
  if (const std::uint16_t direction = directionOf(word); direction != 0) {
    frame.set(direction);
    word = tokens.take();
  }
  frame.kind = FrameKind::Error;
  setText(trimmed(tokens.rest()), frame);
  return equalsIgnoreCase(word, kErrorWord);
}

void appendText(TextBuffer& out, const Frame& frame) {
  if (frame.text) {
    out.append(' ');
    out.append(*frame.text);
  }
}

void appendError(TextBuffer& out, const Frame& frame) {
  const bool coded = hasErrorCode(frame);
  if (!coded && frame.has(frame_flag::kReceived | frame_flag::kTransmitted)) {
    out.append("CANFD ");
    appendDecimalRight(out, frame.bus, 3);
    out.append(' ');
    out.append(directionWord(frame));
  } else {
    appendDecimalLeft(out, frame.bus, 2);
  }
  out.append(' ');
  out.append(kErrorWord);
  if (coded) {
    out.append(' ');
    out.append(kCodeMark);
    out.append(' ');
    appendAscErrorCode(out, *frame.attributes.get(FrameAttribute::ErrorType) << kTypeShift |
                                (frame.has(frame_flag::kReceived) ? kReceiving : 0U) |
                                *frame.attributes.get(FrameAttribute::ErrorPosition));
  }
  appendText(out, frame);
}

bool hasErrorLine(const Frame& frame) {
  const auto type = frame.attributes.get(FrameAttribute::ErrorType);
  const auto position = frame.attributes.get(FrameAttribute::ErrorPosition);
  if (type.value_or(0) > kOtherError || position.value_or(0) > kPositionMask) {
    return false;
  }
  // Not for words that would be read as a code.
  std::string_view text = frame.text.value_or("late");
  return isTrimmed(text) && (type || position || (!takeCodeBits(text) && !codeOfItems(text)));
}

// ---- statuses

struct ChipStatus {
  std::string_view words;
  std::uint32_t state;
};

constexpr std::string_view kChipStatus = "chip status ";
constexpr std::array kChipStatuses = {
    ChipStatus{"error active", 0},
    ChipStatus{"warning level", static_cast<std::uint32_t>(WarningErrors::BusWarning)},
    ChipStatus{"error passive", static_cast<std::uint32_t>(WarningErrors::BusPassive)},
    ChipStatus{"bus off", static_cast<std::uint32_t>(WarningErrors::BusOff)},
    ChipStatus{"busoff", static_cast<std::uint32_t>(WarningErrors::BusOff)},
};

// The state that the words of a status stand for.
std::optional<std::uint32_t> stateOf(std::string_view words) {
  const std::string_view rest = words.substr(startsWithIgnoreCase(words, kChipStatus) ? kChipStatus.size() : 0);
  const auto* const found = std::ranges::find_if(
      kChipStatuses, [rest](const ChipStatus& status) { return equalsIgnoreCase(rest, status.words); });
  if (found != kChipStatuses.end()) {
    return found->state;
  }
  return containsIgnoreCase(words, "ZELK") ? std::nullopt : tryWarningErrorsFromText(words);
}

// Cuts " - TxErr: 8 RxErr: 0" off the end of a text.
bool takeCounters(std::string_view& text, Frame& frame) {
  const std::size_t at = findIgnoreCase(text, "- TXERR:");
  if (at == std::string_view::npos) {
    return false;
  }
  AscTokens tokens(text.substr(at), Way::complete());
  std::uint32_t transmit = 0;
  std::uint32_t receive = 0;
  if (!tokens.skip(2) || tokens.atEnd() || !tryParseUInt32(tokens.take(), transmit, 10) ||
      !equalsIgnoreCase(tokens.take(), "RxErr:") || tokens.atEnd() || !tryParseUInt32(tokens.take(), receive, 10) ||
      !tokens.atEnd()) {
    return false;
  }
  frame.attributes.set(FrameAttribute::TxErrors, transmit);
  frame.attributes.set(FrameAttribute::RxErrors, receive);
  text = trimmed(text.substr(0, at));
  return true;
}

// "CAN 1 Status:words (maker) - TxErr: 8 RxErr: 0", with or without the last parts.
bool parseStatus(AscTokens& tokens, Frame& frame) {
  if (!takeBus(tokens, frame) || !startsWithIgnoreCase(tokens.rest(), kStatusMark)) {
    return false;
  }
  std::string_view words = trimmed(tokens.rest().substr(kStatusMark.size()));
  const bool counted = takeCounters(words, frame);
  const bool marked = endsWithIgnoreCase(words, kMark);
  words = trimmed(words.substr(0, words.size() - (marked ? kMark.size() : 0)));
  if (counted && equalsIgnoreCase(words, kCounterChange)) {
    frame.kind = FrameKind::Counters;
    return true;
  }
  frame.kind = FrameKind::Status;
  const auto state = stateOf(words);
  if (state) {
    frame.attributes.set(FrameAttribute::BusState, *state);
  }
  // Words that say no more than the bits are no text of the source.
  if (!state || !marked || !equalsIgnoreCase(words, warningErrorsToText(*state))) {
    setText(words, frame);
  }
  return true;
}

void appendCounters(TextBuffer& out, const Frame& frame) {
  out.append(kTransmitCount);
  appendDecimal(out, frame.attributes.get(FrameAttribute::TxErrors).value_or(0));
  out.append(kReceiveCount);
  appendDecimal(out, frame.attributes.get(FrameAttribute::RxErrors).value_or(0));
}

void appendStatusHead(TextBuffer& out, const Frame& frame) {
  out.append("CAN ");
  appendDecimalLeft(out, frame.bus, 2);
  out.append(' ');
  out.append(kStatusMark);
}

// The mark tells words that stand for bits from words of the source, and is left out after those of other makers.
void appendStatus(TextBuffer& out, const Frame& frame) {
  appendStatusHead(out, frame);
  const auto state = frame.attributes.get(FrameAttribute::BusState);
  const std::string ofState = state ? warningErrorsToText(*state) : std::string();
  const std::string_view words = frame.text.value_or(ofState);
  out.append(words);
  const bool unmarked = frame.text && (startsWithIgnoreCase(words, kChipStatus) || equalsIgnoreCase(words, ofState));
  if (!words.empty() && !unmarked) {
    out.append(' ');
    out.append(kMark);
  }
  if (frame.attributes.has(FrameAttribute::TxErrors)) {
    appendCounters(out, frame);
  }
}

bool hasStatusLine(const Frame& frame) {
  const auto state = frame.attributes.get(FrameAttribute::BusState);
  if (frame.attributes.has(FrameAttribute::TxErrors) != frame.attributes.has(FrameAttribute::RxErrors)) {
    return false;
  }
  if (!frame.text) {
    return state && stateOf(warningErrorsToText(*state)) == state;
  }
  const std::string_view words = *frame.text;
  const bool misread = !isTrimmed(words) || endsWithIgnoreCase(words, kMark) || containsIgnoreCase(words, "- TXERR:") ||
                       equalsIgnoreCase(words, kCounterChange);
  return !misread && stateOf(words) == state;
}

// ---- LIN

struct ModelWord {
  ChecksumType model;
  std::string_view word;
};
constexpr std::array kModelWords = {
    ModelWord{ChecksumType::Unknown, "unknown"},
    ModelWord{ChecksumType::Classic, "classic"},
    ModelWord{ChecksumType::Enhanced, "enhanced"},
    ModelWord{ChecksumType::Auto, "auto"},
};
constexpr std::array kLinItemKeys = {FrameAttribute::LinErrors, FrameAttribute::LinDirection};
constexpr std::uint32_t kHighestLinId = 0x3F;

// "Li" is the first one, "L2" the second.
bool isLinChannel(std::string_view token, Frame& frame) {
  constexpr std::size_t kLongest = 4;
  std::uint32_t bus = 1;
  if (token.size() < 2 || token.size() > kLongest || token.front() != 'L') {
    return false;
  }
  token.remove_prefix(1);
  const bool known = token == "i" || (isDecimalDigit(token.front()) && tryParseUInt32(token, bus, 10) && bus <= 255);
  frame.bus = static_cast<std::uint16_t>(bus);
  return known;
}

// Whether the tokens after the channel begin as those of a frame, which then are identifier and direction.
bool takeLinStart(AscTokens& tokens, int base, Frame& frame) {
  std::uint32_t id = 0;
  if (tokens.atEnd() || !tryParseUInt32(tokens.take(), id, base) || id > kHighestLinId) {
    return false;
  }
  frame.id = id;
  frame.flags = directionOf(tokens.take());
  return frame.flags != 0;
}

void takeLinItem(std::string_view key, std::string_view value, int base, Frame& frame) {
  std::uint32_t number = 0;
  if (key == "checksum" && tryParseUInt32(value, number, base)) {
    frame.attributes.set(FrameAttribute::Checksum, number);
  } else if (key == "CSM") {
    const auto* const found = std::ranges::find(kModelWords, value, &ModelWord::word);
    if (found != kModelWords.end()) {
      frame.attributes.set(FrameAttribute::ChecksumModel, static_cast<std::uint32_t>(found->model));
      frame.set(found->model == ChecksumType::Enhanced ? frame_flag::kEnhancedChecksum : std::uint16_t{0});
    }
  } else {
    for (const FrameAttribute attribute : kLinItemKeys) {
      if (key == frameAttributeName(attribute) && tryParseUInt32(value, number, 10)) {
        frame.attributes.set(attribute, number);
      }
    }
  }
}

void takeLinItems(AscTokens& tokens, int base, Frame& frame) {
  std::string_view last;
  while (!tokens.atEnd()) {
    const std::string_view token = tokens.take();
    if (token == "=" && !tokens.atEnd()) {
      takeLinItem(last, trimmed(tokens.peek(), ","), base, frame);
    }
    last = token;
  }
}

bool parseLin(AscTokens tokens, int base, std::vector<std::uint8_t>& bytes, Frame& frame) {
  const std::string_view text = trimmed(tokens.rest());
  if (!takeLinStart(tokens, base, frame)) {
    frame.kind = FrameKind::LinEvent;
    frame.id = 0;
    frame.flags = 0;
    setText(text, frame);
    return !text.empty();
  }
  constexpr std::uint32_t kLongest = 8;
  std::uint32_t length = 0;
  frame.kind = FrameKind::Lin;
  if (tokens.atEnd() || !tryParseUInt32(tokens.take(), length, base) || length > kLongest) {
    return false;
  }
  bytes.clear();
  for (std::uint32_t left = length; left > 0; --left) {
    std::uint32_t byte = 0;
    if (tokens.atEnd() || !parseByteOfBase(tokens.take(), byte, base)) {
      return false;
    }
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  frame.data = bytes;
  frame.dlc = static_cast<std::uint16_t>(length);
  takeLinItems(tokens, base, frame);
  return true;
}

void appendItem(TextBuffer& out, std::string_view key) {
  out.append("  ");
  out.append(key);
  out.append(" = ");
}

void appendLinChannel(TextBuffer& out, const Frame& frame) {
  out.append('L');
  if (frame.bus == 1) {
    out.append('i');
  } else {
    appendDecimal(out, frame.bus);
  }
  out.append(' ');
}

void appendLin(TextBuffer& out, const Frame& frame) {
  constexpr std::size_t kIdColumns = 15;
  appendLinChannel(out, frame);
  const std::size_t begin = out.size();
  appendHex(out, frame.id, 1);
  out.appendBlanks(kIdColumns - (out.size() - begin));
  out.append(' ');
  out.append(directionWord(frame));
  out.append("     ");
  appendDecimal(out, frame.data.size());
  if (!frame.data.empty()) {
    out.append(' ');
    appendHexBytes(out, frame.data);
  }
  if (const auto checksum = frame.attributes.get(FrameAttribute::Checksum)) {
    appendItem(out, "checksum");
    appendHex(out, *checksum, 2);
  }
  if (const auto model = frame.attributes.get(FrameAttribute::ChecksumModel)) {
    appendItem(out, "CSM");
    out.append(kModelWords.at(*model).word);
  }
  for (const FrameAttribute attribute : kLinItemKeys) {
    if (const auto value = frame.attributes.get(attribute)) {
      appendItem(out, frameAttributeName(attribute));
      appendDecimal(out, *value);
    }
  }
}

bool hasLinLine(const Frame& frame) {
  return frame.attributes.get(FrameAttribute::ChecksumModel).value_or(0) < kModelWords.size();
}

bool hasLinEventLine(const Frame& frame) {
  Frame start;
  AscTokens tokens(frame.text.value_or(std::string_view()), Way::complete());
  return frame.text && isTrimmed(*frame.text) && !takeLinStart(tokens, 16, start);
}

// ---- events

// The first words of lines about buses of other kinds, and of the measurement itself.
constexpr std::array<std::string_view, 8> kEventWords = {"START", "J1939TP", "FR",   "ETH",
                                                         "AFDX",  "A429",    "MOST", "SPI"};

bool parseEvent(std::string_view rest, Frame& frame) {
  frame.kind = FrameKind::Event;
  if (rest.starts_with(kUserComment) && (rest.size() == kUserComment.size() || rest[kUserComment.size()] == ' ')) {
    if (rest.size() > kUserComment.size()) {
      frame.text = rest.substr(kUserComment.size() + 1);
    }
    return true;
  }
  AscTokens tokens(rest, Way::complete());
  const std::string_view first = tokens.take();
  frame.text = trimmed(rest);
  return first.starts_with("//") ||
         std::ranges::any_of(kEventWords, [first](std::string_view word) { return equalsIgnoreCase(first, word); }) ||
         hasAscEventMark(rest);
}

// Whether the text is a line of its own, which comes back as it is.
bool isOwnLine(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  Frame frame;
  return parseAscBusLine(AscTokens(text, Way::complete()), true, bytes, frame) && frame.kind == FrameKind::Event &&
         frame.text == text;
}

void appendEvent(TextBuffer& out, const Frame& frame) {
  if (frame.text && isOwnLine(*frame.text)) {
    out.append(*frame.text);
    return;
  }
  out.append(kUserComment);
  appendText(out, frame);
}

// ---- lines of a CAN bus without a word before it

// Errors, overload frames, the statistic of a bus, and requests to send, which are no frames yet.
bool parseOnBus(AscTokens& tokens, std::string_view rest, Frame& frame) {
  if (!takeBus(tokens, frame)) {
    return false;
  }
  const std::string_view word = tokens.take();
  if (equalsIgnoreCase(word, kErrorWord)) {
    parseError(trimmed(tokens.rest()), frame);
    return true;
  }
  if (equalsIgnoreCase(word, kOverloadWord)) {
    frame.kind = FrameKind::Overload;
    setText(trimmed(tokens.rest()), frame);
    return true;
  }
  frame.kind = FrameKind::Event;
  frame.bus = 0;
  frame.text = trimmed(rest);
  return startsWithIgnoreCase(word, "Statistic:") || startsWithIgnoreCase(tokens.peek(), "TxRq");
}

}  // namespace

bool parseAscBusLine(AscTokens tokens, bool hexBase, std::vector<std::uint8_t>& bytes, Frame& frame) {
  const std::string_view rest = tokens.rest();
  if (tokens.atEnd()) {
    return false;
  }
  if (isDecimalDigit(rest.front())) {
    return parseOnBus(tokens, rest, frame);
  }
  AscTokens after = tokens;
  const std::string_view first = after.take();
  if (first == "CANFD") {
    return parseFdError(after, frame);
  }
  if (first == "CAN") {
    return parseStatus(after, frame);
  }
  if (isLinChannel(first, frame)) {
    return parseLin(after, hexBase ? 16 : 10, bytes, frame);
  }
  frame.bus = 0;
  return parseEvent(rest, frame);
}

bool isAscBlockLine(std::string_view line) {
  return startsWithIgnoreCase(line, "BEGIN TRIGGERBLOCK") || startsWithIgnoreCase(line, "END TRIGGERBLOCK");
}

void appendAscBusLine(TextBuffer& out, const Frame& frame) {
  switch (frame.kind) {
    case FrameKind::Error:
      appendError(out, frame);
      break;
    case FrameKind::Overload:
      appendDecimalLeft(out, frame.bus, 2);
      out.append(' ');
      out.append(kOverloadWord);
      appendText(out, frame);
      break;
    case FrameKind::Status:
      appendStatus(out, frame);
      break;
    case FrameKind::Counters:
      appendStatusHead(out, frame);
      out.append(kCounterChange);
      out.append(' ');
      out.append(kMark);
      appendCounters(out, frame);
      break;
    case FrameKind::Lin:
      appendLin(out, frame);
      break;
    case FrameKind::LinEvent:
      appendLinChannel(out, frame);
      out.append(*frame.text);
      break;
    default:
      appendEvent(out, frame);
  }
}

bool hasAscLine(const Frame& frame) {
  std::uint32_t number = 0;
  switch (frame.kind) {
    case FrameKind::Data:
      // Not for a name that would be taken for BRS.
      return !frame.text || !tryParseUInt32Auto(*frame.text, number);
    case FrameKind::Error:
      return hasErrorLine(frame);
    case FrameKind::Overload:
      return !frame.text || isTrimmed(*frame.text);
    case FrameKind::Status:
      return hasStatusLine(frame);
    case FrameKind::Lin:
      return hasLinLine(frame);
    case FrameKind::LinEvent:
      return hasLinEventLine(frame);
    default:
      return true;
  }
}

}  // namespace xlatr
