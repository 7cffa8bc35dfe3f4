// The five high-level functions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <string>

#include "support/conversion.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/xlatr.h"

namespace xlatr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kTrace[] = ";$FILEVERSION=1.2\n1) 10.5 3 Rx 0123 1 AA\n";
constexpr char kLine[] = "     1)       10.500  3  Rx         0123  1  AA\r\n";

class ConversionExportsTest : public testing::Test {
 protected:
  TempFolder folder_;
  std::string source_ = folder_.write("source.trc", kTrace);
};

// The layout that callers of other languages rely on.
TEST(ConversionRecords, haveTheirLayout) {
  static_assert(sizeof(void*) == 8);
  EXPECT_EQ(offsetof(ConversionOptions, reserved), 0U);
  EXPECT_EQ(offsetof(ConversionOptions, target_format), 4U);
  EXPECT_EQ(offsetof(ConversionOptions, asynchronous), 8U);
  EXPECT_EQ(offsetof(ConversionOptions, progress), 16U);
  EXPECT_EQ(offsetof(ConversionOptions, option_count), 24U);
  EXPECT_EQ(offsetof(ConversionOptions, options), 32U);
  EXPECT_EQ(sizeof(ConversionOptions), 40U);
  EXPECT_EQ(offsetof(ConversionOption, tag), 0U);
  EXPECT_EQ(offsetof(ConversionOption, value), 8U);
  EXPECT_EQ(sizeof(ConversionOption), 16U);
  EXPECT_EQ(offsetof(ConversionProgress, id), 0U);
  EXPECT_EQ(offsetof(ConversionProgress, finished), 8U);
  EXPECT_EQ(offsetof(ConversionProgress, status), 12U);
  EXPECT_EQ(offsetof(ConversionProgress, percent), 16U);
  EXPECT_EQ(sizeof(ConversionProgress), 24U);
  EXPECT_EQ(offsetof(ConversionResult, status), 0U);
  EXPECT_EQ(offsetof(ConversionResult, finished), 4U);
  EXPECT_EQ(offsetof(ConversionResult, text), 8U);
  EXPECT_EQ(offsetof(ConversionResult, file_count), 16U);
  EXPECT_EQ(offsetof(ConversionResult, files), 24U);
  EXPECT_EQ(sizeof(ConversionResult), 32U);
}

TEST(ConversionMatrix, isReturned) {
  EXPECT_EQ(xlatr_get_formats_convertible_from(16), 0);
  EXPECT_EQ(xlatr_get_formats_convertible_from(1), 119);
  EXPECT_EQ(xlatr_get_formats_convertible_from(3), 0);
  EXPECT_EQ(xlatr_get_formats_convertible_to(2), 1);
  EXPECT_EQ(xlatr_get_formats_convertible_to(8), 128);
  EXPECT_EQ(xlatr_get_formats_convertible_to(0), 255);
}

TEST_F(ConversionExportsTest, convertsAndReports) {
  Result result;
  ConversionProgress progress{};
  EXPECT_EQ(Options().version(1.2).convert(source_.c_str(), folder_.file("x.trc").c_str(), &result, &progress),
            XLATR_SUCCESS);
  EXPECT_EQ(result.status(), XLATR_SUCCESS);
  EXPECT_TRUE(result.finished());
  EXPECT_EQ(result.text(), "");
  EXPECT_THAT(result.files(), ElementsAre("x.trc"));
  EXPECT_GE(progress.id, 1U);
  EXPECT_EQ(progress.finished, 0);
  EXPECT_EQ(progress.status, XLATR_IN_PROGRESS);
  EXPECT_EQ(progress.percent, 0.0F);
  EXPECT_THAT(folder_.read("x.trc"), testing::EndsWith(kLine));
}

TEST_F(ConversionExportsTest, reportsAMissingSourceByItsStatusAlone) {
  for (const std::string missing : {"none.trc", ""}) {
    Result result;
    EXPECT_EQ(Options().convert(folder_.file(missing), folder_.file("x.trc"), result), XLATR_NOTHING_CONVERTED);
    EXPECT_EQ(result.status(), XLATR_NOTHING_CONVERTED);
    EXPECT_TRUE(result.finished());
    EXPECT_EQ(result.text(), "");
    EXPECT_THAT(result.files(), IsEmpty());
  }
  EXPECT_FALSE(folder_.has("x.trc"));
}

TEST_F(ConversionExportsTest, takesNullForEveryPointerButTheOptions) {
  EXPECT_EQ(Options().convert(nullptr, nullptr, nullptr), XLATR_NOTHING_CONVERTED);
  EXPECT_EQ(xlatr_convert(source_.c_str(), "x", nullptr, nullptr), XLATR_BAD_ARGUMENT);
  EXPECT_EQ(xlatr_get_progress(nullptr), XLATR_BAD_ARGUMENT);
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  options.option_count = 3;  // with no items
  EXPECT_EQ(xlatr_convert(source_.c_str(), folder_.file("x.trc").c_str(), &options, nullptr), XLATR_SUCCESS);
}

TEST_F(ConversionExportsTest, takesStemAndExtensionOfTheTarget) {
  const struct {
    const char* target;
    const char* written;
  } cases[] = {{"a.trc", "a.trc"}, {"b.asc", "b.trc"},     {"c.TRC", "c.trc"}, {"d.bak", "d.bak.trc"},
               {"e", "e.trc"},     {"f.x.mf4", "f.x.trc"}, {".trc", ".trc"},   {"g.trc.gz", "g.trc.gz.trc"}};
  for (const auto& test : cases) {
    Result result;
    EXPECT_EQ(Options().convert(source_, folder_.file(test.target), result), XLATR_SUCCESS) << test.target;
    EXPECT_THAT(result.files(), ElementsAre(test.written));
    EXPECT_TRUE(folder_.has(test.written)) << test.target;
  }
}

TEST_F(ConversionExportsTest, writesTheCurrentVersionWhenNoneIsAskedFor) {
  for (const Options& options : {Options(), Options().version(-1.0)}) {
    Result result;
    EXPECT_EQ(options.convert(source_, folder_.file("x.trc"), result), XLATR_SUCCESS);
    EXPECT_THAT(folder_.read("x.trc"), testing::StartsWith(";$FILEVERSION=3.0\r\n"));
  }
}

TEST_F(ConversionExportsTest, ignoresOptionsThatItDoesNotKnow) {
  Options options;
  ConversionOption unknown{};
  unknown.tag = 99;
  options.items.push_back(unknown);
  unknown.tag = -1;
  options.items.push_back(unknown);
  options.session(0).session(7).version(1.2);
  Result result;
  EXPECT_EQ(options.convert(source_, folder_.file("x.trc"), result), XLATR_SUCCESS);
  EXPECT_THAT(folder_.read("x.trc"), testing::StartsWith(";$FILEVERSION=1.2\r\n"));
}

TEST_F(ConversionExportsTest, refusesATargetThatNothingWrites) {
  for (const TraceFormat format : {0, 8, 128, 3, 256, -1}) {
    Options options;
    options.format = format;
    Result result;
    EXPECT_EQ(options.convert(source_, folder_.file("x.trc"), result), XLATR_FAILED) << format;
    EXPECT_EQ(result.status(), XLATR_FAILED);
    EXPECT_TRUE(result.finished());
    EXPECT_EQ(result.text(), "The specified conversion is invalid or not supported ");
    EXPECT_THAT(result.files(), IsEmpty());
  }
  EXPECT_FALSE(folder_.has("x.trc"));
}

TEST_F(ConversionExportsTest, refusesASourceThatCannotBecomeTheTarget) {
  for (const char* const name : {"s.csv", "s.dat"}) {
    Result result;
    EXPECT_EQ(Options().convert(folder_.write(name, "text"), folder_.file("x.trc"), result), XLATR_FAILED);
    EXPECT_EQ(result.text(), "The specified conversion is invalid or not supported ");
  }
}

// BLF logs go through the objects only.
TEST_F(ConversionExportsTest, refusesABlfSource) {
  Result result;
  EXPECT_EQ(Options().convert(folder_.write("s.blf", "text"), folder_.file("x.trc"), result), XLATR_FAILED);
  EXPECT_EQ(result.text(), "The specified converting object is invalid ");
  EXPECT_FALSE(folder_.has("x.trc"));
}

TEST_F(ConversionExportsTest, keepsAnOldTextUntilTheNextConversion) {
  Result result;
  Options options;
  options.format = XLATR_FORMAT_NONE;
  EXPECT_EQ(options.convert(source_, folder_.file("x.trc"), result), XLATR_FAILED);
  EXPECT_EQ(Options().convert(source_, folder_.file("x.trc"), result), XLATR_SUCCESS);
  EXPECT_EQ(result.text(), "");
  EXPECT_THAT(result.files(), ElementsAre("x.trc"));
}

TEST_F(ConversionExportsTest, freesTwiceWithoutHarm) {
  ConversionResult result{};
  EXPECT_EQ(Options().convert(source_.c_str(), folder_.file("x.trc").c_str(), nullptr), XLATR_SUCCESS);
  xlatr_free(&result);
  xlatr_free(&result);
  EXPECT_EQ(result.text, nullptr);
  EXPECT_EQ(result.files, nullptr);
}

TEST_F(ConversionExportsTest, knowsNoConversionThatWasNeverStarted) {
  ConversionProgress progress{};
  for (const std::uint64_t id : {std::uint64_t{0}, ~std::uint64_t{0}}) {
    progress.id = id;
    EXPECT_EQ(xlatr_get_progress(&progress), XLATR_UNKNOWN_CONVERSION);
  }
}

TEST_F(ConversionExportsTest, numbersConversionsOneByOne) {
  Options options;
  options.asynchronous = true;
  Result first;
  Result second;
  ConversionProgress firstProgress{};
  ConversionProgress secondProgress{};
  EXPECT_EQ(options.convert(source_.c_str(), folder_.file("a.trc").c_str(), &first, &firstProgress), XLATR_SUCCESS);
  EXPECT_EQ(options.convert(source_.c_str(), folder_.file("b.trc").c_str(), &second, &secondProgress), XLATR_SUCCESS);
  EXPECT_EQ(secondProgress.id, firstProgress.id + 1);
  waitForEnd(firstProgress.id);
  waitForEnd(secondProgress.id);
  EXPECT_TRUE(first.finished());
  EXPECT_TRUE(second.finished());
  EXPECT_EQ(xlatr_get_progress(&firstProgress), XLATR_UNKNOWN_CONVERSION);
}

TEST_F(ConversionExportsTest, tellsHowFarAnAsynchronousConversionIs) {
  std::string trace = kTrace;
  for (int line = 0; line < 100000; ++line) {
    trace += "1) 10.5 3 Rx 0123 1 AA\n";
  }
  source_ = folder_.write("large.trc", trace);
  Options options;
  options.asynchronous = true;
  Result result;
  ConversionProgress progress{};
  EXPECT_EQ(options.convert(source_.c_str(), folder_.file("x.trc").c_str(), &result, &progress), XLATR_SUCCESS);
  float last = 0.0F;
  while (xlatr_get_progress(&progress) == XLATR_SUCCESS) {
    EXPECT_GE(progress.percent, last);
    EXPECT_LE(progress.percent, 100.0F);
    EXPECT_EQ(progress.status, progress.finished == 1 ? XLATR_SUCCESS : XLATR_IN_PROGRESS);
    last = progress.percent;
  }
  EXPECT_EQ(result.status(), XLATR_SUCCESS);
  EXPECT_THAT(result.files(), ElementsAre("x.trc"));
}

// A conversion that has ended stays known for a moment, which a caller sees now and then.
TEST_F(ConversionExportsTest, percentIsNoNumberWhereThereIsNothingToDo) {
  constexpr int kMostRounds = 10000;
  Options options;
  options.asynchronous = true;
  bool seen = false;
  for (int round = 0; round < kMostRounds && !seen; ++round) {
    Result result;
    ConversionProgress progress{};
    ASSERT_EQ(options.convert(folder_.file("none.trc").c_str(), folder_.file("x.trc").c_str(), &result, &progress),
              XLATR_NOTHING_CONVERTED);
    seen = xlatr_get_progress(&progress) == XLATR_SUCCESS;
    if (seen) {
      EXPECT_TRUE(std::isnan(progress.percent));
      EXPECT_EQ(progress.status, XLATR_NOTHING_CONVERTED);
      EXPECT_EQ(progress.finished, 1);
    }
    waitForEnd(progress.id);
    EXPECT_EQ(result.status(), XLATR_NOTHING_CONVERTED);
  }
  EXPECT_TRUE(seen);
}

TEST_F(ConversionExportsTest, leavesTheResultToTheCallerWhoGivesNone) {
  EXPECT_EQ(Options().convert(source_.c_str(), folder_.file("x.trc").c_str(), nullptr), XLATR_SUCCESS);
  EXPECT_TRUE(folder_.has("x.trc"));
}

TEST_F(ConversionExportsTest, writesAHeaderAloneForASourceWithoutMessages) {
  Result result;
  EXPECT_EQ(
      Options().version(2.1).convert(folder_.write("e.trc", ";$FILEVERSION=1.2\n"), folder_.file("x.trc"), result),
      XLATR_SUCCESS);
  EXPECT_THAT(result.files(), ElementsAre("x.trc"));
  EXPECT_THAT(folder_.read("x.trc"),
              testing::EndsWith(";---+-- ------+------ +- +- --+----- +- +- +--- +- -- -- -- -- -- -- --\r\n"));
}

TEST_F(ConversionExportsTest, writesNoFileForASplitSourceWithoutMessages) {
  Result result;
  EXPECT_EQ(
      Options().version(2.0).convert(folder_.write("e.trc", ";$FILEVERSION=1.2\n\n"), folder_.file("x.trc"), result),
      XLATR_SUCCESS);
  EXPECT_THAT(result.files(), IsEmpty());
}

TEST_F(ConversionExportsTest, cutsLongFileNamesTo260Characters) {
  // File systems take names of up to 255 characters, so the cut itself can't be reached here; the name must arrive
  // whole.
  const std::string folder = folder_.path().string();
  const std::string stem(254 - folder.size(), 'n');
  Result result;
  EXPECT_EQ(Options().convert(source_, folder_.file(stem), result), XLATR_SUCCESS) << result.text();
  EXPECT_THAT(result.files(), ElementsAre(stem + ".trc"));
}

// Bad input ----------------------------------------------------------------------------------------------------------

TEST_F(ConversionExportsTest, refusesATargetThatIsTheSource) {
  Result result;
  EXPECT_EQ(Options().convert(source_, source_, result), XLATR_FAILED);
  EXPECT_EQ(result.text(), "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath ");
  EXPECT_EQ(folder_.read("source.trc"), kTrace);
}

TEST_F(ConversionExportsTest, namesATargetPathThatIsTooLong) {
  for (const std::size_t length : {260U, 300U, 600U, 5000U}) {
    const std::string folder = folder_.path().string() + "/" + std::string(190 - folder_.path().string().size(), 'd');
    std::filesystem::create_directory(folder);
    std::string target = folder + "/";
    target += std::string(length - target.size() - 4, 'x') + ".trc";
    Result result;
    EXPECT_EQ(Options().convert(source_, target, result), XLATR_FAILED);
    EXPECT_THAT(result.text(), testing::MatchesRegex("Target path too long \\([0-9]+\\). Maximum allowed is 260. "))
        << length;
  }
}

TEST_F(ConversionExportsTest, countsAFolderAsNoSource) {
  std::filesystem::create_directory(folder_.path() / "folder.trc");
  Result result;
  EXPECT_EQ(Options().convert(folder_.file("folder.trc"), folder_.file("x.trc"), result), XLATR_NOTHING_CONVERTED);
}

TEST_F(ConversionExportsTest, namesAFolderInThePlaceOfTheTarget) {
  std::filesystem::create_directory(folder_.path() / "x.trc");
  Result result;
  EXPECT_EQ(Options().convert(source_, folder_.file("x.trc"), result), XLATR_FAILED);
  EXPECT_EQ(result.text(), folder_.file("x.trc") + ": cannot create: Is a directory ");
}

// Takes the superuser's right to read and write everything from the process for a while.
class OrdinaryUser {
 public:
  OrdinaryUser() : superuser_(::geteuid() == 0) {
    if (superuser_ && ::seteuid(kNobody) != 0) {
      ADD_FAILURE() << "can't become an ordinary user";
    }
  }
  ~OrdinaryUser() {
    if (superuser_ && ::seteuid(0) != 0) {
      ADD_FAILURE() << "can't become the superuser again";
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  bool superuser_;
};

TEST_F(ConversionExportsTest, namesWhatTheSystemForbids) {
  std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
  std::filesystem::create_directory(folder_.path() / "closed");
  std::filesystem::permissions(folder_.path() / "closed",
                               std::filesystem::perms::owner_exec | std::filesystem::perms::others_exec);
  const std::string locked = folder_.write("locked.trc", kTrace);
  std::filesystem::permissions(locked, std::filesystem::perms::none);
  const OrdinaryUser user;
  Result target;
  EXPECT_EQ(Options().convert(source_, folder_.file("closed/x.trc"), target), XLATR_FAILED);
  EXPECT_EQ(target.text(), folder_.file("closed/x.trc") + ": cannot create: Permission denied ");
  Result source;
  EXPECT_EQ(Options().convert(locked, folder_.file("x.trc"), source), XLATR_FAILED);
  EXPECT_EQ(source.text(), locked + ": cannot open: Permission denied ");
}

TEST_F(ConversionExportsTest, namesAFullDisk) {
  std::filesystem::create_symlink("/dev/full", folder_.path() / "x.trc");
  Result result;
  EXPECT_EQ(Options().convert(source_, folder_.file("x.trc"), result), XLATR_FAILED);
  EXPECT_EQ(result.text(), folder_.file("x.trc") + ": cannot write: No space left on device ");
}

TEST_F(ConversionExportsTest, namesAFullDiskOfOneBusAmongSeveral) {
  const std::string source =
      folder_.write("s.trc", ";$FILEVERSION=1.2\n1) 1 1 Rx 0001 0\n2) 2 2 Rx 0002 0\n3) 3 1 Rx 0003 0\n");
  std::filesystem::create_symlink("/dev/full", folder_.path() / "x_BUS1.trc");
  Result result;
  EXPECT_EQ(Options().version(1.1).convert(source, folder_.file("x.trc"), result), XLATR_FAILED);
  EXPECT_EQ(result.text(), folder_.file("x_BUS1.trc") + ": cannot write: No space left on device ");
  EXPECT_THAT(folder_.read("x_BUS2.trc"), testing::EndsWith("     1)         2.0  Rx         0002  0  \r\n"));
}

TEST_F(ConversionExportsTest, carriesBinaryGarbageLineByLine) {
  std::string garbage;
  std::uint32_t state = 1;
  for (int byte = 0; byte < 100000; ++byte) {
    state = state * 1664525 + 1013904223;
    garbage += static_cast<char>(state >> 24);
  }
  garbage = "x" + garbage;  // no comment line at the start
  Result result;
  EXPECT_EQ(Options().version(2.1).convert(folder_.write("g.trc", garbage), folder_.file("x.trc"), result),
            XLATR_SUCCESS);
  // Every line that is neither a comment nor blank is in the target, after a semicolon.
  std::string expected;
  for (std::size_t begin = 0; begin < garbage.size();) {
    const std::size_t end = std::min(garbage.find('\n', begin), garbage.size());
    std::string line = garbage.substr(begin, end - begin);
    if (end < garbage.size() && line.ends_with('\r')) {
      line.pop_back();
    }
    if (!line.starts_with(';') && line.find_first_not_of("\n\t \r") != std::string::npos) {
      expected += ";" + line + "\r\n";
    }
    begin = end + 1;
  }
  EXPECT_TRUE(folder_.read("x.trc") == expected);
}

TEST_F(ConversionExportsTest, losesNoLineAroundALineOf100Megabytes) {
  const std::string longLine(100000000, 'x');
  const std::string source =
      folder_.write("l.trc", ";$FILEVERSION=1.2\n1) 1 3 Rx 0001 0\n" + longLine + "\n2) 2 3 Rx 0002 0\n");
  Result result;
  EXPECT_EQ(Options().version(1.2).convert(source, folder_.file("x.trc"), result), XLATR_SUCCESS);
  EXPECT_TRUE(folder_.read("x.trc").ends_with("\r\n     1)        1.000  3  Rx         0001  0  \r\n;" + longLine +
                                              "\r\n     2)        2.000  3  Rx         0002  0  \r\n"));
}

}  // namespace
}  // namespace xlatr::test
