#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "conversions/conversion_support.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr const char* kNotSupported = "The specified conversion is invalid or not supported ";

// A TRC 2.1 file with these lines after its header.
std::string trace21(const Lines& lines) {
  Lines all = {";$FILEVERSION=2.1", ";$STARTTIME=45658.25", ";$COLUMNS=N,O,T,B,I,d,R,L,D"};
  all.insert(all.end(), lines.begin(), lines.end());
  return joinLines(all);
}

const std::string kFrameOnBus1 = "      1         0.000 DT 1      0100 Rx -  1    11";
const std::string kFrameOnBus2 = "      2         1.000 DT 2      0200 Rx -  1    22";

void expectFailure(const Outcome& outcome, const std::string& text) {
  EXPECT_EQ(outcome.code, XLATR_FAILED);
  EXPECT_EQ(outcome.status, XLATR_FAILED);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.text, text);
}

// ---- What a conversion is asked for ----

TEST(Conversion, ofAMissingSourceConvertsNothing) {
  const WorkingDirectory directory;
  for (const char* source : std::array<const char*, 3>{"missing.trc", "", nullptr}) {
    SCOPED_TRACE(source == nullptr ? "null" : source);
    const Outcome outcome = convert(source, "out.trc", 2.1);
    EXPECT_EQ(outcome.code, XLATR_NOTHING_CONVERTED);
    EXPECT_EQ(outcome.status, XLATR_NOTHING_CONVERTED);
    EXPECT_TRUE(outcome.finished);
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.files, Lines{});
  }
  EXPECT_EQ(directory.names(), Lines{});
}

TEST(Conversion, takesTheStemOfTheTargetAndTheExtensionOfTheFormat) {
  struct Case {
    const char* target;
    const char* file;
  };
  static constexpr std::array<Case, 8> kCases = {{{"x.trc", "x.trc"},
                                                  {"x.TRC", "x.trc"},
                                                  {"x.asc", "x.trc"},
                                                  {"x.Mf4", "x.trc"},
                                                  {"x.bak", "x.bak.trc"},
                                                  {"x", "x.trc"},
                                                  {"x.y.csv", "x.y.trc"},
                                                  {"sub.d/x", "x.trc"}}};
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.target);
    const WorkingDirectory directory;
    writeFile("in.trc", trace21({kFrameOnBus1}));
    fs::create_directory("sub.d");
    expectSuccess(convert("in.trc", c.target, 2.1), {c.file});
    EXPECT_TRUE(fs::exists(fs::path(c.target).parent_path() / c.file));
  }
}

TEST(Conversion, toANullTargetHasAnEmptyStem) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  expectSuccess(convert("in.trc", nullptr, 2.1), {".trc"});
  EXPECT_EQ(directory.names(), (Lines{".trc", "in.trc"}));
}

TEST(Conversion, overwritesAnExistingTarget) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  writeFile("out.trc", std::string(100000, 'x'));
  expectSuccess(convert("in.trc", "out.trc", 2.1), {"out.trc"});
  EXPECT_EQ(linesAfterHeader("out.trc", "2.1"), Lines{kFrameOnBus1});
}

TEST(Conversion, writesTheNewestVersionWhenNoneIsAskedFor) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  expectSuccess(convert("in.trc", "three.trc", 3.0), {"three.trc"});
  const Lines expected = linesAfterHeader("three.trc", "3.0");
  expectSuccess(convert("in.trc", "unsaid.trc", std::nullopt), {"unsaid.trc"});
  EXPECT_EQ(linesAfterHeader("unsaid.trc", "3.0"), expected);
  EXPECT_TRUE(readFile("unsaid.trc").starts_with(";$FILEVERSION=3.0\r\n"));
  expectSuccess(convert("in.trc", "minus.trc", -1.0), {"minus.trc"});
  EXPECT_EQ(linesAfterHeader("minus.trc", "3.0"), expected);
}

TEST(Conversion, ignoresOptionsThatDoNotApply) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  std::array<ConversionOption, 5> items{};
  items[0].tag = 99;
  items[1].tag = XLATR_OPTION_SESSION;
  items[1].value.session = 0;
  items[2].tag = XLATR_OPTION_SEPARATOR;
  items[2].value.separator = ',';
  items[3].tag = XLATR_OPTION_ZIPPED;
  items[3].value.flag = 1;
  items[4].tag = XLATR_OPTION_TARGET_VERSION;
  items[4].value.version = 2.1;
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  options.option_count = static_cast<std::uint32_t>(items.size());
  options.options = items.data();
  EXPECT_EQ(xlatr_convert("in.trc", "out.trc", &options, nullptr), XLATR_SUCCESS);
  EXPECT_EQ(linesAfterHeader("out.trc", "2.1"), Lines{kFrameOnBus1});
}

TEST(Conversion, toAFormatWithoutAWriterIsRefused) {
  for (const TraceFormat format : {0, 8, 128, 3, 256, -1}) {
    SCOPED_TRACE(format);
    const WorkingDirectory directory;
    writeFile("in.trc", trace21({kFrameOnBus1}));
    const Outcome outcome = convert("in.trc", "out.trc", std::nullopt, format);
    expectFailure(outcome, kNotSupported);
    EXPECT_EQ(outcome.files, Lines{});
    EXPECT_EQ(directory.names(), Lines{"in.trc"});
  }
}

TEST(Conversion, ofAFileOfNoTraceFormatIsNotSupported) {
  for (const char* source : {"in.txt", "in", "in.csv"}) {
    SCOPED_TRACE(source);
    const WorkingDirectory directory;
    writeFile(source, trace21({kFrameOnBus1}));
    expectFailure(convert(source, "out.trc", 2.1), kNotSupported);
    EXPECT_EQ(directory.names(), Lines{source});
  }
}

TEST(Conversion, findsTheExtensionInAnyCase) {
  const WorkingDirectory directory;
  writeFile("IN.Trc", trace21({kFrameOnBus1}));
  expectSuccess(convert("IN.Trc", "out.trc", 2.1), {"out.trc"});
  EXPECT_EQ(linesAfterHeader("out.trc", "2.1"), Lines{kFrameOnBus1});
}

// ---- Result and progress records ----

TEST(ConversionRecords, resultIsReusedAndFreedTwice) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  ConversionResult result{};
  EXPECT_EQ(xlatr_convert("missing.trc", "out.trc", &options, &result), XLATR_NOTHING_CONVERTED);
  EXPECT_STREQ(result.text, "");
  EXPECT_EQ(result.file_count, 0U);
  EXPECT_EQ(result.files, nullptr);
  EXPECT_EQ(xlatr_convert("in.trc", "out.trc", &options, &result), XLATR_SUCCESS);
  EXPECT_STREQ(result.text, "");
  ASSERT_EQ(result.file_count, 1U);
  EXPECT_STREQ(result.files[0], "out.trc");
  for (int i = 0; i < 2; ++i) {
    xlatr_free(&result);
    EXPECT_EQ(result.text, nullptr);
    EXPECT_EQ(result.files, nullptr);
    EXPECT_EQ(result.file_count, 1U);
  }
  xlatr_free(nullptr);
}

TEST(ConversionRecords, progressIsFilledOnceWithTheFirstState) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  ConversionProgress progress{};
  progress.percent = -1.0F;
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  options.progress = &progress;
  EXPECT_EQ(xlatr_convert("in.trc", "out.trc", &options, nullptr), XLATR_SUCCESS);
  EXPECT_GE(progress.id, 1U);
  EXPECT_EQ(progress.finished, 0);
  EXPECT_EQ(progress.status, XLATR_IN_PROGRESS);
  EXPECT_EQ(progress.percent, 0.0F);
}

TEST(ConversionRecords, progressOfAnUnknownConversionIsRefused) {
  ConversionProgress progress{};
  progress.id = 0xFFFFFFFFFFFFFFFFU;
  EXPECT_EQ(xlatr_get_progress(&progress), XLATR_UNKNOWN_CONVERSION);
  progress.id = 0;
  EXPECT_EQ(xlatr_get_progress(&progress), XLATR_UNKNOWN_CONVERSION);
  EXPECT_EQ(xlatr_get_progress(nullptr), XLATR_BAD_ARGUMENT);
}

// Waits until the conversion is reaped, and checks its progress until then.
void awaitEnd(std::uint64_t id) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  float percent = 0.0F;
  ConversionProgress progress{};
  progress.id = id;
  while (true) {
    const std::int32_t code = xlatr_get_progress(&progress);
    if (code == XLATR_UNKNOWN_CONVERSION) {
      return;
    }
    ASSERT_EQ(code, XLATR_SUCCESS);
    EXPECT_EQ(progress.id, id);
    EXPECT_GE(progress.percent, percent);
    EXPECT_LE(progress.percent, 100.0F);
    if (progress.finished != 0) {
      EXPECT_EQ(progress.percent, 100.0F);
    }
    percent = progress.percent;
    ASSERT_LT(std::chrono::steady_clock::now(), limit) << "the conversion does not end";
    std::this_thread::yield();
  }
}

TEST(ConversionRecords, asynchronousConversionsHaveConsecutiveIdsAndEnd) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1, "      2         1.000 DT 17     0200 Rx -  1    22"}));
  std::array<ConversionProgress, 2> progress{};
  std::array<ConversionResult, 2> results{};
  for (std::size_t i = 0; i < 2; ++i) {
    ConversionOptions options{};
    options.target_format = XLATR_FORMAT_TRC;
    options.asynchronous = 1;
    options.progress = &progress[i];
    const std::string target = "out" + std::to_string(i) + ".trc";
    EXPECT_EQ(xlatr_convert("in.trc", target.c_str(), &options, &results[i]), XLATR_SUCCESS);
  }
  EXPECT_EQ(progress[1].id, progress[0].id + 1);
  for (std::size_t i = 0; i < 2; ++i) {
    awaitEnd(progress[i].id);
    const std::string target = "out" + std::to_string(i) + ".trc";
    EXPECT_EQ(results[i].status, XLATR_SUCCESS);
    EXPECT_EQ(results[i].finished, 1);
    EXPECT_EQ(std::string(results[i].text), "The Converted file '" + target +
                                                "' contents at least one invalid BUS number: 17.\n"
                                                "Only BRIX trace files with bus numbers from 1 to 16 are supported ");
    ASSERT_EQ(results[i].file_count, 1U);
    EXPECT_EQ(results[i].files[0], target);
    xlatr_free(&results[i]);
  }
}

// ---- Targets that are refused ----

TEST(Target, equalToTheSourceIsRefused) {
  for (const char* target : {"same.trc", "SAME.trc", "same", "Same.MF4"}) {
    SCOPED_TRACE(target);
    const WorkingDirectory directory;
    const std::string content = trace21({kFrameOnBus1});
    writeFile("same.trc", content);
    const Outcome outcome = convert("same.trc", target, 2.1);
    expectFailure(outcome, "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath ");
    EXPECT_EQ(outcome.files, Lines{});
    EXPECT_EQ(directory.names(), Lines{"same.trc"});
    EXPECT_TRUE(sameBytes(readFile("same.trc"), content));
  }
}

TEST(Target, maySay259CharactersAndNot260) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  const std::string folder(200, 'd');
  fs::create_directory(folder);
  const std::string fitting = folder + "/" + std::string(54, 'f') + ".trc";
  ASSERT_EQ(fitting.size(), 259U);
  expectSuccess(convert("in.trc", fitting, 2.1), {std::string(54, 'f') + ".trc"});
  const std::string tooLong = folder + "/" + std::string(55, 'f') + ".trc";
  expectFailure(convert("in.trc", tooLong, 2.1), "Target path too long (260). Maximum allowed is 260. ");
  EXPECT_FALSE(fs::exists(tooLong));
}

// The part of the name that states the bus counts too.
TEST(Target, isTooLongWithItsBus) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  const std::string folder(200, 'd');
  fs::create_directory(folder);
  const Outcome outcome = convert("in.trc", folder + "/" + std::string(50, 'f') + ".trc", 2.0);
  expectFailure(outcome, "Target path too long (260). Maximum allowed is 260. ");
  EXPECT_EQ(outcome.files, Lines{});
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST(Target, inAMissingFolderOrOverADirectoryFails) {
  const WorkingDirectory directory;
  writeFile("in.trc", trace21({kFrameOnBus1}));
  fs::create_directory("out.trc");
  for (const char* target : {"missing/out.trc", "out.trc"}) {
    SCOPED_TRACE(target);
    const Outcome outcome = convert("in.trc", target, 2.1);
    EXPECT_EQ(outcome.code, XLATR_FAILED);
    EXPECT_EQ(outcome.status, XLATR_FAILED);
    EXPECT_NE(outcome.text, "");
    EXPECT_EQ(outcome.files, Lines{});
  }
  EXPECT_EQ(directory.names(), (Lines{"in.trc", "out.trc"}));
}

// ---- Lines ----

TEST(Lines, beyondTheFlushIntervalKeepTheirOrder) {
  const WorkingDirectory directory;
  Lines lines;
  for (int i = 1; i <= 1000; ++i) {
    const std::string number = std::to_string(i);
    lines.push_back(std::string(7 - number.size(), ' ') + number + std::string(10 - number.size(), ' ') + number +
                    ".000 DT 1      0100 Rx -  1    11");
  }
  writeFile("in.trc", trace21(lines));
  expectSuccess(convert("in.trc", "out.trc", 2.1), {"out.trc"});
  EXPECT_EQ(linesAfterHeader("out.trc", "2.1"), lines);
}

// ---- The host program's locale ----

// The German locale of the build folder: the test does not depend on the locales of the machine.
class HostLocale {
 public:
  HostLocale() : previous_(std::setlocale(LC_ALL, nullptr)) {
    ::setenv("LOCPATH", XLATR_LOCALES_DIR, 1);
    isGerman_ = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  }
  ~HostLocale() { std::setlocale(LC_ALL, previous_.c_str()); }
  HostLocale(const HostLocale&) = delete;
  HostLocale& operator=(const HostLocale&) = delete;

  [[nodiscard]] bool isGerman() const { return isGerman_; }

 private:
  std::string previous_;
  bool isGerman_ = false;
};

class OddSource : public testing::TestWithParam<const char*> {};

// A source without an end, or one that waits for a writer, must not block the caller.
TEST_P(OddSource, endsAtOnce) {
  const WorkingDirectory directory;
  const std::string pipe = std::string("pipe.") + GetParam();
  const std::string device = std::string("device.") + GetParam();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", device);
  const TraceFormat target = std::string(GetParam()) == "trc" ? XLATR_FORMAT_CSV : XLATR_FORMAT_TRC;
  for (const std::string& source : {pipe, device}) {
    EXPECT_NE(convert(source, "out.x", std::nullopt, target).code, XLATR_SUCCESS) << source;
  }
}

INSTANTIATE_TEST_SUITE_P(All, OddSource, testing::Values("trc", "asc", "ltrc", "btrc", "btr", "mf4"));

TEST(HostLocaleOfTheProgram, changesNoByte) {
  const HostLocale locale;
  if (!locale.isGerman()) {
    GTEST_SKIP() << "the program localedef, of the package locales, is not installed, so there is no locale de_DE";
  }
  for (const char* source : {"1.0", "2.1"}) {
    for (const char* target : {"1.2", "1.3", "2.1", "3.0"}) {
      SCOPED_TRACE(std::string(source) + " to " + target);
      const WorkingDirectory directory;
      const std::string name = std::string("source-") + source + ".trc";
      fs::copy_file(goldenTrcSource(source), name);
      EXPECT_EQ(convert(name, "out.trc", trcVersion(target).number).status, XLATR_SUCCESS);
      const fs::path golden = goldenTrcSource(source).parent_path() / ("to-" + std::string(target)) / "out.trc";
      EXPECT_TRUE(sameBytes(readFile("out.trc"), readFile(golden)));
      EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    }
  }
}

}  // namespace
}  // namespace xlatr::conversions
