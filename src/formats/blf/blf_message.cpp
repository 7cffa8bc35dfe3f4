#include "formats/blf/blf_message.hpp"

namespace xlatr {
namespace {

// Straight from the unit of the object to the one asked for, so that it is rounded only once.
template <class Unit>
Unit timeOf(const BlfObjectFields& object) {
  const auto ticks = static_cast<double>(object.objectTicks);
  return object.objectFlags == 1 ? Unit(RealTensOfMicroseconds(ticks)) : Unit(RealNanoseconds(ticks));
}

}  // namespace

std::string BlfMessage::getAsCommentary() const {
  std::string text = "BLF Object Type " + std::to_string(objectType);
  return valid ? text : text.append(" ").append(comment);
}

RealMicroseconds BlfMessage::microseconds() const {
  return timeOf<RealMicroseconds>(*this);
}

RealMilliseconds BlfMessage::milliseconds() const {
  return timeOf<RealMilliseconds>(*this);
}

void BlfMessage::takeRow(CsvMessage& row) {
  valid = row.valid;
  bus = row.channel;
  type = MessageType::Unknown;
  direction = MessageDirection::None;
  comment.swap(row.comment);
  static_cast<BlfObjectFields&>(*this) = static_cast<const BlfObjectFields&>(row);
}

std::unique_ptr<BlfMessage> makeBlfMessage(CsvMessage& row) {
  if (BlfMessage::isCanType(row.objectType)) {
    return std::make_unique<BlfCanMessage>(row);
  }
  return std::make_unique<BlfLinMessage>(row);
}

}  // namespace xlatr
