#include "command_line.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <numeric>
#include <span>
#include <string_view>

#include "command_failure.hpp"

namespace xlatr::cli {
namespace {

[[noreturn]] void failCommandLine(const std::string& text) {
  throw CommandFailure(ExitCode::WrongUsage, text);
}

// How many characters must be put in, taken out or replaced (Levenshtein's distance).
std::size_t distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t at = 0; at < one.size(); ++at) {
    std::size_t corner = row[0]++;
    for (std::size_t column = 0; column < other.size(); ++column) {
      const std::size_t replaced = corner + (one[at] == other[column] ? 0 : 1);
      corner = row[column + 1];
      row[column + 1] = std::min({replaced, row[column] + 1, corner + 1});
    }
  }
  return row.back();
}

// "; did you mean --force?", if one of the names is near enough.
std::string suggestion(std::string_view word, const std::vector<std::string_view>& names) {
  const auto nearest =
      std::ranges::min_element(names, {}, [word](std::string_view name) { return distance(word, name); });
  constexpr std::size_t kFar = 3;
  if (nearest == names.end() || distance(word, *nearest) >= std::min(kFar, nearest->size())) {
    return {};
  }
  return "; did you mean " + std::string(*nearest) + "?";
}

std::string seeHelp(const CommandRow& command) {
  return "; see 'xlatr " + std::string(command.name) + " --help'";
}

const CommandRow& commandOf(const std::string& word) {
  std::vector<std::string_view> names;
  for (const CommandRow& row : commandTable()) {
    if (row.name == word) {
      return row;
    }
    names.push_back(row.name);
  }
  const std::string found = suggestion(word, names);
  if (!found.empty()) {
    failCommandLine(word + ": there is no such command" + found);
  }
  std::string list;
  for (const std::string_view name : names) {
    list.append(list.empty() ? "" : ", ").append(name);
  }
  failCommandLine(word + ": there is no such command; there are " + list);
}

struct AddOption {
  CLI::App& app;
  const OptionRow& row;
  Arguments& arguments;

  void operator()(bool Arguments::*flag) const { app.add_flag(std::string(row.names), arguments.*flag); }
  void operator()(int Arguments::*count) const { app.add_flag(std::string(row.names), arguments.*count); }
  void operator()(std::string Arguments::*text) const {
    app.add_option(std::string(row.names), arguments.*text)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  }
  void operator()(std::vector<std::string> Arguments::*texts) const {
    app.add_option(std::string(row.names), arguments.*texts)->allow_extra_args(false);
  }
};

// The words of a value as a shell cuts it, quotes included.
std::vector<std::string> cut(const std::string& text) {
  std::vector<std::string> words;
  char quote = '\0';
  bool inWord = false;
  for (const char character : text) {
    if (quote == '\0' && (character == ' ' || character == '\t' || character == '\n')) {
      inWord = false;
      continue;
    }
    if (!inWord) {
      words.emplace_back();
      inWord = true;
    }
    if (character == quote) {
      quote = '\0';
    } else if (quote == '\0' && (character == '\'' || character == '"')) {
      quote = character;
    } else {
      words.back() += character;
    }
  }
  return words;
}

const OptionRow* optionNamed(std::string_view word) {
  const std::string_view name = word.substr(0, word.find('='));
  if (name.empty()) {
    return nullptr;  // as are the short names that there are not
  }
  const auto isNamed = [name](const OptionRow& row) { return name == longNameOf(row) || name == shortNameOf(row); };
  const auto found = std::ranges::find_if(optionTable(), isNamed);
  return found == optionTable().end() ? nullptr : &*found;
}

// Those of the defaults that the command has.
std::vector<std::string> defaultsOf(const CommandRow& command, const std::string& defaults) {
  std::vector<std::string> words;
  const std::vector<std::string> all = cut(defaults);
  for (std::size_t at = 0; at < all.size(); ++at) {
    const OptionRow* const option = optionNamed(all[at]);
    if (option == nullptr) {
      failCommandLine("XLATR_DEFAULTS: " + all[at] + " is no option");
    }
    const bool hasWord = !option->argument.empty() && all[at].find('=') == std::string::npos;
    const std::size_t count = std::min(all.size() - at, std::size_t{hasWord ? 2U : 1U});
    if (hasOption(command, *option)) {
      words.insert(words.end(), all.begin() + static_cast<std::ptrdiff_t>(at),
                   all.begin() + static_cast<std::ptrdiff_t>(at + count));
    }
    at += count - 1;
  }
  return words;
}

// What CLI11 could not place, which is no path: those are all taken.
[[noreturn]] void failUnknown(const CommandRow& command, const std::string& word) {
  if (const OptionRow* const option = optionNamed(word)) {
    failCommandLine(word + ": " + std::string(command.name) + " has no such option; other commands have " +
                    std::string(longNameOf(*option)) + seeHelp(command));
  }
  std::vector<std::string_view> names;
  for (const OptionRow& option : optionTable()) {
    if (hasOption(command, option)) {
      names.push_back(longNameOf(option));
    }
  }
  failCommandLine(word + ": there is no such option" + suggestion(word, names) + seeHelp(command));
}

void parse(const CommandRow& command, std::vector<std::string> words, Arguments& arguments) {
  CLI::App app;
  app.set_help_flag();
  app.allow_extras();
  for (const OptionRow& row : optionTable()) {
    if (hasOption(command, row)) {
      std::visit(AddOption{app, row, arguments}, row.place);
    }
  }
  if (!command.paths.empty()) {
    app.add_option("paths", arguments.paths);
  }
  try {
    std::ranges::reverse(words);
    app.parse(words);
  } catch (const CLI::ParseError& error) {
    failCommandLine(std::string(error.what()) + seeHelp(command));
  }
  const std::vector<std::string> left = app.remaining();
  if (!left.empty()) {
    failUnknown(command, left.front());
  }
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& words, const std::string& defaults) {
  CommandLine line;
  if (words.empty()) {
    failCommandLine("no command given; see 'xlatr --help'");
  }
  if (words.front() == "--version") {
    line.version = true;
    return line;
  }
  if (words.front() == "-h" || words.front() == "--help" || words.front() == "help") {
    line.command = words.size() > 1 ? &commandOf(words[1]) : nullptr;
    line.arguments.help = true;
    return line;
  }
  line.command = &commandOf(words.front());
  const auto end = std::ranges::find(words, "--");  // after it there are paths alone
  std::vector<std::string> all = defaultsOf(*line.command, defaults);
  all.insert(all.end(), words.begin() + 1, end);
  parse(*line.command, std::move(all), line.arguments);
  if (end != words.end()) {
    line.arguments.paths.insert(line.arguments.paths.end(), end + 1, words.end());
  }
  if (line.arguments.help) {
    return line;
  }
  const bool needsPath = !line.command->paths.empty() && line.arguments.filesFrom.empty();
  if (needsPath && line.arguments.paths.empty()) {
    failCommandLine(std::string(line.command->pathNames) + ": which? Name it" + seeHelp(*line.command));
  }
  return line;
}

}  // namespace xlatr::cli
