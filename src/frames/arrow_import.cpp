#include "frames/arrow_import.hpp"

#include <array>
#include <cstddef>
#include <ios>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frames/arrow_column.hpp"
#include "frames/frame.hpp"
#include "frames/frame_failure.hpp"
#include "util/utf8.hpp"
#include "xlatr/frames.h"

namespace xlatr {
namespace {

[[noreturn]] void refuse(const std::string& text) {
  throw FrameFailure(FrameProblem::BadArgument, "Arrow: " + text);
}

// Releases what a producer has handed over.
template <typename Record>
class Imported {
 public:
  Imported() = default;
  explicit Imported(Record& taken) : record_(taken) { taken.release = nullptr; }
  ~Imported() { release(); }
  Imported(const Imported&) = delete;
  Imported& operator=(const Imported&) = delete;

  void release() {
    if (record_.release != nullptr) {
      record_.release(&record_);
    }
    record_ = {};
  }
  Record& operator*() { return record_; }
  Record* operator->() { return &record_; }

 private:
  Record record_{};
};

// The fields of a frame that have a column of their own, in the order of the names.
enum class Field : std::uint8_t { Time, Kind, Bus, Id, Flags, Dlc, Data, Text };
constexpr std::array<std::string_view, 8> kFieldNames = {"time_ns", "kind", "bus",  "id",
                                                         "flags",   "dlc",  "data", "text"};
constexpr std::size_t kFieldCount = kFieldNames.size();

// Where the fields, and after them the attributes, are among the children.
struct ColumnPlace {
  std::size_t child = 0;
  ArrowColumnType type;
};

class ArrowFrames final : public FrameSource {
 public:
  explicit ArrowFrames(ArrowArrayStream& stream) : stream_(stream) {
    if (stream_->get_schema == nullptr || stream_->get_next == nullptr) {
      refuse("the stream is released already");
    }
    head_.places = PlaceUnit::Record;
    Imported<ArrowSchema> schema;
    require(stream_->get_schema(&*stream_, &*schema));
    findColumns(*schema);
  }

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override { return 0; }

  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    while (!batch.full() && hasRow()) {
      for (; row_ < rows_ && !batch.full(); ++row_) {
        batch.append(frame());
      }
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  // What the producer says of its failure, as one of the system or of an argument.
  void require(int code) {
    if (code == 0) {
      return;
    }
    const char* const text = stream_->get_last_error == nullptr ? nullptr : stream_->get_last_error(&*stream_);
    throw std::ios_base::failure("Arrow: " + std::string(text == nullptr ? "the producer failed" : text),
                                 std::error_code(code, std::generic_category()));
  }

  void findColumns(const ArrowSchema& schema) {
    if (schema.format == nullptr || std::string_view(schema.format) != "+s" || schema.n_children < 0) {
      refuse("the stream is none of struct arrays");
    }
    children_ = schema.n_children;
    for (std::int64_t at = 0; at < schema.n_children; ++at) {
      const ArrowSchema& child = *schema.children[at];
      if (const auto place = placeOfName(child.name == nullptr ? "" : child.name)) {
        take(child, static_cast<std::size_t>(at), *place);
      }
    }
    if (!columns_[static_cast<std::size_t>(Field::Time)]) {
      refuse("there is no column time_ns");
    }
  }

  [[nodiscard]] static std::optional<std::size_t> placeOfName(std::string_view name) {
    for (std::size_t at = 0; at < kFieldCount; ++at) {
      if (kFieldNames[at] == name) {
        return at;
      }
    }
    const auto attribute = frameAttributeOfName(name);
    return attribute ? std::optional(kFieldCount + static_cast<std::size_t>(*attribute)) : std::nullopt;
  }

  void take(const ArrowSchema& child, std::size_t at, std::size_t place) {
    // A column of nulls alone has no type.
    if (child.format != nullptr && std::string_view(child.format) == "n") {
      return;
    }
    const bool isBytes =
        place == static_cast<std::size_t>(Field::Data) || place == static_cast<std::size_t>(Field::Text);
    const bool isEither = place == static_cast<std::size_t>(Field::Kind);
    auto type = ArrowColumnType::of(child);
    if (!type || (!isEither && type->holdsNumbers() == isBytes)) {
      refuse("the column " + std::string(child.name) + " has the type " +
             (child.format == nullptr ? "" : child.format));
    }
    columns_[place] = ColumnPlace{at, std::move(*type)};
  }

  // Whether there is another row, in this array or in one that is got for it.
  [[nodiscard]] bool hasRow() {
    while (row_ == rows_) {
      if (ended_) {
        return false;
      }
      arrays_.clear();
      array_.release();
      require(stream_->get_next(&*stream_, &*array_));
      ended_ = array_->release == nullptr;
      row_ = 0;
      rows_ = 0;
      if (!ended_) {
        openArray();
      }
    }
    return true;
  }

  void openArray() {
    if (array_->length < 0 || array_->offset < 0 || array_->n_children != children_ ||
        (children_ > 0 && array_->children == nullptr)) {
      refuse("an array is not as its schema");
    }
    rows_ = static_cast<std::size_t>(array_->length);
    arrays_.assign(columns_.size(), std::nullopt);
    for (std::size_t at = 0; at < columns_.size(); ++at) {
      if (!columns_[at]) {
        continue;
      }
      const ArrowArray& child = *array_->children[columns_[at]->child];
      if (child.length < array_->offset + array_->length) {
        refuse("the column " + columns_[at]->type.name + " is shorter than the others");
      }
      arrays_[at].emplace(columns_[at]->type, child, array_->offset);
    }
  }

  [[nodiscard]] const ArrowColumn* columnOf(std::size_t place) const {
    const std::optional<ArrowColumn>& column = arrays_[place];
    return column && !column->isNull(row_) ? &*column : nullptr;
  }
  [[nodiscard]] const ArrowColumn* columnOf(Field field) const { return columnOf(static_cast<std::size_t>(field)); }

  // 0 without a value.
  template <typename Value>
  [[nodiscard]] Value numberOf(std::size_t place) const {
    const ArrowColumn* const column = columnOf(place);
    const std::int64_t number = column == nullptr ? 0 : column->number(row_);
    if (number < 0 || number > std::int64_t{std::numeric_limits<Value>::max()}) {
      refuse("the column " + columns_[place]->type.name + " holds " + std::to_string(number));
    }
    return static_cast<Value>(number);
  }
  template <typename Value>
  [[nodiscard]] Value numberOf(Field field) const {
    return numberOf<Value>(static_cast<std::size_t>(field));
  }

  [[nodiscard]] Frame frame() const {
    Frame frame;
    const ArrowColumn* const time = columnOf(Field::Time);
    frame.timeNs = time == nullptr ? 0 : time->number(row_);
    if (frame.timeNs > kFarthestNs || frame.timeNs < -kFarthestNs) {
      refuse("a time is more than 285 years away");
    }
    frame.kind = kind();
    frame.bus = numberOf<std::uint16_t>(Field::Bus);
    frame.id = numberOf<std::uint32_t>(Field::Id);
    frame.flags = numberOf<std::uint16_t>(Field::Flags);
    frame.dlc = numberOf<std::uint16_t>(Field::Dlc);
    if (const ArrowColumn* const data = columnOf(Field::Data)) {
      frame.data = data->bytes(row_);
    }
    if (const ArrowColumn* const text = columnOf(Field::Text)) {
      frame.text = text->text(row_);
      if (!isUtf8(*frame.text)) {
        refuse("a text is no UTF-8");
      }
    }
    for (std::size_t at = 0; at < kFrameAttributeCount; ++at) {
      if (columnOf(kFieldCount + at) != nullptr) {
        frame.attributes.set(static_cast<FrameAttribute>(at), numberOf<std::uint32_t>(kFieldCount + at));
      }
    }
    frame.place = ++place_;
    return frame;
  }

  [[nodiscard]] FrameKind kind() const {
    constexpr auto kPlace = static_cast<std::size_t>(Field::Kind);
    const ArrowColumn* const column = columnOf(kPlace);
    if (column == nullptr) {
      return FrameKind::Data;
    }
    if (columns_[kPlace]->type.holdsNumbers()) {
      const auto number = numberOf<std::uint8_t>(kPlace);
      if (number >= kFrameKindCount) {
        refuse("there is no kind " + std::to_string(number));
      }
      return static_cast<FrameKind>(number);
    }
    const auto named = frameKindOfName(column->text(row_));
    if (!named) {
      refuse("there is no kind " + std::string(column->text(row_)));
    }
    return *named;
  }

  Imported<ArrowArrayStream> stream_;
  StreamHead head_;
  std::int64_t children_ = 0;
  std::array<std::optional<ColumnPlace>, kFieldCount + kFrameAttributeCount> columns_;
  Imported<ArrowArray> array_;
  std::vector<std::optional<ArrowColumn>> arrays_;
  std::size_t row_ = 0;
  std::size_t rows_ = 0;
  mutable std::uint64_t place_ = 0;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<FrameSource> importArrow(ArrowArrayStream& stream) {
  return std::make_unique<ArrowFrames>(stream);
}

}  // namespace xlatr
