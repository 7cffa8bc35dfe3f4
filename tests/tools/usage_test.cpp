#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "help.hpp"
#include "options.hpp"
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

TEST(Usage, everyCommandHasHelpWithExamplesInEightyColumns) {
  const Workspace here;
  std::vector<std::vector<std::string>> cases{{"--help"}, {"-h"}, {"help"}};
  for (const CommandRow& command : commandTable()) {
    cases.push_back({std::string(command.name), "--help"});
    cases.push_back({"help", std::string(command.name)});
  }
  for (const auto& arguments : cases) {
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 0) << arguments.front();
    EXPECT_THAT(run.output, testing::StartsWith("Usage: xlatr ")) << arguments.front();
    EXPECT_THAT(run.output, HasSubstr("Examples:\n  xlatr ")) << arguments.front();
    EXPECT_THAT(run.output, HasSubstr("Exit codes:\n  0 ")) << arguments.front();
    EXPECT_EQ(run.errors, "") << arguments.front();
    std::istringstream lines(run.output);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), kHelpWidth) << line;
    }
  }
}

TEST(Usage, helpNamesEveryOptionOfTheCommand) {
  for (const CommandRow& command : commandTable()) {
    const std::string text = helpText(command);
    for (const OptionRow& option : optionTable()) {
      const bool has = (option.commands & bitOf(command.command)) != 0;
      EXPECT_EQ(
          text.find(" " + std::string(longNameOf(option)) + (option.argument.empty() ? "" : " ")) != std::string::npos,
          has)
          << command.name << " " << option.names;
    }
  }
}

TEST(Usage, whatCannotBeUnderstoodIsOneLineAndCode2) {
  struct Case {
    std::vector<std::string> arguments;
    const char* expected;
  };
  const std::vector<Case> cases{
      {{}, "no command given; see 'xlatr --help'"},
      {{"transform"}, "transform: there is no such command; there are convert, merge, cat,"},
      {{"conver"}, "conver: there is no such command; did you mean convert?"},
      {{"help", "mrge"}, "mrge: there is no such command; did you mean merge?"},
      {{"formats", "--xml"}, "--xml: there is no such option; see 'xlatr formats --help'"},
      {{"convert", "a.trc", "b.mf4", "--ziped"}, "--ziped: there is no such option; did you mean --zipped?"},
      {{"info", "a.trc", "--zipped"}, "--zipped: info has no such option; other commands have --zipped"},
      {{"convert"}, "SOURCE and TARGET: which?"},
      {{"convert", "a.trc"}, "a.trc: name a TARGET after it"},
      {{"info"}, "FILE: which?"},
      {{"convert", "a.trc", "b.trc", "--to"}, "--to"},
      {{"convert", "a.trc", "b"}, "b: the extension names no trace format; name one with --to: trc, btr,"},
      {{"convert", "a.trc", "b.blf"}, "b.blf: blf is read and not written; choose one of trc, btr"},
      {{"convert", "a.trc", "b.trc", "--to", "xml"}, "--to xml: there is no such format; use one of trc, btr"},
      {{"convert", "a.trc", "b.trc", "--from", "xml"}, "--from xml: there is no such format"},
      {{"convert", "a.trc", "b.trc", "--target-version", "2.2"}, "trc has no such version; use one of 1.0, 1.1"},
      {{"convert", "a.trc", "b.trc", "--target-version", "new"}, "--target-version new: this is no version"},
      {{"convert", "a.trc", "b.trc", "--target-version", "nan"}, "--target-version nan: this is no version"},
      {{"convert", "a.trc", "b.csv", "--separator", "::"}, "--separator ::: this is not one character"},
      {{"convert", "--compat", "a.trc", "b.csv", "--separator", "::"}, "--separator ::"},
      {{"convert", "--compat", "a.btr", "b.trc", "--session", "0"}, "--session 0: sessions are counted from 1"},
      {{"convert", "--compat", "a.btr", "b.trc", "--session", "x"}, "--session x"},
      {{"convert", "--compat", "a.trc", "b.trc", "--target-version", "2.2"}, "1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0"},
      {{"convert", "--compat", "a.trc", "b.trc", "--target-version", "new"}, "--target-version new"},
      {{"convert", "--compat", "a.trc", "b"}, ".trc, .btr, .asc, .ltrc, .csv, .btrc, .mf4, or"},
      {{"convert", "--compat", "a.trc", "b.trc", "--to", "xml"}, "--to xml"},
  };
  const Workspace here;
  here.write("a.trc", traceOfBuses({1}));
  for (const auto& [arguments, expected] : cases) {
    const Ended run = here.run(arguments);
    EXPECT_EQ(run.exitCode, 2) << expected;
    EXPECT_TRUE(isOneErrorLine(run.errors)) << run.errors;
    EXPECT_THAT(run.errors, HasSubstr(expected));
    EXPECT_EQ(run.output, "") << expected;
  }
  EXPECT_THAT(here.names(), testing::ElementsAre("a.trc"));
}

TEST(Usage, defaultsStandBeforeTheOptions) {
  const Workspace here;
  here.write("a.trc", traceOfBuses({1, 2}));
  const std::string defaults = "XLATR_DEFAULTS=\"-q --bus '2' --count\" ";
  EXPECT_EQ(here.shell(defaults + "xlatr convert a.trc b.trc").errors, "");
  EXPECT_EQ(here.shell("xlatr cat b.trc | wc -l").output, "1\n");
  EXPECT_EQ(here.shell(defaults + "xlatr info a.trc | grep -c duration").output, "1\n");
  EXPECT_EQ(here.shell("XLATR_DEFAULTS=--xml xlatr info a.trc").errors, "xlatr: XLATR_DEFAULTS: --xml is no option\n");
}

// After "--" everything is a path.
TEST(Usage, twoDashesEndTheOptions) {
  const Workspace here;
  here.write("-q", traceOfBuses({1}));
  EXPECT_EQ(here.run({"info", "--json", "--", "-q"}).exitCode, 0);
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
