#include "frames/frame_job.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "frames/frame_failure.hpp"
#include "frames/merged_frames.hpp"
#include "frames/trace_file.hpp"
#include "platform/files.hpp"

namespace xlatr {
namespace {

std::unique_ptr<FrameSource> openSources(const std::vector<JobSource>& sources) {
  if (sources.empty()) {
    throw FrameFailure(FrameProblem::BadArgument, "there is no source");
  }
  std::vector<std::unique_ptr<FrameSource>> opened;
  opened.reserve(sources.size());
  for (const JobSource& source : sources) {
    opened.push_back(openTrace(source.path, source.format));
  }
  if (opened.size() == 1) {
    return std::move(opened.front());
  }
  return std::make_unique<MergedFrames>(std::move(opened));
}

bool isSameFile(const std::string& one, const std::string& other) {
  std::error_code ignored;
  return std::filesystem::equivalent(one, other, ignored);
}

void requireUsableTarget(const JobSettings& settings) {
  if (settings.target.empty()) {
    throw FrameFailure(FrameProblem::BadArgument, "there is no target");
  }
  for (const JobSource& source : settings.sources) {
    if (isSameFile(source.path, settings.target)) {
      throw FrameFailure(FrameProblem::TargetIsSource,
                         settings.target + ": the target is the source; choose another name");
    }
  }
  if (!settings.replacesTarget && platform::fileExists(settings.target)) {
    throw FrameFailure(FrameProblem::TargetExists, settings.target + ": the file exists and is not to be replaced");
  }
}

// A file that is removed again unless it becomes whole.
class TargetFile {
 public:
  explicit TargetFile(std::string path) : path_(std::move(path)) {}
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;
  ~TargetFile() {
    sink_.reset();
    if (created_ && !whole_) {
      platform::removeFile(path_);
    }
  }

  [[nodiscard]] bool isOpen() const { return sink_ != nullptr; }
  void open(const JobSettings& settings, const StreamHead& head) {
    const bool existed = platform::fileExists(path_);
    try {
      sink_ = createTrace(path_, settings.targetFormat, head, settings.sink);
    } catch (const FrameFailure&) {
      throw;
    } catch (...) {
      created_ = !existed && platform::fileExists(path_);
      throw;
    }
    created_ = true;
  }
  void write(const FrameBatch& batch, Account& account) { sink_->write(batch, account); }
  void close() {
    sink_->close();
    whole_ = true;
  }

 private:
  std::string path_;
  std::unique_ptr<FrameSink> sink_;
  bool created_ = false;
  bool whole_ = false;
};

class Clock {
 public:
  [[nodiscard]] double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

JobReport runJob(const JobSettings& settings, const JobProgressFunction& progress) {
  const Clock clock;
  requireUsableTarget(settings);
  WantedFrames source(openSources(settings.sources), settings.selection, settings.changes);
  TargetFile target(settings.target);
  JobReport report;
  report.head = source.head();
  for (const JobSource& from : settings.sources) {
    report.progress.bytesTotal += platform::fileSize(from.path);
  }
  target.open(settings, report.head);
  FrameBatch batch;
  while (source.read(batch, report.account)) {
    target.write(batch, report.account);
    batch.clear();
    report.progress.bytesRead = source.bytesRead();
    report.progress.framesRead = report.account.read();
    report.progress.seconds = clock.seconds();
    if (progress && !progress(report.progress)) {
      throw FrameFailure(FrameProblem::Cancelled, settings.target + ": the conversion was cancelled");
    }
  }
  target.close();
  return report;
}

}  // namespace xlatr
