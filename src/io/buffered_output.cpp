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
  } catch (...) {  // NOLINT(bugprone-empty-catch): call close to learn of a failure
  }
}

void BufferedOutput::open(const OutputTarget& target) {
  close();
  if (!buffer_) {
    buffer_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
  }
  name_ = target.name();
  bytes_ = target.bytes();
  if (bytes_ == nullptr) {
    path_ = target.path();
    creation_ = target.creation();
    file_ = platform::File::createForWriting(path_, creation_, target.pipes());
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
  try {
    if (bytes_ == nullptr) {
      file_.seek(offset);
    } else if (offset != handed_) {
      throw std::ios_base::failure(name_ + ": cannot seek in what is written in order",
                                   std::make_error_code(std::errc::invalid_seek));
    }
  } catch (...) {
    remember();
    throw;
  }
  handed_ = offset;
}

void BufferedOutput::flush() {
  requireWhole();
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
  requireWhole();
  try {
    buffer_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
    file_ = platform::File::openForAppending(path_, creation_, handed_);
  } catch (...) {
    remember();
    throw;
  }
  resting_ = false;
}

void BufferedOutput::hand(std::span<const char> bytes) {
  try {
    if (bytes_ == nullptr) {
      file_.write(bytes);
    } else {
      bytes_->write(bytes);
    }
  } catch (...) {
    remember();
    throw;
  }
  handed_ += bytes.size();
}

// A full buffer lets every write come by here.
void BufferedOutput::remember() {
  failure_ = std::current_exception();
  used_ = kBlockSize;
}

void BufferedOutput::requireWhole() const {
  if (failure_) {
    std::rethrow_exception(failure_);
  }
}

void BufferedOutput::close() {
  resting_ = false;
  const std::shared_ptr<OutputBytes> bytes = std::move(bytes_);
  platform::File closing = std::move(file_);
  const std::span<const char> left(buffer_.get(), std::exchange(used_, 0));
  if (const std::exception_ptr failure = std::exchange(failure_, nullptr)) {
    std::rethrow_exception(failure);
  }
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
