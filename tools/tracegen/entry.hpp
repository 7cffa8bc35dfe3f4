// One thing that a recording device records, before it takes the shape of a line.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tracegen {

// The longest payload, that of a CAN XL frame.
inline constexpr std::size_t kMaxDataLength = 2048;

// The payload lengths that a CAN FD frame can have; the index is the DLC.
inline constexpr std::array<std::uint8_t, 16> kFdLengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

enum class EntryKind : std::uint8_t {
  Data,           // classic data frame
  FdData,         // CAN FD data frame
  XlData,         // CAN XL data frame
  Remote,         // remote frame: a length, no data
  Status,         // four data bytes: the status word of the interface, most significant byte first
  ErrorCounters,  // two data bytes: receive and transmit error counter
  ErrorFrame,     // five data bytes: kind of error, direction, bit position, receive and transmit error counter
  Event,          // a text with a time
  Comment         // a text without time or bus
};

struct Entry {
  EntryKind kind = EntryKind::Comment;
  std::uint64_t timeUs = 0;  // since the start of the recording; never less than that of the entry before
  std::uint8_t bus = 0;      // 1-based; 0 for a comment
  bool extended = false;
  bool transmitted = false;          // sent by the recording device itself
  bool bitRateSwitch = false;        // CAN FD
  bool errorStateIndicator = false;  // CAN FD
  std::uint32_t canId = 0;
  std::uint32_t dataLength = 0;  // bytes; of a remote frame the requested length
  std::string_view text;         // event and comment; valid until the next entry
  std::array<std::uint8_t, kMaxDataLength> data{};

  [[nodiscard]] std::span<const std::uint8_t> payload() const { return std::span(data).first(dataLength); }
};

}  // namespace tracegen
