// What the lines at the start of an ASC log say.
#pragma once

#include <string>
#include <string_view>

namespace xlatr {

// The values of a head, collected line by line, so that a head of any length takes no memory. A "$" ends a line, too.
class AscHeadKeys {
 public:
  // Takes one line of the head, without its line end.
  void look(std::string_view line);

  // The first "weekday month day time year" of the head, its words one blank apart; empty if there is none.
  [[nodiscard]] const std::string& dateText() const { return dateText_; }
  // Days since 1899-12-30; 0.0 without a date. Raises a ConverterParsingException for a date whose fields are out of
  // range.
  [[nodiscard]] double startDays() const;
  // The number of the first "// version 8.1"; 0.0 if there is none.
  [[nodiscard]] double fileVersion() const { return fileVersion_; }
  // What the last "base" and "timestamps" say: hexadecimal and absolute unless they say otherwise.
  [[nodiscard]] bool hexBase() const { return hexBase_; }
  [[nodiscard]] bool relativeTimestamps() const { return relativeTimestamps_; }

 private:
  void lookForBaseAndTimestamps(std::string_view line);

  std::string dateText_;
  bool versionFound_ = false;
  double fileVersion_ = 0.0;
  bool hexBase_ = true;
  bool relativeTimestamps_ = false;
};

}  // namespace xlatr
