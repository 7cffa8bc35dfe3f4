// The commands and their options, in one table each. The parser, the help, the manual pages, the completions and
// docs/cli.md are made from them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "arguments.hpp"
#include "exit_code.hpp"

namespace xlatr::cli {

enum class CommandName : std::uint8_t { Convert, Merge, Cat, Stats, Compare, Check, Info, Formats };

// One bit for each command.
using CommandSet = std::uint32_t;
[[nodiscard]] constexpr CommandSet bitOf(CommandName command) {
  return CommandSet{1} << static_cast<unsigned>(command);
}

struct CommandRow {
  CommandName command;
  std::string_view name;
  std::string_view paths;      // "SOURCE... TARGET"
  std::string_view pathNames;  // what is missing if there are none; empty for a command without paths
  std::string_view summary;    // a sentence
  std::string_view text;       // the paragraphs of the help after it, each a line
  std::vector<std::string_view> examples;
  ExitCode (*run)(const Arguments& arguments);
};

// The headings under which help shows options.
enum class OptionGroup : std::uint8_t { Source, Selection, Change, Target, Split, Traffic, Running, Output };
[[nodiscard]] std::string_view headingOf(OptionGroup group);

// What can follow an option, for completions. A word is one of the row's words, a word list some of them with commas.
enum class OptionValue : std::uint8_t { None, Text, File, Folder, SourceFormat, TargetFormat, Word, WordList };

using OptionPlace =
    std::variant<bool Arguments::*, int Arguments::*, std::string Arguments::*, std::vector<std::string> Arguments::*>;

struct OptionRow {
  std::string_view names;     // "-f,--force"
  std::string_view argument;  // "FORMAT"; empty for a flag
  std::string_view text;      // a sentence without its point
  OptionGroup group;
  OptionValue value;
  CommandSet commands;
  OptionPlace place;            // where it goes: a flag, a flag that counts, a text, or texts that add up
  std::string_view words = {};  // what may follow it, with blanks between
};

[[nodiscard]] std::span<const CommandRow> commandTable();
[[nodiscard]] std::span<const OptionRow> optionTable();
[[nodiscard]] const CommandRow& rowOf(CommandName command);

// "--force": the last of the names.
[[nodiscard]] std::string_view longNameOf(const OptionRow& option);

// "-f"; empty for an option without a short name.
[[nodiscard]] std::string_view shortNameOf(const OptionRow& option);

[[nodiscard]] constexpr bool hasOption(const CommandRow& command, const OptionRow& option) {
  return (option.commands & bitOf(command.command)) != 0;
}

// Whether the option was given.
[[nodiscard]] bool isGiven(const OptionRow& option, const Arguments& arguments);

}  // namespace xlatr::cli
