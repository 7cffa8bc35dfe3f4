#include "tracegen/blf_printer.hpp"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <string_view>

namespace tracegen {
namespace {

constexpr std::size_t kFileHeaderSize = 144;
constexpr std::size_t kContainerHeaderSize = 32;
constexpr std::size_t kObjectHeaderSize = 32;
constexpr std::size_t kContainerContent = std::size_t{128} * 1024;

constexpr std::uint32_t kContainer = 10;
constexpr std::uint32_t kErrorFrame = 73;
constexpr std::uint32_t kClassicFrame = 86;
constexpr std::uint32_t kFdFrame = 100;

constexpr std::uint32_t kNanoseconds = 2;
constexpr std::uint32_t kZlib = 2;
constexpr std::uint32_t kExtendedFlag = 0x80000000;

void append(std::string& text, std::uint64_t value, std::size_t width) {
  for (std::size_t index = 0; index < width; ++index) {
    text.push_back(static_cast<char>(value >> (8 * index)));
  }
}

// Eight words: year, month, weekday, day, hour, minute, second, millisecond.
void appendDate(std::string& text, std::uint64_t timeUs) {
  using namespace std::chrono;
  const sys_time<milliseconds> time(seconds(kStartUnixSeconds) + milliseconds(timeUs / 1000));
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  append(text, static_cast<std::uint64_t>(static_cast<int>(date.year())), 2);
  for (const std::uint64_t field :
       {std::uint64_t{static_cast<unsigned>(date.month())}, std::uint64_t{weekday(day).c_encoding()},
        std::uint64_t{static_cast<unsigned>(date.day())}}) {
    append(text, field, 2);
  }
  for (const auto field :
       {clock.hours().count(), clock.minutes().count(), clock.seconds().count(), clock.subseconds().count()}) {
    append(text, static_cast<std::uint64_t>(field), 2);
  }
}

std::uint32_t rawId(const Entry& entry) {
  return entry.canId | (entry.extended ? kExtendedFlag : 0);
}

std::uint8_t fdDlc(std::uint32_t length) {
  return static_cast<std::uint8_t>(std::lower_bound(kFdLengths.begin(), kFdLengths.end(), length) - kFdLengths.begin());
}

}  // namespace

BlfPrinter::BlfPrinter() : fileSize_(kFileHeaderSize), unpackedSize_(kFileHeaderSize) {}

std::string BlfPrinter::header() const {
  std::string text = "LOGG";
  append(text, kFileHeaderSize, 4);
  append(text, 4'07'01'00, 4);                    // version of the programming interface, two digits per part
  for (const unsigned byte : {0U, 6U, 1U, 0U}) {  // program, compression level, its version
    append(text, byte, 1);
  }
  append(text, fileSize_, 8);
  append(text, unpackedSize_, 8);
  append(text, objects_, 4);
  append(text, 0, 4);
  appendDate(text, 0);
  appendDate(text, lastUs_);
  text.resize(kFileHeaderSize, '\0');
  return text;
}

// What is known only at the end is 0 until then, as in a log whose recorder was cut off.
void BlfPrinter::printHeader(TextOutput& output) {
  output.text(header());
}

void BlfPrinter::printEntry(const Entry& entry, TextOutput& output) {
  switch (entry.kind) {
    case EntryKind::Data:
    case EntryKind::Remote:
      addFrame(entry);
      break;
    case EntryKind::FdData:
      addFdFrame(entry);
      break;
    case EntryKind::ErrorFrame:
      addErrorFrame(entry);
      break;
    case EntryKind::XlData:
    case EntryKind::Status:
    case EntryKind::ErrorCounters:
    case EntryKind::Event:
    case EntryKind::Comment:
      return;
  }
  if (content_.size() >= kContainerContent) {
    writeContainer(kContainerContent, output);
  }
}

void BlfPrinter::printEnd(TextOutput& output) {
  if (!content_.empty()) {
    writeContainer(content_.size(), output);
  }
}

void BlfPrinter::number(std::uint64_t value, std::size_t width) {
  for (std::size_t index = 0; index < width; ++index) {
    content_.push_back(static_cast<std::uint8_t>(value >> (8 * index)));
  }
}

void BlfPrinter::zeros(std::size_t count) {
  content_.insert(content_.end(), count, 0);
}

void BlfPrinter::addObject(std::uint32_t type, const Entry& entry, std::size_t bodySize) {
  constexpr std::uint64_t kNsPerUs = 1000;
  for (const char character : std::string_view("LOBJ")) {
    number(static_cast<std::uint8_t>(character), 1);
  }
  number(kObjectHeaderSize, 2);
  number(1, 2);
  number(kObjectHeaderSize + bodySize, 4);
  number(type, 4);
  number(kNanoseconds, 4);
  number(0, 4);
  number(entry.timeUs * kNsPerUs, 8);
  ++objects_;
  lastUs_ = entry.timeUs;
}

void BlfPrinter::addFrame(const Entry& entry) {
  constexpr std::size_t kData = 8;
  constexpr std::uint32_t kTransmitted = 0x01;
  constexpr std::uint32_t kRemote = 0x80;
  const bool remote = entry.kind == EntryKind::Remote;
  addObject(kClassicFrame, entry, 24);
  number(entry.bus, 2);
  number((entry.transmitted ? kTransmitted : 0U) | (remote ? kRemote : 0U), 1);
  number(entry.dataLength, 1);
  number(rawId(entry), 4);
  for (std::size_t index = 0; index < kData; ++index) {
    number(!remote && index < entry.dataLength ? entry.data[index] : 0U, 1);
  }
  zeros(8);  // duration and count of bits
}

void BlfPrinter::addFdFrame(const Entry& entry) {
  constexpr std::size_t kData = 64;
  addObject(kFdFrame, entry, 88);
  number(entry.bus, 2);
  number(entry.transmitted ? 1U : 0U, 1);
  number(fdDlc(entry.dataLength), 1);
  number(rawId(entry), 4);
  zeros(5);  // duration and count of bits
  number(1U | (entry.bitRateSwitch ? 2U : 0U) | (entry.errorStateIndicator ? 4U : 0U), 1);
  number(entry.dataLength, 1);
  zeros(5);
  for (std::size_t index = 0; index < kData; ++index) {
    number(index < entry.dataLength ? entry.data[index] : 0U, 1);
  }
  number(0, 4);
}

void BlfPrinter::addErrorFrame(const Entry& entry) {
  addObject(kErrorFrame, entry, 32);
  number(entry.bus, 2);
  zeros(6);  // no length, and none of the fields below is valid
  zeros(24);
}

void BlfPrinter::writeContainer(std::size_t size, TextOutput& output) {
  packed_.resize(::compressBound(static_cast<uLong>(size)));
  auto packedSize = static_cast<uLongf>(packed_.size());
  if (::compress(packed_.data(), &packedSize, content_.data(), static_cast<uLong>(size)) != Z_OK) {
    throw std::runtime_error("zlib refuses to pack a container");
  }
  content_.erase(content_.begin(), content_.begin() + static_cast<std::ptrdiff_t>(size));
  const std::size_t objectSize = kContainerHeaderSize + packedSize;
  std::string header = "LOBJ";
  append(header, 16, 2);
  append(header, 1, 2);
  append(header, objectSize, 4);
  append(header, kContainer, 4);
  append(header, kZlib, 2);
  append(header, 0, 6);
  append(header, size, 4);
  append(header, 0, 4);
  const std::size_t padding = objectSize % 4;
  output.text(header);
  output.text({reinterpret_cast<const char*>(packed_.data()), packedSize});
  output.text(std::string(padding, '\0'));
  fileSize_ += objectSize + padding;
  unpackedSize_ += kContainerHeaderSize + size;
}

}  // namespace tracegen
