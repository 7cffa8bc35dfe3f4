#include <algorithm>
#include <cstddef>

#include "help.hpp"
#include "options.hpp"
#include "pages.hpp"
#include "topics.hpp"

namespace xlatr::cli {
namespace {

constexpr std::string_view kHead =
    R"(<!-- Made from the program's tables; see tests/tools/pages_test.cpp. -->
# The program xlatr

    xlatr COMMAND [ARGUMENT...]
    xlatr COMMAND --help
    xlatr --version

Results go to stdout, everything else to stderr, a line for each message: which
file, where in it, what is wrong, what to do. `man xlatr-convert` and the like
say the same as this page, and bash, zsh and fish complete all of it. In a
checkout, `scripts/xlatr` builds the program and runs it with the same
arguments.

)";

constexpr std::string_view kEnd =
    R"(
## More

- [scale.md](scale.md): thousands of files, many cores, many machines.
- [report.schema.json](report.schema.json), [stats.schema.json](stats.schema.json) and
  [compare.schema.json](compare.schema.json): the JSON schemas of what `--json` prints.
- [formats/](formats): one page per format.
- [quirks.md](quirks.md): what the compatible way does otherwise.
)";

// The text of a cell.
std::string celled(std::string_view text) {
  std::string result;
  for (const char character : text) {
    result += character == '|' ? "\\|" : std::string(1, character);
  }
  return result;
}

// "<" begins an element, "*" may begin emphasis, and a "-" at the start of a line a list. None does in code.
std::string prose(std::string_view text) {
  std::string result;
  bool code = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char character = text[at];
    code = code != (character == '`');
    const bool dash = character == '-' && text.substr(at + 1).starts_with(' ');
    if (!code && (character == '<' || character == '*' || dash)) {
      result += '\\';
    }
    result += character;
  }
  return result;
}

std::string codeLines(const std::vector<std::string_view>& lines) {
  std::string text;
  for (const std::string_view line : lines) {
    text.append("    ").append(line).append("\n");
  }
  return text + "\n";
}

std::string proseLines(const std::vector<std::string_view>& paragraphs) {
  std::string text;
  for (const std::string_view paragraph : paragraphs) {
    text += wrapped(prose(paragraph), 0) + "\n";
  }
  return text;
}

std::string optionCell(const OptionRow& option) {
  const std::string_view longName = longNameOf(option);
  std::string text;
  if (longName != option.names) {
    text.append("`").append(option.names.substr(0, option.names.find(','))).append("`, ");
  }
  text.append("`").append(longName);
  text.append(option.argument.empty() ? "" : " ").append(option.argument);
  return text + "`";
}

std::string optionTables(const CommandRow& command) {
  std::string text = "| Option | Meaning |\n|---|---|\n";
  for (std::size_t group = 0; group <= static_cast<std::size_t>(OptionGroup::Output); ++group) {
    const auto options = optionsOf(command, static_cast<OptionGroup>(group));
    if (!options.empty()) {
      text.append("| **").append(headingOf(static_cast<OptionGroup>(group))).append("** | |\n");
    }
    for (const OptionRow* const option : options) {
      text += "| " + optionCell(*option) + " | " + celled(prose(option->text)) + " |\n";
    }
  }
  return text + "\n";
}

std::string commandSection(const CommandRow& command) {
  std::string text = "## " + std::string(command.name) + "\n\n    xlatr " + std::string(command.name);
  text.append(command.paths.empty() ? "" : " ").append(command.paths).append(" [OPTION...]\n\n");
  text += wrapped(prose(command.summary), 0) + "\n" + codeLines(command.examples);
  for (std::string_view rest = command.text; !rest.empty();) {
    const std::size_t size = std::min(rest.find('\n'), rest.size());
    text += wrapped(prose(rest.substr(0, size)), 0) + "\n";
    rest.remove_prefix(std::min(size + 1, rest.size()));
  }
  return text + optionTables(command);
}

std::string topicPart(const Topic& topic) {
  std::string text = "## " + std::string(topic.title) + "\n\n" + proseLines(topic.paragraphs);
  if (!topic.terms.empty()) {
    text += "| | |\n|---|---|\n";
    for (const Term& term : topic.terms) {
      const bool name = term.term.find(' ') == std::string_view::npos;
      text += "| " + (name ? "`" + std::string(term.term) + "`" : std::string(term.term)) + " | ";
      text += celled(prose(term.text)) + " |\n";
    }
    text += "\n";
  }
  text += topic.lines.empty() ? "" : codeLines(topic.lines);
  return text + proseLines(topic.closing);
}

std::string exitPart() {
  std::string text = "## Exit codes\n\n| Code | Meaning |\n|---|---|\n";
  for (const ExitCodeRow& row : kExitCodes) {
    text += "| " + std::to_string(row.code) + " | " + std::string(row.text) + " |\n";
  }
  return text;
}

}  // namespace

std::string commandLinePage() {
  std::string text(kHead);
  for (const CommandRow& command : commandTable()) {
    text += commandSection(command);
  }
  for (const Topic& topic : topicTable()) {
    text += topicPart(topic);
  }
  return text.append(exitPart()).append(kEnd);
}

}  // namespace xlatr::cli
