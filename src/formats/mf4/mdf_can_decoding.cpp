// The part of MdfFrameLayout that makes data and remote frames, of which logs have millions: column by column, so that
// each loop does one thing.
#include <algorithm>
#include <array>
#include <cstring>

#include "formats/mf4/mdf_frame_layout.hpp"
#include "messages/can_dlc.hpp"

namespace xlatr {

// What the records say. The bits are flags of frames, and kRemote.
struct MdfCanMembers {
  static constexpr std::uint16_t kRemote = 0x8000;

  MdfNumbers bus;
  MdfNumbers id;
  MdfNumbers dlc;
  MdfNumbers length;
  std::array<std::uint16_t, MdfRows::kMost> bits;
};

namespace {

constexpr std::uint32_t kExtendedMark = 0x80000000;
constexpr std::uint32_t kHighestExtendedId = 0x1FFFFFFF;
constexpr std::uint32_t kHighestBaseId = 0x7FF;
constexpr std::size_t kLongestClassicFrame = 8;
constexpr std::size_t kLongestFdFrame = 64;
constexpr std::uint16_t kDirections = frame_flag::kReceived | frame_flag::kTransmitted;

struct CanFrame {
  std::int64_t timeNs = 0;
  std::uint64_t place = 0;
  FrameKind kind = FrameKind::Data;
  std::uint16_t bus = 0;
  std::uint16_t flags = 0;
  std::uint16_t dlc = 0;
  std::uint32_t id = 0;

  void set(std::uint16_t mask) { flags = static_cast<std::uint16_t>(flags | mask); }
};

// Writes frames into the rows of a batch, one after the other.
class CanFrameRows {
 public:
  // Bytes that can be read after the end of any data.
  static constexpr std::size_t kPadding = 8;

  CanFrameRows(FrameBatch& batch, std::size_t count, std::size_t longestData)
      : batch_(batch), rows_(batch.freeRows(count, count * longestData + kPadding)) {}

  void add(const CanFrame& frame, std::span<const std::uint8_t> data) {
    rows_.times[count_] = frame.timeNs;
    rows_.kinds[count_] = static_cast<std::uint8_t>(frame.kind);
    rows_.buses[count_] = frame.bus;
    rows_.ids[count_] = frame.id;
    rows_.flags[count_] = frame.flags;
    rows_.dlcs[count_] = frame.dlc;
    rows_.places[count_] = frame.place;
    if (data.size() <= kPadding) {
      std::memcpy(rows_.data + dataSize_, data.data(), kPadding);  // a copy of fixed size is one move
    } else {
      std::memcpy(rows_.data + dataSize_, data.data(), data.size());
    }
    dataSize_ += data.size();
    rows_.dataEnds[count_] = rows_.dataBegin + static_cast<std::int32_t>(dataSize_);
    ++count_;
  }
  void finish() { batch_.appendFilled(count_); }

 private:
  FrameBatch& batch_;
  FrameBatch::FreeRows rows_;
  std::size_t count_ = 0;
  std::size_t dataSize_ = 0;
};

// `marked`: the frame is said to have an extended identifier. False if it had to be guessed.
bool setId(CanFrame& frame, std::uint64_t raw, bool marked, bool isSaid) {
  constexpr std::uint64_t kKnownBits = std::uint64_t{kHighestExtendedId} | kExtendedMark;
  frame.id = static_cast<std::uint32_t>(raw) & kHighestExtendedId;
  const bool extended = (raw & kExtendedMark) != 0 || marked;
  const bool tooLong = !extended && frame.id > kHighestBaseId;
  frame.set(extended || tooLong ? frame_flag::kExtended : std::uint16_t{0});
  return !(tooLong && isSaid) && (raw & ~kKnownBits) == 0;
}

bool hasDlc(const MdfCanMembers& members, std::size_t at) {
  return members.dlc.isAtMost(at, kDlcLengths.size() - 1);
}

void setRemote(CanFrame& frame, const MdfCanMembers& members, std::size_t at) {
  frame.kind = FrameKind::Remote;
  if (hasDlc(members, at)) {
    frame.dlc = static_cast<std::uint16_t>(members.dlc.values[at]);
    frame.set(frame_flag::kDlcKnown);
  } else if (members.length.isAtMost(at, kLongestFdFrame)) {
    frame.dlc = static_cast<std::uint16_t>(lengthToDlc(static_cast<std::uint32_t>(members.length.values[at])));
    frame.set(frame_flag::kDlcKnown);
  }
}

// Of groups that say nothing of CAN FD, what only its frames have says it.
bool isFdFrame(std::uint16_t bits, bool isSaid) {
  return (bits & (isSaid ? frame_flag::kFd : frame_flag::kBrs | frame_flag::kEsi)) != 0;
}

std::optional<std::uint64_t> statedLength(const MdfCanMembers& members, std::size_t at, bool fdIsSaid) {
  if (members.length.known[at] || !hasDlc(members, at)) {
    return members.length.get(at);
  }
  const bool mayBeLong = !fdIsSaid || isFdFrame(members.bits[at], fdIsSaid);
  return std::min<std::uint64_t>(kDlcLengths[static_cast<std::size_t>(members.dlc.values[at])],
                                 mayBeLong ? kLongestFdFrame : kLongestClassicFrame);
}

// False if it had to be guessed what kind of a frame it is.
bool setData(CanFrame& frame, const MdfCanMembers& members, std::size_t at, std::size_t size, bool fdIsSaid) {
  const auto length = static_cast<std::uint32_t>(size);
  if (size > kLongestFdFrame) {
    frame.set(frame_flag::kXl);
    frame.dlc = static_cast<std::uint16_t>(lengthToXlDlc(length));
    return true;
  }
  const bool stated = isFdFrame(members.bits[at], fdIsSaid);
  const bool fd = stated || size > kLongestClassicFrame;
  frame.set(fd ? frame_flag::kFd : std::uint16_t{0});
  frame.set(fd ? members.bits[at] & (frame_flag::kBrs | frame_flag::kEsi) : std::uint16_t{0});
  frame.dlc = static_cast<std::uint16_t>(hasDlc(members, at) ? members.dlc.values[at] : lengthToDlc(length));
  return fd == stated;
}

}  // namespace

void MdfFrameLayout::readNumbers(MdfMember member, const MdfRow& first, std::size_t count, MdfNumbers& numbers) const {
  if (const std::size_t slot = slots_[static_cast<std::size_t>(member)]; slot != kNoValue) {
    fields_[slot].value.read(first, count, numbers);
  } else {
    std::fill_n(numbers.known.begin(), count, false);
    std::fill_n(numbers.values.begin(), count, 0);
  }
}

void MdfFrameLayout::readBits(MdfMember member, const MdfRow& first, std::size_t count, std::uint16_t bit,
                              std::uint16_t* bits) const {
  if (const std::size_t slot = slots_[static_cast<std::size_t>(member)]; slot != kNoValue) {
    fields_[slot].value.readBits(first, count, bit, bits);
  }
}

void MdfFrameLayout::readMembers(const MdfRow& first, std::size_t count, MdfCanMembers& members) const {
  std::uint16_t* const bits = members.bits.data();
  std::fill_n(bits, count, name_->kind == FrameKind::Remote ? MdfCanMembers::kRemote : std::uint16_t{0});
  if (has(MdfMember::Dir)) {
    MdfNumbers directions;
    readNumbers(MdfMember::Dir, first, count, directions);
    for (std::size_t at = 0; at < count; ++at) {
      const std::uint16_t direction = directions.values[at] != 0 ? frame_flag::kTransmitted : frame_flag::kReceived;
      bits[at] = static_cast<std::uint16_t>(bits[at] | (directions.known[at] ? direction : 0U));
    }
  }
  readBits(MdfMember::Ide, first, count, frame_flag::kExtended, bits);
  readBits(MdfMember::Rtr, first, count, MdfCanMembers::kRemote, bits);
  readBits(MdfMember::Edl, first, count, frame_flag::kFd, bits);
  readBits(MdfMember::Brs, first, count, frame_flag::kBrs, bits);
  readBits(MdfMember::Esi, first, count, frame_flag::kEsi, bits);
  readNumbers(MdfMember::BusChannel, first, count, members.bus);
  readNumbers(MdfMember::Id, first, count, members.id);
  readNumbers(MdfMember::Dlc, first, count, members.dlc);
  readNumbers(MdfMember::DataLength, first, count, members.length);
}

void MdfFrameLayout::readCanFrames(const MdfRow& first, std::size_t count, const std::int64_t* times,
                                   std::uint64_t record, FrameBatch& batch, Account& account) {
  MdfCanMembers members;
  readMembers(first, count, members);
  CanFrameRows rows(batch, count, longestData());
  const bool extendedIsSaid = has(MdfMember::Ide);
  const bool fdIsSaid = has(MdfMember::Edl);
  for (std::size_t at = 0; at < count; ++at) {
    CanFrame frame{.timeNs = times[at], .place = record + 1 + at};
    const auto noteUnless = [&account, &frame](bool fine, Remark remark) {
      if (!fine) {
        account.note(remark, frame.place);
      }
    };
    const std::uint16_t bits = members.bits[at];
    noteUnless(setBus(members.bus.get(at), frame.bus), Remark::BusGuessed);
    std::optional<std::span<const std::uint8_t>> data;
    if (members.id.known[at]) {
      const bool marked = (bits & frame_flag::kExtended) != 0;
      noteUnless(setId(frame, members.id.values[at], marked, extendedIsSaid), Remark::DetailGuessed);
      frame.set(bits & kDirections);
      if ((bits & MdfCanMembers::kRemote) != 0) {
        setRemote(frame, members, at);
        data = kNoData;
      } else if (const auto length = statedLength(members, at, fdIsSaid);
                 (data = readPayload({first.rows, first.at + at}, length))) {
        noteUnless(!length || *length == data->size(), Remark::LengthGuessed);
        noteUnless(setData(frame, members, at, data->size(), fdIsSaid), Remark::DetailGuessed);
      }
    }
    noteUnless(data.has_value(), Remark::RecordNotUnderstood);
    if (data) {
      rows.add(frame, *data);
    }
  }
  rows.finish();
}

}  // namespace xlatr
