#include "frames/frame_batch.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace xlatr {

FrameBatch::FrameBatch()
    : times_(kCapacity),
      kinds_(kCapacity),
      buses_(kCapacity),
      ids_(kCapacity),
      flags_(kCapacity),
      dlcs_(kCapacity),
      dataOffsets_(kCapacity + 1),
      textOffsets_(kCapacity + 1),
      places_(kCapacity) {
  dataOffsets_.front() = 0;
  textOffsets_.front() = 0;
}

void FrameBatch::clear() {
  size_ = 0;
  dataSize_ = 0;
  text_.clear();
  textValidity_.clear();
  for (std::uint32_t left = attributes_; left != 0; left &= left - 1) {
    AttributeColumn& column = attributeColumns_[static_cast<std::size_t>(std::countr_zero(left))];
    column.values.clear();
    column.validity.clear();
  }
  attributes_ = 0;
}

void FrameBatch::append(const Frame& frame) {
  const std::size_t row = size_;
  if (row == kCapacity) {
    throw std::length_error("The batch is full");
  }
  textValidity_.append(row, frame.text.has_value());
  if (attributes_ != 0 || !frame.attributes.empty()) {
    appendAttributes(frame.attributes);
  }
  std::copy_n(frame.data.data(), frame.data.size(), roomForData(frame.data.size()));
  dataSize_ += frame.data.size();
  if (frame.text) {
    text_.insert(text_.end(), frame.text->begin(), frame.text->end());
  }
  times_[row] = frame.timeNs;
  kinds_[row] = static_cast<std::uint8_t>(frame.kind);
  buses_[row] = frame.bus;
  ids_[row] = frame.id;
  flags_[row] = frame.flags;
  dlcs_[row] = frame.dlc;
  places_[row] = frame.place;
  dataOffsets_[row + 1] = static_cast<std::int32_t>(dataSize_);
  textOffsets_[row + 1] = static_cast<std::int32_t>(text_.size());
  size_ = row + 1;
}

void FrameBatch::growData(std::size_t count) {
  constexpr std::size_t kSmallest = std::size_t{64} << 10;
  data_.resize(std::max({kSmallest, dataSize_ + count, data_.size() + data_.size() / 2}));
}

FrameBatch::FreeRows FrameBatch::freeRows(std::size_t count, std::size_t dataSize) {
  const std::size_t row = size_;
  if (count > kCapacity - row) {
    throw std::length_error("The batch is full");
  }
  return {.times = times_.data() + row,
          .kinds = kinds_.data() + row,
          .buses = buses_.data() + row,
          .ids = ids_.data() + row,
          .flags = flags_.data() + row,
          .dlcs = dlcs_.data() + row,
          .dataEnds = dataOffsets_.data() + row + 1,
          .places = places_.data() + row,
          .data = roomForData(dataSize),
          .dataBegin = static_cast<std::int32_t>(dataSize_)};
}

void FrameBatch::appendFilled(std::size_t count) {
  std::fill_n(textOffsets_.begin() + static_cast<std::ptrdiff_t>(size_) + 1, count,
              static_cast<std::int32_t>(text_.size()));
  size_ += count;
  dataSize_ = static_cast<std::size_t>(dataOffsets_[size_]);
  textValidity_.grow(size_);
  for (std::uint32_t left = attributes_; left != 0; left &= left - 1) {
    attributeColumns_[static_cast<std::size_t>(std::countr_zero(left))].fillTo(size_);
  }
}

void FrameBatch::AttributeColumn::fillTo(std::size_t rows) {
  while (values.size() < rows) {
    validity.append(values.size(), false);
    values.push_back(0);
  }
}

// A column exists from the first row on that has the attribute; rows before it lack it.
void FrameBatch::appendAttributes(const FrameAttributes& attributes) {
  const std::size_t row = size();
  attributes_ |= attributes.present();
  for (std::uint32_t left = attributes_; left != 0; left &= left - 1) {
    const auto attribute = static_cast<FrameAttribute>(std::countr_zero(left));
    AttributeColumn& column = attributeColumns_[static_cast<std::size_t>(attribute)];
    column.fillTo(row);
    const std::optional<std::uint32_t> value = attributes.get(attribute);
    column.validity.append(row, value.has_value());
    column.values.push_back(value.value_or(0));
  }
}

void RowBits::shrink(std::size_t rows) {
  constexpr std::size_t kBits = 8;
  bytes_.resize((rows + kBits - 1) / kBits);
  if (rows % kBits != 0) {
    bytes_.back() = static_cast<std::uint8_t>(bytes_.back() & ((1U << rows % kBits) - 1));
  }
}

namespace {

// The rows that are wanted, in their order. Made once for all columns, so that the loops over these have no branch that
// nobody can foresee.
class WantedRows {
 public:
  explicit WantedRows(std::span<const std::uint8_t> wanted) {
    for (std::size_t row = 0; row < wanted.size(); ++row) {
      rows_[count_] = static_cast<std::uint16_t>(row);
      count_ += wanted[row] != 0 ? 1U : 0U;
    }
  }

  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] std::span<const std::uint16_t> all() const { return std::span(rows_).first(count_); }

 private:
  std::array<std::uint16_t, FrameBatch::kCapacity> rows_;  // anything from `count_` on
  std::size_t count_ = 0;
};

// Moves the wanted values to the front.
template <typename Values>
void keepValues(Values& values, const WantedRows& rows) {
  std::size_t to = 0;
  for (const std::size_t row : rows.all()) {
    values[to++] = values[row];
  }
}

void keepBits(RowBits& bits, const WantedRows& rows) {
  const auto isZero = [](std::uint8_t byte) { return byte == 0; };
  if (!std::ranges::all_of(bits.bytes(), isZero)) {
    std::size_t to = 0;
    for (const std::size_t row : rows.all()) {
      bits.set(to++, bits.at(row));
    }
  }
  bits.shrink(rows.count());
}

// Moves the bytes of the wanted rows to the front, and their offsets with them. Returns how many bytes they have.
template <typename Bytes>
std::size_t keepBytes(Bytes& bytes, UnsetColumnBuffer<std::int32_t>& offsets, const WantedRows& rows) {
  constexpr std::size_t kFullFrame = 8;
  if (bytes.empty()) {
    return 0;  // and all offsets are
  }
  std::size_t to = 0;
  std::size_t end = 0;
  for (const std::size_t row : rows.all()) {
    const auto begin = static_cast<std::size_t>(offsets[row]);
    const std::size_t length = static_cast<std::size_t>(offsets[row + 1]) - begin;
    if (length == kFullFrame) {
      // Nearly all frames: of a known length, a copy is no call. It may overlap.
      std::array<typename Bytes::value_type, kFullFrame> frame;
      std::memcpy(frame.data(), bytes.data() + begin, kFullFrame);
      std::memcpy(bytes.data() + end, frame.data(), kFullFrame);
    } else if (length != 0) {
      std::memmove(bytes.data() + end, bytes.data() + begin, length);
    }
    end += length;
    offsets[++to] = static_cast<std::int32_t>(end);
  }
  return end;
}

}  // namespace

void FrameBatch::keep(std::span<const std::uint8_t> wanted) {
  const WantedRows rows(wanted);
  keepValues(times_, rows);
  keepValues(kinds_, rows);
  keepValues(buses_, rows);
  keepValues(ids_, rows);
  keepValues(flags_, rows);
  keepValues(dlcs_, rows);
  keepValues(places_, rows);
  dataSize_ = keepBytes(data_, dataOffsets_, rows);
  text_.resize(keepBytes(text_, textOffsets_, rows));
  keepBits(textValidity_, rows);
  size_ = rows.count();
  for (std::uint32_t left = attributes_; left != 0; left &= left - 1) {
    AttributeColumn& column = attributeColumns_[static_cast<std::size_t>(std::countr_zero(left))];
    keepValues(column.values, rows);
    column.values.resize(size_);
    keepBits(column.validity, rows);
  }
}

void FrameBatch::shiftTimes(std::int64_t byNs) {
  for (std::int64_t& time : std::span(times_).first(size_)) {
    time = shiftedTime(time, byNs);
  }
}

void FrameBatch::mapBuses(std::span<const std::uint16_t> table) {
  for (std::uint16_t& bus : std::span(buses_).first(size_)) {
    bus = table[bus];
  }
}

Frame FrameBatch::at(std::size_t row) const {
  Frame frame;
  get(row, frame);
  return frame;
}

void FrameBatch::get(std::size_t row, Frame& frame) const {
  const auto slice = [row](const UnsetColumnBuffer<std::int32_t>& offsets, auto bytes) {
    const auto begin = static_cast<std::size_t>(offsets[row]);
    return bytes.subspan(begin, static_cast<std::size_t>(offsets[row + 1]) - begin);
  };
  frame.timeNs = times_[row];
  frame.kind = static_cast<FrameKind>(kinds_[row]);
  frame.bus = buses_[row];
  frame.id = ids_[row];
  frame.flags = flags_[row];
  frame.dlc = dlcs_[row];
  frame.place = places_[row];
  frame.data = slice(dataOffsets_, std::span<const std::uint8_t>(data_));
  frame.text.reset();
  if (textValidity_.at(row)) {
    const auto characters = slice(textOffsets_, std::span<const char>(text_));
    frame.text = std::string_view(characters.data(), characters.size());
  }
  frame.attributes.clear();
  for (std::uint32_t left = attributes_; left != 0; left &= left - 1) {
    const auto attribute = static_cast<FrameAttribute>(std::countr_zero(left));
    const AttributeColumn& column = attributeColumns_[static_cast<std::size_t>(attribute)];
    if (column.validity.at(row)) {
      frame.attributes.set(attribute, column.values[row]);
    }
  }
}

std::span<const std::uint32_t> FrameBatch::attribute(FrameAttribute attribute) const {
  return attributeColumns_[static_cast<std::size_t>(attribute)].values;
}

std::span<const std::uint8_t> FrameBatch::attributeValidity(FrameAttribute attribute) const {
  return attributeColumns_[static_cast<std::size_t>(attribute)].validity.bytes();
}

}  // namespace xlatr
