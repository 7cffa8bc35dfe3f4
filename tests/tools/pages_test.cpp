// The pages about the program say what its tables say, and the programs that they are made for take them.
#include "pages.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "command_failure.hpp"
#include "command_line.hpp"
#include "conversions.hpp"
#include "help.hpp"
#include "job.hpp"
#include "options.hpp"
#include "support/temp_folder.hpp"
#include "topics.hpp"
#include "wanted.hpp"

namespace xlatr::cli {
namespace {

using testing::HasSubstr;

namespace fs = std::filesystem;

constexpr const char* kDate = "2024-03-01";

const fs::path kPage = fs::path(XLATR_PROJECT_DIR) / "docs" / "cli.md";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// What a shell command prints, both streams. The exit code stands in the last line.
std::string shell(const std::string& command) {
  std::string text;
  FILE* const pipe = popen(("{ " + command + "; } 2>&1; echo \"exit $?\"").c_str(), "r");  // NOLINT(*-env33-c)
  if (pipe == nullptr) {
    return "popen failed";
  }
  for (int character = std::fgetc(pipe); character != EOF; character = std::fgetc(pipe)) {
    text += static_cast<char>(character);
  }
  pclose(pipe);
  return text;
}

bool isInstalled(const std::string& program) {
  return shell("command -v " + program + " >/dev/null") == "exit 0\n";
}

std::string inApostrophes(const fs::path& path) {
  return "'" + path.string() + "'";
}

// The script for a shell, in a folder of its own.
class Script {
 public:
  explicit Script(const std::string& name) {
    for (const PageFile& file : completionScripts()) {
      if (file.name == name) {
        path_ = folder_.write(name, file.text);
      }
    }
  }
  [[nodiscard]] std::string path() const { return inApostrophes(path_); }

 private:
  test::TempFolder folder_;
  fs::path path_;
};

// XLATR_UPDATE_GOLDEN=1 writes the page.
TEST(Pages, documentOfTheCommandLineIsTheTables) {
  const char* const update = std::getenv("XLATR_UPDATE_GOLDEN");
  if (update != nullptr && std::string_view(update) == "1") {
    std::ofstream(kPage, std::ios::binary) << commandLinePage();
  }
  std::ifstream file(kPage, std::ios::binary);
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(page, commandLinePage());
}

TEST(Pages, textHasAtMost80Columns) {
  std::vector<PageFile> texts = manualPages(kDate);
  texts.push_back({"docs/cli.md", commandLinePage()});
  texts.push_back({"--help", helpText()});
  for (const CommandRow& command : commandTable()) {
    texts.push_back({"help of " + std::string(command.name), helpText(command)});
  }
  for (const PageFile& text : texts) {
    for (const std::string& line : linesOf(text.text)) {
      if (!line.starts_with("|") && !line.starts_with("- [") && !line.starts_with("  [")) {  // tables, and links
        EXPECT_LE(line.size(), 80U) << text.name << ": " << line;
      }
    }
  }
}

TEST(Pages, nameEveryOptionOfEveryCommand) {
  const std::string page = commandLinePage();
  const std::vector<PageFile> manuals = manualPages(kDate);
  for (const CommandRow& command : commandTable()) {
    const auto manual = std::ranges::find(manuals, "xlatr-" + std::string(command.name) + ".1", &PageFile::name);
    ASSERT_NE(manual, manuals.end()) << command.name;
    for (const OptionRow& option : optionTable()) {
      if ((option.commands & bitOf(command.command)) != 0) {
        std::string name;
        for (const char character : longNameOf(option)) {
          name += character == '-' ? "\\-" : std::string(1, character);
        }
        EXPECT_THAT(manual->text, HasSubstr("\\fB" + name + "\\fR")) << command.name;
        EXPECT_THAT(page, HasSubstr("`" + std::string(longNameOf(option)))) << command.name;
      }
    }
  }
}

// The words of a line up to the first that is for the shell, without quotes.
std::vector<std::string> wordsOfLine(std::string_view line) {
  std::vector<std::string> words;
  std::istringstream stream{std::string(line)};
  for (std::string word; stream >> word && word != "|" && word != ">";) {
    std::erase(word, '\'');
    words.push_back(word);
  }
  return words;
}

TEST(Pages, everyExampleIsUnderstood) {
  std::vector<std::string_view> lines;
  for (const CommandRow& command : commandTable()) {
    lines.insert(lines.end(), command.examples.begin(), command.examples.end());
  }
  for (const Topic& topic : topicTable()) {
    lines.insert(lines.end(), topic.lines.begin(), topic.lines.end());
  }
  std::size_t understood = 0;
  for (const std::string_view line : lines) {
    const std::size_t at = line.find("xlatr ");
    if (at == std::string_view::npos) {
      continue;
    }
    const std::vector<std::string> words = wordsOfLine(line.substr(at + 6));
    EXPECT_NO_THROW(static_cast<void>(parseCommandLine(words, ""))) << line;
    ++understood;
  }
  EXPECT_GT(understood, 20U);
}

// All that look at the words of options.
void readWords(const Arguments& arguments) {
  static_cast<void>(JobSettings(arguments));
  static_cast<void>(progressForm(arguments));
  if (!arguments.stuffing.empty()) {
    // Without a trace it does nothing else.
    static_cast<void>(rowOf(CommandName::Stats).run(arguments));
  }
}

Arguments withOption(const OptionRow& option, const std::string& word) {
  Arguments arguments;
  if (const auto* const text = std::get_if<std::string Arguments::*>(&option.place)) {
    arguments.*(*text) = word;
  } else {
    arguments.*std::get<std::vector<std::string> Arguments::*>(option.place) = {word};
  }
  return arguments;
}

TEST(Pages, wordsOfTheTableAreThoseThatTheProgramTakes) {
  std::size_t count = 0;
  for (const OptionRow& option : optionTable()) {
    if (option.words.empty()) {
      continue;
    }
    std::string list;
    for (const std::string& word : wordsOfLine(option.words)) {
      EXPECT_NO_THROW(readWords(withOption(option, word))) << option.names << " " << word;
      list += (list.empty() ? "" : ", ") + word;
      ++count;
    }
    try {
      readWords(withOption(option, "nothing"));
      FAIL() << option.names;
    } catch (const CommandFailure& failure) {
      EXPECT_THAT(failure.what(), testing::EndsWith(list));
    }
  }
  EXPECT_EQ(count, 22U);
}

// ---- manual pages

// Bold and underlined letters are printed twice, with a backspace between.
std::string withoutOverstrikes(const std::string& text) {
  std::string result;
  for (const char character : text) {
    if (character == '\b') {
      result.pop_back();
    } else {
      result += character;
    }
  }
  return result;
}

TEST(ManualPages, areWhatFormattersTakeWithoutAWord) {
  const bool mandoc = isInstalled("mandoc");
  const bool groff = isInstalled("groff");
  if (!mandoc && !groff) {
    GTEST_SKIP() << "neither mandoc nor groff is installed";
  }
  const test::TempFolder folder;
  for (const PageFile& page : manualPages(kDate)) {
    const std::string path = inApostrophes(folder.write(page.name, page.text));
    if (mandoc) {
      EXPECT_EQ(shell("mandoc -T lint " + path), "exit 0\n") << page.name;
      const std::vector<std::string> lines = linesOf(withoutOverstrikes(shell("mandoc -T ascii " + path)));
      EXPECT_GT(lines.size(), 20U);
      for (const std::string& line : lines) {
        EXPECT_LE(line.size(), 80U) << page.name << ": " << line;
      }
    }
    if (groff) {
      EXPECT_EQ(shell("groff -man -ww -z " + path), "exit 0\n") << page.name;
    }
  }
}

// ---- completions

TEST(Completions, areValidForTheirShells) {
  for (const std::string shellName : {"bash", "zsh", "fish"}) {
    if (isInstalled(shellName)) {
      const Script script("xlatr." + shellName);
      EXPECT_EQ(shell(shellName + " -n " + script.path()), "exit 0\n");
    }
  }
}

struct CompletionCase {
  std::string_view typed;  // the words, of which the last is what is being typed, between blanks
  std::string_view offered;
};

TEST(Completions, bashOffersWhatFits) {
  static constexpr CompletionCase kCases[] = {
      {"xlatr me", "merge"},
      {"xlatr --", "--help --version"},
      {"xlatr convert --sp", "--split-size --split-time --split-bus"},
      {"xlatr merge --compa", "--compact"},
      {"xlatr merge --align ", "absolute start"},
      {"xlatr merge --align = s", "start"},
      {"xlatr merge --align =", "absolute start"},
      {"xlatr merge --gap c", "close"},
      {"xlatr check --progress ", "auto json none"},
      {"xlatr cat --direction t", "tx"},
      {"xlatr cat --kind lin", "lin lin_event"},
      {"xlatr cat --kind data,re", "nospace data,remote"},
      {"xlatr cat --kind !data,re", "nospace !data,remote"},
      {"xlatr convert a.trc --to m", "mf4"},
      {"xlatr convert --to b", "btr btrc"},
      {"xlatr convert --from b", "btr btrc blf"},
      {"xlatr convert ", "default"},
      {"xlatr convert dri", "default"},
      {"xlatr convert -", "default"},
      {"xlatr convert -- --sp", "default"},
      {"xlatr convert --report ", "default"},
      {"xlatr convert -O ", "dirnames"},
      {"xlatr convert --id ", ""},
      {"xlatr nothing --", ""},
  };
  if (!isInstalled("bash")) {
    GTEST_SKIP() << "bash is not installed";
  }
  const Script script("xlatr.bash");
  const test::TempFolder folder;
  for (const CompletionCase& each : kCases) {
    const std::string program =
        "source " + script.path() + "\n" + "set -f\ncompopt() { printf '%s\\n' \"$2\"; }\nCOMP_WORDS=(" +
        std::string(each.typed) + (each.typed.ends_with(' ') ? "''" : "") +
        ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_xlatr\n((${#COMPREPLY[@]} == 0)) || printf '%s\\n' "
        "\"${COMPREPLY[@]}\"\n";
    const std::string file = inApostrophes(folder.write("case.bash", program));
    std::string offered;
    for (const std::string& line : linesOf(shell("bash --norc " + file))) {
      if (!line.starts_with("exit ") &&
          !(line == "nospace" && each.offered.find("nospace") == std::string_view::npos)) {
        offered += (offered.empty() ? "" : " ") + line;
      }
    }
    EXPECT_EQ(offered, each.offered) << each.typed;
  }
}

TEST(Completions, fishOffersWhatFits) {
  static constexpr CompletionCase kCases[] = {
      {"xlatr me", "merge"},
      {"xlatr merge --align ", "absolute start"},
      {"xlatr merge --gap=c", "--gap=close"},
      {"xlatr cat --kind data,re", "data,remote"},
      {"xlatr cat --kind=data,re", "--kind=data,remote"},
      {"xlatr convert --to b", "btr btrc"},
      {"xlatr merge --compa", "--compact"},
      {"xlatr convert --compa", "--compact --compat"},
  };
  if (!isInstalled("fish")) {
    GTEST_SKIP() << "fish is not installed";
  }
  const Script script("xlatr.fish");
  const test::TempFolder home;
  std::string program = "source " + script.path() + "\n";
  for (const CompletionCase& each : kCases) {
    program +=
        "complete -C '" + std::string(each.typed) + "' | string replace -r '\\t.*' '' | sort | string join ' '\n";
  }
  const std::string file = inApostrophes(home.write("cases.fish", program));
  const std::vector<std::string> lines =
      linesOf(shell("HOME=" + inApostrophes(home.path()) + " XDG_CONFIG_HOME=" + inApostrophes(home.path()) +
                    " LC_ALL=C fish " + file));
  ASSERT_EQ(lines.size(), std::size(kCases) + 1);
  for (std::size_t at = 0; at < std::size(kCases); ++at) {
    EXPECT_EQ(lines[at], kCases[at].offered) << kCases[at].typed;
  }
}

}  // namespace
}  // namespace xlatr::cli
