#include "platform/host_version.hpp"

#include <gtest/gtest.h>

#include "util/host.hpp"

// The package note of this test program: owner "FDO" of 4 bytes, a description, type 0xCAFE1A7E. The assembler writes
// it because a variable in a section of this name would not become a note.
__asm__(
    ".pushsection .note.package, \"a\", %note\n"
    ".balign 4\n"
    ".long 4, 3f - 2f, 0xcafe1a7e\n"
    ".asciz \"FDO\"\n"
    "2: .asciz \"{\\\"name\\\":\\\"platform_test\\\",\\\"version\\\":\\\"3.14.15\\\"}\"\n"
    "3: .balign 4\n"
    ".popsection\n");

namespace xlatr::platform {
namespace {

TEST(HostVersion, isThatOfThePackageNoteOfTheProgram) {
  const HostVersion version = readHostVersion();
  EXPECT_EQ(version.state, HostVersionState::Found);
  EXPECT_EQ(version.parts, (std::array<std::uint32_t, 4>{3, 14, 15, 0}));
}

TEST(HostVersion, isPrintedWithFourParts) {
  EXPECT_EQ(getHostVersionText(), "3.14.15.0");
}

}  // namespace
}  // namespace xlatr::platform
