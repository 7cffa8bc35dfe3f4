// The external program that reads BLF logs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/process.hpp"

namespace xlatr {

// A converter program in a folder. Questions are answered by a decimal number, which the program prints as its only
// line; one that prints none answers by its exit code, where that is from 0 to 127. A program that can't be run, or
// ends in another way, answers -1. Questions have no time limit. Safe from any thread.
class BlfConverter {
 public:
  // By default the folder of the library.
  BlfConverter();
  explicit BlfConverter(const std::string& folder);

  // The program itself, whether or not it is there.
  [[nodiscard]] const std::string& path() const { return path_; }

  // Versions are four pairs of decimal digits, 4070100 for 4.7.1.0; negative when there is no answer.
  [[nodiscard]] std::int32_t queryApiVersion() const;
  [[nodiscard]] std::int32_t queryFileVersion(const std::string& source) const;
  [[nodiscard]] std::int32_t queryObjectsCount(const std::string& source) const;

  // Starts the program on its way from the source to the table. It uses the shared block of this name.
  [[nodiscard]] bool start(const std::string& source, const std::string& table, const std::string& blockName,
                           platform::Process& process) const;

 private:
  [[nodiscard]] std::int32_t ask(const std::vector<std::string>& arguments) const;

  std::string path_;
};

// 4070100 is 4.0701, and "4.7.1.0" with a line end. A negative one, which is none, is 0.0.
[[nodiscard]] double blfVersionNumber(std::int32_t version);
[[nodiscard]] std::string blfVersionText(std::int32_t version);

// The number of the API version of the converter beside the library, which is asked at the first call. The shared
// library calls it while it is loaded. Safe from any thread.
[[nodiscard]] double blfCurrentVersion();

}  // namespace xlatr
