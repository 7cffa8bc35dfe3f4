#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "support/blf_builder.hpp"
#include "support/recordings.hpp"
#include "tools/blf2csv/table.hpp"
#include "tracegen/generator.hpp"

// What others read from the same logs: the program tshark, and the lists beside the recorded logs, which are outside
// the tree. Neither shares code with the converter.
namespace blf2csv {
namespace {

namespace fs = std::filesystem;
using xlatr::test::TempFolder;
using xlatr::test::blf::Bytes;
using xlatr::test::blf::classicFrame;
using xlatr::test::blf::file;
using xlatr::test::blf::object;
using xlatr::test::blf::stored;
using xlatr::test::blf::zipped;

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::uint64_t toNumber(std::string_view text, int base = 10) {
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, base);
  return value;
}

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A row of the table, as far as it is compared.
struct Row {
  std::uint64_t type = 0;
  std::uint64_t timeNs = 0;
  std::uint64_t rawId = 0;
  std::uint64_t channel = 0;
  std::uint64_t flags = 0;
  std::uint64_t canFdFlags = 0;
  std::uint64_t dir = 0;
  std::uint64_t length = 0;
  std::string data;  // lower-case hexadecimal

  [[nodiscard]] bool isClassicLayout() const { return type == 1 || type == 86; }
  [[nodiscard]] bool isLin() const { return type == 11 || type == 57; }
  [[nodiscard]] bool isFrame() const { return isClassicLayout() || type == 100 || type == 101 || isLin(); }
  [[nodiscard]] bool isRemote() const {
    return ((isClassicLayout() || type == 100) && (flags & 0x80) != 0) || (type == 101 && (flags & 0x10) != 0);
  }
  [[nodiscard]] bool isSent() const { return isLin() || type == 101 ? dir != 0 : (flags & 1) != 0; }
};

std::vector<Row> readRows(const std::string& table) {
  std::vector<Row> rows;
  const std::vector<std::string> lines = split(table, '\n');
  for (std::size_t index = 2; index + 1 < lines.size(); ++index) {
    const std::vector<std::string> cells = split(lines[index], ';');
    const std::uint64_t unitNs = cells.at(3) == "1" ? 10'000 : 1;
    Row row{.type = toNumber(cells.at(1)),
            .timeNs = toNumber(cells.at(2)) * unitNs,
            .rawId = toNumber(cells.at(6)),
            .channel = toNumber(cells.at(7)),
            .flags = toNumber(cells.at(8)),
            .canFdFlags = toNumber(cells.at(11)),
            .dir = toNumber(cells.at(12)),
            .length = toNumber(cells.at(16)),
            .data = {}};
    for (std::size_t place = 17; place < cells.size(); ++place) {
      row.data += cells[place];
    }
    std::transform(row.data.begin(), row.data.end(), row.data.begin(),
                   [](char digit) { return digit >= 'A' ? static_cast<char>(digit - 'A' + 'a') : digit; });
    rows.push_back(row);
  }
  return rows;
}

bool run(const std::string& command) {
  return std::system(command.c_str()) == 0;  // NOLINT(cert-env33-c,concurrency-mt-unsafe): the paths are our own
}

class SecondOpinionOfTshark : public testing::Test {
 protected:
  void SetUp() override {
    if (!run("command -v tshark >/dev/null")) {
      GTEST_SKIP() << "tshark of the package tshark is not installed";
    }
  }

  // Compares each frame of the log, which begins at the date of the builder or of the generator, with the program's.
  void expectSameFrames(const std::string& log, std::uint64_t startMs) {
    const std::string path = folder_.write("log.blf", log);
    const std::string output = folder_.file("fields");
    // As a transport protocol in LIN frames the data would have another name.
    ASSERT_TRUE(run("TZ=UTC tshark --disable-protocol iso15765 -r " + path +
                    " -T fields -E separator=, -e frame.time_epoch -e frame.interface_name "
                    "-e frame.packet_flags_direction -e can.id -e can.flags.xtd -e can.flags.rtr -e can.len "
                    "-e data.data -e lin.frame_id -e lin.length -e can.flags.err >" +
                    output + " 2>/dev/null"));
    std::vector<Row> rows = readRows(convertLog(log).table);
    std::erase_if(rows, [](const Row& row) { return !row.isFrame(); });
    std::vector<std::string> lines = split(readFile(output), '\n');
    std::erase_if(lines, [](const std::string& line) { return line.empty() || line.ends_with(",1"); });
    ASSERT_EQ(lines.size(), rows.size());
    ASSERT_FALSE(rows.empty());
    for (std::size_t index = 0; index < rows.size(); ++index) {
      const Row& row = rows[index];
      const std::vector<std::string> cells = split(lines[index], ',');
      SCOPED_TRACE("frame " + std::to_string(index + 1) + ": " + lines[index]);
      EXPECT_EQ(cells.at(0).substr(0, cells.at(0).find('.')) + cells.at(0).substr(cells.at(0).find('.') + 1),
                std::to_string(startMs * 1'000'000 + row.timeNs));
      EXPECT_EQ(cells.at(1), (row.isLin() ? "LIN-" : "CAN-") + std::to_string(row.channel));
      if (row.isLin()) {  // of which the program knows no direction
        EXPECT_EQ(toNumber(cells.at(8).substr(2), 16), row.rawId);
        EXPECT_EQ(toNumber(cells.at(9)), row.length);
      } else {
        EXPECT_EQ(cells.at(2).back(), row.isSent() ? '2' : '1');
        EXPECT_EQ(toNumber(cells.at(3)), row.rawId & 0x1FFFFFFF);
        EXPECT_EQ(toNumber(cells.at(4)), row.rawId >> 31);
        EXPECT_EQ(toNumber(cells.at(5)), row.isRemote() ? 1U : 0U);
        EXPECT_EQ(toNumber(cells.at(6)), row.length);
      }
      EXPECT_EQ(cells.at(7), row.isRemote() ? "" : row.data);
      if (HasFailure()) {
        return;  // one frame is enough to read
      }
    }
  }

  static constexpr std::uint64_t kBuilderStartMs = 1'735'689'598'500;    // 2024-12-31 23:59:58.500
  static constexpr std::uint64_t kGeneratorStartMs = 1'709'280'000'000;  // 2024-03-01 08:00:00

 private:
  TempFolder folder_;
};

std::string fdFrame(std::uint32_t id, unsigned dlc, unsigned length, std::uint64_t timestamp) {
  const Bytes body = Bytes().u16(2).u8(1).u8(dlc).u32(id).zeros(5).u8(0x03).u8(length).zeros(5).counting(68);
  return object({.type = 100, .timestamp = timestamp}, body.str());
}

std::string anyLengthFrame(std::uint32_t id, unsigned dlc, unsigned length, std::uint32_t flags, unsigned direction) {
  Bytes body;
  body.u8(3)
      .u8(dlc)
      .u8(length)
      .u8(0)
      .u32(id)
      .zeros(4)
      .u32(flags)
      .zeros(18)
      .u8(direction)
      .zeros(5)
      .counting(length)
      .zeros(8);
  return object({.type = 101, .timestamp = 40'000'000}, body.str());
}

std::string linFrame(unsigned id, unsigned length, unsigned direction) {
  Bytes body;
  body.u16(2).u8(id).u8(length).counting(8, 0x51).zeros(4).u16(0x9A).u8(direction).zeros(5);
  return object({.type = 11, .timestamp = 50'000'000}, body.str());
}

TEST_F(SecondOpinionOfTshark, framesByHand) {
  std::string content;
  for (const std::uint32_t type : {1U, 86U}) {
    for (unsigned dlc = 0; dlc <= 8; ++dlc) {
      content += classicFrame({.type = type, .channel = 1, .id = 0x7FF - dlc, .dlc = static_cast<std::uint8_t>(dlc)});
      content += classicFrame(
          {.type = type, .channel = 5, .id = 0x80000000 | dlc, .flags = 0x01, .dlc = static_cast<std::uint8_t>(dlc)});
      content += classicFrame({.type = type, .id = 0x9FFFFFFF, .flags = 0x80, .dlc = static_cast<std::uint8_t>(dlc)});
    }
    content += classicFrame({.type = type, .timestamp = 12345, .timeUnit = xlatr::test::blf::kTenMicroseconds});
  }
  constexpr unsigned kLengths[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
  for (unsigned dlc = 0; dlc < std::size(kLengths); ++dlc) {
    content += fdFrame(0x80000555, dlc, kLengths[dlc], 1'234'567 + dlc);
    content += anyLengthFrame(0x123, dlc, kLengths[dlc], 0x3000, 0);
    content += anyLengthFrame(0x923456AB, dlc, kLengths[dlc], 0x7000, 1);
  }
  content += anyLengthFrame(0x100, 5, 0, 0x10, 0);
  for (unsigned length = 1; length <= 8; ++length) {
    content += linFrame(length * 7, length, length % 2);
  }
  expectSameFrames(file(stored(content)), kBuilderStartMs);
  expectSameFrames(file(zipped(content.substr(0, 1000)) + zipped(content.substr(1000))), kBuilderStartMs);
}

TEST_F(SecondOpinionOfTshark, generatedTraffic) {
  const TempFolder folder;
  tracegen::RecordingOptions options;
  options.form = tracegen::Form::Blf;
  options.maxMessages = 20'000;
  options.traffic.remoteRate = 300;
  options.traffic.disturbanceRate = 50;
  const std::string path = folder.file("generated.blf");
  tracegen::generateFile(options, path);
  expectSameFrames(readFile(path), kGeneratorStartMs);
}

TEST(SecondOpinionOfRecordings, everyObjectIsAsListed) {
  const fs::path recordings = fs::path(XLATR_RECORDINGS_DIR) / "blf";
  if (!fs::exists(recordings)) {
    GTEST_SKIP() << "there are no recordings in " << recordings;
  }
  const std::vector<fs::path> logs = xlatr::test::recordingsIn(recordings, ".blf");
  ASSERT_FALSE(logs.empty());
  for (const fs::path& log : logs) {
    SCOPED_TRACE(log.filename());
    const Converted converted = convertLog(readFile(log));
    EXPECT_TRUE(converted.table.starts_with("$BLFSTARTTIME=14/11/2023 22:13:20.123\n"));
    EXPECT_TRUE(converted.remarks.lines().empty());
    const std::vector<Row> rows = readRows(converted.table);
    const std::vector<std::string> lines = split(readFile(xlatr::test::frameListOf(log)), '\n');
    ASSERT_EQ(rows.size() + 2, lines.size());
    for (std::size_t index = 0; index < rows.size(); ++index) {
      // time_ns, kind, bus, id, ide, dir, edl, brs, esi, dlc, length, data, err
      const Row& row = rows[index];
      const std::vector<std::string> cells = split(lines[index + 1], ',');
      SCOPED_TRACE(lines[index + 1]);
      const std::string kind = row.type == 2    ? "error"
                               : row.type == 3  ? "overload"
                               : row.isLin()    ? "lin"
                               : row.isRemote() ? "remote"
                                                : "data";
      EXPECT_EQ(std::to_string(row.timeNs), cells.at(0));
      EXPECT_EQ(kind, cells.at(1));
      EXPECT_EQ(row.channel, toNumber(cells.at(2)));
      EXPECT_EQ(row.rawId & 0x1FFFFFFF, toNumber(cells.at(3), 16));
      EXPECT_EQ(row.rawId >> 31, toNumber(cells.at(4)));
      EXPECT_EQ(row.isSent() ? "1" : "0", cells.at(5));
      EXPECT_EQ(row.canFdFlags, toNumber(cells.at(6)) + 2 * toNumber(cells.at(7)) + 4 * toNumber(cells.at(8)));
      EXPECT_EQ(row.length, toNumber(cells.at(10)));
      EXPECT_EQ(row.isRemote() ? "" : row.data, cells.at(11));
      if (HasFailure()) {
        break;
      }
    }
  }
}

}  // namespace
}  // namespace blf2csv
