// What the program reports to its caller. Scripts rely on these numbers.
#pragma once

#include <algorithm>
#include <array>

namespace xlatr::cli {

enum class ExitCode : int {
  Done = 0,
  Failed = 1,
  WrongUsage = 2,
  DoneWithLosses = 3,
  TargetExists = 4,
  TargetRefused = 5,  // a full disk, a folder that is not there
  HungUp = 129,       // 128 and the signal, as a shell reports a program that it ended
  Interrupted = 130,
  Terminated = 143,
};

// Of several files: that of the one that fared worst.
[[nodiscard]] inline ExitCode worse(ExitCode one, ExitCode other) {
  constexpr std::array kOrder = {ExitCode::Done,          ExitCode::DoneWithLosses, ExitCode::TargetExists,
                                 ExitCode::TargetRefused, ExitCode::Failed,         ExitCode::WrongUsage,
                                 ExitCode::HungUp,        ExitCode::Interrupted,    ExitCode::Terminated};
  return *std::max(std::find(kOrder.begin(), kOrder.end(), one), std::find(kOrder.begin(), kOrder.end(), other));
}

}  // namespace xlatr::cli
