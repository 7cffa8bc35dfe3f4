#include "formats/blf/blf_shared_block.hpp"

#include <chrono>
#include <cstddef>
#include <cstring>
#include <utility>

namespace xlatr {
namespace {

using Word = std::uint16_t;

constexpr std::size_t kWords = 2;
constexpr std::size_t kProgressOffset = 0;
constexpr std::size_t kStopOffset = sizeof(Word);
constexpr std::chrono::milliseconds kLockLimit(5000);

std::string mutexName(const std::string& name) {
  return name + "_MUTEX";
}

}  // namespace

BlfSharedBlock::BlfSharedBlock(std::string name) : name_(std::move(name)) {
  // One of the two is of no use without the other, but is removed anyway.
  static_cast<void>(memory_.open(name_, kWords * sizeof(Word)) && mutex_.open(mutexName(name_)));
}

BlfSharedBlock::~BlfSharedBlock() {
  removeNames(name_);
}

void BlfSharedBlock::removeNames(const std::string& name) {
  platform::SharedMemory::remove(name);
  platform::NamedMutex::remove(mutexName(name));
}

std::optional<std::uint16_t> BlfSharedBlock::readProgress() {
  if (!mutex_.lock(kLockLimit)) {
    return std::nullopt;
  }
  Word progress = 0;
  std::memcpy(&progress, memory_.bytes().data() + kProgressOffset, sizeof progress);
  mutex_.unlock();
  return progress;
}

bool BlfSharedBlock::requestStop() {
  if (!mutex_.lock(kLockLimit)) {
    return false;
  }
  constexpr Word kStop = 1;
  std::memcpy(memory_.bytes().data() + kStopOffset, &kStop, sizeof kStop);
  mutex_.unlock();
  return true;
}

}  // namespace xlatr
