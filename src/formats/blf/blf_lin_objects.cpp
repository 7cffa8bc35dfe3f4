// LIN frames: whole ones, those with a wrong checksum, and headers that nobody answered.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/blf/blf_log_bodies.hpp"
#include "formats/blf/blf_object_frames.hpp"
#include "messages/enumerations.hpp"
#include "util/layout.hpp"

namespace xlatr {
namespace {

using blf_log::LinFrame;
using blf_log::LinHeader;
using blf_log::Object;
using blf_log::TimedLinFrame;
using blf_log::TimedLinHeader;

constexpr std::size_t kLongestLin = 8;

// Objects of version 0 have no model, whatever stands in its place.
void takeModel(std::uint8_t model, std::uint16_t objectVersion, Frame& frame) {
  constexpr std::uint8_t kClassic = 0;
  constexpr std::uint8_t kEnhanced = 1;
  if (objectVersion == 0 || model > kEnhanced) {
    return;
  }
  const ChecksumType type = model == kClassic ? ChecksumType::Classic : ChecksumType::Enhanced;
  frame.attributes.set(FrameAttribute::ChecksumModel, static_cast<std::uint32_t>(type));
  frame.set(model == kEnhanced ? frame_flag::kEnhancedChecksum : std::uint16_t{0});
}

void takeError(ErrorCode error, Frame& frame) {
  if (error != ErrorCode::None) {
    frame.attributes.set(FrameAttribute::LinErrors, static_cast<std::uint32_t>(error));
  }
}

// A frame that is yet to be sent counts as transmitted, as one that was sent.
template <class Body, ErrorCode kError>
bool readLinFrame(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::uint8_t kTransmitRequest = 2;
  Body body;
  if (!tryReadFields(object.body, body)) {
    return false;
  }
  frame.kind = FrameKind::Lin;
  frame.bus = body.channel;
  frame.id = body.id;
  frame.dlc = body.length;
  frame.data = object.body.subspan(layoutOffset<&Body::data>(), std::min<std::size_t>(body.length, kLongestLin));
  if (body.length > kLongestLin) {
    reading.account->note(Remark::LengthGuessed, frame.place);
  }
  if (body.dir <= kTransmitRequest) {
    frame.set(body.dir == 0 ? frame_flag::kReceived : frame_flag::kTransmitted);
  }
  // Only the lower byte is one of a LIN checksum.
  frame.attributes.set(FrameAttribute::Checksum, body.crc & 0xFFU);
  if constexpr (requires { body.checksumModel; }) {
    takeModel(body.checksumModel, object.version, frame);
  }
  takeError(kError, frame);
  return true;
}

// `kLengthOffset` is the place of a length that older objects may lack.
template <class Body, std::size_t kLengthOffset>
bool readLinHeader(const Object& object, Frame& frame, BlfReading& /*reading*/) {
  Body body;
  if (!tryReadFields(object.body, body)) {
    return false;
  }
  frame.kind = FrameKind::Lin;
  frame.bus = body.channel;
  frame.id = body.id;
  frame.dlc = object.body.size() > kLengthOffset ? object.body[kLengthOffset] : std::uint8_t{0};
  if constexpr (requires { body.checksumModel; }) {
    takeModel(body.checksumModel, object.version, frame);
  }
  takeError(ErrorCode::SlaveNotResponding, frame);
  return true;
}

constexpr std::array kLinObjects = {
    BlfObjectType{11, readLinFrame<LinFrame, ErrorCode::None>, 24},
    BlfObjectType{12, readLinFrame<LinFrame, ErrorCode::Checksum>, 24},
    BlfObjectType{15, readLinHeader<LinHeader, 3>, 8},
    BlfObjectType{57, readLinFrame<TimedLinFrame, ErrorCode::None>, 152},
    BlfObjectType{58, readLinHeader<TimedLinHeader, 38>, 72},
    BlfObjectType{60, readLinFrame<TimedLinFrame, ErrorCode::Checksum>, 152},
};

}  // namespace

std::span<const BlfObjectType> blfLinObjects() {
  return kLinObjects;
}

}  // namespace xlatr
