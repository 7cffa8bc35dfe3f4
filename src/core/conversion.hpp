// One call of xlatr_convert.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/conversion_worker.hpp"
#include "core/events.hpp"
#include "io/format.hpp"
#include "io/trace_info.hpp"
#include "util/mutex.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

// How many workers of a conversion are at work at the same time: enough to keep every processor busy while some of them
// wait for the disk.
[[nodiscard]] std::size_t mostAtWork();

// Where targets go: the caller's directory and stem, the target format's extension.
struct TargetPathTemplate {
  std::string directory;  // drive included, with its last separator
  std::string stem;
  std::string extension;

  [[nodiscard]] std::string path() const { return directory + stem + extension; }
  // Where a session of the source goes. The marker is that of the source's format.
  [[nodiscard]] std::string pathOfSession(std::string_view marker, std::uint32_t session) const;
};

// A null path has an empty directory and stem.
[[nodiscard]] TargetPathTemplate makeTargetPathTemplate(const char* path, TraceFormat targetFormat);

// Fills the record of a conversion that never came to work. No effect on a null one. Without memory for the text the
// record gets none.
void fillFailedResult(ConversionResult* result, const char* text) noexcept;
// Completes the record of a conversion that was made, and so has room for this text, when there is no memory.
void fillResultWithoutMemory(ConversionResult& result) noexcept;

// Owns the workers of a conversion and the thread that waits for them, and fills the caller's records. At most
// `mostAtWork` workers have a thread at the same time; the others wait for one of them to end.
//
// Locks: listLock_ may be taken under the registry's lock; finishedLock_ comes after it, and `onFinished`
// is called under finishedLock_.
class Conversion {
 public:
  // Reads the options and fills the first state into the caller's records. `result` may be null. `onFinished` is called
  // once, on another thread, when the conversion has ended and the caller's result is complete; it must not throw.
  Conversion(const char* source, const char* target, const ConversionOptions& options, ConversionResult* result,
             void (*onFinished)(void*), void* context);
  // Ends workers that still run at their next message. The caller's records are no longer touched.
  ~Conversion();
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  // Makes the workers and starts them. If it raises a failure, the conversion has not begun.
  void start();
  void waitUntilFinished();
  [[nodiscard]] bool isFinished();
  [[nodiscard]] std::uint64_t id() const { return id_; }
  // XLATR_SUCCESS until something has failed.
  [[nodiscard]] std::int32_t statusCode();
  void fillProgress(ConversionProgress& progress);

 private:
  enum class State { Normal, NoneEnded, WorkerFailed };
  using Workers = std::vector<std::unique_ptr<ConversionWorker>>;

  void takeOption(const ConversionOption& option);
  void prepareWorkers();
  void addWorkers(const TraceFileInfo& file, Workers& workers);
  [[nodiscard]] bool startMonitor();
  void startNext() XLATR_REQUIRES(listLock_);
  void monitor();
  void finish();
  void workerEnded(EventGroup::Event event);
  bool collect() noexcept XLATR_REQUIRES(listLock_);
  void fillResult() XLATR_REQUIRES(listLock_);
  [[nodiscard]] std::string joinedMessages() XLATR_REQUIRES(listLock_);
  [[nodiscard]] float computePercent() XLATR_REQUIRES(listLock_);
  [[nodiscard]] std::int32_t codeOfState() XLATR_REQUIRES(listLock_);

  const std::uint64_t id_;
  std::vector<TraceFileInfo> sources_;
  TargetPathTemplate targetPath_;
  const FormatDescriptor& target_;
  double targetVersion_ = -1.0;
  SessionSelection sessions_;
  WriterSettings settings_;
  bool safe_ = false;
  bool mustBeNew_ = false;
  ConversionResult* const result_;
  void (*const onFinished_)(void*);
  void* const context_;

  EventGroup events_;
  const EventGroup::Event stopEvent_;
  const EventGroup::Event wakeEvent_;

  Mutex listLock_;
  Workers workers_ XLATR_GUARDED_BY(listLock_);  // in the order of the sources, which is that of the result
  std::size_t startedCount_ XLATR_GUARDED_BY(listLock_) = 0;  // the first ones were started
  std::size_t endedCount_ XLATR_GUARDED_BY(listLock_) = 0;
  State state_ XLATR_GUARDED_BY(listLock_) = State::Normal;
  std::string refusal_ XLATR_GUARDED_BY(listLock_);  // why no worker was made
  std::int32_t status_ XLATR_GUARDED_BY(listLock_) = XLATR_IN_PROGRESS;
  bool collected_ XLATR_GUARDED_BY(listLock_) = false;

  Mutex finishedLock_;
  std::condition_variable_any finishedChanged_;
  bool finished_ XLATR_GUARDED_BY(finishedLock_) = false;

  std::atomic<bool> exit_ = false;
  std::thread monitor_;
};

}  // namespace xlatr
