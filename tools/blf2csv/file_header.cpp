#include "blf2csv/file_header.hpp"

#include <algorithm>
#include <stdexcept>

#include "blf2csv/blf_layout.hpp"
#include "blf2csv/byte_queue.hpp"
#include "blf2csv/fields.hpp"
#include "platform/files.hpp"

namespace blf2csv {
namespace {

using Date = std::array<std::uint16_t, 8>;

// The fields but the weekday, which says nothing that the others don't. Months without 31 days are not told apart:
// whoever reads the date counts on.
bool isDate(const Date& date) {
  const auto field = [&date](DateField name) { return date[static_cast<std::size_t>(name)]; };
  const auto isBetween = [](std::uint16_t value, std::uint16_t least, std::uint16_t most) {
    return value >= least && value <= most;
  };
  constexpr std::uint16_t kLastYear = 9999;
  return isBetween(field(DateField::Year), 1, kLastYear) && isBetween(field(DateField::Month), 1, 12) &&
         isBetween(field(DateField::Day), 1, 31) && field(DateField::Hour) < 24 && field(DateField::Minute) < 60 &&
         field(DateField::Second) < 60 && field(DateField::Millisecond) < 1000;
}

Date dateAt(const Fields& header, std::size_t offset) {
  Date date;
  for (std::size_t index = 0; index < date.size(); ++index) {
    date[index] = header.u16(offset + 2 * index);
  }
  return isDate(date) ? date : Date{};
}

}  // namespace

FileHeader parseFileHeader(std::span<const std::uint8_t> bytes, const std::string& path) {
  if (bytes.size() < kFileHeaderSize || !startsWith(bytes, kFileSignature)) {
    throw std::runtime_error(path + ": is no BLF log");
  }
  const Fields fields(bytes);
  // A header that claims to be shorter would have objects in its own fields.
  return {.firstObject = std::max<std::uint64_t>(fields.u32(kFileHeaderSizeField), kFileHeaderSize),
          .apiNumber = fields.u32(kFileApiNumber),
          .objectCount = fields.u32(kFileObjectCount),
          .startTime = dateAt(fields, kFileStartTime)};
}

FileHeader readFileHeader(const std::string& path) {
  auto file = xlatr::platform::File::openForReading(path);
  std::array<char, kFileHeaderSize> bytes{};
  std::size_t size = 0;
  for (std::size_t count = 1; count > 0 && size < bytes.size(); size += count) {
    count = file.read(std::span(bytes).subspan(size));
  }
  return parseFileHeader({reinterpret_cast<const std::uint8_t*>(bytes.data()), size}, path);
}

std::int32_t fileVersion(const FileHeader& header) {
  constexpr std::uint32_t kLastVersion = 99'99'99'99;
  return header.apiNumber <= kLastVersion ? static_cast<std::int32_t>(header.apiNumber) : 0;
}

}  // namespace blf2csv
