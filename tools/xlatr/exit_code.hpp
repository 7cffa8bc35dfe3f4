// What the program reports to its caller. Scripts rely on these numbers.
#pragma once

namespace xlatr::cli {

enum class ExitCode : int {
  Done = 0,
  Failed = 1,
  WrongUsage = 2,
  DoneWithWarnings = 3,
  TargetExists = 4,
  Interrupted = 130,  // what a shell reports for a program that Ctrl-C ended
};

}  // namespace xlatr::cli
