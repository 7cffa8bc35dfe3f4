#include "formats/mf4/block_data.hpp"

#include <algorithm>

#include "formats/mf4/zipped_bytes.hpp"

namespace xlatr {
namespace {

// Deflate's best: 258 bytes for two bits (RFC 1951).
constexpr std::uint64_t kMostBytesOfOne = 1032;

void requireBytes(const BlockStream& stream, std::uint64_t position, std::uint64_t count) {
  if (count > stream.bytesAfter(position)) {
    throwProcessingFailure(kShortBytes);
  }
}

void readInto(BlockStream& stream, std::uint64_t position, std::uint64_t count, RecordBytes& out) {
  requireBytes(stream, position, count);
  const std::size_t before = out.size();
  if (!stream.read(position, out.extend(static_cast<std::size_t>(count)))) {
    out.shrink(before);
    throwProcessingFailure(kShortBytes);
  }
}

constexpr std::array kRecordBlocks = {BlockTypeId::DT, BlockTypeId::RD, BlockTypeId::SD, BlockTypeId::DZ};
constexpr std::array kValueBlocks = {BlockTypeId::DV, BlockTypeId::RV, BlockTypeId::DZ};

// The one block of a data link, if it is no list.
std::unique_ptr<IDataBlock> followDataBlock(BlockStream& stream, std::uint64_t position, BlockTypeId type) {
  switch (type) {
    case BlockTypeId::DT:
      return followTreeLink<DataBlock>(&stream, position);
    case BlockTypeId::DV:
      return followTreeLink<DataValuesBlock>(&stream, position);
    case BlockTypeId::RD:
      return followTreeLink<ReductionDataBlock>(&stream, position);
    case BlockTypeId::RV:
      return followTreeLink<ReductionValuesBlock>(&stream, position);
    case BlockTypeId::SD:
      return followTreeLink<SignalDataBlock>(&stream, position);
    case BlockTypeId::DZ:
      return followTreeLink<DataZippedBlock>(&stream, position);
    default:
      return nullptr;
  }
}

BlockTypeId typeAt(BlockStream& stream, std::uint64_t position) {
  return HeaderSection::typeOf(readHeaderSection(stream, position));
}

}  // namespace

IDataBlock::~IDataBlock() = default;

RecordBytes IDataBlock::getData() {
  RecordBytes bytes;
  bytes.reserve(static_cast<std::size_t>(dataSize()));
  appendRecords(bytes);
  return bytes;
}

std::uint64_t PlainDataBlock::dataSize() {
  if (stream() == nullptr) {
    return 0;
  }
  requireBytes(*stream(), dataOffset(), dataLength());
  return dataLength();
}

void PlainDataBlock::appendRecords(RecordBytes& out) {
  if (stream() != nullptr && dataLength() > 0) {
    readInto(*stream(), dataOffset(), dataLength(), out);
  }
}

DataZippedBlock::DataZippedBlock() : BlockBase(kType, DataZippedBlockData::kLinkCount) {}

DataZippedBlock::DataZippedBlock(BlockStream& stream, std::uint64_t position) : BlockBase(stream, position) {
  requireFields(readBytes(dataOffset(), kLayoutSize<DataZippedBlockData>), data);
}

std::uint64_t DataZippedBlock::dataSize() {
  if (stream() == nullptr) {
    return 0;
  }
  requireBytes(*stream(), dataOffset() + kLayoutSize<DataZippedBlockData>, data.dzDataLength);
  if (data.dzOrgDataLength / kMostBytesOfOne > data.dzDataLength) {
    throwProcessingFailure(kInflateFailure);
  }
  return data.dzOrgDataLength;
}

RecordBytes DataZippedBlock::zippedData() {
  RecordBytes bytes;
  if (stream() != nullptr) {
    readInto(*stream(), dataOffset() + kLayoutSize<DataZippedBlockData>, data.dzDataLength, bytes);
  }
  return bytes;
}

void DataZippedBlock::appendRecords(RecordBytes& out) {
  const std::size_t before = out.size();
  const auto size = static_cast<std::size_t>(dataSize());
  const RecordBytes zipped = zippedData();
  try {
    if (data.dzZipType != static_cast<std::uint8_t>(MdfZipType::TransposedDeflate)) {
      inflateInto(zipped.view(), out.extend(size));
      return;
    }
    RecordBytes columns;
    inflateInto(zipped.view(), columns.extend(size));
    if (const std::size_t width = data.dzZipParameter; width > 0 && size % width == 0) {
      transpose(columns.view(), width, out.extend(size));
    }
  } catch (...) {
    out.shrink(before);
    throw;
  }
}

void DataZippedBlock::appendData(Bytes& bytes) const {
  appendFields(bytes, data);
}

DataList::DataList(BlockStream& stream, std::uint64_t position, BlockTypeId type) : fileSize_(stream.size()) {
  if (type == BlockTypeId::HL) {
    const auto header = followTreeLink<HeaderListBlock>(&stream, position);
    position = header ? header->link(0) : 0;
    type = position != 0 ? typeAt(stream, position) : BlockTypeId::Unknown;
  }
  if (type == BlockTypeId::DL) {
    collect<DataListBlock>(stream, position, kRecordBlocks);
  } else if (type == BlockTypeId::LD) {
    collect<ListDataBlock>(stream, position, kValueBlocks);
  }
}

template <class List>
void DataList::collect(BlockStream& stream, std::uint64_t position, std::span<const BlockTypeId> taken) {
  BlockChain<List> chain(&stream, position);
  for (List& list : chain) {
    const std::uint64_t count = list.data.count;
    if (count >= list.links().size() && count > 0) {
      throwProcessingFailure(kShortBytes);
    }
    for (std::size_t index = 1; index <= count; ++index) {
      const std::uint64_t link = list.link(index);
      const BlockTypeId type = link != 0 ? typeAt(stream, link) : BlockTypeId::Unknown;
      if (std::ranges::find(taken, type) == taken.end()) {
        continue;
      }
      if (auto part = followDataBlock(stream, link, type)) {
        parts_.push_back(std::move(part));
      }
    }
  }
}

std::uint64_t DataList::dataSize() {
  std::uint64_t size = 0;
  for (const auto& part : parts_) {
    size += part->dataSize();
    if (size / kMostBytesOfOne > fileSize_) {
      throwProcessingFailure(kBlockLoop);
    }
  }
  return size;
}

void DataList::appendRecords(RecordBytes& out) {
  const std::size_t before = out.size();
  try {
    for (const auto& part : parts_) {
      part->appendRecords(out);
    }
  } catch (...) {
    out.shrink(before);
    throw;
  }
}

std::unique_ptr<IDataBlock> followDataLink(BlockStream* stream, std::uint64_t position) {
  if (stream == nullptr || position == 0) {
    return nullptr;
  }
  const BlockTypeId type = typeAt(*stream, position);
  if (type == BlockTypeId::DL || type == BlockTypeId::LD || type == BlockTypeId::HL) {
    return std::make_unique<DataList>(*stream, position, type);
  }
  return followDataBlock(*stream, position, type);
}

}  // namespace xlatr
