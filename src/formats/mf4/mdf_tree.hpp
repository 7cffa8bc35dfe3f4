// The blocks that describe a file, whatever is wrong with them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/block_stream.hpp"
#include "formats/mf4/mdf_data_file.hpp"
#include "io/quirk.hpp"
#include "util/failures.hpp"

namespace xlatr {

// Hands out the blocks of a file, each node of the tree once, and nothing for those that can't be read. What is handed
// out is not kept. Nothing that the file holds raises.
class MdfTree {
 public:
  // More blocks than the groups and channels of any log; what comes after them is not followed.
  static constexpr std::size_t kMostBlocks = 100'000;
  // Rows of all conversion tables.
  static constexpr std::size_t kMostTableRows = std::size_t{1} << 19;

  // Both must outlive it.
  MdfTree(BlockStream& stream, MdfDataFile& file) : stream_(stream), file_(&file) {}
  // On the compatible way, where a block that can't be read raises its failure and only leaves are asked for: the nodes
  // are those that the reader's information object holds.
  explicit MdfTree(BlockStream& stream) : way_(Way::compatible()), stream_(stream) {}

  [[nodiscard]] bool has(Quirk quirk) const { return way_.has(quirk); }

  // A node of the tree.
  template <class Block>
  [[nodiscard]] std::unique_ptr<Block> node(std::uint64_t position) {
    if (position == 0) {
      return nullptr;
    }
    if (entered_.size() >= kMostBlocks || !entered_.insert(position).second) {
      damaged_ = true;
      return nullptr;
    }
    file_->addBlock(position);
    return leaf<Block>(position);
  }

  // A block that others may lead to as well.
  template <class Block>
  [[nodiscard]] std::unique_ptr<Block> leaf(std::uint64_t position) {
    if (position == 0) {
      return nullptr;
    }
    if (has(Quirk::Mf4DamagedBlocksFail)) {
      return followLink<Block>(&stream_, position);
    }
    if (isBlock(position, Block::kType)) {
      try {
        return std::make_unique<Block>(stream_, position);
      } catch (const ConverterGenericException&) {  // NOLINT(bugprone-empty-catch): counted below
      }
    }
    damaged_ = true;
    return nullptr;
  }

  [[nodiscard]] bool isBlock(std::uint64_t position, BlockTypeId type);
  // The text of a TX or MD; empty for anything else.
  [[nodiscard]] std::string text(std::uint64_t position);
  // Whether so many rows of tables may be made besides those that there are.
  [[nodiscard]] bool takeTableRows(std::size_t count);

  [[nodiscard]] bool damaged() const { return damaged_; }
  void setDamaged() { damaged_ = true; }
  [[nodiscard]] MdfDataFile& file() { return *file_; }

 private:
  // Whether there is a block of a size that describing blocks have.
  [[nodiscard]] bool isUsable(std::uint64_t position, HeaderSection* found = nullptr);

  Way way_ = Way::complete();
  BlockStream& stream_;
  MdfDataFile* file_ = nullptr;  // null on the compatible way
  std::unordered_set<std::uint64_t> entered_;
  std::size_t tableRows_ = 0;
  bool damaged_ = false;
};

}  // namespace xlatr
