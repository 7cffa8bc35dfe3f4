#include "platform/shared_memory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>

#include "platform/thread.hpp"

namespace xlatr::platform {
namespace {

std::string nameOf(const char* test) {
  return "xlatr_test_" + std::to_string(currentThreadId()) + "_" + test;
}

TEST(SharedMemory, isZeroedAndSharedByItsName) {
  const std::string name = nameOf("shared");
  SharedMemory first;
  ASSERT_TRUE(first.open(name, 4));
  ASSERT_EQ(first.bytes().size(), 4U);
  EXPECT_EQ(first.bytes()[3], std::byte{0});
  SharedMemory second;
  ASSERT_TRUE(second.open(name, 4));
  first.bytes()[3] = std::byte{7};
  EXPECT_EQ(second.bytes()[3], std::byte{7});
  first.close();
  EXPECT_FALSE(first.isOpen());
  EXPECT_EQ(second.bytes()[3], std::byte{7});
  SharedMemory::remove(name);
}

TEST(SharedMemory, belongsToItsOwnerAlone) {
  const std::string name = nameOf("mode");
  SharedMemory memory;
  NamedMutex mutex;
  ASSERT_TRUE(memory.open(name, 4));
  ASSERT_TRUE(mutex.open(name));
  struct stat status {};
  ASSERT_EQ(::stat(("/dev/shm/" + name).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_EQ(status.st_size, 4);
  ASSERT_EQ(::stat(("/dev/shm/sem." + name).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  SharedMemory::remove(name);
  NamedMutex::remove(name);
}

TEST(SharedMemory, opensNewMemoryAfterARemoval) {
  const std::string name = nameOf("removed");
  SharedMemory first;
  ASSERT_TRUE(first.open(name, 4));
  first.bytes()[0] = std::byte{1};
  SharedMemory::remove(name);
  SharedMemory second;
  ASSERT_TRUE(second.open(name, 4));
  EXPECT_EQ(second.bytes()[0], std::byte{0});
  SharedMemory::remove(name);
  SharedMemory::remove(name);
}

TEST(SharedMemory, refusesAnInvalidName) {
  SharedMemory memory;
  EXPECT_FALSE(memory.open("a/b", 4));
  EXPECT_FALSE(memory.isOpen());
  NamedMutex mutex;
  EXPECT_FALSE(mutex.open("a/b"));
  EXPECT_FALSE(mutex.lock(std::chrono::milliseconds(0)));
}

TEST(SharedMemory, isForgottenWhenNobodyHasItOpenForLong) {
  using testing::ElementsAre;
  const std::string prefix = nameOf("forgotten");
  const std::string name = prefix + "_1";
  const auto age = [&] {
    std::filesystem::last_write_time("/dev/shm/" + name,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::minutes(2));
  };
  SharedMemory first;
  SharedMemory second;
  ASSERT_TRUE(first.open(name, 4));
  ASSERT_TRUE(second.open(name, 4));
  age();
  EXPECT_THAT(SharedMemory::forgottenNames(prefix), ElementsAre());
  first.close();
  EXPECT_THAT(SharedMemory::forgottenNames(prefix), ElementsAre());
  second.close();
  EXPECT_THAT(SharedMemory::forgottenNames(prefix), ElementsAre(name));
  EXPECT_THAT(SharedMemory::forgottenNames(prefix + "_2"), ElementsAre());
  ASSERT_TRUE(first.open(name, 8));  // touches it
  first.close();
  EXPECT_THAT(SharedMemory::forgottenNames(prefix), ElementsAre());
  SharedMemory::remove(name);
}

TEST(NamedMutex, isHeldByOneAtATime) {
  const std::string name = nameOf("mutex");
  NamedMutex first;
  NamedMutex second;
  ASSERT_TRUE(first.open(name));
  ASSERT_TRUE(second.open(name));
  EXPECT_TRUE(first.lock(std::chrono::milliseconds(0)));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(second.lock(std::chrono::milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
  first.unlock();
  EXPECT_TRUE(second.lock(std::chrono::milliseconds(0)));
  second.unlock();
  NamedMutex::remove(name);
}

}  // namespace
}  // namespace xlatr::platform
