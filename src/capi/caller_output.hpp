// Traces whose bytes go to a caller's function.
#pragma once

#include <string>
#include <utility>

#include "io/output_target.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {

// A caller's record, whose context is released once, when nothing needs it any more.
class CallerOutput {
 public:
  // Takes the record over. What is null or does not begin with its size has nothing to be released.
  explicit CallerOutput(const xlatr_output* caller);
  ~CallerOutput();
  CallerOutput(CallerOutput&& other) noexcept
      : record_(std::exchange(other.record_, {})), name_(std::move(other.name_)) {}
  CallerOutput& operator=(CallerOutput&&) = delete;

  // Raises a FrameFailure of a bad argument for a record that breaks the rules. The record is then used up.
  [[nodiscard]] OutputTarget target() &&;

  [[nodiscard]] const xlatr_output& record() const { return record_; }
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  xlatr_output record_{};
  std::string name_;
};

}  // namespace xlatr::capi
