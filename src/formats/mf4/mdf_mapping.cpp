#include "formats/mf4/mdf_mapping.hpp"

#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"

namespace xlatr {
namespace {

bool isFrame(MessageKind kind) {
  return kind <= MessageKind::ER && kind != MessageKind::ST && kind != MessageKind::EC;
}

BusEventFrameType frameKindOf(MessageKind kind) {
  if (kind == MessageKind::RR) {
    return BusEventFrameType::RemoteFrame;
  }
  return kind == MessageKind::ER ? BusEventFrameType::ErrorFrame : BusEventFrameType::DataFrame;
}

// MF4 counts the types of errors from 1. What it has no number for is 0, unknown.
std::uint8_t errorTypeOf(std::uint8_t trcError) {
  const std::uint32_t type = errorTypeOfTrcId(trcError).value_or(kOtherError);
  return type == kOtherError ? std::uint8_t{0} : static_cast<std::uint8_t>(type + 1);
}

// TRC counts the bits of a frame from 3.
std::uint8_t bitPositionOf(std::uint8_t trcPosition) {
  constexpr std::uint8_t kFirst = 3;
  constexpr std::uint8_t kUnknown = 255;
  return trcPosition < kFirst ? kUnknown : static_cast<std::uint8_t>(trcPosition - kFirst);
}

void mapError(const BrixMessage& source, MdfCanMessage& target) {
  constexpr std::uint32_t kWholeLength = 5;       // error, then position two bytes later
  constexpr std::uint32_t kIdentifierLength = 4;  // the identifier is the error, the position has moved up
  std::uint8_t error = 0;
  std::uint8_t position = 0;
  if (source.length >= kWholeLength && source.data.size() >= kWholeLength) {
    error = source.data[0];
    position = source.data[2];
  } else if (source.length == kIdentifierLength && source.data.size() >= kIdentifierLength) {
    error = static_cast<std::uint8_t>(source.id);
    position = source.data[1];
  }
  target.errorType = errorTypeOf(error);
  target.bitPosition = bitPositionOf(position);
}

}  // namespace

void mapToMdf(const BrixMessage& source, MdfCanMessage& target) {
  target.time = source.timeOffset;
  target.bus = source.bus;
  target.direction = source.direction;
  target.type = source.type;
  target.kind = source.kind;
  target.valid = isFrame(source.kind);
  if (!target.valid) {
    return;
  }
  target.isRemote = source.kind == MessageKind::RR;
  target.frameKind = static_cast<std::uint8_t>(frameKindOf(source.kind));
  target.id = source.id;
  target.extended = source.extended;
  target.length = source.length;
  target.data.assign(source.data.begin(), source.data.end());
  target.dlc = lengthToDlc(source.length);
  if (source.kind == MessageKind::ER) {
    mapError(source, target);
  }
}

}  // namespace xlatr
