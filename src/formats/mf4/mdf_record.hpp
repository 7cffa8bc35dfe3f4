// The records that a written MF4 file holds, as bytes. The channels that the file declares tell a reader the same.
//
// After the record id, which only unsorted files have, all numbers little-endian:
//
//   data, remote   error    size
//        0           0       8    time, a double, nanoseconds since the start
//        8                   4    identifier, without a mark for 29 bits
//       12           8       1    bus, its low byte
//       13           9       1    bit 0 sent, 1 FD, 2 BRS, 3 ESI, 4 29-bit identifier (not in error frames)
//       14                   1    DLC
//       15                   1    data length
//       16                   64   data of a data frame, filled up with zeros (8 bytes in the short form)
//                   10       1    type of the error
//                   11       1    its bit position
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "formats/mf4/block_layout_options.hpp"
#include "formats/mf4/mdf_can_message.hpp"

namespace xlatr {

// Data bytes that the record of a data frame has room for.
[[nodiscard]] constexpr std::uint32_t mdfPayloadSize(const MdfLayoutOptions& options) {
  return options.largePayload ? 64 : 8;
}

// Whether the payload goes to the signal data, where any length has its place, and the record only names its offset.
// FD frames with BRS or ESI keep theirs in the record.
[[nodiscard]] inline bool isSignalDataFrame(const MdfLayoutOptions& options, MessageKind kind) {
  return options.usesSignalData() && (kind == MessageKind::DT || kind == MessageKind::FD);
}

// Makes one record at a time.
class MdfRecord {
 public:
  // The bytes of the message's record, valid until the next call. `signalDataOffset` is that of the payload of a frame
  // that keeps it there. At most as many bytes of data as fit are taken.
  [[nodiscard]] std::string_view render(const MdfCanMessage& message, const MdfLayoutOptions& options,
                                        std::uint64_t signalDataOffset);

 private:
  template <class Number>
  void put(Number value);
  void putPayload(const MdfCanMessage& message, std::size_t room);

  static constexpr std::size_t kMaxSize = 1 + 16 + 64;
  std::array<std::uint8_t, kMaxSize> bytes_ = {};
  std::size_t size_ = 0;
};

}  // namespace xlatr
