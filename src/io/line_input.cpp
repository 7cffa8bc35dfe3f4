#include "io/line_input.hpp"

#include <cstring>

namespace xlatr {
namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

}  // namespace

LineInput::LineInput(const InputSource& source)
    : file_(source), buffer_(std::make_unique_for_overwrite<char[]>(kBlockSize)), capacity_(kBlockSize) {}

void LineInput::seek(std::uint64_t offset) {
  file_.seek(offset);
  begin_ = scanned_ = end_ = 0;
  position_ = offset;
}

bool LineInput::next(std::string_view& line) {
  for (;;) {
    const char* const start = buffer_.get() + begin_;
    const void* const found = std::memchr(buffer_.get() + scanned_, '\n', end_ - scanned_);
    if (found != nullptr) {
      auto length = static_cast<std::size_t>(static_cast<const char*>(found) - start);
      begin_ += length + 1;
      scanned_ = begin_;
      position_ += length + 1;
      if (length > 0 && start[length - 1] == '\r') {
        --length;
      }
      line = {start, length};
      return true;
    }
    scanned_ = end_;
    if (!refill()) {
      break;
    }
  }
  line = {buffer_.get() + begin_, end_ - begin_};
  position_ += line.size();
  begin_ = end_;
  return !line.empty();
}

// Makes room after the unfinished line and reads on; false at the end of the file.
bool LineInput::refill() {
  const std::size_t held = end_ - begin_;
  if (held == capacity_) {
    auto larger = std::make_unique_for_overwrite<char[]>(2 * capacity_);
    std::memcpy(larger.get(), buffer_.get() + begin_, held);
    buffer_ = std::move(larger);
    capacity_ *= 2;
  } else {
    std::memmove(buffer_.get(), buffer_.get() + begin_, held);
  }
  begin_ = 0;
  scanned_ = held;
  end_ = held + file_.read({buffer_.get() + held, capacity_ - held});
  return end_ > held;
}

}  // namespace xlatr
