#include "core/waiting_comments.hpp"

#include <cstring>
#include <utility>

#include "util/failures.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kMostInMemory = std::size_t{1} << 20;

}  // namespace

void WaitingComments::add(std::string_view text) {
  const std::size_t size = text.size();
  char length[sizeof size];
  std::memcpy(length, &size, sizeof size);
  held_.append(length, sizeof size).append(text);
  if (held_.size() > kMostInMemory) {
    spill();
  }
}

// If the system has no temporary file to give, the texts stay in memory.
void WaitingComments::spill() {
  if (!spilled_) {
    spilled_.reset(std::tmpfile());
  }
  if (!spilled_) {
    return;
  }
  const long begin = std::ftell(spilled_.get());
  if (std::fwrite(held_.data(), 1, held_.size(), spilled_.get()) == held_.size()) {
    held_.clear();
  } else if (begin >= 0) {
    std::clearerr(spilled_.get());
    std::fseek(spilled_.get(), begin, SEEK_SET);
  }
}

void WaitingComments::handOut(const std::function<void(std::string_view)>& take) {
  std::string text;
  const auto spilled = std::exchange(spilled_, nullptr);
  if (spilled) {
    std::rewind(spilled.get());
    for (std::size_t size = 0; std::fread(&size, sizeof size, 1, spilled.get()) == 1;) {
      text.resize(size);
      if (std::fread(text.data(), 1, size, spilled.get()) != size) {
        throwProcessingFailure("Comments that were kept aside can't be read back");
      }
      take(text);
    }
  }
  const std::string held = std::exchange(held_, {});
  for (std::size_t at = 0; at < held.size();) {
    std::size_t size = 0;
    std::memcpy(&size, held.data() + at, sizeof size);
    at += sizeof size;
    take({held.data() + at, size});
    at += size;
  }
}

}  // namespace xlatr
