#include "formats/asc/asc_printer.hpp"

#include <algorithm>
#include <span>

#include "formats/asc/asc_message.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

// A byte that the message does not have is 0.
std::uint8_t byteAt(const AscMessage& message, std::size_t index) {
  return index < message.data.size() ? message.data[index] : std::uint8_t{0};
}

std::span<const std::uint8_t> payloadOf(const AscMessage& message) {
  return std::span(message.data).first(std::min<std::size_t>(message.data.size(), message.getLength()));
}

void appendTime(TextBuffer& out, const AscMessage& message) {
  appendRoundedFixed(out, message.time.count(), 6, 11);
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

// The eight binary digits that an error frame has instead of data: two for its type, one for its direction, five for
// its position. A message of five bytes has the type in its first byte, a shorter one as its identifier.
void appendErrorBits(TextBuffer& out, const AscMessage& message) {
  constexpr std::uint32_t kLengthWithType = 5;
  const bool typeInData = message.getLength() >= kLengthWithType;
  const std::uint32_t type = typeInData ? byteAt(message, 0) : message.id;
  const unsigned direction = byteAt(message, typeInData ? 1 : 0);
  const unsigned position = byteAt(message, typeInData ? 2 : 1);
  const unsigned bits = (errorTypeOfTrcId(type).value_or(0) << 6) + (direction << 5 | position);
  appendAscErrorCode(out, bits);
}

void appendErrorFrame(TextBuffer& out, const AscMessage& message) {
  appendTime(out, message);
  out.append(' ');
  appendDecimalLeft(out, message.bus, 2);
  out.append(" ErrorFrame ECC: ");
  appendErrorBits(out, message);
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

AscFrameLine lineOf(const AscMessage& message) {
  return {.bus = message.bus,
          .id = message.id,
          .extended = message.extended,
          .transmitted = message.type == MessageType::Tx,
          .brs = (message.flags & asc_flag::kBrs) != 0,
          .esi = (message.flags & asc_flag::kEsi) != 0,
          .dlc = lengthToDlc(message.getLength()),
          .length = message.getLength(),
          .data = payloadOf(message),
          .flags = message.flags};
}

// The form of 7.0.0 ---------------------------------------------------------------------------------------------------

void appendFrameHead7(TextBuffer& out, const AscFrameLine& line) {
  appendDecimalLeft(out, line.bus, 2);
  out.append(' ');
  appendAscId(out, line.id, line.extended);
  out.append(line.transmitted ? " Tx   " : " Rx   ");
}

// The form of 8.1.0 ---------------------------------------------------------------------------------------------------

// Five fields that a converter does not know: the CRC and the bit timing of both phases.
constexpr std::string_view kTail = "        0        0        0        0        0";

// Up to and including the DLC.
void appendFrameHead8(TextBuffer& out, const AscFrameLine& line) {
  constexpr std::size_t kNameColumns = 32;
  out.append("CANFD ");
  appendDecimalRight(out, line.bus, 3);
  out.append(line.transmitted ? " Tx " : " Rx ");
  appendHexRight(out, line.id, 10);
  out.append(line.extended ? "x " : "  ");
  out.appendLeft(line.name, kNameColumns);
  out.append(line.brs ? " 1 " : " 0 ");
  out.append(line.esi ? "1 " : "0 ");
  appendHex(out, line.dlc, 1);
}

}  // namespace

void appendAscData7(TextBuffer& out, const AscFrameLine& line) {
  appendFrameHead7(out, line);
  out.append("d ");
  appendHex(out, line.dlc, 1);
  out.append(' ');
  appendHexBytes(out, line.data);
}

void appendAscRemote7(TextBuffer& out, const AscFrameLine& line, bool dlcKnown) {
  appendFrameHead7(out, line);
  out.append('r');
  if (dlcKnown) {
    out.append(' ');
    appendHex(out, line.dlc, 1);
  }
}

void appendAscData8(TextBuffer& out, const AscFrameLine& line) {
  appendFrameHead8(out, line);
  out.append(' ');
  appendDecimalRight(out, line.length, 2);
  out.append(' ');
  appendHexBytes(out, line.data);
  out.append("        0    0 ");
  appendHexRight(out, line.flags, 8);
  out.append(kTail);
}

void appendAscErrorCode(TextBuffer& out, unsigned code) {
  for (int bit = 7; bit >= 0; --bit) {
    out.append((code >> bit & 1U) != 0 ? '1' : '0');
  }
}

void AscMessage::toText7(TextBuffer& out) const {
  constexpr std::uint32_t kMaxClassicLength = 8;
  if (getLength() > kMaxClassicLength || frameClass != AscFrameClass::Classic) {
    return;
  }
  if (!isRemote() && !isDataFrame(*this)) {
    appendStatusOrError(out, *this);
    return;
  }
  appendTime(out, *this);
  out.append(' ');
  if (isRemote()) {
    appendAscRemote7(out, lineOf(*this), true);
  } else {
    appendAscData7(out, lineOf(*this));
  }
}

void AscMessage::toText8(TextBuffer& out) const {
  if (!isRemote() && !isDataFrame(*this)) {
    appendStatusOrError(out, *this);
    return;
  }
  appendTime(out, *this);
  out.append(' ');
  if (!isRemote()) {
    appendAscData8(out, lineOf(*this));
    return;
  }
  // Other programs take this for a data frame; the complete way writes the line of 7.0.0: Quirk::AscRemoteAsFd.
  appendFrameHead8(out, lineOf(*this));
  out.append("  0        0    0 ");
  // Decimal, though the flags of data frames are hexadecimal: printsTheFlagsOfARemoteFrameInDecimal.
  appendDecimalRight(out, flags, 8);
  out.append(kTail);
}

std::string AscMessage::getErrorCounterBits() const {
  TextBuffer bits;
  appendErrorBits(bits, *this);
  return std::string(bits.view());
}

}  // namespace xlatr
