#include "blf2csv/progress_channel.hpp"

#include <cstring>
#include <utility>

namespace blf2csv {
namespace {

using xlatr::platform::NamedMutex;
using xlatr::platform::SharedMemory;

constexpr std::size_t kProgress = 0;  // u16
constexpr std::size_t kStop = 2;      // u16
constexpr std::size_t kSize = 4;

constexpr std::chrono::milliseconds kLockLimit(5000);

}  // namespace

ProgressChannel::ProgressChannel(std::string name)
    : name_(std::move(name)), lockName_(name_ + "_MUTEX"), limit_(kLockLimit) {
  static_cast<void>(memory_.open(name_, kSize) && lock_.open(lockName_));
}

ProgressChannel::~ProgressChannel() {
  SharedMemory::remove(name_);
  NamedMutex::remove(lockName_);
}

bool ProgressChannel::tell(std::uint16_t progress) {
  if (!lock_.isOpen()) {
    return true;
  }
  if (!lock_.lock(limit_)) {
    // Whoever holds it may be dead. From now on it is only tried: nobody may hold up the conversion at every step.
    limit_ = std::chrono::milliseconds(0);
    return true;
  }
  std::uint16_t stop = 0;
  std::byte* const words = memory_.bytes().data();
  std::memcpy(words + kProgress, &progress, sizeof progress);
  std::memcpy(&stop, words + kStop, sizeof stop);
  lock_.unlock();
  return stop == 0;
}

}  // namespace blf2csv
