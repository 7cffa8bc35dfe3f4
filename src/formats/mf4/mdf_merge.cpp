#include "formats/mf4/mdf_merge.hpp"

#include <algorithm>
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
    groups_[block.data.cgRecordId].block = &block;
    hasVariableLength = hasVariableLength || (block.data.cgFlags & kGroupVariableLength) != 0;
  }
  for (auto& [recordId, entry] : groups_) {
    cycleCount_ = addWithoutWrapping(cycleCount_, entry.block->data.cgCycleCount);
    if (recordId < kSmallIds) {
      smallIds_[recordId] = &entry;
    }
  }
  if (const auto data = group.dataBlock()) {
    data_ = data->getData();
  }
  if (hasVariableLength) {
    throwProcessingFailure(kUnsupportedGroup);
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
    return groups_.begin()->second;
  }
  if (recordIdSize_ > data_.size() - bytePosition_) {
    throwProcessingFailure(kNoRecordId);
  }
  if (recordIdSize_ > sizeof(std::uint64_t) || !std::has_single_bit(recordIdSize_)) {
    throwProcessingFailure(kBadRecordIdSize);
  }
  const auto bytes = loadLittle<std::uint64_t>(data_.data() + bytePosition_);
  const unsigned unused = 64U - 8U * recordIdSize_;
  return groupOfId(bytes << unused >> unused);
}

DataGroupCursor::Group& DataGroupCursor::groupOfId(std::uint64_t recordId) {
  if (recordId < kSmallIds && smallIds_[recordId] != nullptr) {
    return *smallIds_[recordId];
  }
  const auto found = groups_.find(recordId);
  if (found == groups_.end()) {
    throwProcessingFailure(kUnknownRecordId);
  }
  return found->second;
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
  std::ranges::pop_heap(queue_, isLater);
  const std::size_t slot = queue_.back().slot;
  queue_.pop_back();
  std::swap(message, slots_[slot]->ahead);
  emptySlots_.push_back(slot);
  ++deliveredCount_;
  return true;
}

void MdfMerge::fill(std::size_t slot) {
  auto& [cursor, ahead] = *slots_[slot];
  if (!cursor.exhausted()) {
    cursor.next(ahead);
    queue_.push_back({ahead.time, slot});
    std::ranges::push_heap(queue_, isLater);
  }
}

bool MdfMerge::isLater(const Entry& left, const Entry& right) {
  return left.time > right.time || (left.time == right.time && left.slot > right.slot);
}

}  // namespace xlatr
