#include "help.hpp"

#include <algorithm>
#include <iterator>

namespace xlatr::cli {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kTextColumn = 27;

std::string padded(std::string_view text, std::size_t width) {
  std::string padded(text);
  padded.append(width - std::min(width, padded.size()), ' ');
  return padded;
}

// A name with what is said of it, beside it or below it.
std::string entry(std::string_view name, std::string_view text) {
  std::string lines = wrapped(text, kTextColumn);
  if (name.size() + kIndent + 2 <= kTextColumn) {
    return std::string(kIndent, ' ') + padded(name, kTextColumn - kIndent) + lines.substr(kTextColumn);
  }
  return std::string(kIndent, ' ').append(name) + "\n" + lines;
}

// "-f, --force" and "    --to FORMAT": the long names stand below each other.
std::string shownNames(const OptionRow& option) {
  const std::string_view shortName = shortNameOf(option);
  std::string names = shortName.empty() ? "    " : std::string(shortName) + ", ";
  names += longNameOf(option);
  if (!option.argument.empty()) {
    names.append(" ").append(option.argument);
  }
  return names;
}

std::string examplesText(const std::vector<std::string_view>& examples) {
  std::string text = "Examples:\n";
  for (const std::string_view example : examples) {
    text.append("  ").append(example).append("\n");
  }
  return text;
}

std::string exitCodesText() {
  std::string text = "\nExit codes:\n";
  for (const ExitCodeRow& row : kExitCodes) {
    text += entry(std::to_string(row.code), row.text);
  }
  return text;
}

}  // namespace

std::string wrapped(std::string_view text, std::size_t indent) {
  std::string lines;
  std::string line;
  const auto end = [&] {
    lines.append(indent, ' ').append(line).append("\n");
    line.clear();
  };
  while (!text.empty()) {
    const std::size_t size = std::min(text.find_first_of(" \n"), text.size());
    const std::string_view word = text.substr(0, size);
    if (!line.empty() && indent + line.size() + 1 + word.size() > kHelpWidth) {
      end();
    }
    line.append(line.empty() ? "" : " ").append(word);
    const bool ends = size < text.size() && text[size] == '\n';
    text.remove_prefix(std::min(size + 1, text.size()));
    if (ends) {
      end();
    }
  }
  end();
  return lines;
}

std::vector<const OptionRow*> optionsOf(const CommandRow& command, OptionGroup group) {
  std::vector<const OptionRow*> options;
  for (const OptionRow& row : optionTable()) {
    if (row.group == group && hasOption(command, row)) {
      options.push_back(&row);
    }
  }
  return options;
}

std::string helpText() {
  std::string text = "Usage: xlatr COMMAND ...\n\n";
  text.append(kPurpose).append("\n\n");
  std::vector<std::string_view> examples;
  for (const CommandRow& row : commandTable()) {
    examples.push_back(row.examples.front());
  }
  text += examplesText(examples) + "\nCommands:\n";
  for (const CommandRow& row : commandTable()) {
    text += entry(row.name, row.summary);
  }
  text += "\n" + wrapped(
                     "'xlatr COMMAND --help' or 'man xlatr-COMMAND' says more of a command. XLATR_DEFAULTS may hold "
                     "options that stand before those of every command.",
                     0);
  text += exitCodesText();
  return text;
}

std::string helpText(const CommandRow& command) {
  std::string text = "Usage: xlatr ";
  text.append(command.name).append(command.paths.empty() ? "" : " ").append(command.paths).append(" [OPTION...]\n\n");
  text += wrapped(command.summary, 0) + "\n" + examplesText(command.examples);
  if (!command.text.empty()) {
    text += "\n" + wrapped(command.text, 0);
  }
  for (std::size_t group = 0; group <= static_cast<std::size_t>(OptionGroup::Output); ++group) {
    const auto options = optionsOf(command, static_cast<OptionGroup>(group));
    if (!options.empty()) {
      text.append("\n").append(headingOf(static_cast<OptionGroup>(group))).append(":\n");
    }
    for (const OptionRow* const option : options) {
      text += entry(shownNames(*option), option->text);
    }
  }
  return text + exitCodesText();
}

}  // namespace xlatr::cli
