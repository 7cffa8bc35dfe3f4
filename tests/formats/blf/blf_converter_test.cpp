#include "formats/blf/blf_converter.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "formats/blf/blf_info.hpp"
#include "support/blf_stand_in.hpp"

namespace xlatr {
namespace {

class BlfConverterTest : public testing::Test {
 protected:
  [[nodiscard]] BlfConverter converter() const { return BlfConverter(folder_.path().string()); }
  [[nodiscard]] std::int32_t answerOf(const std::string& commands) const {
    test::writeStandIn(folder_, "", "-GetApiVersion) " + commands + " ;;\n");
    return converter().queryApiVersion();
  }

  test::TempFolder folder_;
};

TEST_F(BlfConverterTest, liesInItsFolder) {
  EXPECT_EQ(converter().path(), folder_.file("BLF2CSV.exe"));
}

TEST_F(BlfConverterTest, answersByTheNumberThatItPrints) {
  EXPECT_EQ(answerOf("echo 4070100; exit 20"), 4070100);
  EXPECT_EQ(answerOf("printf 12"), 12);
  EXPECT_EQ(answerOf("printf '12\\r\\n'"), 12);
  EXPECT_EQ(answerOf("echo -3; exit 253"), -3);
  EXPECT_EQ(answerOf("echo 2147483647; exit 255"), 2147483647);
}

TEST_F(BlfConverterTest, answersByItsExitCodeOtherwise) {
  for (const char* commands : {"exit 7", "echo; exit 7", "echo garbage; exit 7", "echo 1 2; exit 7", "echo 12x; exit 7",
                               "echo 1; echo 2; exit 7", "echo ' 12'; exit 7", "echo 0x10; exit 7",
                               "echo 2147483648; exit 7", "echo 12 >&2; exit 7", "head -c 1000000 /dev/zero; exit 7"}) {
    EXPECT_EQ(answerOf(commands), 7) << commands;
  }
  EXPECT_EQ(answerOf("exit 127"), 127);
}

// An exit code keeps eight bits of a negative answer, and a signal looks like an exit code above 127.
TEST_F(BlfConverterTest, hasNoAnswerWhenItsExitCodeIsNone) {
  EXPECT_EQ(answerOf("exit 128"), -1);
  EXPECT_EQ(answerOf("exit 255"), -1);
  EXPECT_EQ(answerOf("kill -9 $$"), -1);
  EXPECT_EQ(answerOf("kill -SEGV $$"), -1);
}

// What a converter has started may outlive it, with its standard output open.
TEST_F(BlfConverterTest, doesNotWaitForWhatAConverterLeavesRunning) {
  EXPECT_EQ(answerOf("sleep 1000 & echo $! > \"$(dirname \"$0\")/pid\"; exit 7"), 7);
  std::system(("kill " + folder_.read("pid")).c_str());
}

TEST_F(BlfConverterTest, hasNoAnswerWhenItCantBeRun) {
  EXPECT_EQ(converter().queryApiVersion(), -1);
  static_cast<void>(folder_.write("BLF2CSV.exe", "#!/bin/sh\necho 1\n"));
  EXPECT_EQ(converter().queryApiVersion(), -1) << "not executable";
  std::filesystem::remove(folder_.file("BLF2CSV.exe"));
  std::filesystem::create_directory(folder_.file("BLF2CSV.exe"));
  EXPECT_EQ(converter().queryApiVersion(), -1) << "a folder";
}

TEST_F(BlfConverterTest, getsAPathAsOneArgument) {
  test::writeStandIn(folder_, "", "-GetFileVersion) test $# = 2 && cat \"$2\" ;;\n");
  for (const char* name :
       {"a b.blf", "it's \"x\".blf", "$HOME.blf", "`id`;exit 1.blf", "*.blf", "\\.blf", "\xE4.blf"}) {
    EXPECT_EQ(converter().queryFileVersion(folder_.write(name, "42")), 42) << name;
  }
}

TEST_F(BlfConverterTest, tellsVersionAndObjectsOfALog) {
  test::writeStandIn(folder_);
  const BlfInfo info(TraceFileInfo(folder_.write("x.blf", test::kConverterTable)), converter());
  EXPECT_TRUE(info.getValid());
  EXPECT_DOUBLE_EQ(info.getVersion(), 4.080203);
  EXPECT_EQ(info.getVersionText(), "4.8.2.3\n");
  EXPECT_EQ(info.objectsCount(), 3U);
  EXPECT_EQ(info.getStartTime(), 0.0);
  EXPECT_EQ(info.getHeaderLength(), 0U);
  ASSERT_EQ(info.getSupportedVersions().size(), 1U);
  EXPECT_EQ(info.getSupportedVersions()[0], 0.0);
  EXPECT_EQ(std::vector<TraceFormat>(info.getAllowedConvertions().begin(), info.getAllowedConvertions().end()),
            (std::vector<TraceFormat>{XLATR_FORMAT_CSV, XLATR_FORMAT_TRC, XLATR_FORMAT_LIN}));
}

TEST_F(BlfConverterTest, isNotAskedAboutAFileOfAnotherFormat) {
  test::writeStandIn(folder_, "", "-*) echo asked > \"$(dirname \"$0\")/asked\" ;;\n");
  const BlfInfo info(TraceFileInfo(folder_.write("x.trc", "")), converter());
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getVersionText(), "");
  EXPECT_FALSE(folder_.has("asked"));
}

TEST_F(BlfConverterTest, knowsNothingOfALogWithoutAConverter) {
  const BlfInfo info(TraceFileInfo(folder_.write("x.blf", "")), converter());
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getVersionText(), "0.0.0.0\n");
  EXPECT_EQ(info.objectsCount(), 0U);
}

// The newest version depends on the program that comes with the library, not on the one that read this log.
TEST_F(BlfConverterTest, currentVersionIsThatOfTheConverterBesideTheLibrary) {
  test::writeStandIn(folder_, "", "-GetApiVersion) echo 9090909 ;;\n");
  const BlfInfo info(TraceFileInfo(folder_.write("x.blf", "")), converter());
  EXPECT_EQ(info.getCurrentVersion(), blfVersionNumber(BlfConverter().queryApiVersion()));
  EXPECT_EQ(info.getCurrentVersion(), blfCurrentVersion());
  EXPECT_NE(info.getCurrentVersion(), blfVersionNumber(info.converter().queryApiVersion()));
}

TEST_F(BlfConverterTest, negativeAnswersDoNotCount) {
  test::writeStandIn(folder_, "", "-*) echo -4070100 ;;\n");
  const BlfInfo info(TraceFileInfo(folder_.write("x.blf", "")), converter());
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.objectsCount(), 0U);
}

TEST(BlfVersion, isFourPairsOfDigits) {
  EXPECT_EQ(blfVersionNumber(4070100), 4.0701);
  EXPECT_EQ(blfVersionNumber(4080203), 4 + 8 / 100.0 + 2 / 10000.0 + 3 / 1000000.0) << "added pair by pair";
  EXPECT_DOUBLE_EQ(blfVersionNumber(12345678), 12.345678);
  EXPECT_DOUBLE_EQ(blfVersionNumber(99), 0.000099);
  EXPECT_EQ(blfVersionNumber(0), 0.0);
  EXPECT_EQ(blfVersionNumber(-1), 0.0);
}

}  // namespace
}  // namespace xlatr
