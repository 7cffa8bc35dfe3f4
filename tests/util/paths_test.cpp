#include "util/paths.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace xlatr {
namespace {

TEST(SplitPath, givesThePieces) {
  struct Case {
    std::string_view path;
    std::string_view drive;
    std::string_view directory;
    std::string_view name;
    std::string_view extension;
  };
  const Case cases[] = {
      {"", "", "", "", ""},
      {"trace.trc", "", "", "trace", ".trc"},
      {"trace", "", "", "trace", ""},
      {"/data/trace.trc", "", "/data/", "trace", ".trc"},
      {"C:\\data\\trace.trc", "C:", "\\data\\", "trace", ".trc"},
      {"c:/data\\sub/trace.trc", "c:", "/data\\sub/", "trace", ".trc"},
      {"C:trace.trc", "C:", "", "trace", ".trc"},
      {"C:", "C:", "", "", ""},
      {"C:\\", "C:", "\\", "", ""},
      {"\\\\server\\share\\trace.asc", "", "\\\\server\\share\\", "trace", ".asc"},
      {"a.b.c", "", "", "a.b", ".c"},
      {"/a.d/trace", "", "/a.d/", "trace", ""},
      {"\\a.d\\trace", "", "\\a.d\\", "trace", ""},
      {".trc", "", "", "", ".trc"},
      {"trace.", "", "", "trace", "."},
      {"..", "", "", ".", "."},
      {"/data/", "", "/data/", "", ""},
      {"1:trace.trc", "", "", "1:trace", ".trc"},
      {"CD:trace.trc", "", "", "CD:trace", ".trc"},
      {":trace", "", "", ":trace", ""},
  };
  for (const Case& c : cases) {
    const auto pieces = splitPath(c.path);
    ASSERT_TRUE(pieces) << c.path;
    EXPECT_EQ(pieces->drive, c.drive) << c.path;
    EXPECT_EQ(pieces->directory, c.directory) << c.path;
    EXPECT_EQ(pieces->name, c.name) << c.path;
    EXPECT_EQ(pieces->extension, c.extension) << c.path;

    EXPECT_EQ(getFileExtension(c.path), c.extension) << c.path;
    EXPECT_EQ(getFileStem(c.path), c.name) << c.path;
    EXPECT_EQ(getFileName(c.path), std::string(c.name).append(c.extension)) << c.path;
    EXPECT_EQ(getFileDirectory(c.path), std::string(c.drive).append(c.directory)) << c.path;
  }
}

TEST(SplitPath, countsTheTerminatorInItsLimits) {
  struct Case {
    std::string_view name;
    std::string path;
    bool fits;
  };
  const std::string text254(254, 'a');
  const Case cases[] = {
      {"directory of 255", text254 + "/b.c", true},
      {"directory of 256", text254 + "a/b.c", false},
      {"the drive is not part of the directory", "C:" + text254 + "/b.c", true},
      {"name of 255", "d/" + text254 + "a.c", true},
      {"name of 256", "d/" + text254 + "aa.c", false},
      {"extension of 255", "d/b." + text254, true},
      {"extension of 256", "d/b.a" + text254, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(splitPath(c.path).has_value(), c.fits) << c.name;
  }
}

TEST(SplitPath, givesNoPieceOfAPathOfWhichAnotherPieceDoesNotFit) {
  const std::string path = std::string(300, 'd') + "/name.trc";
  EXPECT_EQ(getFileExtension(path), "");
  EXPECT_EQ(getFileStem(path), "");
  EXPECT_EQ(getFileName(path), "");
  EXPECT_EQ(getFileDirectory(path), "");
}

}  // namespace
}  // namespace xlatr
