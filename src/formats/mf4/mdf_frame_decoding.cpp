// The part of MdfFrameLayout that goes through records, but for data and remote frames.
#include <algorithm>
#include <string_view>

#include "formats/mf4/mdf_frame_codes.hpp"
#include "formats/mf4/mdf_frame_layout.hpp"
#include "messages/error_type.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kHighestLinId = 0x3F;
constexpr std::size_t kLongestLinFrame = 8;

}  // namespace

void MdfFrameLayout::readTimes(const MdfRows& rows, std::int64_t* times, bool* known) const {
  time_->read(rows, times, known);
  for (std::size_t at = 0; at < rows.count && whole_ && !whole_->isAlwaysValid(); ++at) {
    known[at] = known[at] && whole_->isValid({rows, at});
  }
}

std::size_t MdfFrameLayout::longestData() const {
  return payload_ == nullptr  ? 0
         : payload_->position ? kLongestPayload
                              : std::min<std::size_t>(payload_->size, kLongestPayload);
}

void MdfFrameLayout::readFrames(const MdfRow& first, std::size_t count, const std::int64_t* times, std::uint64_t record,
                                FrameBatch& batch, Account& account) {
  if (time_->isGuessed() && first.index() == 0) {
    account.note(Remark::DetailGuessed, record + 1);
  }
  if (name_->kind == FrameKind::Data || name_->kind == FrameKind::Remote) {
    readCanFrames(first, count, times, record, batch, account);
    return;
  }
  Frame frame;
  for (std::size_t at = 0; at < count; ++at) {
    const std::uint64_t place = record + 1 + at;
    frame.reset();
    frame.timeNs = times[at];
    frame.place = place;
    if (readOther({first.rows, first.at + at}, frame, place, account)) {
      batch.append(frame);
    } else {
      account.note(Remark::RecordNotUnderstood, place);
    }
  }
}

bool MdfFrameLayout::readOther(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) {
  frame.kind = name_->kind;
  if (!setBus(get(MdfMember::BusChannel, row), frame.bus)) {
    account.note(Remark::BusGuessed, place);
  }
  if (const auto direction = get(MdfMember::Dir, row)) {
    frame.set(*direction != 0 ? frame_flag::kTransmitted : frame_flag::kReceived);
  }
  switch (frame.kind) {
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

std::optional<std::span<const std::uint8_t>> MdfFrameLayout::findPayload(const MdfRow& row,
                                                                         std::optional<std::uint64_t> length) {
  std::span<const std::uint8_t> bytes = kNoData;
  const bool needed = !length || *length > 0;
  if (payload_ == nullptr) {
    return bytes;
  }
  if (!payload_->validity.isValid(row)) {
    return needed ? std::nullopt : std::optional(bytes);
  }
  if (!payload_->position) {
    bytes = std::span(row.record(payload_->column) + payload_->offset, payload_->size);
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
  if (payload_->variable && payload_->inOrder) {
    return payload_->variable->next(kLongestPayload);
  }
  const std::uint64_t offset = payload_->position->read(row).value_or(0);
  return payload_->variable ? payload_->variable->at(offset, kLongestPayload) : payloadAt(*payload_->stored, offset);
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
  if (payload_ != nullptr && length && *length != bytes->size() && !received) {
    account.note(Remark::LengthGuessed, place);
  }
  frame.data = bytes->first(std::min(bytes->size(), kLongestLinFrame));
  frame.dlc = static_cast<std::uint16_t>(length && *length <= kLongestLinFrame ? *length : frame.data.size());
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
