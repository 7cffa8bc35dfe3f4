#include "output.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iostream>

#include "command_failure.hpp"

namespace xlatr::cli {

namespace {

bool isLineBreak(char character) {
  return character == '\n' || character == '\r';
}

bool isControl(char character) {
  return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
}

// U+0080 to U+009F in UTF-8, some of which begin what a terminal takes for a command.
bool isLongControl(std::string_view text) {
  constexpr unsigned char kLead = 0xC2;
  const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  return text.size() > 1 && byte(0) == kLead && byte(1) >= 0x80 && byte(1) < 0xA0;
}

}  // namespace

std::string fixedText(double value, int digits) {
  std::array<char, 400> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
  return {buffer.data(), end.ptr};
}

void printError(std::string_view text) {
  std::cerr << "xlatr: " + oneLine(text) + "\n";
}

void printWarning(std::string_view text) {
  printError("warning: " + std::string(text));
}

std::string oneLine(std::string_view text) {
  std::string line;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char character = text[at];
    if (isLongControl(text.substr(at))) {
      line += '?';
      ++at;
    } else if (isLineBreak(character)) {
      if (!line.empty() && line.back() != ' ') {
        line += ' ';
      }
    } else {
      line += isControl(character) ? '?' : character;
    }
  }
  const auto first = line.find_first_not_of(' ');
  if (first == std::string::npos) {
    return {};
  }
  return line.substr(first, line.find_last_not_of(' ') - first + 1);
}

std::string versionText(double version) {
  std::array<char, 64> buffer{};
  // A version that is the sum of its parts is a hair off the number that is meant.
  constexpr double kPlaces = 1e6;
  const double rounded = std::round(version * kPlaces) / kPlaces;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), rounded);
  std::string text(buffer.data(), end.ptr);
  if (text.find_first_not_of("0123456789") == std::string::npos) {
    text += ".0";
  }
  return text;
}

std::string versionListText(const std::vector<double>& versions) {
  std::string text;
  for (const double version : versions) {
    text += text.empty() ? "" : ", ";
    text += versionText(version);
  }
  return text;
}

std::string countText(std::uint64_t count) {
  std::string text = std::to_string(count);
  constexpr std::size_t kGroup = 3;
  for (std::size_t at = text.size(); at > kGroup; at -= kGroup) {
    text.insert(at - kGroup, ",");
  }
  return text;
}

std::string sizeText(std::uint64_t bytes) {
  if (bytes < 1000) {
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  }
  static constexpr std::array kUnits{"kB", "MB", "GB", "TB"};
  double size = static_cast<double>(bytes) / 1000.0;
  std::size_t unit = 0;
  // 999.95 would be printed as 1000.0.
  while (size >= 999.95 && unit + 1 < kUnits.size()) {
    size /= 1000.0;
    ++unit;
  }
  return fixedText(size, 1) + " " + kUnits[unit];
}

std::string tableText(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], row[column].size());
    }
  }
  std::string text;
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      text += row[column];
      if (column + 1 < row.size()) {
        text.append(widths[column] - row[column].size() + 2, ' ');
      }
    }
    text += '\n';
  }
  return text;
}

void finishOutput() {
  std::cout.flush();
  if (!std::cout) {
    throw CommandFailure(ExitCode::Failed, "standard output: can't be written; check where it goes");
  }
}

}  // namespace xlatr::cli
