#include "formats/blf/blf_message.hpp"

#include <algorithm>

#include "messages/fd_kind.hpp"

namespace xlatr {
namespace {

// The numbers of the object types that are told apart.
namespace object_type {
constexpr std::uint32_t kCanMessage = 1;
constexpr std::uint32_t kLinMessage = 11;
constexpr std::uint32_t kLinCrcError = 12;
constexpr std::uint32_t kLinReceiveError = 15;  // nobody answered
constexpr std::uint32_t kLinSleep = 20;
constexpr std::uint32_t kLinWakeUp = 21;
constexpr std::uint32_t kLinMessage2 = 57;
constexpr std::uint32_t kLinReceiveError2 = 58;
constexpr std::uint32_t kLinCrcError2 = 60;
constexpr std::uint32_t kLinWakeUp2 = 62;
constexpr std::uint32_t kCanErrorExt = 73;
constexpr std::uint32_t kCanMessage2 = 86;
constexpr std::uint32_t kCanFdMessage = 100;
constexpr std::uint32_t kCanFdMessage64 = 101;
constexpr std::uint32_t kCanFdError64 = 104;
}  // namespace object_type

// Those of a CAN bus that have no message class of their own are among them, so as not to be taken for LIN.
constexpr std::array<std::uint32_t, 13> kCanTypes = {1, 2, 3, 4, 31, 44, 73, 74, 86, 100, 101, 104, 129};

constexpr bool bitOf(std::uint32_t flags, unsigned bit) {
  return (flags >> bit & 1U) != 0;
}

void setSide(MessageStyleCan& message, bool transmitted) {
  message.type = transmitted ? MessageType::Tx : MessageType::Rx;
  message.direction = transmitted ? MessageDirection::Tx : MessageDirection::Rx;
}

DirectionType linDirectionOf(std::uint8_t dir) {
  switch (dir) {
    case 0:
      return DirectionType::Subscriber;
    case 1:
    case 2:
      return DirectionType::Publisher;
    default:
      return DirectionType::Unknown;
  }
}

ChecksumType checksumTypeOf(const BlfMessage& message) {
  if (message.objectVersion == 0) {
    return ChecksumType::Unknown;
  }
  switch (message.checksumModel) {
    case 0:
      return ChecksumType::Classic;
    case 1:
      return ChecksumType::Enhanced;
    default:
      return ChecksumType::Unknown;
  }
}

// What an object type of a LIN bus stands for.
struct LinType {
  std::uint32_t objectType;
  MessageKind kind;
  ErrorCode error = ErrorCode::None;
  bool answered = false;          // somebody sent data: they, the direction and the checksum count
  bool hasChecksumModel = false;  // the row says which one
  std::string_view eventText = {};
};

constexpr std::array kLinTypes = {
    LinType{object_type::kLinMessage, MessageKind::DT, ErrorCode::None, true},
    LinType{object_type::kLinCrcError, MessageKind::ER, ErrorCode::Checksum, true},
    LinType{object_type::kLinReceiveError, MessageKind::ER, ErrorCode::SlaveNotResponding},
    LinType{.objectType = object_type::kLinSleep, .kind = MessageKind::EV, .eventText = "Bus Sleep"},
    LinType{.objectType = object_type::kLinWakeUp, .kind = MessageKind::EV, .eventText = "Bus Wake Up"},
    LinType{object_type::kLinMessage2, MessageKind::DT, ErrorCode::None, true, true},
    LinType{object_type::kLinReceiveError2, MessageKind::ER, ErrorCode::SlaveNotResponding, false, true},
    LinType{object_type::kLinCrcError2, MessageKind::ER, ErrorCode::Checksum, true, true},
    LinType{.objectType = object_type::kLinWakeUp2, .kind = MessageKind::EV, .eventText = "Bus Wake Up"},
};

}  // namespace

bool BlfMessage::isCanType(std::uint32_t objectType) {
  return std::ranges::find(kCanTypes, objectType) != kCanTypes.end();
}

std::string BlfMessage::getAsCommentary() const {
  std::string text = "BLF Object Type " + std::to_string(objectType);
  return valid ? text : text.append(" ").append(comment);
}

double BlfMessage::microseconds() const {
  const auto value = static_cast<double>(objectTimestamp);
  return objectFlags == 1 ? value * 10.0 : value / 1000.0;
}

double BlfMessage::milliseconds() const {
  const auto value = static_cast<double>(objectTimestamp);
  return objectFlags == 1 ? value / 100.0 : value / 1e6;
}

void BlfMessage::takeRow(CsvMessage& row) {
  valid = row.valid;
  bus = row.channel;
  type = MessageType::Unknown;
  direction = MessageDirection::None;
  comment.swap(row.comment);
  static_cast<BlfObjectFields&>(*this) = static_cast<const BlfObjectFields&>(row);
}

// The width of the identifier tells its format, and not a flag: an identifier that base frames can't have is extended.
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
  switch (objectType) {
    case object_type::kCanMessage:
    case object_type::kCanMessage2:
      setSide(*this, bitOf(flags, 0));
      remote = bitOf(flags, 7);
      break;
    case object_type::kCanErrorExt:
      type = MessageType::Error;
      direction = bitOf(flagsExt, 5) ? MessageDirection::Rx : MessageDirection::Tx;
      errorByte = ecc;
      break;
    case object_type::kCanFdMessage:
      setSide(*this, bitOf(flags, 0));
      isFd = true;
      remote = bitOf(flags, 7);
      fdFormat = bitOf(canFdFlags, 0);
      bitRateSwitch = bitOf(canFdFlags, 1);
      errorStateIndicator = bitOf(canFdFlags, 2);
      break;
    case object_type::kCanFdMessage64:
      setSide(*this, dir != 0);
      isFd = true;
      remote = bitOf(flags, 4);
      fdFormat = bitOf(flags, 12);
      bitRateSwitch = bitOf(flags, 13);
      errorStateIndicator = bitOf(flags, 14);
      break;
    case object_type::kCanFdError64:
      type = MessageType::Error;
      isFd = true;
      errorByte = ecc;
      break;
    default:
      break;
  }
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

void BlfLinMessage::assign(CsvMessage& row) {
  takeRow(row);
  id = kNoIdentifier;
  extended = false;
  length = 0;
  data.clear();
  kind = MessageKind::Unknown;
  eventText = {};
  errorFlags = 0;
  linDirection = DirectionType::Unknown;
  checksum = 0;
  checksumType = ChecksumType::Unknown;
  const auto* const known = std::ranges::find(kLinTypes, objectType, &LinType::objectType);
  if (known == kLinTypes.end()) {
    return;
  }
  kind = known->kind;
  eventText = known->eventText;
  if (kind == MessageKind::EV) {
    return;
  }
  id = blfId;
  errorFlags = static_cast<std::uint32_t>(known->error);
  if (known->hasChecksumModel) {
    checksumType = checksumTypeOf(*this);
  }
  if (known->answered) {
    linDirection = linDirectionOf(dir);
    checksum = crc;
    length = row.length;
    data.swap(row.data);
  }
}

std::unique_ptr<BlfMessage> makeBlfMessage(CsvMessage& row) {
  if (BlfMessage::isCanType(row.objectType)) {
    return std::make_unique<BlfCanMessage>(row);
  }
  return std::make_unique<BlfLinMessage>(row);
}

}  // namespace xlatr
