#include <gtest/gtest.h>

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "conversions.hpp"
#include "support/no_threads.hpp"

namespace xlatr::cli {
namespace {

// How often each number was worked at.
std::vector<int> timesOf(std::size_t count, std::size_t threads) {
  std::vector<std::atomic<int>> times(count);
  inParallel(count, threads, [&](std::size_t at) { ++times[at]; });
  return {times.begin(), times.end()};
}

TEST(InParallel, doesEachNumberOnce) {
  EXPECT_EQ(timesOf(100, 1), std::vector<int>(100, 1));
  EXPECT_EQ(timesOf(100, 8), std::vector<int>(100, 1));
  EXPECT_EQ(timesOf(0, 3), std::vector<int>());
}

TEST(InParallel, doesEachNumberWhereNoThreadCanBeStarted) {
  const test::NoThreads shortage;
  EXPECT_EQ(timesOf(20, 8), std::vector<int>(20, 1));
}

TEST(InParallel, letsTheFailureOfAnyThreadOut) {
  for (const std::size_t threads : {std::size_t{1}, std::size_t{4}}) {
    std::atomic<std::size_t> done = 0;
    std::string failure;
    try {
      inParallel(100'000, threads, [&](std::size_t at) {
        if (at == 3) {
          throw std::runtime_error("the third");
        }
        ++done;
      });
    } catch (const std::runtime_error& raised) {
      failure = raised.what();
    }
    EXPECT_EQ(failure, "the third");
    EXPECT_LT(done, 100'000U);
  }
}

}  // namespace
}  // namespace xlatr::cli
