#include "platform/posix/package_note.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace xlatr::platform {
namespace {

constexpr std::uint32_t kPackage = 0xCAFE1A7E;

void fillUp(std::string& notes, std::size_t alignment) {
  notes.resize((notes.size() + alignment - 1) / alignment * alignment, '\0');
}

std::string note(const std::string& owner, std::uint32_t type, const std::string& description,
                 std::size_t alignment = 4) {
  const std::uint32_t header[] = {static_cast<std::uint32_t>(owner.size()),
                                  static_cast<std::uint32_t>(description.size()), type};
  std::string bytes(sizeof(header), '\0');
  std::memcpy(bytes.data(), header, sizeof(header));
  bytes += owner;
  fillUp(bytes, alignment);
  bytes += description;
  fillUp(bytes, alignment);
  return bytes;
}

const std::string kOwner("FDO\0", 4);

// In memory of the exact size, so that a sanitizer sees a read past the end.
std::optional<std::string> find(const std::string& notes, std::size_t alignment = 4) {
  const std::vector<char> bytes(notes.begin(), notes.end());
  const auto text = findPackageNote(std::as_bytes(std::span(bytes)), alignment);
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

TEST(PackageNote, isFoundAmongOthers) {
  const std::string build = note(std::string("GNU\0", 4), 3, "0123456789abcdef0123");
  const std::string wrongType = note(kOwner, 3, "{}");
  const std::string wrongOwner = note(std::string("FD0\0", 4), kPackage, "{}");
  const std::string longOwner = note(std::string("FDOX\0", 5), kPackage, "{}");
  EXPECT_EQ(find(note(kOwner, kPackage, "{json}")), "{json}");
  EXPECT_EQ(find(build + wrongType + wrongOwner + longOwner + note(kOwner, kPackage, "{json}")), "{json}");
  EXPECT_EQ(find(build + wrongType + wrongOwner + longOwner), std::nullopt);
  EXPECT_EQ(find(""), std::nullopt);
}

TEST(PackageNote, endsAtItsFirstZero) {
  EXPECT_EQ(find(note(kOwner, kPackage, std::string("{json}\0\0\0", 9))), "{json}");
}

TEST(PackageNote, isFoundInASegmentOfEightByteAlignment) {
  const std::string notes = note(std::string("GNU\0", 4), 5, "0123456789ab", 8) + note(kOwner, kPackage, "{json}", 8);
  EXPECT_EQ(find(notes, 8), "{json}");
  EXPECT_EQ(find(note("owner", 1, "x") + note(kOwner, kPackage, "{json}"), 1), "{json}") << "1 means 4";
}

TEST(PackageNote, cutAnywhereIsNone) {
  const std::string whole = note(kOwner, kPackage, "{jsonjson");
  for (std::size_t size = 0; size < 12 + 4 + 9; ++size) {
    EXPECT_EQ(find(whole.substr(0, size)), std::nullopt) << size;
  }
  EXPECT_EQ(find(whole.substr(0, 12 + 4 + 9)), "{jsonjson") << "only the padding is missing";
}

TEST(PackageNote, withSizesBeyondTheSegmentIsNone) {
  for (const std::size_t field : {0U, 4U}) {
    for (const std::uint32_t size : {0xFFFFFFFFU, 0xFFFFFFFCU, 0x80000000U, 100U}) {
      std::string notes = note(kOwner, kPackage, "{json}");
      std::memcpy(notes.data() + field, &size, sizeof(size));
      EXPECT_EQ(find(notes), std::nullopt) << field << ' ' << size;
    }
  }
}

TEST(PackageNoteVersion, isTheFirstFourNumbers) {
  struct Case {
    std::string_view json;
    std::optional<std::array<std::uint32_t, 4>> expected;
  };
  using Parts = std::array<std::uint32_t, 4>;
  const Case cases[] = {
      {R"({"type":"deb","os":"debian","name":"viewer","version":"1.2.3.4","architecture":"amd64"})", Parts{1, 2, 3, 4}},
      {R"({"version":"7"})", Parts{7, 0, 0, 0}},
      {R"({"version":"1.2.3.4.5.6"})", Parts{1, 2, 3, 4}},
      {R"({"version":"2:1.10-3+deb12u1"})", Parts{2, 1, 10, 3}},
      {R"({"version":"v0.09"})", Parts{0, 9, 0, 0}},
      {R"({"version":"4294967295.4294967296.99999999999999999999.1"})", Parts{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 1}},
      {" {\n\t\"name\" : \"a\" ,\r\n \"version\" : \"3.4\" } ", Parts{3, 4, 0, 0}},
      {R"({"name":"version","version":"5"})", Parts{5, 0, 0, 0}},
      {R"({"name":"a\"version\":\"9","version":"5"})", Parts{5, 0, 0, 0}},
      {R"({"x":{"version":"9"},"y":["version","8",{"version":"7"}],"version":"5"})", Parts{5, 0, 0, 0}},
      {R"({"version":"5","version":"6"})", Parts{5, 0, 0, 0}},
      {R"({"version":"unknown"})", std::nullopt},
      {R"({"version":""})", std::nullopt},
      {R"({"version":1.2})", std::nullopt},
      {R"({"Version":"1.2"})", std::nullopt},
      {R"({"x":{"version":"9"}})", std::nullopt},
      {R"("version":"1")", std::nullopt},
      {R"({"version")", std::nullopt},
      {R"({"version":)", std::nullopt},
      {R"({"version": )", std::nullopt},
      {R"({"version":")", std::nullopt},
      {R"({"version\)", std::nullopt},
      {R"({"version":"1\)", Parts{1, 0, 0, 0}},
      {"}}}]", std::nullopt},
      {"", std::nullopt},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(packageNoteVersion(c.json), c.expected) << c.json;
  }
}

}  // namespace
}  // namespace xlatr::platform
