// What the frames of one identifier carry.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tracegen/random.hpp"

namespace tracegen {

// Payloads that look like those of a control unit: byte 0 a checksum over the others, byte 1 a counter (low half) and a
// state (high half), then 16-bit values, little-endian, of which some change slowly and the others stay the same. A
// shorter payload is the beginning of that; a payload of a single byte is the counter alone.
class Payload {
 public:
  Payload(std::uint32_t maxLength, Random& random);

  // Moves all values on by one frame and fills `data`, which is at most `maxLength` bytes long.
  void fill(std::span<std::uint8_t> data, Random& random);

 private:
  struct Signal {
    std::uint16_t value;
    std::int16_t slope;  // change per frame
  };

  void move(Signal& signal, std::uint32_t bits);

  std::vector<Signal> signals_;
  std::uint8_t counter_ = 0;  // 0 to 15
  std::uint8_t state_;        // 0 to 15
};

// CRC-8 with the polynomial 0x1D, begun with 0xFF and inverted at the end, as control units compute it.
std::uint8_t checksum(std::span<const std::uint8_t> data);

}  // namespace tracegen
