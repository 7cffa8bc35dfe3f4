#include "core/conversion_registry.hpp"

#include <algorithm>
#include <system_error>

#include "core/format_matrix.hpp"
#include "platform/thread.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

constexpr bool kIdleReaperPolls = XLATR_IDLE_REAPER_POLLS;

}  // namespace

ConversionRegistry::Conversions* ConversionRegistry::ofTheParent_ = nullptr;

ConversionRegistry& ConversionRegistry::instance() {
  // Made first, so that it ends last: workers may still fail while the end of the registry waits for them.
  static_cast<void>(lastErrorText(0));
  static ConversionRegistry registry;
  return registry;
}

ConversionRegistry::ConversionRegistry()
    : changedEvent_(events_.create()),
      process_(platform::currentProcessId()),
      reaper_(&ConversionRegistry::reap, this) {}

ConversionRegistry::~ConversionRegistry() {
  if (process_ != platform::currentProcessId()) {
    // A forked process has the registry but none of its threads: there is nothing to wait for, and the conversions go
    // on in the other process.
    reaper_.detach();
    ofTheParent_ = conversions_.release();
    return;
  }
  {
    const MutexLock guard(lock_);
    exit_ = true;
    setIdle(false);
  }
  events_.signal(changedEvent_);
  reaper_.join();
  conversions_->clear();
}

TraceFormat ConversionRegistry::convertibleFrom(TraceFormat source) {
  const MutexLock guard(lock_);
  return formatsConvertibleFrom(source);
}

TraceFormat ConversionRegistry::convertibleTo(TraceFormat targets) {
  const MutexLock guard(lock_);
  return formatsConvertibleTo(targets);
}

std::int32_t ConversionRegistry::convert(const char* source, const char* target, ConversionOptions options,
                                         ConversionResult* result) {
  const MutexLock guard(lock_);
  const auto onFinished = [](void* registry) {
    auto& self = *static_cast<ConversionRegistry*>(registry);
    self.events_.signal(self.changedEvent_);
  };
  conversions_->push_back(std::make_unique<Conversion>(source, target, options, result, onFinished, this));
  Conversion& conversion = *conversions_->back();
  setIdle(false);
  try {
    conversion.start();
  } catch (...) {
    conversions_->pop_back();
    throw;
  }
  if (options.asynchronous == 0) {
    conversion.waitUntilFinished();
  }
  return conversion.statusCode();
}

std::int32_t ConversionRegistry::fillProgress(ConversionProgress* progress) {
  const MutexLock guard(lock_);
  if (progress == nullptr) {
    return XLATR_BAD_ARGUMENT;
  }
  const auto conversion = std::ranges::find_if(
      *conversions_, [progress](const auto& candidate) { return candidate->id() == progress->id; });
  if (conversion == conversions_->end()) {
    return XLATR_UNKNOWN_CONVERSION;
  }
  (*conversion)->fillProgress(*progress);
  return XLATR_SUCCESS;
}

void ConversionRegistry::setIdle(bool idle) {
  idle_ = idle;
  idle_.notify_all();
}

// The reaper thread.
void ConversionRegistry::reap() {
  std::thread poller = startPoller();
  while (!exit_) {
    {
      const MutexLock guard(lock_);
      if (conversions_->empty() && !exit_) {
        setIdle(true);
      }
    }
    if (idle_) {
      idle_.wait(true);
      continue;
    }
    static_cast<void>(events_.waitAny());
    const MutexLock guard(lock_);
    std::erase_if(*conversions_, [](const auto& conversion) { return conversion->isFinished(); });
  }
  if (poller.joinable()) {
    setIdle(true);  // wakes a sleeping poller, which then sees that all is over
    poller.join();
  }
}

// If no thread can be started, the registry does without one.
std::thread ConversionRegistry::startPoller() {
  if constexpr (kIdleReaperPolls) {
    try {
      return std::thread(&ConversionRegistry::poll, this);
    } catch (const std::system_error&) {
      return {};
    }
  }
  return {};
}

// Polls for the reaper while the registry is idle. It takes no time from any other thread: it yields between polls and
// runs only when no other thread wants the processor. Since not every user may leave that scheduling class again, this
// thread touches no lock, so that it can't block another one.
void ConversionRegistry::poll() {
  platform::enterIdlePriority();
  while (!exit_) {
    if (idle_) {
      std::this_thread::yield();
    } else {
      idle_.wait(false);
    }
  }
}

}  // namespace xlatr
