#include "frame_lines.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

#include "hex_text.hpp"
#include "measure.hpp"
#include "xlatr/frames.hpp"

namespace xlatr::cli {
namespace {

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

// Blanks before what was appended since, so that it is as wide.
void alignRight(std::string& out, std::size_t since, std::size_t width) {
  const std::size_t size = out.size() - since;
  out.insert(since, width - std::min(width, size), ' ');
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
      out.append("\\u");
      appendHex(out, static_cast<unsigned char>(character), 4);
    } else {
      out += character;
    }
  }
  out += '"';
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
  std::size_t begin = out.size();
  appendSeconds(out, frame.timeNs());
  alignRight(out, begin, kTimeWidth);
  if (frame.bus() == 0) {
    appendPadded(out, "-", kBusWidth);
  } else {
    appendPaddedNumber(out, frame.bus(), kBusWidth);
  }
  appendPadded(out, directionOf(frame), kDirectionWidth);
  if (hasIdentifier(frame)) {
    begin = out.size();
    appendHex(out, frame.id(), identifierDigits(frame.kind(), frame.has(XLATR_FLAG_EXTENDED)));
    alignRight(out, begin, kIdWidth);
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
    appendHexBytes(out, {data.data(), data.size()}, " ");
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
    appendHex(out, frame.id(), 1);
    out += '"';
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
  appendHexBytes(out, {frame.data().data(), frame.data().size()}, "");
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
