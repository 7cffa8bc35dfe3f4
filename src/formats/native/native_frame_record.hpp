// The records of frames: a header, and for all but remote frames the data.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "formats/native/native_record.hpp"
#include "io/quirk.hpp"
#include "messages/can_dlc.hpp"

namespace xlatr {

namespace record_flag {
inline constexpr std::uint16_t kRemote = 0x0001;
inline constexpr std::uint16_t kExtended = 0x0002;
inline constexpr std::uint16_t kFd = 0x0010;
inline constexpr std::uint16_t kBrs = 0x0020;
inline constexpr std::uint16_t kEsi = 0x0040;
inline constexpr std::uint16_t kAll = kRemote | kExtended | kFd | kBrs | kEsi;
}  // namespace record_flag

// What the type of a frame's record says.
struct FrameRecordKind {
  RecordType type;
  bool isSent;
  bool isRemote;
  bool isFd;
  std::size_t mostBytes;  // that are taken from the data of a frame when its record is made
};

inline constexpr std::array kFrameRecordKinds = {
    FrameRecordKind{RecordType::CanRxMsg, false, false, false, 8},
    FrameRecordKind{RecordType::CanRxRtrMsg, false, true, false, 0},
    FrameRecordKind{RecordType::CanRxFdMsg, false, false, true, 64},
    FrameRecordKind{RecordType::CanTxMsg, true, false, false, 8},
    FrameRecordKind{RecordType::CanTxRtrMsg, true, true, false, 0},
    FrameRecordKind{RecordType::CanTxFdMsg, true, false, true, 64},
};

// The type is that of a frame; the codes of frames are the first ones, without a gap.
[[nodiscard]] constexpr const FrameRecordKind& frameRecordKindOf(RecordType type) {
  return kFrameRecordKinds[static_cast<std::size_t>(type) - static_cast<std::size_t>(RecordType::CanRxMsg)];
}
static_assert(std::ranges::all_of(kFrameRecordKinds,
                                  [](const FrameRecordKind& kind) { return &frameRecordKindOf(kind.type) == &kind; }));

// The bytes of data for which a frame's record states room, before they are filled up to a multiple of four. On the
// compatible way a sent frame has as much room as its DLC is as a number, and a received remote frame states the room
// of its DLC though it has none: the readers of such files count on it.
[[nodiscard]] constexpr std::size_t statedRoom(const FrameRecordKind& kind, std::uint8_t dlc, Way way) {
  if (kind.isRemote && (kind.isSent || !way.has(Quirk::BtrcRemoteStatesRoom))) {
    return 0;
  }
  return kind.isSent && way.has(Quirk::BtrcSentDataIsCut) ? dlc : kDlcLengths[dlc];
}

// What a frame is, in the tail of its header.
struct Internal_DataFrameInfo {
  Internal_DataFrameInfo() = default;
  // Of the DLC the low four bits are kept, of the flags only the known ones.
  Internal_DataFrameInfo(std::uint8_t frameBus, std::uint8_t frameDlc, std::uint16_t frameFlags, std::uint32_t frameId)
      : bus(frameBus), dlc(frameDlc & 0x0FU), flags(frameFlags & record_flag::kAll), id(frameId) {}

  std::uint8_t bus = 0;     // counted from 0
  std::uint8_t dlc = 0;     // a code; see dlcCode
  std::uint16_t flags = 0;  // frame_flag
  std::uint32_t id = 0;

  // A record that was read may have more bits in the field than a code has.
  [[nodiscard]] std::uint8_t dlcCode() const { return dlc & 0x0FU; }

  static consteval auto fields() {
    return FieldList{
        Field{0, "bus", &Internal_DataFrameInfo::bus},
        Field{1, "dlc", &Internal_DataFrameInfo::dlc},
        Field{2, "flags", &Internal_DataFrameInfo::flags},
        Field{4, "id", &Internal_DataFrameInfo::id},
    };
  }
};

// The header of received frames.
struct Internal_ReceivedDataFrameHeader {
  Internal_ReceivedDataFrameHeader() = default;
  Internal_ReceivedDataFrameHeader(RecordType type, const Internal_DataFrameInfo& frame, std::uint64_t receivedAt,
                                   Way way = Way::compatible())
      : header(roundedUpToFour(kFixedSize + statedRoom(frameRecordKindOf(type), frame.dlcCode(), way)), type),
        timestampTicks(receivedAt),
        info(frame) {}

  static constexpr std::size_t kFixedSize = 20;

  Native_RecordHeader header;
  std::uint64_t timestampTicks = 0;
  Internal_DataFrameInfo info;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Internal_ReceivedDataFrameHeader::header},
        Field{4, "timestamp", &Internal_ReceivedDataFrameHeader::timestampTicks},
        Field{12, "info", &Internal_ReceivedDataFrameHeader::info},
    };
  }
};

// The header of sent frames.
struct Internal_SentDataFrameHeader {
  Internal_SentDataFrameHeader() = default;
  Internal_SentDataFrameHeader(RecordType type, const Internal_DataFrameInfo& frame, std::uint64_t requestedAt,
                               std::uint64_t sentAt, Way way = Way::compatible())
      : header(roundedUpToFour(kFixedSize + statedRoom(frameRecordKindOf(type), frame.dlcCode(), way)), type),
        timestampTicks(requestedAt),
        timestampSentTicks(sentAt),
        info(frame) {}

  static constexpr std::size_t kFixedSize = 28;

  Native_RecordHeader header;
  std::uint64_t timestampTicks = 0;
  std::uint64_t timestampSentTicks = 0;  // the same as `timestampTicks` in what is written; not looked at when read
  Internal_DataFrameInfo info;

  static consteval auto fields() {
    return FieldList{
        Field{0, "header", &Internal_SentDataFrameHeader::header},
        Field{4, "timestamp", &Internal_SentDataFrameHeader::timestampTicks},
        Field{12, "timestampSent", &Internal_SentDataFrameHeader::timestampSentTicks},
        Field{20, "info", &Internal_SentDataFrameHeader::info},
    };
  }
};

static_assert(kLayoutSize<Internal_ReceivedDataFrameHeader> == Internal_ReceivedDataFrameHeader::kFixedSize);
static_assert(kLayoutSize<Internal_SentDataFrameHeader> == Internal_SentDataFrameHeader::kFixedSize);

// The data area of the frame record whose header was read from the start of `bytes`, padding included: as many bytes as
// the record's size says, whatever the DLC says. Nothing when the size is below that of the header or the
// bytes end earlier.
template <class FrameHeader>
[[nodiscard]] std::optional<std::span<const std::uint8_t>> dataOfFrame(std::span<const std::uint8_t> bytes,
                                                                       const FrameHeader& frame) {
  const std::size_t size = frame.header.size;
  if (size < FrameHeader::kFixedSize || bytes.size() < size) {
    return std::nullopt;
  }
  return bytes.first(size).subspan(FrameHeader::kFixedSize);
}

// Adds the record of a frame. The data area is what the size in the header leaves room for: the first bytes of `data`,
// and zeros. That of a remote frame is not written, whatever its size says.
template <class FrameHeader>
void appendFrame(Bytes& out, const FrameHeader& frame, std::span<const std::uint8_t> data) {
  appendFields(out, frame);
  const FrameRecordKind& kind = frameRecordKindOf(frame.header.type);
  if (!kind.isRemote) {
    const std::size_t room = frame.header.size - FrameHeader::kFixedSize;
    std::copy_n(data.begin(), std::min({room, kind.mostBytes, data.size()}), growBytes(out, room));
  }
}

}  // namespace xlatr
