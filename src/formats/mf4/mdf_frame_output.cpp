#include "formats/mf4/mdf_frame_output.hpp"

#include <algorithm>
#include <utility>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_unfinished.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

void setStart(HeaderBlockData& data, const std::optional<TraceStart>& start) {
  constexpr std::int64_t kNsOfMinute = 60'000'000'000;
  std::int64_t ns = start ? start->sinceEpochNs : 0;
  if (start && start->zoneMinutes) {
    data.hdTimeFlags = kTimeOffsetsValid;
    data.hdTzOffsetMin = static_cast<std::int16_t>(*start->zoneMinutes);
    ns = shiftedTime(ns, -*start->zoneMinutes * kNsOfMinute);
  }
  data.hdStartTimeNs = static_cast<std::uint64_t>(std::max<std::int64_t>(0, ns));
}

}  // namespace

MdfFrameOutput::MdfFrameOutput(const OutputTarget& target, const std::optional<TraceStart>& start,
                               const MdfFrameOutputForm& form)
    : form_(form), groupOf_(kMdfFrameGroupCount * kBusCount, kNoGroup) {
  sharedGroups_.fill(kNoGroup);
  output_.open(target);
  writeTree(start);
}

void MdfFrameOutput::writeTree(const std::optional<TraceStart>& start) {
  const auto header = HeaderBlock::createEmptyTree(FileHistoryBlock::createInUtc());
  setStart(header->data, start);
  Bytes bytes;
  appendFields(bytes, FileIdentificationBlock::forVersion(form_.version));
  header->appendTreeBytes(bytes);
  markUnfinished(bytes, kMdfCountsMissing);
  output_.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  end_ = bytes.size();
  const DataGroupBlock& dataGroup = *header->firstDataGroup();
  nextGroupLink_ = dataGroup.position() + kHeaderSectionSize + kLinkSize * DataGroupBlock::kFirstGroup;
  records_.emplace(output_, end_, dataGroup.dataLinkPosition(), MdfBlockForm{.zipped = form_.zipped});
}

std::uint8_t* MdfFrameOutput::append(MdfFrameGroup kind, std::uint16_t bus, std::size_t size) {
  const std::size_t index = groupFor(kind, bus);
  ++groups_[index].count;
  if (records_->isFull(1 + size)) {
    flushStored();
  }
  std::uint8_t* const record = records_->append(1 + size);
  storeLittle(record, static_cast<std::uint8_t>(index));
  return record + 1;
}

// A value of the signal data: its length, its bytes.
std::uint64_t MdfFrameOutput::store(MdfFrameGroup kind, std::uint16_t bus, std::span<const std::uint8_t> payload) {
  MdfBlockOutput& stored = *groups_[groupFor(kind, bus)].stored;
  const std::uint64_t offset = stored.size();
  const auto length = static_cast<std::uint32_t>(payload.size());
  std::uint8_t* const value = stored.append(sizeof(length) + payload.size());
  storeLittle(value, length);
  std::copy(payload.begin(), payload.end(), value + sizeof(length));
  return offset;
}

// Before the records that refer to it.
void MdfFrameOutput::flushStored() {
  for (const Group& group : groups_) {
    if (group.stored) {
      group.stored->flush();
    }
  }
}

std::size_t MdfFrameOutput::groupFor(MdfFrameGroup kind, std::uint16_t bus) {
  constexpr std::size_t kMostOfOneBus = kMostRecordIds - kMdfFrameGroupCount;
  std::uint16_t& group = groupOf_[static_cast<std::size_t>(kind) * kBusCount + bus];
  if (group == kNoGroup) {
    group = groups_.size() < kMostOfOneBus ? addGroup(kind, bus) : sharedGroup(kind);
  }
  return group;
}

std::uint16_t MdfFrameOutput::sharedGroup(MdfFrameGroup kind) {
  std::uint16_t& group = sharedGroups_[static_cast<std::size_t>(kind)];
  if (group == kNoGroup) {
    group = addGroup(kind, 0);
  }
  return group;
}

std::uint16_t MdfFrameOutput::addGroup(MdfFrameGroup kind, std::uint16_t bus) {
  const auto id = static_cast<std::uint16_t>(groups_.size());
  BlockChain<ChannelGroupBlock> list;
  ChannelGroupBlock& block = list.add(makeMdfFrameGroup({kind, payloadOf(kind), static_cast<std::uint8_t>(id), bus}));
  const std::uint64_t position = records_->nextBlock();
  std::uint64_t nextFree = position;
  placeTree(list, nextFree);
  linkMdfPayload(block);
  Bytes bytes;
  appendTree(list, bytes);
  records_->appendBlock(bytes);
  // What the link leads to is whole before it does.
  records_->patch(nextGroupLink_, position);
  nextGroupLink_ = position + kHeaderSectionSize + kLinkSize * ChannelGroupBlock::kNext;
  Group& group = groups_.emplace_back();
  group.countPosition = block.cycleCountPosition();
  const ChannelBlock* const payload = block.findDataBytesChannel();
  if (payload != nullptr && payloadOf(kind) == MdfPayload::Stored) {
    MdfBlockForm form = kStoredForm;
    form.zipped = form_.zipped;
    group.stored = std::make_unique<MdfBlockOutput>(output_, end_, payload->dataLinkPosition(), form);
  }
  return id;
}

void MdfFrameOutput::close() {
  if (groups_.empty()) {
    // So that it is a log of a bus, if an empty one.
    static_cast<void>(addGroup(MdfFrameGroup::Data, 0));
  }
  flushStored();
  records_->flush();
  for (const Group& group : groups_) {
    records_->patch(group.countPosition, group.count);
  }
  // Last of all: until here the file says that it is not finished.
  markFinished(output_);
  output_.close();
}

}  // namespace xlatr
