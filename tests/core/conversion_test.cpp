// Conversions of several sessions: which of them are at work, and in which order they are told of.
#include "core/conversion.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/btr_image.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::BtrSlot;

// Sessions of so many sectors each, one after the other, each with a date of its own.
std::string sessionsOf(const std::vector<std::size_t>& sizes) {
  const std::size_t directories = (sizes.size() + 15) / 16;
  std::size_t sectors = directories;
  for (const std::size_t size : sizes) {
    sectors += size;
  }
  BtrImage image(sectors);
  std::size_t sector = directories;
  for (std::size_t index = 0; index < sizes.size(); ++index) {
    const BtrDate date = {.hour = static_cast<std::uint8_t>(index / 60),
                          .minute = static_cast<std::uint8_t>(index % 60)};
    const bool goesOn = index % 16 == 15 && index + 1 < sizes.size();
    const auto nextDirectory = static_cast<std::uint32_t>(goesOn ? index / 16 + 1 : 0);
    image.session(index % 16,
                  {.firstSector = static_cast<std::uint32_t>(sector),
                   .date = date,
                   .continued = static_cast<std::uint8_t>(goesOn ? 1 : 0),
                   .nextDirectory = nextDirectory},
                  static_cast<std::uint32_t>(index / 16));
    for (std::size_t at = 0; at < sizes[index]; ++at, ++sector) {
      image.sector(sector, date, std::vector<BtrSlot>(25, BtrSlot{.length = 8, .timestamp = 1000}));
    }
  }
  return image.bytes();
}

struct Converted {
  std::int32_t status = 0;
  std::string text;
  std::vector<std::string> files;
};

Converted convertToCsv(const std::string& source, const std::string& target) {
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_CSV;
  ConversionResult result{};
  Converted converted;
  {
    Conversion conversion(
        source.c_str(), target.c_str(), options, &result, [](void*) {}, nullptr);
    conversion.start();
    conversion.waitUntilFinished();
    converted.status = conversion.statusCode();
  }
  converted.text = result.text;
  std::free(result.text);
  for (std::uint32_t index = 0; index < result.file_count; ++index) {
    converted.files.emplace_back(result.files[index]);
    std::free(result.files[index]);
  }
  std::free(result.files);
  return converted;
}

std::vector<std::string> namesOf(std::size_t sessions) {
  std::vector<std::string> names;
  for (std::size_t session = 1; session <= sessions; ++session) {
    names.push_back("out_S" + std::to_string(session) + ".csv");
  }
  return names;
}

// The first session takes longest, so that the workers end from the last one to the first one.
TEST(ConversionOfSessions, filesAreInTheOrderOfTheSessions) {
  const test::TempFolder folder;
  const std::string source = folder.write("a.btr", sessionsOf({400, 40, 1}));
  for (int run = 0; run < 20; ++run) {
    const Converted converted = convertToCsv(source, folder.file("out.csv"));
    EXPECT_EQ(converted.status, XLATR_SUCCESS) << converted.text;
    EXPECT_EQ(converted.files, namesOf(3));
  }
}

TEST(ConversionOfSessions, moreSessionsThanAreAtWorkAtOnceAllHaveTheirTurn) {
  const test::TempFolder folder;
  const std::size_t sessions = 4 * mostAtWork() + 3;
  const std::string source = folder.write("a.btr", sessionsOf(std::vector<std::size_t>(sessions, 1)));
  const Converted converted = convertToCsv(source, folder.file("out.csv"));
  EXPECT_EQ(converted.status, XLATR_SUCCESS) << converted.text;
  EXPECT_EQ(converted.files, namesOf(sessions));
  for (const std::string& name : converted.files) {
    EXPECT_GT(std::filesystem::file_size(folder.file(name)), 500U) << name;
  }
}

// Texts too, those of workers that end at once among them.
TEST(ConversionOfSessions, textsAreInTheOrderOfTheSessions) {
  const test::TempFolder folder;
  const std::string source = folder.write("a.btr", sessionsOf({400, 40, 1}));
  for (const std::string& name : namesOf(3)) {
    std::filesystem::create_directory(folder.file(name));
  }
  std::string expected;
  for (const std::string& name : namesOf(3)) {
    expected += folder.path().string() + "//" + name + ": cannot create: Is a directory ";
  }
  for (int run = 0; run < 20; ++run) {
    const Converted converted = convertToCsv(source, folder.file("out.csv"));
    EXPECT_EQ(converted.status, XLATR_FAILED);
    EXPECT_EQ(converted.text, expected);
  }
}

// All sessions begin at the same sector.
TEST(ConversionOfSessions, sessionsThatShareTheirSectorsAreRefused) {
  const test::TempFolder folder;
  constexpr std::size_t kDirectories = 20;
  constexpr std::size_t kSectors = 100;
  BtrImage image(kDirectories + kSectors);
  for (std::size_t index = 0; index < kDirectories * 16; ++index) {
    const bool last = index + 1 == kDirectories * 16;
    image.session(index % 16,
                  {.firstSector = kDirectories,
                   .continued = static_cast<std::uint8_t>(last ? 0 : 1),
                   .nextDirectory = static_cast<std::uint32_t>(last ? 0 : index / 16 + 1)},
                  static_cast<std::uint32_t>(index / 16));
  }
  for (std::size_t sector = 0; sector < kSectors; ++sector) {
    image.sector(kDirectories + sector, {}, {BtrSlot{}});
  }
  const std::string source = folder.write("a.btr", image.bytes());
  const Converted converted = convertToCsv(source, folder.file("out.csv"));
  EXPECT_EQ(converted.status, XLATR_FAILED);
  EXPECT_EQ(converted.text, source +
                                ": its 320 sessions share sectors: 2300 would be read of a file that has 120. Convert "
                                "some of the sessions");
  EXPECT_FALSE(folder.has("out_S1.csv"));
}

}  // namespace
}  // namespace xlatr
