#include "formats/blf/blf_shared_block.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>

#include "support/blf_stand_in.hpp"
#include "util/host.hpp"
#include "util/paths.hpp"

namespace xlatr {
namespace {

// A name that nobody else uses.
std::string freshName() {
  std::string path;
  EXPECT_TRUE(makeUniqueFilePath("", "BLF", "CSV", path));
  return getFileStem(path);
}

// The four bytes as the converter sees them.
class OtherSide {
 public:
  explicit OtherSide(const std::string& name) { EXPECT_TRUE(memory_.open(name, 4)); }

  void setProgress(std::uint16_t value) { std::memcpy(memory_.bytes().data(), &value, sizeof value); }
  [[nodiscard]] std::uint16_t stopRequest() const {
    std::uint16_t value = 0;
    std::memcpy(&value, memory_.bytes().data() + 2, sizeof value);
    return value;
  }

 private:
  platform::SharedMemory memory_;
};

TEST(BlfSharedBlock, carriesProgressAndTheRequestToStop) {
  const std::string name = freshName();
  BlfSharedBlock block(name);
  ASSERT_TRUE(block.isOpen());
  EXPECT_EQ(block.readProgress(), 0);
  OtherSide converter(name);
  converter.setProgress(1234);
  EXPECT_EQ(block.readProgress(), 1234);
  EXPECT_EQ(converter.stopRequest(), 0);
  EXPECT_TRUE(block.requestStop());
  EXPECT_EQ(converter.stopRequest(), 1);
  EXPECT_EQ(block.readProgress(), 1234);
}

TEST(BlfSharedBlock, attachesToWhatTheConverterMade) {
  const std::string name = freshName();
  OtherSide converter(name);
  converter.setProgress(77);
  BlfSharedBlock block(name);
  EXPECT_EQ(block.readProgress(), 77);
}

TEST(BlfSharedBlock, takesItsNamesAway) {
  const std::string name = freshName();
  {
    const BlfSharedBlock block(name);
    EXPECT_EQ(test::countSharedNames(name), 2U);
  }
  EXPECT_EQ(test::countSharedNames(name), 0U);
}

TEST(BlfSharedBlock, isNotOpenUnderAnInvalidName) {
  const BlfSharedBlock block("no/such/name");
  EXPECT_FALSE(block.isOpen());
}

TEST(BlfSharedBlock, givesUpOnALockThatIsNotGivenBack) {
  const std::string name = freshName();
  BlfSharedBlock block(name);
  platform::NamedMutex dead;
  ASSERT_TRUE(dead.open(name + "_MUTEX"));
  ASSERT_TRUE(dead.lock(std::chrono::milliseconds(0)));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(block.requestStop());
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(4900));
  EXPECT_LT(waited, std::chrono::seconds(30));
  dead.unlock();
  EXPECT_TRUE(block.requestStop());
}

TEST(BlfSharedBlock, keepsTheOldProgressWhenTheLockIsNotToBeHad) {
  const std::string name = freshName();
  BlfSharedBlock block(name);
  platform::NamedMutex dead;
  ASSERT_TRUE(dead.open(name + "_MUTEX"));
  ASSERT_TRUE(dead.lock(std::chrono::milliseconds(0)));
  EXPECT_EQ(block.readProgress(), std::nullopt);
}

// As if made long ago.
void age(const std::string& name) {
  std::filesystem::last_write_time("/dev/shm/" + name,
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
}

TEST(BlfSharedBlock, removesOnlyForgottenBlocks) {
  const std::string inUse = freshName();
  const std::string young = freshName();
  const std::string forgotten = freshName();
  const std::string other = freshName() + "x";
  const OtherSide user(inUse);
  for (const std::string& name : {young, forgotten, other}) {
    const OtherSide ended(name);
  }
  for (const std::string& name : {inUse, forgotten, other}) {
    age(name);
  }
  BlfSharedBlock::removeForgotten();
  EXPECT_EQ(test::countSharedNames(inUse), 1U);
  EXPECT_EQ(test::countSharedNames(young), 1U);
  EXPECT_EQ(test::countSharedNames(forgotten), 0U);
  EXPECT_EQ(test::countSharedNames(other), 1U) << "none of ours";
  for (const std::string& name : {inUse, young, other}) {
    BlfSharedBlock::removeNames(name);
  }
}

}  // namespace
}  // namespace xlatr
