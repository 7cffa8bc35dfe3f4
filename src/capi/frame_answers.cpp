#include "capi/frame_answers.hpp"

namespace xlatr::capi {

xlatr_code codeOf(FrameProblem problem) {
  switch (problem) {
    case FrameProblem::NotFound:
      return XLATR_ERROR_NOT_FOUND;
    case FrameProblem::NotATrace:
      return XLATR_ERROR_NOT_A_TRACE;
    case FrameProblem::NotWritten:
      return XLATR_ERROR_NOT_WRITTEN;
    case FrameProblem::TargetExists:
      return XLATR_ERROR_TARGET_EXISTS;
    case FrameProblem::TargetIsSource:
      return XLATR_ERROR_TARGET_IS_SOURCE;
    case FrameProblem::TargetRefused:
      return XLATR_ERROR_TARGET;
    case FrameProblem::Cancelled:
      return XLATR_ERROR_CANCELLED;
    case FrameProblem::Incomplete:
      return XLATR_ERROR_INCOMPLETE;
    case FrameProblem::BadArgument:
      return XLATR_ERROR_ARGUMENT;
  }
  return XLATR_ERROR_UNEXPECTED;
}

void keepText(std::string& error, const char* text) noexcept {
  try {
    error = text;
  } catch (...) {
    error.clear();
  }
}

}  // namespace xlatr::capi
