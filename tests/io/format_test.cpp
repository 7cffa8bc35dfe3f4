#include "io/format.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace xlatr {
namespace {

TEST(FormatRegistry, hasAFormatPerFlagInTheirOrder) {
  TraceFormat last = 0;
  for (const FormatDescriptor* known : formatRegistry()) {
    SCOPED_TRACE(known->extension);
    EXPECT_GT(known->format, last);
    EXPECT_EQ(known->format & (known->format - 1), 0) << "one bit";
    EXPECT_EQ(&formatOf(known->format), known);
    EXPECT_EQ(normalizeFormat(known->format), known->format);
    last = known->format;
  }
}

TEST(FormatRegistry, namesEachFormatByAnExtensionOfItsOwn) {
  std::set<std::string> extensions;
  for (const FormatDescriptor* known : formatRegistry()) {
    const std::string extension(known->extension);
    EXPECT_TRUE(extension.starts_with('.')) << extension;
    EXPECT_TRUE(extensions.insert(extension).second) << extension;
    EXPECT_EQ(formatOfPath("a.b/x" + extension), known->format);
    EXPECT_NE(known->shortName, "") << extension;
    EXPECT_NE(known->description, "") << extension;
  }
}

TEST(FormatRegistry, listsVersionsUpToTheCurrentOne) {
  for (const FormatDescriptor* known : formatRegistry()) {
    SCOPED_TRACE(known->extension);
    const auto versions = known->supportedVersions;
    ASSERT_FALSE(versions.empty());
    EXPECT_TRUE(std::ranges::is_sorted(versions));
    EXPECT_EQ(versions.back(), known->currentVersion);
    EXPECT_NE(std::ranges::find(versions, known->lowestVersion), versions.end());
  }
}

TEST(FormatRegistry, offersKnownFormatsAsTargets) {
  for (const FormatDescriptor* known : formatRegistry()) {
    std::set<TraceFormat> targets;
    for (const TraceFormat target : known->allowedTargets) {
      EXPECT_NE(normalizeFormat(target), XLATR_FORMAT_NONE) << known->extension << " into " << target;
      EXPECT_TRUE(targets.insert(target).second) << known->extension << " into " << target;
      // A source that conversions read finds a writer for each of its targets.
      EXPECT_TRUE(known->makeSources == nullptr || formatOf(target).makeWriter != nullptr) << known->extension;
    }
  }
}

TEST(Format, normalisesWhatIsNotOneFlagToNoFormat) {
  for (const TraceFormat none : {0, 3, 5, 255, -1, -128, 0x40000000}) {
    EXPECT_EQ(normalizeFormat(none), XLATR_FORMAT_NONE) << none;
    EXPECT_EQ(formatOf(none).description, "") << none;
    EXPECT_EQ(formatOf(none).extension, "") << none;
    EXPECT_EQ(formatOf(none).currentVersion, -1.0) << none;
    EXPECT_EQ(formatOf(none).lowestVersion, -1.0) << none;
    EXPECT_TRUE(formatOf(none).supportedVersions.empty()) << none;
    EXPECT_TRUE(formatOf(none).allowedTargets.empty()) << none;
    EXPECT_FALSE(formatOf(none).isSplitTarget(1.0)) << none;
    EXPECT_EQ(formatOf(none).makeSources, nullptr) << none;
    EXPECT_EQ(formatOf(none).makeWriter, nullptr) << none;
  }
}

TEST(Format, isFoundByTheExtensionInAnyCase) {
  const struct {
    const char* path;
    TraceFormat format;
  } cases[] = {
      {"x.trc", 1},        {"x.TRC", 1},   {"x.tRc", 1},  {"a.asc/x.btr", 2},
      {"C:\\a\\x.ASC", 4}, {"x.ltrc", 8},  {"x.csv", 16}, {"x.y.btrc", 32},
      {"/a/x.mf4", 64},    {"x.Blf", 128}, {"x", 0},      {"x.trc.bak", 0},
      {"trc", 0},          {"", 0},        {"x.", 0},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(formatOfPath(test.path), test.format) << test.path;
  }
}

TEST(SessionSelection, containsAllOrWhatIsNamed) {
  EXPECT_TRUE((SessionSelection{}.contains(7)));
  const SessionSelection named{.all = false, .places = {0, 2}};
  EXPECT_TRUE(named.contains(0));
  EXPECT_FALSE(named.contains(1));
  EXPECT_TRUE(named.contains(2));
  EXPECT_FALSE((SessionSelection{.all = false}.contains(0)));
}

}  // namespace
}  // namespace xlatr
