// Reading the records of a table (RFC 4180), which may span lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "io/input_file.hpp"

namespace xlatr {

// UTF-8 files may begin with one.
[[nodiscard]] inline std::string_view withoutByteOrderMark(std::string_view text) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

// One record. Its text stays until the next one is asked for.
struct CsvRecord {
  std::string_view text;   // without the line end
  std::uint64_t line = 0;  // its first one, counted from 1
  bool broken = false;     // a cell's quotation does not end, or it is a part of a line that is too long
};

// Hands out the records of a file as views into its own buffer, which grows to kLongestRecord at most: a quotation that
// has not ended by then, or by the end of the file, is none, and each of the lines is a record of its own. One thread
// at a time. Failures are std::ios_base::failure.
class CsvRecordInput {
 public:
  static constexpr std::size_t kLongestRecord = std::size_t{4} << 20;

  explicit CsvRecordInput(const InputSource& source);

  // The character between the cells, which tells where a cell begins and so may be quoted.
  void setSeparator(char separator) { separator_ = separator; }

  // The next record; false at the end of the file.
  [[nodiscard]] bool next(CsvRecord& record);
  // The next line, whatever quotes are in it.
  [[nodiscard]] bool nextLine(CsvRecord& record);

  // The offset after the last record that was handed out.
  [[nodiscard]] std::uint64_t position() const { return position_; }

 private:
  // Where a line ends, counted from begin_.
  struct LineEnd {
    std::size_t text;  // the length without the line end
    std::size_t next;  // where the next line begins
    bool whole;        // whether there is a line end, or the end of the file
  };

  // The end of the line that begins at this offset from begin_.
  [[nodiscard]] LineEnd lineEndFrom(std::size_t offset);
  // Whether a quotation is open at the end of a line, if one was open at its beginning.
  [[nodiscard]] bool isOpenAfter(std::string_view line, bool open) const;
  void take(const LineEnd& end, bool broken, CsvRecord& record);
  [[nodiscard]] bool refill();

  InputFile file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_;
  std::size_t begin_ = 0;  // first byte not handed out
  std::size_t end_ = 0;    // after the last byte held
  bool atEnd_ = false;     // the file has no more bytes than those held
  std::uint64_t position_ = 0;
  std::uint64_t line_ = 1;        // of the next record
  std::uint64_t unquotedTo_ = 0;  // up to here quotations are known not to end
  char separator_ = ',';
};

}  // namespace xlatr
