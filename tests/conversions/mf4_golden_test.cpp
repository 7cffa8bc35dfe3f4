#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/conversion.hpp"
#include "support/mf4_checker.hpp"
#include "support/mf4_layout.hpp"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using test::LayoutNames;

fs::path golden(const std::string& name) {
  return fs::path(XLATR_GOLDEN_DIR) / "mf4" / name;
}

// One way of writing an MF4 file.
struct Form {
  bool sorted;
  bool zipped;
};

// A target version as the option gives it, and as the identification states it.
struct Version {
  double number;
  const char* text;
  std::uint64_t stated;
};
constexpr std::array kVersions = {Version{4.1, "4.10", 410}, Version{4.11, "4.11", 411}, Version{4.2, "4.20", 420}};

std::string nameOf(Form form) {
  return std::string(form.sorted ? "sorted" : "unsorted") + (form.zipped ? "Zipped" : "Plain");
}

test::Options optionsOf(Form form, double version) {
  test::Options options;
  options.format = XLATR_FORMAT_MF4;
  options.version(version);
  if (form.sorted) {
    options.flag(XLATR_OPTION_SORTED);
  }
  if (form.zipped) {
    options.flag(XLATR_OPTION_ZIPPED);
  }
  return options;
}

std::string zip(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string zipped(size, '\0');
  EXPECT_EQ(compress(reinterpret_cast<Bytef*>(zipped.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                     bytes.size()),
            Z_OK);
  zipped.resize(size);
  return zipped;
}

// The data block of one data group, as it stands behind what is there already.
std::string plainBlock(const std::string& records) {
  LayoutNames names{.numbers = {{"length", 24 + records.size()}}, .texts = {}};
  return test::layOut(R"("##DT" z4 u64:$length u64:0)", names) + records;
}

std::string zippedBlock(const std::string& records) {
  if (records.empty()) {
    return {};
  }
  const std::string zipped = zip(records);
  LayoutNames names{.numbers = {{"length", 48 + zipped.size()}, {"plain", records.size()}, {"zipped", zipped.size()}},
                    .texts = {}};
  return test::layOut(R"("##DZ" z4 u64:$length u64:0 "DT" u8:0 u8:0 u32:0 u64:$plain u64:$zipped)", names) + zipped;
}

// What a case writes: the records of each data group in the order of the chain, and the counts of the three kinds.
struct Content {
  std::vector<std::string> records;
  std::array<std::uint64_t, 3> counts;
};

Content contentOf(bool sorted, bool empty) {
  if (empty) {
    return {.records = std::vector<std::string>(sorted ? 3 : 1), .counts = {0, 0, 0}};
  }
  const auto read = [](const char* name) { return test::layOutFile(golden(name), {}); };
  if (sorted) {
    return {.records = {read("sorted-data.records"), read("sorted-remote.records"), read("sorted-error.records")},
            .counts = {12, 2, 4}};
  }
  return {.records = {read("unsorted.records")}, .counts = {12, 2, 4}};
}

std::string expectedFile(Form form, const Version& version, bool empty, std::uint64_t startNs,
                         std::uint64_t writtenNs) {
  const Content content = contentOf(form.sorted, empty);
  // Where the blocks of the two trees end.
  std::uint64_t offset = form.sorted ? 8168 : 8040;
  std::string data;
  LayoutNames names{.numbers = {{"versionNumber", version.stated}, {"start", startNs}, {"written", writtenNs}},
                    .texts = {{"version", version.text}}};
  for (std::size_t index = 0; index < content.records.size(); ++index) {
    const std::string padding((8 - (offset + data.size()) % 8) % 8, '\0');
    const std::string block = form.zipped ? zippedBlock(content.records[index]) : plainBlock(content.records[index]);
    data += padding;
    names.numbers["data" + std::to_string(index)] = block.empty() ? 0 : offset + data.size();
    data += block;
  }
  for (std::size_t kind = 0; kind < 3; ++kind) {
    names.numbers["cycles" + std::to_string(kind)] = content.counts.at(kind);
  }
  return test::layOutFile(golden(form.sorted ? "sorted.layout" : "unsorted.layout"), names) + data;
}

std::uint64_t nowNs() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count()) * 1000000000U;
}

std::uint64_t writtenNsOf(const std::string& file) {
  std::uint64_t value = 0;
  for (std::size_t index = 8; index-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(file.at(208 + index));
  }
  return value;
}

class Mf4Golden : public testing::TestWithParam<std::tuple<bool, bool>> {
 protected:
  [[nodiscard]] static Form form() { return {.sorted = std::get<0>(GetParam()), .zipped = std::get<1>(GetParam())}; }

  static void expectFile(const Version& version, const std::string& source, bool empty, std::uint64_t startNs) {
    SCOPED_TRACE(version.text);
    const WorkingDirectory directory;
    writeFile("in.trc", source);
    const std::uint64_t before = nowNs();
    test::Result result;
    ASSERT_EQ(optionsOf(form(), version.number).convert("in.trc", "out.mf4", result), XLATR_SUCCESS) << result.text();
    EXPECT_EQ(result.text(), "");
    EXPECT_EQ(result.files(), std::vector<std::string>{"out.mf4"});
    const std::string written = readFile("out.mf4");
    ASSERT_GT(written.size(), 216U);
    const std::uint64_t writtenNs = writtenNsOf(written);
    EXPECT_GE(writtenNs, before);
    EXPECT_LE(writtenNs, nowNs());
    EXPECT_TRUE(sameBytes(written, expectedFile(form(), version, empty, startNs, writtenNs)));
    EXPECT_EQ(faultsOf(test::checkMf4(written)), "");
  }
};

INSTANTIATE_TEST_SUITE_P(AllForms, Mf4Golden, testing::Combine(testing::Bool(), testing::Bool()), [](const auto& test) {
  return nameOf({.sorted = std::get<0>(test.param), .zipped = std::get<1>(test.param)});
});

TEST_P(Mf4Golden, holdsEveryKindOfFrame) {
  for (const Version& version : kVersions) {
    // 2025-01-01 06:00
    expectFile(version, readFile(golden("source.trc")), false, 1735711200000000000U);
  }
}

TEST_P(Mf4Golden, holdsNoRecordsWhereTheSourceHasNone) {
  for (const Version& version : kVersions) {
    expectFile(version, ";$FILEVERSION=1.2\r\n;$STARTTIME=25569.5\r\n", true, 43200000000000U);
  }
}

TEST_P(Mf4Golden, startsAtZeroBefore1970) {
  expectFile(kVersions[2], ";$FILEVERSION=1.2\r\n", true, 0);
}

TEST_P(Mf4Golden, staysEmptyForASourceThatIsNotValid) {
  const WorkingDirectory directory;
  writeFile("in.trc", ";$FILEVERSION=9.9\r\n;$STARTTIME=45658.25\r\n1) 1.0 1 Rx 0100 1 11\r\n");
  test::Result result;
  static_cast<void>(optionsOf(form(), 4.2).convert("in.trc", "out.mf4", result));
  EXPECT_EQ(readFile("out.mf4"), "");
}

}  // namespace
}  // namespace xlatr::conversions
