#include "frame_lines.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

#include "xlatr/frames.hpp"

namespace xlatr::cli {
namespace {

constexpr char kSmallDigits[] = "0123456789abcdef";
constexpr char kCapitalDigits[] = "0123456789ABCDEF";

constexpr std::uint32_t kindBit(unsigned kind) {
  return std::uint32_t{1} << kind;
}
constexpr std::uint32_t kWithIdentifier =
    kindBit(XLATR_KIND_DATA) | kindBit(XLATR_KIND_REMOTE) | kindBit(XLATR_KIND_LIN);

bool hasIdentifier(const FrameView& frame) {
  return (kWithIdentifier >> frame.kind() & 1U) != 0;
}

template <typename Number>
void appendNumber(std::string& out, Number number) {
  std::array<char, 24> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(digits.data(), end);
}

void appendPadded(std::string& out, std::string_view text, std::size_t width) {
  out.append(width - std::min(width, text.size()), ' ').append(text);
}

void appendPaddedNumber(std::string& out, std::uint64_t number, std::size_t width) {
  std::array<char, 24> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  appendPadded(out, {digits.data(), static_cast<std::size_t>(end - digits.data())}, width);
}

// Seconds, with the last three decimals only where they are not 0.
void appendSeconds(std::string& out, std::int64_t ns, std::size_t width) {
  constexpr std::uint64_t kNsPerSecond = 1'000'000'000;
  const bool negative = ns < 0;
  const std::uint64_t size = negative ? 0 - static_cast<std::uint64_t>(ns) : static_cast<std::uint64_t>(ns);
  std::array<char, 32> text{};
  char* end = text.data();
  if (negative) {
    *end++ = '-';
  }
  end = std::to_chars(end, text.data() + text.size(), size / kNsPerSecond).ptr;
  *end++ = '.';
  std::uint64_t rest = size % kNsPerSecond;
  const std::size_t decimals = rest % 1000 == 0 ? 6 : 9;
  rest = decimals == 6 ? rest / 1000 : rest;
  for (std::size_t at = decimals; at > 0; --at) {
    end[at - 1] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  end += decimals;
  appendPadded(out, {text.data(), static_cast<std::size_t>(end - text.data())}, width);
}

void appendIdentifier(std::string& out, const FrameView& frame, std::size_t width) {
  const bool extended = frame.has(XLATR_FLAG_EXTENDED);
  std::size_t digits = 3;
  if (frame.kind() == XLATR_KIND_LIN) {
    digits = 2;
  } else if (extended) {
    digits = 8;
  }
  std::array<char, 8> text{};
  for (std::size_t at = 0; at < digits; ++at) {
    text.at(at) = kCapitalDigits[frame.id() >> 4 * (digits - 1 - at) & 0xFU];
  }
  appendPadded(out, {text.data(), digits}, width);
}

std::string_view directionOf(const FrameView& frame) {
  if (frame.has(XLATR_FLAG_TRANSMITTED)) {
    return "Tx";
  }
  return frame.has(XLATR_FLAG_RECEIVED) ? "Rx" : "-";
}

// What breaks a line or steers a terminal is shown as a "?".
void appendShown(std::string& out, std::string_view text) {
  for (const char character : text) {
    const bool control = static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
    out += control && character != '\t' ? '?' : character;
  }
}

void appendJsonText(std::string& out, std::string_view text) {
  out += '"';
  for (const char character : text) {
    if (character == '"' || character == '\\') {
      out += '\\';
      out += character;
    } else if (static_cast<unsigned char>(character) < 0x20) {
      out.append("\\u00");
      out += kSmallDigits[static_cast<unsigned char>(character) >> 4U];
      out += kSmallDigits[static_cast<unsigned char>(character) & 0xFU];
    } else {
      out += character;
    }
  }
  out += '"';
}

void appendData(std::string& out, Bytes data, std::string_view between) {
  std::string_view before;
  for (const std::uint8_t byte : data) {
    out.append(before);
    out += kSmallDigits[byte >> 4U];
    out += kSmallDigits[byte & 0xFU];
    before = between;
  }
}

struct FlagWord {
  std::uint16_t flag;
  std::string_view text;  // in lines
  std::string_view json;  // the name of the column
};
constexpr std::array kFlags = {
    FlagWord{XLATR_FLAG_EXTENDED, "", "ide"},
    FlagWord{XLATR_FLAG_FD, " FD", "edl"},
    FlagWord{XLATR_FLAG_BRS, " BRS", "brs"},
    FlagWord{XLATR_FLAG_ESI, " ESI", "esi"},
    FlagWord{XLATR_FLAG_XL, " XL", "xl"},
    FlagWord{XLATR_FLAG_DLC_KNOWN, "", "dlc_known"},
    FlagWord{XLATR_FLAG_ENHANCED_CHECKSUM, "", "enhanced_checksum"},
};

}  // namespace

void appendTextLine(const xlatr_batch& batch, std::size_t row, std::string& out) {
  constexpr std::size_t kTimeWidth = 14;
  constexpr std::size_t kBusWidth = 3;
  constexpr std::size_t kDirectionWidth = 4;
  constexpr std::size_t kIdWidth = 10;
  constexpr std::size_t kKindWidth = 11;
  constexpr std::size_t kLengthWidth = 4;
  const FrameView frame(batch, row);
  const Bytes data = frame.data();
  appendSeconds(out, frame.timeNs(), kTimeWidth);
  if (frame.bus() == 0) {
    appendPadded(out, "-", kBusWidth);
  } else {
    appendPaddedNumber(out, frame.bus(), kBusWidth);
  }
  appendPadded(out, directionOf(frame), kDirectionWidth);
  if (hasIdentifier(frame)) {
    appendIdentifier(out, frame, kIdWidth);
  } else {
    appendPadded(out, "-", kIdWidth);
  }
  out.append("  ");
  const std::size_t kindAt = out.size();
  out.append(xlatr_kind_name(frame.kind()));
  out.append(kKindWidth - std::min(kKindWidth, out.size() - kindAt), ' ');
  if (frame.kind() == XLATR_KIND_REMOTE) {
    appendPaddedNumber(out, frame.dlc(), kLengthWidth);
  } else {
    appendPaddedNumber(out, data.size(), kLengthWidth);
  }
  if (data.size() > 0) {
    out.append("  ");
    appendData(out, data, " ");
  }
  for (const FlagWord& word : kFlags) {
    if (!word.text.empty() && frame.has(word.flag)) {
      out.append(word.text == " FD" || word.text == " XL" ? " " : "").append(word.text);
    }
  }
  for (std::uint32_t attribute = 0; attribute < XLATR_ATTRIBUTE_COUNT; ++attribute) {
    if (const auto value = frame.attribute(attribute)) {
      out.append("  ").append(xlatr_attribute_name(attribute)).append("=");
      appendNumber(out, *value);
    }
  }
  if (const auto text = frame.text()) {
    out.append("  ");
    appendShown(out, *text);
  }
  out += '\n';
}

void appendJsonLine(const xlatr_batch& batch, std::size_t row, std::string& out) {
  const FrameView frame(batch, row);
  out.append("{\"time_ns\":");
  appendNumber(out, frame.timeNs());
  out.append(",\"kind\":\"").append(xlatr_kind_name(frame.kind())).append("\",\"bus\":");
  appendNumber(out, frame.bus());
  if (hasIdentifier(frame)) {
    out.append(",\"id\":\"");
    std::array<char, 8> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), frame.id(), 16).ptr;
    std::transform(digits.data(), end, digits.data(),
                   [](char digit) { return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit; });
    out.append(digits.data(), end).append("\"");
  }
  if (directionOf(frame) != "-") {
    out.append(",\"dir\":").append(frame.has(XLATR_FLAG_TRANSMITTED) ? "1" : "0");
  }
  for (const FlagWord& word : kFlags) {
    // Those of every table, and of the others those that are set.
    if (frame.has(word.flag) || word.json.size() == 3) {
      out.append(",\"").append(word.json).append("\":").append(frame.has(word.flag) ? "1" : "0");
    }
  }
  out.append(",\"dlc\":");
  appendNumber(out, frame.dlc());
  out.append(",\"length\":");
  appendNumber(out, frame.data().size());
  out.append(",\"data\":\"");
  appendData(out, frame.data(), "");
  out += '"';
  for (std::uint32_t attribute = 0; attribute < XLATR_ATTRIBUTE_COUNT; ++attribute) {
    if (const auto value = frame.attribute(attribute)) {
      const bool isError = attribute == XLATR_ATTRIBUTE_ERROR_TYPE;
      out.append(",\"").append(isError ? "err" : xlatr_attribute_name(attribute)).append("\":");
      appendNumber(out, *value);
    }
  }
  if (const auto text = frame.text()) {
    out.append(",\"text\":");
    appendJsonText(out, *text);
  }
  out.append("}\n");
}

}  // namespace xlatr::cli
