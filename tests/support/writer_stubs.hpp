// What the tests of writers share.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "io/trace_info.hpp"
#include "messages/message.hpp"
#include "util/failures.hpp"

namespace xlatr::test {

// An information object whose answers the test sets.
class StubInfo final : public TraceInfo {
 public:
  explicit StubInfo(std::string path, bool valid = true, double startTime = 44403.25)
      : TraceInfo(TraceFileInfo(""), XLATR_FORMAT_TRC), path_(std::move(path)), valid_(valid) {
    startDays_ = startTime;
  }
  [[nodiscard]] bool getValid() const override { return valid_; }
  [[nodiscard]] std::string getPath() const override { return path_; }

 private:
  std::string path_;
  bool valid_;
};

// A message of a class that no writer knows.
class ForeignMessage final : public Message {};

// The text of the ConverterProcessingException that the action raises.
inline std::string failureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ConverterProcessingException& failure) {
    return failure.what();
  }
  return "no failure";
}

}  // namespace xlatr::test
