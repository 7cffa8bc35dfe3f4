// The bar that is drawn over itself on stderr while a conversion runs.
#pragma once

#include <string>

namespace xlatr::cli {

// The bar as one line without a line end: "[#####...............]  25 %". A percentage that is not a number, as that of
// a conversion with nothing to do, counts as 0; one outside 0 to 100 counts as the nearer end.
[[nodiscard]] std::string progressText(double percent);

// One thread at a time. The destructor wipes the bar away, so that what is printed next starts on a clean line.
class ProgressBar {
 public:
  // A bar that is not visible draws nothing.
  explicit ProgressBar(bool visible) : visible_(visible) {}
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Draws the bar if it looks different from the last time.
  void show(double percent);

 private:
  bool visible_;
  std::string drawn_;
};

}  // namespace xlatr::cli
