#include "core/waiting_comments.hpp"

#include <algorithm>
#include <cstring>
#include <ios>
#include <span>
#include <utility>

#include "util/failures.hpp"

namespace xlatr {
namespace {

// How many of the bytes are whole texts, which are handed out.
std::size_t handOutWhole(std::string_view bytes, const std::function<void(std::string_view)>& take) {
  std::size_t size = 0;
  std::size_t at = 0;
  while (bytes.size() - at >= sizeof size) {
    std::memcpy(&size, bytes.data() + at, sizeof size);
    if (bytes.size() - at - sizeof size < size) {
      break;
    }
    take(bytes.substr(at + sizeof size, size));
    at += sizeof size + size;
  }
  return at;
}

}  // namespace

void WaitingComments::add(std::string_view text) {
  const std::size_t size = text.size();
  char length[sizeof size];
  std::memcpy(length, &size, sizeof size);
  held_.append(length, sizeof size).append(text);
  if (held_.size() > mostHeld_) {
    spill();
  }
}

// If the system has no temporary file to give, or no room in it, the texts stay in memory. It is asked again when they
// are twice as many, and not for each of them.
void WaitingComments::spill() {
  if (!spilled_.isOpen()) {
    spilled_ = platform::File::createTemporary();
  }
  mostHeld_ = 2 * held_.size();
  if (!spilled_.isOpen()) {
    return;
  }
  try {
    spilled_.seek(spilledBytes_);
    spilled_.write(held_);
  } catch (const std::ios_base::failure&) {
    return;
  }
  spilledBytes_ += held_.size();
  held_.clear();
  mostHeld_ = kMostHeld;
}

void WaitingComments::handOut(const std::function<void(std::string_view)>& take) {
  platform::File spilled = std::exchange(spilled_, platform::File());
  const std::string held = std::exchange(held_, {});
  std::string window;
  if (spilled.isOpen()) {
    spilled.seek(0);
  }
  for (std::uint64_t left = std::exchange(spilledBytes_, 0); left > 0;) {
    const std::size_t before = window.size();
    window.resize(before + static_cast<std::size_t>(std::min<std::uint64_t>(left, kMostHeld)));
    const std::size_t count = spilled.read(std::span(window).subspan(before));
    if (count == 0) {
      throwProcessingFailure("Comments that were kept aside can't be read back");
    }
    left -= count;
    window.resize(before + count);
    window.erase(0, handOutWhole(window, take));
  }
  handOutWhole(held, take);
}

}  // namespace xlatr
