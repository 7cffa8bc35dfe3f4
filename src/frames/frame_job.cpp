#include "frames/frame_job.hpp"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "frames/frame_failure.hpp"
#include "frames/merged_frames.hpp"
#include "frames/target_file.hpp"
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
    opened.push_back(openTrace(source.input, source.format));
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

void requireOtherTarget(const JobSettings& settings) {
  const auto isTarget = [&settings](const JobSource& source) {
    return source.input.bytes() == nullptr && isSameFile(source.input.name(), settings.target);
  };
  if (platform::kindOfPath(settings.target) == platform::PathKind::File &&
      std::ranges::any_of(settings.sources, isTarget)) {
    throw FrameFailure(FrameProblem::TargetIsSource,
                       settings.target + ": the target is the source; choose another name");
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

JobReport runJob(const JobSettings& settings, const JobProgressFunction& progress) {
  const Clock clock;
  requireOtherTarget(settings);
  TargetFile target(settings.target, settings.replacesTarget);
  WantedFrames source(openSources(settings.sources), settings.selection, settings.changes);
  JobReport report;
  report.head = source.head();
  for (const JobSource& from : settings.sources) {
    report.progress.bytesTotal += from.input.size().value_or(0);
  }
  target.create(settings.targetFormat, report.head, settings.sink);
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
  target.finish();
  report.passedOver = source.passedOver();
  return report;
}

}  // namespace xlatr
