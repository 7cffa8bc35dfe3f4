#include "formats/native/zelk_message.hpp"

#include "formats/native/record_content.hpp"
#include "formats/trc/trc_version.hpp"
#include "util/failures.hpp"
#include "util/render.hpp"

namespace xlatr {

bool ZelkBinaryMessage::getValid() const {
  return valid && recordType >= RecordType::CanRxMsg && recordType <= RecordType::CanBusLoad;
}

void ZelkBinaryMessage::reset() {
  resetCommonFields(1);
  timestamp = UnsignedMicroseconds::zero();
  kind = MessageKind::Unknown;
  remote = false;
  commentary.clear();
  recordType = RecordType::Invalid;
  rawBytes.clear();
  isMade_ = false;
}

void ZelkBinaryMessage::readRecord(RecordType typeOfRecord, std::span<const std::uint8_t> bytes,
                                   const TimeScale& timeScale) {
  reset();
  recordType = typeOfRecord;
  rawBytes.assign(bytes.begin(), bytes.end());
  Native_RecordHeader header;
  if (tryReadFields(rawBytes, header) && header.type == recordType) {
    readContent(*this, timeScale);
  }
}

void ZelkBinaryMessage::takeMadeRecord() {
  isMade_ = true;
  recordType = readField<&Native_RecordHeader::type>(rawBytes);
}

void ZelkBinaryMessage::AdjustTimestamp(UnsignedMicroseconds delta) {
  if (recordType < RecordType::CanRxMsg || recordType > RecordType::CanStatus) {
    return;
  }
  if (!isMade_) {
    throwProcessingFailure("Failed to adjust timestamp of parsing record " +
                           std::to_string(static_cast<std::uint16_t>(recordType)) + ": it was not made from a message");
  }
  moveTimes(recordType, rawBytes, delta.count());
}

std::string ZelkBinaryMessage::getParsingBytesString() const {
  TextBuffer text;
  appendHexBytes(text, rawBytes);
  return std::string(text.view());
}

bool ZelkBinaryMessage::ValidateForTargetVersion(double version) const {
  return canStandIn(findTrcVersion(version));
}

bool ZelkBinaryMessage::canStandIn(const TrcVersion* version) const {
  return getValid() && version != nullptr && canStandInTrc(*version, length, type, kind, true);
}

}  // namespace xlatr
