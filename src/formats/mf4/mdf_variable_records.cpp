#include "formats/mf4/mdf_variable_records.hpp"

#include "formats/mf4/mdf_record_ids.hpp"
#include "util/little_endian.hpp"

namespace xlatr {

bool MdfVariableRecords::findValue(std::uint32_t& length) {
  while (true) {
    const std::uint8_t* bytes = stream_.at(position_, sizes_.idSize);
    if (bytes == nullptr) {
      return false;
    }
    const std::uint64_t id = readMdfRecordId(bytes, sizes_.idSize);
    const auto found = sizes_.sizes.find(id);
    if (found == sizes_.sizes.end()) {
      return false;
    }
    position_ += sizes_.idSize;
    if (found->second != MdfRecordSizes::kVariable) {
      position_ += found->second;
      continue;
    }
    bytes = stream_.at(position_, kLengthSize);
    if (bytes == nullptr) {
      return false;
    }
    length = loadLittle<std::uint32_t>(bytes);
    position_ += kLengthSize;
    if (id == recordId_) {
      return true;
    }
    position_ += length;
  }
}

std::optional<std::span<const std::uint8_t>> MdfVariableRecords::at(std::uint64_t offset, std::size_t longest) {
  if (offset < next_) {
    file_.charge(position_);
    if (file_.exhausted()) {
      return std::nullopt;
    }
    position_ = 0;
    next_ = 0;
  }
  std::uint32_t length = 0;
  while (findValue(length)) {
    const std::uint64_t begin = position_;
    const std::uint64_t here = next_;
    position_ += length;
    next_ += kLengthSize + length;
    if (here == offset) {
      const std::uint8_t* const bytes = length <= longest ? stream_.at(begin, length) : nullptr;
      return bytes != nullptr ? std::optional(std::span(bytes, length)) : std::nullopt;
    }
    if (here > offset) {
      break;
    }
  }
  return std::nullopt;
}

}  // namespace xlatr
