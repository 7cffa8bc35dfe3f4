#include "sparkline.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace xlatr::cli {

namespace {

constexpr std::array<std::string_view, 8> kBlocks = {"\u2581", "\u2582", "\u2583", "\u2584",
                                                     "\u2585", "\u2586", "\u2587", "\u2588"};
constexpr std::array<std::string_view, 8> kAscii = {".", ":", "-", "=", "+", "*", "#", "@"};

// How much of the bins from 0 on happened up to this point, if it happened evenly within each bin.
double countUpTo(std::span<const std::uint32_t> bins, double covered, double point) {
  double count = 0.0;
  for (std::size_t bin = 0; bin < bins.size(); ++bin) {
    const auto begin = static_cast<double>(bin);
    if (point <= begin) {
      break;
    }
    const double width = std::clamp(covered - begin, 1e-9, 1.0);
    count += bins[bin] * std::min((point - begin) / width, 1.0);
  }
  return count;
}

}  // namespace

bool showsUtf8() {
  for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing here changes it
    if (value == nullptr || *value == '\0') {
      continue;
    }
    std::string lower;
    for (const char character : std::string_view(value)) {
      if (character != '-') {
        lower += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
      }
    }
    return lower.find("utf8") != std::string::npos;
  }
  return false;
}

std::string sparkline(std::span<const std::uint32_t> bins, double covered, std::size_t width, bool utf8) {
  std::vector<double> counts;
  double before = 0.0;
  for (std::size_t at = 1; at <= width; ++at) {
    // At the end all is counted, whatever rounding makes of the point.
    const double point =
        at == width ? static_cast<double>(bins.size()) : covered * static_cast<double>(at) / static_cast<double>(width);
    const double upTo = countUpTo(bins, covered, point);
    counts.push_back(upTo - before);
    before = upTo;
  }
  const double most = counts.empty() ? 0.0 : *std::ranges::max_element(counts);
  const auto& levels = utf8 ? kBlocks : kAscii;
  std::string line;
  for (const double count : counts) {
    constexpr double kNothing = 1e-6;
    if (count <= kNothing) {
      line += ' ';
      continue;
    }
    const auto level =
        static_cast<std::size_t>(std::ceil(count / most * static_cast<double>(levels.size()) - kNothing));
    line += levels[std::clamp<std::size_t>(level, 1, levels.size()) - 1];
  }
  return line;
}

}  // namespace xlatr::cli
