// The blocks that describe: texts and sources of data.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/mf4/block_base.hpp"

namespace xlatr {

// A text, one zero byte, and zero bytes up to a multiple of 8. Read as it stands, with its zeros.
template <BlockTypeId kBlockType>
struct TextBlockData {
  static constexpr BlockTypeId kType = kBlockType;
  static constexpr std::size_t kLinkCount = 0;

  Bytes text;

  static consteval auto fields() { return FieldList{Rest{"text", &TextBlockData::text}}; }
};

using TextBlock = DescribedBlock<TextBlockData<BlockTypeId::TX>>;
using MetadataBlock = DescribedBlock<TextBlockData<BlockTypeId::MD>>;

// What a TX or MD holds of this text: at least one zero byte after it, whole groups of eight.
[[nodiscard]] Bytes toTextBytes(std::string_view text);

[[nodiscard]] std::unique_ptr<TextBlock> createText(std::string_view text);

// The MD of the file history: which program wrote the file.
[[nodiscard]] std::unique_ptr<MetadataBlock> createHistoryComment();

// The text of a TX or MD that a link leads to, without trailing zero bytes. Empty for no link and any other block, and
// for a text above kLongestText bytes: no name, unit or separator is as long, and a file may make many blocks lead to
// one huge text.
inline constexpr std::uint64_t kLongestText = 4096;
[[nodiscard]] std::string readText(BlockStream* stream, std::uint64_t position);

inline constexpr std::uint8_t kSourceIsBus = 2;
inline constexpr std::uint8_t kBusIsCan = 2;
inline constexpr std::uint8_t kBusIsLin = 3;

struct SourceInformationBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::SI;
  static constexpr std::size_t kLinkCount = 3;  // name, path, comment

  std::uint8_t siType = kSourceIsBus;
  std::uint8_t siBusType = kBusIsCan;
  std::uint8_t siFlags = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "siType", &SourceInformationBlockData::siType},
        Field{1, "siBusType", &SourceInformationBlockData::siBusType},
        Field{2, "siFlags", &SourceInformationBlockData::siFlags},
        Reserved{3, 5},
    };
  }
};

class SourceInformationBlock final : public DescribedBlock<SourceInformationBlockData> {
 public:
  using DescribedBlock::DescribedBlock;

  // The source of a channel group: no name, the path "Message".
  [[nodiscard]] static std::unique_ptr<SourceInformationBlock> createForGroup();
  // The source of a channel: neither.
  [[nodiscard]] static std::unique_ptr<SourceInformationBlock> createForChannel();
  // A bus of one of the kinds above, as its name and as its path.
  [[nodiscard]] static std::unique_ptr<SourceInformationBlock> createForBus(std::uint8_t busType,
                                                                            std::string_view name);

  [[nodiscard]] std::vector<TreeChild> children() override;
  [[nodiscard]] bool hasValidLinkCount() const override { return links().size() == 3; }

 private:
  [[nodiscard]] static std::unique_ptr<SourceInformationBlock> create(std::string_view name, std::string_view path);

  BlockChain<TextBlock> name_;
  BlockChain<TextBlock> path_;
};

}  // namespace xlatr
