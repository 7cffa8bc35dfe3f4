#include "formats/mf4/mdf_merge.hpp"

#include <bit>
#include <limits>
#include <string>

namespace xlatr {
namespace {

constexpr char kUnsupportedGroup[] = "VLSD Channel groups are not supported";
constexpr char kUnsupportedInvalidation[] = "CG Invalidation bits are not supported";
constexpr char kNoRecordId[] = "Index is out of range for record Id";
constexpr char kBadRecordIdSize[] = "Record Id size not allowed";
constexpr char kUnknownRecordId[] = "Unknown record Id";
constexpr char kNoRecord[] = "Index is out of range for next cycle for Channel Group 0x";

std::uint64_t addWithoutWrapping(std::uint64_t left, std::uint64_t right) {
  const std::uint64_t sum = left + right;
  return sum < left ? std::numeric_limits<std::uint64_t>::max() : sum;
}

std::string toHex(std::uint64_t value) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  do {
    text.insert(text.begin(), kDigits[value % 16]);
    value /= 16;
  } while (value != 0);
  return text;
}

}  // namespace

DataGroupCursor::DataGroupCursor(DataGroupBlock& group) : recordIdSize_(group.data.dgRecIdSize) {
  bool hasVariableLength = false;
  for (ChannelGroupBlock& block : group.channelGroups()) {
    ids_.add(block.data.cgRecordId, groups_.size());
    groups_.push_back({.block = &block, .parser = nullptr});
    hasVariableLength = hasVariableLength || (block.data.cgFlags & kGroupVariableLength) != 0;
  }
  countCycles();
  if (const auto data = group.dataBlock()) {
    data_ = data->getData();
  }
  if (hasVariableLength) {
    throwProcessingFailure(kUnsupportedGroup);
  }
}

void DataGroupCursor::countCycles() {
  for (std::size_t at = 0; at < groups_.size(); ++at) {
    const ChannelGroupBlockData& group = groups_[at].block->data;
    if (ids_.find(group.cgRecordId) == at) {
      cycleCount_ = addWithoutWrapping(cycleCount_, group.cgCycleCount);
    }
    // Of two with the lowest id the later one, as for records that have it.
    if (group.cgRecordId <= groups_[lowestId_].block->data.cgRecordId) {
      lowestId_ = at;
    }
  }
}

void DataGroupCursor::next(MdfCanMessage& message) {
  Group& group = groupOfRecord();
  const ChannelGroupBlockData& layout = group.block->data;
  if (layout.cgInvalBytes != 0) {
    throwProcessingFailure(kUnsupportedInvalidation);
  }
  const std::uint64_t size = std::uint64_t{recordIdSize_} + layout.cgDataBytes;
  if (size == 0 || size > data_.size() - bytePosition_) {
    raiseFailure(FailureKind::Generic, kNoRecord + toHex(group.block->position()));
  }
  if (!group.parser) {
    group.parser = std::make_unique<MdfRecordParser>(*group.block);
  }
  message.reset();
  message.frameKind = static_cast<std::uint8_t>(layout.cgRecordId);
  group.parser->parse(data_.data() + bytePosition_ + recordIdSize_, message);
  bytePosition_ += size;
  ++cyclesRead_;
}

DataGroupCursor::Group& DataGroupCursor::groupOfRecord() {
  if (recordIdSize_ == 0) {
    return groups_[lowestId_];
  }
  if (recordIdSize_ > data_.size() - bytePosition_) {
    throwProcessingFailure(kNoRecordId);
  }
  if (recordIdSize_ > sizeof(std::uint64_t) || !std::has_single_bit(recordIdSize_)) {
    throwProcessingFailure(kBadRecordIdSize);
  }
  const std::size_t found = ids_.find(readMdfRecordId(data_.data() + bytePosition_, recordIdSize_));
  if (found == MdfRecordIds::kNone) {
    throwProcessingFailure(kUnknownRecordId);
  }
  return groups_[found];
}

void MdfMerge::start(HeaderBlock& header) {
  clear();
  for (DataGroupBlock& group : header.dataGroups()) {
    if (group.hasCanBus()) {
      slots_.push_back(std::make_unique<Slot>(group));
      totalCount_ = addWithoutWrapping(totalCount_, slots_.back()->cursor.cycleCount());
      emptySlots_.push_back(slots_.size() - 1);
    }
  }
}

void MdfMerge::clear() {
  slots_.clear();
  stop();
  deliveredCount_ = 0;
  totalCount_ = 0;
}

void MdfMerge::stop() {
  queue_.clear();
  emptySlots_.clear();
}

bool MdfMerge::next(MdfCanMessage& message) {
  for (const std::size_t slot : emptySlots_) {
    fill(slot);
  }
  emptySlots_.clear();
  if (queue_.empty()) {
    return false;
  }
  const std::size_t slot = queue_.pop();
  std::swap(message, slots_[slot]->ahead);
  emptySlots_.push_back(slot);
  ++deliveredCount_;
  return true;
}

void MdfMerge::fill(std::size_t slot) {
  auto& [cursor, ahead] = *slots_[slot];
  if (!cursor.exhausted()) {
    cursor.next(ahead);
    queue_.push(ahead.time, slot);
  }
}

}  // namespace xlatr
