#include "formats/mf4/block_stream.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "formats/mf4/block_failures.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

constexpr std::uint64_t kWindowSize = std::uint64_t{1} << 16;
// After a jump, so that blocks which are linked to and fro don't cost a whole window each.
constexpr std::uint64_t kWindowSizeAfterJump = std::uint64_t{1} << 10;

}  // namespace

BlockStream::BlockStream(const InputSource& source) : file_(source), size_(source.size().value_or(0)) {}

BlockStream::BlockStream(std::vector<std::uint8_t> bytes) : size_(bytes.size()), window_(std::move(bytes)) {}

bool BlockStream::read(std::uint64_t position, std::span<std::uint8_t> bytes) {
  if (bytes.size() > bytesAfter(position)) {
    return false;
  }
  countRead(bytes.size());
  if (bytes.size() > kWindowSize / 2 && file_) {
    return readFile(position, bytes);
  }
  if (!readAround(position, bytes.size())) {
    return false;
  }
  const auto begin = window_.begin() + static_cast<std::ptrdiff_t>(position - windowPosition_);
  std::copy_n(begin, bytes.size(), bytes.begin());
  return true;
}

void BlockStream::checkNotEntered(std::uint64_t position) const {
  if (entered_.contains(position)) {
    throwProcessingFailure(kBlockLoop);
  }
}

void BlockStream::countRead(std::uint64_t count) {
  readCount_ += count;
  if (readCount_ > kReadAllowance && (readCount_ - kReadAllowance) / kReadFactor > size_) {
    throwProcessingFailure(kBlockLoop);
  }
}

// Moves the window unless it has these bytes already.
bool BlockStream::readAround(std::uint64_t position, std::uint64_t count) {
  if (position >= windowPosition_ && position + count <= windowPosition_ + window_.size()) {
    return true;
  }
  const bool goesOn = position >= windowPosition_ && position <= windowPosition_ + window_.size();
  const std::uint64_t wanted = goesOn ? kWindowSize : std::max(count, kWindowSizeAfterJump);
  window_.resize(static_cast<std::size_t>(std::min(wanted, bytesAfter(position))));
  windowPosition_ = position;
  if (readFile(position, window_)) {
    return true;
  }
  window_.clear();
  return false;
}

bool BlockStream::readFile(std::uint64_t position, std::span<std::uint8_t> bytes) {
  file_->seek(position);
  while (!bytes.empty()) {
    const std::size_t count = file_->read({reinterpret_cast<char*>(bytes.data()), bytes.size()});
    if (count == 0) {
      return false;  // the file became shorter
    }
    bytes = bytes.subspan(count);
  }
  return true;
}

}  // namespace xlatr
