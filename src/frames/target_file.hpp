// A trace on its way to its name.
#pragma once

#include <memory>
#include <string>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "platform/files.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

// Writes a trace beside its name and gives it the name when it is whole: under the name there is the old file or the
// whole new one at any time. What is not finished is removed; what a process that was killed has left is written over
// by the next one with the same target. A device, which can't be renamed, is written to as it is.
//
// Raises FrameFailures: TargetExists, NotWritten, and TargetRefused for what the system refuses.
class TargetFile {
 public:
  // Nothing is created yet.
  TargetFile(std::string path, bool replaces);
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  // An XLATR_FORMAT_NONE is the format that the path's extension names.
  void create(TraceFormat format, const StreamHead& head, const SinkSettings& settings);
  void write(const FrameBatch& batch, Account& account);
  // Nothing can be written after it.
  void finish();
  // From create to finish.
  [[nodiscard]] bool isOpen() const { return sink_ != nullptr; }

 private:
  template <typename Action>
  void guarded(Action action);
  void reserveName();
  void drop();

  std::string path_;     // as the user knows it
  std::string target_;   // behind its links
  std::string written_;  // what is written: a file beside the target, or the target itself
  platform::File lock_;  // of the file beside
  bool beside_ = false;  // there is such a file
  std::unique_ptr<FrameSink> sink_;
};

}  // namespace xlatr
