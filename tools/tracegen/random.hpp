// Random numbers that are the same on every platform, which the distributions of the standard library are not.
#pragma once

#include <array>
#include <cstdint>

namespace tracegen {

// xoshiro256**, its state filled from the seed by splitmix64, as its authors advise: a seed of few bits would otherwise
// show in the first numbers.
class Random {
 public:
  explicit Random(std::uint64_t seed);

  // 64 uniform bits.
  std::uint64_t next();
  // Uniformly 0 to `bound` - 1. The bias of the multiplication is below one in 2^32 for each value and does not matter
  // here.
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(((next() >> 32U) * bound) >> 32U); }
  // True once in `count` times on average.
  bool oneIn(std::uint32_t count) { return below(count) == 0; }

 private:
  std::array<std::uint64_t, 4> state_{};
};

}  // namespace tracegen
