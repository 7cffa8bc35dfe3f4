// Turns one source file into one target file, or into one target file a bus.
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
#include "core/format_factories.hpp"
#include "core/waiting_comments.hpp"

namespace xlatr {

// What a worker is to do.
struct WorkOrder {
  TraceFileInfo source;
  TraceFormat targetFormat;
  std::string targetPath;
  double targetVersion;
  WriterSettings settings;
};

// Owns a reader, writers and the thread that moves the messages from the one to the others. It tells the owner of the
// event group by one of two events that it has ended; outputFiles and message are for the owner to read after that, and
// percent is at any time. Everything else is the worker's thread's own.
class ConversionWorker {
 public:
  // Reads the header of the source, on the caller's thread. `events` must outlive the worker.
  ConversionWorker(const WorkOrder& order, EventGroup& events, FormatFactories factories = builtInFactories());
  // The same for a source that was made already, one part of a file of which each part has a worker.
  ConversionWorker(WorkOrder order, std::unique_ptr<TraceSource> source, EventGroup& events,
                   FormatFactories factories = builtInFactories());
  // Ends the conversion at the next message if it still runs, and waits for that.
  ~ConversionWorker();
  ConversionWorker(const ConversionWorker&) = delete;
  ConversionWorker& operator=(const ConversionWorker&) = delete;

  // Starts the thread. A conversion that can't be is reported as failed instead, and false is the answer.
  bool start();

  [[nodiscard]] EventGroup::Event finishedEvent() const { return finishedEvent_; }
  [[nodiscard]] EventGroup::Event failureEvent() const { return failureEvent_; }
  // Names, without directory, of all files written, in the order of their opening.
  [[nodiscard]] const std::vector<std::string>& outputFiles() const { return outputFiles_; }
  // Why it failed, or a warning; mostly empty.
  [[nodiscard]] const std::string& message() const { return message_; }
  // 0 to 100.
  [[nodiscard]] float percent() const { return percent_.load(std::memory_order_relaxed); }

 private:
  void run();
  void convert();
  void requireReading();
  void convertMessage();
  void openFirstWriter();
  void activate(ITraceWriter& writer);
  // The writer that the current message goes to; null when it can't be opened.
  ITraceWriter* selectWriter(std::optional<std::uint32_t> bus);
  ITraceWriter* openWriterOfBus(std::uint32_t bus);
  void writeComment(std::optional<std::uint32_t> bus, std::string_view text);
  void warnOfInvalidBuses();
  void closeAllWriters();
  void closeAllWritersQuietly() noexcept;
  void reportFailure(std::string text);
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
  std::vector<std::unique_ptr<ITraceWriter>> busWriters_;  // in the order of their opening
  std::unordered_map<std::uint32_t, ITraceWriter*> writerOfBus_;
  ITraceWriter* currentWriter_ = nullptr;
  bool split_ = false;
  std::unordered_set<std::uint32_t> unopenedBuses_;
  std::string firstOpenFailure_;
  WaitingComments waitingComments_;
  std::set<std::uint32_t> invalidBuses_;

  std::thread thread_;
};

}  // namespace xlatr
