// The keys in the comment lines at the start of a TRC file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "formats/trc/trc_columns.hpp"

namespace xlatr {

// The values of a header, gathered line by line: a key that was found is not looked for again, and no key reaches
// beyond the end of a line. So a header of any length takes no memory.
class TrcHeaderKeys {
 public:
  // Takes one line of the header, without its line end.
  void look(std::string_view line);

  // Files of 1.0 state no version, but carry the marks of the programs that wrote them. 0.0 without either.
  [[nodiscard]] double fileVersion() const;
  // Days since 1899-12-30; 0.0 when the header states no start. Raises a ConverterParsingException for a date whose
  // fields are out of range.
  [[nodiscard]] double startDays() const;
  // The same as the header has it: a number of days, and a date with one character before it.
  [[nodiscard]] const std::optional<std::string>& startNumber() const { return startNumber_; }
  [[nodiscard]] const std::optional<std::string>& startText() const { return startText_; }
  // The columns that $COLUMNS lists; 0 without the key.
  [[nodiscard]] TrcColumnSet columnSet() const { return columnSet_.value_or(0); }
  [[nodiscard]] std::string networkName() const { return networkName_.value_or(std::string()); }

 private:
  std::optional<double> fileVersion_;
  bool hasOldStyleMark_ = false;
  std::optional<std::string> startNumber_;
  std::optional<std::string> startText_;
  std::optional<TrcColumnSet> columnSet_;
  std::optional<std::string> networkName_;
};

}  // namespace xlatr
