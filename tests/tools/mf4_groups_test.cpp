#include "mf4_groups.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/mf4_samples.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::cli {
namespace {

// Offsets in the sample.
constexpr std::size_t kHeaderFirstGroup = 64 + 24;
constexpr std::size_t kDataGroup = 424;
constexpr std::size_t kFirstChannelGroup = 488;
constexpr std::size_t kSecondChannelGroup = 592;
constexpr std::size_t kLinks = 24;

void put(std::string& file, std::size_t offset, std::uint64_t value) {
  for (std::size_t index = 0; index < 8; ++index) {
    file[offset + index] = static_cast<char>(value >> (8 * index) & 0xFF);
  }
}

Mf4Groups groupsOf(const std::string& content) {
  const test::TempFolder folder;
  return readMf4Groups(folder.write("x.mf4", content));
}

std::size_t channelGroupCount(const Mf4Groups& groups) {
  std::size_t count = 0;
  for (const Mf4DataGroup& group : groups.dataGroups) {
    count += group.channelGroups.size();
  }
  return count;
}

TEST(Mf4Groups, holdNamesAndCycleCounts) {
  const Mf4Groups groups = groupsOf(test::mf4Sample());
  EXPECT_TRUE(groups.complete);
  ASSERT_EQ(groups.dataGroups.size(), 1U);
  ASSERT_EQ(groups.dataGroups[0].channelGroups.size(), 3U);
  EXPECT_EQ(groups.dataGroups[0].channelGroups[0].name, "CAN_DataFrame");
  EXPECT_EQ(groups.dataGroups[0].channelGroups[0].cycleCount, 2U);
  EXPECT_EQ(groups.dataGroups[0].channelGroups[2].name, "CAN_ErrorFrame");
}

TEST(Mf4Groups, endWhereLinksAreBroken) {
  struct Case {
    const char* name;
    std::size_t offset;
    std::uint64_t value;
    bool complete;
    std::size_t dataGroups;
    std::size_t channelGroups;
  };
  const Case cases[] = {
      {"no data group", kHeaderFirstGroup, 0, true, 0, 0},
      {"first data group beyond the end", kHeaderFirstGroup, 1U << 30U, false, 0, 0},
      {"first data group nowhere", kHeaderFirstGroup, ~std::uint64_t{0}, false, 0, 0},
      {"first data group at the end", kHeaderFirstGroup, 8220, false, 0, 0},
      {"first data group is none", kHeaderFirstGroup, kFirstChannelGroup, false, 0, 0},
      {"data group leads to itself", kDataGroup + kLinks, kDataGroup, false, 1, 3},
      {"no channel group", kDataGroup + kLinks + 8, 0, true, 1, 0},
      {"channel groups form a ring", kSecondChannelGroup + kLinks, kFirstChannelGroup, false, 1, 2},
      {"more links than bytes", kFirstChannelGroup + 16, ~std::uint64_t{0}, false, 1, 0},
      {"length below the head", kFirstChannelGroup + 8, 23, false, 1, 0},
      {"no room for the cycle count", kFirstChannelGroup + 8, 80, false, 1, 0},
      {"name nowhere", kFirstChannelGroup + kLinks + 16, 1U << 30U, true, 1, 3},
      {"fewer links", kSecondChannelGroup + 16, 0, true, 1, 2},
      {"header longer than the file", 64 + 8, ~std::uint64_t{0}, true, 1, 3},
  };
  for (const Case& item : cases) {
    std::string file = test::mf4Sample();
    put(file, item.offset, item.value);
    const Mf4Groups groups = groupsOf(file);
    EXPECT_EQ(groups.complete, item.complete) << item.name;
    EXPECT_EQ(groups.dataGroups.size(), item.dataGroups) << item.name;
    EXPECT_EQ(channelGroupCount(groups), item.channelGroups) << item.name;
  }
}

TEST(Mf4Groups, readAFileThatEndsAnywhere) {
  const std::string file = test::mf4Sample();
  for (std::size_t size = 0; size < 800; ++size) {
    EXPECT_LE(channelGroupCount(groupsOf(file.substr(0, size))), 3U) << size;
  }
  EXPECT_EQ(channelGroupCount(groupsOf(file.substr(0, 800))), 3U);
  EXPECT_TRUE(groupsOf("").complete);
  EXPECT_TRUE(readMf4Groups("/no/such/file.mf4").dataGroups.empty());
}

TEST(Mf4Groups, areCutOffAtALimit) {
  // A chain of data groups, each 64 bytes after the one before.
  std::string file = test::mf4Sample();
  const std::string group = file.substr(kDataGroup, 64);
  std::size_t end = file.size();
  file.append((8 - end % 8) % 8, '\0');
  end = file.size();
  put(file, kHeaderFirstGroup, end);
  for (std::size_t count = 0; count < 3 * kMaxMf4Groups; ++count) {
    std::string next = group;
    put(next, kLinks, file.size() + 64);
    put(next, kLinks + 8, 0);
    file += next;
  }
  const Mf4Groups groups = groupsOf(file);
  EXPECT_FALSE(groups.complete);
  EXPECT_EQ(groups.dataGroups.size(), kMaxMf4Groups);
}

}  // namespace
}  // namespace xlatr::cli
