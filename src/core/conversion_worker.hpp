// Turns one source file into one target file, or into one target file per bus.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/events.hpp"
#include "core/open_writers.hpp"
#include "core/waiting_comments.hpp"
#include "io/format.hpp"
#include "io/output_target.hpp"
#include "io/safe_file.hpp"
#include "io/trace_info.hpp"
#include "io/trace_source.hpp"
#include "io/trace_writer.hpp"

namespace xlatr {

// What a worker is to do.
struct WorkOrder {
  TraceFileInfo source;
  const FormatDescriptor* target;
  std::string targetPath;
  double targetVersion;
  WriterSettings settings;
  bool safe = false;       // targets have their names when all of them are whole
  bool mustBeNew = false;  // no target is there yet
};

// Owns a reader, writers and the thread that moves the messages from the reader to the writers. One of two events tells
// the owner of the event group that the worker has ended. The owner may read outputFiles and message after that, and
// percent at any time. Everything else belongs to the worker's thread.
class ConversionWorker {
 public:
  // The source is null for a format that no conversion reads. `events` must outlive the worker.
  ConversionWorker(WorkOrder order, std::unique_ptr<TraceSource> source, EventGroup& events);
  // Ends a running conversion at the next message, and waits for that.
  ~ConversionWorker();
  ConversionWorker(const ConversionWorker&) = delete;
  ConversionWorker& operator=(const ConversionWorker&) = delete;

  // Starts the thread. Reports an impossible conversion as failed instead, and returns false.
  bool start();

  [[nodiscard]] EventGroup::Event finishedEvent() const { return finishedEvent_; }
  [[nodiscard]] EventGroup::Event failureEvent() const { return failureEvent_; }
  // The names, without directory, of all files written, in the order in which they were opened.
  [[nodiscard]] const std::vector<std::string>& outputFiles() const { return outputFiles_; }
  // Why it failed, or a warning; usually empty.
  [[nodiscard]] const std::string& message() const { return message_; }
  // 0 to 100.
  [[nodiscard]] float percent() const { return percent_.load(std::memory_order_relaxed); }

 private:
  void run();
  void convert();
  void requireKnownSource();
  void requireReading();
  void convertMessage();
  void openFirstWriter();
  void activate(ITraceWriter& writer);
  [[nodiscard]] OutputTarget reserve(const std::string& path);
  // The writer that the current message goes to; null when it can't be opened.
  ITraceWriter* selectWriter(std::optional<std::uint32_t> bus);
  ITraceWriter* openWriterOfBus(std::uint32_t bus);
  void writeComment(std::optional<std::uint32_t> bus, std::string_view text);
  void warnOfInvalidBuses();
  void closeAllWriters();
  void finishSafeFiles();
  void dropSafeFiles() noexcept;
  [[nodiscard]] std::string named(std::string text) const;
  void closeAllWritersQuietly() noexcept;
  void reportFailure(const char* text) noexcept;
  void reportCaughtFailure() noexcept;
  [[nodiscard]] std::string textOfCaughtFailure() const;
  [[nodiscard]] std::string fileNameOfTarget() const;

  const WorkOrder order_;
  EventGroup& events_;
  const EventGroup::Event finishedEvent_;
  const EventGroup::Event failureEvent_;
  std::vector<std::string> outputFiles_;
  std::string message_;
  std::unique_ptr<TraceSource> source_;
  std::atomic<float> percent_ = 0.0F;
  std::atomic<bool> abandoned_ = false;

  // The first writer. In a conversion that splits by bus it is never active and serves as the template of the others.
  std::unique_ptr<ITraceWriter> firstWriter_;
  std::vector<std::unique_ptr<ITraceWriter>> busWriters_;  // in the order in which they were opened
  std::unordered_map<std::uint32_t, ITraceWriter*> writerOfBus_;
  OpenWriters openWriters_;
  ITraceWriter* currentWriter_ = nullptr;
  bool split_ = false;
  std::unordered_set<std::uint32_t> unopenedBuses_;
  std::string firstOpenFailure_;
  WaitingComments waitingComments_;
  std::unique_ptr<GroupLock> groupLock_;  // of files per bus
  std::vector<std::unique_ptr<SafeFile>> safeFiles_;
  std::set<std::uint32_t> invalidBuses_;

  std::thread thread_;
};

}  // namespace xlatr
