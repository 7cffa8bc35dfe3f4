#include "frames/target_file.hpp"

#include <exception>
#include <ios>
#include <utility>

#include "frames/frame_failure.hpp"
#include "frames/trace_file.hpp"

namespace xlatr {
namespace {

FrameProblem problemOf(TargetRefusal::Reason reason) {
  switch (reason) {
    case TargetRefusal::Reason::Exists:
      return FrameProblem::TargetExists;
    case TargetRefusal::Reason::Source:
      return FrameProblem::TargetIsSource;
    case TargetRefusal::Reason::Folder:
    case TargetRefusal::Reason::InUse:
      break;
  }
  return FrameProblem::TargetRefused;
}

}  // namespace

TargetFile::TargetFile(OutputTarget target, TargetSettings settings)
    : target_(std::move(target)), settings_(std::move(settings)) {
  if (target_.bytes() != nullptr) {
    return;
  }
  if (target_.name().empty()) {
    throw FrameFailure(FrameProblem::BadArgument, "there is no target");
  }
  guarded([&] {
    file_.emplace(target_.name(), TargetRules{.replaces = settings_.replaces, .sources = settings_.sources});
  });
}

TargetFile::~TargetFile() {
  abandon();
}

// Runs an action, and tells apart what the system refuses of a target.
template <typename Action>
void TargetFile::guarded(Action action) {
  try {
    action();
  } catch (const TargetRefusal& refusal) {
    throw FrameFailure(problemOf(refusal.reason()), refusal.what());
  } catch (const std::ios_base::failure& failure) {
    throw FrameFailure(FrameProblem::TargetRefused, file_ ? file_->named(failure.what()) : failure.what());
  }
}

void TargetFile::create(const StreamHead& head) {
  const TraceFormat format = writableFormat(target_.name(), settings_.format, settings_.sink.version);
  guarded([&] { sink_ = createTrace(file_ ? file_->reserve() : target_, format, head, settings_.sink); });
}

void TargetFile::write(const FrameBatch& batch, Account& account) {
  guarded([&] { sink_->write(batch, account); });
}

void TargetFile::finish() {
  guarded([&] {
    const std::unique_ptr<FrameSink> finished = std::move(sink_);
    finished->close();
    bytes_ = finished->bytesWritten();
    if (file_) {
      file_->finish();
    }
  });
}

// What has come so far is whole up to there if the system still takes what the sink has held back.
void TargetFile::abandon() noexcept {
  const std::unique_ptr<FrameSink> abandoned = std::move(sink_);
  if (!file_ || !settings_.keepsPartial) {
    return;
  }
  try {
    if (abandoned != nullptr) {
      abandoned->close();
    }
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): it is a fragment either way
  }
  try {
    static_cast<void>(file_->keepAsPartial());
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): then it is removed
  }
}

}  // namespace xlatr
