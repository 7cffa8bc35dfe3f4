#include "formats/mf4/mdf_frame_reader.hpp"

#include <algorithm>
#include <utility>

#include "util/little_endian.hpp"

namespace xlatr {

std::optional<std::int64_t> MdfFrameReader::nextTime() {
  while (true) {
    for (; at_ < rows_.count; ++at_) {
      if (known_[at_]) {
        return times_[at_];
      }
      note(Remark::RecordNotUnderstood);
      ++state_.record;
    }
    rows_.count = 0;
    at_ = 0;
    layout_ = load();
    if (layout_ == nullptr) {
      return std::nullopt;
    }
    layout_->readTimes(rows_, times_.data(), known_.data());
  }
}

// The rows from the next one on that can be read at once.
std::size_t MdfFrameReader::countRun(const FrameBatch& batch, std::size_t self, const MdfFrameTurn* other) const {
  const std::size_t bytes = std::min(FrameBatch::kByteCapacity, batch.data().size() + batch.text().size());
  const std::size_t fitting = (FrameBatch::kByteCapacity - bytes) / (layout_->longestData() + 1) + 1;
  const std::size_t end = std::min(rows_.count, at_ + std::min(fitting, FrameBatch::kCapacity - batch.size()));
  std::size_t at = at_ + 1;
  while (at < end && known_[at] && (other == nullptr || MdfFrameTurn{times_[at], self}.isBefore(*other))) {
    ++at;
  }
  return at - at_;
}

std::optional<std::int64_t> MdfFrameReader::read(FrameBatch& batch, std::size_t self, const MdfFrameTurn* other) {
  std::optional<std::int64_t> time = nextTime();
  while (time && !batch.full() && (other == nullptr || MdfFrameTurn{*time, self}.isBefore(*other))) {
    const std::size_t count = countRun(batch, self, other);
    layout_->readFrames({rows_, at_}, count, times_.data() + at_, state_.record, batch, state_.notes);
    at_ += count;
    state_.record += count;
    time = nextTime();
  }
  return time;
}

MdfSortedReader::MdfSortedReader(const MdfLayoutContext& context, const std::vector<const MdfGroupInfo*>& columns,
                                 std::unique_ptr<MdfFrameLayout> layout, std::uint64_t count, MdfReadingState& state)
    : MdfFrameReader(state), layout_(std::move(layout)), count_(count) {
  for (const MdfGroupInfo* group : columns) {
    columns_.push_back(std::unique_ptr<Column>(
        new Column{.records = {context.file, group->dataLink, MdfDataRole::Values, context.limits},
                   .invalidation = {context.file, group->data.cgInvalBytes != 0 ? group->dataLink : 0,
                                    MdfDataRole::Invalidation, context.limits},
                   .dataBytes = group->data.cgDataBytes,
                   .invalidationBytes = group->data.cgInvalBytes}));
  }
  rows_.columns.resize(columns_.size());
}

std::size_t MdfSortedReader::find(std::size_t at, std::size_t count) {
  Column& column = *columns_[at];
  if (column.stride == 0) {
    if (column.records.at(0, 1) == nullptr && column.records.gapEnd() == 0) {
      return 0;
    }
    column.apart = column.records.isValues();
    column.stride = column.dataBytes + (column.apart ? 0 : column.invalidationBytes);
  }
  if (index_ > (std::numeric_limits<std::uint64_t>::max() - column.stride) / column.stride) {
    return 0;
  }
  const std::uint64_t begin = index_ * column.stride;
  const std::uint8_t* const record = column.records.at(begin, static_cast<std::size_t>(column.stride));
  if (record == nullptr) {
    return 0;
  }
  std::uint64_t there = column.records.available(begin) / column.stride;
  const std::uint8_t* invalid = column.invalidationBytes != 0 ? record + column.dataBytes : nullptr;
  std::uint64_t invalidStride = column.stride;
  if (column.apart && column.invalidationBytes != 0) {
    invalidStride = column.invalidationBytes;
    invalid = column.invalidation.at(index_ * invalidStride, static_cast<std::size_t>(invalidStride));
    there =
        invalid == nullptr ? 1 : std::min(there, column.invalidation.available(index_ * invalidStride) / invalidStride);
  }
  const auto found = static_cast<std::size_t>(std::min<std::uint64_t>(count, there));
  MdfRows::Column& places = rows_.columns[at];
  for (std::size_t row = 0; row < found; ++row) {
    places.records[row] = record + row * column.stride;
    places.invalid[row] = invalid != nullptr ? invalid + row * invalidStride : nullptr;
  }
  return found;
}

// Goes to the first whole record after bytes that can't be read.
bool MdfSortedReader::passGap(Column& column) {
  const std::uint64_t end = column.records.gapEnd();
  if (column.stride == 0 || end == 0) {
    return false;
  }
  const std::uint64_t next = end / column.stride + (end % column.stride != 0 ? 1 : 0);
  if (next <= index_) {
    return false;
  }
  note(Remark::RecordNotUnderstood);
  index_ = next;
  return true;
}

MdfFrameLayout* MdfSortedReader::finish() {
  bool cut = false;
  bool damaged = false;
  for (const auto& column : columns_) {
    const bool isEnd = index_ >= count_;
    cut = cut || column->records.isCut() ||
          (!isEnd && (count_ != kMdfUnknownCount ||
                      (column->stride != 0 && column->records.available(index_ * column->stride) > 0)));
    // More than the file says there is.
    damaged = damaged || column->records.damaged() ||
              (isEnd && column->stride != 0 &&
               column->records.at(index_ * column->stride, static_cast<std::size_t>(column->stride)) != nullptr);
    column->records.close();
    column->invalidation.close();
  }
  if (cut) {
    note(Remark::SourceCut);
  }
  if (damaged) {
    note(Remark::RecordNotUnderstood);
  }
  layout_->close();
  return nullptr;
}

MdfFrameLayout* MdfSortedReader::load() {
  while (true) {
    if (index_ >= count_) {
      return finish();
    }
    auto count = static_cast<std::size_t>(std::min<std::uint64_t>(MdfRows::kMost, count_ - index_));
    for (std::size_t at = 0; at < columns_.size() && count > 0; ++at) {
      count = find(at, count);
      if (count == 0 && !passGap(*columns_[at])) {
        return finish();
      }
    }
    if (count > 0) {
      rows_.firstIndex = index_;
      rows_.count = count;
      index_ += count;
      return layout_.get();
    }
  }
}

MdfUnsortedReader::MdfUnsortedReader(const MdfLayoutContext& context, std::uint64_t dataLink, std::uint8_t idSize,
                                     std::vector<Group> groups, MdfReadingState& state)
    : MdfFrameReader(state),
      stream_(context.file, dataLink, MdfDataRole::Values, context.limits),
      idSize_(idSize),
      groups_(std::move(groups)) {
  rows_.columns.resize(1);
  for (std::size_t at = 0; at < groups_.size(); ++at) {
    ids_.add(groups_[at].recordId, at);
  }
}

MdfUnsortedReader::Group* MdfUnsortedReader::groupOf(std::uint64_t id) {
  const std::size_t found = ids_.find(id);
  return found == MdfRecordIds::kNone ? nullptr : &groups_[found];
}

// Blocks mostly begin with a record.
bool MdfUnsortedReader::passGap() {
  const std::uint64_t end = stream_.gapEnd();
  if (end <= position_) {
    return false;
  }
  note(Remark::RecordNotUnderstood);
  position_ = end;
  return true;
}

MdfFrameLayout* MdfUnsortedReader::finish() {
  if (stream_.isCut() || stream_.available(position_) > 0) {
    note(Remark::SourceCut);
  }
  if (stream_.damaged()) {
    note(Remark::RecordNotUnderstood);
  }
  stream_.close();
  for (const Group& group : groups_) {
    if (group.layout) {
      group.layout->close();
    }
  }
  return nullptr;
}

MdfUnsortedReader::Step MdfUnsortedReader::step() {
  constexpr std::size_t kLengthSize = 4;
  const std::uint8_t* record = bytes(idSize_);
  if (record == nullptr) {
    return Step::Missing;
  }
  Group* const group = groupOf(readMdfRecordId(record, idSize_));
  if (group == nullptr) {
    return Step::Unknown;
  }
  if (group->layout && rows_.count > 0 && group != current_) {
    return Step::Other;
  }
  std::uint64_t size = idSize_ + group->dataBytes + group->invalidationBytes;
  if (group->variable) {
    record = bytes(idSize_ + kLengthSize);
    size = record == nullptr ? 0 : idSize_ + kLengthSize + loadLittle<std::uint32_t>(record + idSize_);
  } else if (group->layout) {
    record = bytes(static_cast<std::size_t>(size));
  }
  if (record == nullptr) {
    return Step::Missing;
  }
  position_ += size;
  if (!group->layout) {
    return Step::Passed;
  }
  if (rows_.count == 0) {
    current_ = group;
    rows_.firstIndex = group->index;
  }
  ++group->index;
  rows_.columns.front().records[rows_.count] = record + idSize_;
  rows_.columns.front().invalid[rows_.count] = record + idSize_ + group->dataBytes;
  ++rows_.count;
  return Step::Row;
}

MdfFrameLayout* MdfUnsortedReader::load() {
  while (rows_.count == 0) {
    const Step first = step();
    if (first == Step::Unknown) {
      note(Remark::RecordNotUnderstood);
    }
    if ((first == Step::Unknown || first == Step::Missing) && !passGap()) {
      return finish();
    }
  }
  while (rows_.count < MdfRows::kMost) {
    const Step next = step();
    if (next != Step::Row && next != Step::Passed) {
      break;
    }
  }
  return current_->layout.get();
}

}  // namespace xlatr
