#include "progress_bar.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>

namespace xlatr::cli {

namespace {

constexpr std::size_t kCells = 40;

}  // namespace

std::string progressText(double percent) {
  const double known = std::isnan(percent) ? 0.0 : std::clamp(percent, 0.0, 100.0);
  // Rounded down: it shows 100 % only when the end is reached.
  const auto whole = static_cast<std::size_t>(known);
  const std::size_t filled = whole * kCells / 100;
  const std::string number = std::to_string(whole);
  return "[" + std::string(filled, '#') + std::string(kCells - filled, '.') + "]" +
         std::string(4 - number.size(), ' ') + number + " %";
}

ProgressBar::~ProgressBar() {
  if (!drawn_.empty()) {
    // Blanks rather than an escape sequence: every terminal knows those.
    std::cerr << '\r' + std::string(drawn_.size(), ' ') + '\r' << std::flush;
  }
}

void ProgressBar::show(double percent) {
  if (!visible_) {
    return;
  }
  std::string text = progressText(percent);
  if (text != drawn_) {
    drawn_ = std::move(text);
    std::cerr << '\r' + drawn_ << std::flush;
  }
}

}  // namespace xlatr::cli
