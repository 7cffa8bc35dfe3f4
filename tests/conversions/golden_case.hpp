#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xlatr/xlatr.h"

// The folders of tests/golden. Their README says what stands in them.
namespace xlatr::conversions {

// What one source is to become under one set of options.
struct GoldenTarget {
  std::string name;                             // of its section; empty: of the whole case
  std::filesystem::path folder;                 // where its expected files lie
  std::vector<std::optional<double>> versions;  // the conversion runs once for each; nothing: no version is asked for
  TraceFormat format = 0;
  std::string path;  // as the conversion gets it
  std::optional<char> separator;
  bool sorted = false;
  bool zipped = false;
  std::vector<std::uint32_t> sessions;
  std::int32_t code = XLATR_SUCCESS;
  std::string text;
  bool textGoesOn = false;           // the text only begins like that
  std::vector<std::string> files;    // that the result lists, in this order
  std::vector<std::string> folders;  // that lie there before
};

struct GoldenCase {
  std::filesystem::path folder;
  std::filesystem::path source;          // the file as it lies in tests/golden
  std::string sourceName;                // what it is called where it is converted
  std::optional<std::int64_t> modified;  // when it was last changed, in seconds since 1970
  std::vector<GoldenTarget> targets;
  std::vector<std::filesystem::path> unitTestFiles;  // read by unit tests alone
};

// The ending of files that are written as text; support/layout.hpp describes them.
inline constexpr std::string_view kLayoutEnding = ".layout";

// The folders of all cases, sorted.
[[nodiscard]] std::vector<std::filesystem::path> goldenCaseFolders();

// Reads the options of a case. Throws std::runtime_error that names the line for what it does not understand.
[[nodiscard]] GoldenCase readGoldenCase(const std::filesystem::path& folder);

// Where a file that a target leaves is expected: as it is, or as a layout if there is one.
[[nodiscard]] std::filesystem::path expectedFile(const GoldenTarget& target, const std::string& name);

}  // namespace xlatr::conversions
