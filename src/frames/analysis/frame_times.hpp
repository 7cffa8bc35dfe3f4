// How long a frame keeps its bus busy.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "frames/frame.hpp"

namespace xlatr {

// Stuff bits depend on a frame's content, checksum included, and are not counted one by one.
enum class Stuffing : std::uint8_t {
  Mean,   // what random content has: one after every 30 bits
  Worst,  // the most that there can be: one after every 4 bits
  None,
};

// Bits per second; 0 if unknown.
struct BitRates {
  std::uint32_t nominal = 0;
  std::uint32_t data = 0;  // of CAN FD frames with BRS, and of CAN XL frames; 0: the nominal one
  std::uint32_t lin = 0;
  Stuffing stuffing = Stuffing::Mean;
};

// Bits of a frame with the interframe space after it, by the rate that they are sent at.
struct FrameBits {
  double nominal = 0.0;
  double data = 0.0;
};

// ISO 11898-1, figures of the frame formats: fields, stuff bits, CRC and ACK delimiters, end of frame, intermission.
// `flags` are those of a data or a remote frame.
[[nodiscard]] FrameBits frameBits(std::uint16_t flags, std::size_t dataLength, Stuffing stuffing);

// Nanoseconds on the bus, from tables. One thread at a time is no condition: nothing changes.
class FrameTimes {
 public:
  explicit FrameTimes(const BitRates& rates);

  // Of a data, remote, error, overload or LIN frame; 0 for what takes no time, or if the rate is unknown.
  [[nodiscard]] double of(FrameKind kind, std::uint16_t flags, std::size_t dataLength) const;

 private:
  static constexpr std::size_t kLongest = 64;
  // Without FD, FD, FD with BRS.
  using OfLengths = std::array<double, kLongest + 1>;

  [[nodiscard]] double timeOf(const FrameBits& bits) const { return bits.nominal * nominalNs_ + bits.data * dataNs_; }

  double nominalNs_;  // of one bit
  double dataNs_;
  double linNs_;
  Stuffing stuffing_;
  std::array<std::array<OfLengths, 3>, 2> canTimes_{};  // by the length of the identifier
};

}  // namespace xlatr
