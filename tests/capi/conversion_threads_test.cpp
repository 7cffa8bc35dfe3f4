// Many conversions and many callers at once. Run under ThreadSanitizer, these tests show that the locks are in place.
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "support/conversion.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/xlatr.h"

namespace xlatr::test {
namespace {

std::string traceOf(int lines) {
  std::string trace = ";$FILEVERSION=1.2\n";
  for (int line = 0; line < lines; ++line) {
    trace += "1) 10.5 " + std::to_string(line % 4 + 1) + " Rx 0123 1 AA\n";
  }
  return trace;
}

// Conversions of one source to out0.trc, out1.trc and so on, all running.
struct RunningConversions {
  RunningConversions(const TempFolder& folder, int lines, double version, std::size_t count) : results(count) {
    const std::string source = folder.write("source.trc", traceOf(lines));
    Options options;
    options.version(version);
    options.asynchronous = true;
    for (std::size_t index = 0; index < count; ++index) {
      ConversionProgress progress{};
      const std::string target = folder.file("out" + std::to_string(index) + ".trc");
      EXPECT_EQ(options.convert(source.c_str(), target.c_str(), &results[index], &progress), XLATR_SUCCESS);
      ids.push_back(progress.id);
    }
  }

  std::deque<Result> results;
  std::vector<std::uint64_t> ids;
};

TEST(ConversionThreads, convertHundredsOfFilesAtOnce) {
  const TempFolder folder;
  RunningConversions running(folder, 2000, 2.1, 300);
  for (const std::uint64_t id : running.ids) {
    waitForEnd(id);
  }
  // Everything is the same except the line that names the target.
  const auto contentOf = [&folder](std::size_t index) {
    const std::string written = folder.read("out" + std::to_string(index) + ".trc");
    return written.substr(written.find(";   Start time"));
  };
  const std::string expected = contentOf(0);
  for (std::size_t index = 0; index < running.results.size(); ++index) {
    EXPECT_EQ(running.results[index].status(), XLATR_SUCCESS) << running.results[index].text();
    EXPECT_TRUE(contentOf(index) == expected) << index;
  }
}

TEST(ConversionThreads, tellSeveralCallersHowFarTheyAre) {
  const TempFolder folder;
  RunningConversions running(folder, 50000, 2.0, 8);
  std::vector<std::thread> callers;
  std::atomic<std::size_t> endsSeen = 0;
  for (int caller = 0; caller < 4; ++caller) {
    callers.emplace_back([&running, &endsSeen] {
      for (const std::uint64_t id : running.ids) {
        waitForEnd(id);
        ++endsSeen;
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(endsSeen, 4 * running.ids.size());
  for (const Result& result : running.results) {
    EXPECT_TRUE(result.finished());
    EXPECT_EQ(result.files().size(), 4U);
  }
}

TEST(ConversionThreads, convertSynchronouslyFromSeveralThreads) {
  const TempFolder folder;
  const std::string source = folder.write("source.trc", traceOf(1000));
  std::vector<std::thread> callers;
  for (int caller = 0; caller < 4; ++caller) {
    callers.emplace_back([&folder, &source, caller] {
      for (int round = 0; round < 10; ++round) {
        Result result;
        const std::string target = folder.file("out" + std::to_string(caller) + ".trc");
        EXPECT_EQ(Options().convert(source, target, result), XLATR_SUCCESS) << result.text();
        EXPECT_EQ(result.files().size(), 1U);
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
}

TEST(ConversionThreads, startAgainAfterTheRegistryWasIdle) {
  const TempFolder folder;
  const std::string source = folder.write("source.trc", traceOf(10));
  for (int round = 0; round < 100; ++round) {
    Options options;
    options.asynchronous = true;
    Result result;
    ConversionProgress progress{};
    ASSERT_EQ(options.convert(source.c_str(), folder.file("x.trc").c_str(), &result, &progress), XLATR_SUCCESS);
    waitForEnd(progress.id);
    EXPECT_EQ(result.status(), XLATR_SUCCESS);
  }
}

}  // namespace
}  // namespace xlatr::test
