#include "conversions/conversion_support.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

#include "support/temp_folder.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

std::string escaped(std::string_view line) {
  std::string result;
  for (const char c : line) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\r') {
      result += "\\r";
    } else if (c == '\n') {
      result += "\\n";
    } else if (c == '\\') {
      result += "\\\\";
    } else if (byte < 0x20 || byte > 0x7E) {
      std::array<char, 5> hex{};
      std::snprintf(hex.data(), hex.size(), "\\x%02X", static_cast<unsigned>(byte));
      result += hex.data();
    } else {
      result += c;
    }
  }
  return result;
}

// The line around an offset, with its line end.
std::string_view lineAt(std::string_view text, std::size_t offset) {
  const std::size_t lastBreak = offset == 0 ? std::string_view::npos : text.rfind('\n', offset - 1);
  const std::size_t begin = lastBreak == std::string_view::npos ? 0 : lastBreak + 1;
  const std::size_t end = text.find('\n', offset);
  return text.substr(begin, end == std::string_view::npos ? std::string_view::npos : end + 1 - begin);
}

// The row of sixteen bytes around an offset, and the row before it.
std::string bytesAround(std::string_view data, std::size_t offset) {
  constexpr std::size_t kRow = 16;
  const std::size_t row = offset / kRow * kRow;
  std::string text;
  for (std::size_t at = row < kRow ? 0 : row - kRow; at < std::min(row + kRow, data.size()); ++at) {
    std::array<char, 5> hex{};
    std::snprintf(hex.data(), hex.size(), at == offset ? "[%02X]" : " %02X ",
                  static_cast<unsigned>(static_cast<unsigned char>(data[at])));
    text += hex.data();
  }
  return text + (offset < data.size() ? "" : " ends here");
}

}  // namespace

WorkingDirectory::WorkingDirectory() : previous_(fs::current_path()) {
  std::random_device random;
  do {
    path_ = test::parentOfFolders() / ("xlatr-test-" + std::to_string(random()));
  } while (!fs::create_directory(path_));
  fs::current_path(path_);
}

WorkingDirectory::~WorkingDirectory() {
  std::error_code ignored;
  fs::current_path(previous_, ignored);
  fs::remove_all(path_, ignored);
}

std::vector<std::string> WorkingDirectory::names() const {
  std::vector<std::string> result;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
    result.push_back(entry.path().filename().string());
  }
  std::ranges::sort(result);
  return result;
}

Outcome convert(const char* source, const char* target, std::optional<double> version, TraceFormat format) {
  ConversionOption versionOption{};
  versionOption.tag = XLATR_OPTION_TARGET_VERSION;
  versionOption.value.version = version.value_or(0.0);
  ConversionOptions options{};
  options.target_format = format;
  options.option_count = version.has_value() ? 1 : 0;
  options.options = version.has_value() ? &versionOption : nullptr;
  ConversionResult result{};

  Outcome outcome;
  outcome.code = xlatr_convert(source, target, &options, &result);
  outcome.status = result.status;
  outcome.finished = result.finished == 1;
  outcome.text = result.text == nullptr ? "(null)" : result.text;
  for (std::uint32_t i = 0; i < result.file_count; ++i) {
    outcome.files.emplace_back(result.files[i]);
  }
  xlatr_free(&result);
  EXPECT_EQ(result.text, nullptr);
  EXPECT_EQ(result.files, nullptr);
  return outcome;
}

Outcome convert(const std::string& source, const std::string& target, std::optional<double> version,
                TraceFormat format) {
  return convert(source.c_str(), target.c_str(), version, format);
}

void expectSuccess(const Outcome& outcome, const std::vector<std::string>& files, std::string_view text) {
  EXPECT_EQ(outcome.code, XLATR_SUCCESS);
  EXPECT_EQ(outcome.status, XLATR_SUCCESS);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.text, text);
  EXPECT_EQ(outcome.files, files);
}

std::string readFile(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    ADD_FAILURE() << "cannot read " << path;
  }
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& path, std::string_view content) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
  stream.close();
  if (!stream) {
    ADD_FAILURE() << "cannot write " << path;
  }
}

std::vector<std::string> splitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    lines.emplace_back(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\r\n";
  }
  return text;
}

testing::AssertionResult sameBytes(std::string_view actual, std::string_view expected) {
  if (actual == expected) {
    return testing::AssertionSuccess();
  }
  const auto firstDifference = std::ranges::mismatch(actual, expected).in1;
  const auto offset = static_cast<std::size_t>(firstDifference - actual.begin());
  const auto line = 1 + std::count(actual.begin(), firstDifference, '\n');
  return testing::AssertionFailure() << "first difference at offset " << offset << ", line " << line << "\n  actual   "
                                     << escaped(lineAt(actual, offset)) << "\n  expected "
                                     << escaped(lineAt(expected, offset));
}

testing::AssertionResult sameData(std::string_view actual, std::string_view expected) {
  if (actual == expected) {
    return testing::AssertionSuccess();
  }
  const auto offset = static_cast<std::size_t>(std::ranges::mismatch(actual, expected).in1 - actual.begin());
  return testing::AssertionFailure() << "first difference at offset " << offset << ", sizes " << actual.size()
                                     << " and " << expected.size() << "\n  actual   " << bytesAround(actual, offset)
                                     << "\n  expected " << bytesAround(expected, offset);
}

const std::vector<TrcVersion>& trcVersions() {
  static const std::vector<TrcVersion> versions = {{"1.0", 1.0, false}, {"1.1", 1.1, false}, {"1.2", 1.2, true},
                                                   {"1.3", 1.3, true},  {"2.0", 2.0, false}, {"2.1", 2.1, true},
                                                   {"3.0", 3.0, true}};
  return versions;
}

const TrcVersion& trcVersion(std::string_view text) {
  return *std::ranges::find(trcVersions(), text, [](const TrcVersion& version) { return version.text; });
}

fs::path goldenDirectory() {
  return XLATR_GOLDEN_DIR;
}

fs::path goldenTrcSource(std::string_view version) {
  const std::string text(version);
  return goldenDirectory() / "trc-trc" / ("from-" + text) / ("source-" + text + ".trc");
}

fs::path goldenTrcHeader(std::string_view version) {
  return goldenDirectory() / "trc-trc/header" / ("to-" + std::string(version)) / "out.trc";
}

std::vector<std::string> linesAfterHeader(const fs::path& path, std::string_view version) {
  const std::size_t headerLines = splitLines(readFile(goldenTrcHeader(version))).size();
  std::vector<std::string> lines = splitLines(readFile(path));
  if (lines.size() < headerLines) {
    ADD_FAILURE() << path << " is shorter than its header";
    return lines;
  }
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(headerLines));
  return lines;
}

}  // namespace xlatr::conversions
