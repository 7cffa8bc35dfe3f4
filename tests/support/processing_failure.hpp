// The failures of exported functions, as a client sees them.
#pragma once

#include <functional>
#include <string>

#include "xlatr/failures.hpp"

namespace xlatr::test {

// The text of the ConverterProcessingException that the action raises.
inline std::string processingFailureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ConverterProcessingException& failure) {
    return failure.what();
  }
  return "no failure";
}

}  // namespace xlatr::test
