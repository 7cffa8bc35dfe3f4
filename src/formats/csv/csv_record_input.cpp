#include "formats/csv/csv_record_input.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "formats/csv/csv_quotes.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kFirstCapacity = std::size_t{256} * 1024;

}  // namespace

CsvRecordInput::CsvRecordInput(const InputSource& source)
    : file_(source), buffer_(std::make_unique_for_overwrite<char[]>(kFirstCapacity)), capacity_(kFirstCapacity) {}

// Makes room after what is held and reads on; false if there is no room, or nothing to read.
bool CsvRecordInput::refill() {
  if (atEnd_) {
    return false;
  }
  const std::size_t held = end_ - begin_;
  if (held == capacity_) {
    if (capacity_ >= kLongestRecord) {
      return false;
    }
    auto larger = std::make_unique_for_overwrite<char[]>(2 * capacity_);
    std::memcpy(larger.get(), buffer_.get() + begin_, held);
    buffer_ = std::move(larger);
    capacity_ *= 2;
  } else {
    std::memmove(buffer_.get(), buffer_.get() + begin_, held);
  }
  begin_ = 0;
  end_ = held + file_.read({buffer_.get() + held, capacity_ - held});
  atEnd_ = end_ == held;
  return !atEnd_;
}

CsvRecordInput::LineEnd CsvRecordInput::lineEndFrom(std::size_t offset) {
  std::size_t scanned = offset;
  for (;;) {
    const char* const start = buffer_.get() + begin_;
    const std::size_t held = end_ - begin_;
    if (const void* const found = std::memchr(start + scanned, '\n', held - scanned)) {
      const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - start);
      const bool crlf = at > offset && start[at - 1] == '\r';
      return {at - (crlf ? 1 : 0), at + 1, true};
    }
    scanned = held;
    if (!refill()) {
      return {held, held, atEnd_};
    }
  }
}

bool CsvRecordInput::isOpenAfter(std::string_view line, bool open) const {
  std::size_t at = 0;
  for (;;) {
    const std::size_t quote = line.find(kCsvQuote, at);
    if (quote == std::string_view::npos) {
      return open;
    }
    at = quote + 1;
    if (!open) {
      // Within a cell that is not quoted, a quote is a character like any other.
      open = quote == 0 || line[quote - 1] == separator_;
    } else if (line.substr(at).starts_with(kCsvQuote)) {
      ++at;
    } else {
      open = false;
    }
  }
}

void CsvRecordInput::take(const LineEnd& end, bool broken, CsvRecord& record) {
  record.text = {buffer_.get() + begin_, end.text};
  record.line = line_;
  record.broken = broken;
  begin_ += end.next;
  position_ += end.next;
}

bool CsvRecordInput::nextLine(CsvRecord& record) {
  const LineEnd end = lineEndFrom(0);
  if (end.next == 0) {
    return false;
  }
  take(end, !end.whole, record);
  line_ += end.whole ? 1 : 0;
  return true;
}

bool CsvRecordInput::next(CsvRecord& record) {
  LineEnd end = lineEndFrom(0);
  if (end.next == 0) {
    return false;
  }
  const char* const start = buffer_.get() + begin_;
  bool open = std::memchr(start, kCsvQuote, end.text) != nullptr && isOpenAfter({start, end.text}, false);
  if (!open || !end.whole || position_ < unquotedTo_) {
    take(end, open || !end.whole, record);
    line_ += end.whole ? 1 : 0;
    return true;
  }
  const LineEnd first = end;
  std::uint64_t lines = 1;
  while (open) {
    const std::size_t offset = end.next;
    end = lineEndFrom(offset);
    if (end.next == offset || !end.whole) {
      // Looking for an end from each of the lines again could take for ever.
      unquotedTo_ = position_ + end.next;
      take(first, true, record);
      ++line_;
      return true;
    }
    open = isOpenAfter({buffer_.get() + begin_ + offset, end.text - offset}, true);
    ++lines;
  }
  take(end, false, record);
  line_ += lines;
  return true;
}

}  // namespace xlatr
