#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

#include "tools/program.hpp"

namespace xlatr::cli {
namespace {

using testing::HasSubstr;

TEST(Usage, versionIsTheProjects) {
  const Workspace here;
  const Ended run = here.run({"--version"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, "xlatr " XLATR_PROGRAM_VERSION "\n");
  EXPECT_EQ(run.errors, "");
}

TEST(Usage, everyCommandHasHelpWithExamples) {
  const std::vector<std::vector<std::string>> cases{
      {"--help"}, {"-h"}, {"convert", "--help"}, {"info", "--help"}, {"formats", "--help"}};
  const Workspace here;
  for (const auto& arguments : cases) {
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 0) << arguments.front();
    EXPECT_THAT(run.output, HasSubstr("Usage: xlatr")) << arguments.front();
    EXPECT_THAT(run.output, HasSubstr("Examples:\n  xlatr ")) << arguments.front();
    EXPECT_EQ(run.errors, "") << arguments.front();
  }
}

TEST(Usage, helpOfConvertNamesEveryOption) {
  const Workspace here;
  const Ended run = here.run({"convert", "--help"});
  for (const char* option : {"SOURCE", "TARGET", "--to ", "--target-version ", "--session ", "--separator ", "--zipped",
                             "--sorted", "-f,--force", "-q,--quiet"}) {
    EXPECT_THAT(run.output, HasSubstr(option));
  }
}

TEST(Usage, helpOfConvertNamesTheTargetFormatsAsTheFormatsCommandDoes) {
  const Workspace here;
  EXPECT_THAT(here.run({"convert", "--help"}).output, HasSubstr("(trc, btr, asc, ltrc, csv, btrc, mf4)"));
}

TEST(Usage, whatCannotBeUnderstoodIsOneLineAndCode2) {
  struct Case {
    const char* name;
    std::vector<std::string> arguments;
    const char* expected;
  };
  const std::vector<Case> cases{
      {"nothing", {}, "convert, info or formats"},
      {"unknown command", {"transform"}, "transform"},
      {"unknown option", {"formats", "--xml"}, "--xml"},
      {"no source", {"convert"}, "SOURCE"},
      {"no target", {"convert", "a.trc"}, "TARGET"},
      {"three paths", {"convert", "a.trc", "b.trc", "c.trc"}, "c.trc"},
      {"no file", {"info"}, "FILE"},
      {"target without extension", {"convert", "a.trc", "b"}, ".trc, .btr, .asc, .ltrc, .csv, .btrc, .mf4, or"},
      {"target of no format", {"convert", "a.trc", "b.dat"}, "--to"},
      {"unknown format", {"convert", "a.trc", "b.trc", "--to", "xml"}, "trc, btr, asc, ltrc, csv, btrc, mf4\n"},
      {"unknown version",
       {"convert", "a.trc", "b.trc", "--target-version", "2.2"},
       "1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0"},
      {"version that is no number", {"convert", "a.trc", "b.trc", "--target-version", "new"}, "--target-version"},
      {"version that is not finite", {"convert", "a.trc", "b.trc", "--target-version", "nan"}, "1.0, 1.1"},
      {"session 0", {"convert", "a.btr", "b.trc", "--session", "0"}, "--session"},
      {"session that is no number", {"convert", "a.btr", "b.trc", "--session", "x"}, "--session"},
      {"long separator", {"convert", "a.trc", "b.csv", "--separator", "::"}, "--separator"},
      {"empty separator", {"convert", "a.trc", "b.csv", "--separator", ""}, "--separator"},
  };
  const Workspace here;
  here.write("a.trc", traceOfBuses({1}));
  for (const auto& [name, arguments, expected] : cases) {
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 2) << name;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << name << ": " << run.errors;
    EXPECT_THAT(run.errors, HasSubstr(expected)) << name;
    EXPECT_EQ(run.output, "") << name;
  }
  EXPECT_THAT(here.names(), testing::ElementsAre("a.trc"));
}

// The library reads the host's version from this note.
TEST(Usage, programCarriesItsPackageNote) {
  const std::string text = R"({"type":"xlatr","name":"xlatr","version":")" XLATR_PROGRAM_VERSION "\"}";
  const std::array<std::uint32_t, 3> head{4, static_cast<std::uint32_t>(text.size() + 1), 0xcafe1a7eU};
  std::string note(sizeof head, '\0');
  std::memcpy(note.data(), head.data(), sizeof head);
  note += std::string("FDO\0", 4) + text + '\0';
  std::ifstream file(XLATR_PROGRAM, std::ios::binary);
  const std::string program{std::istreambuf_iterator<char>(file), {}};
  const auto place = program.find(note);
  ASSERT_NE(place, std::string::npos);
  EXPECT_EQ(place % 4, 0U);
}

TEST(Usage, outputThatCannotBeWrittenIsAnError) {
  const Workspace here;
  std::filesystem::create_symlink("/dev/full", here / ".stdout");
  const int errors = ::open((here / "errors").c_str(), O_WRONLY | O_CREAT, 0600);
  const pid_t program = here.start({"formats"}, errors);
  ::close(errors);
  EXPECT_EQ(Workspace::wait(program), 1);
  EXPECT_TRUE(isOneErrorLine(here.read("errors"))) << here.read("errors");
}

}  // namespace
}  // namespace xlatr::cli
