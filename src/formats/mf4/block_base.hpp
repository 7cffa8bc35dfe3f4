// What all blocks of an MDF file share: the head, the links, and the lists that they form.
//
// One class serves both directions. A block of a file reads its head and links when it is made and follows a link when
// it is asked to; what was followed stays cached. A block to be written is made empty, filled, and placed in the future
// file with the whole of its tree (placeTree), before the tree's bytes are taken (appendTree).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "formats/mf4/block_failures.hpp"
#include "formats/mf4/block_stream.hpp"
#include "messages/enumerations.hpp"
#include "util/failures.hpp"
#include "util/layout.hpp"

namespace xlatr {

inline constexpr std::uint64_t kLinkSize = 8;

// The first 24 bytes of every block.
struct HeaderSection {
  std::array<char, 4> blockId{};  // "##" and the two letters of the block type
  std::uint64_t length = 0;       // bytes of the whole block: head, links and data
  std::uint64_t linkCount = 0;    // of 8-byte links after the head

  // The type that the block id names. An id that does not begin with "##" raises a ConverterParsingException with the
  // id, unknown letters a ConverterProcessingException.
  [[nodiscard]] static BlockTypeId typeOf(const HeaderSection& section);
  static void setType(HeaderSection& section, BlockTypeId type);

  static consteval auto fields() {
    return FieldList{
        Field{0, "id", &HeaderSection::blockId},
        Reserved{4, 4},
        Field{8, "length", &HeaderSection::length},
        Field{16, "linkCount", &HeaderSection::linkCount},
    };
  }
};

inline constexpr std::uint64_t kHeaderSectionSize = kLayoutSize<HeaderSection>;

// Fills a structure from the front of these bytes. Raises kShortBytes when they are too few.
template <class Data>
void requireFields(std::span<const std::uint8_t> bytes, Data& data) {
  if (!tryReadFields(bytes, data)) {
    throwProcessingFailure(kShortBytes);
  }
}

// The head of the block at this position.
[[nodiscard]] HeaderSection readHeaderSection(BlockStream& stream, std::uint64_t position);

class BlockList;

// A child list of a block to be written, and the link that leads to it.
struct TreeChild {
  std::size_t link;
  BlockList* list;
  // Stands where the tree ends but is no part of it: the data block, which is written when its records are known.
  bool outsideTree = false;
};

class BlockBase {
 public:
  // A block to be written.
  BlockBase(BlockTypeId type, std::size_t linkCount);
  // The block at this position: its head and its links. The stream must outlive the block.
  BlockBase(BlockStream& stream, std::uint64_t position);
  virtual ~BlockBase();
  BlockBase(const BlockBase&) = delete;
  BlockBase& operator=(const BlockBase&) = delete;

  // Offset of the block in the file, in bytes; of a block to be written once it is placed.
  [[nodiscard]] std::uint64_t position() const { return position_; }
  [[nodiscard]] const HeaderSection& head() const { return head_; }
  // HeaderSection::typeOf of the head, with its failures.
  [[nodiscard]] BlockTypeId type() const { return HeaderSection::typeOf(head_); }
  // Offsets of other blocks; 0 for no link.
  [[nodiscard]] const std::vector<std::uint64_t>& links() const { return links_; }
  // 0 for a link that the block does not have: files of older versions have blocks with fewer links.
  [[nodiscard]] std::uint64_t link(std::size_t index) const { return index < links_.size() ? links_[index] : 0; }
  void setLink(std::size_t index, std::uint64_t position) { links_.at(index) = position; }
  void setLinkCount(std::size_t count) { links_.resize(count); }

  // Offset of the data part; the largest 64-bit value for a block to be written.
  [[nodiscard]] std::uint64_t dataOffset() const;
  // Bytes of the data part, by the length in the head; 0 where the length does not even hold head and links.
  [[nodiscard]] std::uint64_t dataLength() const;
  // Null for a block to be written.
  [[nodiscard]] BlockStream* stream() const { return stream_; }
  // Exactly these bytes of the file; none for a block to be written.
  [[nodiscard]] Bytes readBytes(std::uint64_t position, std::uint64_t count) const;

  // The block's own bytes, without its children. A block that can't be written raises kBlockNotWritten.
  [[nodiscard]] Bytes toBytes() const;
  virtual void appendBytes(Bytes& bytes) const;

  // Of a block to be written: bytes of the whole block.
  [[nodiscard]] std::uint64_t length() const;
  // The lists of children, in the order in which they stand in the file. The next block of the same list is no child.
  [[nodiscard]] virtual std::vector<TreeChild> children() { return {}; }
  // Whether the number of links is one that the block can have.
  [[nodiscard]] virtual bool hasValidLinkCount() const { return true; }
  // Puts the block here, writes its length into its head and moves `nextFree` to its end.
  void place(std::uint64_t& nextFree);

 protected:
  // The data part as bytes.
  virtual void appendData(Bytes& bytes) const { static_cast<void>(bytes); }

 private:
  std::uint64_t position_ = 0;
  HeaderSection head_;
  std::vector<std::uint64_t> links_;
  BlockStream* stream_ = nullptr;
};

// The block at `position` if it is of the class's type; nothing for a zero link and for a block of another type. The
// head's failures are raised.
template <class Block>
[[nodiscard]] std::unique_ptr<Block> followLink(BlockStream* stream, std::uint64_t position) {
  if (stream == nullptr || position == 0 ||
      HeaderSection::typeOf(readHeaderSection(*stream, position)) != Block::kType) {
    return nullptr;
  }
  return std::make_unique<Block>(*stream, position);
}

// followLink for the blocks that make up the tree of the file, of which each is reached once.
template <class Block>
[[nodiscard]] std::unique_ptr<Block> followTreeLink(BlockStream* stream, std::uint64_t position) {
  if (stream != nullptr && position != 0) {
    stream->checkNotEntered(position);
  }
  auto block = followLink<Block>(stream, position);
  if (block) {
    stream->enterBlock(position);
  }
  return block;
}

// Blocks of which each leads to the next one by its first link, or any one block that hangs on a link.
class BlockList {
 public:
  BlockList() = default;
  virtual ~BlockList() = default;
  BlockList(const BlockList&) = delete;
  BlockList& operator=(const BlockList&) = delete;

  [[nodiscard]] const std::vector<std::unique_ptr<BlockBase>>& blocks() const { return blocks_; }
  // The position of the first block; 0 for an empty list.
  [[nodiscard]] std::uint64_t firstPosition() const { return blocks_.empty() ? 0 : blocks_.front()->position(); }
  void addBlock(std::unique_ptr<BlockBase> block) { blocks_.push_back(std::move(block)); }

 protected:
  std::vector<std::unique_ptr<BlockBase>> blocks_;
};

// A list of one class. In a file it is followed link by link, as far as it is asked for; a link to a block of another
// class ends it.
template <class Block>
class BlockChain final : public BlockList {
 public:
  class Iterator {
   public:
    Iterator(BlockChain* chain, std::size_t index) : chain_(chain), index_(index) {}
    [[nodiscard]] Block& operator*() const { return *chain_->at(index_); }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    [[nodiscard]] bool operator!=(std::nullptr_t /*end*/) const { return chain_->at(index_) != nullptr; }

   private:
    BlockChain* chain_;
    std::size_t index_;
  };

  // To be written.
  BlockChain() = default;
  // In a file: the list that begins at this position, 0 for an empty one.
  BlockChain(BlockStream* stream, std::uint64_t first) : stream_(stream), next_(first) {}

  // Null after the end.
  [[nodiscard]] Block* at(std::size_t index) {
    while (blocks_.size() <= index && next_ != 0) {
      auto block = followTreeLink<Block>(stream_, next_);
      next_ = block ? block->link(0) : 0;
      if (block) {
        blocks_.push_back(std::move(block));
      }
    }
    return index < blocks_.size() ? static_cast<Block*>(blocks_[index].get()) : nullptr;
  }
  [[nodiscard]] Iterator begin() { return Iterator(this, 0); }
  [[nodiscard]] std::nullptr_t end() { return nullptr; }

  Block& add(std::unique_ptr<Block> block) {
    Block& added = *block;
    addBlock(std::move(block));
    return added;
  }
  // Of a link that is no list: takes the place of the block that hangs on it.
  void set(std::unique_ptr<Block> block) {
    blocks_.clear();
    addBlock(std::move(block));
  }

 private:
  BlockStream* stream_ = nullptr;
  std::uint64_t next_ = 0;  // the link that was not followed yet
};

// The block of a link that is no list; null without one. What was followed stays in `cache`.
template <class Block>
Block* followOnce(BlockChain<Block>& cache, BlockStream* stream, std::uint64_t position) {
  if (cache.blocks().empty()) {
    if (auto block = followLink<Block>(stream, position)) {
      cache.add(std::move(block));
    }
  }
  return cache.at(0);
}

// Places a list and all below it from `nextFree` on, which moves to their end, and sets the links. The blocks of the
// list come first, one after the other; then come the children of the last block, of the last but one and so on.
void placeTree(BlockList& list, std::uint64_t& nextFree);
// The bytes of a list that was placed and of all below it, in the same order.
void appendTree(BlockList& list, Bytes& bytes);

// The same for what is below one block.
void placeChildren(BlockBase& block, std::uint64_t& nextFree);
void appendChildren(BlockBase& block, Bytes& bytes);

// A block whose data part has a description.
template <class Data>
class DescribedBlock : public BlockBase {
 public:
  static constexpr BlockTypeId kType = Data::kType;

  DescribedBlock() : BlockBase(kType, Data::kLinkCount) {}
  DescribedBlock(BlockStream& stream, std::uint64_t position) : BlockBase(stream, position) {
    requireFields(readBytes(dataOffset(), dataLength()), data);
  }

  Data data;

 protected:
  void appendData(Bytes& bytes) const override { appendFields(bytes, data); }
};

}  // namespace xlatr
