// The families of BTR files, driven as a C++ client drives them.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/btr_image.hpp"
#include "support/object_failures.hpp"
#include "support/object_families.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

using Info = std::unique_ptr<BtrInfo, decltype(&BtrInfo_Destruct)>;
using Entry = std::unique_ptr<BtrSessionEntry, decltype(&BtrSessionEntry_Destruct)>;
using Reader = std::unique_ptr<BtrSessionReader, decltype(&BtrSessionReader_Destruct)>;

constexpr BtrDate kFirst{};
constexpr BtrDate kSecond{.minute = 16};

// Two sessions: sectors 1 to 3, and 4 to 6, which was recorded circularly and begins at 6.
std::string twoSessions() {
  BtrImage image(8);
  image.session(0, {.firstSector = 1, .date = kFirst}).session(1, {.firstSector = 4, .date = kSecond});
  image.sector(1, kFirst,
               {{.id = 1, .bus = 2, .length = 1, .timestamp = 1000}, {.id = 2, .bus = 4, .timestamp = 2000}});
  image.sector(2, kFirst).sector(3, kFirst, {{.id = 3}, {.id = 4, .bus = 15}, {.id = 5}});
  for (const std::uint32_t sector : {4U, 5U, 6U}) {
    image.sector(sector, kSecond, {{.id = sector}}, sector == 6 ? 1 : 2);
  }
  return image.bytes();
}

class BtrObjectsTest : public testing::Test {
 protected:
  Entry session(std::uint32_t index) const {
    return {BtrInfo_GetSession(info_.get(), index), &BtrSessionEntry_Destruct};
  }
  Reader readerOf(std::uint32_t index) const {
    return {BtrSessionReader_Construct(session(index).get(), true), &BtrSessionReader_Destruct};
  }

  TempFolder folder_;
  std::string path_ = folder_.write("x.btr", twoSessions());
  Info info_{BtrInfo_Construct(path_.c_str()), &BtrInfo_Destruct};
};

// Releases the messages of a sector and their array.
struct Sector {
  Sector() = default;
  ~Sector() {
    for (std::uint32_t index = 0; index < count; ++index) {
      SessionMessage_Destruct(messages[index]);
    }
    BtrSessionReader_DeleteSectors(messages);
  }
  Sector(const Sector&) = delete;
  Sector& operator=(const Sector&) = delete;

  bool read(const Reader& reader) {
    return BtrSessionReader_ReadNextSector(reader.get(), &messages, &count, &structSize);
  }

  SessionMessage** messages = nullptr;
  std::uint32_t count = 99;
  std::uint32_t structSize = 0;
};

TEST(BtrObjects, ignoreNullInDestruct) {
  BtrInfo_Destruct(nullptr);
  BtrSessionEntry_Destruct(nullptr);
  BtrSessionReader_Destruct(nullptr);
  BtrSessionReader_DeleteSectors(nullptr);
  BtrSessionWriter_Destruct(nullptr);
  SessionMessage_Destruct(nullptr);
}

TEST(BtrObjects, refuseNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrInfo_GetValid(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrInfo_GetSession(nullptr, 0)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrSessionEntry_getStart(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(BtrSessionReader_Construct(nullptr, true)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(SessionMessage_getMessage(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(SessionDescriptor_getDateAndTime(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(SessionLocation_getSector(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(SessionDateTime_toDouble(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MsgEntry_getSource(nullptr)); }), expected);
}

TEST(BtrObjects, tellOfTheirFormatWithoutAnObject) {
  EXPECT_EQ(textOf(BtrInfo_getFormatDescriptionSize(), BtrInfo_getFormatDescription),
            "BRIX-Bridge Pro - Binary trace file");
  EXPECT_EQ(textOf(BtrInfo_GetExtensionSize(), BtrInfo_GetExtension), ".btr");
  EXPECT_EQ(BtrInfo_GetCurrentVersion(), 3.0);
  const auto* const targets = BtrInfo_GetAllowedConvertions();
  EXPECT_EQ(std::vector<TraceFormat>(targets, targets + BtrInfo_GetAllowedConvertionsSize()),
            (std::vector<TraceFormat>{XLATR_FORMAT_TRC, XLATR_FORMAT_ASC, XLATR_FORMAT_CSV}));
  const auto* const versions = BtrInfo_GetSupportedVersions();
  EXPECT_EQ(std::vector<double>(versions, versions + BtrInfo_GetSupportedVersionsSize()),
            (std::vector<double>{1.0, 2.0, 3.0}));
  EXPECT_EQ(DataSector_getSize(), 512U);
  EXPECT_EQ(SessionDescriptor_getSize(), 32U);
}

TEST_F(BtrObjectsTest, tellOfTheSessions) {
  EXPECT_TRUE(BtrInfo_GetValid(info_.get()));
  EXPECT_EQ(BtrInfo_GetVersion(info_.get()), 3.0);
  ASSERT_EQ(BtrInfo_getSessionsCount(info_.get()), 2U);
  EXPECT_EQ(BtrInfo_GetSession(info_.get(), 2), nullptr);
  const Entry first = session(0);
  const Entry second = session(1);
  EXPECT_EQ(BtrSessionEntry_getIndex(first.get()), 1U);
  EXPECT_EQ(BtrSessionEntry_getIndex(second.get()), 2U);
  EXPECT_FALSE(BtrSessionEntry_getIsCircular(first.get()));
  EXPECT_TRUE(BtrSessionEntry_getIsCircular(second.get()));
  EXPECT_EQ(BtrSessionEntry_getSectorsCount(first.get()), 3U);
  EXPECT_EQ(BtrSessionEntry_getSectorsCount(second.get()), 3U);
  EXPECT_EQ(SessionLocation_getSector(BtrSessionEntry_getStart(second.get())), 6U);
  EXPECT_EQ(SessionLocation_getPosition(BtrSessionEntry_getStart(second.get())), 3072U);
  EXPECT_EQ(SessionLocation_getSector(BtrSessionEntry_getEnd(second.get())), 6U);
  const SessionDescriptor* const description = BtrSessionEntry_getDescription(second.get());
  EXPECT_EQ(SessionLocation_getSector(SessionDescriptor_getStartLocation(description)), 4U);
  EXPECT_EQ(TEXT_OF(BtrSessionEntry, getSourcePath, getSourcePathSize, first.get()), path_);
}

TEST_F(BtrObjectsTest, entriesOutliveTheInformationObjectAndMakeANewOne) {
  const Entry second = session(1);
  info_.reset();
  EXPECT_EQ(BtrSessionEntry_getIndex(second.get()), 2U);
  const Info again(BtrSessionEntry_getTrace(second.get()), &BtrInfo_Destruct);
  EXPECT_EQ(BtrInfo_getSessionsCount(again.get()), 2U);
}

TEST_F(BtrObjectsTest, tellOfDates) {
  const Entry first = session(0);
  const Entry second = session(1);
  const auto* const earlier = SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(first.get()));
  const auto* const later = SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(second.get()));
  std::uint8_t items[7] = {};
  SessionDateTime_getDateTimeItems(later, &items[0], &items[1], &items[2], &items[3], &items[4], &items[5], &items[6]);
  EXPECT_EQ(std::vector<std::uint8_t>(items, items + 7), (std::vector<std::uint8_t>{24, 3, 1, 8, 16, 30, 25}));
  SessionDateTime_getDateTimeItems(later, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(SessionDateTime_compareTo(earlier, later), -1);
  EXPECT_EQ(SessionDateTime_compareTo(later, earlier), 1);
  EXPECT_EQ(SessionDateTime_compareTo(later, later), 0);
  EXPECT_DOUBLE_EQ(SessionDateTime_toDouble(later), 45352.0 + 29790.25 / 86400);
}

TEST_F(BtrObjectsTest, handOutSectorsThatTheCallerOwns) {
  Reader reader = readerOf(0);
  Sector first;
  ASSERT_TRUE(first.read(reader));
  EXPECT_EQ(first.structSize, 40U);
  ASSERT_EQ(first.count, 2U);
  EXPECT_EQ(MsgEntry_getSource(SessionMessage_getMessage(first.messages[0])), 2);
  EXPECT_EQ(MsgEntry_getSource(SessionMessage_getMessage(first.messages[1])), 4);
  Sector empty;
  ASSERT_TRUE(empty.read(reader));
  EXPECT_EQ(empty.count, 0U);
  EXPECT_EQ(empty.messages, nullptr);
  EXPECT_NEAR(BtrSessionReader_getPercentDone(reader.get()), 66.67, 0.01);
  reader.reset();
  EXPECT_EQ(MsgEntry_getSource(SessionMessage_getMessage(first.messages[0])), 2) << "outlives its reader";
}

TEST_F(BtrObjectsTest, handOutWhatStoodInFrontOfAFrameThatMakesNoSense) {
  const Reader reader = readerOf(0);
  ASSERT_TRUE(Sector().read(reader));
  ASSERT_TRUE(Sector().read(reader));
  Sector sector;
  try {
    static_cast<void>(sector.read(reader));
    FAIL() << "took the frame";
  } catch (const ConverterGenericException& failure) {
    EXPECT_STREQ(failure.what(), "Unexpected frame received. Type: 15, ID: 0x4");
    EXPECT_EQ(lastError(), failure.what());
  }
  EXPECT_EQ(sector.count, 1U);
  Sector last;
  EXPECT_FALSE(last.read(reader));
  EXPECT_EQ(last.count, 0U);
  EXPECT_EQ(last.messages, nullptr);
}

TEST_F(BtrObjectsTest, readersOpenAndCloseTheirFile) {
  const Reader reader(BtrSessionReader_Construct(session(1).get(), false), &BtrSessionReader_Destruct);
  EXPECT_FALSE(Sector().read(reader));
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(BtrSessionReader_setActive(reader.get(), true));
    for (int sector = 0; sector < 3; ++sector) {
      ASSERT_TRUE(Sector().read(reader));
    }
    EXPECT_FALSE(Sector().read(reader));
    EXPECT_EQ(BtrSessionReader_getPercentDone(reader.get()), 100.0);
  }
  EXPECT_FALSE(BtrSessionReader_setActive(reader.get(), false));
  EXPECT_FALSE(Sector().read(reader));
  std::uint32_t count = 0;
  EXPECT_EQ(processingFailureOf(
                [&] { static_cast<void>(BtrSessionReader_ReadNextSector(reader.get(), nullptr, &count, nullptr)); }),
            "Object cannot be null");
}

TEST_F(BtrObjectsTest, aSessionsMessageIsOneForAWriter) {
  const Reader reader = readerOf(0);
  Sector sector;
  ASSERT_TRUE(sector.read(reader));
  CsvWriter* const writer = CsvWriter_Construct(folder_.file("y.csv").c_str(), false, 1.0);
  CsvWriter_setActive(writer, true);
  CsvWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(sector.messages[0]));
  CsvWriter_Destruct(writer);
  EXPECT_EQ(folder_.read("y.csv"), "1;1.000;3;Rx;DT;0001;-;1;00\r\n");
}

TEST_F(BtrObjectsTest, writeAFileFromATrcMessage) {
  const std::string source =
      folder_.write("s.trc", ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n1) 10.5 3 Rx 0123 1 AA\n");
  TrcInfo* const trace = TrcInfo_Construct_2(source.c_str());
  TrcReader* const reader = TrcReader_Construct(trace);
  ASSERT_TRUE(TrcReader_setActive(reader, true));
  MessageCan* message = nullptr;
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader, &message));
  BtrSessionWriter* const writer = BtrSessionWriter_Construct(folder_.file("y.btr").c_str(), 4, 2.0);
  EXPECT_EQ(BtrSessionWriter_getOwnerBus(writer), 4);
  BtrSessionWriter_setActive(writer, true);
  BtrSessionWriter_WriteHeader(writer, reinterpret_cast<const ITraceInfo*>(trace));
  BtrSessionWriter_WriteComment(writer, "not written");
  BtrSessionWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
  BtrSessionWriter_setActive(writer, false);
  BtrSessionWriter_Destruct(writer);
  MessageCan_Destruct(message);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(trace);
  const BtrDate date{
      .year = 21, .month = 7, .day = 26, .hour = 6, .minute = 0, .second = 0, .hundredths = 0, .dayOfWeek = 1};
  EXPECT_EQ(folder_.read("y.btr"),
            BtrImage(2)
                .session(0, {.date = date, .version = 2})
                .sector(1, date, {{.id = 0x123, .bus = 2, .length = 1, .timestamp = 10500, .data = {0xAA}}})
                .bytes());
}

TEST_F(BtrObjectsTest, aWriterRefusesAMessageOfItsOwnFormat) {
  const Reader reader = readerOf(0);
  Sector sector;
  ASSERT_TRUE(sector.read(reader));
  BtrSessionWriter* const writer = BtrSessionWriter_Construct(folder_.file("y.btr").c_str(), -1, 3.0);
  BtrSessionWriter_setActive(writer, true);
  EXPECT_EQ(processingFailureOf(
                [&] { BtrSessionWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(sector.messages[0])); }),
            "Object cannot be casted to any supported message trace");
  BtrSessionWriter_Destruct(writer);
}

}  // namespace
}  // namespace xlatr::test
