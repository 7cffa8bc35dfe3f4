// Traces whose bytes come from a caller's functions.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "io/input_file.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {

// A caller's record, whose context is released once, when nothing needs it any more.
class CallerInput {
 public:
  // Takes the record over. What is null or does not begin with its size has nothing to be released.
  explicit CallerInput(const xlatr_input* caller);
  ~CallerInput();
  CallerInput(CallerInput&& other) noexcept
      : record_(std::exchange(other.record_, {})), name_(std::move(other.name_)) {}
  CallerInput& operator=(CallerInput&&) = delete;

  // Raises a FrameFailure of a bad argument for a record that breaks the rules. The record is then used up.
  [[nodiscard]] InputSource source() &&;

  [[nodiscard]] const xlatr_input& record() const { return record_; }
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  xlatr_input record_{};
  std::string name_;
};

}  // namespace xlatr::capi
