// How a KorlMessage prints its line.
#include "formats/lin/lin_message.hpp"

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

// A byte, such as the identifier and the checksum of a LIN frame.
void appendByte(TextBuffer& out, std::uint32_t value) {
  out.append(hexPair(static_cast<std::uint8_t>(value)));
}

// On the compatible way bytes that came with an error can't be trusted and are not shown; on the complete way those are
// not shown that are not known.
void appendData(TextBuffer& out, const KorlMessage& message, Way way) {
  const bool compatible = way.has(Quirk::LinErrorHidesBytes);
  const auto count = compatible || !message.data.empty() ? std::min<std::size_t>(message.length, message.data.size())
                                                         : std::size_t{message.length};
  if (compatible ? message.errorFlags == 0 : !message.data.empty()) {
    appendHexBytes(out, {message.data.data(), count});
    return;
  }
  for (std::size_t index = 0; index < count; ++index) {
    out.append(index == 0 ? "--" : " --");
  }
}

// Fills up to the columns of the checksum. A frame without data takes one column more: aFrameWithoutDataIsAColumnWider.
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

// The codes that a line can show, in their order. The last one stands in the header's list only on the compatible way.
constexpr std::array kErrorTexts = {
    ErrorText{ErrorCode::Checksum, "CK"},           ErrorText{ErrorCode::GroundShort, "GS"},
    ErrorText{ErrorCode::InconsistentSynch, "IS"},  ErrorText{ErrorCode::ParityBit0, "P0"},
    ErrorText{ErrorCode::ParityBit1, "P1"},         ErrorText{ErrorCode::SlotDelay, "SD"},
    ErrorText{ErrorCode::SlaveNotResponding, "SR"}, ErrorText{ErrorCode::TimeOut, "TO"},
    ErrorText{ErrorCode::VBatShort, "VS"},
};

void appendErrors(TextBuffer& out, std::uint32_t flags, Way way) {
  std::string_view separator;
  if (way.has(Quirk::LinVBatShortNotShown)) {
    flags &= ~static_cast<std::uint32_t>(ErrorCode::VBatShort);
  }
  for (const auto& [code, text] : kErrorTexts) {
    if ((flags & static_cast<std::uint32_t>(code)) != 0) {
      out.append(separator);
      out.append(text);
      separator = "/";
    }
  }
}

void appendEvent(TextBuffer& out, const KorlMessage& message, Way way) {
  constexpr std::size_t kTextColumns = 25;
  out.append("   ---   --  -  ");
  out.appendLeft({reinterpret_cast<const char*>(message.data.data()), message.data.size()}, kTextColumns);
  out.appendBlanks(message.data.size() >= kTextColumns && !way.has(Quirk::LinLongEventRunsOn) ? 1 : 0);
  out.append("--  --");
}

}  // namespace

void KorlMessage::appendText(TextBuffer& out, double version, std::uint64_t number, Way way) const {
  constexpr double kFirstVersionWithEvents = 1.2;
  constexpr std::size_t kNumberColumns = 6;
  constexpr std::size_t kTimestampColumns = 7;
  if (!valid) {
    return;
  }
  if (busEvent && version < kFirstVersionWithEvents) {
    out.append(';');
  }
  appendDecimalRight(out, number, kNumberColumns);
  out.append(")          ");
  appendDecimalRight(out, timestamp.count(), kTimestampColumns);
  if (busEvent) {
    appendEvent(out, *this, way);
    return;
  }
  out.append(directionText(direction));
  appendByte(out, id);
  out.append("  ");
  appendDecimal(out, length);
  out.append("  ");
  appendData(out, *this, way);
  appendPadding(out, length);
  out.append("  ");
  appendByte(out, checksum);
  out.append("  ");
  out.append(checksumTypeText(checksumType));
  out.append("  ");
  appendErrors(out, errorFlags, way);
}

}  // namespace xlatr
