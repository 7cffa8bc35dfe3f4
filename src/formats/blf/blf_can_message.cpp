#include <algorithm>
#include <array>

#include "formats/blf/blf_message.hpp"
#include "messages/fd_kind.hpp"

namespace xlatr {
namespace {

constexpr bool bitOf(std::uint32_t bits, unsigned bit) {
  return (bits >> bit & 1U) != 0;
}

constexpr MessageDirection directionOf(bool transmitted) {
  return transmitted ? MessageDirection::Tx : MessageDirection::Rx;
}

MessageDirection directionByFlag(const BlfObjectFields& object) {
  return directionOf(bitOf(object.flags, 0));
}
MessageDirection directionByDir(const BlfObjectFields& object) {
  return directionOf(object.dir != 0);
}
MessageDirection directionOfError(const BlfObjectFields& object) {
  return directionOf(!bitOf(object.flagsExt, 5));
}

// Bit 0 = EDL, bit 1 = BRS, bit 2 = ESI.
std::uint32_t fdBitsOfItsOwn(const BlfObjectFields& object) {
  return object.canFdFlags;
}
std::uint32_t fdBitsAmongFlags(const BlfObjectFields& object) {
  return object.flags >> 12;
}

// What an object type of a CAN bus means.
struct CanType {
  std::uint32_t objectType;
  MessageType type = MessageType::Unknown;  // Rx: a frame, Tx if its direction is
  bool isFd = false;
  MessageDirection (*direction)(const BlfObjectFields&) = nullptr;  // null if nothing in the row states it
  unsigned remoteBit = 0;                                           // of a frame: in its flags
  std::uint32_t (*fdBits)(const BlfObjectFields&) = nullptr;        // of a frame: null if it has none
};

constexpr std::array kCanTypes = {
    CanType{1, MessageType::Rx, false, directionByFlag, 7},
    CanType{86, MessageType::Rx, false, directionByFlag, 7},
    CanType{100, MessageType::Rx, true, directionByFlag, 7, fdBitsOfItsOwn},
    CanType{101, MessageType::Rx, true, directionByDir, 4, fdBitsAmongFlags},
    CanType{73, MessageType::Error, false, directionOfError},
    CanType{104, MessageType::Error, true},
    // These have no form as a message. They are listed so that they are not taken for LIN types.
    CanType{2},
    CanType{3},
    CanType{4},
    CanType{31},
    CanType{44},
    CanType{74},
    CanType{129},
};

const CanType* findCanType(std::uint32_t objectType) {
  const auto* const found = std::ranges::find(kCanTypes, objectType, &CanType::objectType);
  return found == kCanTypes.end() ? nullptr : found;
}

}  // namespace

bool BlfMessage::isCanType(std::uint32_t objectType) {
  return findCanType(objectType) != nullptr;
}

// The size of the identifier decides on its format, and not a flag: an identifier that base frames can't have is
// extended.
void BlfCanMessage::assign(CsvMessage& row) {
  constexpr std::uint32_t kIdMask = 0x1FFFFFFF;
  constexpr std::uint32_t kFirstExtendedId = 0x800;
  takeRow(row);
  id = blfId & kIdMask;
  extended = id >= kFirstExtendedId;
  length = row.length;
  data.swap(row.data);
  errorByte = 0;
  remote = fdFormat = bitRateSwitch = errorStateIndicator = isFd = false;
  const CanType* const known = findCanType(objectType);
  if (known == nullptr) {
    return;
  }
  type = known->type;
  isFd = known->isFd;
  direction = known->direction != nullptr ? known->direction(*this) : direction;
  if (type == MessageType::Error) {
    errorByte = ecc;
  } else if (type == MessageType::Rx) {
    takeFrame(known->remoteBit, known->fdBits != nullptr ? known->fdBits(*this) : 0);
  }
}

void BlfCanMessage::takeFrame(unsigned remoteBit, std::uint32_t fdBits) {
  type = direction == MessageDirection::Tx ? MessageType::Tx : MessageType::Rx;
  remote = bitOf(flags, remoteBit);
  fdFormat = bitOf(fdBits, 0);
  bitRateSwitch = bitOf(fdBits, 1);
  errorStateIndicator = bitOf(fdBits, 2);
}

MessageKind BlfCanMessage::kind() const {
  if (!valid) {
    return MessageKind::Unknown;
  }
  if (type == MessageType::Warng) {
    return MessageKind::ST;
  }
  if (type == MessageType::Error) {
    return MessageKind::ER;
  }
  if (type == MessageType::Unknown) {
    return MessageKind::Unknown;  // a type that has no form as a frame
  }
  if (remote) {
    return MessageKind::RR;
  }
  return fdFormat ? fdKind(bitRateSwitch, errorStateIndicator) : MessageKind::DT;
}

}  // namespace xlatr
