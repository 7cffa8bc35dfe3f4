// The external program that reads BLF logs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/process.hpp"

namespace xlatr {

// A converter program in a folder. It answers a question with a decimal number, which it prints as its only line. If it
// prints none, its exit code is the answer, if that is from 0 to 127. The answer of a program that can't be run, or
// ends in another way, is -1. Questions have no time limit. Safe from any thread.
class BlfConverter {
 public:
  // By default the folder of the library.
  BlfConverter();
  explicit BlfConverter(const std::string& folder);

  // The path of the program, whether or not it exists.
  [[nodiscard]] const std::string& path() const { return path_; }

  // Versions are four pairs of decimal digits, 4070100 for 4.7.1.0; negative if there is no answer.
  [[nodiscard]] std::int32_t queryApiVersion() const;
  [[nodiscard]] std::int32_t queryFileVersion(const std::string& source) const;
  [[nodiscard]] std::int32_t queryObjectsCount(const std::string& source) const;

  // Starts the program, which turns the source into the table. It uses the shared block of this name.
  [[nodiscard]] bool start(const std::string& source, const std::string& table, const std::string& blockName,
                           platform::Process& process) const;

 private:
  [[nodiscard]] std::int32_t ask(const std::vector<std::string>& arguments) const;

  std::string path_;
};

// 4070100 is 4.0701, and "4.7.1.0" with a line end. A negative number is not a version and gives 0.0.
[[nodiscard]] double blfVersionNumber(std::int32_t version);
[[nodiscard]] std::string blfVersionText(std::int32_t version);

// The API version of the converter next to the library, which is asked at the first call. The shared library makes that
// call when it is loaded. Safe from any thread.
[[nodiscard]] double blfCurrentVersion();

}  // namespace xlatr
