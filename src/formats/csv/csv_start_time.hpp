// The start of the recording, as the head of a table states it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace xlatr {

// Takes the lines of a head one by one. They count as one text without line ends, in which
// - "$STARTTIME=" and a number with a decimal point is the start in days since 1899-12-30: our own table;
// - "$BLFSTARTTIME=dd/mm/yyyy HH:MM:SS.mmm", in local time, marks the table of the external BLF converter. The first
//   key wins if both are there. A file without a column line is all head, so only the end of the text is kept.
class CsvStartTime {
 public:
  void look(std::string_view line);

  // Call this once, after the last line.
  void finish();

  // Days since 1899-12-30; 0.0 without a start, or with a date that the calendar does not know.
  [[nodiscard]] double days() const;
  [[nodiscard]] bool isBlfTable() const { return !number_ && date_; }

 private:
  // What a key's value means, and where in the text it ends.
  struct Found {
    double days;
    std::size_t end;
  };

  [[nodiscard]] static std::optional<Found> findNumber(std::string_view text);
  [[nodiscard]] static std::optional<Found> findDate(std::string_view text);
  void search(bool isWhole);

  std::string text_;
  std::optional<double> number_;
  std::optional<double> date_;
};

}  // namespace xlatr
