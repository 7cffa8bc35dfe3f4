#include "formats/mf4/mdf_frame_layout.hpp"

#include <algorithm>
#include <utility>

namespace xlatr {

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
    if (!payload_) {
      addPayload(context, channel, group);
    }
    return;
  }
  std::optional<MdfValue> value = MdfValue::of(context.tree, channel, group);
  if (value && !has(member)) {
    slots_[static_cast<std::size_t>(member)] = static_cast<std::uint8_t>(values_.size());
    values_.push_back(std::move(*value));
  }
}

void MdfFrameLayout::addPayload(const MdfLayoutContext& context, const MdfChannel& channel,
                                const ChannelGroupBlockData& group) {
  const ChannelBlockData& data = channel.data;
  Payload payload;
  payload.column = channel.column;
  payload.validity = MdfValue::validityOf(context.tree, channel, group);
  if (!is(data.cnType, MdfChannelType::VariableLength)) {
    payload.offset = data.cnByteOffset;
    payload.size = static_cast<std::uint32_t>(bytesOfBits(data.cnBitCount));
    if (std::uint64_t{payload.offset} + payload.size > group.cgDataBytes) {
      return;
    }
    plainPayload_ = payload.validity.isAlwaysValid();
    payload_ = std::move(payload);
    if (is(data.cnType, MdfChannelType::MaximumLength)) {
      addLengthOf(context, channel, group);
    }
    return;
  }
  MdfChannel position = channel;
  position.conversion = 0;
  position.data.cnDataType = 0;
  position.data.cnType = static_cast<std::uint8_t>(MdfChannelType::FixedLength);
  position.data.cnFlags = 0;  // the values' own, which is asked before
  payload.position = MdfValue::of(context.tree, position, group);
  const auto owner = std::ranges::find(context.groups, channel.dataLink, &MdfGroupInfo::position);
  if (owner != context.groups.end() && channel.dataLink != 0) {
    const auto sizes = context.sizes.find(owner->dataGroup);
    if (owner->recordIdSize == 0 || sizes == context.sizes.end()) {
      return;
    }
    payload.variable = std::make_unique<MdfVariableRecords>(context.file, owner->dataLink, sizes->second,
                                                            owner->data.cgRecordId, context.limits);
    payload.inOrder = context.offsetsUnknown;
  } else {
    payload.stored =
        std::make_unique<MdfDataStream>(context.file, channel.dataLink, MdfDataRole::Values, context.limits);
  }
  if (payload.position) {
    payload_ = std::move(payload);
  }
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

void MdfFrameLayout::close() {
  if (payload_ && payload_->stored) {
    payload_->stored->close();
  }
  if (payload_ && payload_->variable) {
    payload_->variable->close();
  }
}

}  // namespace xlatr
