#include "core/conversion.hpp"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include "core/out_of_memory.hpp"
#include "platform/module_path.hpp"
#include "util/failures.hpp"
#include "util/paths.hpp"

namespace xlatr {
namespace {

constexpr char kInProgress[] = "In progress";
constexpr std::size_t kFirstTextSize = std::max(sizeof kInProgress, sizeof kOutOfMemory);
constexpr char kNoThread[] = "The system starts no thread for the conversion: ";
constexpr char kUnsupportedTarget[] = "The specified conversion is invalid or not supported ";

std::uint64_t nextConversionId() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

// Memory that xlatr_free gives back.
template <class Element>
Element* allocateZeroed(std::size_t count) {
  void* const memory = std::calloc(count, sizeof(Element));
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return static_cast<Element*>(memory);
}

// The allocation may be longer than the text: at least of the size `room`.
void replaceText(ConversionResult& result, std::string_view text, std::size_t room = 0) {
  char* const copy = allocateZeroed<char>(std::max(text.size() + 1, room));
  text.copy(copy, text.size());
  std::free(std::exchange(result.text, copy));
}

char* copyOfFileName(const std::string& name) {
  char* const copy = allocateZeroed<char>(XLATR_FILE_NAME_SIZE);
  name.copy(copy, XLATR_FILE_NAME_SIZE - 1);
  return copy;
}

// A file that no conversion reads has a source all the same, which is null: its worker then says why it fails.
std::vector<FormatSource> sourcesOf(const FormatDescriptor& format, const TraceFileInfo& file,
                                    const SessionSelection& sessions) {
  if (format.makeSources != nullptr) {
    return format.makeSources(file, sessions);
  }
  return std::vector<FormatSource>(1);
}

}  // namespace

std::size_t mostAtWork() {
  constexpr std::size_t kOfEachProcessor = 2;
  return kOfEachProcessor * std::max<std::size_t>(std::thread::hardware_concurrency(), 1);
}

TargetPathTemplate makeTargetPathTemplate(const char* path, TraceFormat targetFormat) {
  TargetPathTemplate result;
  result.extension = formatOf(targetFormat).extension;
  if (path == nullptr) {
    return result;
  }
  const auto pieces = splitPath(path);
  if (!pieces) {
    result.directory = path;  // too long for any file system; the writer refuses it by its length
    return result;
  }
  result.directory = std::string(pieces->drive).append(pieces->directory);
  result.stem = pieces->name;
  if (formatOfExtension(pieces->extension) == XLATR_FORMAT_NONE) {
    result.stem += pieces->extension;
  }
  return result;
}

// The separator is always there: after the directory's own one, and before a bare name, which then is a name at the
// root. Callers know this and name their folder.
std::string TargetPathTemplate::pathOfSession(std::string_view marker, std::uint32_t session) const {
  return (directory + platform::pathSeparator() + stem).append(marker) + std::to_string(session) + extension;
}

void fillFailedResult(ConversionResult* result, const char* text) noexcept {
  if (result == nullptr) {
    return;
  }
  result->status = XLATR_FAILED;
  result->file_count = 0;
  result->files = nullptr;
  try {
    replaceText(*result, text);
  } catch (const std::bad_alloc&) {
    std::free(std::exchange(result->text, nullptr));
  }
  result->finished = 1;
}

void fillResultWithoutMemory(ConversionResult& result) noexcept {
  for (std::uint32_t index = 0; index < result.file_count; ++index) {
    std::free(result.files[index]);
  }
  std::free(static_cast<void*>(std::exchange(result.files, nullptr)));
  result.file_count = 0;
  std::memcpy(result.text, kOutOfMemory, sizeof kOutOfMemory);
  result.status = XLATR_FAILED;
  result.finished = 1;
}

Conversion::Conversion(const char* source, const char* target, const ConversionOptions& options,
                       ConversionResult* result, void (*onFinished)(void*), void* context)
    : id_(nextConversionId()),
      targetPath_(makeTargetPathTemplate(target, options.target_format)),
      target_(formatOf(options.target_format)),
      result_(result),
      onFinished_(onFinished),
      context_(context),
      stopEvent_(events_.create()),
      wakeEvent_(events_.create()) {
  if (source != nullptr) {
    TraceFileInfo file(source);
    if (!file.getPath().empty()) {
      sources_.push_back(std::move(file));
    }
  }
  if (options.options != nullptr) {
    for (std::uint32_t index = 0; index < options.option_count; ++index) {
      takeOption(options.options[index]);
    }
  }
  if (result_ != nullptr) {
    result_->status = XLATR_IN_PROGRESS;
    result_->finished = 0;
    result_->file_count = 0;
    result_->files = nullptr;
    // With room for the text that there may be no room for in the end.
    replaceText(*result_, kInProgress, kFirstTextSize);
  }
  if (options.progress != nullptr) {
    *options.progress = {id_, 0, XLATR_IN_PROGRESS, 0.0F};
  }
}

Conversion::~Conversion() {
  if (monitor_.joinable()) {
    exit_ = true;
    events_.signal(wakeEvent_);
    monitor_.join();
  }
}

void Conversion::takeOption(const ConversionOption& option) {
  switch (option.tag) {
    case XLATR_OPTION_TARGET_VERSION:
      targetVersion_ = option.value.version;
      break;
    case XLATR_OPTION_SESSION:
      if (option.value.session != 0) {
        sessions_.all = false;
        sessions_.places.push_back(option.value.session - 1);
      }
      break;
    case XLATR_OPTION_SEPARATOR:
      settings_.separator.assign(1, option.value.separator);
      break;
    case XLATR_OPTION_ZIPPED:
      settings_.zipped = option.value.flag != 0;
      break;
    case XLATR_OPTION_SORTED:
      settings_.sorted = option.value.flag != 0;
      break;
    case XLATR_OPTION_SAFE:
      safe_ = option.value.flag != 0;
      break;
    case XLATR_OPTION_NEW:
      mustBeNew_ = option.value.flag != 0;
      break;
    default:
      break;
  }
}

void Conversion::prepareWorkers() {
  Workers workers;
  std::string refusal;
  if (target_.makeWriter == nullptr) {
    refusal = kUnsupportedTarget;
  } else {
    try {
      for (const TraceFileInfo& file : sources_) {
        addWorkers(file, workers);
      }
    } catch (const ConverterGenericException& failure) {
      workers.clear();
      refusal = failure.what();
    }
  }
  const MutexLock guard(listLock_);
  workers_ = std::move(workers);
  refusal_ = std::move(refusal);
}

// One worker per source of the file.
void Conversion::addWorkers(const TraceFileInfo& file, Workers& workers) {
  const FormatDescriptor& format = formatOf(file.getFormat());
  const double version = targetVersion_ == -1.0 ? target_.currentVersion : targetVersion_;
  for (FormatSource& made : sourcesOf(format, file, sessions_)) {
    std::string path =
        made.session ? targetPath_.pathOfSession(format.sessionMarker, *made.session) : targetPath_.path();
    workers.push_back(std::make_unique<ConversionWorker>(
        WorkOrder{file, &target_, std::move(path), version, settings_, safe_, mustBeNew_}, std::move(made.source),
        events_));
  }
}

void Conversion::start() {
  prepareWorkers();
  if (!startMonitor()) {
    finish();
    return;
  }
  const MutexLock guard(listLock_);
  if (collect()) {
    return;
  }
  for (std::size_t atWork = 0; atWork < mostAtWork(); ++atWork) {
    startNext();
  }
}

// A worker that can't be started has ended as one that failed, which the monitor hears of as of any other.
void Conversion::startNext() {
  if (startedCount_ < workers_.size() && !exit_) {
    workers_[startedCount_++]->start();
  }
}

// Without a monitor the conversion is at its end, and no worker is started.
bool Conversion::startMonitor() {
  const MutexLock guard(listLock_);
  try {
    monitor_ = std::thread(&Conversion::monitor, this);
    return true;
  } catch (const std::system_error& failure) {
    refusal_ = std::string(kNoThread).append(failure.code().message()).append(" ");
  }
  workers_.clear();
  collect();
  return false;
}

void Conversion::waitUntilFinished() {
  const MutexLock guard(finishedLock_);
  while (!finished_) {
    finishedChanged_.wait(finishedLock_);
  }
}

bool Conversion::isFinished() {
  const MutexLock guard(finishedLock_);
  return finished_;
}

std::int32_t Conversion::statusCode() {
  const MutexLock guard(listLock_);
  return codeOfState();
}

std::int32_t Conversion::codeOfState() {
  switch (state_) {
    case State::Normal:
      return XLATR_SUCCESS;
    case State::NoneEnded:
      return XLATR_NOTHING_CONVERTED;
    case State::WorkerFailed:
      return XLATR_FAILED;
  }
  return XLATR_UNEXPECTED;
}

void Conversion::fillProgress(ConversionProgress& progress) {
  const MutexLock guard(listLock_);
  progress.id = id_;
  progress.finished = collected_ ? 1 : 0;
  progress.status = status_;
  progress.percent = computePercent();
}

// Without workers the quotient is not a number.
float Conversion::computePercent() {
  float sum = 0.0F;
  for (const auto& worker : workers_) {
    sum += worker->percent();
  }
  return sum / static_cast<float>(workers_.size());
}

void Conversion::monitor() {
  while (!exit_) {
    const EventGroup::Event event = events_.waitAny();
    if (event == stopEvent_) {
      finish();
    } else if (event != wakeEvent_) {
      workerEnded(event);
    }
  }
}

void Conversion::finish() {
  const MutexLock guard(finishedLock_);
  finished_ = true;
  finishedChanged_.notify_all();
  onFinished_(context_);
}

// Each worker has two events, and those of a worker were made after those of the workers before it.
void Conversion::workerEnded(EventGroup::Event event) {
  const MutexLock guard(listLock_);
  const auto worker = std::ranges::lower_bound(workers_, event, {}, &ConversionWorker::failureEvent);
  if ((*worker)->failureEvent() == event) {
    state_ = State::WorkerFailed;
  }
  ++endedCount_;
  startNext();
  collect();
}

// Completes the conversion if no worker runs any more, and returns whether that is so.
bool Conversion::collect() noexcept {
  if (endedCount_ < workers_.size()) {
    return false;
  }
  if (!refusal_.empty()) {
    state_ = State::WorkerFailed;
  } else if (workers_.empty()) {
    state_ = State::NoneEnded;
  }
  status_ = codeOfState();
  collected_ = true;
  if (result_ != nullptr) {
    try {
      fillResult();
    } catch (const std::bad_alloc&) {
      // What was converted is there, but the caller would not learn of all of it.
      state_ = State::WorkerFailed;
      status_ = codeOfState();
      fillResultWithoutMemory(*result_);
    }
  }
  events_.signal(stopEvent_);
  return true;
}

void Conversion::fillResult() {
  std::vector<const std::string*> names;
  for (const auto& worker : workers_) {
    for (const std::string& name : worker->outputFiles()) {
      names.push_back(&name);
    }
  }
  const std::string text = joinedMessages();
  if (!names.empty()) {
    result_->files = allocateZeroed<char*>(names.size());
    for (const std::string* const name : names) {
      result_->files[result_->file_count] = copyOfFileName(*name);
      ++result_->file_count;
    }
  }
  replaceText(*result_, text);
  result_->status = status_;
  result_->finished = 1;
}

std::string Conversion::joinedMessages() {
  std::string text = refusal_;
  for (const auto& worker : workers_) {
    if (!worker->message().empty()) {
      text.append(worker->message()).append(" ");
    }
  }
  return text;
}

}  // namespace xlatr
