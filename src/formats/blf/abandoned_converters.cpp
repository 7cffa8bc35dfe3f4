#include "formats/blf/abandoned_converters.hpp"

#include <chrono>
#include <exception>
#include <iterator>

#include "formats/blf/blf_shared_block.hpp"
#include "platform/files.hpp"
#include "util/process_wide.hpp"

namespace xlatr {
namespace {

ProcessWide<AbandonedConverters>& abandonedLists() {
  static ProcessWide<AbandonedConverters> lists;
  return lists;
}

[[maybe_unused]] const ProcessWide<AbandonedConverters>& kListsAtLoad = abandonedLists();

void joinAll(AbandonedConverters::Entries& entries) {
  for (AbandonedConverters::Entry& entry : entries) {
    if (entry.watcher.joinable()) {
      entry.watcher.join();
    }
  }
}

}  // namespace

AbandonedConverters& AbandonedConverters::instance() {
  return abandonedLists().get();
}

AbandonedConverters::~AbandonedConverters() {
  Entries running;
  Entries ended;
  {
    const MutexLock guard(lock_);
    ending_ = true;
    running.swap(running_);
    ended.swap(ended_);
  }
  for (const Entry& entry : running) {
    entry.process.kill();
  }
  joinAll(running);
  joinAll(ended);
  for (Entry& entry : running) {
    static_cast<void>(entry.process.wait());
    cleanUpAfter(entry);
  }
}

void AbandonedConverters::add(Entries& entry) noexcept {
  const MutexLock guard(lock_);
  const auto added = entry.begin();
  running_.splice(running_.end(), entry);
  try {
    added->watcher = std::thread(&AbandonedConverters::watch, this, added);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): it is swept later
  }
}

// The thread of an entry, which stays where it is in memory whatever list it is in.
void AbandonedConverters::watch(Entries::iterator entry) {
  entry->process.awaitEnd();
  const MutexLock guard(lock_);
  if (ending_) {
    return;
  }
  cleanUpAfter(*entry);
  static_cast<void>(entry->process.wait());
  ended_.splice(ended_.end(), running_, entry);
}

void AbandonedConverters::sweep() {
  Entries ended;
  {
    const MutexLock guard(lock_);
    ended.swap(ended_);
    for (auto entry = running_.begin(); entry != running_.end();) {
      const auto next = std::next(entry);
      if (!entry->watcher.joinable() && entry->process.waitFor(std::chrono::milliseconds(0))) {
        cleanUpAfter(*entry);
        running_.erase(entry);
      }
      entry = next;
    }
  }
  joinAll(ended);
}

void AbandonedConverters::cleanUpAfter(const Entry& entry) {
  platform::removeFile(entry.table);
  BlfSharedBlock::removeNames(entry.blockName);
}

}  // namespace xlatr
