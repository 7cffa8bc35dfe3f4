// Whole conversions on the compatible way while the system refuses what it is asked for.
#include <gtest/gtest.h>

#include <cmath>
#include <exception>
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
    for (const double version : formatOf(format).supportedVersions) {
      if (isThorough() || version == formatOf(format).currentVersion || formatOf(format).isSplitTarget(version)) {
        targets.push_back({format, version});
      }
    }
  }
  return targets;
}

std::string textOf(const ConversionResult& result) {
  return result.text == nullptr ? "" : result.text;
}

Outcome convert(const TraceToRead& source, const Target& target, bool safe, const TempFolder& folder) {
  const std::string path = folder.file("out" + std::string(formatOf(target.format).extension));
  std::vector<ConversionOption> items(2);
  items[0].tag = XLATR_OPTION_TARGET_VERSION;
  items[0].value.version = target.version;
  items[1].tag = XLATR_OPTION_SAFE;
  items[1].value.flag = safe ? 1 : 0;
  ConversionOptions options{};
  options.target_format = target.format;
  options.option_count = static_cast<std::uint32_t>(items.size());
  options.options = items.data();
  ConversionResult result{};
  Outcome outcome;
  const std::int32_t status =
      ConversionRegistry::instance().convert(source.path.c_str(), path.c_str(), options, &result);
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

void forEachPair(const std::function<void(const std::string& name, const TraceToRead&, const Target&)>& action) {
  const TempFolder sources;
  for (const TraceToRead& source : smallTraces(sources)) {
    for (const Target& target : targetsOf(*source.format)) {
      action(std::string(source.format->shortName) + " to " + target.name(), source, target);
    }
  }
}

TEST(CompatibleTorture, noFailureToReadLooksLikeTheEndOfASource) {
  forEachPair([](const std::string& name, const TraceToRead& source, const Target& target) {
    const auto attempt = [&](const TempFolder& folder) { return convert(source, target, false, folder); };
    torture(name, readFaults(source.path), attempt, false);
  });
}

}  // namespace
}  // namespace xlatr::test
