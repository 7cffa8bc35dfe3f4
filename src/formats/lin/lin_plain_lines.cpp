#include "formats/lin/lin_plain_lines.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

#include "messages/enumerations.hpp"
#include "util/plain_fields.hpp"

namespace xlatr {
namespace {

bool takeLinDirection(PlainFields& fields, PlainFrame& plain) {
  if (fields.take("Sub")) {
    plain.flags |= frame_flag::kReceived;
    return true;
  }
  plain.flags |= frame_flag::kTransmitted;
  return fields.take("Pub");
}

bool takeUnmarkedHex(PlainFields& fields, std::uint32_t& value) {
  std::size_t digits = 0;
  bool marked = false;
  return fields.takeHex(value, digits, marked) && !marked;
}

bool takeChecksumModel(PlainFields& fields, PlainFrame& plain) {
  if (fields.take("EH")) {
    plain.flags |= frame_flag::kEnhancedChecksum;
    return true;
  }
  return fields.take("CL");
}

}  // namespace

bool takePlainLinFrame(std::string_view line, PlainFrameBytes& bytes, Frame& frame) {
  constexpr std::int64_t kNanosecondsOfMicrosecond = 1'000;
  PlainFields fields(line);
  PlainFrame plain;
  std::int64_t timeUs = 0;
  std::uint32_t checksum = 0;
  if (!fields.skipAny() || !fields.takeLong(timeUs) || !takeLinDirection(fields, plain) ||
      !takeUnmarkedHex(fields, plain.id) || !fields.takeDecimal(plain.length) || plain.length > kLongestPlainFrame ||
      !fields.takeBytes(std::span(bytes).first(plain.length)) || !takeUnmarkedHex(fields, checksum) ||
      !takeChecksumModel(fields, plain) || !fields.atEnd()) {
    return false;
  }
  const bool enhanced = (plain.flags & frame_flag::kEnhancedChecksum) != 0;
  plain.dlc = static_cast<std::uint16_t>(plain.length);
  frame.kind = FrameKind::Lin;
  frame.timeNs = timeUs * kNanosecondsOfMicrosecond;
  plain.give(bytes, frame);
  frame.attributes.set(FrameAttribute::Checksum, checksum);
  frame.attributes.set(FrameAttribute::ChecksumModel,
                       static_cast<std::uint32_t>(enhanced ? ChecksumType::Enhanced : ChecksumType::Classic));
  return true;
}

}  // namespace xlatr
