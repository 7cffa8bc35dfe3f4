#include "io/trace_writer.hpp"

#include <utility>

#include "platform/files.hpp"
#include "util/failures.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

// The limit of the strictest platform: users may open the traces with a program of any.
constexpr std::size_t kMaxTargetPathLength = 260;

// A link that leads nowhere would have its file made where nobody has named one.
bool isTaken(const std::string& path) {
  return platform::fileExists(path) || platform::kindOfPath(path) == platform::PathKind::BrokenLink;
}

}  // namespace

ITraceWriter::~ITraceWriter() = default;

TraceWriter::TraceWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : overrideExistingFile_(overrideExistingFile), targetPath_(std::move(targetPath)), targetVersion_(targetVersion) {}

void TraceWriter::WriteHeader_2(const ITraceInfo& source, double startDays) {
  startDays_ = startDays;
  startKnown_ = true;
  WriteHeader(source);
}

double TraceWriter::startDaysFrom(const ITraceInfo& source) {
  if (!std::exchange(startKnown_, true)) {
    startDays_ = source.getStartTime();
  }
  return startDays_;
}

void TraceWriter::setActive(bool active) {
  if (active == active_) {
    return;
  }
  if (active) {
    open();
  } else {
    close();
  }
}

void TraceWriter::requireUsableTarget() const {
  if (targetPath_.empty()) {
    throwProcessingFailure("Value cannot be null or empty - TargetPath");
  }
  if (!overrideExistingFile_ && isTaken(targetPath_)) {
    throwProcessingFailure("File already exists - TargetPath");
  }
  // Two spellings of a path can name one file, and two files can have one name in all but the case of its letters.
  if (equalsIgnoreCase(targetPath_, sourcePath_) || platform::isSameFile(targetPath_, sourcePath_)) {
    throwProcessingFailure(kTargetIsSource);
  }
  if (targetPath_.size() >= kMaxTargetPathLength) {
    throwProcessingFailure("Target path too long (" + std::to_string(targetPath_.size()) +
                           "). Maximum allowed is 260.");
  }
}

void TraceWriter::open() {
  requireUsableTarget();
  const auto creation = overrideExistingFile_ ? platform::Creation::Replace : platform::Creation::New;
  output_.open(outputTarget_ ? *outputTarget_ : OutputTarget(targetPath_, creation));
  active_ = true;
}

void TraceWriter::close() {
  active_ = false;
  output_.close();
}

void TraceWriter::requireActive() const {
  if (!active_) {
    throwProcessingFailure("Writer is not initialized");
  }
}

void TraceWriter::requireInactive() const {
  if (active_) {
    throwProcessingFailure("Cannot change property value when object is active");
  }
}

void TraceWriter::setTargetPath(std::string path) {
  requireInactive();
  targetPath_ = std::move(path);
}

void TraceWriter::setTargetVersion(double version) {
  requireInactive();
  targetVersion_ = version;
}

void TraceWriter::setOverrideExistingFile(bool overrideExistingFile) {
  requireInactive();
  overrideExistingFile_ = overrideExistingFile;
}

void TraceWriter::setOwnerBus(std::int32_t bus) {
  requireInactive();
  ownerBus_ = bus;
}

void TraceWriter::setOutput(OutputTarget output) {
  requireInactive();
  outputTarget_ = std::move(output);
}

void TraceWriterText::open() {
  TraceWriter::open();
  linesSinceFlush_ = 0;
}

void TraceWriterText::writeLine(std::string_view text) {
  requireActive();
  if (text.empty()) {
    return;
  }
  output().write(text);
  endLine();
}

void TraceWriterText::writeLine(std::string_view prefix, std::string_view text) {
  requireActive();
  if (!text.starts_with(prefix)) {
    output().write(prefix);
  }
  output().write(text);
  endLine();
}

void TraceWriterText::endLine() {
  constexpr std::uint64_t kLinesBetweenFlushes = 200;
  output().write("\r\n");
  if (++linesSinceFlush_ > kLinesBetweenFlushes) {
    flush();
    linesSinceFlush_ = 0;
  }
}

}  // namespace xlatr
