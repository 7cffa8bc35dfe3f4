#include "formats/mf4/block_texts.hpp"

#include "util/host.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kTextGranularity = 8;

template <class Block>
std::unique_ptr<Block> createTextBlock(std::string_view text) {
  auto block = std::make_unique<Block>();
  block->data.text = toTextBytes(text);
  return block;
}

}  // namespace

Bytes toTextBytes(std::string_view text) {
  Bytes bytes(text.begin(), text.end());
  bytes.resize((text.size() / kTextGranularity + 1) * kTextGranularity);
  return bytes;
}

std::unique_ptr<TextBlock> createText(std::string_view text) {
  return createTextBlock<TextBlock>(text);
}

std::unique_ptr<MetadataBlock> createHistoryComment() {
  std::string text =
      "<FHcomment><TX>created</TX><tool_id>ZELK-Converter</tool_id><tool_vendor>Zelkworks Instruments</tool_vendor>"
      "<tool_version>";
  text.append(getHostVersionText()).append("</tool_version></FHcomment>");
  return createTextBlock<MetadataBlock>(text);
}

std::string readText(BlockStream* stream, std::uint64_t position) {
  if (stream == nullptr || position == 0) {
    return {};
  }
  const BlockBase block(*stream, position);
  const BlockTypeId type = block.type();
  if ((type != BlockTypeId::TX && type != BlockTypeId::MD) || block.dataLength() > kLongestText) {
    return {};
  }
  const Bytes bytes = block.readBytes(block.dataOffset(), block.dataLength());
  std::string text(bytes.begin(), bytes.end());
  text.erase(text.find_last_not_of('\0') + 1);
  return text;
}

std::unique_ptr<SourceInformationBlock> SourceInformationBlock::create(std::string_view name, std::string_view path) {
  auto block = std::make_unique<SourceInformationBlock>();
  block->name_.add(createText(name));
  block->path_.add(createText(path));
  return block;
}

std::unique_ptr<SourceInformationBlock> SourceInformationBlock::createForGroup() {
  return create("", "Message");
}

std::unique_ptr<SourceInformationBlock> SourceInformationBlock::createForChannel() {
  return create("", "");
}

std::unique_ptr<SourceInformationBlock> SourceInformationBlock::createForBus(std::uint8_t busType,
                                                                             std::string_view name) {
  auto block = create(name, name);
  block->data.siBusType = busType;
  return block;
}

std::vector<TreeChild> SourceInformationBlock::children() {
  return {{0, &name_}, {1, &path_}};
}

}  // namespace xlatr
