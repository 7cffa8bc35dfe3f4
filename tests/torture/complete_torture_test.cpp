// Whole jobs on the complete way while the system refuses what it is asked for.
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <utility>

#include "frames/frame_job.hpp"
#include "support/frame_targets.hpp"
#include "support/temp_folder.hpp"
#include "torture/torture_cases.hpp"

namespace xlatr::test {
namespace {

Outcome runOnce(const TraceToRead& source, const FrameTarget& target, const TempFolder& folder) {
  Outcome outcome;
  try {
    JobReport report;
    runJob({.sources = {{source.path, source.format->format}},
            .target = folder.file("out" + std::string(target.format->extension)),
            .writing = {.replaces = true, .sink = target.settings()}},
           report);
    outcome.succeeded = true;
  } catch (const std::exception& failure) {
    outcome.text = failure.what();
  }
  return outcome;
}

Attempt attemptOf(const TraceToRead& source, const FrameTarget& target) {
  return [&](const TempFolder& folder) { return runOnce(source, target, folder); };
}

void forEachPair(const std::function<void(const std::string& name, const TraceToRead&, const FrameTarget&)>& action) {
  const TempFolder sources;
  for (const TraceToRead& source : smallTraces(sources)) {
    for (const FrameTarget& target : frameTargets()) {
      if (!isThorough() && target.capacity != &target.format->frameCapacities().back()) {
        continue;
      }
      action(std::string(source.format->shortName) + " to " + target.name(), source, target);
    }
  }
}

TEST(CompleteTorture, noFailureToReadLooksLikeTheEndOfASource) {
  forEachPair([](const std::string& name, const TraceToRead& source, const FrameTarget& target) {
    torture(name, readFaults(source.path), attemptOf(source, target), Promise::Safe);
  });
}

TEST(CompleteTorture, noFailureToWriteLooksLikeAWholeTarget) {
  forEachPair([](const std::string& name, const TraceToRead& source, const FrameTarget& target) {
    torture(name, writeFaults(), attemptOf(source, target), Promise::Safe);
  });
}

TEST(CompleteTorture, lackOfMemoryLooksLikeNoSuccess) {
  forEachPair([](const std::string& name, const TraceToRead& source, const FrameTarget& target) {
    torture(name, memoryFaults(), attemptOf(source, target), Promise::Safe);
  });
}

}  // namespace
}  // namespace xlatr::test
