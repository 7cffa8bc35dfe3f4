// Why a trace can't be opened, written or converted. What the system refuses of a source is a
// std::ios_base::failure; what stands in a file is none of these.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace xlatr {

enum class FrameProblem : std::uint8_t {
  NotFound,        // there is no such file
  NotATrace,       // the file is none that we read
  NotWritten,      // the format has no writer, or the version is none of its
  TargetExists,    // and must not be replaced
  TargetIsSource,  // the same file by any name
  TargetRefused,   // by the system: a full disk, a folder that is not there, no permission
  Cancelled,
  Incomplete,  // not everything came over, and that was not wanted
  BadArgument,
};

// The text names the file and says what to do.
class FrameFailure : public std::runtime_error {
 public:
  FrameFailure(FrameProblem problem, const std::string& text) : std::runtime_error(text), problem_(problem) {}

  [[nodiscard]] FrameProblem problem() const { return problem_; }

 private:
  FrameProblem problem_;
};

}  // namespace xlatr
