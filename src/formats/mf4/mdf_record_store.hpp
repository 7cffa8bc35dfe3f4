// Bytes that wait for their place in the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace xlatr {

// Grows by whole chunks, so that what is held is what was appended and one chunk, and nothing is ever moved.
class MdfRecordStore {
 public:
  static constexpr std::size_t kChunkSize = std::size_t{256} * 1024;

  // No record is longer than a chunk's reserve, but if it is, its chunk simply grows.
  void append(std::string_view bytes) {
    if (chunks_.empty() || chunks_.back().capacity() - chunks_.back().size() < bytes.size()) {
      chunks_.emplace_back().reserve(kChunkSize);
    }
    chunks_.back().append(bytes);
    size_ += bytes.size();
  }

  [[nodiscard]] std::uint64_t size() const { return size_; }

  // Hands all bytes to `take`, in order, and then frees each chunk.
  template <class Take>
  void drain(Take&& take) {
    size_ = 0;
    for (std::string& chunk : chunks_) {
      take(std::string_view(chunk));
      chunk = std::string();
    }
    chunks_.clear();
  }

 private:
  std::vector<std::string> chunks_;
  std::uint64_t size_ = 0;
};

}  // namespace xlatr
