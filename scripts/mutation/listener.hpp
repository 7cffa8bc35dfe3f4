// Notes for each test of a program which mutants it reaches, in the file XLATR_MUTANTS_TESTS: a line with its name, the
// milliseconds that it took and the numbers. What is reached outside of tests is on the line of no name.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace mutants {

class Listener final : public testing::EmptyTestEventListener {
 public:
  Listener(const char* notes, const char* reachedPath) : notes_(notes, std::ios::app) {
    struct stat status = {};
    stat(reachedPath, &status);
    count_ = static_cast<std::size_t>(status.st_size);
  }

 private:
  void OnTestStart(const testing::TestInfo&) override { note("", 0); }

  void OnTestEnd(const testing::TestInfo& test) override {
    note(std::string(test.test_suite_name()) + '.' + test.name(), test.result()->elapsed_time());
  }

  void OnTestProgramEnd(const testing::UnitTest&) override { note("", 0); }

  void note(const std::string& name, long milliseconds) {
    std::string numbers;
    for (std::size_t number = 0; number < count_; ++number) {
      if (reached[number] != 0) {
        numbers += ' ' + std::to_string(number);
      }
    }
    std::memset(reached, 0, count_);
    if (!numbers.empty()) {
      notes_ << name << '\t' << milliseconds << '\t' << numbers << std::endl;
    }
  }

  std::ofstream notes_;
  std::size_t count_ = 0;
};

inline void listen() {
  const char* const notes = std::getenv("XLATR_MUTANTS_TESTS");
  const char* const reachedPath = std::getenv("XLATR_MUTANTS_REACHED");
  if (notes != nullptr && reachedPath != nullptr && reached != nullptr) {
    testing::UnitTest::GetInstance()->listeners().Append(new Listener(notes, reachedPath));
  }
}

}  // namespace mutants
