// Writes the data of a group in blocks of bounded size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "io/buffered_output.hpp"
#include "messages/enumerations.hpp"

namespace xlatr {

// What the blocks hold, and how much of it.
struct MdfBlockForm {
  BlockTypeId type = BlockTypeId::DT;
  std::size_t size = std::size_t{4} << 20;
  bool zipped = false;
};

// Collects records, or values of signal data, and writes them as one block when there are enough; none of them is ever
// in two blocks. The data link of the group or channel leads to the only block, or to a list from the second one on.
// Each list names one block and the next list, so that what was written is found at any time, also when it is not
// finished. Failures are those of the output, and kDeflateFailure.
class MdfBlockOutput {
 public:
  // `end` is the end of the file, to which others may write between two calls; `dataLink` the place of the link.
  MdfBlockOutput(BufferedOutput& output, std::uint64_t& end, std::uint64_t dataLink, const MdfBlockForm& form)
      : output_(output), end_(end), dataLink_(dataLink), form_(form) {}

  [[nodiscard]] bool isFull(std::size_t size) const { return records_.size() + size > form_.size; }
  // Bytes that were appended.
  [[nodiscard]] std::uint64_t size() const { return written_ + records_.size(); }
  // Room for one record of `size` bytes, which stays until the next call.
  [[nodiscard]] std::uint8_t* append(std::size_t size) {
    if (isFull(size)) {
      flush();
    }
    records_.resize(records_.size() + size);
    return records_.data() + records_.size() - size;
  }
  // Writes what was collected.
  void flush();

  // Where the next block of the file will be: at a multiple of 8.
  [[nodiscard]] std::uint64_t nextBlock() const;
  // Appends bytes there and returns where they are.
  std::uint64_t appendBlock(std::span<const std::uint8_t> bytes);
  void patch(std::uint64_t position, std::uint64_t value);

 private:
  void startBlock();
  void write(std::span<const std::uint8_t> bytes);
  std::uint64_t writeBlock();
  void link(std::uint64_t block);
  void writeList(std::uint64_t block, std::uint64_t offset);

  BufferedOutput& output_;
  std::uint64_t& end_;
  std::uint64_t dataLink_;
  MdfBlockForm form_;
  std::vector<std::uint8_t> records_;
  std::vector<std::uint8_t> squeezed_;
  std::uint64_t written_ = 0;     // bytes of records
  std::uint64_t firstBlock_ = 0;  // 0 before there is one
  std::uint64_t nextLink_ = 0;    // the place of the link to the next list; 0 before there is a list
};

}  // namespace xlatr
