// The part of MdfFrameLayout that runs once per record.
#include <algorithm>
#include <string_view>

#include "formats/mf4/mdf_frame_codes.hpp"
#include "formats/mf4/mdf_frame_layout.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kExtendedMark = 0x80000000;
constexpr std::uint32_t kHighestExtendedId = 0x1FFFFFFF;
constexpr std::uint32_t kHighestBaseId = 0x7FF;
constexpr std::uint32_t kHighestLinId = 0x3F;
constexpr std::size_t kLongestClassicFrame = 8;
constexpr std::size_t kLongestFdFrame = 64;

}  // namespace

bool MdfFrameLayout::read(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) {
  const auto time = time_->read(row);
  if (!time || (whole_ && !whole_->isValid(row))) {
    return false;
  }
  if (time_->isGuessed() && row.index == 0) {
    account.note(Remark::DetailGuessed, place);
  }
  frame.timeNs = *time;
  frame.kind = name_->kind;
  readBus(row, frame, place, account);
  readDirection(row, frame);
  switch (frame.kind) {
    case FrameKind::Data:
      return readData(row, frame, place, account);
    case FrameKind::Remote:
      readRemote(row, frame);
      return readId(row, frame, place, account);
    case FrameKind::Lin:
      return readLin(row, frame, place, account);
    case FrameKind::Error:
      readError(row, frame);
      return true;
    case FrameKind::LinEvent:
      readLinEvent(row, frame);
      return true;
    default:
      return true;
  }
}

void MdfFrameLayout::readBus(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) const {
  constexpr std::uint64_t kHighest = 0xFFFF;
  if (const auto bus = get(MdfMember::BusChannel, row); bus && *bus <= kHighest) {
    frame.bus = static_cast<std::uint16_t>(*bus);
  } else if (bus || busNumber_ != 0) {
    frame.bus = busNumber_;
    account.note(Remark::BusGuessed, place);
  }
}

bool MdfFrameLayout::readId(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) const {
  const auto raw = get(MdfMember::Id, row);
  if (!raw) {
    return false;
  }
  const std::uint64_t known = std::uint64_t{kHighestExtendedId} | kExtendedMark;
  frame.id = static_cast<std::uint32_t>(*raw) & kHighestExtendedId;
  const bool extended = (*raw & kExtendedMark) != 0 || isSet(MdfMember::Ide, row);
  const bool tooLong = !extended && frame.id > kHighestBaseId;
  if (extended || tooLong) {
    frame.set(frame_flag::kExtended);
  }
  if ((tooLong && has(MdfMember::Ide)) || (*raw & ~known) != 0) {
    account.note(Remark::DetailGuessed, place);
  }
  return true;
}

void MdfFrameLayout::readDirection(const MdfRow& row, Frame& frame) const {
  if (const auto direction = get(MdfMember::Dir, row)) {
    frame.set(*direction != 0 ? frame_flag::kTransmitted : frame_flag::kReceived);
  }
}

void MdfFrameLayout::readRemote(const MdfRow& row, Frame& frame) const {
  const auto dlc = get(MdfMember::Dlc, row);
  if (dlc && *dlc < kDlcLengths.size()) {
    frame.dlc = static_cast<std::uint16_t>(*dlc);
    frame.set(frame_flag::kDlcKnown);
  } else if (const auto length = get(MdfMember::DataLength, row); length && *length <= kLongestFdFrame) {
    frame.dlc = static_cast<std::uint16_t>(lengthToDlc(static_cast<std::uint32_t>(*length)));
    frame.set(frame_flag::kDlcKnown);
  }
}

bool MdfFrameLayout::readData(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) {
  if (!readId(row, frame, place, account)) {
    return false;
  }
  if (isSet(MdfMember::Rtr, row)) {
    frame.kind = FrameKind::Remote;
    readRemote(row, frame);
    return true;
  }
  const bool brs = isSet(MdfMember::Brs, row);
  const bool esi = isSet(MdfMember::Esi, row);
  bool fd = has(MdfMember::Edl) ? isSet(MdfMember::Edl, row) : brs || esi;
  const auto dlc = get(MdfMember::Dlc, row);
  std::optional<std::uint64_t> length = get(MdfMember::DataLength, row);
  if (!length && dlc && *dlc < kDlcLengths.size()) {
    const std::uint64_t longest = fd || !has(MdfMember::Edl) ? kLongestFdFrame : kLongestClassicFrame;
    length = std::min<std::uint64_t>(kDlcLengths[static_cast<std::size_t>(*dlc)], longest);
  }
  const auto bytes = readPayload(row, length);
  if (!bytes) {
    return false;
  }
  if (length && *length != bytes->size()) {
    account.note(Remark::LengthGuessed, place);
  }
  frame.data = *bytes;
  if (frame.data.size() > kLongestFdFrame) {
    frame.set(frame_flag::kXl);
    frame.dlc = static_cast<std::uint16_t>(lengthToXlDlc(static_cast<std::uint32_t>(frame.data.size())));
    return true;
  }
  if (!fd && frame.data.size() > kLongestClassicFrame) {
    fd = true;
    account.note(Remark::DetailGuessed, place);
  }
  frame.set(fd ? frame_flag::kFd : std::uint16_t{0});
  frame.set(fd && brs ? frame_flag::kBrs : std::uint16_t{0});
  frame.set(fd && esi ? frame_flag::kEsi : std::uint16_t{0});
  frame.dlc = static_cast<std::uint16_t>(
      dlc && *dlc < kDlcLengths.size() ? *dlc : lengthToDlc(static_cast<std::uint32_t>(frame.data.size())));
  return true;
}

std::optional<std::span<const std::uint8_t>> MdfFrameLayout::readPayload(const MdfRow& row,
                                                                         std::optional<std::uint64_t> length) {
  std::span<const std::uint8_t> bytes;
  const bool needed = !length || *length > 0;
  if (!payload_) {
    return bytes;
  }
  if (payload_->validity && !payload_->validity->isValid(row)) {
    return needed ? std::nullopt : std::optional(bytes);
  }
  if (!payload_->position) {
    bytes = std::span(row.records[payload_->column] + payload_->offset, payload_->size);
  } else if (needed || payload_->inOrder) {
    const auto stored = storedPayload(row);
    if (!stored) {
      return needed ? std::nullopt : std::optional(bytes);
    }
    bytes = *stored;
  }
  const std::size_t longest = std::min(bytes.size(), kLongestPayload);
  return bytes.first(length ? static_cast<std::size_t>(std::min<std::uint64_t>(*length, longest)) : longest);
}

std::optional<std::span<const std::uint8_t>> MdfFrameLayout::storedPayload(const MdfRow& row) {
  constexpr std::size_t kLengthSize = 4;
  if (payload_->variable && payload_->inOrder) {
    return payload_->variable->next(kLongestPayload);
  }
  const auto offset = payload_->position->read(row);
  if (!offset) {
    return std::nullopt;
  }
  if (payload_->variable) {
    return payload_->variable->at(*offset, kLongestPayload);
  }
  const std::uint8_t* bytes = payload_->stored->at(*offset, kLengthSize);
  const std::uint32_t size = bytes != nullptr ? loadLittle<std::uint32_t>(bytes) : 0;
  if (bytes == nullptr || size > kLongestPayload) {
    return std::nullopt;
  }
  bytes = payload_->stored->at(*offset, kLengthSize + size);
  return bytes != nullptr ? std::optional(std::span(bytes + kLengthSize, size)) : std::nullopt;
}

bool MdfFrameLayout::readLin(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) {
  const auto id = get(MdfMember::Id, row);
  if (!id) {
    return false;
  }
  frame.id = static_cast<std::uint32_t>(*id) & kHighestLinId;
  if (frame.id != *id) {
    account.note(Remark::DetailGuessed, place);  // with its parity, it seems
  }
  // What was received may be less than what the frame has.
  const std::optional<std::uint64_t> length = get(MdfMember::DataLength, row);
  const std::optional<std::uint64_t> received = get(MdfMember::ReceivedDataByteCount, row);
  const auto bytes = readPayload(row, received ? received : length);
  if (!bytes) {
    return false;
  }
  if (payload_ && length && *length != bytes->size() && !received) {
    account.note(Remark::LengthGuessed, place);
  }
  frame.data = bytes->first(std::min(bytes->size(), kLongestClassicFrame));
  frame.dlc = static_cast<std::uint16_t>(length && *length <= kLongestClassicFrame ? *length : frame.data.size());
  constexpr std::uint64_t kHighestByte = 0xFF;
  if (const auto checksum = get(MdfMember::Checksum, row); checksum && *checksum <= kHighestByte) {
    frame.attributes.set(FrameAttribute::Checksum, static_cast<std::uint32_t>(*checksum));
  }
  const auto model = get(MdfMember::ChecksumModel, row);
  if (const auto type = model ? checksumTypeOfMdf(static_cast<std::int64_t>(*model)) : std::nullopt) {
    frame.set(*type == ChecksumType::Enhanced ? frame_flag::kEnhancedChecksum : std::uint16_t{0});
    frame.attributes.set(FrameAttribute::ChecksumModel, static_cast<std::uint32_t>(*type));
  }
  if (name_->linErrors != 0) {
    frame.attributes.set(FrameAttribute::LinErrors, name_->linErrors);
  }
  return true;
}

void MdfFrameLayout::readError(const MdfRow& row, Frame& frame) const {
  if (const auto type = get(MdfMember::ErrorType, row); type && *type != kMdfNoErrorDetail) {
    const bool known = *type >= 1 && *type <= kOtherError;
    frame.attributes.set(FrameAttribute::ErrorType, known ? static_cast<std::uint32_t>(*type) - 1 : kOtherError);
  }
  constexpr std::uint64_t kHighest = 0xFFFF;
  if (const auto position = get(MdfMember::BitPosition, row);
      position && *position != kMdfNoErrorDetail && *position <= kHighest) {
    frame.attributes.set(FrameAttribute::ErrorPosition, static_cast<std::uint32_t>(*position) + kMdfFirstBitPosition);
  }
}

// "Receive error of 1A": an event has no identifier of its own.
void MdfFrameLayout::readLinEvent(const MdfRow& row, Frame& frame) {
  const auto id = get(MdfMember::Id, row);
  if (!id || *id > kHighestLinId) {
    frame.text = name_->eventText;
    return;
  }
  constexpr std::string_view kHex = "0123456789ABCDEF";
  eventText_.assign(name_->eventText).append(" of ");
  eventText_.push_back(kHex[static_cast<std::size_t>(*id / 16)]);
  eventText_.push_back(kHex[static_cast<std::size_t>(*id % 16)]);
  frame.text = eventText_;
}

}  // namespace xlatr
