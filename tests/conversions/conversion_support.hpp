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

// A fresh directory, the process's current one while the object lives; removed with all in it at the end. Paths in file
// headers stay the same wherever the tests run, since the tests use relative ones.
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

// What a conversion answered and left in its record, after the record has gone through xlatr_free.
struct Outcome {
  std::int32_t code = 0;
  std::int32_t status = 0;
  bool finished = false;
  std::string text;
  std::vector<std::string> files;
};

// Runs one synchronous conversion. Without a version the library takes the format's current one.
Outcome convert(const char* source, const char* target, std::optional<double> version,
                TraceFormat format = XLATR_FORMAT_TRC);
Outcome convert(const std::string& source, const std::string& target, std::optional<double> version,
                TraceFormat format = XLATR_FORMAT_TRC);

// The outcome of a conversion that wrote these files and had nothing to say, or only this.
void expectSuccess(const Outcome& outcome, const std::vector<std::string>& files, std::string_view text = "");

[[nodiscard]] std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view content);

// The lines of a text, without their LF or CR LF. A last line without a line end counts.
[[nodiscard]] std::vector<std::string> splitLines(std::string_view text);

// Joins lines with CR LF, as the library ends them; the last one is ended as well.
[[nodiscard]] std::string joinLines(const std::vector<std::string>& lines);

// Equal to the byte. The failure names the offset and the line of the first difference and shows both lines with their
// line ends and trailing blanks visible.
[[nodiscard]] testing::AssertionResult sameBytes(std::string_view actual, std::string_view expected);

// The written file equals the golden one. With XLATR_UPDATE_GOLDEN=1 in the environment the golden one is rewritten
// instead.
void expectGolden(const std::filesystem::path& written, const std::filesystem::path& golden);

// The seven file versions of TRC, as text and as the number that options carry.
struct TrcVersion {
  const char* text;
  double number;
  bool hasBusColumn;  // false: a target of this version is one file a bus
};
[[nodiscard]] const std::vector<TrcVersion>& trcVersions();
[[nodiscard]] const TrcVersion& trcVersion(std::string_view text);

// tests/golden/trc in the source tree.
[[nodiscard]] std::filesystem::path goldenDirectory();

// The lines of a written TRC file behind its header, whose length is that of the golden header of the version.
[[nodiscard]] std::vector<std::string> linesBehindHeader(const std::filesystem::path& path, std::string_view version);

}  // namespace xlatr::conversions
