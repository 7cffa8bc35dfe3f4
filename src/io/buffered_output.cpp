#include "io/buffered_output.hpp"

#include <cstring>
#include <exception>
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

void BufferedOutput::open(const std::string& path) {
  close();
  file_ = platform::File::createForWriting(path);
  if (!buffer_) {
    buffer_ = std::make_unique_for_overwrite<char[]>(kBlockSize);
  }
  used_ = 0;
}

void BufferedOutput::write(std::string_view bytes) {
  if (bytes.empty()) {
    return;  // an empty text may have no place in memory
  }
  if (bytes.size() > kBlockSize - used_) {
    flush();
    if (bytes.size() > kBlockSize) {
      file_.write(bytes);
      return;
    }
  }
  std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
  used_ += bytes.size();
}

void BufferedOutput::seek(std::uint64_t offset) {
  flush();
  file_.seek(offset);
}

void BufferedOutput::flush() {
  if (used_ > 0) {
    file_.write({buffer_.get(), std::exchange(used_, 0)});
  }
}

void BufferedOutput::close() {
  platform::File closing = std::move(file_);
  if (closing.isOpen()) {
    if (used_ > 0) {
      closing.write({buffer_.get(), std::exchange(used_, 0)});
    }
    closing.close();
  }
}

}  // namespace xlatr
