// A whole conversion: sources, what is wanted of them, and a target, in one process and without a file in between.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame_selection.hpp"
#include "frames/frame_stream.hpp"
#include "frames/merged_frames.hpp"
#include "frames/split_target.hpp"
#include "frames/target_file.hpp"
#include "frames/wanted_frames.hpp"
#include "frames/watched_frames.hpp"
#include "io/input_file.hpp"
#include "io/output_target.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

// One file, or other bytes of a trace.
struct JobSource {
  InputSource input;
  TraceFormat format = XLATR_FORMAT_NONE;  // NONE: that of its content
};

struct JobSettings {
  std::vector<JobSource> sources = {};  // at least one; several are merged by time
  OutputTarget target = std::string();
  TargetSettings writing = {};
  SplitSettings split = {};
  MergeSettings merging = {};
  bool strict = false;  // it fails if not everything comes over, but for the rounding of times
  FrameSelection selection = {};
  FrameChanges changes = {};
};

struct JobReport {
  StreamHead head = {};  // of the source, or of all sources merged
  Account account = {};
  std::vector<PassedOver> passedOver = {};
  ReadProgress progress = {};
  std::vector<WrittenFile> files = {};
};

// Runs to its end. Raises a FrameFailure or a std::ios_base::failure; the target is then as it was before, or not
// there, and so is the part of a split target that was being written. `report` says how far it came. May run on several
// threads at once, each with its own target. `progress` may be empty.
void runJob(const JobSettings& settings, JobReport& report, const ReadProgressFunction& progress = {});

}  // namespace xlatr
