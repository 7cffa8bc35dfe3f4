#include "util/process_wide.hpp"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace xlatr {
namespace {

std::atomic<int> living = 0;

struct Counted {
  Counted() { ++living; }
  ~Counted() { --living; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  int value = 0;
};

// What the function returns in a forked process.
template <typename Function>
int inChild(Function function) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(function());
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ProcessWide, makesItsObjectAtTheFirstCallAndEndsIt) {
  {
    ProcessWide<Counted> wide;
    EXPECT_EQ(wide.find(), nullptr);
    EXPECT_EQ(living, 0);
    Counted& object = wide.get();
    EXPECT_EQ(&wide.get(), &object);
    EXPECT_EQ(wide.find(), &object);
    EXPECT_EQ(living, 1);
  }
  EXPECT_EQ(living, 0);
  const ProcessWide<Counted> unused;
  EXPECT_EQ(living, 0);
}

TEST(ProcessWide, aForkedProcessHasAnObjectOfItsOwn) {
  ProcessWide<Counted> wide;
  wide.get().value = 5;
  EXPECT_EQ(inChild([&] {
              const bool unknown = wide.find() == nullptr;
              const bool fresh = wide.get().value == 0 && living == 2;
              return unknown && fresh ? 7 : 1;
            }),
            7);
  EXPECT_EQ(wide.get().value, 5);
}

TEST(ProcessWide, aForkedProcessLeavesTheCopyAlone) {
  std::optional<ProcessWide<Counted>> wide(std::in_place);
  wide->get().value = 5;
  EXPECT_EQ(inChild([&] {
              static_cast<void>(wide->get());
              wide.reset();
              return living == 1 ? 7 : 1;
            }),
            7);
}

TEST(ProcessWide, isMadeOnceForManyThreads) {
  ProcessWide<Counted> wide;
  std::vector<Counted*> seen(8);
  std::vector<std::thread> threads;
  for (Counted*& place : seen) {
    threads.emplace_back([&] { place = &wide.get(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(std::set<Counted*>(seen.begin(), seen.end()).size(), 1U);
  EXPECT_EQ(living, 1);
}

struct Failing {
  Failing() { throw std::runtime_error("no"); }
};

TEST(ProcessWide, letsTheFailureOfAConstructorOut) {
  ProcessWide<Failing> wide;
  EXPECT_THROW(static_cast<void>(wide.get()), std::runtime_error);
  EXPECT_EQ(wide.find(), nullptr);
}

}  // namespace
}  // namespace xlatr
