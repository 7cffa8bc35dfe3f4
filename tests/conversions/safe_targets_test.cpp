#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "conversions/conversion_support.hpp"

// The option under which targets have their names when they are whole.
namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

Outcome convertSafely(const std::string& source, const std::string& target, double version, TraceFormat format) {
  std::vector<ConversionOption> tags(2);
  tags[0].tag = XLATR_OPTION_TARGET_VERSION;
  tags[0].value.version = version;
  tags[1].tag = XLATR_OPTION_SAFE;
  tags[1].value.flag = 1;
  ConversionOptions options{};
  options.target_format = format;
  options.option_count = static_cast<std::uint32_t>(tags.size());
  options.options = tags.data();
  ConversionResult result{};
  Outcome outcome;
  outcome.code = xlatr_convert(source.c_str(), target.c_str(), &options, &result);
  outcome.status = result.status;
  outcome.finished = result.finished != 0;
  outcome.text = result.text;
  if (result.files != nullptr) {
    outcome.files.assign(result.files, result.files + result.file_count);
  }
  xlatr_free(&result);
  return outcome;
}

std::string traceOfTwoBuses() {
  return joinLines({";$FILEVERSION=2.1", ";$STARTTIME=45658.25", ";$COLUMNS=N,O,T,B,I,d,R,L,D",
                    "      1         0.000 DT 1      0100 Rx -  1    11",
                    "      2         1.000 DT 2      0200 Rx -  1    22"});
}

TEST(SafeTargets, haveTheSameBytesAndNames) {
  const WorkingDirectory directory;
  writeFile("a.trc", traceOfTwoBuses());
  for (const TraceFormat format :
       {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC, XLATR_FORMAT_CSV, XLATR_FORMAT_BTR, XLATR_FORMAT_BTRC}) {
    const double version = format == XLATR_FORMAT_TRC ? 2.0 : -1.0;
    const Outcome plain = convert("a.trc", "x.out", version, format);
    ASSERT_EQ(plain.code, XLATR_SUCCESS) << format;
    std::vector<std::string> contents;
    for (const std::string& name : plain.files) {
      contents.push_back(readFile(name));
    }
    const Outcome safe = convertSafely("a.trc", "x.out", version, format);
    expectSuccess(safe, plain.files);
    for (std::size_t at = 0; at < plain.files.size(); ++at) {
      EXPECT_TRUE(readFile(plain.files[at]) == contents[at]) << plain.files[at];
    }
  }
  EXPECT_EQ(convertSafely("a.trc", "m.mf4", -1.0, XLATR_FORMAT_MF4).code, XLATR_SUCCESS);
  EXPECT_EQ(std::ranges::count_if(directory.names(), [](const std::string& name) { return name.starts_with('.'); }), 0);
}

// Of 2,000 files per bus each needs a lock, but a process may have fewer files open.
TEST(SafeTargets, mayBeMoreThanAProcessMayOpen) {
  constexpr int kBuses = 2000;
  constexpr rlim_t kMostFiles = 256;
  const WorkingDirectory directory;
  std::string trace = joinLines({";$FILEVERSION=2.1", ";$STARTTIME=45658.25", ";$COLUMNS=N,O,T,B,I,d,R,L,D"});
  for (int bus = 1; bus <= kBuses; ++bus) {
    trace += std::to_string(bus) + " 0.000 DT " + std::to_string(bus) + " 0100 Rx - 1 11\r\n";
  }
  writeFile("a.trc", trace);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit few{kMostFiles, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  const Outcome outcome = convertSafely("a.trc", "x.trc", 2.0, XLATR_FORMAT_TRC);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(outcome.code, XLATR_SUCCESS) << outcome.text;
  EXPECT_EQ(outcome.files.size(), static_cast<std::size_t>(kBuses));
  EXPECT_EQ(directory.names().size(), static_cast<std::size_t>(kBuses) + 1);
}

TEST(SafeTargets, ofAGroupHaveOneWriter) {
  const WorkingDirectory directory;
  writeFile("a.trc", traceOfTwoBuses());
  const int other = ::open(".x.trc.xlatr-part", O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(::flock(other, LOCK_EX), 0);
  const Outcome refused = convertSafely("a.trc", "x.trc", 2.0, XLATR_FORMAT_TRC);
  ::close(other);
  EXPECT_EQ(refused.code, XLATR_FAILED);
  EXPECT_EQ(refused.text, "x.trc: another conversion is writing this file ");
  EXPECT_EQ(directory.names(), (Names{".x.trc.xlatr-part", "a.trc"}));
  // What a killed process has left, which somebody wants to save.
  writeFile("y.trc", traceOfTwoBuses());
  fs::create_hard_link("y.trc", ".y.trc.xlatr-part");
  EXPECT_EQ(convertSafely("y.trc", "y.trc", 2.0, XLATR_FORMAT_TRC).code, XLATR_FAILED);
  EXPECT_EQ(readFile("y.trc"), traceOfTwoBuses());
  EXPECT_EQ(readFile(".y.trc.xlatr-part"), traceOfTwoBuses());
  fs::remove("y.trc");
  fs::remove(".y.trc.xlatr-part");
  EXPECT_EQ(convertSafely("a.trc", "none/x.trc", 2.0, XLATR_FORMAT_TRC).text,
            "none/x.trc: cannot create: No such file or directory ");
  EXPECT_EQ(convertSafely("a.trc", "x.trc", 2.0, XLATR_FORMAT_TRC).code, XLATR_SUCCESS);
  EXPECT_EQ(directory.names(), (Names{"a.trc", "x_BUS1.trc", "x_BUS2.trc"}));
}

// The second bus has no place: the first one, which is whole, goes too, and what was there before stays.
TEST(SafeTargets, areAllOrNone) {
  const WorkingDirectory directory;
  writeFile("a.trc", traceOfTwoBuses());
  writeFile("x_BUS1.trc", "old");
  fs::create_directory("x_BUS2.trc");
  const Outcome outcome = convertSafely("a.trc", "x.trc", 2.0, XLATR_FORMAT_TRC);
  EXPECT_EQ(outcome.code, XLATR_FAILED);
  EXPECT_EQ(outcome.text, "x_BUS2.trc: this is a folder: name a file in it ");
  EXPECT_EQ(outcome.files, Names());
  EXPECT_EQ(readFile("x_BUS1.trc"), "old");
  EXPECT_EQ(directory.names(), (Names{"a.trc", "x_BUS1.trc", "x_BUS2.trc"}));
}

TEST(SafeTargets, failuresNameTheTarget) {
  const WorkingDirectory directory;
  writeFile("a.trc", traceOfTwoBuses());
  const Outcome outcome = convertSafely("a.trc", "none/x.trc", 2.1, XLATR_FORMAT_TRC);
  EXPECT_EQ(outcome.code, XLATR_FAILED);
  EXPECT_TRUE(outcome.text.starts_with("none/x.trc: cannot create")) << outcome.text;
}

}  // namespace
}  // namespace xlatr::conversions
