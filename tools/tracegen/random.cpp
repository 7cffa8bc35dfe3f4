#include "tracegen/random.hpp"

#include <bit>

namespace tracegen {

Random::Random(std::uint64_t seed) {
  for (std::uint64_t& word : state_) {
    seed += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = seed;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    word = mixed ^ (mixed >> 31U);
  }
}

std::uint64_t Random::next() {
  const std::uint64_t result = std::rotl(state_[1] * 5, 7) * 9;
  const std::uint64_t shifted = state_[1] << 17U;
  state_[2] ^= state_[0];
  state_[3] ^= state_[1];
  state_[1] ^= state_[2];
  state_[0] ^= state_[3];
  state_[2] ^= shifted;
  state_[3] = std::rotl(state_[3], 45);
  return result;
}

}  // namespace tracegen
