#include "formats/asc/asc_plain_lines.hpp"

#include <algorithm>
#include <span>
#include <string_view>

#include "formats/asc/asc_flags.hpp"
#include "messages/can_dlc.hpp"
#include "util/hex.hpp"

namespace xlatr {
namespace {

constexpr std::uint16_t kLongestPlainClassic = 8;

using FrameBytes = std::array<std::uint8_t, kLongestAscFrame>;

// What both forms of lines tell of a frame.
struct PlainFrame {
  std::uint32_t bus = 0;
  std::uint32_t id = 0;
  std::uint32_t length = 0;
  std::uint16_t flags = 0;
  std::uint16_t dlc = 0;
};

bool takeBusNumber(PlainFields& fields, PlainFrame& plain) {
  constexpr std::uint32_t kHighestBus = 255;
  return fields.takeDecimal(plain.bus) && plain.bus <= kHighestBus;
}

bool takePlainIdentifier(PlainFields& fields, PlainFrame& plain) {
  constexpr std::uint32_t kHighestBase = 0x7FF;
  constexpr std::uint32_t kHighestExtended = 0x1FFFFFFF;
  std::size_t digits = 0;
  bool extended = false;
  if (!fields.takeHex(plain.id, digits, extended)) {
    return false;
  }
  plain.flags |= extended ? frame_flag::kExtended : std::uint16_t{0};
  return plain.id <= (extended ? kHighestExtended : kHighestBase);
}

bool takeDirectionWord(PlainFields& fields, PlainFrame& plain) {
  if (fields.take("Rx")) {
    plain.flags |= frame_flag::kReceived;
    return true;
  }
  plain.flags |= frame_flag::kTransmitted;
  return fields.take("Tx");
}

bool takePlainDlc(PlainFields& fields, PlainFrame& plain) {
  char digit = 0;
  if (!fields.takeCharacter(digit)) {
    return false;
  }
  const int dlc = hexDigitValue(digit);
  plain.dlc = static_cast<std::uint16_t>(dlc);
  return dlc >= 0;
}

bool takeBit(PlainFields& fields, bool& bit) {
  char digit = 0;
  const bool taken = fields.takeCharacter(digit);
  bit = digit == '1';
  return taken && (bit || digit == '0');
}

// The name of a message, if anything stands before BRS and ESI.
bool takeName(PlainFields& fields, std::string_view& name) {
  const std::string_view rest = fields.rest();
  const bool isBit = rest.size() > 1 && (rest[0] == '0' || rest[0] == '1') && rest[1] == ' ';
  return isBit || fields.takeAny(name);
}

// The smallest code of a length, which most lines state.
std::uint16_t dlcOfLength(const PlainFrame& plain) {
  return kDlcLengths[plain.dlc] == plain.length ? plain.dlc : static_cast<std::uint16_t>(lengthToDlc(plain.length));
}

// Whether what follows the bytes says nothing else of the frame: its identifier once more, at most.
bool agrees(std::string_view rest, const PlainFrame& plain) {
  const std::size_t at = rest.find("ID");
  if (at == std::string_view::npos) {
    return true;
  }
  PlainFields item(rest.substr(at));
  std::uint32_t id = 0;
  bool extended = false;
  return (at == 0 || rest[at - 1] == ' ') && item.take("ID") && item.take("=") && item.takeDecimal(id, extended) &&
         id == plain.id && extended == ((plain.flags & frame_flag::kExtended) != 0);
}

// Bus, identifier, direction, "d", DLC, bytes. From 9 on a DLC stands for eight bytes as well.
bool takeClassic(PlainFields& fields, FrameBytes& bytes, PlainFrame& plain) {
  if (!takeBusNumber(fields, plain) || !takePlainIdentifier(fields, plain) || !takeDirectionWord(fields, plain) ||
      !fields.take("d") || !takePlainDlc(fields, plain)) {
    return false;
  }
  plain.length = std::min(plain.dlc, kLongestPlainClassic);
  return fields.takeBytes(std::span(bytes).first(plain.length)) && (fields.atEnd() || agrees(fields.rest(), plain));
}

// Bus, direction, identifier, perhaps a name, BRS, ESI, DLC, length, bytes, duration, bit count, flags.
bool takeFd(PlainFields& fields, FrameBytes& bytes, PlainFrame& plain, std::string_view& name) {
  bool brs = false;
  bool esi = false;
  if (!takeBusNumber(fields, plain) || !takeDirectionWord(fields, plain) || !takePlainIdentifier(fields, plain)) {
    return false;
  }
  if (!takeName(fields, name) || !takeBit(fields, brs) || !takeBit(fields, esi) || !takePlainDlc(fields, plain) ||
      !fields.takeDecimal(plain.length) || plain.length > kLongestAscFrame ||
      !fields.takeBytes(std::span(bytes).first(plain.length))) {
    return false;
  }
  std::uint32_t flags = 0;
  std::size_t digits = 0;
  bool marked = false;
  if (!fields.skipAny() || !fields.skipAny() || !fields.takeHex(flags, digits, marked) || marked ||
      (flags & asc_flag::kRemote) != 0) {
    return false;
  }
  const bool fd = (flags & asc_flag::kEdl) != 0;
  const auto set = [&plain](bool condition, std::uint16_t flag) { plain.flags |= condition ? flag : std::uint16_t{0}; };
  set(fd, frame_flag::kFd);
  set(fd && (brs || (flags & asc_flag::kBrs) != 0), frame_flag::kBrs);
  set(fd && (esi || (flags & asc_flag::kEsi) != 0), frame_flag::kEsi);
  if (fd || plain.length != kLongestPlainClassic || plain.dlc < kLongestPlainClassic) {
    plain.dlc = dlcOfLength(plain);
  }
  return true;
}

}  // namespace

bool takePlainAscFrame(PlainFields fields, std::array<std::uint8_t, kLongestAscFrame>& bytes, Frame& frame) {
  PlainFrame plain;
  std::string_view name;
  if (!(fields.take("CANFD") ? takeFd(fields, bytes, plain, name) : takeClassic(fields, bytes, plain))) {
    return false;
  }
  frame.bus = static_cast<std::uint16_t>(plain.bus);
  frame.id = plain.id;
  frame.flags = plain.flags;
  frame.dlc = plain.dlc;
  frame.data = std::span(bytes).first(plain.length);
  if (!name.empty()) {
    frame.text = name;
  }
  return true;
}

}  // namespace xlatr
