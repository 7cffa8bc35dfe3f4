// A trace on its way to its name, or to a caller who takes its bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "io/output_target.hpp"
#include "io/safe_file.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

struct TargetSettings {
  TraceFormat format = XLATR_FORMAT_NONE;  // NONE: that of the extension
  bool replaces = false;                   // a file that is there already
  bool keepsPartial = false;               // what is not finished stays, under a name that says so
  std::vector<std::string> sources = {};   // files that it is made from, and that it must not replace
  SinkSettings sink = {};
};

// A file is a SafeFile: it has its name when it is whole. What is not finished is removed, or kept as partial.
//
// Raises FrameFailures: TargetExists, TargetIsSource, NotWritten, BadArgument, and TargetRefused for what the system
// refuses.
class TargetFile {
 public:
  // Nothing is created yet.
  TargetFile(OutputTarget target, TargetSettings settings);
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  void create(const StreamHead& head);
  void write(const FrameBatch& batch, Account& account);
  // Nothing can be written after it.
  void finish();
  // From create to finish.
  [[nodiscard]] bool isOpen() const { return sink_ != nullptr; }
  [[nodiscard]] std::uint64_t bytesWritten() const { return sink_ == nullptr ? bytes_ : sink_->bytesWritten(); }
  [[nodiscard]] const std::string& name() const { return target_.name(); }

 private:
  template <typename Action>
  void guarded(Action action);
  void abandon() noexcept;

  OutputTarget target_;
  TargetSettings settings_;
  std::optional<SafeFile> file_;  // nothing for bytes
  std::unique_ptr<FrameSink> sink_;
  std::uint64_t bytes_ = 0;  // of a finished file
};

}  // namespace xlatr
