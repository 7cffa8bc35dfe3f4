#include "core/format_matrix.hpp"

#include <gtest/gtest.h>

#include "io/format.hpp"

namespace xlatr {
namespace {

bool convertsInto(const FormatDescriptor& source, TraceFormat target) {
  for (const TraceFormat allowed : source.allowedTargets) {
    if (allowed == target) {
      return true;
    }
  }
  return false;
}

// The flags of the formats that convert into each of these.
template <class... Targets>
TraceFormat sourcesOf(Targets... targets) {
  TraceFormat sources = 0;
  for (const FormatDescriptor* source : formatRegistry()) {
    sources |= (convertsInto(*source, targets) && ...) ? source->format : 0;
  }
  return sources;
}

TEST(FormatMatrix, tellsTheTargetsOfASource) {
  for (const FormatDescriptor* source : formatRegistry()) {
    const TraceFormat targets = formatsConvertibleFrom(source->format);
    for (const FormatDescriptor* target : formatRegistry()) {
      EXPECT_EQ((targets & target->format) != 0, convertsInto(*source, target->format))
          << source->extension << " into " << target->extension;
    }
  }
  for (const TraceFormat none : {0, 3, -1, 255, 0x40000000}) {
    EXPECT_EQ(formatsConvertibleFrom(none), 0) << none;
  }
}

TEST(FormatMatrix, tellsTheSourcesOfATarget) {
  for (const FormatDescriptor* target : formatRegistry()) {
    EXPECT_EQ(formatsConvertibleTo(target->format), sourcesOf(target->format)) << target->extension;
  }
}

TEST(FormatMatrix, tellsTheSourcesThatReachAllOfSeveralTargets) {
  EXPECT_EQ(formatsConvertibleTo(0), sourcesOf()) << "all formats reach each of no targets";
  EXPECT_EQ(formatsConvertibleTo(1 | 4), sourcesOf(1, 4));
  EXPECT_EQ(formatsConvertibleTo(1 | 8), sourcesOf(1, 8));
  EXPECT_EQ(formatsConvertibleTo(1 | 4 | 8), 0);
  EXPECT_EQ(formatsConvertibleTo(0x40000000), 0);
}

// Between the formats that callers have always known no pair is lost and none is added. A new format has a bit beyond.
constexpr TraceFormat kOldFormats = 255;

TEST(FormatMatrix, keepsTheTargetsThatCallersKnow) {
  const struct {
    TraceFormat source;
    TraceFormat targets;
  } cases[] = {{1, 119}, {2, 21}, {4, 17}, {8, 20}, {16, 0}, {32, 21}, {64, 1}, {128, 25}};
  for (const auto& test : cases) {
    EXPECT_EQ(formatsConvertibleFrom(test.source) & kOldFormats, test.targets) << test.source;
  }
}

TEST(FormatMatrix, keepsTheSourcesThatCallersKnow) {
  const struct {
    TraceFormat targets;
    TraceFormat sources;
  } cases[] = {{0, 255},    {1, 1 | 2 | 4 | 32 | 64 | 128},
               {2, 1},      {4, 1 | 2 | 8 | 32},
               {8, 128},    {16, 1 | 2 | 4 | 8 | 32 | 128},
               {32, 1},     {64, 1},
               {128, 0},    {1 | 4, 1 | 2 | 32},
               {1 | 8, 128}};
  for (const auto& test : cases) {
    EXPECT_EQ(formatsConvertibleTo(test.targets) & kOldFormats, test.sources) << test.targets;
  }
}

}  // namespace
}  // namespace xlatr
