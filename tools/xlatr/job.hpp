// One conversion on the complete way, and what became of it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "arguments.hpp"
#include "exit_code.hpp"
#include "progress.hpp"
#include "wanted.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {

// What all conversions of a run have in common.
class JobSettings {
 public:
  // Raises a CommandFailure with ExitCode::WrongUsage for what can't be understood.
  explicit JobSettings(const Arguments& arguments);

  [[nodiscard]] TraceFormat sourceFormat() const { return sourceFormat_; }
  // 0 if no option names it.
  [[nodiscard]] TraceFormat targetFormat() const { return sink_.format; }
  // The format of this target, which its extension may name. Raises a CommandFailure with ExitCode::WrongUsage if
  // nothing does, or if the format is not written or has no such version.
  [[nodiscard]] TraceFormat formatOfTarget(const std::string& target) const;
  [[nodiscard]] bool splits() const { return sink_.split_bytes != 0 || sink_.split_ns != 0 || sink_.split_buses != 0; }

 private:
  friend class Job;

  TraceFormat sourceFormat_ = 0;
  Wanted wanted_;
  std::string separator_;
  xlatr_sink_options sink_{};
  bool strict_ = false;
  bool alignsStarts_ = false;
  bool closesGaps_ = false;
};

struct JobPaths {
  std::vector<std::string> sources;  // "-" is standard input
  std::string target;                // "-" is standard output
};

struct WrittenFile {
  std::string path;
  std::uint64_t bytes = 0;
  std::uint64_t frames = 0;
};

// What the library tells of a conversion, and what the program makes of it.
struct JobReport {
  JobPaths paths;
  ExitCode exitCode = ExitCode::Failed;
  std::string error;     // on one line; empty if it came to its end
  bool skipped = false;  // there was a target already
  xlatr_head head{};     // its texts are in the two below
  std::string producer;
  xlatr_account account{};
  std::vector<WrittenFile> written;
  std::vector<std::pair<std::string, std::uint64_t>> passedOver;
  double seconds = 0.0;
};

// Runs to its end, whatever that is; an interruption (signals.hpp) cancels it.
[[nodiscard]] JobReport runJob(const JobSettings& settings, const JobPaths& paths, Progress& progress);

// What a failure of the library means for the program.
[[nodiscard]] ExitCode exitCodeOf(xlatr_code code);

// The format that --from names; XLATR_FORMAT_NONE without it. Raises a CommandFailure with ExitCode::WrongUsage.
[[nodiscard]] TraceFormat sourceFormatOf(const Arguments& arguments);

// A name or an extension of a format in any case. Raises a CommandFailure with ExitCode::WrongUsage.
[[nodiscard]] TraceFormat formatValue(const char* option, const std::string& name);

}  // namespace xlatr::cli
