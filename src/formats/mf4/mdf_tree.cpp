#include "formats/mf4/mdf_tree.hpp"

#include <array>
#include <string_view>

#include "formats/mf4/block_texts.hpp"
#include "util/failures.hpp"
#include "util/layout.hpp"
#include "util/utf8.hpp"

namespace xlatr {

bool MdfTree::isUsable(std::uint64_t position, HeaderSection* found) {
  constexpr std::uint64_t kMostLinks = 70'000;  // a conversion refers to 65,535 others at most
  constexpr std::uint64_t kLongest = std::uint64_t{4} << 20;
  std::array<std::uint8_t, kHeaderSectionSize> bytes{};
  // Not by the stream, which raises what is only counted here, but for what is read and kept.
  if (position > file_->size() || file_->bytesAfter(position) < bytes.size() || !file_->readAll(position, bytes)) {
    return false;
  }
  HeaderSection head;
  loadFields(bytes.data(), head);
  if (found != nullptr) {
    *found = head;
  }
  const std::string_view id(head.blockId.data(), head.blockId.size());
  return id.starts_with("##") && head.linkCount <= kMostLinks && head.length <= kLongest &&
         head.length >= kHeaderSectionSize + kLinkSize * head.linkCount && head.length <= file_->bytesAfter(position);
}

bool MdfTree::isBlock(std::uint64_t position, BlockTypeId type) {
  HeaderSection head;
  if (!isUsable(position, &head)) {
    return false;
  }
  HeaderSection wanted;
  HeaderSection::setType(wanted, type);
  return head.blockId == wanted.blockId;
}

std::string MdfTree::text(std::uint64_t position) {
  if (has(Quirk::Mf4DamagedBlocksFail)) {
    return readText(&stream_, position);
  }
  if (position == 0 || !(isBlock(position, BlockTypeId::TX) || isBlock(position, BlockTypeId::MD))) {
    return {};
  }
  try {
    std::string text = readText(&stream_, position);
    return text.substr(0, text.find('\0'));
  } catch (const ConverterGenericException&) {
    damaged_ = true;
    return {};
  }
}

bool MdfTree::takeTableRows(std::size_t count) {
  if (has(Quirk::Mf4DamagedBlocksFail)) {
    return true;  // the stream counts what is read
  }
  if (count > kMostTableRows - tableRows_) {
    damaged_ = true;
    return false;
  }
  tableRows_ += count;
  return true;
}

}  // namespace xlatr
