#include "frames/analysis/cycle_sketch.hpp"

#include <cmath>
#include <numeric>

namespace xlatr {

std::uint64_t CycleSketch::quantile(double part, std::uint64_t lowest, std::uint64_t highest) const {
  const std::uint64_t all = std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
  if (all == 0) {
    return 0;
  }
  const auto wanted = static_cast<std::uint64_t>(std::ceil(part * static_cast<double>(all)));
  std::uint64_t seen = 0;
  std::size_t bucket = 0;
  while (bucket + 1 < kBuckets && (seen += counts_[bucket]) < wanted) {
    ++bucket;
  }
  if (wanted >= all || bucket + 1 == kBuckets) {
    return highest;
  }
  return std::midpoint(std::clamp(lowerBound(bucket), lowest, highest),
                       std::clamp(lowerBound(bucket + 1), lowest, highest));
}

}  // namespace xlatr
