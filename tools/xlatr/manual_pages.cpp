#include <algorithm>
#include <cctype>
#include <cstddef>

#include "help.hpp"
#include "options.hpp"
#include "pages.hpp"
#include "topics.hpp"

namespace xlatr::cli {
namespace {

// Text that means itself. All hyphens become minus signs, so that what is copied from a page can be typed.
std::string escaped(std::string_view text) {
  struct Escape {
    char character;
    std::string_view text;
  };
  static constexpr Escape kEscapes[] = {{'\\', "\\e"},  {'-', "\\-"},   {'\'', "\\(aq"}, {'"', "\\(dq"},
                                        {'`', "\\(ga"}, {'^', "\\(ha"}, {'~', "\\(ti"}};
  std::string result;
  for (const char character : text) {
    const auto* const found = std::ranges::find(kEscapes, character, &Escape::character);
    if (found == std::end(kEscapes)) {
      result += character;
    } else {
      result += found->text;
    }
  }
  return result;
}

// A line of input must not look like a request.
std::string line(const std::string& text) {
  return (text.starts_with('.') || text.starts_with('\'') ? "\\&" : "") + text + "\n";
}

// Lines of input, which the formatter fills anew; `backquotes` become bold.
std::string filled(std::string_view text) {
  std::string lines;
  std::string now;
  bool bold = false;
  const auto add = [&](std::string_view word) {
    std::string shown;
    while (!word.empty()) {
      const std::size_t size = std::min(word.find('`'), word.size());
      shown += escaped(word.substr(0, size));
      if (size < word.size()) {
        bold = !bold;
        shown += bold ? "\\fB" : "\\fR";
      }
      word.remove_prefix(std::min(size + 1, word.size()));
    }
    if (!now.empty() && now.size() + 1 + shown.size() > kHelpWidth - 2) {
      lines += line(now);
      now.clear();
    }
    now.append(now.empty() ? "" : " ").append(shown);
  };
  while (!text.empty()) {
    const std::size_t size = std::min(text.find(' '), text.size());
    add(text.substr(0, size));
    text.remove_prefix(std::min(size + 1, text.size()));
  }
  return lines + line(now);
}

std::string capital(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](unsigned char character) { return static_cast<char>(std::toupper(character)); });
  return result;
}

std::string heading(std::string_view title) {
  return ".SH " + capital(title) + "\n";
}

std::string head(std::string_view name, std::string_view summary, std::string_view date) {
  std::string lower(summary.substr(0, summary.size() - 1));  // without its point
  lower.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(lower.front())));
  return ".TH " + capital(escaped(name)) + " 1 " + std::string(date) + " \"xlatr " XLATR_PROGRAM_VERSION "\"\n" +
         heading("Name") + line(escaped(name) + " \\- " + escaped(lower));
}

std::string linesAsTheyAre(const std::vector<std::string_view>& lines) {
  std::string text = ".EX\n";
  for (const std::string_view each : lines) {
    text += line(escaped(each));
  }
  return text + ".EE\n";
}

std::string paragraphs(const std::vector<std::string_view>& texts, bool first) {
  std::string result;
  for (const std::string_view text : texts) {
    result += (first ? "" : ".PP\n") + filled(text);
    first = false;
  }
  return result;
}

std::string entry(const std::string& term, std::string_view text) {
  return ".TP\n" + line(term) + filled(text);
}

std::string optionEntry(const OptionRow& option) {
  const std::string_view longName = longNameOf(option);
  std::string term;
  if (longName != option.names) {
    term = "\\fB" + escaped(option.names.substr(0, option.names.find(','))) + "\\fR, ";
  }
  term += "\\fB" + escaped(longName) + "\\fR";
  if (!option.argument.empty()) {
    term += " \\fI" + escaped(option.argument) + "\\fR";
  }
  return entry(term, std::string(option.text) + ".");
}

std::string optionsSection(const CommandRow& command) {
  std::string text = heading("Options");
  for (std::size_t group = 0; group <= static_cast<std::size_t>(OptionGroup::Output); ++group) {
    const auto options = optionsOf(command, static_cast<OptionGroup>(group));
    if (!options.empty()) {
      text.append(".SS ").append(headingOf(static_cast<OptionGroup>(group))).append("\n");
    }
    for (const OptionRow* const option : options) {
      text += optionEntry(*option);
    }
  }
  return text;
}

std::string topicSection(const Topic& topic) {
  std::string text = heading(topic.title) + paragraphs(topic.paragraphs, true);
  for (const Term& term : topic.terms) {
    text += entry("\\fB" + escaped(term.term) + "\\fR", term.text);
  }
  if (!topic.lines.empty()) {
    text += ".PP\n" + linesAsTheyAre(topic.lines);
  }
  return text + paragraphs(topic.closing, false);
}

std::string exitSection() {
  std::string text = heading("Exit status");
  for (const ExitCodeRow& row : kExitCodes) {
    text += entry("\\fB" + std::to_string(row.code) + "\\fR", std::string(row.text) + ".");
  }
  return text;
}

std::string commandPageName(const CommandRow& command) {
  return "xlatr-" + std::string(command.name);
}

std::string seeAlso(const std::vector<std::string>& names) {
  std::string text = heading("See also");
  for (const std::string& name : names) {
    text += ".BR " + escaped(name) + " (1)" + (&name == &names.back() ? "" : ",") + "\n";
  }
  return text;
}

std::string commandPage(const CommandRow& command, std::string_view date) {
  std::string text = head(commandPageName(command), command.summary, date) + heading("Synopsis");
  text += "\\fBxlatr " + std::string(command.name) + "\\fR";
  text += command.paths.empty() ? "" : " \\fI" + escaped(command.paths) + "\\fR";
  text += " [\\fIOPTION\\fR...]\n" + heading("Examples") + linesAsTheyAre(command.examples) + heading("Description");
  text += filled(command.summary);
  for (std::string_view rest = command.text; !rest.empty();) {
    const std::size_t size = std::min(rest.find('\n'), rest.size());
    text += ".PP\n" + filled(rest.substr(0, size));
    rest.remove_prefix(std::min(size + 1, rest.size()));
  }
  text += optionsSection(command);
  for (const Topic& topic : topicTable()) {
    text += (topic.commands & bitOf(command.command)) != 0 ? topicSection(topic) : "";
  }
  return text + exitSection() + seeAlso({"xlatr"});
}

std::string programPage(std::string_view date) {
  std::string text = head("xlatr", kPurpose, date) + heading("Synopsis");
  text += "\\fBxlatr\\fR \\fICOMMAND\\fR [\\fIARGUMENT\\fR...]\n.br\n\\fBxlatr\\fR \\fB\\-\\-version\\fR\n";
  std::vector<std::string_view> examples;
  std::vector<std::string> pages;
  std::string commands = heading("Commands");
  for (const CommandRow& row : commandTable()) {
    examples.push_back(row.examples.front());
    pages.push_back(commandPageName(row));
    commands += entry("\\fB" + std::string(row.name) + "\\fR", row.summary);
  }
  text += heading("Examples") + linesAsTheyAre(examples) + heading("Description") + filled(kPurpose);
  text += ".PP\n" + filled("`xlatr COMMAND --help` shows all options of a command.") + commands;
  for (const Topic& topic : topicTable()) {
    text += topic.title == "Environment" || topic.title == "Signals" ? topicSection(topic) : "";
  }
  return text + exitSection() + seeAlso(pages);
}

}  // namespace

std::vector<PageFile> manualPages(std::string_view date) {
  std::vector<PageFile> pages{{"xlatr.1", programPage(date)}};
  for (const CommandRow& row : commandTable()) {
    pages.push_back({commandPageName(row) + ".1", commandPage(row, date)});
  }
  return pages;
}

}  // namespace xlatr::cli
