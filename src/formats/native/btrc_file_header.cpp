#include "formats/native/btrc_file_header.hpp"

#include <exception>
#include <utility>

#include "util/failures.hpp"
#include "util/hex.hpp"
#include "util/host.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kInfoSize = kWireSize<Native_RecordInfo>;
constexpr std::size_t kCalibrationSize = kWireSize<Native_RecordTimeCalibration>;

// The moment of a calibration record. Raises a ConverterParsingException for a date that there is not.
DateTime dateOf(const Native_RecordTimeCalibration& record) {
  constexpr std::uint32_t kMicrosecondsPerSecond = 1000000;
  constexpr std::uint32_t kMicrosecondsPerMillisecond = 1000;
  platform::CalendarFields fields;
  fields.year = record.year;
  fields.month = record.month;
  fields.day = record.day;
  fields.hour = record.hour;
  fields.minute = record.minute;
  fields.second = record.second;
  const std::uint32_t fraction = record.microseconds % kMicrosecondsPerSecond;
  DateTime date = DateTime::fromLocalFields(fields, static_cast<std::int32_t>(fraction / kMicrosecondsPerMillisecond),
                                            static_cast<std::int32_t>(fraction % kMicrosecondsPerMillisecond));
  date.seconds += record.microseconds / kMicrosecondsPerSecond;
  return date;
}

}  // namespace

BtrcFileHeader::BtrcFileHeader(std::string path) : sourcePath(std::move(path)) {
  reset();
  bool whole = false;
  try {
    whole = read();
  } catch (const std::exception&) {
    whole = false;
  }
  if (!whole) {
    reset();
  }
}

void BtrcFileHeader::reset() {
  info = {};
  timeCalibration = {};
  firstFramePosition = 0;
  errorOnRtc = false;
  valid = false;
  startDateTime = DateTime();
  systemTime = 0;
  timeCalibration.year = static_cast<std::uint16_t>(startDateTime.year);
  timeCalibration.month = static_cast<std::uint8_t>(startDateTime.month);
  timeCalibration.day = static_cast<std::uint8_t>(startDateTime.day);
  timeCalibration.hour = static_cast<std::uint8_t>(startDateTime.hour);
  timeCalibration.minute = static_cast<std::uint8_t>(startDateTime.minute);
  timeCalibration.second = static_cast<std::uint8_t>(startDateTime.second);
}

// False for a file that ends before its second record does. One that begins otherwise has no second record to look at.
bool BtrcFileHeader::read() {
  BlockInput input(sourcePath);
  if (!tryReadWire(input.peek(kInfoSize), info)) {
    return false;
  }
  valid = info.header.type == RecordType::Info;
  if (!valid) {
    return true;
  }
  input.skip(kInfoSize);
  firstFramePosition = kInfoSize;
  if (!tryReadWire(input.peek(kCalibrationSize), timeCalibration)) {
    return false;
  }
  readCalibration();
  return true;
}

// Without a good calibration record its bytes are the first record to be read, whatever they are.
void BtrcFileHeader::readCalibration() {
  if (timeCalibration.header.type != RecordType::TimeCalibration) {
    startDateTime = getFileCreationTime(sourcePath);
    return;
  }
  try {
    startDateTime = dateOf(timeCalibration);
    systemTime = timeCalibration.systemTime;
    firstFramePosition = kInfoSize + kCalibrationSize;
  } catch (const ConverterParsingException&) {
    errorOnRtc = true;
    startDateTime = getFileModificationTime(sourcePath);
  }
}

std::string BtrcFileHeader::getRTCRawDataString() const {
  std::array<std::uint8_t, kCalibrationSize> bytes{};
  writeWire(timeCalibration, bytes.data());
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text.append(hexPair(byte)).append(" ");
  }
  return text;
}

}  // namespace xlatr
