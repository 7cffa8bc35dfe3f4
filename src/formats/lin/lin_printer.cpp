#include "formats/lin/lin_printer.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "util/hex.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kNone = "--";

std::string_view directionText(DirectionType direction) {
  switch (direction) {
    case DirectionType::Publisher:
      return "   Pub   ";
    case DirectionType::Subscriber:
      return "   Sub   ";
    case DirectionType::SubscriberAutoLength:
      return "  SubAL  ";
    default:
      return "   ---   ";
  }
}

std::string_view checksumTypeText(ChecksumType type) {
  switch (type) {
    case ChecksumType::Classic:
      return "CL";
    case ChecksumType::Enhanced:
      return "EH";
    case ChecksumType::Auto:
      return "AU";
    default:
      return kNone;
  }
}

// A byte, as identifiers and checksums of a LIN frame are.
void appendByte(TextBuffer& out, std::uint32_t value) {
  out.append(hexPair(static_cast<std::uint8_t>(value)));
}

// Bytes that came with an error are not to be trusted and not shown.
void appendData(TextBuffer& out, const KorlMessage& message) {
  const auto count = std::min<std::size_t>(message.length, message.data.size());
  if (message.errorFlags == 0) {
    appendHexBytes(out, {message.data.data(), count});
    return;
  }
  for (std::size_t index = 0; index < count; ++index) {
    out.append(index == 0 ? "--" : " --");
  }
}

// Up to the columns of the checksum. No data take a column more than some: aFrameWithoutDataIsAColumnWider.
void appendPadding(TextBuffer& out, std::uint32_t length) {
  constexpr std::size_t kByteColumns = 3;
  if (length < kMaxLinLength) {
    out.appendBlanks((kMaxLinLength - 1 - length) * kByteColumns + 2);
  }
}

struct ErrorText {
  ErrorCode code;
  std::string_view text;
};

// The codes that a line can show, in the order in which it does.
constexpr std::array kErrorTexts = {
    ErrorText{ErrorCode::Checksum, "CK"},           ErrorText{ErrorCode::GroundShort, "GS"},
    ErrorText{ErrorCode::InconsistentSynch, "IS"},  ErrorText{ErrorCode::ParityBit0, "P0"},
    ErrorText{ErrorCode::ParityBit1, "P1"},         ErrorText{ErrorCode::SlotDelay, "SD"},
    ErrorText{ErrorCode::SlaveNotResponding, "SR"}, ErrorText{ErrorCode::TimeOut, "TO"},
};

void appendErrors(TextBuffer& out, std::uint32_t flags) {
  std::string_view separator;
  for (const auto& [code, text] : kErrorTexts) {
    if ((flags & static_cast<std::uint32_t>(code)) != 0) {
      out.append(separator);
      out.append(text);
      separator = "/";
    }
  }
}

void appendEvent(TextBuffer& out, const KorlMessage& message) {
  constexpr std::size_t kTextColumns = 25;
  out.append("   ---   --  -  ");
  out.appendLeft({reinterpret_cast<const char*>(message.data.data()), message.data.size()}, kTextColumns);
  out.append("--  --");
}

}  // namespace

void appendLinLine(TextBuffer& out, const KorlMessage& message, double version, std::uint64_t number) {
  constexpr double kFirstVersionWithEvents = 1.2;
  constexpr std::size_t kNumberColumns = 6;
  constexpr std::size_t kTimestampColumns = 7;
  if (message.busEvent && version < kFirstVersionWithEvents) {
    out.append(';');
  }
  appendDecimalRight(out, number, kNumberColumns);
  out.append(")          ");
  appendDecimalRight(out, message.timestamp, kTimestampColumns);
  if (message.busEvent) {
    appendEvent(out, message);
    return;
  }
  out.append(directionText(message.direction));
  appendByte(out, message.id);
  out.append("  ");
  appendDecimal(out, message.length);
  out.append("  ");
  appendData(out, message);
  appendPadding(out, message.length);
  out.append("  ");
  appendByte(out, message.checksum);
  out.append("  ");
  out.append(checksumTypeText(message.checksumType));
  out.append("  ");
  appendErrors(out, message.errorFlags);
}

}  // namespace xlatr
