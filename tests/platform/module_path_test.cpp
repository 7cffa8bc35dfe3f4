#include "platform/module_path.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace xlatr::platform {
namespace {

TEST(ModulePath, isAbsoluteAndWithoutATrailingSeparator) {
  const std::string directory = moduleDirectory();
  EXPECT_EQ(directory, std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
  EXPECT_TRUE(std::filesystem::is_directory(directory));
  EXPECT_NE(directory.back(), pathSeparator());
}

}  // namespace
}  // namespace xlatr::platform
