#include "frames/frame_comment.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "util/decimal.hpp"
#include "util/hex.hpp"
#include "util/numbers.hpp"
#include "util/render.hpp"
#include "util/text.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kMark = "xlatr:";
constexpr unsigned kNanosecondDigits = 9;
constexpr std::string_view kTextField = "text";

struct Escape {
  char character;
  char letter;
};
constexpr std::array kEscapes = {Escape{'\n', 'n'}, Escape{'\r', 'r'}, Escape{'\0', '0'}, Escape{'\\', '\\'}};

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

void appendTime(TextBuffer& out, std::int64_t timeNs) {
  constexpr std::uint64_t kSecond = 1'000'000'000;
  const std::uint64_t ns = timeNs < 0 ? 0 - static_cast<std::uint64_t>(timeNs) : static_cast<std::uint64_t>(timeNs);
  out.append(timeNs < 0 ? " time=-" : " time=");
  appendDecimal(out, ns / kSecond);
  out.append('.');
  char* const digits = out.extend(kNanosecondDigits);
  std::uint64_t left = ns % kSecond;
  for (std::size_t at = kNanosecondDigits; at > 0; --at) {
    digits[at - 1] = static_cast<char>('0' + left % 10);
    left /= 10;
  }
}

void appendField(TextBuffer& out, std::string_view name) {
  out.append(' ');
  out.append(name);
  out.append('=');
}

void appendNumber(TextBuffer& out, std::string_view name, std::uint32_t value) {
  if (value != 0) {
    appendField(out, name);
    appendDecimal(out, value);
  }
}

void appendFlags(TextBuffer& out, std::uint16_t flags) {
  std::string_view separator = " flags=";
  for (const FrameFlagName& flag : frameFlagNames()) {
    if ((flags & flag.flag) != 0) {
      out.append(separator);
      out.append(flag.name);
      separator = ",";
    }
  }
}

bool readFlags(std::string_view words, Frame& frame) {
  TokenCursor<','> tokens(words);
  while (!tokens.atEnd()) {
    const std::optional<std::uint16_t> flag = frameFlagOfName(tokens.take());
    if (!flag) {
      return false;
    }
    frame.set(*flag);
  }
  return true;
}

template <typename Value>
bool readNumber(std::string_view text, Value& value, int base = 10) {
  std::uint32_t number = 0;
  if (text.empty() || !tryParseUInt32(text, number, base) || number > std::numeric_limits<Value>::max()) {
    return false;
  }
  value = static_cast<Value>(number);
  return true;
}

void appendEscaped(TextBuffer& out, std::string_view text) {
  for (const char character : text) {
    const auto* const escape = std::ranges::find(kEscapes, character, &Escape::character);
    if (escape == kEscapes.end()) {
      out.append(character);
    } else {
      out.append('\\');
      out.append(escape->letter);
    }
  }
}

bool readEscaped(std::string_view text, std::string& characters) {
  characters.clear();
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      characters += text[at];
      continue;
    }
    ++at;
    const auto* const escape =
        at < text.size() ? std::ranges::find(kEscapes, text[at], &Escape::letter) : kEscapes.end();
    if (escape == kEscapes.end()) {
      return false;
    }
    characters += escape->character;
  }
  return true;
}

}  // namespace

void appendFrameComment(TextBuffer& out, const Frame& frame) {
  out.append(' ');
  out.append(kMark);
  out.append(' ');
  out.append(frameKindName(frame.kind));
  appendTime(out, frame.timeNs);
  appendNumber(out, "bus", frame.bus);
  if (frame.id != 0) {
    appendField(out, "id");
    appendHex(out, frame.id, 1);
  }
  appendFlags(out, frame.flags);
  appendNumber(out, "dlc", frame.dlc);
  if (!frame.data.empty()) {
    appendField(out, "data");
    appendHexBytes(out, frame.data, "");
  }
  for (std::size_t at = 0; at < kFrameAttributeCount && !frame.attributes.empty(); ++at) {
    const auto attribute = static_cast<FrameAttribute>(at);
    if (const auto value = frame.attributes.get(attribute)) {
      appendField(out, frameAttributeName(attribute));
      appendDecimal(out, *value);
    }
  }
  if (frame.text) {
    appendField(out, kTextField);
    appendEscaped(out, *frame.text);
  }
}

bool FrameCommentReader::readData(std::string_view digits, Frame& frame) {
  data_.clear();
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    const int byte = hexDigitValue(digits[at]) * 16 | hexDigitValue(digits[at + 1]);
    if (byte < 0) {
      return false;
    }
    data_.push_back(static_cast<std::uint8_t>(byte));
  }
  frame.data = data_;
  return digits.size() % 2 == 0;
}

bool FrameCommentReader::readField(std::string_view name, std::string_view value, Frame& frame) {
  if (name == "time") {
    const std::optional<std::int64_t> time = scaledDecimal(value, kNanosecondDigits);
    frame.timeNs = time.value_or(0);
    return time && *time >= -kFarthestNs && *time <= kFarthestNs;
  }
  if (name == "bus") {
    return readNumber(value, frame.bus);
  }
  if (name == "id") {
    return readNumber(value, frame.id, 16);
  }
  if (name == "flags") {
    return readFlags(value, frame);
  }
  if (name == "dlc") {
    return readNumber(value, frame.dlc);
  }
  if (name == "data") {
    return readData(value, frame);
  }
  const std::optional<FrameAttribute> attribute = frameAttributeOfName(name);
  std::uint32_t number = 0;
  if (!attribute || !readNumber(value, number)) {
    return false;
  }
  frame.attributes.set(*attribute, number);
  return true;
}

bool FrameCommentReader::read(std::string_view comment, Frame& frame) {
  comment = withoutBlanks(comment);
  if (!comment.starts_with(kMark)) {
    return false;
  }
  TokenCursor<' '> tokens(comment.substr(kMark.size()));
  const std::optional<FrameKind> kind = frameKindOfName(tokens.take());
  if (!kind) {
    return false;
  }
  frame.kind = *kind;
  while (!tokens.atEnd()) {
    const std::string_view rest = tokens.rest();
    const std::size_t end = rest.find('=');
    if (end == std::string_view::npos) {
      return false;
    }
    if (rest.substr(0, end) == kTextField) {
      if (!readEscaped(rest.substr(end + 1), text_)) {
        return false;
      }
      frame.text = text_;
      return true;
    }
    const std::string_view token = tokens.take();
    if (end >= token.size() || !readField(token.substr(0, end), token.substr(end + 1), frame)) {
      return false;
    }
  }
  return true;
}

bool looksLikeFrameComment(std::string_view text) {
  return withoutBlanks(text).starts_with(kMark);
}

bool isPlainComment(std::string_view text) {
  return !containsAny(text, "\n\r") && !looksLikeFrameComment(text);
}

bool saysMoreThanText(const Frame& frame) {
  return !frame.text || frame.bus != 0 || frame.flags != 0 || frame.dlc != 0 || frame.id != 0 || !frame.data.empty() ||
         !frame.attributes.empty();
}

}  // namespace xlatr
