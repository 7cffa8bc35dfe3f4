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

TEST(ConversionThreads, convertHundredsOfFilesAtOnce) {
  constexpr int kConversions = 300;
  const TempFolder folder;
  const std::string source = folder.write("source.trc", traceOf(2000));
  Options options;
  options.version(2.1);
  options.asynchronous = true;
  std::deque<Result> results(kConversions);
  std::vector<std::uint64_t> ids;
  for (int index = 0; index < kConversions; ++index) {
    ConversionProgress progress{};
    const std::string target = folder.file("out" + std::to_string(index) + ".trc");
    ASSERT_EQ(options.convert(source.c_str(), target.c_str(), &results[static_cast<std::size_t>(index)], &progress),
              XLATR_SUCCESS);
    ids.push_back(progress.id);
  }
  for (const std::uint64_t id : ids) {
    waitForEnd(id);
  }
  const std::string expected = folder.read("out0.trc");
  const std::size_t behindPath = expected.find(";   Start time");
  for (int index = 0; index < kConversions; ++index) {
    const Result& result = results[static_cast<std::size_t>(index)];
    EXPECT_EQ(result.status(), XLATR_SUCCESS) << result.text();
    const std::string written = folder.read("out" + std::to_string(index) + ".trc");
    EXPECT_TRUE(written.substr(written.find(";   Start time")) == expected.substr(behindPath)) << index;
  }
}

TEST(ConversionThreads, tellSeveralCallersHowFarTheyAre) {
  constexpr int kConversions = 8;
  const TempFolder folder;
  const std::string source = folder.write("source.trc", traceOf(50000));
  Options options;
  options.version(2.0);
  options.asynchronous = true;
  std::deque<Result> results(kConversions);
  std::vector<std::uint64_t> ids;
  for (int index = 0; index < kConversions; ++index) {
    ConversionProgress progress{};
    const std::string target = folder.file("out" + std::to_string(index) + ".trc");
    ASSERT_EQ(options.convert(source.c_str(), target.c_str(), &results[static_cast<std::size_t>(index)], &progress),
              XLATR_SUCCESS);
    ids.push_back(progress.id);
  }
  std::vector<std::thread> callers;
  std::atomic<int> endsSeen = 0;
  for (int caller = 0; caller < 4; ++caller) {
    callers.emplace_back([&ids, &endsSeen] {
      for (const std::uint64_t id : ids) {
        waitForEnd(id);
        ++endsSeen;
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(endsSeen, 4 * kConversions);
  for (const Result& result : results) {
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
