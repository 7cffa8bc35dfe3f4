#include "util/date_fields.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "util/failures.hpp"
#include "util/process_locale.hpp"

namespace xlatr {
namespace {

using platform::CalendarFields;

std::optional<std::size_t> parse(std::string_view text, std::string_view format, std::string_view locale = "en-US") {
  CalendarFields fields;
  return parseDateFields(text, format, fields, locale);
}

struct NameCase {
  std::string_view locale;
  std::string_view text;
  int expected;
};

TEST(DateFields, readsEveryFormOfAMonth) {
  const NameCase cases[] = {
      {"en-US", "January", 1},
      {"en-US", "Sept", 9},
      {"en-US", "sEp", 9},
      {"en-US", "DECEMBER", 12},
      {"en-GB", "Dec.", 12},
      {"de-DE", "M\xC3\xA4rz", 3},
      {"de-DE", "M\xC3\x84RZ", 3},
      {"de-DE", "M\xE4rz", 3},
      {"de-DE", "M\xC4RZ", 3},
      {"de-DE", "Mrz", 3},
      {"de-DE", "M\xC3\xA4r", 3},
      {"de-DE", "M\xE4r", 3},
      {"de-DE", "Marz", 3},
      {"de-DE", "Febr.", 2},
      {"de-DE", "Juni", 6},
      {"de-DE", "Sept.", 9},
      {"de-DE", "Okt", 10},
      {"de-DE", "Dez", 12},
      {"fr-FR", "f\xC3\xA9vr.", 2},
      {"fr-FR", "F\xC3\x89VRIER", 2},
      {"fr-FR", "f\xE9vrier", 2},
      {"fr-FR", "F\xC9VR", 2},
      {"fr-FR", "mars", 3},
      {"fr-FR", "avr.", 4},
      {"fr-FR", "juin", 6},
      {"fr-FR", "juil", 7},
      {"fr-FR", "juil.", 7},
      {"fr-FR", "juillet", 7},
      {"fr-FR", "ao\xC3\xBBt", 8},
      {"fr-FR", "AO\xC3\x9BT", 8},
      {"fr-FR", "ao\xFBt", 8},
      {"fr-FR", "AO\xDBT", 8},
      {"fr-FR", "aout", 8},
      {"fr-FR",
       "d\xC3\xA9"
       "c.",
       12},
      {"nl-NL", "mrt", 3},
      {"nl-NL", "maart", 3},
      {"nl-NL", "mei", 5},
      {"nl-NL", "okt.", 10},
      {"es-ES", "ene", 1},
      {"es-ES", "abr", 4},
      {"es-ES", "sept", 9},
      {"es-ES", "sep", 9},
      {"es-ES", "septiembre", 9},
      {"es-ES", "dic.", 12},
      {"it-IT", "gen", 1},
      {"it-IT", "mag", 5},
      {"it-IT", "giu", 6},
      {"it-IT", "lug", 7},
      {"it-IT", "ago", 8},
      {"it-IT", "set", 9},
      {"it-IT", "ott", 10},
      {"it-IT", "dic", 12},
  };
  for (const NameCase& c : cases) {
    CalendarFields fields;
    EXPECT_EQ(parseDateFields(c.text, "%b", fields, c.locale), c.text.size()) << c.locale << ' ' << c.text;
    EXPECT_EQ(fields.month, c.expected) << c.locale << ' ' << c.text;
  }
}

TEST(DateFields, readsEveryFormOfAWeekday) {
  const NameCase cases[] = {
      {"en-US", "Sun", 0},
      {"en-GB", "Thursday", 4},
      {"de-DE", "Sonnabend", 6},
      {"de-DE", "Do.", 4},
      {"fr-FR", "mer.", 3},
      {"fr-FR", "mardi", 2},
      {"nl-NL", "donderdag", 4},
      {"nl-NL", "zo", 0},
      {"es-ES", "mi\xC3\xA9", 3},
      {"es-ES", "MI\xC3\x89RCOLES", 3},
      {"es-ES", "mi\xE9rcoles", 3},
      {"es-ES",
       "s\xC3\xA1"
       "b.",
       6},
      {"es-ES",
       "s\xE1"
       "bado",
       6},
      {"es-ES",
       "S\xC1"
       "B",
       6},
      {"es-ES", "ju", 4},
      {"es-ES", "ma", 2},
      {"es-ES", "mar", 2},
      {"it-IT", "luned\xC3\xAC", 1},
      {"it-IT", "LUNED\xC3\x8C", 1},
      {"it-IT", "venerd\xEC", 5},
      {"it-IT", "gioved\xCC", 4},
  };
  for (const NameCase& c : cases) {
    CalendarFields fields;
    EXPECT_EQ(parseDateFields(c.text, "%a", fields, c.locale), c.text.size()) << c.locale << ' ' << c.text;
    EXPECT_EQ(fields.weekday, c.expected) << c.locale << ' ' << c.text;
  }
}

TEST(DateFields, refusesTheNamesOfAnotherLanguage) {
  const NameCase cases[] = {
      {"en-US", "Mai", 0}, {"de-DE", "May", 0},     {"fr-FR", "Mei", 0}, {"nl-NL", "juil", 0},
      {"es-ES", "gen", 0}, {"it-IT", "octubre", 0}, {"en-GB", "", 0},    {"en-GB", "\xC3", 0},
  };
  for (const NameCase& c : cases) {
    EXPECT_EQ(parse(c.text, "%b", c.locale), std::nullopt) << c.locale << ' ' << c.text;
  }
}

TEST(DateFields, readsNumbersOfOneOrTwoDigits) {
  struct Case {
    std::string_view format;
    std::string_view text;
    std::optional<std::size_t> expected;
  };
  const Case cases[] = {
      {"%d", "1", 1},
      {"%d", "01", 2},
      {"%d", "31", 2},
      {"%d", "311", 2},
      {"%d", "0", std::nullopt},
      {"%d", "32", std::nullopt},
      {"%d", "x", std::nullopt},
      {"%d", "-1", std::nullopt},
      {"%d", "", std::nullopt},
      {"%m", "12", 2},
      {"%m", "13", std::nullopt},
      {"%m", "00", std::nullopt},
      {"%H", "0", 1},
      {"%H", "23", 2},
      {"%H", "24", std::nullopt},
      {"%I", "12", 2},
      {"%I", "0", std::nullopt},
      {"%I", "13", std::nullopt},
      {"%M", "59", 2},
      {"%M", "60", std::nullopt},
      {"%S", "60", 2},
      {"%S", "61", std::nullopt},
      {"%Y", "2012", 4},
      {"%Y", "20125", 4},
      {"%Y", "12", 2},
      {"%Y", "", std::nullopt},
      {"%T", "1:2:3", 5},
      {"%T", "10:20", std::nullopt},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(parse(c.text, c.format), c.expected) << c.format << " of " << c.text;
  }
}

TEST(DateFields, readsTheClockOfTwelveHours) {
  struct Case {
    std::string_view text;
    int expected;
  };
  const Case cases[] = {
      {"12:00:00 AM", 0},     {"01:00:00 am", 1},    {"11:00:00 a.m.", 11}, {"12:00:00 PM", 12}, {"1:00:00 p.m.", 13},
      {"11:00:00 p. m.", 23}, {"12:00:00 a. m.", 0}, {"10:00:00 P m.", 22}, {"10:00:00pm", 22},  {"10:00:00 A.M.", 10},
  };
  for (const Case& c : cases) {
    for (const std::string_view locale : {"en-US", "en-GB", "de-DE", "fr-FR", "nl-NL", "es-ES", "it-IT"}) {
      CalendarFields fields;
      EXPECT_EQ(parseDateFields(c.text, "%r", fields, locale), c.text.size()) << locale << ' ' << c.text;
      EXPECT_EQ(fields.hour, c.expected) << locale << ' ' << c.text;
    }
  }
  EXPECT_EQ(parse("10:20:30", "%r"), std::nullopt);
  EXPECT_EQ(parse("10:20:30 xm", "%r"), std::nullopt);
  EXPECT_EQ(parse("10:20:30 p", "%r"), std::nullopt);
  EXPECT_EQ(parse("13:20:30 pm", "%r"), std::nullopt);
}

TEST(DateFields, aBlankOfTheFormatTakesAnyRunOfBlanks) {
  for (const std::string_view text : {"Nov 01 2012", "Nov   01\t\n2012", "Nov01 2012", "  Nov 01 2012"}) {
    CalendarFields fields;
    EXPECT_EQ(parseDateFields(text, "%b %d %Y", fields, "en-US"), text.size()) << text;
    EXPECT_EQ(fields.month, 11) << text;
    EXPECT_EQ(fields.day, 1) << text;
    EXPECT_EQ(fields.year, 2012) << text;
  }
}

TEST(DateFields, aNumberEndsAfterItsDigits) {
  for (const std::string_view format : {"%H", "%M", "%S", "%I", "%m"}) {
    EXPECT_EQ(parse("012", format), 2U) << format;
  }
  EXPECT_EQ(parse("00011", "%Y"), 4U);
  EXPECT_EQ(parse("0000", "%Y"), 4U);
}

// A date is a part of a line.
TEST(DateFields, whatFollowsInMemoryIsNotRead) {
  const struct {
    std::string_view text;
    std::string_view format;
  } cases[] = {{"2024", "%Y"},  {"19", "%d"},      {"59", "%M"},       {"3 p.m.", "%I %p"},
               {"Dec. ", "%b"}, {"7:08", "%H:%M"}, {"Wednesday", "%a"}};
  for (const auto& each : cases) {
    for (std::size_t size = 0; size <= each.text.size(); ++size) {
      const std::string alone(each.text.substr(0, size));
      EXPECT_EQ(parse(each.text.substr(0, size), each.format), parse(alone, each.format)) << alone;
    }
  }
}

TEST(DateFields, aTextAfterAMatchIsNoFailure) {
  EXPECT_EQ(parse("01.02.2020 and more", "%d.%m.%Y"), 10U);
}

TEST(DateFields, aFormatNotFullyMatchedIsAFailure) {
  for (const std::string_view text : {"01.02.", "01.02", "01/02/2020", "", "01.02.2020"}) {
    EXPECT_EQ(parse(text, "%d.%m.%Y %H"), std::nullopt) << text;
  }
  EXPECT_EQ(parse("01", "%q"), std::nullopt) << "a directive that there is not";
  EXPECT_EQ(parse("01", "%d%"), std::nullopt) << "a percent sign that is not in the text";
}

TEST(DateFields, aFailureLeavesTheFieldsAlone) {
  const CalendarFields before{.year = 1, .month = 2, .day = 3, .hour = 4, .minute = 5, .second = 6, .weekday = 0};
  CalendarFields fields = before;
  EXPECT_EQ(parseDateFields("01.02.2020 10:20", "%d.%m.%Y %T", fields, "de-DE"), std::nullopt);
  EXPECT_EQ(fields, before);
}

TEST(DateFields, aFieldThatTheFormatDoesNotNameStays) {
  CalendarFields fields{.year = 1999, .month = 2, .day = 3, .hour = 4, .minute = 5, .second = 6, .weekday = 1};
  EXPECT_EQ(parseDateFields("7.8.", "%d.%m.", fields, ""), 4U);
  EXPECT_EQ(fields,
            (CalendarFields{.year = 1999, .month = 8, .day = 7, .hour = 4, .minute = 5, .second = 6, .weekday = 1}));
}

TEST(DateFields, anUnknownLocaleFailsWithBadLocaleName) {
  for (const std::string_view locale : {"en-US ", "EN-us", "de_DE", "ja-JP"}) {
    try {
      static_cast<void>(parse("1", "%d", locale));
      ADD_FAILURE() << locale;
    } catch (const ConverterGenericException& failure) {
      EXPECT_STREQ(failure.what(), "bad locale name");
      EXPECT_EQ(failure.kind(), FailureKind::Generic);
    }
  }
}

TEST(DateFields, leavesTheLocaleOfTheProcessAlone) {
  const std::string before = processLocale();
  EXPECT_EQ(parse("Mai", "%b", "de-DE"), 3U);
  EXPECT_EQ(parse("Mai", "%b", "es-ES"), std::nullopt);
  EXPECT_EQ(processLocale(), before);
}

}  // namespace
}  // namespace xlatr
