#include "formats/mf4/mdf_frame_layout.hpp"

#include <algorithm>
#include <utility>

#include "messages/enumerations.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

constexpr char kUnsupportedStream[] = "VLSD stream channels are not supported";

std::string withoutFirst(std::string text, std::string_view prefix) {
  const std::size_t begin = text.find(prefix);
  return begin == std::string::npos ? text : text.erase(begin, prefix.size());
}

// Errors as some loggers code them: a position is the low byte of two, a type is an index into a table whose bytes are
// the types.
std::optional<MdfValue> codedError(MdfTree& tree, MdfMember member, MdfChannel channel,
                                   const ChannelGroupBlockData& group) {
  constexpr std::uint64_t kPositionBytes = 2;
  constexpr std::uint64_t kIndexBytes = 4;
  const bool isPosition = member == MdfMember::BitPosition;
  ChannelBlockData& data = channel.data;
  const std::uint64_t byteCount = bytesOfBits(data.cnBitCount);
  if (byteCount != (isPosition ? kPositionBytes : kIndexBytes) || data.cnByteOffset + byteCount > group.cgDataBytes) {
    return std::nullopt;
  }
  const bool isBigEndian = MdfNumberField::isBigEndianType(data.cnDataType);
  data.cnType = static_cast<std::uint8_t>(MdfChannelType::FixedLength);
  data.cnDataType = static_cast<std::uint8_t>(isBigEndian ? MdfDataType::UnsignedBig : MdfDataType::UnsignedLittle);
  data.cnBitOffset = 0;
  if (!isPosition) {
    return MdfValue::ofTableBytes(tree, channel, group);
  }
  channel.conversion = 0;
  data.cnByteOffset += isBigEndian ? 1 : 0;
  data.cnBitCount = 8;
  return MdfValue::of(tree, channel, group);
}

}  // namespace

std::unique_ptr<MdfFrameLayout> MdfFrameLayout::make(const MdfLayoutContext& context,
                                                     const std::vector<const MdfGroupInfo*>& columns) {
  std::unique_ptr<MdfFrameLayout> layout(new MdfFrameLayout);
  layout->name_ = columns.front()->frame;
  layout->busNumber_ = columns.front()->busNumber;
  layout->slots_.fill(static_cast<std::uint8_t>(kNoValue));
  for (std::size_t column = 0; column < columns.size(); ++column) {
    const MdfGroupInfo& group = *columns[column];
    if (group.master && !layout->time_) {
      MdfChannel channel = *group.master;
      channel.column = column;
      layout->time_ = MdfTimeReader::of(context.tree, channel, group.data);
    }
    if (group.frame != layout->name_) {
      continue;
    }
    if (group.whole && !layout->whole_) {
      MdfChannel channel = *group.whole;
      channel.column = column;
      layout->whole_ = MdfValue::validityOf(context.tree, channel, group.data);
    }
    for (const MdfMemberChannel& member : group.members) {
      MdfChannel channel = member.channel;
      channel.column = column;
      layout->addMember(context, member.member, channel, group.data);
    }
  }
  return layout->hasAllThatIsNeeded() ? std::move(layout) : nullptr;
}

bool MdfFrameLayout::hasAllThatIsNeeded() const {
  const bool hasIdentifier =
      name_->kind == FrameKind::Data || name_->kind == FrameKind::Remote || name_->kind == FrameKind::Lin;
  return time_ && (!hasIdentifier || has(MdfMember::Id));
}

void MdfFrameLayout::addMember(const MdfLayoutContext& context, MdfMember member, const MdfChannel& channel,
                               const ChannelGroupBlockData& group) {
  if (member == MdfMember::DataBytes) {
    if (payload_ == nullptr) {
      addPayload(context, channel, group);
    }
    return;
  }
  std::optional<MdfValue> value = MdfValue::of(context.tree, channel, group);
  if (value && !has(member)) {
    slots_[static_cast<std::size_t>(member)] = static_cast<std::uint8_t>(fields_.size());
    fields_.push_back({.member = member, .value = std::move(*value)});
  }
}

std::optional<MdfFrameLayout::Payload> MdfFrameLayout::payloadOf(MdfTree& tree, const MdfChannel& channel,
                                                                 const ChannelGroupBlockData& group) {
  const ChannelBlockData& data = channel.data;
  if (!is(data.cnDataType, MdfDataType::ByteArray) && tree.has(Quirk::Mf4PayloadTypesNotRead)) {
    return std::nullopt;
  }
  Payload payload;
  payload.column = channel.column;
  payload.validity = MdfValue::validityOf(tree, channel, group);
  if (!is(data.cnType, MdfChannelType::VariableLength)) {
    payload.offset = data.cnByteOffset;
    payload.size = static_cast<std::uint32_t>(bytesOfBits(data.cnBitCount));
    const bool fits = std::uint64_t{payload.offset} + payload.size <= group.cgDataBytes;
    return fits ? std::optional(std::move(payload)) : std::nullopt;
  }
  if ((data.cnFlags & kChannelStream) != 0 && tree.has(Quirk::Mf4StreamsRefused)) {
    throwProcessingFailure(kUnsupportedStream);
  }
  MdfChannel position = channel;
  position.conversion = 0;
  position.data.cnDataType = 0;
  position.data.cnType = static_cast<std::uint8_t>(MdfChannelType::FixedLength);
  position.data.cnFlags = 0;  // the values' own, which is asked before
  payload.position = MdfValue::of(tree, position, group);
  return payload.position ? std::optional(std::move(payload)) : std::nullopt;
}

void MdfFrameLayout::addPayload(const MdfLayoutContext& context, const MdfChannel& channel,
                                const ChannelGroupBlockData& group) {
  std::optional<Payload> payload = payloadOf(context.tree, channel, group);
  if (!payload || (payload->position && !openStored(context, channel, *payload))) {
    return;
  }
  payloads_.push_back(std::move(*payload));
  payload_ = &payloads_.front();
  plainPayload_ = !payload_->position && payload_->validity.isAlwaysValid();
  if (is(channel.data.cnType, MdfChannelType::MaximumLength)) {
    addLengthOf(context, channel, group);
  }
}

// False for a group of values that is none.
bool MdfFrameLayout::openStored(const MdfLayoutContext& context, const MdfChannel& channel, Payload& payload) {
  const auto owner = std::ranges::find(context.groups, channel.dataLink, &MdfGroupInfo::position);
  if (owner == context.groups.end() || channel.dataLink == 0) {
    payload.stored =
        std::make_unique<MdfDataStream>(context.file, channel.dataLink, MdfDataRole::Values, context.limits);
    return true;
  }
  const auto sizes = context.sizes.find(owner->dataGroup);
  if (owner->recordIdSize == 0 || sizes == context.sizes.end()) {
    return false;
  }
  payload.variable = std::make_unique<MdfVariableRecords>(context.file, owner->dataLink, sizes->second,
                                                          owner->data.cgRecordId, context.limits);
  payload.inOrder = context.offsetsUnknown;
  return true;
}

// Where the channel of the bytes says itself which one has their length.
void MdfFrameLayout::addLengthOf(const MdfLayoutContext& context, const MdfChannel& payload,
                                 const ChannelGroupBlockData& group) {
  if (payload.dataLink == 0 || !context.tree.isBlock(payload.dataLink, BlockTypeId::CN)) {
    return;
  }
  if (const auto block = context.tree.leaf<ChannelBlock>(payload.dataLink)) {
    const MdfChannel channel{block->data, payload.dataLink, block->link(ChannelBlock::kConversion), 0,
                             0,           payload.column};
    addMember(context, MdfMember::DataLength, channel, group);
  }
}

std::unique_ptr<MdfFrameLayout> MdfFrameLayout::ofComposition(MdfTree& tree, const MdfFrameName& name,
                                                              ChannelBlock& frame, std::string_view separator,
                                                              const ChannelGroupBlockData& group) {
  std::unique_ptr<MdfFrameLayout> layout(new MdfFrameLayout);
  layout->name_ = &name;
  const std::string prefix = std::string(name.name).append(separator);
  for (const ChannelBlock& part : frame.composition()) {
    BusEventField field = BusEventField::None;
    if (!busEventFieldFromText(withoutFirst(tree.text(part.link(ChannelBlock::kName)), prefix), field)) {
      continue;
    }
    if (layout->fields_.size() == kMostParts) {
      return nullptr;
    }
    layout->addPart(tree, field, part, group);
  }
  return layout;
}

// A channel that is not read is no part.
void MdfFrameLayout::addPart(MdfTree& tree, BusEventField field, const ChannelBlock& part,
                             const ChannelGroupBlockData& group) {
  const std::optional<MdfMember> member = mdfMemberOf(field);
  if (!member) {
    alwaysFound_ |= static_cast<std::uint32_t>(field);
    return;
  }
  if (*member == MdfMember::DataBytes) {
    addLoadedPayload(tree, part, group);
    return;
  }
  const MdfChannel channel = mdfChannelOf(part);
  const bool isCoded = (channel.data.cnFlags & kChannelMonotonous) != 0 && tree.has(Quirk::Mf4ErrorsCoded) &&
                       (*member == MdfMember::BitPosition || *member == MdfMember::ErrorType);
  std::optional<MdfValue> value =
      isCoded ? codedError(tree, *member, channel, group) : MdfValue::of(tree, channel, group);
  if (value) {
    fields_.push_back({.member = *member, .found = static_cast<std::uint32_t>(field), .value = std::move(*value)});
  }
}

// All payloads that stand outside of records are in memory, so that damage to them is told before the first message. Of
// two such channels the later one's count for both.
void MdfFrameLayout::addLoadedPayload(MdfTree& tree, const ChannelBlock& part, const ChannelGroupBlockData& group) {
  std::optional<Payload> payload = payloadOf(tree, mdfChannelOf(part), group);
  if (!payload) {
    return;
  }
  const auto stored = payload->position ? part.dataLink() : nullptr;
  auto* const zipped = dynamic_cast<DataZippedBlock*>(stored.get());
  if (zipped != nullptr && tree.has(Quirk::Mf4ZippedPayloadsStayZipped)) {
    loaded_ = zipped->zippedData();
  } else if (stored) {
    loaded_ = stored->getData();
  }
  fields_.push_back({.member = MdfMember::DataBytes,
                     .found = static_cast<std::uint32_t>(BusEventField::DataBytes),
                     .payload = static_cast<std::uint32_t>(payloads_.size()),
                     .value = {}});
  payloads_.push_back(std::move(*payload));
}

void MdfFrameLayout::close() {
  if (payload_ != nullptr && payload_->stored) {
    payload_->stored->close();
  }
  if (payload_ != nullptr && payload_->variable) {
    payload_->variable->close();
  }
}

}  // namespace xlatr
