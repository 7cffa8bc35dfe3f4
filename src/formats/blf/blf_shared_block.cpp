#include "formats/blf/blf_shared_block.hpp"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace xlatr {
namespace {

using Word = std::uint16_t;

constexpr std::size_t kWords = 2;
constexpr std::size_t kProgressOffset = 0;
constexpr std::size_t kStopOffset = sizeof(Word);
constexpr std::chrono::milliseconds kLockLimit(5000);

constexpr std::string_view kMutexSuffix = "_MUTEX";

std::string mutexName(const std::string& name) {
  return std::string(name).append(kMutexSuffix);
}

// The stem of a table: the prefix and a GUID in hexadecimal.
bool isBlockName(std::string_view name) {
  constexpr std::size_t kGuidDigits = 32;
  return name.size() == kBlfTablePrefix.size() + kGuidDigits && name.starts_with(kBlfTablePrefix) &&
         name.find_first_not_of("0123456789ABCDEF", kBlfTablePrefix.size()) == std::string_view::npos;
}

}  // namespace

BlfSharedBlock::BlfSharedBlock(std::string name) : name_(std::move(name)) {
  // One of the two is of no use without the other, but is removed anyway.
  static_cast<void>(memory_.open(name_, kWords * sizeof(Word)) && mutex_.open(mutexName(name_)));
}

BlfSharedBlock::~BlfSharedBlock() {
  removeNames(name_);
}

void BlfSharedBlock::removeNames(std::string_view name) noexcept {
  platform::SharedMemory::remove(name);
  // Longer than any name that the system takes.
  std::array<char, 512> mutex;
  if (name.size() + kMutexSuffix.size() <= mutex.size()) {
    name.copy(mutex.data(), name.size());
    kMutexSuffix.copy(mutex.data() + name.size(), kMutexSuffix.size());
    platform::NamedMutex::remove({mutex.data(), name.size() + kMutexSuffix.size()});
  }
}

void BlfSharedBlock::removeForgotten() {
  for (const std::string& name : platform::SharedMemory::forgottenNames(kBlfTablePrefix)) {
    if (isBlockName(name)) {
      removeNames(name);
    }
  }
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
