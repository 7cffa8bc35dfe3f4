// The failures of exported functions, seen from both sides: as an exception, and as the thread's last error.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include <unistd.h>

#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {

inline std::string lastErrorOf(std::uint32_t thread) {
  char buffer[256];
  ConverterLastError_GetText(thread, buffer, sizeof buffer);
  return buffer;
}

inline std::string lastError() {
  return lastErrorOf(static_cast<std::uint32_t>(::gettid()));
}

// The text of the failure of this class that the action raises, which must be this thread's last error too.
template <typename Failure>
std::string failureTextOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Failure& failure) {
    EXPECT_EQ(lastError(), failure.what());
    return failure.what();
  }
  return "no failure";
}

inline std::string processingFailureOf(const std::function<void()>& action) {
  return failureTextOf<ConverterProcessingException>(action);
}

}  // namespace xlatr::test
