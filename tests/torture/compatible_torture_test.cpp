// Whole conversions on the compatible way while the system refuses what it is asked for.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "core/conversion_registry.hpp"
#include "io/format.hpp"
#include "support/temp_folder.hpp"
#include "torture/torture_cases.hpp"
#include "xlatr/xlatr.h"

namespace xlatr::test {
namespace {

// A target of a source.
struct Target {
  TraceFormat format;
  double version;

  [[nodiscard]] std::string name() const {
    return std::string(formatOf(format).shortName) + " " + std::to_string(std::lround(version * 100));
  }
};

std::vector<Target> targetsOf(const FormatDescriptor& source) {
  std::vector<Target> targets;
  if (source.makeSources == nullptr) {
    return targets;
  }
  for (const TraceFormat format : source.allowedTargets) {
    if (formatOf(format).makeWriter == nullptr) {
      continue;
    }
    const FormatDescriptor& target = formatOf(format);
    const auto split =
        std::ranges::find_if(target.supportedVersions, [&](double version) { return target.isSplitTarget(version); });
    for (const double version : target.supportedVersions) {
      const bool isFirstSplit = split != target.supportedVersions.end() && version == *split;
      if (isThorough() || version == target.currentVersion || isFirstSplit) {
        targets.push_back({format, version});
      }
    }
  }
  return targets;
}

std::string textOf(const ConversionResult& result) {
  return result.text == nullptr ? "" : result.text;
}

// Takes the result from the library.
Outcome outcomeOf(std::int32_t status, ConversionResult& result) {
  const NoFaults own;
  EXPECT_EQ(result.finished, 1);
  EXPECT_EQ(result.status, status);
  Outcome outcome;
  outcome.succeeded = status == XLATR_SUCCESS;
  // That there is nothing to convert is a text of its own.
  outcome.text = status == XLATR_NOTHING_CONVERTED ? "nothing was converted" : textOf(result);
  for (std::uint32_t index = 0; index < result.file_count; ++index) {
    std::free(result.files[index]);
  }
  std::free(result.files);
  std::free(result.text);
  return outcome;
}

std::string pathOf(const Target& target, const TempFolder& folder) {
  const NoFaults own;
  return folder.file("out" + std::string(formatOf(target.format).extension));
}

Outcome convert(const TraceToRead& source, const Target& target, bool safe, const TempFolder& folder) {
  const std::string path = pathOf(target, folder);
  std::array<ConversionOption, 2> items{};
  items[0].tag = XLATR_OPTION_TARGET_VERSION;
  items[0].value.version = target.version;
  items[1].tag = XLATR_OPTION_SAFE;
  items[1].value.flag = safe ? 1 : 0;
  ConversionOptions options{};
  options.target_format = target.format;
  options.option_count = static_cast<std::uint32_t>(items.size());
  options.options = items.data();
  ConversionResult result{};
  const std::int32_t status =
      ConversionRegistry::instance().convert(source.path.c_str(), path.c_str(), options, &result);
  return outcomeOf(status, result);
}

Files filesOf(const Attempt& attempt) {
  const TempFolder folder;
  static_cast<void>(attempt(folder));
  return filesIn(folder);
}

void forEachPair(const std::function<void(const std::string& name, const TraceToRead&, const Target&)>& action) {
  const TempFolder sources;
  for (const TraceToRead& source : smallTraces(sources)) {
    for (const Target& target : targetsOf(*source.format)) {
      action(std::string(source.format->shortName) + " to " + target.name(), source, target);
    }
  }
}

// Without the option and with it, into a folder that is empty and into one that has the targets already, which are
// longer than what is written.
void tortureWriting(const std::vector<Torture>& faults) {
  forEachPair([&faults](const std::string& name, const TraceToRead& source, const Target& target) {
    const auto fast = [&](const TempFolder& folder) { return convert(source, target, false, folder); };
    const auto safe = [&](const TempFolder& folder) { return convert(source, target, true, folder); };
    Files old;
    for (const auto& [file, content] : filesOf(fast)) {
      old.emplace(file, std::string(content.size() + 100, 'o'));
    }
    torture(name + " over a file", faults, fast, Promise::None, old);
    torture(name + " safely over a file", faults, safe, Promise::Safe, old);
    if (isThorough()) {
      torture(name, faults, fast, Promise::None);
      torture(name + " safely", faults, safe, Promise::Safe);
    }
  });
}

TEST(CompatibleTorture, noFailureToReadLooksLikeTheEndOfASource) {
  forEachPair([](const std::string& name, const TraceToRead& source, const Target& target) {
    const auto attempt = [&](const TempFolder& folder) { return convert(source, target, false, folder); };
    torture(name, readFaults(source.path), attempt, Promise::None);
  });
}

TEST(CompatibleTorture, noFailureToWriteLooksLikeAWholeTarget) {
  tortureWriting(writeFaults());
}

TEST(CompatibleTorture, lackOfMemoryLooksLikeNoSuccess) {
  tortureWriting(memoryFaults());
}

// Where the system fails to say what a target is, it may be its source.
TEST(CompatibleTorture, noFailureToLookEmptiesASource) {
  const TempFolder sources;
  const TraceToRead source = smallTraces(sources).front();
  const std::string whole = filesIn(sources).at(std::filesystem::path(source.path).filename().string());
  for (const bool safe : {false, true}) {
    FaultPlan plan{.kinds = faultBits(FaultKind::Status, FaultKind::Lock, FaultKind::Truncate), .error = EIO};
    bool struck = true;
    for (plan.nth = 1; struck; ++plan.nth) {
      const TempFolder folder;
      std::filesystem::create_hard_link(source.path, folder.file("out.trc"));
      const Target target{XLATR_FORMAT_TRC, formatOf(XLATR_FORMAT_TRC).currentVersion};
      Outcome outcome;
      {
        const Faults faults(plan);
        outcome = convert(source, target, safe, folder);
        struck = faults.struck();
      }
      EXPECT_FALSE(outcome.succeeded) << faultText(plan);
      EXPECT_TRUE(filesIn(folder) == Files({{"out.trc", whole}})) << faultText(plan);
    }
  }
}

}  // namespace
}  // namespace xlatr::test
