#include "core/conversion_worker.hpp"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "core/out_of_memory.hpp"
#include "util/failures.hpp"
#include "util/paths.hpp"

namespace xlatr {
namespace {

constexpr char kUnsupportedConversion[] = "The specified conversion is invalid or not supported";
constexpr char kMissingObject[] = "The specified converting object is invalid";
constexpr char kThreadNotJoinable[] = "The conversion thread is not joinable";
constexpr char kUnknownException[] = "Unknown exception";

std::string textOf(const std::exception& failure) {
  const std::string text = failure.what();
  return text.empty() ? kUnknownException : text;
}

WorkOrder withTargetPath(WorkOrder order) {
  if (order.targetPath.empty()) {
    order.targetPath = order.source.getPath();
  }
  return order;
}

std::string pathOfBus(const std::string& path, std::uint32_t bus) {
  const auto pieces = splitPath(path);
  if (!pieces) {
    return {};
  }
  std::string result(pieces->drive);
  result.append(pieces->directory).append(pieces->name);
  return result.append("_BUS").append(std::to_string(bus)).append(pieces->extension);
}

std::unique_ptr<ITraceWriter> makeWriter(const WorkOrder& order) {
  return order.target->makeWriter != nullptr ? order.target->makeWriter(order.settings) : nullptr;
}

}  // namespace

ConversionWorker::ConversionWorker(WorkOrder order, std::unique_ptr<TraceSource> source, EventGroup& events)
    : order_(withTargetPath(std::move(order))),
      events_(events),
      finishedEvent_(events.create()),
      failureEvent_(events.create()),
      source_(std::move(source)),
      firstWriter_(makeWriter(order_)),
      currentWriter_(firstWriter_.get()) {
  if (firstWriter_) {
    firstWriter_->setOverrideExistingFile(!order_.mustBeNew);
    firstWriter_->setTargetVersion(order_.targetVersion);
  }
}

ConversionWorker::~ConversionWorker() {
  abandoned_ = true;
  if (thread_.joinable()) {
    thread_.join();
  }
}

bool ConversionWorker::start() {
  const auto targets = order_.source.getSupportedConversions();
  if (std::find(targets.begin(), targets.end(), order_.target->format) == targets.end()) {
    reportFailure(kUnsupportedConversion);
  } else if (!source_ || !firstWriter_) {
    reportFailure(kMissingObject);
  } else {
    try {
      thread_ = std::thread(&ConversionWorker::run, this);
      return true;
    } catch (const std::exception&) {  // the system has no thread, or no memory for one
      reportFailure(kThreadNotJoinable);
    }
  }
  closeAllWritersQuietly();
  source_.reset();
  return false;
}

void ConversionWorker::run() {
  try {
    convert();
    events_.signal(finishedEvent_);
  } catch (...) {
    closeAllWritersQuietly();
    reportCaughtFailure();
  }
  source_.reset();
}

void ConversionWorker::convert() {
  requireKnownSource();
  source_->setTarget({order_.target->format, order_.targetVersion});
  source_->validate();
  split_ = source_->splitsByBus() && order_.target->isSplitTarget(firstWriter_->getTargetVersion());
  openFirstWriter();
  source_->reader().setActive(true);
  requireReading();
  source_->begin(*currentWriter_, message_);
  while (!abandoned_.load(std::memory_order_relaxed)) {
    const TraceSource::Read read = source_->readNext();
    percent_.store(static_cast<float>(source_->reader().getPercentDone()), std::memory_order_relaxed);
    if (read == TraceSource::Read::End) {
      break;
    }
    if (read == TraceSource::Read::Message) {
      convertMessage();
    }
  }
  requireReading();
  warnOfInvalidBuses();
  closeAllWriters();
  if (!firstOpenFailure_.empty()) {
    throwProcessingFailure(firstOpenFailure_);
  }
  finishSafeFiles();
  percent_.store(100.0F, std::memory_order_relaxed);
}

// A source that the system could not look at is not the empty one that it seems to be.
void ConversionWorker::requireKnownSource() {
  if (const std::string& failure = source_->info().failure(); !failure.empty()) {
    throwProcessingFailure(failure);
  }
}

// The end of reading alone does not tell a failure from the end of the file; the reader's failure text does.
void ConversionWorker::requireReading() {
  if (const std::string& failure = source_->reader().failure(); !failure.empty()) {
    throwProcessingFailure(failure);
  }
}

void ConversionWorker::convertMessage() {
  const std::optional<std::uint32_t> bus = source_->bus();
  const auto& limit = order_.target->busLimit;
  if (!split_ && bus && limit && *bus > limit->highest && source_->warnsOfHighBuses()) {
    invalidBuses_.insert(*bus);
  }
  switch (source_->judge()) {
    case Verdict::Write:
      if (ITraceWriter* const writer = selectWriter(bus)) {
        source_->write(*writer);
      }
      break;
    case Verdict::Comment:
      writeComment(bus, source_->commentText());
      break;
    case Verdict::Drop:
      break;
  }
}

void ConversionWorker::openFirstWriter() {
  if (split_) {
    return;
  }
  currentWriter_->setSourcePath(source_->info().getPath());
  currentWriter_->setTargetPath(order_.targetPath);
  activate(*currentWriter_);
}

void ConversionWorker::activate(ITraceWriter& writer) {
  if (order_.safe) {
    writer.requireUsableTarget();
    writer.setOutput(reserve(writer.getTargetPath()));
  }
  writer.setActive(true);
  outputFiles_.push_back(getFileName(writer.getTargetPath()));
  source_->writeHeader(writer);
}

OutputTarget ConversionWorker::reserve(const std::string& path) {
  try {
    const std::vector<std::string> sources = {source_->info().getPath()};
    if (split_ && groupLock_ == nullptr) {
      groupLock_ = std::make_unique<GroupLock>(order_.targetPath, sources);
    }
    safeFiles_.push_back(
        std::make_unique<SafeFile>(path, TargetRules{.replaces = !order_.mustBeNew, .sources = sources}));
    return safeFiles_.back()->reserve(split_ ? SafeFile::Group::Locked : SafeFile::Group::None);
  } catch (const TargetRefusal& refusal) {
    if (refusal.reason() == TargetRefusal::Reason::Source) {
      throwProcessingFailure(kTargetIsSource);
    }
    throw;
  }
}

ITraceWriter* ConversionWorker::selectWriter(std::optional<std::uint32_t> bus) {
  if (!split_ || !bus) {
    return currentWriter_;
  }
  if (currentWriter_ != firstWriter_.get() && std::cmp_equal(currentWriter_->getOwnerBus(), *bus)) {
    return currentWriter_;
  }
  const auto opened = writerOfBus_.find(*bus);
  if (opened != writerOfBus_.end()) {
    openWriters_.use(*opened->second);
    return currentWriter_ = opened->second;
  }
  return unopenedBuses_.contains(*bus) ? nullptr : openWriterOfBus(*bus);
}

// A bus whose file can't be opened loses its messages, but not those of the other buses.
ITraceWriter* ConversionWorker::openWriterOfBus(std::uint32_t bus) {
  try {
    openWriters_.makeRoom();
    auto writer = firstWriter_->CreateNew();
    writer->setOwnerBus(static_cast<std::int32_t>(bus));
    writer->setSourcePath(source_->info().getPath());
    writer->setTargetPath(pathOfBus(order_.targetPath, bus));
    activate(*writer);
    ITraceWriter* const opened = writer.get();
    busWriters_.push_back(std::move(writer));
    writerOfBus_.emplace(bus, opened);
    openWriters_.use(*opened);
    currentWriter_ = opened;
    waitingComments_.handOut([opened](std::string_view text) { opened->WriteComment(text); });
    return opened;
  } catch (const std::exception& failure) {
    if (firstOpenFailure_.empty()) {
      firstOpenFailure_ = textOf(failure);
    }
    unopenedBuses_.insert(bus);
    return nullptr;
  }
}

void ConversionWorker::writeComment(std::optional<std::uint32_t> bus, std::string_view text) {
  if (split_ && !bus && currentWriter_ == firstWriter_.get()) {
    waitingComments_.add(text);
  } else if (ITraceWriter* const writer = selectWriter(bus)) {
    writer->WriteComment(text);
  }
}

void ConversionWorker::warnOfInvalidBuses() {
  if (invalidBuses_.empty()) {
    return;
  }
  std::string text = "The Converted file '" + fileNameOfTarget() + "' contents at least one invalid BUS number:";
  for (const std::uint32_t bus : invalidBuses_) {
    text.append(" ").append(std::to_string(bus));
  }
  message_ = text.append(".\n").append(order_.target->busLimit->warning);
}

std::string ConversionWorker::fileNameOfTarget() const {
  return getFileName(order_.targetPath);
}

// Closes all of them, even after one that fails to close, and raises the first failure.
void ConversionWorker::closeAllWriters() {
  std::exception_ptr firstFailure;
  const auto close = [&firstFailure](ITraceWriter* writer) {
    try {
      if (writer != nullptr) {
        writer->setActive(false);
      }
    } catch (...) {
      firstFailure = firstFailure ? firstFailure : std::current_exception();
    }
  };
  close(firstWriter_.get());
  for (const auto& writer : busWriters_) {
    close(writer.get());
  }
  currentWriter_ = nullptr;
  writerOfBus_.clear();
  openWriters_.clear();
  busWriters_.clear();
  firstWriter_.reset();
  if (firstFailure) {
    std::rethrow_exception(firstFailure);
  }
}

// A conversion that was abandoned did not come to the end of its source.
void ConversionWorker::finishSafeFiles() {
  if (abandoned_.load(std::memory_order_relaxed)) {
    dropSafeFiles();
  }
  for (const auto& file : safeFiles_) {
    file->finish();
  }
  groupLock_.reset();
}

void ConversionWorker::dropSafeFiles() noexcept {
  if (order_.safe) {
    safeFiles_.clear();
    groupLock_.reset();
    outputFiles_.clear();
  }
}

std::string ConversionWorker::named(std::string text) const {
  for (const auto& file : safeFiles_) {
    text = file->named(std::move(text));
  }
  return text;
}

void ConversionWorker::closeAllWritersQuietly() noexcept {
  try {
    closeAllWriters();
  } catch (...) {  // NOLINT(bugprone-empty-catch): another failure is on its way to the caller already
  }
}

// Where there is no memory for the text of the failure there may be room for none that is longer than this.
void ConversionWorker::reportFailure(const char* text) noexcept {
  try {
    message_ = text;
  } catch (const std::bad_alloc&) {
    message_ = kOutOfMemory;
  }
  events_.signal(failureEvent_);
}

void ConversionWorker::reportCaughtFailure() noexcept {
  try {
    message_ = textOfCaughtFailure();
  } catch (...) {
    message_ = kOutOfMemory;
  }
  dropSafeFiles();
  events_.signal(failureEvent_);
}

std::string ConversionWorker::textOfCaughtFailure() const {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return named(kOutOfMemory);
  } catch (const std::exception& failure) {
    return named(textOf(failure));
  } catch (...) {
    return kUnknownException;
  }
}

}  // namespace xlatr
