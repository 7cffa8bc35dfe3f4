#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xlatr/xlatr.h"

// What the end-to-end tests share. They see the library through its public headers alone.
namespace xlatr::conversions {

// A fresh directory. It is the current directory of the process while the object lives, and is then removed with all
// its files. The tests use relative paths, so the paths in file headers are the same wherever they run.
class WorkingDirectory {
 public:
  WorkingDirectory();
  ~WorkingDirectory();
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

  // Names of everything in it, sorted.
  [[nodiscard]] std::vector<std::string> names() const;

 private:
  std::filesystem::path previous_;
  std::filesystem::path path_;
};

// What a conversion returned and left in its record. The record itself is freed already.
struct Outcome {
  std::int32_t code = 0;
  std::int32_t status = 0;
  bool finished = false;
  std::string text;
  std::vector<std::string> files;
};

// Runs one synchronous conversion. Without a version the library takes the current one of the format.
Outcome convert(const char* source, const char* target, std::optional<double> version,
                TraceFormat format = XLATR_FORMAT_TRC);
Outcome convert(const std::string& source, const std::string& target, std::optional<double> version,
                TraceFormat format = XLATR_FORMAT_TRC);

// Expects a conversion that succeeded, wrote these files, and returned this text.
void expectSuccess(const Outcome& outcome, const std::vector<std::string>& files, std::string_view text = "");

[[nodiscard]] std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view content);

// The lines of a text, without their LF or CR LF. A last line without a line end counts.
[[nodiscard]] std::vector<std::string> splitLines(std::string_view text);

// Joins lines with CR LF, as the library ends them; the last one is ended as well.
[[nodiscard]] std::string joinLines(const std::vector<std::string>& lines);

// Equal to the byte. The failure names the offset and the line of the first difference, and shows both lines with
// visible line ends and trailing blanks.
[[nodiscard]] testing::AssertionResult sameBytes(std::string_view actual, std::string_view expected);

// The same for binary data: the failure shows the bytes around the first difference.
[[nodiscard]] testing::AssertionResult sameData(std::string_view actual, std::string_view expected);

// The seven file versions of TRC, as text and as the number that options carry.
struct TrcVersion {
  const char* text;
  double number;
  bool hasBusColumn;  // false: a target of this version is one file per bus
};
[[nodiscard]] const std::vector<TrcVersion>& trcVersions();
[[nodiscard]] const TrcVersion& trcVersion(std::string_view text);

// tests/golden in the source tree.
[[nodiscard]] std::filesystem::path goldenDirectory();

// The TRC source there of each version, and the header of each version.
[[nodiscard]] std::filesystem::path goldenTrcSource(std::string_view version);
[[nodiscard]] std::filesystem::path goldenTrcHeader(std::string_view version);

// The lines of a written TRC file after its header, whose length is that of the golden header of the version.
[[nodiscard]] std::vector<std::string> linesAfterHeader(const std::filesystem::path& path, std::string_view version);

}  // namespace xlatr::conversions
