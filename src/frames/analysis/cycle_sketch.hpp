// How the times between frames are spread, in bounded memory.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace xlatr {

// Counts of cycle times in buckets whose width grows with the time: 16 to each doubling between 16 us, since no frame
// is shorter, and 69 s. A quantile is the middle of its bucket and so wrong by 1/32 (3.2 %) at most within these
// bounds.
class CycleSketch {
 public:
  void add(std::uint64_t cycleNs) {
    std::uint32_t& count = counts_[bucketOf(cycleNs)];
    count += count < std::numeric_limits<std::uint32_t>::max() ? 1U : 0U;
  }

  // The time that this part of all, from 0 to 1, do not exceed; 0 if there is none. `lowest` and `highest` are the
  // bounds of what was added.
  [[nodiscard]] std::uint64_t quantile(double part, std::uint64_t lowest, std::uint64_t highest) const;

  [[nodiscard]] std::span<const std::uint32_t> counts() const { return counts_; }

  static constexpr unsigned kLowestExponent = 14;  // 2^14 ns = 16 us
  static constexpr unsigned kBeyondExponent = 36;  // 2^36 ns = 69 s
  static constexpr unsigned kPartBits = 4;
  static constexpr std::size_t kBuckets = 2 + (std::size_t{kBeyondExponent - kLowestExponent} << kPartBits);

  // The shortest time of a bucket.
  [[nodiscard]] static constexpr std::uint64_t lowerBound(std::size_t bucket) {
    if (bucket == 0) {
      return 0;
    }
    const std::size_t octave = (bucket - 1) >> kPartBits;
    const std::uint64_t part = (bucket - 1) & ((1U << kPartBits) - 1);
    return ((1ULL << kPartBits) + part) << (octave + kLowestExponent - kPartBits);
  }

 private:
  [[nodiscard]] static std::size_t bucketOf(std::uint64_t cycleNs) {
    const auto exponent = static_cast<unsigned>(std::bit_width(cycleNs | 1U)) - 1;
    if (exponent < kLowestExponent) {
      return 0;
    }
    if (exponent >= kBeyondExponent) {
      return kBuckets - 1;
    }
    const std::size_t part = cycleNs >> (exponent - kPartBits) & ((1U << kPartBits) - 1);
    return 1 + (std::size_t{exponent - kLowestExponent} << kPartBits) + part;
  }

  std::array<std::uint32_t, kBuckets> counts_{};
};

}  // namespace xlatr
