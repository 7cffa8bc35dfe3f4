#include "formats/native/btrc_file_header.hpp"

#include <ios>
#include <system_error>
#include <utility>

#include "util/failures.hpp"
#include "util/hex.hpp"
#include "util/host.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kInfoSize = kLayoutSize<Native_RecordInfo>;
constexpr std::size_t kCalibrationSize = kLayoutSize<Native_RecordTimeCalibration>;

// The moment of a calibration record. Raises a ConverterParsingException for a date that does not exist.
DateTime dateOf(const Native_RecordTimeCalibration& record) {
  platform::CalendarFields fields;
  fields.year = record.year;
  fields.month = record.month;
  fields.day = record.day;
  fields.hour = record.hour;
  fields.minute = record.minute;
  fields.second = record.second;
  using std::chrono::milliseconds;
  const std::chrono::microseconds beyond(record.microseconds);
  const auto wholeSeconds = std::chrono::duration_cast<std::chrono::seconds>(beyond);
  const auto millisecond = std::chrono::duration_cast<milliseconds>(beyond - wholeSeconds);
  DateTime date = DateTime::fromLocalFields(fields, static_cast<std::int32_t>(millisecond.count()),
                                            static_cast<std::int32_t>((beyond % milliseconds(1)).count()));
  date.seconds += wholeSeconds.count();
  return date;
}

}  // namespace

BtrcFileHeader::BtrcFileHeader(std::string path) : sourcePath(std::move(path)) {
  reset();
  bool whole = false;
  try {
    whole = read();
  } catch (const std::ios_base::failure& failure) {
    if (failure.code() != std::errc::no_such_file_or_directory) {
      throw;
    }
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
  systemTime = UnsignedMicroseconds::zero();
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
  if (!tryReadFields(input.peek(kInfoSize), info)) {
    return false;
  }
  valid = info.header.type == RecordType::Info;
  if (!valid) {
    return true;
  }
  input.skip(kInfoSize);
  firstFramePosition = kInfoSize;
  if (!tryReadFields(input.peek(kCalibrationSize), timeCalibration)) {
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
    systemTime = UnsignedMicroseconds(timeCalibration.systemTimeTicks);
    firstFramePosition = kInfoSize + kCalibrationSize;
  } catch (const ConverterParsingException&) {
    errorOnRtc = true;
    startDateTime = getFileModificationTime(sourcePath);
  }
}

std::string BtrcFileHeader::getRTCRawDataString() const {
  std::array<std::uint8_t, kCalibrationSize> bytes{};
  storeFields(bytes.data(), timeCalibration);
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text.append(hexPair(byte)).append(" ");
  }
  return text;
}

}  // namespace xlatr
