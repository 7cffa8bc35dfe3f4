// The bytes of an MDF file at their offsets, with what keeps a damaged or hostile file from costing more than it holds.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "io/input_file.hpp"

namespace xlatr {

// Positions are offsets in bytes from the start of the file. One thread at a time.
//
// The blocks of a file are a tree, so that reading a file takes each byte about once. Two bounds follow from that, and
// what breaks one of them raises a ConverterProcessingException, "Block links form a loop":
// - A block that is a node of the tree (enterBlock) is reached once.
// - All that blocks ask for is together at most kReadFactor times the file's size, plus kReadAllowance. Texts and
//   conversions may be shared between blocks, but not without end. A read after a jump may take a kibibyte more from
//   the system than what was asked for.
class BlockStream {
 public:
  static constexpr std::uint64_t kReadFactor = 8;
  static constexpr std::uint64_t kReadAllowance = std::uint64_t{1} << 20;

  // std::ios_base::failure when the file can't be opened.
  explicit BlockStream(const InputSource& source);
  // A file that is in memory.
  explicit BlockStream(std::vector<std::uint8_t> bytes);

  [[nodiscard]] std::uint64_t size() const { return size_; }
  // Bytes from `position` to the end of the file; 0 for a position after it.
  [[nodiscard]] std::uint64_t bytesAfter(std::uint64_t position) const {
    return position < size_ ? size_ - position : 0;
  }

  // Fills `bytes` with what stands at `position`; false, with nothing said of `bytes`, when the file ends before.
  // std::ios_base::failure when the system refuses.
  [[nodiscard]] bool read(std::uint64_t position, std::span<std::uint8_t> bytes);

  // Says that the block at this position is reached, and raises when it was before. Two calls, so that a block that
  // can't be read gives the same failure again.
  void checkNotEntered(std::uint64_t position) const;
  void enterBlock(std::uint64_t position) { entered_.insert(position); }

 private:
  void countRead(std::uint64_t count);
  [[nodiscard]] bool readAround(std::uint64_t position, std::uint64_t count);
  [[nodiscard]] bool readFile(std::uint64_t position, std::span<std::uint8_t> bytes);

  std::optional<InputFile> file_;  // nothing for a file in memory
  std::uint64_t size_ = 0;
  std::uint64_t readCount_ = 0;
  // The part of the file from which small reads are served: most blocks are short and stand close together.
  std::vector<std::uint8_t> window_;
  std::uint64_t windowPosition_ = 0;
  std::unordered_set<std::uint64_t> entered_;
};

}  // namespace xlatr
