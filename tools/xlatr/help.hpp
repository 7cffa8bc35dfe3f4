// What --help prints.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "options.hpp"

namespace xlatr::cli {

inline constexpr std::size_t kHelpWidth = 80;

// Of the program.
[[nodiscard]] std::string helpText();
// Of a command.
[[nodiscard]] std::string helpText(const CommandRow& command);

// The text in lines that end in a line feed, of at most kHelpWidth characters with the indent before each.
[[nodiscard]] std::string wrapped(std::string_view text, std::size_t indent);

// The options of a command under one heading.
[[nodiscard]] std::vector<const OptionRow*> optionsOf(const CommandRow& command, OptionGroup group);

inline constexpr std::string_view kPurpose = "Converts recordings of CAN, CAN FD, CAN XL and LIN buses.";

struct ExitCodeRow {
  int code;
  std::string_view text;
};
inline constexpr ExitCodeRow kExitCodes[] = {
    {0, "everything came over"},
    {1, "failed"},
    {2, "wrong usage"},
    {3, "written, but something was dropped, cut, damaged or guessed"},
    {4, "the target exists; -f replaces it"},
    {5, "the target could not be written"},
    {130, "interrupted (129 hang-up, 143 terminated)"},
};

}  // namespace xlatr::cli
