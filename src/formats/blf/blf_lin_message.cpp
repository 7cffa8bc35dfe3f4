#include <algorithm>
#include <array>

#include "formats/blf/blf_message.hpp"

namespace xlatr {
namespace {

// The numbers of the object types that are told apart.
namespace object_type {
constexpr std::uint32_t kLinMessage = 11;
constexpr std::uint32_t kLinCrcError = 12;
constexpr std::uint32_t kLinReceiveError = 15;  // no node answered
constexpr std::uint32_t kLinSleep = 20;
constexpr std::uint32_t kLinWakeUp = 21;
constexpr std::uint32_t kLinMessage2 = 57;
constexpr std::uint32_t kLinReceiveError2 = 58;
constexpr std::uint32_t kLinCrcError2 = 60;
constexpr std::uint32_t kLinWakeUp2 = 62;
}  // namespace object_type

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

// What an object type of a LIN bus means.
struct LinType {
  std::uint32_t objectType;
  MessageKind kind;
  ErrorCode error = ErrorCode::None;
  bool answered = false;          // a node sent data: these, the direction and the checksum count
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

}  // namespace xlatr
