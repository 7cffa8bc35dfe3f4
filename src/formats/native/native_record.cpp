#include "formats/native/native_record.hpp"

#include <limits>

namespace xlatr {

ISerializable::~ISerializable() = default;
ITimestampAdjustable::~ITimestampAdjustable() = default;

FrameData::FrameData(std::size_t size, std::span<const std::uint8_t> source) : size_(size) {
  if (size > small_.size()) {
    large_.resize(size);
  }
  std::copy_n(source.begin(), std::min(size, source.size()), large_.empty() ? small_.data() : large_.data());
}

std::vector<std::uint8_t> Native_RecordInvalid::Serialize() const {
  std::vector<std::uint8_t> image;
  appendTo(image);
  return image;
}

void Native_RecordInvalid::appendTo(std::vector<std::uint8_t>& out) const {
  header.appendTo(out);
  appendBytes(out, filler);
}

std::unique_ptr<Native_RecordInvalid> Native_RecordInvalid::FromBytes(std::span<const std::uint8_t> bytes) {
  auto record = std::make_unique<Native_RecordInvalid>();
  if (!tryReadWire(bytes, record->header) || record->header.size < kRecordHeaderSize ||
      bytes.size() < record->header.size) {
    return nullptr;
  }
  const auto filler = bytes.first(record->header.size).subspan(kRecordHeaderSize);
  record->filler.assign(filler.begin(), filler.end());
  return record;
}

Native_RecordTextMsg::Native_RecordTextMsg(std::string_view content) {
  constexpr std::size_t kLongestText =
      std::size_t{std::numeric_limits<std::uint16_t>::max() / 4} * 4 - kRecordHeaderSize;
  text = content.substr(0, kLongestText);
  text.resize(roundedUpToFour(text.size()), ' ');
  header = {text.size() + kRecordHeaderSize, RecordType::TextMsg};
}

std::vector<std::uint8_t> Native_RecordTextMsg::Serialize() const {
  std::vector<std::uint8_t> image;
  appendTo(image);
  return image;
}

void Native_RecordTextMsg::appendTo(std::vector<std::uint8_t>& out) const {
  header.appendTo(out);
  out.insert(out.end(), text.begin(), text.end());
}

std::unique_ptr<Native_RecordTextMsg> Native_RecordTextMsg::FromBytes(std::span<const std::uint8_t> bytes) {
  auto record = std::make_unique<Native_RecordTextMsg>();
  if (!tryReadWire(bytes, record->header)) {
    return nullptr;
  }
  record->text = textOf(bytes);
  return record;
}

std::string_view Native_RecordTextMsg::textOf(std::span<const std::uint8_t> bytes) {
  if (bytes.size() <= kRecordHeaderSize) {
    return {};
  }
  const auto content = bytes.subspan(kRecordHeaderSize);
  const auto end = std::find(content.begin(), content.end(), std::uint8_t{0});
  return {reinterpret_cast<const char*>(content.data()), static_cast<std::size_t>(end - content.begin())};
}

}  // namespace xlatr
