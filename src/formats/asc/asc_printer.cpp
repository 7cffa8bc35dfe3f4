#include "formats/asc/asc_printer.hpp"

#include <algorithm>
#include <span>

#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

// A byte that the message does not hold is 0.
std::uint8_t byteAt(const AscMessage& message, std::size_t index) {
  return index < message.data.size() ? message.data[index] : std::uint8_t{0};
}

std::span<const std::uint8_t> payloadOf(const AscMessage& message) {
  return std::span(message.data).first(std::min<std::size_t>(message.data.size(), message.getLength()));
}

void appendTime(TextBuffer& out, const AscMessage& message) {
  appendRoundedFixed(out, message.time, 6, 11);
}

// Lines of status and errors, which are the same in both forms --------------------------------------------------------

void appendStatus(TextBuffer& out, const AscMessage& message) {
  appendTime(out, message);
  out.append(" CAN ");
  appendDecimalLeft(out, message.bus, 2);
  out.append(" Status:");
  if (!message.commentText.empty()) {
    out.append(message.commentText);
    out.append(" (Zelkworks)");
  }
}

void appendErrorCounters(TextBuffer& out, const AscMessage& message) {
  appendTime(out, message);
  out.append(" CAN ");
  appendDecimalLeft(out, message.bus, 2);
  out.append(" Status:error counter change (Zelkworks) - TxErr: ");
  appendDecimal(out, byteAt(message, 1));
  out.append(" RxErr: ");
  appendDecimal(out, byteAt(message, 0));
}

void appendErrorFrame(TextBuffer& out, const AscMessage& message) {
  appendTime(out, message);
  out.append(' ');
  appendDecimalLeft(out, message.bus, 2);
  out.append(" ErrorFrame ECC: ");
  appendAscErrorBits(out, message);
}

void appendStatusOrError(TextBuffer& out, const AscMessage& message) {
  if (message.type == MessageType::Warng) {
    appendStatus(out, message);
  } else if (message.type == MessageType::Error && message.lineKind == AscLineKind::Status) {
    appendErrorCounters(out, message);
  } else if (message.type == MessageType::Error) {
    appendErrorFrame(out, message);
  }
}

bool isDataFrame(const AscMessage& message) {
  return message.type == MessageType::Rx || message.type == MessageType::Tx;
}

// The form of 7.0.0 ---------------------------------------------------------------------------------------------------

void appendFrameHead7(TextBuffer& out, const AscMessage& message) {
  appendTime(out, message);
  out.append(' ');
  appendDecimalLeft(out, message.bus, 2);
  out.append(' ');
  appendAscId(out, message.id, message.extended);
  out.append(message.type == MessageType::Tx ? " Tx   " : " Rx   ");
}

// The form of 8.1.0 ---------------------------------------------------------------------------------------------------

// Five fields that a converter knows nothing of: the CRC and the bit timing of both phases.
constexpr std::string_view kTail = "        0        0        0        0        0";

// Up to and with the DLC.
void appendFrameHead8(TextBuffer& out, const AscMessage& message) {
  constexpr std::size_t kNameColumns = 32;
  appendTime(out, message);
  out.append(" CANFD ");
  appendDecimalRight(out, message.bus, 3);
  out.append(message.type == MessageType::Tx ? " Tx " : " Rx ");
  appendHexRight(out, message.id, 10);
  out.append(message.extended ? "x " : "  ");
  out.appendBlanks(kNameColumns);
  out.append((message.flags & asc_flag::kBrs) != 0 ? " 1 " : " 0 ");
  out.append((message.flags & asc_flag::kEsi) != 0 ? "1 " : "0 ");
  appendHex(out, lengthToDlc(message.getLength()), 1);
}

}  // namespace

void appendAscLine7(TextBuffer& out, const AscMessage& message) {
  constexpr std::uint32_t kMaxClassicLength = 8;
  if (message.getLength() > kMaxClassicLength || message.frameClass != AscFrameClass::Classic) {
    return;
  }
  if (message.isRemote()) {
    appendFrameHead7(out, message);
    out.append("r ");
    appendDecimal(out, message.getLength());
  } else if (isDataFrame(message)) {
    appendFrameHead7(out, message);
    out.append("d ");
    appendDecimal(out, message.getLength());
    out.append(' ');
    appendHexBytes(out, payloadOf(message));
  } else {
    appendStatusOrError(out, message);
  }
}

void appendAscLine8(TextBuffer& out, const AscMessage& message) {
  if (message.isRemote()) {
    appendFrameHead8(out, message);
    out.append("  0        0    0 ");
    // Decimal, though the flags of data frames are hexadecimal: printsTheFlagsOfARemoteFrameInDecimal.
    appendDecimalRight(out, message.flags, 8);
    out.append(kTail);
  } else if (isDataFrame(message)) {
    appendFrameHead8(out, message);
    out.append(' ');
    appendDecimalRight(out, message.getLength(), 2);
    out.append(' ');
    appendHexBytes(out, payloadOf(message));
    out.append("        0    0 ");
    appendHexRight(out, message.flags, 8);
    out.append(kTail);
  } else {
    appendStatusOrError(out, message);
  }
}

void appendAscErrorBits(TextBuffer& out, const AscMessage& message) {
  constexpr std::uint32_t kLengthWithType = 5;
  const bool typeInData = message.getLength() >= kLengthWithType;
  const std::uint32_t type = typeInData ? byteAt(message, 0) : message.id;
  const unsigned direction = byteAt(message, typeInData ? 1 : 0);
  const unsigned position = byteAt(message, typeInData ? 2 : 1);
  const unsigned bits = (errorTypeOfTrcId(type).value_or(0) << 6) + (direction << 5 | position);
  for (int bit = 7; bit >= 0; --bit) {
    out.append((bits >> bit & 1U) != 0 ? '1' : '0');
  }
}

}  // namespace xlatr
