#include "io/quirk.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "io/format.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

const fs::path kProject = XLATR_PROJECT_DIR;

std::string contentOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string renderPage() {
  std::string page =
      "# Quirks of the compatible way\n"
      "\n"
      "The five functions of `xlatr.h` and the objects of `objects.h` write the same bytes for ever, losses and "
      "oddities\n"
      "included: programs rely on them. Where that harms data, it is a quirk with a name. On the complete way all of "
      "them\n"
      "are off.\n"
      "\n"
      "| Format | Quirk | On the compatible way | On the complete way |\n"
      "|---|---|---|---|\n";
  for (const QuirkInfo& quirk : quirkTable()) {
    page += "| " + std::string(formatOf(quirk.format).extension.substr(1)) + " | `" + std::string(quirk.name) + "` | " +
            std::string(quirk.what) + " | " + std::string(quirk.instead) + " |\n";
  }
  return page;
}

// XLATR_UPDATE_GOLDEN=1 writes the page.
TEST(Quirks, areThePageForUsers) {
  const fs::path path = kProject / "docs" / "quirks.md";
  const char* const update = std::getenv("XLATR_UPDATE_GOLDEN");
  if (update != nullptr && std::string(update) == "1") {
    std::ofstream(path, std::ios::binary) << renderPage();
  }
  EXPECT_EQ(contentOf(path), renderPage());
}

TEST(Quirks, areEachHeldByATest) {
  std::string tests;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kProject / "tests")) {
    tests += entry.path().extension() == ".cpp" ? contentOf(entry.path()) : "";
  }
  for (const QuirkInfo& quirk : quirkTable()) {
    const std::string name(quirk.test);
    const std::string declaration = "(" + name.substr(0, name.find('.')) + ", " + name.substr(name.find('.') + 1) + ")";
    EXPECT_NE(tests.find(declaration), std::string::npos) << quirk.name << ": " << quirk.test;
  }
}

TEST(Ways, haveAllQuirksOrNone) {
  for (const QuirkInfo& quirk : quirkTable()) {
    EXPECT_TRUE(Way::compatible().has(quirk.quirk)) << quirk.name;
    EXPECT_FALSE(Way::complete().has(quirk.quirk)) << quirk.name;
  }
}

}  // namespace
}  // namespace xlatr
