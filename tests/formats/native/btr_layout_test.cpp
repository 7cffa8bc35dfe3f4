#include "formats/native/btr_layout.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/btr_image.hpp"
#include "util/failures.hpp"
#include "util/time_zone.hpp"

namespace xlatr {
namespace {

const SessionDateTime kDate{
    .hundredths = 25, .second = 30, .minute = 15, .hour = 8, .dayOfWeek = 5, .day = 1, .month = 3, .year = 24};

SessionDateTime with(SessionDateTime date, std::uint8_t SessionDateTime::*field, std::uint8_t value) {
  date.*field = value;
  return date;
}

template <class Record>
std::string imageOf(const Record& record) {
  std::string image(kLayoutSize<Record>, '\0');
  storeFields(reinterpret_cast<std::uint8_t*>(image.data()), record);
  return image;
}

template <class Record>
Record recordOf(const std::string& image) {
  Record record;
  loadFields(reinterpret_cast<const std::uint8_t*>(image.data()), record);
  return record;
}

TEST(BtrLayout, readsAndWritesADescriptor) {
  const std::string image(
      "\x03\xA1\xA2\x01\x44\x33\x22\x11"  // version, unused, continued, next directory
      "\x19\x1E\x0F\x08\x05\x01\x03\x18"  // 8:15:30.25 on a Friday, 1 March 2024
      "\x08\x07\x06\x05\x04\x03\x02\x01"  // start of the time stamps
      "\x0D\x0C\x0B\x0A\xFF\xB1\xB2\xB3",
      32);
  const auto descriptor = recordOf<SessionDescriptor>(image);
  EXPECT_EQ(descriptor.version, 3);
  EXPECT_EQ(descriptor.continued, 1);
  EXPECT_EQ(descriptor.nextDirectorySector, 0x11223344U);
  EXPECT_EQ(descriptor.dateAndTime, kDate);
  EXPECT_EQ(descriptor.startTimestampUs, 0x0102030405060708U);
  EXPECT_EQ(descriptor.startLocation.sector, 0x0A0B0C0DU);
  EXPECT_EQ(descriptor.startLocation.position, 0xFF);
  EXPECT_EQ(imageOf(descriptor), image);
}

TEST(BtrLayout, readsAndWritesAnEntry) {
  const std::string image("\x44\x33\x22\x11\x13\x4C\xA1\xA2\x01\x02\x03\x04\x05\x06\x07\x08\xDD\xCC\xBB\xAA", 20);
  const auto entry = recordOf<MsgEntry>(image);
  EXPECT_EQ(entry.id, 0x11223344U);
  EXPECT_TRUE(entry.isRemote());
  EXPECT_TRUE(entry.isExtended());
  EXPECT_TRUE(entry.isError());
  EXPECT_EQ(entry.getSource(), 4);
  EXPECT_EQ(entry.getLength(), 12);
  EXPECT_EQ(entry.data[7], 8);
  EXPECT_EQ(entry.timestampUs, 0xAABBCCDDU);
  EXPECT_EQ(entry.payload(3).size(), 3U);
  EXPECT_EQ(entry.payload(12).size(), 8U);
  EXPECT_EQ(imageOf(entry), image);
}

TEST(BtrLayout, readsAndWritesADataSector) {
  const std::string image =
      test::BtrImage(1)
          .sector(0, {}, {{.id = 0x7FF, .bus = 1, .length = 2, .timestamp = 5, .data = {1, 2}}}, 7)
          .bytes();
  const auto sector = DataSector::fromBytes(SectorBytes(reinterpret_cast<const std::uint8_t*>(image.data()), 512));
  EXPECT_EQ(sector.stamp, 0x07180301U);
  EXPECT_EQ(sector.wrapCounter(), 7);
  EXPECT_EQ(sector.entries[0].id, 0x7FFU);
  EXPECT_EQ(sector.entries[1], MsgEntry());
  EXPECT_EQ(sector.entries[24].id, 0xFFFFFFFFU);
  EXPECT_EQ(sector.time, 0x080F1E19U);
  EXPECT_EQ(sector.check, 0x07180301U ^ 0x080F1E19U);
  const SectorImage written = sector.toBytes();
  EXPECT_EQ(std::string(written.begin(), written.end()), image);
}

TEST(BtrLayout, aSectorBelongsToASessionByThreeConditions) {
  DataSector sector;
  sector.seal(kDate, 1);
  EXPECT_TRUE(sector.belongsTo(kDate));
  DataSector noStamp = sector;
  noStamp.stamp = 0;
  noStamp.check = noStamp.time;
  EXPECT_FALSE(noStamp.belongsTo(kDate));
  EXPECT_FALSE(sector.belongsTo(with(kDate, &SessionDateTime::hundredths, 26)));
  DataSector damaged = sector;
  damaged.check ^= 0x100U;
  EXPECT_FALSE(damaged.belongsTo(kDate));
}

TEST(BtrLayout, aSectorHas25Entries) {
  DataSector sector;
  sector.entryAt(24).id = 1;
  EXPECT_EQ(sector.entries[24].id, 1U);
  try {
    static_cast<void>(sector.entryAt(25));
    FAIL() << "there is an entry 25";
  } catch (const ConverterProcessingException& failure) {
    EXPECT_STREQ(failure.what(), "BTR index out of entry bounds");
  }
}

TEST(BtrLayout, aLocationCountsInSectors) {
  EXPECT_EQ((SessionLocation{3, 0xFF, {}}.getPosition()), 1536U);
  EXPECT_EQ((SessionLocation{0xFFFFFFFF, 0, {}}.getPosition()), 0xFFFFFFFFULL * 512);
}

TEST(SessionDateTimes, becomeDays) {
  // 2024-03-01 08:15:30.250 is 45352 days and 29730.25 seconds.
  EXPECT_DOUBLE_EQ(kDate.toDouble(), 45352.0 + 29730.25 / 86400);
  const DateTime date = kDate.toDateTime();
  EXPECT_EQ(date.year, 2024);
  EXPECT_EQ(date.millisecond, 250);
  EXPECT_EQ(date.microsecond, 0);
}

TEST(SessionDateTimes, becomeSecond0Of1970WhenTheyAreNone) {
  for (const auto& [field, value] :
       {std::pair(&SessionDateTime::month, 13), std::pair(&SessionDateTime::day, 0),
        std::pair(&SessionDateTime::hour, 24), std::pair(&SessionDateTime::hundredths, 100)}) {
    const SessionDateTime none = with(kDate, field, static_cast<std::uint8_t>(value));
    EXPECT_EQ(none.toDouble(), 25569.0) << value;
    EXPECT_THROW(static_cast<void>(none.parseDateTime()), ConverterParsingException) << value;
  }
}

TEST(SessionDateTimes, areInTheTimeZoneOfTheProcess) {
  const ScopedTimeZone zone(kNewYork);
  EXPECT_DOUBLE_EQ(kDate.toDouble(), 45352.0 + (29730.25 + 5 * 3600) / 86400);
  EXPECT_DOUBLE_EQ(with(kDate, &SessionDateTime::month, 7).toDouble(), 45474.0 + (29730.25 + 4 * 3600) / 86400);
  EXPECT_EQ(with(kDate, &SessionDateTime::month, 13).toDouble(), 25569.0) << "none is the same in every zone";
}

TEST(SessionDateTimes, areMadeFromSectorWords) {
  EXPECT_EQ(SessionDateTime::fromSectorWords(0x07180301, 0x080F1E19), kDate);
  const SessionDateTime none = SessionDateTime::fromSectorWords(0x07180D01, 0x080F1E19);
  EXPECT_EQ(none, with(with(kDate, &SessionDateTime::month, 13), &SessionDateTime::dayOfWeek, 0xFF));
}

TEST(SessionDateTimes, areComparedAsMoments) {
  EXPECT_EQ(kDate.compareTo(kDate), 0);
  EXPECT_EQ(kDate.compareTo(with(kDate, &SessionDateTime::hundredths, 26)), -1);
  EXPECT_EQ(kDate.compareTo(with(kDate, &SessionDateTime::hundredths, 24)), 1);
  EXPECT_EQ(kDate.compareTo(with(kDate, &SessionDateTime::second, 31)), -1);
  EXPECT_EQ(kDate.compareTo(with(kDate, &SessionDateTime::year, 23)), 1);
  EXPECT_EQ(kDate.compareTo(with(kDate, &SessionDateTime::dayOfWeek, 0)), 0);
  // Two dates that are none stand for the same moment.
  EXPECT_EQ(with(kDate, &SessionDateTime::month, 13).compareTo(with(kDate, &SessionDateTime::month, 14)), 0);
}

TEST(SessionDateTimes, areComparedByTheirFieldsWhenTheFirstIsNone) {
  const SessionDateTime none = with(kDate, &SessionDateTime::dayOfWeek, 0xFF);
  EXPECT_EQ(none.compareTo(kDate), 0);
  EXPECT_EQ(with(none, &SessionDateTime::month, 13).compareTo(with(kDate, &SessionDateTime::month, 14)), -1);
  EXPECT_EQ(with(none, &SessionDateTime::year, 25).compareTo(with(kDate, &SessionDateTime::month, 200)), 1);
  EXPECT_EQ(with(none, &SessionDateTime::hour, 9).compareTo(with(kDate, &SessionDateTime::hundredths, 255)), 1);
  EXPECT_EQ(with(none, &SessionDateTime::hundredths, 1).compareTo(kDate), -1);
}

TEST(SessionDateTimes, beginIn2000) {
  EXPECT_EQ(SessionDateTime::fromDateTime(DateTime::fromOleDate(45352.0 + 29730.25 / 86400)), kDate);
  EXPECT_EQ(SessionDateTime::fromDateTime(DateTime::fromOleDate(36500.0)).year, 0);  // 1999-12-06
  EXPECT_EQ(SessionDateTime::fromDateTime(DateTime::fromOleDate(36526.0)).year, 0);  // 2000-01-01
  EXPECT_EQ(SessionDateTime::fromDateTime(DateTime::fromOleDate(36892.0)).year, 1);  // 2001-01-01
  EXPECT_EQ(SessionDateTime::fromDateTime(DateTime::fromOleDate(0.0)),
            (SessionDateTime{.dayOfWeek = 6, .day = 30, .month = 12, .year = 0}));
}

}  // namespace
}  // namespace xlatr
