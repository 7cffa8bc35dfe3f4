#include "formats/asc/asc_plain_lines.hpp"

#include <algorithm>
#include <span>
#include <string_view>

#include "formats/asc/asc_flags.hpp"
#include "messages/can_dlc.hpp"
#include "util/hex.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kHighestPlainBus = 255;

bool takePlainIdentifier(PlainFields& fields, PlainFrame& plain) {
  constexpr std::uint32_t kHighestBase = 0x7FF;
  constexpr std::uint32_t kHighestExtended = 0x1FFFFFFF;
  std::size_t digits = 0;
  bool extended = false;
  if (!fields.takeHex(plain.id, digits, extended)) {
    return false;
  }
  plain.setIf(extended, frame_flag::kExtended);
  return plain.id <= (extended ? kHighestExtended : kHighestBase);
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
bool takeClassic(PlainFields& fields, PlainFrameBytes& bytes, PlainFrame& plain) {
  if (!takePlainBus(fields, plain, kHighestPlainBus) || !takePlainIdentifier(fields, plain) ||
      !takePlainDirection(fields, plain) || !fields.take("d") || !takePlainDlc(fields, plain)) {
    return false;
  }
  plain.length = std::min<std::uint32_t>(plain.dlc, kLongestPlainClassic);
  return fields.takeBytes(std::span(bytes).first(plain.length)) && (fields.atEnd() || agrees(fields.rest(), plain));
}

// Bus, direction, identifier, perhaps a name, BRS, ESI, DLC, length, bytes, duration, bit count, flags.
bool takeFd(PlainFields& fields, PlainFrameBytes& bytes, PlainFrame& plain, std::string_view& name) {
  bool brs = false;
  bool esi = false;
  if (!takePlainBus(fields, plain, kHighestPlainBus) || !takePlainDirection(fields, plain) ||
      !takePlainIdentifier(fields, plain)) {
    return false;
  }
  if (!takeName(fields, name) || !takePlainBit(fields, brs) || !takePlainBit(fields, esi) ||
      !takePlainDlc(fields, plain) || !fields.takeDecimal(plain.length) || plain.length > kLongestPlainFrame ||
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
  plain.setIf(fd, frame_flag::kFd);
  plain.setIf(fd && (brs || (flags & asc_flag::kBrs) != 0), frame_flag::kBrs);
  plain.setIf(fd && (esi || (flags & asc_flag::kEsi) != 0), frame_flag::kEsi);
  if (fd || plain.length != kLongestPlainClassic || plain.dlc < kLongestPlainClassic) {
    plain.dlc = dlcOfLength(plain);
  }
  return true;
}

}  // namespace

bool takePlainAscFrame(PlainFields fields, PlainFrameBytes& bytes, Frame& frame) {
  PlainFrame plain;
  std::string_view name;
  if (!(fields.take("CANFD") ? takeFd(fields, bytes, plain, name) : takeClassic(fields, bytes, plain))) {
    return false;
  }
  plain.give(bytes, frame);
  if (!name.empty()) {
    frame.text = name;
  }
  return true;
}

}  // namespace xlatr
