#include "formats/csv/csv_table_head.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace xlatr {
namespace {

std::string textOfHead(const StreamHead& head) {
  TextBuffer out;
  appendCsvTableHead(out, head);
  return std::string(out.view());
}

StreamHead headOf(std::int64_t start, std::optional<int> zone, const std::string& producer = {}) {
  StreamHead head;
  head.start = TraceStart{.sinceEpochNs = start, .zoneMinutes = zone};
  head.producer = producer;
  return head;
}

TEST(CsvTableHead, saysWhenAndByWhom) {
  EXPECT_EQ(textOfHead(StreamHead()), " xlatr: table version=2.0");
  EXPECT_EQ(textOfHead(headOf(1'627'286'400'000'000'001, {})),
            " xlatr: table version=2.0 start=2021-07-26T08:00:00.000000001");
  EXPECT_EQ(textOfHead(headOf(-1, -210, "Logger 7, \"blue\"")),
            " xlatr: table version=2.0 start=1969-12-31T23:59:59.999999999-03:30 producer=Logger 7, \"blue\"");
}

TEST(CsvTableHead, comesBack) {
  for (const std::int64_t start : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1'627'286'400'123'456'789},
                                   std::int64_t{-9'100'000'000'000'000'000}, std::int64_t{9'180'000'000'000'000'000}}) {
    for (const std::optional<int> zone : {std::optional<int>(), std::optional(0), std::optional(-719)}) {
      const StreamHead head = headOf(start, zone, "x y");
      StreamHead read;
      EXPECT_TRUE(readCsvTableHead(textOfHead(head), read)) << textOfHead(head);
      EXPECT_EQ(read.start, head.start);
      EXPECT_EQ(read.producer, head.producer);
    }
  }
}

TEST(CsvTableHead, isNoOtherText) {
  for (const char* const text :
       {"", "xlatr: data time=0", "xlatr: table", "xlatr: table version=2.0x", "xlatr: table version=2.0 end=1",
        "xlatr: table version=2.0 start=", "xlatr: table version=2.0 start=2021-02-30T00:00:00.000000000",
        "xlatr: table version=2.0 start=2021-07-26T08:00:00",
        "xlatr: table version=2.0 start=0000-01-01T00:00:00.000000000",
        "xlatr: table version=2.0 start=2021-07-26T08:00:00.000000000+2",
        "xlatr: table version=2.0 start=9999-07-26T08:00:00.000000000"}) {
    StreamHead head;
    EXPECT_FALSE(readCsvTableHead(text, head)) << text;
    EXPECT_EQ(head.start, std::nullopt);
  }
}

}  // namespace
}  // namespace xlatr
