#include "frames/arrow_column.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "frames/frame_batch.hpp"
#include "frames/frame_failure.hpp"

namespace xlatr {
namespace {

struct KnownType {
  std::string_view format;
  ArrowType type;
  std::int64_t unit = 1;
  std::size_t buffers = 2;  // at least
};

constexpr std::array kKnownTypes = {
    KnownType{"c", ArrowType::Int8},
    KnownType{"C", ArrowType::UInt8},
    KnownType{"s", ArrowType::Int16},
    KnownType{"S", ArrowType::UInt16},
    KnownType{"i", ArrowType::Int32},
    KnownType{"I", ArrowType::UInt32},
    KnownType{"l", ArrowType::Int64},
    KnownType{"L", ArrowType::UInt64},
    KnownType{"b", ArrowType::Bool},
    KnownType{"tDn", ArrowType::Int64},
    KnownType{"tDu", ArrowType::Int64, 1'000},
    KnownType{"tDm", ArrowType::Int64, 1'000'000},
    KnownType{"tDs", ArrowType::Int64, 1'000'000'000},
    KnownType{"u", ArrowType::Bytes32, 1, 3},
    KnownType{"z", ArrowType::Bytes32, 1, 3},
    KnownType{"U", ArrowType::Bytes64, 1, 3},
    KnownType{"Z", ArrowType::Bytes64, 1, 3},
    KnownType{"vu", ArrowType::BytesView, 1, 3},
    KnownType{"vz", ArrowType::BytesView, 1, 3},
    KnownType{"+l", ArrowType::List32},
    KnownType{"+L", ArrowType::List64},
};

constexpr std::array kFixedTypes = {KnownType{"w:", ArrowType::BytesFixed},
                                    KnownType{"+w:", ArrowType::ListFixed, 1, 1}};

bool isList(ArrowType type) {
  return type == ArrowType::List32 || type == ArrowType::List64 || type == ArrowType::ListFixed;
}

// How many buffers an array of the type has at least.
std::size_t buffersOf(ArrowType type) {
  const auto isType = [type](const KnownType& known) { return known.type == type; };
  const auto* const fixed = std::ranges::find_if(kFixedTypes, isType);
  return fixed != kFixedTypes.end() ? fixed->buffers : std::ranges::find_if(kKnownTypes, isType)->buffers;
}

std::optional<ArrowColumnType> typeOfFormat(std::string_view format) {
  const auto* const known = std::ranges::find(kKnownTypes, format, &KnownType::format);
  if (known != kKnownTypes.end()) {
    return ArrowColumnType{.type = known->type, .unit = known->unit};
  }
  for (const KnownType& fixed : kFixedTypes) {
    if (!format.starts_with(fixed.format)) {
      continue;
    }
    ArrowColumnType type{.type = fixed.type};
    const std::string_view width = format.substr(fixed.format.size());
    const auto [end, error] = std::from_chars(width.data(), width.data() + width.size(), type.width);
    if (error == std::errc() && end == width.data() + width.size() && type.width >= 0) {
      return type;
    }
  }
  return std::nullopt;
}

// Whether the schema is that of lists of bytes.
bool hasByteValues(const ArrowSchema& schema) {
  if (schema.n_children != 1 || schema.children == nullptr || schema.children[0] == nullptr ||
      schema.children[0]->format == nullptr || schema.children[0]->dictionary != nullptr) {
    return false;
  }
  const std::string_view format = schema.children[0]->format;
  return format == "C" || format == "c";
}

}  // namespace

std::optional<ArrowColumnType> ArrowColumnType::of(const ArrowSchema& schema) {
  auto type = typeOfFormat(schema.format == nullptr ? "" : schema.format);
  if (!type || (isList(type->type) && !hasByteValues(schema))) {
    return std::nullopt;
  }
  type->name = schema.name == nullptr ? "" : schema.name;
  if (schema.dictionary != nullptr) {
    auto values = of(*schema.dictionary);
    // Dictionaries in dictionaries would be a loop for whoever makes them one.
    if (!values || values->dictionary || type->type >= ArrowType::Bool) {
      return std::nullopt;
    }
    type->dictionary = std::make_shared<const ArrowColumnType>(std::move(*values));
  }
  return type;
}

ArrowColumn::ArrowColumn(const ArrowColumnType& type, const ArrowArray& array, std::int64_t offset)
    : type_(&type), array_(&array), offset_(static_cast<std::size_t>(offset + array.offset)) {
  if (array.n_buffers < static_cast<std::int64_t>(buffersOf(type.type)) || array.buffers == nullptr ||
      array.offset < 0 || array.length < 0) {
    refuse("has too few buffers, or a negative length");
  }
  if (isList(type.type) && (array.n_children != 1 || array.children == nullptr || array.children[0] == nullptr ||
                            array.children[0]->n_buffers < 2)) {
    refuse("is a list without values");
  }
  if (type.dictionary && array.dictionary == nullptr) {
    refuse("lacks its dictionary");
  }
}

void ArrowColumn::refuse(const char* what) const {
  throw FrameFailure(FrameProblem::BadArgument, "Arrow: the column " + type_->name + " " + what);
}

bool ArrowColumn::isNull(std::size_t row) const {
  constexpr std::size_t kBits = 8;
  const auto* const validity = static_cast<const std::uint8_t*>(array_->buffers[0]);
  const std::size_t at = place(row);
  if (validity != nullptr && array_->null_count != 0 && (validity[at / kBits] >> at % kBits & 1U) == 0) {
    return true;
  }
  if (!type_->dictionary) {
    return false;
  }
  return ArrowColumn(*type_->dictionary, *array_->dictionary, 0).isNull(dictionaryPlace(row));
}

template <typename Value>
Value ArrowColumn::value(std::size_t buffer, std::size_t place) const {
  const auto* const values = static_cast<const std::uint8_t*>(array_->buffers[buffer]);
  if (values == nullptr) {
    refuse("has a null for a buffer");
  }
  Value read;
  std::memcpy(&read, values + place * sizeof read, sizeof read);
  return read;
}

std::int64_t ArrowColumn::rawNumber(std::size_t place) const {
  switch (type_->type) {
    case ArrowType::Int8:
      return value<std::int8_t>(1, place);
    case ArrowType::UInt8:
      return value<std::uint8_t>(1, place);
    case ArrowType::Int16:
      return value<std::int16_t>(1, place);
    case ArrowType::UInt16:
      return value<std::uint16_t>(1, place);
    case ArrowType::Int32:
      return value<std::int32_t>(1, place);
    case ArrowType::UInt32:
      return value<std::uint32_t>(1, place);
    case ArrowType::Int64:
      return value<std::int64_t>(1, place);
    case ArrowType::UInt64: {
      const auto number = value<std::uint64_t>(1, place);
      if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        refuse("has a number that is too large");
      }
      return static_cast<std::int64_t>(number);
    }
    case ArrowType::Bool:
      return value<std::uint8_t>(1, place / 8) >> place % 8 & 1;
    default:
      refuse("holds no numbers");
  }
}

std::size_t ArrowColumn::dictionaryPlace(std::size_t row) const {
  const std::int64_t index = rawNumber(place(row));
  if (index < 0 || index >= array_->dictionary->length) {
    refuse("has an index beyond its dictionary");
  }
  return static_cast<std::size_t>(index);
}

std::int64_t ArrowColumn::number(std::size_t row) const {
  if (type_->dictionary) {
    return ArrowColumn(*type_->dictionary, *array_->dictionary, 0).number(dictionaryPlace(row));
  }
  const std::int64_t raw = rawNumber(place(row));
  const std::int64_t limit = std::numeric_limits<std::int64_t>::max() / type_->unit;
  if (raw > limit || raw < -limit) {
    refuse("has a duration that is too long");
  }
  return raw * type_->unit;
}

std::span<const std::uint8_t> ArrowColumn::bytes(std::size_t row) const {
  if (type_->dictionary) {
    return ArrowColumn(*type_->dictionary, *array_->dictionary, 0).bytes(dictionaryPlace(row));
  }
  const auto found = rawBytes(place(row));
  if (found.size() > FrameBatch::kLongestText) {
    refuse("has a value of more than a million bytes");
  }
  return found;
}

template <typename Offset>
std::span<const std::uint8_t> ArrowColumn::between(std::size_t place, const std::uint8_t* values) const {
  const auto begin = value<Offset>(1, place);
  const auto end = value<Offset>(1, place + 1);
  if (begin < 0 || end < begin || (values == nullptr && end != begin)) {
    refuse("has offsets that don't grow");
  }
  return begin == end ? std::span<const std::uint8_t>()
                      : std::span(values + begin, static_cast<std::size_t>(end - begin));
}

const std::uint8_t* ArrowColumn::listValues() const {
  const ArrowArray& values = *array_->children[0];
  const auto* const bytes = static_cast<const std::uint8_t*>(values.buffers[1]);
  return bytes == nullptr ? nullptr : bytes + values.offset;
}

std::span<const std::uint8_t> ArrowColumn::rawBytes(std::size_t place) const {
  const auto fixed = [&](const std::uint8_t* values) {
    const auto width = static_cast<std::size_t>(type_->width);
    if (values == nullptr && width != 0) {
      refuse("has a null for a buffer");
    }
    return width == 0 ? std::span<const std::uint8_t>() : std::span(values + place * width, width);
  };
  switch (type_->type) {
    case ArrowType::Bytes32:
      return between<std::int32_t>(place, static_cast<const std::uint8_t*>(array_->buffers[2]));
    case ArrowType::Bytes64:
      return between<std::int64_t>(place, static_cast<const std::uint8_t*>(array_->buffers[2]));
    case ArrowType::BytesView:
      return view(place);
    case ArrowType::BytesFixed:
      return fixed(static_cast<const std::uint8_t*>(array_->buffers[1]));
    case ArrowType::List32:
      return between<std::int32_t>(place, listValues());
    case ArrowType::List64:
      return between<std::int64_t>(place, listValues());
    case ArrowType::ListFixed:
      return fixed(listValues());
    default:
      refuse("holds no texts");
  }
}

// Sixteen bytes: a length, then up to twelve bytes themselves, or four of them, the number of a buffer and an offset
// there. The buffers with longer values follow the views, and after them one with the lengths of these.
std::span<const std::uint8_t> ArrowColumn::view(std::size_t place) const {
  constexpr std::size_t kViewSize = 16;
  constexpr std::int32_t kLongestInside = 12;
  constexpr std::int64_t kBuffersBefore = 2;
  const auto* const views = static_cast<const std::uint8_t*>(array_->buffers[1]);
  if (views == nullptr) {
    refuse("has a null for a buffer");
  }
  const std::uint8_t* const at = views + place * kViewSize;
  std::array<std::int32_t, 4> fields{};
  std::memcpy(fields.data(), at, sizeof fields);
  const auto [length, prefix, buffer, offset] = fields;
  if (length < 0) {
    refuse("has a negative length");
  }
  if (length <= kLongestInside) {
    return {at + sizeof length, static_cast<std::size_t>(length)};
  }
  const std::int64_t buffers = array_->n_buffers - kBuffersBefore - 1;
  if (buffer < 0 || buffer >= buffers || offset < 0) {
    refuse("has a view of a buffer that there is not");
  }
  const auto held =
      value<std::int64_t>(static_cast<std::size_t>(array_->n_buffers - 1), static_cast<std::size_t>(buffer));
  const auto* const bytes = static_cast<const std::uint8_t*>(array_->buffers[kBuffersBefore + buffer]);
  if (bytes == nullptr || std::int64_t{offset} + length > held) {
    refuse("has a view beyond its buffer");
  }
  return {bytes + offset, static_cast<std::size_t>(length)};
}

}  // namespace xlatr
