#include "formats/mf4/block_base.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <ranges>
#include <string>

namespace xlatr {
namespace {

constexpr std::string_view kIdPrefix = "##";

// The types that a written file has.
constexpr std::array kWrittenTypes = {BlockTypeId::HD, BlockTypeId::FH, BlockTypeId::MD, BlockTypeId::TX,
                                      BlockTypeId::DG, BlockTypeId::CG, BlockTypeId::SI, BlockTypeId::CN,
                                      BlockTypeId::CC, BlockTypeId::DT, BlockTypeId::DZ, BlockTypeId::SD};

std::vector<std::uint64_t> readLinks(BlockStream& stream, std::uint64_t position, std::uint64_t count) {
  const std::uint64_t begin = position + kHeaderSectionSize;
  if (count > stream.bytesAfter(begin) / kLinkSize) {
    throwProcessingFailure(kShortLinkSection);
  }
  Bytes bytes(static_cast<std::size_t>(count * kLinkSize));
  if (!stream.read(begin, bytes)) {
    throwProcessingFailure(kShortLinkSection);
  }
  std::vector<std::uint64_t> links(static_cast<std::size_t>(count));
  for (std::size_t index = 0; index < links.size(); ++index) {
    links[index] = loadLittle<std::uint64_t>(bytes.data() + index * kLinkSize);
  }
  return links;
}

}  // namespace

BlockTypeId HeaderSection::typeOf(const HeaderSection& section) {
  const std::string_view id(section.blockId.data(), section.blockId.size());
  if (!id.starts_with(kIdPrefix)) {
    throwParsingFailure(kNoBlockId, id);
  }
  const auto type = tryBlockTypeIdFromText(id.substr(kIdPrefix.size()));
  if (!type) {
    throwProcessingFailure(kUnknownBlockType);
  }
  return *type;
}

void HeaderSection::setType(HeaderSection& section, BlockTypeId type) {
  const std::string_view letters = blockTypeIdToText(type);
  section.blockId = {kIdPrefix[0], kIdPrefix[1], letters[0], letters[1]};
}

HeaderSection readHeaderSection(BlockStream& stream, std::uint64_t position) {
  std::array<std::uint8_t, kHeaderSectionSize> bytes{};
  if (!stream.read(position, bytes)) {
    throwProcessingFailure(kShortHeaderSection);
  }
  HeaderSection head;
  loadFields(bytes.data(), head);
  return head;
}

BlockBase::BlockBase(BlockTypeId type, std::size_t linkCount) : links_(linkCount) {
  HeaderSection::setType(head_, type);
}

BlockBase::BlockBase(BlockStream& stream, std::uint64_t position)
    : position_(position),
      head_(readHeaderSection(stream, position)),
      links_(readLinks(stream, position, head_.linkCount)),
      stream_(&stream) {}

BlockBase::~BlockBase() = default;

std::uint64_t BlockBase::dataOffset() const {
  return stream_ == nullptr ? std::numeric_limits<std::uint64_t>::max()
                            : position_ + kHeaderSectionSize + kLinkSize * links_.size();
}

std::uint64_t BlockBase::dataLength() const {
  const std::uint64_t before = kHeaderSectionSize + kLinkSize * links_.size();
  return head_.length > before ? head_.length - before : 0;
}

Bytes BlockBase::readBytes(std::uint64_t position, std::uint64_t count) const {
  if (stream_ == nullptr || count == 0) {
    return {};
  }
  if (count > stream_->bytesAfter(position)) {
    throwProcessingFailure(kShortBytes);
  }
  Bytes bytes(static_cast<std::size_t>(count));
  if (!stream_->read(position, bytes)) {
    throwProcessingFailure(kShortBytes);
  }
  return bytes;
}

Bytes BlockBase::toBytes() const {
  Bytes bytes;
  appendBytes(bytes);
  return bytes;
}

void BlockBase::appendBytes(Bytes& bytes) const {
  if (std::ranges::find(kWrittenTypes, type()) == kWrittenTypes.end()) {
    throwProcessingFailure(kBlockNotWritten);
  }
  appendFields(bytes, head_);
  for (const std::uint64_t link : links_) {
    storeLittle(growBytes(bytes, kLinkSize), link);
  }
  appendData(bytes);
}

std::uint64_t BlockBase::length() const {
  Bytes data;
  appendData(data);
  return kHeaderSectionSize + kLinkSize * links_.size() + data.size();
}

void BlockBase::place(std::uint64_t& nextFree) {
  if (!hasValidLinkCount()) {
    throwProcessingFailure(kWrongLinkCount);
  }
  position_ = nextFree;
  head_.length = length();
  head_.linkCount = links_.size();
  nextFree += head_.length;
}

void placeTree(BlockList& list, std::uint64_t& nextFree) {
  const auto& blocks = list.blocks();
  for (std::size_t index = 0; index < blocks.size(); ++index) {
    blocks[index]->place(nextFree);
    if (index > 0) {
      blocks[index - 1]->setLink(0, blocks[index]->position());
    }
  }
  for (std::size_t index = blocks.size(); index-- > 0;) {
    placeChildren(*blocks[index], nextFree);
  }
}

void placeChildren(BlockBase& block, std::uint64_t& nextFree) {
  for (const TreeChild& child : block.children()) {
    std::uint64_t afterTree = nextFree;
    placeTree(*child.list, child.outsideTree ? afterTree : nextFree);
    block.setLink(child.link, child.list->firstPosition());
  }
}

void appendTree(BlockList& list, Bytes& bytes) {
  const auto& blocks = list.blocks();
  for (const auto& block : blocks) {
    block->appendBytes(bytes);
  }
  for (std::size_t index = blocks.size(); index-- > 0;) {
    appendChildren(*blocks[index], bytes);
  }
}

void appendChildren(BlockBase& block, Bytes& bytes) {
  for (const TreeChild& child : block.children()) {
    if (!child.outsideTree) {
      appendTree(*child.list, bytes);
    }
  }
}

}  // namespace xlatr
