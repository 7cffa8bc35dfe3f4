// The moments in time that traces carry: when a trace started, when a file was made.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/calendar.hpp"

namespace xlatr {

// The word of every failure of a DateTime.
inline constexpr std::string_view kInvalidDateTime = "Invalid data for a DateTime object";

// The seconds of the null date, 1899-12-30 00:00:00.000.000: day zero of the OLE date scale. Many headers count their
// start time on that scale, so a start time of 0.0 means none. It is the one valid moment before 1900.
inline constexpr std::int64_t kNullDateSeconds = -2209161600;

// One moment, kept both as a count of seconds and as calendar fields, because file formats use one or the other. The
// two need not agree:
// - The fields are local time or UTC, as the maker of the object chose; the object does not remember which.
// - Whoever changes one side calls updateFields or updateSeconds.
//
// Whatever fails raises a ConverterParsingException of kInvalidDateTime: seconds that can't be broken down (all
// negative ones except those of the null date; the failure shows the number), and fields out of range (it shows the
// diagnostic text). A plain value: one thread at a time per object.
class DateTime {
 public:
  std::int64_t seconds = 0;  // since 1970-01-01 00:00:00 UTC
  std::int32_t year = 1970;  // in full
  std::int32_t month = 1;    // 1 to 12
  std::int32_t day = 1;      // 1 to 31
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;
  std::int32_t millisecond = 0;  // 0 to 999
  std::int32_t microsecond = 0;  // 0 to 999, within the millisecond

  // Second 0 in local fields.
  DateTime();

  // Breaks the seconds down, in UTC if `utc` is set, otherwise in local time, and validates the fields.
  DateTime(std::int64_t secondsSince1970, std::int32_t milliseconds, std::int32_t microseconds, bool utc);

  // The current second in local fields, without a fraction.
  [[nodiscard]] static DateTime now();

  // From local fields: computes the seconds and validates the fields. The weekday is ignored.
  [[nodiscard]] static DateTime fromLocalFields(const platform::CalendarFields& fields, std::int32_t milliseconds,
                                                std::int32_t microseconds);

  // From days since 1899-12-30, in UTC fields. The second is truncated, the millisecond rounded, and the microseconds
  // are what the millisecond leaves, if anything. Nothing is carried into the second and the fraction is not validated,
  // so the millisecond can be 1000, and before the null date it can be negative.
  [[nodiscard]] static DateTime fromOleDate(double days);

  // The same with a truncated millisecond. Days are hardly ever a whole number of milliseconds, so 999 or 1000
  // microseconds count as the next one.
  [[nodiscard]] static DateTime fromOleDateTruncated(double days);

  // The parsers. A text that can't be read is no failure: it gives second 0 in local fields. Only a date with a field
  // out of range raises a failure. The fields are taken as local time.

  // dd.mm.yyyy HH:MM:SS, a point and the milliseconds. These follow the last point of the text and are a whole number,
  // not decimals: ".5" means 5. Anything between the seconds and that point is ignored.
  [[nodiscard]] static DateTime parseGerman(std::string_view text);

  // dd.mm.yyyy HH:MM:SS; what follows is ignored.
  [[nodiscard]] static DateTime parseGermanNoFraction(std::string_view text);

  // Weekday, month, day, time, year in any of the languages of parseDateFields, on a clock of 24 or of 12 hours, such
  // as "Thu Nov 01 10:20:30.123 pm 2012". The fraction goes from the first point to the next blank, even if that point
  // ends an abbreviation; it is in milliseconds, as in parseGerman. A weekday of an unknown language is skipped.
  [[nodiscard]] static DateTime parseLocalized(std::string_view text);

  // The part of a second: the milliseconds and microseconds in one.
  [[nodiscard]] std::chrono::microseconds fraction() const {
    return std::chrono::milliseconds(millisecond) + std::chrono::microseconds(microsecond);
  }

  // Sets the fields from the seconds, in local time; the fraction stays.
  void updateFields();

  // Sets the seconds from the fields, taken as local time; -1 if the system can't represent them.
  void updateSeconds();

  // Raises a failure if a field is out of range. A day of 31 is in range in every month. Before 1900 only the null date
  // is valid. The seconds are ignored.
  void validate() const;

  // 0 for Sunday to 6 for Saturday, of the seconds in local time; 6 for the null date.
  [[nodiscard]] std::int32_t dayOfWeek() const;

  // Days since 1899-12-30, from the seconds and the fraction.
  [[nodiscard]] double toOleDate() const;
  // The same with the fraction added to the seconds first. It rounds differently, which shows in the last digit of a
  // header: the starts of ASC logs, CSV tables and logger sessions are these sums.
  [[nodiscard]] double toOleDateFractionFirst() const;

  // The text forms. Numbers are filled with zeros to the width shown; the year is not filled. All but toAscText print
  // the fields as they are.
  [[nodiscard]] std::string toDottedText() const;         // dd.mm.yyyy HH:MM:SS.mmm
  [[nodiscard]] std::string toDottedTextMicro() const;    // dd.mm.yyyy HH:MM:SS.mmm.uuu
  [[nodiscard]] std::string toDiagnosticText() const;     // dd.mm.yyyy HH:MM:SS.mmm.u, microseconds not filled
  [[nodiscard]] std::string toSlashedText() const;        // dd/mm/yyyy HH:MM:SS.mmm
  [[nodiscard]] std::string toIsoLikeText() const;        // yyyy-mm-dd HH:MM:SS.mmm
  [[nodiscard]] std::string toDottedTextSeconds() const;  // dd.mm.yyyy HH:MM:SS

  // English, from the seconds in UTC whatever the fields say: "Thu Nov 01 10:20:30.123 2012". The null date is
  // "Sat Dec 30 00:00:00.000 1899".
  [[nodiscard]] std::string toAscText() const;

  bool operator==(const DateTime&) const = default;

 private:
  // The calendar fields in UTC if `utc` is set, otherwise in local time.
  [[nodiscard]] static platform::CalendarFields breakDown(std::int64_t secondsSince1970, bool utc);
  [[nodiscard]] bool isNullDate() const;
  void setFields(const platform::CalendarFields& fields);
};

// Second 0 in UTC fields: the DateTime of anything that has none.
[[nodiscard]] const DateTime& emptyDateTime();

}  // namespace xlatr
