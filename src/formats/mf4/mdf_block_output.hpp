// Writes the data of a group in blocks of bounded size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "io/buffered_output.hpp"

namespace xlatr {

// Collects records and writes them as a DT, or a DZ, when there are enough; a record is never in two blocks. The data
// link of the group leads to the only block, or to a list from the second one on. Each list names one block and the
// next list, so that what was written is found at any time, also when it is not finished. Failures are those of the
// output, and kDeflateFailure.
class MdfBlockOutput {
 public:
  static constexpr std::size_t kBlockSize = std::size_t{4} << 20;

  // `end` is the end of the file, to which others may write between two calls; `dataLink` the place of the group's
  // link.
  MdfBlockOutput(BufferedOutput& output, std::uint64_t& end, std::uint64_t dataLink, bool zipped)
      : output_(output), end_(end), dataLink_(dataLink), zipped_(zipped) {
    records_.reserve(kBlockSize);
  }

  // Room for one record of `size` bytes, which stays until the next call.
  [[nodiscard]] std::uint8_t* append(std::size_t size) {
    if (records_.size() + size > kBlockSize) {
      flush();
    }
    records_.resize(records_.size() + size);
    return records_.data() + records_.size() - size;
  }
  // Writes what was collected.
  void flush();

  // Appends bytes at the next multiple of 8 and returns where they are.
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
  bool zipped_;
  std::vector<std::uint8_t> records_;
  std::vector<std::uint8_t> squeezed_;
  std::uint64_t written_ = 0;     // bytes of records
  std::uint64_t firstBlock_ = 0;  // 0 before there is one
  std::uint64_t nextLink_ = 0;    // the place of the link to the next list; 0 before there is a list
};

}  // namespace xlatr
