#include "formats/mf4/mdf_frame_reader.hpp"

#include <utility>

#include "util/little_endian.hpp"

namespace xlatr {

bool MdfFrameReader::readRow(MdfFrameLayout& layout, const MdfRow& row) {
  const std::uint64_t place = ++state_.record;
  frame_.reset();
  if (!layout.read(row, frame_, place, state_.notes)) {
    state_.notes.note(Remark::RecordNotUnderstood, place);
    return false;
  }
  frame_.place = place;
  return true;
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
}

// The record of the row in a column; false if it is not there.
bool MdfSortedReader::load(std::size_t at) {
  Column& column = *columns_[at];
  if (column.stride == 0) {
    if (column.records.at(0, 1) == nullptr && column.records.gapEnd() == 0) {
      return false;
    }
    column.apart = column.records.isValues();
    column.stride = column.dataBytes + (column.apart ? 0 : column.invalidationBytes);
  }
  if (index_ > (std::numeric_limits<std::uint64_t>::max() - column.stride) / column.stride) {
    return false;
  }
  const std::uint8_t* const record = column.records.at(index_ * column.stride, static_cast<std::size_t>(column.stride));
  if (record == nullptr) {
    return false;
  }
  row_.records[at] = record;
  if (column.invalidationBytes == 0) {
    return true;
  }
  row_.invalid[at] = column.apart ? column.invalidation.at(index_ * column.invalidationBytes,
                                                           static_cast<std::size_t>(column.invalidationBytes))
                                  : record + column.dataBytes;
  return true;
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

bool MdfSortedReader::finish() {
  ended_ = true;
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
  return false;
}

bool MdfSortedReader::next() {
  while (!ended_) {
    if (index_ >= count_) {
      return finish();
    }
    bool isThere = true;
    for (std::size_t at = 0; at < columns_.size() && isThere; ++at) {
      isThere = load(at);
      if (!isThere && !passGap(*columns_[at])) {
        return finish();
      }
    }
    if (!isThere) {
      continue;
    }
    row_.index = index_++;
    if (readRow(*layout_, row_)) {
      return true;
    }
  }
  return false;
}

MdfUnsortedReader::MdfUnsortedReader(const MdfLayoutContext& context, std::uint64_t dataLink, std::uint8_t idSize,
                                     std::vector<Group> groups, MdfReadingState& state)
    : MdfFrameReader(state),
      stream_(context.file, dataLink, MdfDataRole::Values, context.limits),
      idSize_(idSize),
      idMask_(~std::uint64_t{0} >> (64U - 8U * idSize)),
      groups_(std::move(groups)) {
  for (std::size_t at = 0; at < groups_.size(); ++at) {
    const std::uint64_t id = groups_[at].recordId;
    if (id < kSmallIds && at < std::numeric_limits<std::uint16_t>::max()) {
      small_[id] = static_cast<std::uint16_t>(at + 1);
    } else {
      large_[id] = at;
    }
  }
}

MdfUnsortedReader::Group* MdfUnsortedReader::groupOf(std::uint64_t id) {
  if (id < kSmallIds && small_[id] != 0) {
    return &groups_[small_[id] - 1U];
  }
  const auto found = large_.find(id);
  return found == large_.end() ? nullptr : &groups_[found->second];
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

bool MdfUnsortedReader::finish() {
  ended_ = true;
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
  return false;
}

bool MdfUnsortedReader::next() {
  constexpr std::size_t kLengthSize = 4;
  while (!ended_) {
    const std::uint8_t* bytes = stream_.at(position_, idSize_);
    if (bytes == nullptr) {
      if (passGap()) {
        continue;
      }
      return finish();
    }
    Group* const group = groupOf(loadLittle<std::uint64_t>(bytes) & idMask_);
    if (group == nullptr) {
      note(Remark::RecordNotUnderstood);
      if (passGap()) {
        continue;
      }
      return finish();
    }
    std::uint64_t size = idSize_ + group->dataBytes + group->invalidationBytes;
    if (group->variable) {
      bytes = stream_.at(position_, idSize_ + kLengthSize);
      size = bytes == nullptr ? 0 : idSize_ + kLengthSize + loadLittle<std::uint32_t>(bytes + idSize_);
    } else if (group->layout) {
      bytes = stream_.at(position_, static_cast<std::size_t>(size));
    }
    if (bytes == nullptr) {
      if (passGap()) {
        continue;
      }
      return finish();
    }
    position_ += size;
    if (!group->layout) {
      continue;
    }
    row_.records[0] = bytes + idSize_;
    row_.invalid[0] = bytes + idSize_ + group->dataBytes;
    row_.index = group->index++;
    if (readRow(*group->layout, row_)) {
      return true;
    }
  }
  return false;
}

}  // namespace xlatr
