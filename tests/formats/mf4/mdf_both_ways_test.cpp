// What the two ways make of the same records, where a quirk makes them differ.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mf4_read_file.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::ChannelSpec;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::readFile;
using test::real;
using test::Texts;

// "1.5 us bus 5 dlc 2 error 255 0 [1122]" for each message, "not valid", or why there are no more.
Texts messagesOf(const MdfFileBuilder& file) {
  const test::TempFolder folder;
  const std::string path = folder.file("trace.mf4");
  std::ofstream(path, std::ios::binary) << file.asText();
  MdfReader reader{MdfInfo(path)};
  Texts texts;
  try {
    reader.setActive(true);
    for (MdfCanMessage message; reader.readInto(message);) {
      char text[64];
      const char* const end = std::to_chars(text, text + sizeof text, message.time.count()).ptr;
      std::string line(text, static_cast<std::size_t>(end - text));
      std::snprintf(text, sizeof text, " us bus %u dlc %u error %u %u [", message.bus, message.dlc,
                    unsigned{message.errorType}, unsigned{message.bitPosition});
      line += text;
      for (const std::uint8_t byte : message.data) {
        std::snprintf(text, sizeof text, "%02X", unsigned{byte});
        line += text;
      }
      texts.push_back(message.valid ? line + "]" : "not valid");
    }
  } catch (const std::exception& failure) {
    texts.emplace_back(failure.what());
  }
  return texts;
}

constexpr std::uint32_t kRecordSize = 48;

// One sorted group of frames with the time, which is `time` if that is given, and these parts.
void addFrames(MdfFileBuilder& file, const std::string& frame, const std::vector<ChannelSpec>& parts,
               const std::vector<ByteList>& records, ChannelSpec time = {}) {
  time.name = "t";
  time.type = 2;
  const std::uint64_t top = file.channels({time, {.name = frame, .dataType = 10, .composition = file.channels(parts)}});
  ByteList bytes;
  for (ByteList record : records) {
    record.resize(kRecordSize);
    bytes = join({bytes, record});
  }
  const std::uint64_t group = file.group({.channels = top, .cycles = records.size(), .dataBytes = kRecordSize});
  file.setFirstDataGroup(file.dataGroup(group, file.data(bytes)));
}

const ChannelSpec kTime = {.bitCount = 64};
const ChannelSpec kId = {.name = "ID", .byteOffset = 8, .bitCount = 32};
const ChannelSpec kDlc = {.name = "DLC", .byteOffset = 12};
const ChannelSpec kLength = {.name = "DataLength", .byteOffset = 12};
const ChannelSpec kBytes = {.name = "DataBytes", .type = 5, .dataType = 10, .byteOffset = 16, .bitCount = 16};

ByteList recordOf(std::uint64_t time = 1500) {
  return join({le(time, 8), le(0x123, 4), le(2, 4), {0x11, 0x22, 0x33, 0x44}});
}

struct ValueCase {
  const char* name;
  ChannelSpec bus;  // at 24
  ByteList bytes;
  const char* message;
  const char* frame;
};

TEST(MdfValue, differsBetweenTheWaysWhereAQuirkSaysSo) {
  const char* const kFive = "1.5 us bus 5 dlc 2 error 255 0 [1122]";
  MdfFileBuilder file;
  const std::uint64_t doubled = file.conversion(1, {0.0, 2.0});
  const std::uint64_t constant = file.conversion(1, {5.0, 0.0});
  const std::uint64_t ranges = file.conversion(6, {0.0, 9.0, 5.0});
  const std::uint64_t nearest = file.conversion(5, {0.0, 5.0, 3.0, 9.0, 20.0, 1.0});
  const std::uint64_t text = file.text("no conversion");
  const ValueCase cases[] = {
      {"plain", {}, {5}, kFive, "1500 data 5 123 dlc2 [1122]"},
      {"another type of channel", {.type = 4}, {5}, "not valid", "1500 data 5 123 dlc2 [1122]"},
      {"of another type of channel", {.type = 3}, {5}, "not valid", "1500 data 0 123 dlc2 [1122]"},
      {"a real number",
       {.dataType = 4, .bitCount = 32},
       {0, 0, 0xA0, 0x40},
       "1.5 us bus 1084227584 dlc 2 error 255 0 [1122]",
       "1500 data 5 123 dlc2 [1122]"},
      {"a real number of no size", {.dataType = 4, .bitCount = 8}, {5}, kFive, "1500 data 0 123 dlc2 [1122]"},
      {"a signed number with a conversion",
       {.dataType = 2, .conversion = nearest},
       {0xFE},
       "1.5 us bus 1 dlc 2 error 255 0 [1122]",
       "1500 data 5 123 dlc2 [1122]"},
      {"virtual", {.type = 6}, {7}, "not valid", "1500 data 0 123 dlc2 [1122]"},
      {"virtual, a constant", {.type = 6, .conversion = constant}, {7}, kFive, "1500 data 5 123 dlc2 [1122]"},
      {"virtual, of a range", {.type = 6, .conversion = ranges}, {7}, "not valid", "1500 data 5 123 dlc2 [1122]"},
      {"never valid", {.flags = 1}, {5}, kFive, "1500 data 0 123 dlc2 [1122]"},
      {"linear", {.conversion = doubled}, {4}, "not valid", "1500 data 8 123 dlc2 [1122]"},
      {"a constant", {.conversion = constant}, {4}, kFive, "1500 data 5 123 dlc2 [1122]"},
      {"ranges", {.conversion = ranges}, {4}, "not valid", "1500 data 5 123 dlc2 [1122]"},
      {"a table of values",
       {.conversion = nearest},
       {5},
       "1.5 us bus 3 dlc 2 error 255 0 [1122]",
       "1500 data 9 123 dlc2 [1122]"},
      {"a link to something else", {.conversion = text}, {5}, kFive, "1500 data 0 123 dlc2 [1122]"},
  };
  for (const ValueCase& each : cases) {
    SCOPED_TRACE(each.name);
    MdfFileBuilder copy = file;
    ChannelSpec bus = each.bus;
    bus.name = "BusChannel";
    bus.byteOffset = 24;
    ByteList record = recordOf();
    record.resize(24);
    addFrames(copy, "CAN_DataFrame", {bus, kId, kDlc, kLength, kBytes}, {join({record, each.bytes})}, kTime);
    EXPECT_EQ(messagesOf(copy), Texts{each.message});
    EXPECT_EQ(readFile(copy).frames, Texts{each.frame});
  }
}

TEST(MdfValue, ofADamagedConversionFailsOnTheCompatibleWay) {
  MdfFileBuilder file;
  addFrames(file, "CAN_DataFrame", {{.name = "BusChannel", .byteOffset = 24, .conversion = 1U << 20}, kId, kDlc},
            {recordOf()}, kTime);
  EXPECT_EQ(messagesOf(file), Texts{"Not all wanted bytes could be retrieved for building a HeaderSection"});
  const auto read = readFile(file);
  EXPECT_EQ(read.frames, Texts{"1500 data 0 123 dlc2"});
  EXPECT_EQ(read.damaged(), 1U);
}

TEST(MdfTimeReader, differsBetweenTheWaysWhereAQuirkSaysSo) {
  const struct {
    const char* name;
    ChannelSpec time;
    std::vector<double> conversion;
    const char* unit;
    ByteList bytes;
    const char* message;
    const char* frame;
  } cases[] = {
      {"nanoseconds", kTime, {}, "", le(1500, 8), "1.5", "1500"},
      {"seconds", kTime, {0.0, 1.0}, "s", le(2, 8), "2e+06", "2000000000"},
      {"a factor of its own", kTime, {0.0, 1e-7}, "s", le(15, 8), "", "1500"},
      {"an offset", kTime, {1e-6, 1e-9}, "s", le(500, 8), "", "1500"},
      {"another unit", kTime, {0.0, 1e-3}, "ms", le(2, 8), "", "2000"},
      {"a real of 16 bits", {.dataType = 4, .bitCount = 16}, {0.0, 1e-6}, "s", le(0x3C00, 8), "", "1000"},
      {"a part of a nanosecond", {.dataType = 4, .bitCount = 64}, {0.0, 1e-9}, "s", real(1500.25), "1.50025", "1500"},
      {"-1", {.dataType = 4, .bitCount = 64}, {0.0, 1e-9}, "s", real(-1.0), "", "-1"},
      {"no number", {.dataType = 4, .bitCount = 64}, {0.0, 1e-9}, "s", real(-std::nan("")), "", ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    MdfFileBuilder file;
    ChannelSpec time = each.time;
    time.conversion = each.conversion.empty() ? 0 : file.conversion(1, each.conversion, each.unit);
    ByteList record = recordOf(0);
    std::copy(each.bytes.begin(), each.bytes.end(), record.begin());
    addFrames(file, "CAN_DataFrame", {{.name = "BusChannel", .byteOffset = 14}, kId, kDlc, kLength, kBytes}, {record},
              time);
    const std::string message = each.message;
    const std::string frame = each.frame;
    EXPECT_EQ(messagesOf(file), Texts{message.empty() ? "not valid" : message + " us bus 0 dlc 2 error 255 0 [1122]"});
    EXPECT_EQ(readFile(file).frames, frame.empty() ? Texts{} : Texts{frame + " data 0 123 dlc2 [1122]"});
  }
}

TEST(MdfFrameLayout, readsCodedErrorsOnTheCompatibleWayAlone) {
  MdfFileBuilder file;
  const std::uint64_t types = file.conversion(5, {0.0, 3.0});
  const ChannelSpec position = {.name = "BitPosition", .dataType = 1, .byteOffset = 24, .bitCount = 16, .flags = 0x440};
  addFrames(file, "CAN_ErrorFrame",
            {{.name = "ErrorType", .byteOffset = 26, .bitCount = 32, .flags = 0x440, .conversion = types}, position},
            {join({recordOf(), le(0, 4), {0x01, 0x02}, le(1, 4)})}, kTime);
  // The lowest byte of 3.0 is 0; the table has 3 for 1, and the position is 0x102, counted from 3.
  EXPECT_EQ(messagesOf(file), Texts{"1.5 us bus 1 dlc 0 error 0 2 []"});
  EXPECT_EQ(readFile(file).frames, Texts{"1500 error 0 0 error_type=2 error_position=261"});
}

TEST(MdfFrameLayout, readsPayloadsOfAnyTypeOnTheCompleteWay) {
  MdfFileBuilder file;
  ChannelSpec bytes = kBytes;
  bytes.dataType = 6;
  addFrames(file, "CAN_DataFrame", {{.name = "BusChannel", .byteOffset = 24}, kId, kDlc, kLength, bytes}, {recordOf()},
            kTime);
  EXPECT_EQ(messagesOf(file), Texts{"not valid"});
  EXPECT_EQ(readFile(file).frames, Texts{"1500 data 0 123 dlc2 [1122]"});
}

TEST(MdfFrameLayout, readsPayloadsInAStreamOnTheCompleteWay) {
  MdfFileBuilder file;
  const std::uint64_t payloads = file.block("SD", {}, join({le(2, 4), {0xAA, 0xBB}}));
  const ChannelSpec bytes = {.name = "DataBytes",
                             .type = 1,
                             .dataType = 10,
                             .byteOffset = 24,
                             .bitCount = 64,
                             .flags = 0x4400,
                             .data = payloads};
  addFrames(file, "CAN_DataFrame", {{.name = "BusChannel", .byteOffset = 40}, kId, kDlc, kLength, bytes}, {recordOf()},
            kTime);
  EXPECT_EQ(messagesOf(file), Texts{"VLSD stream channels are not supported"});
  EXPECT_EQ(readFile(file).frames, Texts{"1500 data 0 123 dlc2 [AABB]"});
}

// Each payload takes the place of the one before.
TEST(MdfFrameLayout, ofTwoPayloadsTheLastCountsOnTheCompatibleWay) {
  MdfFileBuilder file;
  ChannelSpec second = kBytes;
  second.byteOffset = 18;
  addFrames(file, "CAN_DataFrame", {{.name = "BusChannel", .byteOffset = 24}, kId, kDlc, kLength, kBytes, second},
            {recordOf()}, kTime);
  EXPECT_EQ(messagesOf(file), Texts{"1.5 us bus 0 dlc 2 error 255 0 [3344]"});
  EXPECT_EQ(readFile(file).frames, Texts{"1500 data 0 123 dlc2 [1122]"});
}

TEST(MdfRecords, ofNoGroupEndReadingOnTheCompatibleWay) {
  MdfFileBuilder file;
  const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = 2, .recordId = 1});
  const ByteList records = join({le(1, 1), MdfFileBuilder::record(1), le(9, 1), MdfFileBuilder::record(2)});
  file.setFirstDataGroup(file.dataGroup(group, file.data(records), 1));
  EXPECT_EQ(messagesOf(file), (Texts{"0.001 us bus 1 dlc 2 error 255 0 [1122334455667788]", "Unknown record Id"}));
  const auto read = readFile(file);
  EXPECT_EQ(read.frames, Texts{"1 data 1 123 Rx dlc2 [1122]"});
  EXPECT_GE(read.damaged(), 1U);
}

TEST(MdfRecords, ofFlatChannelsAreReadOnTheCompleteWay) {
  MdfFileBuilder file;
  const std::uint64_t channels = file.channels({{.name = "t", .type = 2, .bitCount = 64},
                                                {.name = "CAN_DataFrame.ID", .byteOffset = 9, .bitCount = 32},
                                                {.name = "CAN_DataFrame.DLC", .byteOffset = 14}});
  const std::uint64_t group = file.group({.channels = channels, .cycles = 1});
  file.setFirstDataGroup(file.dataGroup(group, file.data(MdfFileBuilder::record(1))));
  EXPECT_EQ(messagesOf(file), Texts{"not valid"});
  EXPECT_EQ(readFile(file).frames, Texts{"1 data 0 123 dlc2"});
}

// 300 needs more than a byte; of two groups with one id the later one counts, as on both ways.
TEST(MdfRecords, haveTheGroupOfTheirIdOnBothWays) {
  for (const std::uint64_t id : {std::uint64_t{7}, std::uint64_t{300}}) {
    MdfFileBuilder file;
    const std::uint64_t later = file.group({.channels = file.frameChannels(), .cycles = 1, .recordId = id});
    const std::uint64_t remote = file.frameChannels("CAN_RemoteFrame");
    const std::uint64_t group = file.group({.channels = remote, .cycles = 1, .recordId = id}, later);
    file.setFirstDataGroup(file.dataGroup(group, file.data(join({le(id, 2), MdfFileBuilder::record(1)})), 2));
    EXPECT_EQ(messagesOf(file), Texts{"0.001 us bus 1 dlc 2 error 255 0 [1122334455667788]"});
    EXPECT_EQ(readFile(file).frames, Texts{"1 data 1 123 Rx dlc2 [1122]"});
  }
}

}  // namespace
}  // namespace xlatr
