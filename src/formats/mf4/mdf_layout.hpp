// How a written MF4 file is laid out: the choices, and the bytes of its records. The writer and the blocks that describe
// the records share it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace xlatr {

enum class MdfLayout : std::uint32_t {
  Unsorted = 0,          // one data group; each record has the id of its channel group in front
  SignalData = 1,        // as Unsorted, with the payloads of data frames in a block of their own
  SignalDataStream = 2,  // the same, declared as a stream, which needs version 4.2
  Sorted = 3,            // one data group a kind of frame, records without ids
};

struct MdfLayoutOptions {
  bool largePayload = true;  // room for 64 data bytes in a record, else for 8
  MdfLayout layout = MdfLayout::Unsorted;
  bool zipped = false;  // data blocks are compressed
  bool dataFramesOnly = false;

  [[nodiscard]] bool sorted() const { return layout == MdfLayout::Sorted; }
  [[nodiscard]] bool hasSignalData() const {
    return layout == MdfLayout::SignalData || layout == MdfLayout::SignalDataStream;
  }
  // Bytes of a record id.
  [[nodiscard]] std::uint8_t recordIdSize() const { return sorted() ? 0 : 1; }
  // Bytes that a record has for the payload, or for its place in the signal data.
  [[nodiscard]] std::uint32_t payloadSize() const { return largePayload && !hasSignalData() ? 64 : 8; }
};

// The kinds of frames that have a channel group of their own; the record id of the group.
enum class MdfFrameKind : std::uint8_t { Data = 0, Remote = 1, Error = 2 };

inline constexpr std::size_t kMdfFrameKinds = 3;

// Offsets in a record, behind its id. All numbers are little-endian.
namespace mdf_record {

inline constexpr std::uint32_t kTime = 0;  // double, nanoseconds since the start

// Data and remote frames.
inline constexpr std::uint32_t kId = 8;
inline constexpr std::uint32_t kBusChannel = 12;
inline constexpr std::uint32_t kFlags = 13;
inline constexpr std::uint32_t kDlc = 14;
inline constexpr std::uint32_t kDataLength = 15;
inline constexpr std::uint32_t kDataBytes = 16;
inline constexpr std::uint32_t kRemoteSize = kDataBytes;

// Error frames.
inline constexpr std::uint32_t kErrorBusChannel = 8;
inline constexpr std::uint32_t kErrorFlags = 9;
inline constexpr std::uint32_t kErrorType = 10;
inline constexpr std::uint32_t kErrorBitPosition = 11;
inline constexpr std::uint32_t kErrorSize = 12;

// Bits of the flags byte.
inline constexpr std::uint8_t kDirBit = 0;  // set for a sent frame
inline constexpr std::uint8_t kEdlBit = 1;
inline constexpr std::uint8_t kBrsBit = 2;
inline constexpr std::uint8_t kEsiBit = 3;
inline constexpr std::uint8_t kIdeBit = 4;  // 29-bit identifier; clear in error frames

}  // namespace mdf_record

}  // namespace xlatr
