// What happens over time, in a bounded number of bins.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace xlatr {

// Where bins begin and how wide they are: the same for all rows of a table, so that these can be drawn one below the
// other. Bins are wide enough for the latest time so far; frames before the origin are in the first bin.
class BinClock {
 public:
  explicit BinClock(std::size_t bins) : bins_(bins) {}

  [[nodiscard]] bool started() const { return started_; }
  void start(std::int64_t originNs) {
    originNs_ = originNs;
    started_ = true;
  }
  // How often the bins must double their width before the time has one.
  [[nodiscard]] unsigned doublingsFor(std::int64_t timeNs) const {
    unsigned doublings = 0;
    while (offsetOf(timeNs) >> (shift_ + doublings) >= bins_) {
      ++doublings;
    }
    return doublings;
  }
  void widen(unsigned doublings) { shift_ += doublings; }
  [[nodiscard]] std::size_t binOf(std::int64_t timeNs) const {
    return static_cast<std::size_t>(offsetOf(timeNs) >> shift_);
  }
  [[nodiscard]] bool holds(std::int64_t timeNs) const { return offsetOf(timeNs) >> shift_ < bins_; }

  [[nodiscard]] std::int64_t originNs() const { return originNs_; }
  [[nodiscard]] std::uint64_t widthNs() const { return 1ULL << shift_; }

 private:
  // Times may be farther from each other than a signed number can say.
  [[nodiscard]] std::uint64_t offsetOf(std::int64_t timeNs) const {
    return timeNs < originNs_ ? 0 : static_cast<std::uint64_t>(timeNs) - static_cast<std::uint64_t>(originNs_);
  }

  static constexpr unsigned kFirstShift = 20;  // 1.05 ms

  std::size_t bins_;
  std::int64_t originNs_ = 0;
  unsigned shift_ = kFirstShift;
  bool started_ = false;
};

// Makes each bin hold what 2^doublings of them held.
template <typename Value, std::size_t Count>
void foldBins(std::array<Value, Count>& bins, unsigned doublings) {
  for (std::size_t at = 0; at < bins.size(); ++at) {
    // From the second bin on nothing is added to what lies behind, so that it can be done in place.
    const Value value = bins[at];
    bins[at] = Value{};
    bins[at >> doublings] += value;
  }
}

}  // namespace xlatr
