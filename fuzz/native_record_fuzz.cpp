// One record of a binary trace, in any form. The first byte is the exponent of the time unit, the next two the type,
// the rest the record, whose own type is that. Every record class reads the bytes and must give back what it read; the
// message made of them must say what it is, survive being mapped and be written again as the record that it was.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "formats/asc/asc_mapping.hpp"
#include "formats/csv/csv_mapping.hpp"
#include "formats/native/btrc_mapping.hpp"
#include "formats/native/native_frame_record.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_version.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

using xlatr::RecordType;
using xlatr::ZelkBinaryMessage;

// A record gives back the beginning of what it was made from.
template <class Record>
void checkRecord(std::span<const std::uint8_t> bytes) {
  Record record;
  if (!xlatr::tryReadFields(bytes, record)) {
    return;
  }
  std::vector<std::uint8_t> image;
  appendFields(image, record);
  require(image.size() <= bytes.size());
  require(std::ranges::equal(image, bytes.first(image.size())));
}

template <class... Records>
void checkRecords(std::span<const std::uint8_t> bytes) {
  (checkRecord<Records>(bytes), ...);
}

void checkMessage(const ZelkBinaryMessage& message, std::span<const std::uint8_t> bytes) {
  require(std::vector<std::uint8_t>(bytes.begin(), bytes.end()) == message.rawBytes);
  require(!message.getValid() || message.commentary.empty());
  require(!message.getValid() || message.bus <= 255);
  require(message.length <= 64);
  for (const double version : {1.1, 2.1, 3.0}) {
    require(message.getValid() || !message.ValidateForTargetVersion(version));
  }
  static_cast<void>(message.getParsingBytesString());
}

void checkMappings(const ZelkBinaryMessage& message) {
  xlatr::BrixMessage line;
  mapToTrc(message, line);
  for (const double version : {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0}) {
    require(line.ValidateForTargetVersion(version) == message.ValidateForTargetVersion(version));
    xlatr::TextBuffer text;
    line.appendText(text, xlatr::findTrcVersion(version), 1, 0);
    require(message.getValid() || text.empty());
  }
  xlatr::AscMessage entry;
  mapToAsc(message, entry);
  xlatr::TextBuffer text;
  entry.toText8(text);
  xlatr::CsvMessage row(";");
  mapToCsv(message, row);
  row.toRow(text, 1);

  // The record made of the line is of the same type, and is read as the same frame.
  ZelkBinaryMessage made;
  mapToBtrc(line, made);
  if (message.getValid()) {
    require(made.GetRecordType() == message.GetRecordType());
    ZelkBinaryMessage again;
    again.readRecord(made.GetRecordType(), made.rawBytes, xlatr::TimeScale());
    // A received remote frame states more bytes than it has; its own record accepts that.
    require(again.getValid());
    require(again.kind == message.kind);
    require(again.bus == message.bus);
    require(again.direction == message.direction);
    require(message.kind == xlatr::MessageKind::ER || again.id == message.id);
  }
  made.AdjustTimestamp(xlatr::UnsignedMicroseconds(1));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kPrefix = 3;
  constexpr std::size_t kOffsetOfType = 2;
  if (size < kPrefix) {
    return 0;
  }
  const auto exponent = static_cast<std::int8_t>(data[0]);
  std::vector<std::uint8_t> bytes(data + kPrefix, data + size);
  const auto type = static_cast<RecordType>(data[1] | data[2] << 8);
  if (bytes.size() >= xlatr::kRecordHeaderSize) {
    bytes[kOffsetOfType] = data[1];
    bytes[kOffsetOfType + 1] = data[2];
  }
  using namespace xlatr;
  checkRecords<Native_RecordHeader, Internal_DataFrameInfo, Internal_ReceivedDataFrameHeader,
               Internal_SentDataFrameHeader, Native_RecordCanError, Native_RecordCanStatus, Native_RecordCanBusLoad,
               Native_RecordCanBitrate, Native_RecordCanBitrateFd, Native_RecordCanOverrun, Native_RecordInfo,
               Native_RecordTimeCalibration, Native_RecordCounter>(bytes);
  require(commentOf(bytes).size() <= bytes.size());
  ZelkBinaryMessage message;
  message.readRecord(type, bytes, TimeScale(exponent));
  checkMessage(message, bytes);
  checkMappings(message);
  return 0;
}
