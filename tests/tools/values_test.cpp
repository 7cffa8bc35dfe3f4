#include "values.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "command_failure.hpp"
#include "wanted.hpp"

namespace xlatr::cli {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr std::int64_t kS = 1'000'000'000;

// What a usage failure says; empty without one.
std::string refusalOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const CommandFailure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::WrongUsage);
    return failure.what();
  }
  return "";
}

TEST(Values, secondsAreExact) {
  EXPECT_EQ(secondsValue("--x", "12.5"), 12'500'000'000);
  EXPECT_EQ(secondsValue("--x", "-0.000000001"), -1);
  EXPECT_EQ(secondsValue("--x", ".5"), kS / 2);
  EXPECT_EQ(secondsValue("--x", "+7."), 7 * kS);
  EXPECT_EQ(secondsValue("--x", "0.1234567899"), 123'456'789);
  for (const char* text : {"", ".", "-", "1e3", "1 ", "x", "99999999999", "1.2.3"}) {
    EXPECT_THAT(refusalOf([&] { static_cast<void>(secondsValue("--x", text)); }), StartsWith("--x ")) << text;
  }
}

TEST(Values, timesAreSecondsOrDates) {
  constexpr std::int64_t kDay = 1'709'251'200 * kS;  // 2024-03-01
  EXPECT_EQ(timeValue("--x", "-3").ns, -3 * kS);
  EXPECT_FALSE(timeValue("--x", "3").absolute);
  EXPECT_TRUE(timeValue("--x", "2024-03-01").absolute);
  EXPECT_EQ(timeValue("--x", "2024-03-01").ns, kDay);
  EXPECT_EQ(timeValue("--x", "2024-03-01T08:00").ns, kDay + 8 * 3600 * kS);
  EXPECT_EQ(timeValue("--x", "2024-03-01 08:00:05.25").ns, kDay + (8 * 3600 + 5) * kS + kS / 4);
  EXPECT_EQ(timeValue("--x", "1969-12-31T23:59:59").ns, -kS);
  for (const char* text : {"2024-02-30", "2024-3-1", "2024-03-01T24:00", "2024-03-01T08:60", "2024-03-01T08:00:60",
                           "2024-03-01T08", "2024-03-01X08:00", "1600-01-01", "tomorrow"}) {
    EXPECT_THAT(refusalOf([&] { static_cast<void>(timeValue("--x", text)); }), StartsWith("--x ")) << text;
  }
}

TEST(Values, durationsAndSizesHaveUnits) {
  EXPECT_EQ(durationValue("--x", "90"), 90 * kS);
  EXPECT_EQ(durationValue("--x", "250ms"), kS / 4);
  EXPECT_EQ(durationValue("--x", "1.5h"), 5400 * kS);
  EXPECT_EQ(durationValue("--x", "10m"), durationValue("--x", "10min"));
  EXPECT_EQ(sizeValue("--x", "1000"), 1000U);
  EXPECT_EQ(sizeValue("--x", "2.5M"), 2'500'000U);
  EXPECT_EQ(sizeValue("--x", "1.5Gi"), 1'610'612'736U);
  EXPECT_EQ(sizeValue("--x", "100k"), sizeValue("--x", "100K"));
  for (const char* text : {"", "0", "-1", "1x", "m", "99999999999h", "1 m"}) {
    EXPECT_NE(refusalOf([&] { static_cast<void>(durationValue("--x", text)); }), "") << text;
    EXPECT_NE(refusalOf([&] { static_cast<void>(sizeValue("--x", text)); }), "") << text;
  }
}

TEST(Values, tolerancesMayBeNothing) {
  EXPECT_EQ(toleranceValue("--x", "0"), 0U);
  EXPECT_EQ(toleranceValue("--x", "1us"), 1'000U);
  EXPECT_EQ(toleranceValue("--x", "0.5ms"), 500'000U);
  EXPECT_EQ(toleranceValue("--x", "10ns"), 10U);
  EXPECT_EQ(toleranceValue("--x", "2s"), 2'000'000'000U);
  EXPECT_EQ(toleranceValue("--x", "0.001"), 1'000'000U);
  for (const char* const wrong : {"", "us", "-1us", "1 us", "1m", "10000000000"}) {
    EXPECT_NE(refusalOf([&] { static_cast<void>(toleranceValue("--x", wrong)); }), "") << wrong;
  }
}

TEST(Values, bitRatesHaveUnits) {
  EXPECT_EQ(bitRateValue("--x", "500000"), 500'000U);
  EXPECT_EQ(bitRateValue("--x", "500k"), 500'000U);
  EXPECT_EQ(bitRateValue("--x", "0.5M"), 500'000U);
  EXPECT_EQ(bitRateValue("--x", "1G"), 1'000'000'000U);
  for (const char* const wrong : {"", "k", "500K", "500 k", "0", "-5", "5G", "1e3", "nan", "inf", "500kk"}) {
    EXPECT_NE(refusalOf([&] { static_cast<void>(bitRateValue("--x", wrong)); }), "") << wrong;
  }
  EXPECT_EQ(bitRatesValue("--x", "500k").nominal, 500'000U);
  EXPECT_EQ(bitRatesValue("--x", "500k").data, 0U);
  EXPECT_EQ(bitRatesValue("--x", "500k,2M").data, 2'000'000U);
  for (const char* const wrong : {"", ",", "500k,", ",2M", "500k,2M,8M"}) {
    EXPECT_NE(refusalOf([&] { static_cast<void>(bitRatesValue("--x", wrong)); }), "") << wrong;
  }
}

TEST(Values, zonesAreMinutes) {
  EXPECT_EQ(zoneValue("--tz", "UTC"), 0);
  EXPECT_EQ(zoneValue("--tz", "+01:00"), 60);
  EXPECT_EQ(zoneValue("--tz", "-0330"), -210);
  EXPECT_EQ(zoneValue("--tz", "+2"), 120);
  for (const char* text : {"", "CET", "1", "+15", "+01:60", "+123", "+01:0", "+-1"}) {
    EXPECT_NE(refusalOf([&] { static_cast<void>(zoneValue("--tz", text)); }), "") << text;
  }
}

TEST(Values, listsAndWords) {
  EXPECT_THAT(listValue("--x", {"1,2", "3"}), ElementsAre("1", "2", "3"));
  EXPECT_NE(refusalOf([] { static_cast<void>(listValue("--x", {"1,,2"})); }), "");
  EXPECT_NE(refusalOf([] { static_cast<void>(listValue("--x", {"1,"})); }), "");
  EXPECT_EQ(choiceValue("--x", "two", {"one", "two"}), 1U);
  EXPECT_EQ(refusalOf([] {
              static_cast<void>(choiceValue("--x", "six", {"one", "two"}));
            }),
            "--x six: use one of one, two");
  EXPECT_EQ(numberValue("--x", "0x1F", 31), 31U);
  EXPECT_EQ(refusalOf([] { static_cast<void>(numberValue("--x", "32", 31)); }),
            "--x 32: this is no number from 0 to 31");
}

TEST(Wanted, isNothingUnlessItIsAskedFor) {
  const Wanted wanted{Arguments()};
  const xlatr_selection selection = wanted.selection();
  EXPECT_EQ(selection.size, sizeof selection);
  EXPECT_EQ(selection.bus_count + selection.id_count + selection.kinds + selection.directions, 0U);
  EXPECT_EQ(selection.from_ns, 0);
  EXPECT_EQ(selection.until_ns, 0);
  const xlatr_changes changes = wanted.changes();
  EXPECT_EQ(changes.bus_pair_count + changes.rebase + changes.zone_known, 0U);
  EXPECT_EQ(changes.shift_ns, 0);
}

TEST(Wanted, readsEveryOption) {
  Arguments arguments;
  arguments.fromTime = "1.5";
  arguments.buses = {"1,3-5"};
  arguments.kinds = {"!error,comment"};
  arguments.directions = {"rx"};
  arguments.shiftTime = "-2";
  arguments.busMap = {"1=2,2=1"};
  arguments.zone = "+01:00";
  arguments.ids = {"!0x123,0x100-0x1FF,0x18FEF100x"};
  const Wanted wanted(arguments);
  const xlatr_selection selection = wanted.selection();
  EXPECT_EQ(selection.from_ns, kS * 3 / 2);
  EXPECT_EQ(selection.absolute_times, 0U);
  ASSERT_EQ(selection.bus_count, 2U);
  EXPECT_EQ(selection.buses[1].first, 3);
  EXPECT_EQ(selection.buses[1].last, 5);
  EXPECT_EQ(selection.other_buses, 0U);
  ASSERT_EQ(selection.id_count, 3U);
  EXPECT_EQ(selection.other_ids, 1U);
  EXPECT_EQ(selection.ids[1].last, 0x1FFU);
  EXPECT_EQ(selection.ids[2].first, 0x18FEF100U);
  EXPECT_EQ(selection.ids[2].length, 29U);
  EXPECT_EQ(selection.kinds & 1U << XLATR_KIND_ERROR, 0U);
  EXPECT_NE(selection.kinds & 1U << XLATR_KIND_DATA, 0U);
  EXPECT_EQ(selection.directions, static_cast<std::uint32_t>(XLATR_FLAG_RECEIVED));
  EXPECT_EQ(wanted.changes().shift_ns, -2 * kS);
  EXPECT_EQ(wanted.changes().bus_pair_count, 2U);
  EXPECT_EQ(wanted.changes().zone_minutes, 60);
}

TEST(Wanted, readsMasksAndClockTimes) {
  Arguments arguments;
  arguments.ids = {"0x700/0x7F0,5/0"};
  arguments.untilTime = "2024-03-01T00:00";
  arguments.directions = {"!rx"};
  const Wanted wanted(arguments);
  ASSERT_EQ(wanted.selection().id_count, 2U);
  EXPECT_EQ(wanted.selection().ids[0].mask, 0x7F0U);
  EXPECT_EQ(wanted.selection().ids[1].last, 0x1FFFFFFFU);
  EXPECT_EQ(wanted.selection().absolute_times, 1U);
  EXPECT_EQ(wanted.selection().directions, static_cast<std::uint32_t>(XLATR_FLAG_TRANSMITTED));
}

TEST(Wanted, refusesWhatMakesNoSense) {
  const auto refusal = [](const std::function<void(Arguments&)>& change) {
    Arguments arguments;
    change(arguments);
    return refusalOf([&] { Wanted{arguments}; });
  };
  EXPECT_THAT(refusal([](Arguments& a) { a.fromTime = "5", a.untilTime = "5"; }),
              StartsWith("--until-time 5: this is"));
  EXPECT_THAT(refusal([](Arguments& a) { a.fromTime = "5", a.untilTime = "2024-03-01"; }),
              StartsWith("--until-time 2024-03-01: give both"));
  EXPECT_THAT(refusal([](Arguments& a) { a.buses = {"5-3"}; }), StartsWith("--bus 5-3: the range ends"));
  EXPECT_THAT(refusal([](Arguments& a) { a.buses = {"65536"}; }), StartsWith("--bus 65536"));
  EXPECT_THAT(refusal([](Arguments& a) { a.buses = {"1,!2"}; }), StartsWith("--bus "));
  EXPECT_THAT(refusal([](Arguments& a) { a.ids = {"0x20000000"}; }), StartsWith("--id 0x20000000"));
  EXPECT_THAT(refusal([](Arguments& a) { a.kinds = {"frames"}; }), StartsWith("--kind frames: use one of data,"));
  EXPECT_THAT(refusal([](Arguments& a) { a.directions = {"up"}; }), StartsWith("--direction up"));
  EXPECT_THAT(refusal([](Arguments& a) { a.busMap = {"1"}; }), StartsWith("--map-bus 1: write it as"));
}

}  // namespace
}  // namespace xlatr::cli
