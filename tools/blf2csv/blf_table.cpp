#include "blf2csv/blf_table.hpp"

#include <charconv>
#include <cstring>
#include <utility>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/csv/csv_columns.hpp"
#include "util/hex.hpp"

namespace blf2csv {
namespace {

using xlatr::blf_log::DateField;

constexpr char kSeparator = ';';
constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

// An empty cell would move those after it up.
constexpr std::string_view kNoComment = "-";

// More than the longest head, and than the longest row: 17 cells before 64 data bytes.
constexpr std::size_t kLongestHead = 512;
constexpr std::size_t kLongestRow = 768;

// Writes into room that is known to suffice.
class Pen {
 public:
  explicit Pen(char* at) : at_(at) {}

  [[nodiscard]] char* at() const { return at_; }
  void put(char character) { *at_++ = character; }
  void put(std::string_view text) {
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }
  template <class Number>
  void decimal(Number value) {
    constexpr std::ptrdiff_t kMostDigits = 20;
    at_ = std::to_chars(at_, at_ + kMostDigits, value).ptr;
  }
  // A decimal and the separator after it; nearly all cells are 0 or a small number.
  template <class Number>
  void cell(Number value) {
    if (value < 10) {
      put(static_cast<char>('0' + value));
    } else {
      decimal(value);
    }
    put(kSeparator);
  }
  void filled(std::uint32_t value, std::size_t digits) {
    at_ += digits;
    for (std::size_t index = 1; index <= digits; ++index, value /= 10) {
      at_[-static_cast<std::ptrdiff_t>(index)] = static_cast<char>('0' + value % 10);
    }
  }

 private:
  char* at_;
};

}  // namespace

BlfTable::BlfTable(Sink sink) : sink_(std::move(sink)), block_(std::make_unique_for_overwrite<char[]>(kBlockSize)) {}

void BlfTable::addHead(const FileHeader& header) {
  makeRoom(kLongestHead);
  Pen pen(block_.get() + used_);
  const auto field = [&](DateField name, std::size_t digits, std::string_view end) {
    pen.filled(header.startTime[static_cast<std::size_t>(name)], digits);
    pen.put(end);
  };
  // This line also tells the reader which kind of table it has before it, so it is written without a date too.
  pen.put("$BLFSTARTTIME=");
  field(DateField::Day, 2, "/");
  field(DateField::Month, 2, "/");
  field(DateField::Year, 4, " ");
  field(DateField::Hour, 2, ":");
  field(DateField::Minute, 2, ":");
  field(DateField::Second, 2, ".");
  field(DateField::Millisecond, 3, "\n");
  pen.put(xlatr::csvConverterColumnLine({&kSeparator, 1}));
  pen.put('\n');
  used_ = static_cast<std::size_t>(pen.at() - block_.get());
}

void BlfTable::addRow(const Object& object, const Cells& cells) {
  makeRoom(kLongestRow);
  Pen pen(block_.get() + used_);
  pen.cell(++rows_);
  pen.cell(object.type);
  pen.cell(object.timestamp);
  pen.cell(object.flags);
  pen.cell(cells.comment.empty() ? 1U : 0U);
  pen.put(cells.comment.empty() ? kNoComment : cells.comment);
  pen.put(kSeparator);
  pen.cell(cells.id);
  pen.cell(cells.channel);
  pen.cell(cells.flags);
  pen.cell(cells.flagsExt);
  pen.cell(cells.ecc);
  pen.cell(cells.canFdFlags);
  pen.cell(cells.dir);
  pen.cell(cells.crc);
  pen.cell(object.version);
  pen.cell(cells.checksumModel);
  pen.decimal(cells.data.size());
  for (const std::uint8_t byte : cells.data) {
    pen.put(kSeparator);
    pen.put(xlatr::hexPair(byte));
  }
  pen.put('\n');
  used_ = static_cast<std::size_t>(pen.at() - block_.get());
}

void BlfTable::makeRoom(std::size_t count) {
  if (kBlockSize - used_ < count) {
    flush();
  }
}

void BlfTable::flush() {
  if (used_ > 0) {
    sink_({block_.get(), std::exchange(used_, 0)});
  }
}

}  // namespace blf2csv
