// What the tables of commands and options do not say: the prose of the manual pages and of docs/cli.md.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "options.hpp"

namespace xlatr::cli {

struct Term {
  std::string_view term;
  std::string_view text;
};

// In all texts `backquotes` mark what is typed or printed.
struct Topic {
  std::string_view title;
  CommandSet commands;  // whose manual pages have it
  std::vector<std::string_view> paragraphs;
  std::vector<Term> terms;                // after the paragraphs
  std::vector<std::string_view> lines;    // after the terms: what is typed or printed, line by line
  std::vector<std::string_view> closing;  // paragraphs after all
};

// In the order in which they are read.
[[nodiscard]] std::span<const Topic> topicTable();

}  // namespace xlatr::cli
