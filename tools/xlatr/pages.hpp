// The pages about the program, made from the tables of commands and options: manual pages, completions, docs/cli.md.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace xlatr::cli {

struct PageFile {
  std::string name;
  std::string text;
};

// xlatr.1, and xlatr-convert.1 and the like, one for each command. `date` is that of the build, as 2024-03-01.
[[nodiscard]] std::vector<PageFile> manualPages(std::string_view date);

// xlatr.bash, xlatr.zsh, xlatr.fish.
[[nodiscard]] std::vector<PageFile> completionScripts();

// docs/cli.md.
[[nodiscard]] std::string commandLinePage();

}  // namespace xlatr::cli
