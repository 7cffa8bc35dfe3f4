// Lines for the user: results go to stdout, errors and warnings to stderr, one line each.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::cli {

// Writes "xlatr: ", the text and a line end to stderr.
void printError(std::string_view text);

// The same with "xlatr: warning: ".
void printWarning(std::string_view text);

// The text as one line without blanks at its ends: each run of line breaks becomes a blank and any other control
// character a "?", so that neither a message nor a file name can break the line or steer a terminal.
[[nodiscard]] std::string oneLine(std::string_view text);

// "2.0", "4.11": as short as the version allows, with at least one digit after the point.
[[nodiscard]] std::string versionText(double version);

// "2.0, 2.1": the versions in order.
[[nodiscard]] std::string versionListText(const std::vector<double>& versions);

// "12.50" for two digits.
[[nodiscard]] std::string fixedText(double value, int digits);

// "1,234,567".
[[nodiscard]] std::string countText(std::uint64_t count);

// "17 bytes", "1.2 MB": units of a thousand.
[[nodiscard]] std::string sizeText(std::uint64_t bytes);

// Left-aligned columns, two blanks between them; the first row is the head. All rows have the same number of cells.
[[nodiscard]] std::string tableText(const std::vector<std::vector<std::string>>& rows);

// Flushes stdout and raises a CommandFailure if it could not be written, for example on a full disk.
void finishOutput();

}  // namespace xlatr::cli
