#include <algorithm>
#include <cstddef>

#include "formats.hpp"
#include "options.hpp"
#include "pages.hpp"

namespace xlatr::cli {
namespace {

// What may follow an option or stands for it, with blanks between.
std::string wordsOf(const OptionRow& option) {
  const auto names = [](const std::vector<TraceFormat>& formats) {
    std::string text;
    for (const TraceFormat format : formats) {
      text += (text.empty() ? "" : " ") + formatName(format);
    }
    return text;
  };
  switch (option.value) {
    case OptionValue::SourceFormat:
      return names(allFormats());
    case OptionValue::TargetFormat:
      return names(formatsOf(writtenFormats()));
    default:
      return std::string(option.words);
  }
}

std::string commandNames() {
  std::string names;
  for (const CommandRow& row : commandTable()) {
    names.append(names.empty() ? "" : " ").append(row.name);
  }
  return names;
}

// Each of the characters with a backslash before it.
std::string backslashed(std::string_view text, std::string_view characters) {
  std::string result;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) {
      result += '\\';
    }
    result += character;
  }
  return result;
}

// Between apostrophes, as the Bourne shells want it.
std::string shellQuoted(std::string_view text) {
  std::string result = "'";
  for (const char character : text) {
    result += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return result + "'";
}

// ---- bash

constexpr std::string_view kBashFunctions = R"(
# Words that begin with what was typed.
_xlatr_offer() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

# One more of a list with commas, which may begin with a "!".
_xlatr_offer_list() {
  local typed=${current%"${current##*[,!]}"}
  mapfile -t COMPREPLY < <(compgen -P "$typed" -W "$1" -- "${current##*[,!]}")
  compopt -o nospace 2>/dev/null
}

# readline completes names of files better than a function does, so that it is asked to.
_xlatr_offer_names() {
  compopt -o "$1" 2>/dev/null
}

# What may follow an option. It fails for one that nothing follows.
_xlatr_value() {
  case $1 in
)";

constexpr std::string_view kBashMain = R"bash(
_xlatr() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} at
  COMPREPLY=()
  # bash cuts --to=trc into three words.
  if [ "$current" = = ]; then
    current=
  elif [ "$before" = = ]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  if [ "$COMP_CWORD" -eq 1 ]; then
    _xlatr_offer "$_xlatr_commands --help --version"
    return
  fi
  for ((at = 2; at < COMP_CWORD; ++at)); do
    if [ "${COMP_WORDS[at]}" = -- ]; then
      _xlatr_offer_names default
      return
    fi
  done
  if _xlatr_value "$before"; then
    return
  fi
  case $current in
    -?*) _xlatr_offer "$(_xlatr_options "${COMP_WORDS[1]}")" ;;
    *) _xlatr_offer_names default ;;
  esac
}

complete -F _xlatr xlatr
)bash";

std::string bashCase(const OptionRow& option) {
  const std::string_view shortName = shortNameOf(option);
  std::string text = "    " + (shortName.empty() ? "" : std::string(shortName) + " | ");
  text.append(longNameOf(option)).append(") ");
  switch (option.value) {
    case OptionValue::None:
      return "";
    case OptionValue::Text:
      return text + ": ;;\n";
    case OptionValue::File:
      return text + "_xlatr_offer_names default ;;\n";
    case OptionValue::Folder:
      return text + "_xlatr_offer_names dirnames ;;\n";
    case OptionValue::WordList:
      return text + "_xlatr_offer_list '" + wordsOf(option) + "' ;;\n";
    default:
      return text + "_xlatr_offer '" + wordsOf(option) + "' ;;\n";
  }
}

std::string bashScript() {
  std::string text =
      "# bash completion for xlatr; made from the program's table of options\n# shellcheck shell=bash\n\n";
  text += "_xlatr_commands='" + commandNames() + "'\n\n_xlatr_options() {\n  case $1 in\n";
  for (const CommandRow& command : commandTable()) {
    text.append("    ").append(command.name).append(") printf '%s ' \\\n");
    std::string names;
    for (const OptionRow& option : optionTable()) {
      if (hasOption(command, option)) {
        names.append(names.empty() ? "      " : " \\\n      ").append(longNameOf(option));
      }
    }
    text += names + " ;;\n";
  }
  text.append("  esac\n}\n").append(kBashFunctions);
  for (const OptionRow& option : optionTable()) {
    text += bashCase(option);
  }
  return text.append("    *) return 1 ;;\n  esac\n}\n").append(kBashMain);
}

// ---- zsh

std::string zshAction(const OptionRow& option) {
  std::string head = ":" + backslashed(option.argument, ":") + ":";
  switch (option.value) {
    case OptionValue::None:
      return "";
    case OptionValue::Text:
      return head;
    case OptionValue::File:
      return head + "_files";
    case OptionValue::Folder:
      return head + "_files -/";
    case OptionValue::WordList:
      return head + "_values -s , " + std::string(option.argument) + " " + wordsOf(option);
    default:
      return head + "(" + wordsOf(option) + ")";
  }
}

// An option that may be given again is marked with a star; any other one leaves the list when it was given.
std::string zshOption(const OptionRow& option) {
  const std::string_view shortName = shortNameOf(option);
  const std::string_view longName = longNameOf(option);
  const bool again = std::holds_alternative<std::vector<std::string> Arguments::*>(option.place) ||
                     std::holds_alternative<int Arguments::*>(option.place);
  const std::string text = "[" + backslashed(option.text, "[]:\\") + "]" + zshAction(option);
  const std::string equals = option.argument.empty() ? "" : "=";
  std::string names;
  if (!shortName.empty()) {
    names = std::string(shortName) + " ";
  }
  const std::string before = again ? "*" : "(" + names + std::string(longName) + ")";
  std::string lines;
  if (!shortName.empty()) {
    lines += "        " + shellQuoted(before + std::string(shortName) + (equals.empty() ? "" : "+") + text) + "\n";
  }
  return lines + "        " + shellQuoted(before + std::string(longName) + equals + text) + "\n";
}

std::string zshScript() {
  std::string text =
      "#compdef xlatr\n# Made from the program's table of options.\n\n_xlatr() {\n  local -a commands options\n  "
      "commands=(\n";
  for (const CommandRow& command : commandTable()) {
    text += "    " + shellQuoted(std::string(command.name) + ":" + std::string(command.summary)) + "\n";
  }
  text +=
      "  )\n"
      "  if (( CURRENT == 2 )); then\n"
      "    _describe -t commands command commands\n"
      "    _arguments '--help[Show the commands]' '--version[Show the version of the program]'\n"
      "    return\n"
      "  fi\n"
      "  case $words[2] in\n";
  for (const CommandRow& command : commandTable()) {
    text.append("    ").append(command.name).append(")\n      options=(\n");
    for (const OptionRow& option : optionTable()) {
      text += hasOption(command, option) ? zshOption(option) : "";
    }
    text += command.paths.empty() ? "" : "        '*:file:_files'\n";
    text += "      )\n      ;;\n";
  }
  return text +
         "    *) return 1 ;;\n"
         "  esac\n"
         "  shift words\n"
         "  (( CURRENT-- ))\n"
         "  _arguments -s -S $options\n"
         "}\n\n"
         "_xlatr \"$@\"\n";
}

// ---- fish

constexpr std::string_view kFishFunctions = R"(# fish completion for xlatr; made from the program's table of options

# Whether the command is one of these.
function __xlatr_is
    set -l words (commandline -opc)
    test (count $words) -ge 2; and contains -- $words[2] $argv
end

function __xlatr_has_none
    test (count (commandline -opc)) -eq 1
end

# One more of a list with commas, which may begin with a "!".
function __xlatr_list
    set -l typed (string match -r -- '.*[,!]' (commandline -ct | string replace -r -- '^--[a-z-]+=' ''))
    printf '%s\n' $typed$argv
end

)";

// Between apostrophes, as fish wants it.
std::string fishQuoted(std::string_view text) {
  return "'" + backslashed(text, "\\'") + "'";
}

std::string fishValue(const OptionRow& option) {
  switch (option.value) {
    case OptionValue::None:
      return " -f";
    case OptionValue::Text:
      return " -x";
    case OptionValue::File:
      return " -r -F";
    case OptionValue::Folder:
      return " -x -a '(__fish_complete_directories)'";
    case OptionValue::WordList:
      return " -x -a '(__xlatr_list " + wordsOf(option) + ")'";
    default:
      return " -x -a '" + wordsOf(option) + "'";
  }
}

std::string fishOption(const OptionRow& option) {
  std::string commands;
  for (const CommandRow& command : commandTable()) {
    commands += hasOption(command, option) ? " " + std::string(command.name) : "";
  }
  const std::string_view shortName = shortNameOf(option);
  std::string text = "complete -c xlatr -n '__xlatr_is" + commands + "'";
  if (!shortName.empty()) {
    text.append(" -s ").append(shortName.substr(1));
  }
  text.append(" -l ").append(longNameOf(option).substr(2));
  return text + fishValue(option) + " -d " + fishQuoted(option.text) + "\n";
}

std::string fishScript() {
  std::string text(kFishFunctions);
  text += "complete -c xlatr -n __xlatr_has_none -f\n";
  for (const CommandRow& command : commandTable()) {
    text += "complete -c xlatr -n __xlatr_has_none -f -a " + std::string(command.name) + " -d " +
            fishQuoted(command.summary) + "\n";
  }
  text += "complete -c xlatr -n __xlatr_has_none -f -l help -d 'Show the commands'\n";
  text += "complete -c xlatr -n __xlatr_has_none -f -l version -d 'Show the version of the program'\n\n";
  for (const OptionRow& option : optionTable()) {
    text += fishOption(option);
  }
  return text;
}

}  // namespace

std::vector<PageFile> completionScripts() {
  return {{"xlatr.bash", bashScript()}, {"xlatr.zsh", zshScript()}, {"xlatr.fish", fishScript()}};
}

}  // namespace xlatr::cli
