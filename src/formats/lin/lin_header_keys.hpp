// What is looked for in the comment lines at the start of a LIN trace.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace xlatr {

// The values of a header, gathered line by line: what was found is not looked for again, and nothing reaches over the
// end of a line. So a header of any length takes no memory.
class LinHeaderKeys {
 public:
  // Takes one line of the header, without its line end.
  void look(std::string_view line);

  // 0.0 when the header states none.
  [[nodiscard]] double fileVersion() const { return fileVersion_.value_or(0.0); }
  // Days since 1899-12-30; 0.0 when the header states no start. A number counts before a date. Raises a
  // ConverterParsingException for a date whose fields are out of range.
  [[nodiscard]] double startTime() const;

 private:
  std::optional<double> fileVersion_;
  std::optional<double> startNumber_;
  std::optional<std::string> startText_;
};

}  // namespace xlatr
