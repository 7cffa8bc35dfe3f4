#include "formats/blf/blf_log_head.hpp"

#include <algorithm>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_log_queue.hpp"

namespace xlatr::blf_log {
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

}  // namespace

std::optional<FileHeader> parseFileHeader(std::span<const std::uint8_t> bytes) {
  FileHead head;
  if (!startsWith(bytes, kFileSignature) || !tryReadFields(bytes, head)) {
    return std::nullopt;
  }
  // A header that claims to be shorter would have objects in its own fields.
  return FileHeader{.firstObject = std::max<std::uint64_t>(head.size, kLayoutSize<FileHead>),
                    .apiNumber = head.apiNumber,
                    .objectCount = head.objectCount,
                    .startTime = isDate(head.startTime) ? head.startTime : Date{}};
}

std::optional<FileHeader> readFileHeader(const InputSource& source) {
  InputFile file(source);
  std::array<char, kLayoutSize<FileHead>> bytes{};
  std::size_t size = 0;
  for (std::size_t count = 1; count > 0 && size < bytes.size(); size += count) {
    count = file.read(std::span(bytes).subspan(size));
  }
  return parseFileHeader({reinterpret_cast<const std::uint8_t*>(bytes.data()), size});
}

std::int32_t fileVersion(const FileHeader& header) {
  constexpr std::uint32_t kLastVersion = 99'99'99'99;
  return header.apiNumber <= kLastVersion ? static_cast<std::int32_t>(header.apiNumber) : 0;
}

}  // namespace xlatr::blf_log
