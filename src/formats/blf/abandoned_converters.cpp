#include "formats/blf/abandoned_converters.hpp"

#include <chrono>
#include <utility>

#include "formats/blf/blf_shared_block.hpp"
#include "platform/files.hpp"
#include "platform/thread.hpp"

namespace xlatr {

AbandonedConverters& AbandonedConverters::instance() {
  static AbandonedConverters list;
  return list;
}

AbandonedConverters::AbandonedConverters() : owner_(platform::currentProcessId()) {}

AbandonedConverters::~AbandonedConverters() {
  if (owner_ != platform::currentProcessId()) {
    return;
  }
  const MutexLock guard(lock_);
  for (Entry& entry : entries_) {
    entry.process.terminate();
    cleanUpAfter(entry);
  }
}

void AbandonedConverters::add(platform::Process process, std::string table, std::string blockName) {
  const MutexLock guard(lock_);
  entries_.push_back({std::move(process), std::move(table), std::move(blockName)});
}

void AbandonedConverters::sweep() {
  if (owner_ != platform::currentProcessId()) {
    return;
  }
  const MutexLock guard(lock_);
  std::erase_if(entries_, [](Entry& entry) {
    const bool ended = entry.process.waitFor(std::chrono::milliseconds(0)).has_value();
    if (ended) {
      cleanUpAfter(entry);
    }
    return ended;
  });
}

void AbandonedConverters::cleanUpAfter(const Entry& entry) {
  platform::removeFile(entry.table);
  BlfSharedBlock::removeNames(entry.blockName);
}

}  // namespace xlatr
