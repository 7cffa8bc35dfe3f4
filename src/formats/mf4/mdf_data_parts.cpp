#include "formats/mf4/mdf_data_parts.hpp"

#include <algorithm>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/block_data.hpp"
#include "util/layout.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::array<std::string_view, 5> kDataTypes = {"DT", "DV", "SD", "RD", "RV"};
constexpr std::array<std::string_view, 2> kInvalidationTypes = {"DI", "RI"};
constexpr std::uint32_t kListHasInvalidation = 0x80000000;

}  // namespace

std::optional<MdfDataParts::BlockHead> MdfDataParts::headAt(std::uint64_t position) {
  std::array<std::uint8_t, kHeaderSectionSize> bytes{};
  if (!file_.readAll(position, bytes)) {
    return std::nullopt;
  }
  HeaderSection section;
  loadFields(bytes.data(), section);
  const BlockHead head{section.blockId, section.length, section.linkCount};
  if (head.id[0] != '#' || head.id[1] != '#' || head.links > file_.bytesAfter(position) / kLinkSize) {
    return std::nullopt;
  }
  return head;
}

std::optional<std::uint64_t> MdfDataParts::numberAt(std::uint64_t position) {
  std::array<std::uint8_t, 8> bytes{};
  return file_.readAll(position, bytes) ? std::optional(loadLittle<std::uint64_t>(bytes.data())) : std::nullopt;
}

void MdfDataParts::restart() {
  damaged_ = false;
  single_ = 0;
  list_ = 0;
  storedTotal_ = 0;
  listsTotal_ = 0;
  openLink(link_);
}

void MdfDataParts::openLink(std::uint64_t position) {
  if (position == 0) {
    return;
  }
  std::optional<BlockHead> head = headAt(position);
  if (head && head->type() == "HL") {
    position = numberAt(position + kHeaderSectionSize).value_or(0);
    if (position == 0) {
      return;
    }
    head = headAt(position);
  }
  if (!head) {
    damaged_ = true;
  } else if (head->type() == "DL" || head->type() == "LD") {
    openList(position, *head);
  } else {
    single_ = position;
  }
}

void MdfDataParts::openList(std::uint64_t position, const BlockHead& head) {
  constexpr std::uint64_t kSmallestList = 40;
  std::array<std::uint8_t, 16> bytes{};
  const std::optional<std::uint64_t> next = numberAt(position + kHeaderSectionSize);
  if (++listsTotal_ > file_.size() / kSmallestList || head.links == 0 || !next ||
      file_.read(position + head.dataOffset(), bytes) < 8) {
    stop();
    return;
  }
  const bool isLd = head.type() == "LD";
  const std::uint32_t flags = isLd ? loadLittle<std::uint32_t>(bytes.data()) : bytes[0];
  const std::uint64_t stated = loadLittle<std::uint32_t>(bytes.data() + 4);
  const std::uint64_t held = head.links - 1;
  damaged_ = damaged_ || stated > held;
  list_ = position;
  nextList_ = *next;
  listLinks_ = head.links;
  firstLink_ = 1;
  count_ = std::min(stated, held);
  if (role_ == MdfDataRole::Invalidation) {
    const bool has = isLd && (flags & kListHasInvalidation) != 0 && 2 * stated <= held;
    firstLink_ += stated;
    count_ = has ? stated : 0;
  }
  index_ = 0;
  linksBegin_ = linksEnd_ = 0;
  // Those of values count samples and not bytes.
  equalLength_ = !isLd && (flags & 1U) != 0 ? loadLittle<std::uint64_t>(bytes.data() + 8) : 0;
  hasOffsets_ = !isLd && (flags & 1U) == 0;
}

std::uint64_t MdfDataParts::linkOfList(std::uint64_t index) {
  if (index < linksBegin_ || index >= linksEnd_) {
    const std::uint64_t count = std::min<std::uint64_t>(kLinksAtOnce, listLinks_ - index);
    const auto bytes = std::span(linkBytes_).first(static_cast<std::size_t>(8 * count));
    const std::size_t got = file_.read(list_ + kHeaderSectionSize + kLinkSize * index, bytes);
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(got), bytes.end(), std::uint8_t{0});
    linksBegin_ = index;
    linksEnd_ = index + count;
  }
  return loadLittle<std::uint64_t>(linkBytes_.data() + kLinkSize * (index - linksBegin_));
}

// What the list says of a block that does not say it itself; 0 where it says nothing.
std::uint64_t MdfDataParts::lengthInList(std::uint64_t index) {
  if (!hasOffsets_ || index + 1 >= count_) {
    return equalLength_;
  }
  const std::uint64_t offsets = list_ + kHeaderSectionSize + kLinkSize * listLinks_ + 8;
  const auto begin = numberAt(offsets + 8 * index);
  const auto end = numberAt(offsets + 8 * (index + 1));
  return begin && end && *end > *begin ? *end - *begin : 0;
}

bool MdfDataParts::next(MdfDataPart& part) {
  if (single_ != 0) {
    const std::uint64_t position = single_;
    single_ = 0;
    if (fill(position, part)) {
      return true;
    }
    damaged_ = true;
    return false;
  }
  while (list_ != 0) {
    if (index_ == count_) {
      const std::uint64_t position = nextList_;
      list_ = 0;
      const std::optional<BlockHead> head = position != 0 ? headAt(position) : std::nullopt;
      if (head && (head->type() == "DL" || head->type() == "LD")) {
        openList(position, *head);
      } else {
        damaged_ = damaged_ || position != 0;
      }
      continue;
    }
    const std::uint64_t index = index_++;
    const std::uint64_t position = linkOfList(firstLink_ + index);
    if (file_.exhausted()) {
      stop();
      return false;
    }
    if (position == 0) {
      continue;
    }
    if (fill(position, part)) {
      return true;
    }
    if (file_.exhausted() || storedTotal_ > file_.size()) {
      stop();
      return false;
    }
    damaged_ = true;
    part = MdfDataPart{.form = MdfPartForm::Lost, .length = lengthInList(index)};
    return true;
  }
  return false;
}

bool MdfDataParts::fill(std::uint64_t position, MdfDataPart& part) {
  const std::optional<BlockHead> head = headAt(position);
  if (!head) {
    return false;
  }
  part = MdfDataPart();
  bool good = false;
  if (head->type() == "DZ") {
    good = fillZipped(position, *head, part);
  } else {
    const bool isValue = std::ranges::find(kDataTypes, head->type()) != kDataTypes.end();
    const bool isInvalidation = std::ranges::find(kInvalidationTypes, head->type()) != kInvalidationTypes.end();
    good = role_ == MdfDataRole::Values ? isValue : isInvalidation;
    part.isValues = head->type() == "DV" || head->type() == "RV";
    part.position = position + head->dataOffset();
    part.length = head->length > head->dataOffset() ? head->length - head->dataOffset() : 0;
    if (part.length == 0 && file_.hasOpenBlock) {
      const std::uint64_t end = file_.endOfOpenBlock(position);
      part.length = end > part.position ? end - part.position : 0;
    }
    part.isCut = part.length > file_.bytesAfter(part.position);
    part.length = part.stored = std::min(part.length, file_.bytesAfter(part.position));
  }
  storedTotal_ += kHeaderSectionSize + part.stored;
  return good && storedTotal_ <= file_.size();
}

bool MdfDataParts::fillZipped(std::uint64_t position, const BlockHead& head, MdfDataPart& part) {
  std::array<std::uint8_t, kLayoutSize<DataZippedBlockData>> bytes{};
  if (!file_.readAll(position + head.dataOffset(), bytes)) {
    return false;
  }
  DataZippedBlockData data;
  loadFields(bytes.data(), data);
  const std::string_view original(data.dzOrgBlockType.data(), data.dzOrgBlockType.size());
  part.isValues = original == "DV" || original == "RV";
  part.position = position + head.dataOffset() + bytes.size();
  part.isCut = data.dzDataLength > file_.bytesAfter(part.position);
  part.stored = std::min(data.dzDataLength, file_.bytesAfter(part.position));
  part.length = data.dzOrgDataLength;
  part.width = data.dzZipParameter;
  switch (static_cast<MdfZipType>(data.dzZipType)) {
    case MdfZipType::Deflate:
      part.form = MdfPartForm::Zipped;
      return true;
    case MdfZipType::TransposedDeflate:
      // Fewer than two rows, or of one byte, are as they are.
      part.form = part.width > 1 && part.length / part.width > 1 ? MdfPartForm::Transposed : MdfPartForm::Zipped;
      return true;
  }
  return false;
}

}  // namespace xlatr
