// The table of version 2.0: one row a frame, one column a field. Its header row tells a reader which columns it has.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frames/frame.hpp"
#include "frames/plain_frame.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// What the cells of a column say. After these come the attributes, in their order.
enum class CsvTableColumn : std::uint8_t {
  Time,  // in nanoseconds
  Kind,  // frameKindName()
  Bus,
  Id,   // hexadecimal
  Ide,  // 0 or 1, like the other flags
  Dir,  // 0 received, 1 transmitted, empty if nobody knows
  Edl,
  Brs,
  Esi,
  Dlc,
  Length,  // of the data, in bytes
  Data,    // two hexadecimal digits a byte
  Text,    // always quoted: an empty text is a pair of quotes, and no text is nothing
  Xl,
  DlcKnown,
  EnhancedChecksum,
  FirstAttribute,
};

// The columns of a table.
class CsvTableColumns {
 public:
  static constexpr std::uint8_t kUnknown = 0xFF;  // of another program

  // From its header row. Nothing for a line that names no column of times.
  [[nodiscard]] static std::optional<CsvTableColumns> parse(std::string_view line);

  // A CsvTableColumn, a later attribute, or kUnknown, for each place.
  [[nodiscard]] const std::vector<std::uint8_t>& places() const { return places_; }
  [[nodiscard]] bool has(CsvTableColumn column) const { return (named_ >> static_cast<unsigned>(column) & 1U) != 0; }
  [[nodiscard]] char separator() const { return separator_; }

 private:
  explicit CsvTableColumns(std::string_view line, char separator);

  std::vector<std::uint8_t> places_;
  std::uint64_t named_ = 0;  // the first column of a name counts
  char separator_;
};

// Append the header row and the row of a frame, with line ends. The frame is one that the version holds.
void appendCsvTableHeader(TextBuffer& out);
void appendCsvTableRow(TextBuffer& out, const Frame& frame);

// Reads rows. One thread at a time.
class CsvTableRows {
 public:
  explicit CsvTableRows(CsvTableColumns columns);

  // Fills a frame that is like a new one. Its data and text stay until the next call, and no longer than the row.
  // False, with the frame in any state, for a row that can't be understood.
  [[nodiscard]] bool read(std::string_view row, Frame& frame);

 private:
  // What the cells of a row say beyond the frame's fields.
  struct Cells {
    bool time = false;
    bool dlc = false;
    std::optional<std::uint32_t> length;
  };

  [[nodiscard]] bool readAnyForm(std::string_view row, Frame& frame);
  [[nodiscard]] bool takeCell(std::uint8_t column, std::string_view cell, Frame& frame, Cells& cells);
  [[nodiscard]] bool takeField(CsvTableColumn column, std::string_view cell, Frame& frame, Cells& cells);
  [[nodiscard]] bool takeData(std::string_view digits, Frame& frame);
  [[nodiscard]] bool takeQuotedCell(std::uint8_t column, std::string_view& rest, Frame& frame, Cells& cells);
  [[nodiscard]] bool finish(const Cells& cells, Frame& frame) const;

  CsvTableColumns columns_;
  bool plain_;  // the columns are our own
  PlainFrameBytes plainBytes_{};
  std::array<std::uint8_t, 2048> data_{};
  std::string text_;  // of the column of texts
  std::string cell_;  // of any other that is quoted
};

}  // namespace xlatr
