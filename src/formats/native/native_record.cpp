#include "formats/native/native_record.hpp"

#include <algorithm>
#include <limits>

namespace xlatr {

void appendFiller(Bytes& out, std::size_t size) {
  constexpr std::size_t kSizesOfARecord = std::size_t{1} << 16;
  const Native_RecordHeader header(std::max(size % kSizesOfARecord, kRecordHeaderSize), RecordType::Invalid);
  appendFields(out, header);
  growBytes(out, header.size - kRecordHeaderSize);
}

void appendComment(Bytes& out, std::string_view text, Way way) {
  constexpr std::size_t kLongestText =
      std::size_t{std::numeric_limits<std::uint16_t>::max() / 4} * 4 - kRecordHeaderSize;
  const bool blanks = way.has(Quirk::BtrcTextsEndInBlanks);
  text = text.substr(0, kLongestText);
  const std::size_t zeros = !blanks && text.ends_with(' ') && text.size() < kLongestText ? 1 : 0;
  const Native_RecordHeader header(kRecordHeaderSize + roundedUpToFour(text.size() + zeros), RecordType::TextMsg);
  const std::size_t end = out.size() + header.size;
  appendFields(out, header);
  out.insert(out.end(), text.begin(), text.end());
  out.resize(end, blanks ? ' ' : '\0');
}

std::string_view commentOf(std::span<const std::uint8_t> record, Way way) {
  if (record.size() <= kRecordHeaderSize) {
    return {};
  }
  const auto content = record.subspan(kRecordHeaderSize);
  const auto end = std::find(content.begin(), content.end(), std::uint8_t{0});
  const std::string_view text(reinterpret_cast<const char*>(content.data()),
                              static_cast<std::size_t>(end - content.begin()));
  if (way.has(Quirk::BtrcTextsEndInBlanks) || end != content.end()) {
    return text;
  }
  constexpr std::size_t kMostFilling = 3;
  const std::size_t length = text.size() - std::min(text.size(), kMostFilling);
  return text.substr(0, std::max(length, text.find_last_not_of(' ') + 1));
}

}  // namespace xlatr
