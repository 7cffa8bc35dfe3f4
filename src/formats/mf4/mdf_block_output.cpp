#include "formats/mf4/mdf_block_output.hpp"

#include <array>

#include "formats/mf4/block_data.hpp"
#include "formats/mf4/zipped_bytes.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::uint64_t kBlockAlignment = 8;

// The head and the links of a block with so many bytes after them.
Bytes headOf(BlockTypeId type, std::span<const std::uint64_t> links, std::uint64_t dataLength) {
  HeaderSection head;
  HeaderSection::setType(head, type);
  head.linkCount = links.size();
  head.length = kHeaderSectionSize + kLinkSize * links.size() + dataLength;
  Bytes bytes;
  appendFields(bytes, head);
  for (const std::uint64_t link : links) {
    storeLittle(growBytes(bytes, kLinkSize), link);
  }
  return bytes;
}

}  // namespace

void MdfBlockOutput::write(std::span<const std::uint8_t> bytes) {
  output_.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  end_ += bytes.size();
}

std::uint64_t MdfBlockOutput::nextBlock() const {
  return (end_ + kBlockAlignment - 1) / kBlockAlignment * kBlockAlignment;
}

void MdfBlockOutput::startBlock() {
  constexpr std::array<std::uint8_t, kBlockAlignment> kZeros{};
  output_.seek(end_);
  write(std::span(kZeros).first(static_cast<std::size_t>(nextBlock() - end_)));
}

std::uint64_t MdfBlockOutput::appendBlock(std::span<const std::uint8_t> bytes) {
  startBlock();
  const std::uint64_t position = end_;
  write(bytes);
  return position;
}

void MdfBlockOutput::patch(std::uint64_t position, std::uint64_t value) {
  std::array<std::uint8_t, sizeof(value)> bytes{};
  storeLittle(bytes.data(), value);
  output_.seek(position);
  output_.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::uint64_t MdfBlockOutput::writeBlock() {
  if (!form_.zipped) {
    const std::uint64_t position = appendBlock(headOf(form_.type, {}, records_.size()));
    write(records_);
    return position;
  }
  deflateInto(records_, squeezed_);
  const std::string_view letters = blockTypeIdToText(form_.type);
  DataZippedBlockData data;
  data.dzOrgBlockType = {letters[0], letters[1]};
  data.dzOrgDataLength = records_.size();
  data.dzDataLength = squeezed_.size();
  Bytes head = headOf(BlockTypeId::DZ, {}, kLayoutSize<DataZippedBlockData> + squeezed_.size());
  appendFields(head, data);
  const std::uint64_t position = appendBlock(head);
  write(squeezed_);
  return position;
}

void MdfBlockOutput::flush() {
  if (records_.empty()) {
    return;
  }
  link(writeBlock());
  written_ += records_.size();
  records_.clear();
  // So that the link, too, is there if the process ends here.
  output_.flush();
}

// The offset of the first block is 0.
void MdfBlockOutput::link(std::uint64_t block) {
  if (firstBlock_ == 0) {
    firstBlock_ = block;
    patch(dataLink_, block);
    return;
  }
  if (nextLink_ == 0) {
    nextLink_ = dataLink_;
    if (form_.zipped) {
      constexpr std::array<std::uint64_t, 1> kNoList{};
      HeaderListBlockData data;
      data.hlZipType = static_cast<std::uint8_t>(MdfZipType::Deflate);
      Bytes bytes = headOf(BlockTypeId::HL, kNoList, kLayoutSize<HeaderListBlockData>);
      appendFields(bytes, data);
      const std::uint64_t position = appendBlock(bytes);
      // What the link leads to is whole before it does.
      nextLink_ = position + kHeaderSectionSize;
      writeList(firstBlock_, 0);
      patch(dataLink_, position);
    } else {
      writeList(firstBlock_, 0);
    }
  }
  writeList(block, written_);
}

void MdfBlockOutput::writeList(std::uint64_t block, std::uint64_t offset) {
  const std::array<std::uint64_t, 2> links = {0, block};
  DataListBlockData data;
  data.count = 1;
  data.offsets = {offset};
  Bytes fields;
  appendFields(fields, data);
  Bytes bytes = headOf(BlockTypeId::DL, links, fields.size());
  bytes.insert(bytes.end(), fields.begin(), fields.end());
  const std::uint64_t position = appendBlock(bytes);
  patch(nextLink_, position);
  nextLink_ = position + kHeaderSectionSize;
}

}  // namespace xlatr
