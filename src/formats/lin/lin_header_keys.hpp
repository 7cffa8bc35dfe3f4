// What the comment lines at the start of a LIN trace say.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace xlatr {

// The values of a header, collected line by line: what was found is not searched again, and nothing goes on beyond the
// end of a line. So a header of any length takes no memory.
class LinHeaderKeys {
 public:
  // Takes one line of the header, without its line end.
  void look(std::string_view line);

  // 0.0 if the header states none.
  [[nodiscard]] double fileVersion() const { return fileVersion_.value_or(0.0); }
  // Days since 1899-12-30; 0.0 if the header states no start. A number has precedence over a date. Raises a
  // ConverterParsingException for a date whose fields are out of range.
  [[nodiscard]] double startDays() const;
  // The same as the header has it: a number of days, and a date.
  [[nodiscard]] const std::optional<std::string>& startNumber() const { return startNumber_; }
  [[nodiscard]] const std::optional<std::string>& startText() const { return startText_; }

 private:
  std::optional<double> fileVersion_;
  std::optional<std::string> startNumber_;
  std::optional<std::string> startText_;
};

}  // namespace xlatr
