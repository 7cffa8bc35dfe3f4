#include "frames/target_file.hpp"

#include <algorithm>
#include <cstddef>
#include <ios>
#include <string_view>
#include <utility>

#include "frames/frame_failure.hpp"
#include "frames/trace_file.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

// ".drive.trc.xlatr-part": hidden, in the target's folder, and the same each time, so that a fragment is found again.
std::string nameBeside(std::string_view path) {
  constexpr std::string_view kEnd = ".xlatr-part";
  constexpr std::size_t kLongestName = 255;  // bytes, of most file systems
  const std::size_t nameAt = path.rfind('/') + 1;
  std::string_view name = path.substr(nameAt);
  name = name.substr(0, utf8Boundary(name, std::min(name.size(), kLongestName - kEnd.size() - 1)));
  std::string beside(path.substr(0, nameAt));
  beside += '.';
  beside += name;
  beside += kEnd;
  return beside;
}

// The text of a failure with the name that the user knows.
std::string named(std::string text, const std::string& written, const std::string& path) {
  return text.starts_with(written) ? text.replace(0, written.size(), path) : text;
}

}  // namespace

TargetFile::TargetFile(std::string path, bool replaces) : path_(std::move(path)) {
  if (path_.empty()) {
    throw FrameFailure(FrameProblem::BadArgument, "there is no target");
  }
  switch (platform::kindOfPath(path_)) {
    case platform::PathKind::Nothing:
      break;
    case platform::PathKind::File:
      if (!replaces) {
        throw FrameFailure(FrameProblem::TargetExists, path_ + ": the file exists and is not to be replaced");
      }
      break;
    case platform::PathKind::Folder:
      throw FrameFailure(FrameProblem::TargetRefused, path_ + ": this is a folder: name a file in it");
    case platform::PathKind::Device:
      written_ = path_;
      break;
  }
}

TargetFile::~TargetFile() {
  drop();
}

void TargetFile::drop() {
  sink_.reset();
  if (beside_) {
    platform::removeFile(written_);
    beside_ = false;
  }
  lock_ = platform::File();
}

// Runs an action, and tells apart what the system refuses of a target.
template <typename Action>
void TargetFile::guarded(Action action) {
  try {
    action();
  } catch (const std::ios_base::failure& failure) {
    throw FrameFailure(FrameProblem::TargetRefused, named(failure.what(), written_, path_));
  }
}

void TargetFile::reserveName() {
  if (!written_.empty()) {
    return;  // a device
  }
  target_ = platform::pathBehindLinks(path_);
  written_ = nameBeside(target_);
  lock_ = platform::File::lockForWriting(written_);
  if (!lock_.isOpen()) {
    throw FrameFailure(FrameProblem::TargetRefused, path_ + ": another conversion is writing this file");
  }
  beside_ = true;
}

void TargetFile::create(TraceFormat format, const StreamHead& head, const SinkSettings& settings) {
  const TraceFormat written = writableFormat(path_, format, settings.version);
  guarded([&] {
    reserveName();
    SinkSettings named = settings;
    named.name = path_;
    sink_ = createTrace(written_, written, head, named);
  });
}

void TargetFile::write(const FrameBatch& batch, Account& account) {
  guarded([&] { sink_->write(batch, account); });
}

void TargetFile::finish() {
  guarded([&] {
    sink_->close();
    sink_.reset();
    if (beside_) {
      platform::replaceFile(target_, written_);
      beside_ = false;
    }
  });
  drop();
}

}  // namespace xlatr
