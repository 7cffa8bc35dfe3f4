#include "frames/analysis/frame_times.hpp"

#include <algorithm>
#include <cmath>

namespace xlatr {
namespace {

constexpr double kNanosecondsPerSecond = 1e9;
constexpr double kBitsPerByte = 8.0;
constexpr double kEndOfFrame = 7.0;
constexpr double kIntermission = 3.0;
constexpr double kAck = 1.0;
constexpr double kDelimiter = 1.0;
// ACK slot and delimiter, end of frame, intermission: always at the nominal rate and never stuffed.
constexpr double kTail = kAck + kDelimiter + kEndOfFrame + kIntermission;

// A stuff bit follows five equal bits. In random bits that is one after every 30 on average, since four more bits that
// are equal to the one before take 2^5 - 2 tries; in the worst case each fifth bit, which is a stuff bit itself, begins
// the next group.
double stuffBits(double bits, Stuffing stuffing) {
  constexpr double kMeanDistance = 30.0;
  constexpr double kWorstDistance = 4.0;
  switch (stuffing) {
    case Stuffing::Mean:
      return (bits - 1.0) / kMeanDistance;
    case Stuffing::Worst:
      return std::floor((bits - 1.0) / kWorstDistance);
    case Stuffing::None:
      break;
  }
  return 0.0;
}

// SOF, identifier with RTR (and SRR), IDE, two reserved bits or one, DLC, data, CRC; all of it stuffed.
FrameBits classicBits(bool extended, double dataBits, Stuffing stuffing) {
  const double stuffed = (extended ? 1.0 + 11 + 1 + 1 + 18 + 1 + 2 : 1.0 + 11 + 1 + 1 + 1) + 4 + dataBits + 15;
  return {.nominal = stuffed + stuffBits(stuffed, stuffing) + kDelimiter + kTail};
}

// SOF, identifier with RRS (and SRR), IDE, FDF, res and BRS at the nominal rate; ESI, DLC and data at that of the data.
// The CRC field, with the count of stuff bits, has fixed stuff bits: one before it and one after every fourth bit.
FrameBits fdBits(bool extended, std::size_t length, Stuffing stuffing) {
  constexpr std::size_t kLongestOfShortCrc = 16;
  const double arbitration = extended ? 1.0 + 11 + 1 + 1 + 18 + 1 + 1 + 1 + 1 : 1.0 + 11 + 1 + 1 + 1 + 1 + 1;
  const double data = 1.0 + 4 + static_cast<double>(length) * kBitsPerByte;
  const double crc = length <= kLongestOfShortCrc ? 4.0 + 17 + 6 : 4.0 + 21 + 7;
  const double early = stuffBits(arbitration, stuffing);
  const double late = stuffBits(arbitration + data, stuffing) - early;
  return {.nominal = arbitration + early + kTail, .data = data + late + crc + kDelimiter};
}

// CAN XL (ISO 11898-1:2024): SOF, priority identifier, RRS, IDE, FDF, XLF, resXL and ADH; DH1, DH2, DL1, SDT, SEC, DLC,
// SBC, PCRC, VCID, acceptance field, data, FCRC and, after every tenth of these bits, a fixed stuff bit; FCP; DAH, AH1,
// AL1, AH2 and the tail of all frames.
FrameBits xlBits(std::size_t length, Stuffing stuffing) {
  constexpr std::size_t kFixedStuffDistance = 10;
  constexpr double kArbitration = 1.0 + 11 + 1 + 1 + 1 + 1 + 1;
  const std::size_t stuffed = 8 + 1 + 11 + 3 + 13 + 8 + 32 + length * 8 + 32;
  const std::size_t fixed = stuffed / kFixedStuffDistance;
  return {.nominal = kArbitration + stuffBits(kArbitration, stuffing) + 1 + 4 + kTail,
          .data = 3.0 + static_cast<double>(stuffed + fixed) + 4};
}

// An error or overload frame: the flag, the delimiter, intermission. What of a frame came before an error is not known.
constexpr double kErrorBits = 6.0 + 8 + kIntermission;

// LIN 2.x: break of 13 bits and delimiter, synchronisation, identifier; a byte has ten bits, and a checksum follows.
double linBits(std::size_t length) {
  constexpr double kBitsPerLinByte = 10.0;
  return 13.0 + 1 + 2 * kBitsPerLinByte + (length == 0 ? 0.0 : static_cast<double>(length + 1) * kBitsPerLinByte);
}

double bitTime(std::uint32_t rate) {
  return rate == 0 ? 0.0 : kNanosecondsPerSecond / rate;
}

}  // namespace

FrameBits frameBits(std::uint16_t flags, std::size_t dataLength, Stuffing stuffing) {
  const bool extended = (flags & frame_flag::kExtended) != 0;
  if ((flags & frame_flag::kXl) != 0) {
    return xlBits(dataLength, stuffing);
  }
  if ((flags & frame_flag::kFd) == 0) {
    return classicBits(extended, static_cast<double>(dataLength) * kBitsPerByte, stuffing);
  }
  FrameBits bits = fdBits(extended, dataLength, stuffing);
  if ((flags & frame_flag::kBrs) == 0) {
    bits = {.nominal = bits.nominal + bits.data};
  }
  return bits;
}

FrameTimes::FrameTimes(const BitRates& rates)
    : nominalNs_(bitTime(rates.nominal)),
      dataNs_(rates.data == 0 ? nominalNs_ : bitTime(rates.data)),
      linNs_(bitTime(rates.lin)),
      stuffing_(rates.stuffing) {
  constexpr std::array<std::uint16_t, 3> kForms = {0, frame_flag::kFd, frame_flag::kFd | frame_flag::kBrs};
  for (std::size_t extended = 0; extended < canTimes_.size(); ++extended) {
    for (std::size_t form = 0; form < kForms.size(); ++form) {
      const auto flags = static_cast<std::uint16_t>(kForms[form] | (extended != 0 ? frame_flag::kExtended : 0));
      for (std::size_t length = 0; length <= kLongest; ++length) {
        canTimes_[extended][form][length] = timeOf(frameBits(flags, length, stuffing_));
      }
    }
  }
}

double FrameTimes::of(FrameKind kind, std::uint16_t flags, std::size_t dataLength) const {
  switch (kind) {
    case FrameKind::Data:
    case FrameKind::Remote: {
      if ((flags & frame_flag::kXl) != 0) {
        return timeOf(frameBits(flags, dataLength, stuffing_));
      }
      const std::size_t form =
          (flags & frame_flag::kFd) == 0 ? 0 : 1 + static_cast<std::size_t>((flags & frame_flag::kBrs) != 0);
      const std::size_t extended = (flags & frame_flag::kExtended) != 0 ? 1 : 0;
      return canTimes_[extended][form][kind == FrameKind::Remote ? 0 : std::min(dataLength, kLongest)];
    }
    case FrameKind::Error:
    case FrameKind::Overload:
      return kErrorBits * nominalNs_;
    case FrameKind::Lin:
      return linBits(dataLength) * linNs_;
    default:
      return 0.0;
  }
}

}  // namespace xlatr
