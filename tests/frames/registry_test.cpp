// What the formats' descriptors say of the complete way, which may have more versions than the compatible one.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "frames/frame_capacity.hpp"
#include "frames/frame_stream.hpp"
#include "io/format.hpp"
#include "io/input_file.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

TEST(FrameRegistry, hasACapacityForEachSupportedVersion) {
  for (const FormatDescriptor* const format : formatRegistry()) {
    if (format->frameCapacities == nullptr) {
      continue;
    }
    std::vector<double> versions;
    for (const FrameCapacity& capacity : format->frameCapacities()) {
      versions.push_back(capacity.version);
      EXPECT_GT(capacity.resolutionNs, 0) << format->extension;
      EXPECT_GE(capacity.earliestNs, -kFarthestNs) << format->extension;
      EXPECT_LE(capacity.latestNs, kFarthestNs) << format->extension;
      EXPECT_EQ(capacity.holds(FrameKind::Comment), capacity.comments) << format->extension;
    }
    EXPECT_TRUE(std::ranges::is_sorted(versions)) << format->extension;
    for (const double version : format->supportedVersions) {
      EXPECT_EQ(std::ranges::count(versions, version), 1) << format->extension << " " << version;
    }
  }
}

TEST(FrameRegistry, opensAnEmptyFileOfEachFormat) {
  const test::TempFolder folder;
  for (const FormatDescriptor* const format : formatRegistry()) {
    if (format->openFrames == nullptr) {
      continue;
    }
    const auto source = format->openFrames(InputSource(folder.write("empty" + std::string(format->extension), "")));
    FrameBatch batch;
    Account account;
    EXPECT_FALSE(source->read(batch, account)) << format->extension;
    EXPECT_EQ(source->head().format, format->format);
    EXPECT_EQ(account.read(), 0U);
    EXPECT_EQ(account.noted(Remark::SourceCut).frames, 1U) << format->extension;
    EXPECT_FALSE(source->read(batch, account));
    EXPECT_EQ(account.noted(Remark::SourceCut).frames, 1U) << format->extension << " says so once";
  }
}

}  // namespace
}  // namespace xlatr
