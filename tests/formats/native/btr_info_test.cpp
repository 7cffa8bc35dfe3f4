#include "formats/native/btr_info.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/btr_image.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::BtrSession;

// A date of its own for each session of a file.
BtrDate dateOf(std::size_t session) {
  return {.hour = static_cast<std::uint8_t>(session / 60 % 24), .minute = static_cast<std::uint8_t>(session % 60)};
}

class BtrInfoTest : public testing::Test {
 protected:
  [[nodiscard]] BtrInfo infoOf(std::string_view bytes, std::string_view name = "x.btr") const {
    return BtrInfo(TraceFileInfo(folder_.write(name, bytes)));
  }

  test::TempFolder folder_;
};

// A file of one session, in the sectors from 1 to `last`.
BtrImage oneSession(std::size_t sectors, std::size_t last) {
  BtrImage image(sectors);
  image.session(0, {});
  for (std::size_t sector = 1; sector <= last; ++sector) {
    image.sector(sector, {});
  }
  return image;
}

TEST_F(BtrInfoTest, readsOneSession) {
  const BtrInfo info = infoOf(oneSession(4, 3).bytes());
  EXPECT_TRUE(info.getValid());
  EXPECT_EQ(info.getVersion(), 3.0);
  EXPECT_EQ(info.getVersionText(), "3.0");
  EXPECT_EQ(info.getHeaderLength(), 512U);
  EXPECT_DOUBLE_EQ(info.getStartTime(), 45352.0 + 29730.25 / 86400);
  EXPECT_FALSE(info.startTimeReplaced());
  ASSERT_EQ(info.getSessionsCount(), 1U);
  const BtrSessionEntry& entry = info.GetSession(0);
  EXPECT_EQ(entry.index, 1U);
  EXPECT_EQ(entry.sourcePath, folder_.file("x.btr"));
  EXPECT_EQ(entry.start, entry.description.startLocation);
  EXPECT_EQ(entry.end, (SessionLocation{3, 0xFF, {}}));
  EXPECT_FALSE(entry.isCircular());
  EXPECT_EQ(entry.sectorsCount(), 3U);
}

TEST_F(BtrInfoTest, readsNothingOfAFileOfAnotherName) {
  const BtrInfo info = infoOf(oneSession(4, 3).bytes(), "x.trc");
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getSessionsCount(), 0U);
}

TEST_F(BtrInfoTest, isValidInTheVersionsThatLoggersWrite) {
  for (const int version : {0, 1, 2, 3, 4, 255}) {
    BtrImage image(2);
    image.session(0, {.version = static_cast<std::uint8_t>(version)}).sector(1, {});
    const BtrInfo info = infoOf(image.bytes());
    EXPECT_EQ(info.getValid(), version >= 1 && version <= 3) << version;
    EXPECT_EQ(info.getVersion(), version);
    EXPECT_EQ(info.getSessionsCount(), 1U) << version;
  }
}

TEST_F(BtrInfoTest, isNotValidWithoutASession) {
  const BtrInfo info = infoOf(std::string(1024, '\0'));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getVersion(), 0.0);
  EXPECT_EQ(info.getStartTime(), 0.0);
}

TEST_F(BtrInfoTest, isNotValidWhenItsDirectoryEndsEarly) {
  const std::string bytes = oneSession(4, 3).bytes();
  for (const std::size_t length : {0U, 1U, 32U, 511U}) {
    const BtrInfo info = infoOf(bytes.substr(0, length));
    EXPECT_FALSE(info.getValid()) << length;
    EXPECT_EQ(info.getSessionsCount(), 0U) << length;
  }
}

TEST_F(BtrInfoTest, keepsEndSector0WhenTheFileEndsBeforeTheFirstDataSector) {
  for (const std::size_t length : {512U, 513U, 1023U}) {
    const BtrInfo info = infoOf(oneSession(4, 3).bytes().substr(0, length));
    EXPECT_TRUE(info.getValid()) << length;
    ASSERT_EQ(info.getSessionsCount(), 1U);
    EXPECT_EQ(info.GetSession(0).end, SessionLocation()) << length;
    EXPECT_FALSE(info.GetSession(0).isCircular()) << length;
  }
}

TEST_F(BtrInfoTest, endsASessionWithoutAStampInItsFirstSectorAtOnce) {
  BtrImage image = oneSession(10, 9);
  image.put(512, 0, 4);
  const BtrInfo info = infoOf(image.bytes());
  EXPECT_EQ(info.GetSession(0).end, (SessionLocation{1, 0xFF, {}}));
  EXPECT_FALSE(info.GetSession(0).isCircular());
}

TEST_F(BtrInfoTest, findsTheEndOfTheLastSessionWhereverItIs) {
  for (std::size_t sectors = 2; sectors <= 40; ++sectors) {
    for (std::size_t last = 1; last < sectors; ++last) {
      const BtrInfo info = infoOf(oneSession(sectors, last).bytes());
      ASSERT_EQ(info.GetSession(0).end.sector, last) << sectors;
    }
  }
}

TEST_F(BtrInfoTest, countsOnlyWholeSectors) {
  const std::string bytes = oneSession(9, 8).bytes();
  EXPECT_EQ(infoOf(bytes.substr(0, 9 * 512 - 1)).GetSession(0).end.sector, 7U);
  EXPECT_EQ(infoOf(bytes + "x").GetSession(0).end.sector, 8U);
}

TEST_F(BtrInfoTest, tellsSessionsOfTheSameTimeApartByTheirDate) {
  // A sector's check and time fit another day's session; only its date does not.
  BtrImage image = oneSession(9, 8);
  for (const std::size_t sector : {6U, 7U, 8U}) {
    image.sector(sector, {.day = 2});
  }
  EXPECT_EQ(infoOf(image.bytes()).GetSession(0).end.sector, 5U);
}

TEST_F(BtrInfoTest, findsTheEndOfASessionWhoseDateIsNone) {
  const BtrDate none{.month = 13, .dayOfWeek = 0xFF};
  BtrImage image(9);
  image.session(0, {.date = none});
  for (const std::size_t sector : {1U, 2U, 3U, 4U}) {
    image.sector(sector, none);
  }
  const BtrInfo info = infoOf(image.bytes());
  EXPECT_EQ(info.GetSession(0).end.sector, 4U);
  EXPECT_TRUE(info.startTimeReplaced());
  EXPECT_LT(std::abs(info.getStartTime() - DateTime::now().toOleDate()), 1.0 / 24);
}

TEST_F(BtrInfoTest, findsTheOldestSectorOfACircularSession) {
  for (std::size_t last = 1; last <= 20; ++last) {
    for (std::size_t newest = 1; newest <= last; ++newest) {
      BtrImage image(23);
      image.session(0, {});
      for (std::size_t sector = 1; sector <= last; ++sector) {
        image.sector(sector, {}, {}, sector <= newest ? 9 : 8);
      }
      const BtrInfo info = infoOf(image.bytes());
      const BtrSessionEntry& entry = info.GetSession(0);
      ASSERT_EQ(entry.end.sector, last) << newest;
      EXPECT_EQ(entry.isCircular(), newest != last) << newest << " of " << last;
      EXPECT_EQ(entry.start, newest == last ? entry.description.startLocation
                                            : (SessionLocation{static_cast<std::uint32_t>(newest + 1), 0xFF, {}}));
      EXPECT_EQ(entry.sectorsCount(), last);
    }
  }
}

TEST_F(BtrInfoTest, readsASessionFromItsFirstSectorWhenItsOldestCannotBeFound) {
  // Of the first session, sectors 1 to 8, the search looks at 1, 5 and so on.
  for (const std::size_t damaged : {1U, 5U}) {
    BtrImage image(12);
    image.session(0, {.date = dateOf(0)}).session(1, {.firstSector = 9, .date = dateOf(1)});
    for (std::size_t sector = 1; sector <= 8; ++sector) {
      image.sector(sector, dateOf(0), {}, sector <= 3 ? 2 : 1);
    }
    image.sector(9, dateOf(1), {}, 2).sector(10, dateOf(1), {}, 1);
    ASSERT_EQ(infoOf(image.bytes()).GetSession(0).start.sector, 4U);
    image.put(damaged * 512 + 508, 0, 4);
    const BtrInfo info = infoOf(image.bytes());
    ASSERT_EQ(info.getSessionsCount(), 2U);
    EXPECT_FALSE(info.GetSession(0).isCircular()) << damaged;
    EXPECT_EQ(info.GetSession(0).end.sector, 8U) << damaged;
    EXPECT_EQ(info.GetSession(1).start.sector, 10U) << damaged;
    EXPECT_TRUE(info.getValid()) << damaged;
  }
}

TEST_F(BtrInfoTest, endsASessionThatWasCutShortWhereTheNextOneBegins) {
  BtrImage image(12);
  image.session(0, {.firstSector = 1, .date = dateOf(0)}).session(1, {.firstSector = 6, .date = dateOf(1)});
  image.sector(1, dateOf(0)).sector(2, dateOf(0)).sector(6, dateOf(1)).sector(7, dateOf(1));
  const BtrInfo info = infoOf(image.bytes());
  ASSERT_EQ(info.getSessionsCount(), 2U);
  EXPECT_EQ(info.GetSession(0).end, (SessionLocation{5, 0xFF, {}}));
  EXPECT_EQ(info.GetSession(1).end, (SessionLocation{7, 0xFF, {}}));
  EXPECT_EQ(info.GetSession(1).index, 2U);
}

TEST_F(BtrInfoTest, passesOverFreeSlots) {
  BtrImage image(12);
  image.session(3, {.firstSector = 2, .date = dateOf(0), .version = 2});
  image.session(9, {.firstSector = 5, .date = dateOf(1)});
  image.sector(2, dateOf(0)).sector(5, dateOf(1));
  const BtrInfo info = infoOf(image.bytes());
  ASSERT_EQ(info.getSessionsCount(), 2U);
  EXPECT_EQ(info.GetSession(0).index, 1U);
  EXPECT_EQ(info.GetSession(0).end.sector, 4U);
  EXPECT_EQ(info.GetSession(1).index, 2U);
  EXPECT_EQ(info.getVersion(), 2.0);
  EXPECT_EQ(info.getHeaderLength(), 1024U);
}

// 16 sessions of two sectors each after each directory, which come one after the other.
BtrImage linkedDirectories(std::size_t directories, std::uint8_t version = 3) {
  constexpr std::size_t kStride = 33;
  BtrImage image(directories * kStride);
  for (std::size_t directory = 0; directory < directories; ++directory) {
    const auto base = static_cast<std::uint32_t>(directory * kStride);
    for (std::uint32_t slot = 0; slot < 16; ++slot) {
      const BtrDate date = dateOf(directory * 16 + slot);
      const bool linked = slot == 15 && directory + 1 < directories;
      image.session(slot,
                    {.firstSector = base + 1 + 2 * slot,
                     .date = date,
                     .version = version,
                     .continued = linked ? std::uint8_t{1} : std::uint8_t{0},
                     .nextDirectory = linked ? static_cast<std::uint32_t>(base + kStride) : 0},
                    base);
      image.sector(base + 1 + 2 * slot, date, {}, 2).sector(base + 2 + 2 * slot, date, {}, 1);
    }
  }
  return image;
}

TEST_F(BtrInfoTest, readsOnAtALinkedDirectory) {
  const BtrInfo info = infoOf(linkedDirectories(20).bytes());
  ASSERT_EQ(info.getSessionsCount(), 320U);
  for (std::uint32_t session = 0; session < 320; ++session) {
    const BtrSessionEntry& entry = info.GetSession(session);
    const std::uint32_t first = session / 16 * 33 + 1 + 2 * (session % 16);
    ASSERT_EQ(entry.index, session + 1);
    ASSERT_EQ(entry.firstSector(), first);
    ASSERT_EQ(entry.start.sector, first + 1) << session;
    ASSERT_EQ(entry.end.sector, first + 1) << session;
  }
}

TEST_F(BtrInfoTest, ignoresALinkBelowVersion3AndOneThatIsNotMarked) {
  EXPECT_EQ(infoOf(linkedDirectories(2, 2).bytes()).getSessionsCount(), 16U);
  for (const int continued : {0, 2, 255}) {
    BtrImage image = linkedDirectories(2);
    image.put(15 * 32 + 3, static_cast<std::uint64_t>(continued), 1);
    EXPECT_EQ(infoOf(image.bytes()).getSessionsCount(), 16U) << continued;
  }
  BtrImage unlinked = linkedDirectories(2);
  unlinked.put(15 * 32 + 4, 0, 4);
  EXPECT_EQ(infoOf(unlinked.bytes()).getSessionsCount(), 16U);
}

TEST_F(BtrInfoTest, takesTheLinkOfALastSlotThatIsFree) {
  BtrImage image = linkedDirectories(2);
  image.put(15 * 32 + 24, 0, 4);
  EXPECT_EQ(infoOf(image.bytes()).getSessionsCount(), 31U);
}

TEST_F(BtrInfoTest, endsAtADirectoryThatWasReadAlready) {
  BtrImage toItself = linkedDirectories(2);
  toItself.put(33 * 512 + 15 * 32 + 3, 1, 1).put(33 * 512 + 15 * 32 + 4, 33, 4);
  EXPECT_EQ(infoOf(toItself.bytes()).getSessionsCount(), 32U);
  BtrImage around = linkedDirectories(3);
  around.put(66 * 512 + 15 * 32 + 3, 1, 1).put(66 * 512 + 15 * 32 + 4, 33, 4);
  EXPECT_EQ(infoOf(around.bytes()).getSessionsCount(), 48U);
  // The offset of a link is counted in 32 bits: this one is that of the first directory.
  BtrImage wrapped = linkedDirectories(1);
  wrapped.put(15 * 32 + 3, 1, 1).put(15 * 32 + 4, 0x800000, 4);
  EXPECT_EQ(infoOf(wrapped.bytes()).getSessionsCount(), 16U);
}

TEST_F(BtrInfoTest, countsTheOffsetOfALinkIn32Bits) {
  BtrImage image = linkedDirectories(2);
  image.put(15 * 32 + 4, 0x800000 + 33, 4);
  EXPECT_EQ(infoOf(image.bytes()).getSessionsCount(), 32U);
}

TEST_F(BtrInfoTest, isNotValidWhenALinkLeadsOutOfTheFile) {
  BtrImage image = linkedDirectories(2);
  image.put(15 * 32 + 4, 5000, 4);
  const BtrInfo info = infoOf(image.bytes());
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getSessionsCount(), 0U);
  EXPECT_EQ(info.getVersion(), 0.0);
}

TEST_F(BtrInfoTest, copesWithSessionsInAnyOrder) {
  const std::vector<std::vector<std::uint32_t>> orders = {{8, 4, 1}, {5, 5, 5},          {1, 1, 0xFFFFFFFF},
                                                          {9, 1, 9}, {0xFFFFFFFF, 3, 1}, {0x80000000, 0x7FFFFFFF, 2}};
  for (const auto& order : orders) {
    BtrImage image(12);
    for (std::size_t slot = 0; slot < order.size(); ++slot) {
      image.session(slot, {.firstSector = order[slot]});
    }
    for (std::size_t sector = 1; sector < 12; ++sector) {
      image.sector(sector, {});
    }
    EXPECT_EQ(infoOf(image.bytes()).getSessionsCount(), order.size());
  }
}

TEST_F(BtrInfoTest, hasNoSessionsWithoutAFile) {
  const BtrInfo info(TraceFileInfo(folder_.file("none.btr")));
  EXPECT_FALSE(info.getValid());
  EXPECT_EQ(info.getSessionsCount(), 0U);
}

}  // namespace
}  // namespace xlatr
