#include "formats/native/btr_session_reader.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "formats/native/btr_info.hpp"
#include "support/btr_image.hpp"
#include "support/temp_folder.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::BtrSlot;
using test::btrTick;

constexpr std::uint32_t kMinute = 60'000'000;  // microseconds

class BtrSessionReaderTest : public testing::Test {
 protected:
  // The only session of a file.
  BtrSessionEntry entryOf(const BtrImage& image) {
    const BtrInfo info(TraceFileInfo(folder_.write("x.btr", image.bytes())));
    EXPECT_EQ(info.getSessionsCount(), 1U);
    return info.GetSession(0);
  }

  // The messages of a session whose sectors hold these slots.
  std::vector<SessionMessage> messagesOf(const std::vector<std::vector<BtrSlot>>& sectors,
                                         std::uint64_t startTimestamp = 0) {
    BtrImage image(1 + sectors.size());
    image.session(0, {.startTimestamp = startTimestamp});
    for (std::size_t index = 0; index < sectors.size(); ++index) {
      image.sector(index + 1, {}, sectors[index]);
    }
    BtrSessionReader reader(entryOf(image), true);
    std::vector<SessionMessage> all;
    std::vector<SessionMessage> sector;
    while (reader.readSector(sector)) {
      all.insert(all.end(), sector.begin(), sector.end());
    }
    EXPECT_EQ(reader.getPercentDone(), 100.0);
    return all;
  }

  std::vector<double> timesOf(const std::vector<BtrSlot>& slots, std::uint64_t startTimestamp = 0) {
    std::vector<double> times;
    for (const SessionMessage& message : messagesOf({slots}, startTimestamp)) {
      times.push_back(message.time.count());
    }
    return times;
  }

  test::TempFolder folder_;
  std::vector<SessionMessage> messages_;
};

BtrSlot onBus(std::uint8_t bus, std::uint32_t timestamp) {
  return {.bus = bus, .timestamp = timestamp};
}

// Each sector of a session holds one frame, whose identifier is the sector's number.
void addNumberedSectors(BtrImage& image, std::uint32_t first, std::uint32_t last, std::uint32_t newest) {
  for (std::uint32_t sector = first; sector <= last; ++sector) {
    image.sector(sector, {}, {{.id = sector}}, sector <= newest ? 2 : 1);
  }
}

std::vector<std::uint32_t> identifiersOf(BtrSessionReader& reader) {
  std::vector<std::uint32_t> identifiers;
  std::vector<SessionMessage> messages;
  while (reader.readSector(messages)) {
    for (const SessionMessage& message : messages) {
      identifiers.push_back(message.getIdentifier());
    }
  }
  return identifiers;
}

TEST_F(BtrSessionReaderTest, handsOutTheFramesOfEachSector) {
  BtrImage image(4);
  image.session(0, {});
  image.sector(1, {},
               {{.id = 0x7FF, .bus = 1, .length = 3, .timestamp = 1500, .data = {1, 2, 3}},
                {.id = 0x1FFFFFFF, .flags = 0x02, .bus = 4, .length = 8, .timestamp = 1501}});
  image.sector(2, {});
  image.sector(3, {}, {{.id = 5, .flags = 0x01, .length = 4, .timestamp = 2000}});
  BtrSessionReader reader(entryOf(image));
  EXPECT_FALSE(reader.getActive());
  EXPECT_FALSE(reader.readSector(messages_));
  ASSERT_TRUE(reader.setActive(true));
  EXPECT_EQ(reader.getPercentDone(), 0.0);

  ASSERT_TRUE(reader.readSector(messages_));
  ASSERT_EQ(messages_.size(), 2U);
  EXPECT_EQ(messages_[0].getIdentifier(), 0x7FFU);
  EXPECT_EQ(messages_[0].getLength(), 3U);
  EXPECT_EQ(messages_[0].getData()[2], 3);
  EXPECT_EQ(messages_[0].entry.getSource(), 1);
  EXPECT_EQ(messages_[0].time, RealMilliseconds(1.5));
  EXPECT_TRUE(messages_[0].getValid());
  EXPECT_TRUE(messages_[1].entry.isExtended());
  EXPECT_EQ(messages_[1].entry.getSource(), 4);
  EXPECT_EQ(messages_[1].time, RealMilliseconds(1.501));

  ASSERT_TRUE(reader.readSector(messages_)) << "an empty sector is one";
  EXPECT_TRUE(messages_.empty());
  EXPECT_DOUBLE_EQ(reader.getPercentDone(), 200.0 / 3);
  ASSERT_TRUE(reader.readSector(messages_));
  EXPECT_TRUE(messages_.at(0).entry.isRemote());
  EXPECT_FALSE(reader.readSector(messages_));
  EXPECT_TRUE(messages_.empty());
  EXPECT_EQ(reader.getPercentDone(), 100.0);
}

TEST_F(BtrSessionReaderTest, startsAgainWhenItIsActivatedAgain) {
  BtrImage image(3);
  image.session(0, {});
  addNumberedSectors(image, 1, 2, 2);
  BtrSessionReader reader(entryOf(image), true);
  EXPECT_TRUE(reader.getActive());
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(identifiersOf(reader), (std::vector<std::uint32_t>{1, 2}));
    ASSERT_TRUE(reader.setActive(true));
  }
  EXPECT_FALSE(reader.setActive(false));
  EXPECT_FALSE(reader.readSector(messages_));
}

TEST_F(BtrSessionReaderTest, isNotActiveWithoutAFile) {
  BtrSessionEntry entry;
  entry.sourcePath = folder_.file("none.btr");
  BtrSessionReader reader(entry, true);
  EXPECT_FALSE(reader.getActive());
  EXPECT_NE(reader.failure(), "");
  EXPECT_FALSE(reader.readSector(messages_));
}

TEST_F(BtrSessionReaderTest, readsACircularSessionFromItsOldestSector) {
  BtrImage image(30);
  image.session(0, {.firstSector = 10});
  addNumberedSectors(image, 10, 20, 14);
  const BtrSessionEntry entry = entryOf(image);
  ASSERT_EQ(entry.start.sector, 15U);
  ASSERT_EQ(entry.end.sector, 20U);
  BtrSessionReader reader(entry, true);
  EXPECT_EQ(identifiersOf(reader), (std::vector<std::uint32_t>{15, 16, 17, 18, 19, 20, 10, 11, 12, 13, 14}));
  EXPECT_EQ(reader.getPercentDone(), 100.0);
  EXPECT_FALSE(reader.readSector(messages_));
}

TEST_F(BtrSessionReaderTest, readsLongSessionsAcrossItsBlocks) {
  BtrImage image(400);
  image.session(0, {.firstSector = 3});
  addNumberedSectors(image, 3, 399, 200);
  BtrSessionReader reader(entryOf(image), true);
  std::vector<std::uint32_t> expected;
  for (std::uint32_t sector = 201; sector <= 399; ++sector) {
    expected.push_back(sector);
  }
  for (std::uint32_t sector = 3; sector <= 200; ++sector) {
    expected.push_back(sector);
  }
  EXPECT_EQ(identifiersOf(reader), expected);
}

TEST_F(BtrSessionReaderTest, endsAtASectorThatIsNotOneOfTheSession) {
  BtrImage image(6);
  image.session(0, {});
  addNumberedSectors(image, 1, 5, 5);
  BtrSessionEntry entry = entryOf(image);
  image.put(std::size_t{3} * 512 + 508, 0, 4);
  static_cast<void>(folder_.write("x.btr", image.bytes()));
  BtrSessionReader reader(entry, true);
  EXPECT_EQ(identifiersOf(reader), (std::vector<std::uint32_t>{1, 2}));
  EXPECT_EQ(reader.getPercentDone(), 60.0);
}

TEST_F(BtrSessionReaderTest, endsAtOnceWhenTheEndOfTheSessionIsNotKnown) {
  for (const std::uint32_t first : {1U, 5U}) {
    BtrSessionEntry entry;
    entry.sourcePath = folder_.write("x.btr", std::string(512, '\0'));
    entry.description.startLocation.sector = first;
    entry.start = entry.description.startLocation;
    BtrSessionReader reader(entry, true);
    EXPECT_TRUE(reader.getActive());
    EXPECT_FALSE(reader.readSector(messages_)) << first;
  }
}

TEST_F(BtrSessionReaderTest, raisesWhenTheFileEndsBeforeTheSession) {
  BtrImage image(6);
  image.session(0, {});
  addNumberedSectors(image, 1, 5, 5);
  const BtrSessionEntry entry = entryOf(image);
  const std::string path = folder_.write("x.btr", image.bytes().substr(0, 3 * 512 + 100));
  BtrSessionReader reader(entry, true);
  ASSERT_TRUE(reader.readSector(messages_));
  ASSERT_TRUE(reader.readSector(messages_));
  try {
    static_cast<void>(reader.readSector(messages_));
    FAIL() << "read a sector that is not there";
  } catch (const ConverterGenericException& failure) {
    EXPECT_EQ(failure.what(), path + ": ends before sector 3 does");
  }
}

TEST_F(BtrSessionReaderTest, passesOverUnusedSlots) {
  const std::vector<SessionMessage> messages = messagesOf({{
      {.id = 0xFFFFFFFF},                            // unused
      {.id = 0x20000000},                            // no identifier
      {.id = 0x80000000, .flags = 0x10},             // neither
      {.id = 0xFFFFFFFF, .flags = 0x02},             // neither
      {.id = 0xFFFFFFFF, .flags = 0x10, .bus = 15},  // the logger's own
      {.id = 0xFFFFFFFF, .bus = 15},                 // the same
      {.id = 0xFFFFFFFF, .flags = 0x10, .bus = 2},   // a status frame
      {.id = 0x1FFFFFFF},                            // a frame after all of them
  }});
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0].getIdentifier(), 0xFFFFFFFFU);
  EXPECT_EQ(messages[0].entry.getSource(), 2);
  EXPECT_TRUE(messages[0].getValid());
  EXPECT_EQ(messages[1].getIdentifier(), 0x1FFFFFFFU);
}

TEST_F(BtrSessionReaderTest, countsAWrapOfTheTimeStampsForItsBusAlone) {
  EXPECT_EQ(timesOf({onBus(0, 0xFFFFFFF0), onBus(1, 0xFFFFFFF1), onBus(0, 0x10), onBus(1, 0xFFFFFFF2), onBus(0, 0x11)}),
            (std::vector<double>{4294967.280, 4294967.281, 4294967.312, 4294967.282, 4294967.313}));
}

TEST_F(BtrSessionReaderTest, countsFromTheStartingValueOfTheSession) {
  constexpr std::uint64_t kStart = 0x5'0000'1000;
  EXPECT_EQ(timesOf({onBus(3, 0x1000), onBus(3, 0x0FFF), onBus(4, 0x0FFF)}, kStart),
            (std::vector<double>{0x5'0000'1000 / 1000.0, 0x6'0000'0FFF / 1000.0, 0x6'0000'0FFF / 1000.0}));
  EXPECT_EQ(timesOf({onBus(3, 0)}, 0xFFFFFFFF'00000000), (std::vector<double>{0xFFFFFFFF'00000000 / 1000.0}));
}

TEST_F(BtrSessionReaderTest, takesASilentBusAlongWithTheLoggersClock) {
  // Bus 0 speaks, then is silent for an hour while the logger ticks; its next stamp is taken from ten minutes before.
  EXPECT_EQ(timesOf({onBus(0, kMinute), btrTick(61 * kMinute), onBus(0, 61 * kMinute + 1)}),
            (std::vector<double>{kMinute / 1000.0, (61.0 * kMinute + 1) / 1000}));
  // Without that the stamp of bus 0, wrapped while it was silent, would be taken for a later one without a wrap.
  EXPECT_EQ(timesOf({onBus(0, kMinute), btrTick(40 * kMinute), btrTick(70 * kMinute), btrTick(3 * kMinute),
                     onBus(0, 4 * kMinute)}),
            (std::vector<double>{kMinute / 1000.0, (0x1'0000'0000 + 4.0 * kMinute) / 1000}));
}

TEST_F(BtrSessionReaderTest, leavesABusAloneThatWasSilentForLessThanHalfAnHour) {
  // A stamp that lies before the last one is a wrap; only a bus that was raised would see one at 21 minutes.
  const auto timeAfterTick = [this](std::uint32_t tick) {
    return timesOf({onBus(0, 0), btrTick(tick), onBus(0, 1)}).back();
  };
  EXPECT_EQ(timeAfterTick(30 * kMinute - 1), 0.001);
  EXPECT_EQ(timeAfterTick(30 * kMinute), (0x1'0000'0001) / 1000.0);
}

TEST_F(BtrSessionReaderTest, neverSetsABusBackToTheLoggersClock) {
  EXPECT_EQ(timesOf({onBus(0, 50 * kMinute), btrTick(kMinute), onBus(0, 51 * kMinute)}),
            (std::vector<double>{50.0 * kMinute / 1000, 51.0 * kMinute / 1000}));
}

TEST_F(BtrSessionReaderTest, keepsItsClocksFromSectorToSector) {
  const std::vector<SessionMessage> messages =
      messagesOf({{onBus(0, 0xFFFFFFF0)}, {btrTick(0xFFFFFFFF)}, {onBus(0, 0x10), btrTick(0)}, {onBus(0, 0x11)}});
  ASSERT_EQ(messages.size(), 3U);
  EXPECT_EQ(messages[2].time, RealMilliseconds(0x1'0000'0011 / 1000.0));
}

TEST_F(BtrSessionReaderTest, raisesAtAFrameOfTheLoggerThatIsNoTick) {
  BtrImage image(3);
  image.session(0, {});
  image.sector(1, {}, {onBus(0, 1), onBus(1, 2), {.id = 0x1ABCDEF, .bus = 15}, onBus(2, 3)});
  image.sector(2, {}, {onBus(3, 4)});
  BtrSessionReader reader(entryOf(image), true);
  try {
    static_cast<void>(reader.readSector(messages_));
    FAIL() << "took the frame";
  } catch (const ConverterGenericException& failure) {
    EXPECT_STREQ(failure.what(), "Unexpected frame received. Type: 15, ID: 0x1ABCDEF");
    EXPECT_EQ(failure.kind(), FailureKind::Generic);
  }
  EXPECT_EQ(messages_.size(), 2U) << "what stood in front of it";
  ASSERT_TRUE(reader.readSector(messages_));
  EXPECT_EQ(messages_.at(0).time, RealMilliseconds(0.004));
}

TEST_F(BtrSessionReaderTest, raisesAtABusThatTheLoggerDoesNotHave) {
  for (std::uint8_t bus = 5; bus < 15; ++bus) {
    EXPECT_THROW(static_cast<void>(messagesOf({{onBus(bus, 1)}})), ConverterGenericException) << int{bus};
  }
  EXPECT_EQ(messagesOf({{onBus(4, 1)}}).size(), 1U);
}

TEST(SessionMessages, areValidByIdentifierFlagAndBus) {
  const struct {
    BtrSlot slot;
    bool valid;
  } cases[] = {
      {{.id = 0}, true},
      {{.id = 0x1FFFFFFF}, true},
      {{.id = 0x20000000, .flags = 0x10}, false},
      {{.id = 0xFFFFFFFE, .flags = 0x10}, false},
      {{.id = 0xFFFFFFFF}, false},
      {{.id = 0xFFFFFFFF, .flags = 0x10}, true},
      {{.id = 0xFFFFFFFF, .flags = 0x10, .bus = 2}, true},
      {{.id = 0xFFFFFFFF, .flags = 0x10, .bus = 15}, false},
      {{.id = 0x1FFFFFFF, .bus = 15}, true},
  };
  for (const auto& test : cases) {
    MsgEntry entry;
    entry.id = test.slot.id;
    entry.flags = test.slot.flags;
    entry.source = static_cast<std::uint8_t>(test.slot.bus << 4U);
    EXPECT_EQ(SessionMessage(entry, {}).getValid(), test.valid) << std::hex << test.slot.id;
  }
}

TEST(SessionMessages, haveTheSizeThatCallersAreTold) {
  static_assert(sizeof(SessionMessage) == 40);
}

}  // namespace
}  // namespace xlatr
