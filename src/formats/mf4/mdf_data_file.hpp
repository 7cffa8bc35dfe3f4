// The bytes of a file's records, read in pieces from wherever they lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "io/input_file.hpp"

namespace xlatr {

// One file for all streams of its data. Reading data once, and perhaps a second time for what lies apart from its
// records, is all that a whole file asks for; a file whose blocks lead to the same bytes again and again ends when
// kReadFactor times its size was read. One thread at a time.
class MdfDataFile {
 public:
  static constexpr std::uint64_t kReadFactor = 16;
  static constexpr std::uint64_t kReadAllowance = std::uint64_t{16} << 20;
  static constexpr std::uint64_t kMostHeld = std::uint64_t{28} << 20;  // seven blocks of the usual size

  // std::ios_base::failure when the file can't be opened.
  explicit MdfDataFile(const InputSource& source);

  [[nodiscard]] std::uint64_t size() const { return size_; }
  [[nodiscard]] std::uint64_t bytesAfter(std::uint64_t position) const {
    return position < size_ ? size_ - position : 0;
  }

  // Fills as much of `bytes` as the file still has there and returns how much that was.
  [[nodiscard]] std::size_t read(std::uint64_t position, std::span<std::uint8_t> bytes);
  // The same of bytes that are only of use all together.
  [[nodiscard]] bool readAll(std::uint64_t position, std::span<std::uint8_t> bytes) {
    return read(position, bytes) == bytes.size();
  }
  // Whether the streams of the file may hold so many bytes besides those that they hold already for blocks which can't
  // be read in order. What was granted is to be released.
  [[nodiscard]] bool hold(std::uint64_t bytes);
  void release(std::uint64_t bytes) { held_ -= bytes; }
  // Counts work that reads nothing as if it did.
  void charge(std::uint64_t bytes) { readCount_ += bytes; }
  // Whether more was read than a file can ask for. Nothing can be read from then on.
  [[nodiscard]] bool exhausted() const { return readCount_ > limit_; }
  [[nodiscard]] std::uint64_t readCount() const { return readCount_; }

  // Where the blocks begin that were found so far. A block whose length was never stated ends at the next of them.
  void addBlock(std::uint64_t position) { blocks_.push_back(position); }
  void sortBlocks();
  [[nodiscard]] std::uint64_t endOfOpenBlock(std::uint64_t position) const;

  // Whether the writer stated no length for its last data block.
  bool hasOpenBlock = false;
  // For what a stream reads and uses up at once.
  std::vector<std::uint8_t> scratch;

 private:
  InputFile file_;
  std::uint64_t size_;
  std::uint64_t limit_;
  std::uint64_t readCount_ = 0;
  std::uint64_t held_ = 0;
  std::uint64_t position_ = 0;  // of the file's own pointer
  std::vector<std::uint64_t> blocks_;
};

}  // namespace xlatr
