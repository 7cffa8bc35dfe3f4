#include "io/buffered_output.hpp"

#include <cstring>
#include <exception>
#include <ios>
#include <system_error>
#include <utility>

namespace xlatr {
namespace {

constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

}  // namespace

BufferedOutput::~BufferedOutput() {
  try {
    close();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): call close to learn of a failure
  }
}

void BufferedOutput::open(const OutputTarget& target) {
  close();
  name_ = target.name();
  bytes_ = target.bytes();
  if (bytes_ == nullptr) {
    path_ = target.path();
    file_ = platform::File::createForWriting(path_);
  }
  if (!buffer_) {
    buffer_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
  }
  used_ = 0;
  handed_ = 0;
}

void BufferedOutput::write(std::string_view bytes) {
  if (bytes.empty()) {
    return;  // an empty text may have no place in memory
  }
  if (resting_) {
    resume();
  }
  if (bytes.size() > kBlockSize - used_) {
    flush();
    if (bytes.size() > kBlockSize) {
      hand(bytes);
      return;
    }
  }
  std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
  used_ += bytes.size();
}

void BufferedOutput::seek(std::uint64_t offset) {
  flush();
  if (bytes_ == nullptr) {
    file_.seek(offset);
  } else if (offset != handed_) {
    throw std::ios_base::failure(name_ + ": cannot seek in what is written in order",
                                 std::make_error_code(std::errc::invalid_seek));
  }
  handed_ = offset;
}

void BufferedOutput::flush() {
  if (used_ > 0) {
    hand({buffer_.get(), std::exchange(used_, 0)});
  }
}

void BufferedOutput::rest() {
  if (bytes_ != nullptr || !file_.isOpen()) {
    return;
  }
  flush();
  file_.close();
  buffer_.reset();
  resting_ = true;
}

void BufferedOutput::resume() {
  buffer_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
  file_ = platform::File::openForAppending(path_);
  resting_ = false;
}

void BufferedOutput::hand(std::span<const char> bytes) {
  if (bytes_ == nullptr) {
    file_.write(bytes);
  } else {
    bytes_->write(bytes);
  }
  handed_ += bytes.size();
}

void BufferedOutput::close() {
  resting_ = false;
  const std::shared_ptr<OutputBytes> bytes = std::move(bytes_);
  platform::File closing = std::move(file_);
  const std::span<const char> left(buffer_.get(), std::exchange(used_, 0));
  handed_ += left.size();
  if (bytes != nullptr && !left.empty()) {
    bytes->write(left);
  }
  if (closing.isOpen()) {
    if (!left.empty()) {
      closing.write(left);
    }
    closing.close();
  }
}

}  // namespace xlatr
