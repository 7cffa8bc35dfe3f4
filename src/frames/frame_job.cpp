#include "frames/frame_job.hpp"

#include <chrono>
#include <memory>
#include <utility>

#include "frames/frame_failure.hpp"
#include "frames/merged_frames.hpp"
#include "frames/trace_file.hpp"

namespace xlatr {
namespace {

std::unique_ptr<FrameSource> openSources(const std::vector<JobSource>& sources, const MergeSettings& merging) {
  if (sources.empty()) {
    throw FrameFailure(FrameProblem::BadArgument, "there is no source");
  }
  std::vector<std::unique_ptr<FrameSource>> opened;
  opened.reserve(sources.size());
  for (const JobSource& source : sources) {
    opened.push_back(openTrace(source.input, source.format));
  }
  if (opened.size() == 1) {
    return std::move(opened.front());
  }
  return std::make_unique<MergedFrames>(std::move(opened), merging);
}

// What must not be written over.
TargetSettings withSources(const JobSettings& settings) {
  TargetSettings writing = settings.writing;
  for (const JobSource& source : settings.sources) {
    if (source.input.bytes() == nullptr) {
      writing.sources.push_back(source.input.name());
    }
  }
  return writing;
}

// Before the target has its name.
void requireAll(const JobSettings& settings, SplitTarget& target, JobReport& report) {
  if (settings.strict && !report.account.completeButForRounding()) {
    target.removeFinished();
    report.files.clear();
    throw FrameFailure(FrameProblem::Incomplete,
                       settings.target.name() + ": not everything would come over, so that nothing was written");
  }
}

class Clock {
 public:
  [[nodiscard]] double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

void runJob(const JobSettings& settings, JobReport& report, const ReadProgressFunction& progress) {
  const Clock clock;
  SplitTarget target(settings.target, withSources(settings), settings.split);
  WantedFrames source(openSources(settings.sources, settings.merging), settings.selection, settings.changes);
  report.head = source.head();
  for (const JobSource& from : settings.sources) {
    report.progress.bytesTotal += from.input.size().value_or(0);
  }
  target.create(report.head);
  FrameBatch batch;
  while (source.read(batch, report.account)) {
    target.write(batch, report.account);
    batch.clear();
    if (report.files.size() != target.files().size()) {
      report.files = target.files();
    }
    report.progress.bytesRead = source.bytesRead();
    report.progress.framesRead = report.account.read();
    report.progress.seconds = clock.seconds();
    if (progress && !progress(report.progress)) {
      throw FrameFailure(FrameProblem::Cancelled, settings.target.name() + ": the conversion was cancelled");
    }
  }
  report.passedOver = source.passedOver();
  target.writeRest(report.account);
  requireAll(settings, target, report);
  target.finish();
  report.files = target.files();
}

}  // namespace xlatr
