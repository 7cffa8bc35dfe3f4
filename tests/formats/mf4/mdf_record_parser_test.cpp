#include "formats/mf4/mdf_record_parser.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_file_builder.hpp"
#include "xlatr/failures.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::ChannelSpec;
using test::GroupSpec;
using test::join;
using test::le;
using test::MdfFileBuilder;
using test::real;
using test::textBytes;

// A file whose first group is the one of the last group() call, and the messages of its records.
class Group {
 public:
  Group(MdfFileBuilder file, GroupSpec spec) : Group(withGroup(std::move(file), std::move(spec))) {}

  // The record is filled up with zeros or cut.
  MdfCanMessage parse(ByteList record) {
    record.resize(parser_->recordSize() + RecordBytes::kPadding);
    MdfCanMessage message;
    parser_->parse(record.data(), message);
    return message;
  }
  void parseInto(ByteList record, MdfCanMessage& message) {
    record.resize(parser_->recordSize() + RecordBytes::kPadding);
    parser_->parse(record.data(), message);
  }

 private:
  explicit Group(const MdfFileBuilder& file) : header_(std::make_unique<MdfFileHeader>(file.bytes())) {
    parser_.emplace(*header_->header()->firstDataGroup()->firstChannelGroup());
  }
  static MdfFileBuilder withGroup(MdfFileBuilder file, GroupSpec spec) {
    file.setFirstDataGroup(file.dataGroup(file.group(std::move(spec)), 0));
    return file;
  }

  std::unique_ptr<MdfFileHeader> header_;
  std::optional<MdfRecordParser> parser_;
};

// The group of a frame with the parts that a data frame needs, after those of a test.
Group frameOf(MdfFileBuilder file, std::vector<ChannelSpec> parts, const std::string& frame = "CAN_DataFrame") {
  const std::vector<ChannelSpec> needed = {
      {.name = frame + ".BusChannel", .byteOffset = 8},
      {.name = frame + ".ID", .byteOffset = 9, .bitCount = 32},
      {.name = frame + ".DLC", .byteOffset = 14},
      {.name = frame + ".DataLength", .byteOffset = 15},
      {.name = frame + ".DataBytes", .type = 5, .dataType = 10, .byteOffset = 16, .bitCount = 64},
  };
  parts.insert(parts.begin(), needed.begin(), needed.end());
  const std::uint64_t top = file.topChannels(frame, file.channels(parts));
  return {std::move(file), {.channels = top, .dataBytes = 40}};
}

ByteList frameRecord(std::uint32_t id = 0x123, std::uint8_t length = 2) {
  return MdfFileBuilder::record(0, id, 0, length);
}

// Time.

struct TimeCase {
  const char* name;
  std::uint8_t dataType;
  std::uint32_t bitCount;
  ByteList bytes;
  std::optional<double> time;
};

TEST(MdfRecordParserTest, readsTimesOfAllNumberTypes) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const TimeCase cases[] = {
      {"unsigned", 0, 64, le(1500, 8), 1.5},
      {"unsigned above the signed range", 0, 64, le(0x8000000000000000, 8), 9223372036854775.808},
      {"unsigned of 32 bits", 0, 32, le(0xFFFFFFFF00000BB8, 8), 3.0},
      {"big-endian", 1, 64, {0, 0, 0, 0, 0, 0, 0x05, 0xDC}, 1.5},
      {"big-endian of 16 bits", 1, 16, {0x05, 0xDC, 0xFF}, 1.5},
      {"signed", 2, 64, le(static_cast<std::uint64_t>(-2500), 8), -2.5},
      {"signed of 16 bits", 2, 16, {0xFE, 0xFF, 0xFF}, -0.002},
      {"signed big-endian of 24 bits", 3, 24, {0xFF, 0xFF, 0xFE, 0x55}, -0.002},
      {"real", 4, 64, real(2500.0), 2.5},
      {"real of 32 bits", 4, 32, {0x00, 0x40, 0x1C, 0x45}, 2.5},
      {"real big-endian", 5, 64, {0x40, 0xA3, 0x88, 0, 0, 0, 0, 0}, 2.5},
      {"real of 32 bits big-endian", 5, 32, {0x45, 0x1C, 0x40, 0x00}, 2.5},
      {"real of 16 bits", 4, 16, le(0, 8), std::nullopt},
      {"text", 6, 64, le(0, 8), std::nullopt},
      {"bytes", 10, 64, le(0, 8), std::nullopt},
      {"no number", 4, 64, real(nan), std::nullopt},
      {"what stands for no time", 4, 64, real(-1.0), std::nullopt},
      {"more than 64 bits", 0, 65, le(0, 8), std::nullopt},
      {"no bits", 0, 0, le(77, 8), 0.0},
      {"no bits, signed", 2, 0, le(77, 8), 0.0},
  };
  for (const TimeCase& each : cases) {
    SCOPED_TRACE(each.name);
    MdfFileBuilder file;
    const std::uint64_t frame = file.channels({
        {.name = "CAN_DataFrame",
         .composition = file.channels({{.name = "RTR", .type = 6, .conversion = file.conversion(1, {1, 0})},
                                       {.name = "BusChannel", .byteOffset = 8},
                                       {.name = "ID", .byteOffset = 8},
                                       {.name = "DLC", .byteOffset = 8}})},
    });
    const std::uint64_t time =
        file.channel({.name = "t", .type = 2, .dataType = each.dataType, .bitCount = each.bitCount}, frame);
    Group group(std::move(file), {.channels = time, .dataBytes = 16});
    const MdfCanMessage message = group.parse(each.bytes);
    EXPECT_EQ(message.valid, each.time.has_value());
    EXPECT_EQ(message.time, RealMicroseconds(each.time.value_or(0.0)));
  }
}

TEST(MdfRecordParserTest, readsTimesOfAllUnits) {
  const struct {
    const char* name;
    std::uint8_t type;
    std::vector<double> values;
    const char* unit;
    std::optional<double> time;
  } cases[] = {
      {"nanoseconds", 1, {0.0, 1e-9}, "s", 0.0025},
      {"microseconds", 1, {0.0, 1e-6}, "s", 2.5},
      {"milliseconds", 1, {0.0, 0.001}, "s", 2500.0},
      {"seconds", 1, {0.0, 1.0}, "s", 2500000.0},
      {"another factor", 1, {0.0, 1e-3 + 1e-9}, "s", std::nullopt},
      {"an offset", 1, {1.0, 1e-9}, "s", std::nullopt},
      {"another unit", 1, {0.0, 1e-9}, "ms", std::nullopt},
      {"no unit", 1, {0.0, 1e-9}, "", std::nullopt},
      {"three values", 1, {0.0, 1e-9, 0.0}, "s", std::nullopt},
      {"one to one", 0, {}, "s", std::nullopt},
      {"a table", 5, {0.0, 1e-9}, "s", std::nullopt},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    MdfFileBuilder file;
    const std::uint64_t frame = file.channel({.name = "CAN_ErrorFrame"});
    const std::uint64_t conversion = file.conversion(each.type, each.values, each.unit);
    const std::uint64_t time =
        file.channel({.name = "t", .type = 2, .dataType = 4, .bitCount = 64, .conversion = conversion}, frame);
    Group group(std::move(file), {.channels = time});
    const MdfCanMessage message = group.parse(real(2.5));
    EXPECT_EQ(message.valid, each.time.has_value());
    EXPECT_EQ(message.time, RealMicroseconds(each.time.value_or(0.0)));
  }
}

TEST(MdfRecordParserTest, aTimeOutsideItsRecordIsNotRead) {
  for (const std::uint32_t offset : {0U, 16U, 17U, 0xFFFFFFFFU}) {
    MdfFileBuilder file;
    const std::uint64_t frame = file.channel({.name = "CAN_ErrorFrame"});
    const std::uint64_t time =
        file.channel({.name = "t", .type = 2, .dataType = 0, .byteOffset = offset, .bitCount = 64}, frame);
    Group group(std::move(file), {.channels = time});
    EXPECT_EQ(group.parse({}).valid, offset <= 16) << offset;
  }
}

// The channels of a message.

TEST(MdfRecordParserTest, needsExactlyTwoTopChannels) {
  const struct {
    const char* name;
    std::vector<ChannelSpec> channels;
    bool valid;
  } cases[] = {
      {"none", {}, false},
      {"time alone", {{.name = "t", .type = 2}}, false},
      {"frame alone", {{.name = "CAN_ErrorFrame"}}, false},
      {"both", {{.name = "t", .type = 2}, {.name = "CAN_ErrorFrame"}}, true},
      {"frame first", {{.name = "CAN_ErrorFrame"}, {.name = "t", .type = 2}}, true},
      {"any case", {{.name = "t", .type = 2}, {.name = "can_ERRORframe"}}, true},
      {"with others", {{.name = "x"}, {.name = "t", .type = 2}, {.name = "y"}, {.name = "CAN_ErrorFrame"}}, true},
      {"three", {{.name = "t", .type = 2}, {.name = "CAN_ErrorFrame"}, {.name = "CAN_ErrorFrame"}}, false},
      {"two frames", {{.name = "CAN_ErrorFrame"}, {.name = "CAN_ErrorFrame"}}, true},
      {"an overload frame", {{.name = "t", .type = 2}, {.name = "CAN_OverloadFrame"}}, false},
      {"another type", {{.name = "t", .type = 2}, {.name = "CAN_ErrorFrame", .type = 1}}, false},
      {"a master named after a frame", {{.name = "CAN_DataFrame", .type = 2}, {.name = "CAN_ErrorFrame"}}, true},
  };
  for (const auto& each : cases) {
    MdfFileBuilder file;
    const std::uint64_t channels = file.channels(each.channels);
    EXPECT_EQ(Group(std::move(file), {.channels = channels}).parse({}).valid, each.valid) << each.name;
  }
}

TEST(MdfRecordParserTest, theTimeOfAFrameThatIsNotReadCounts) {
  MdfFileBuilder file;
  const std::uint64_t channels = file.topChannels("CAN_DataFrame", 0);
  const MdfCanMessage message = Group(std::move(file), {.channels = channels}).parse(le(5000, 8));
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.time, RealMicroseconds(5.0));
}

TEST(MdfRecordParserTest, cutsTheFrameAndItsSeparatorFromNames) {
  const struct {
    std::uint16_t separator;
    std::string name;
    bool found;
  } cases[] = {
      {0, "CAN_DataFrame.BusChannel", true},
      {0, "BusChannel", true},
      {0, "buschannel", true},
      {0, "CAN_DataFrame.CAN_DataFrame.BusChannel", false},
      {0, "CAN_DataFrame/BusChannel", false},
      {0, "BusCAN_DataFrame.Channel", true},
      {'/', "CAN_DataFrame/BusChannel", true},
      {'/', "CAN_DataFrame.BusChannel", false},
      {'\\', "CAN_DataFrame\\BusChannel", true},
      {0xB7,
       "CAN_DataFrame\xC2\xB7"
       "BusChannel",
       true},
      {0x2192,
       "CAN_DataFrame\xE2\x86\x92"
       "BusChannel",
       true},
  };
  for (const auto& each : cases) {
    MdfFileBuilder file;
    const std::uint64_t top = file.topChannels("CAN_DataFrame", file.channels({{.name = each.name, .byteOffset = 8}}));
    Group group(std::move(file), {.channels = top, .separator = each.separator});
    EXPECT_EQ(group.parse(MdfFileBuilder::record(0)).foundFields, each.found ? 1U : 0U) << each.name;
  }
}

TEST(MdfRecordParserTest, aLongNameIsNone) {
  MdfFileBuilder file;
  std::string name = "BusChannel";
  const std::uint64_t parts = file.channels({{.name = name.append(4096, '\0'), .byteOffset = 8}});
  const std::uint64_t top = file.topChannels("CAN_DataFrame", parts);
  EXPECT_EQ(Group(std::move(file), {.channels = top}).parse({}).foundFields, 0U);
}

TEST(MdfRecordParserTest, eachKindOfFrameNeedsItsFields) {
  struct Case {
    const char* frame;
    std::vector<const char*> fields;
    bool valid;
  };
  const Case cases[] = {
      {"CAN_DataFrame", {"BusChannel", "ID", "DLC", "DataLength", "DataBytes"}, true},
      {"CAN_DataFrame", {"ID", "DLC", "DataLength", "DataBytes"}, false},
      {"CAN_DataFrame", {"BusChannel", "DLC", "DataLength", "DataBytes"}, false},
      {"CAN_DataFrame", {"BusChannel", "ID", "DataLength", "DataBytes"}, false},
      {"CAN_DataFrame", {"BusChannel", "ID", "DLC", "DataBytes"}, false},
      {"CAN_DataFrame", {"BusChannel", "ID", "DLC", "DataLength"}, false},
      {"CAN_RemoteFrame", {"BusChannel", "ID", "DLC"}, true},
      {"CAN_RemoteFrame", {"ID", "DLC"}, false},
      {"CAN_RemoteFrame", {"BusChannel", "DLC"}, false},
      {"CAN_RemoteFrame", {"BusChannel", "ID"}, false},
      {"CAN_ErrorFrame", {}, true},
      {"CAN_DataFrame", {"BusChannel", "ID", "DLC", "RTR"}, true},  // remote by its bit
  };
  for (const Case& each : cases) {
    MdfFileBuilder file;
    std::vector<ChannelSpec> specs;
    for (const std::string name : each.fields) {
      specs.push_back({.name = name, .byteOffset = 8});
      if (name == "DataBytes") {
        specs.back().dataType = 10;
      }
    }
    const std::uint64_t top = file.topChannels(each.frame, file.channels(specs));
    EXPECT_EQ(Group(std::move(file), {.channels = top}).parse(join({le(0, 8), {1}})).valid, each.valid) << each.frame;
  }
}

TEST(MdfRecordParserTest, theFrameSetsKindAndType) {
  const struct {
    const char* frame;
    MessageKind kind;
    MessageType type;
    bool remote;
  } cases[] = {
      {"CAN_DataFrame", MessageKind::DT, MessageType::Rx, false},
      {"CAN_RemoteFrame", MessageKind::RR, MessageType::Rx, true},
      {"CAN_ErrorFrame", MessageKind::ER, MessageType::Error, false},
  };
  for (const auto& each : cases) {
    const MdfCanMessage message = frameOf({}, {}, each.frame).parse(frameRecord());
    EXPECT_TRUE(message.valid);
    EXPECT_EQ(message.kind, each.kind);
    EXPECT_EQ(message.type, each.type);
    EXPECT_EQ(message.isRemote, each.remote);
    EXPECT_EQ(message.data.empty(), each.remote);
    EXPECT_EQ(message.length, 2U);
  }
}

TEST(MdfRecordParserTest, bitsOfCanFdMakeTheKind) {
  // EDL, BRS and ESI, in any order of the channels.
  const MessageKind kinds[] = {MessageKind::DT, MessageKind::FD, MessageKind::FB, MessageKind::FB,
                               MessageKind::FE, MessageKind::FE, MessageKind::BI, MessageKind::BI};
  const std::vector<std::vector<std::string>> orders = {{"EDL", "BRS", "ESI"}, {"EDL", "ESI", "BRS"},
                                                        {"BRS", "EDL", "ESI"}, {"BRS", "ESI", "EDL"},
                                                        {"ESI", "EDL", "BRS"}, {"ESI", "BRS", "EDL"}};
  for (const auto& order : orders) {
    std::vector<ChannelSpec> parts;
    for (const std::string& name : order) {
      const auto bit = static_cast<std::uint8_t>(name == "EDL" ? 0 : name == "BRS" ? 1 : 2);
      parts.push_back({.name = name, .bitOffset = bit, .byteOffset = 13, .bitCount = 1});
    }
    Group group = frameOf({}, parts);
    for (std::uint8_t bits = 0; bits < 8; ++bits) {
      EXPECT_EQ(group.parse(MdfFileBuilder::record(0, 1, bits)).kind, kinds[bits]) << order[0] << order[1];
    }
  }
}

TEST(MdfRecordParserTest, theTopBitOfAnIdentifierMarksAnExtendedOne) {
  Group group = frameOf({}, {});
  const MdfCanMessage extended = group.parse(frameRecord(0x80000123));
  EXPECT_TRUE(extended.extended);
  EXPECT_EQ(extended.id, 0x123U);
  const MdfCanMessage base = group.parse(frameRecord(0x123));
  EXPECT_FALSE(base.extended);
  EXPECT_EQ(base.id, 0x123U);
}

TEST(MdfRecordParserTest, theTopBitOfAnIdentifierAndIdeCountInTheOrderOfTheirChannels) {
  constexpr std::uint32_t kMarked = 0x80000123;
  const struct {
    const char* name;
    std::vector<std::string> order;
    std::uint32_t rawId;
    std::uint8_t ide;
    bool extended;
  } cases[] = {
      {"IDE takes the top bit back", {"ID", "IDE"}, kMarked, 0, false},
      {"both say so", {"ID", "IDE"}, kMarked, 1, true},
      {"IDE alone says so", {"ID", "IDE"}, 0x123, 1, true},
      {"neither says so", {"ID", "IDE"}, 0x123, 0, false},
      {"the top bit after IDE", {"IDE", "ID"}, kMarked, 0, true},
      {"an identifier without the top bit leaves IDE", {"IDE", "ID"}, 0x123, 1, true},
  };
  for (const auto& each : cases) {
    MdfFileBuilder file;
    std::vector<ChannelSpec> parts = {{.name = "BusChannel", .byteOffset = 8}, {.name = "DLC", .byteOffset = 14}};
    for (const std::string& name : each.order) {
      parts.push_back(name == "ID" ? ChannelSpec{.name = name, .byteOffset = 9, .bitCount = 32}
                                   : ChannelSpec{.name = name, .byteOffset = 13, .bitCount = 1});
    }
    const std::uint64_t top = file.topChannels("CAN_RemoteFrame", file.channels(parts));
    const MdfCanMessage message =
        Group(std::move(file), {.channels = top}).parse(MdfFileBuilder::record(0, each.rawId, each.ide));
    EXPECT_TRUE(message.valid) << each.name;
    EXPECT_EQ(message.extended, each.extended) << each.name;
    EXPECT_EQ(message.id, 0x123U) << each.name;
  }
}

TEST(MdfRecordParserTest, onlyTheFirstIdentifierCounts) {
  const MdfCanMessage message =
      frameOf({}, {{.name = "ID", .byteOffset = 15, .bitCount = 8}}).parse(frameRecord(0x321));
  EXPECT_EQ(message.id, 0x321U);
  EXPECT_TRUE(message.valid);
}

TEST(MdfRecordParserTest, directionAndRemoteBitCount) {
  Group group = frameOf({}, {{.name = "Dir", .byteOffset = 13, .bitCount = 1},
                             {.name = "RTR", .bitOffset = 1, .byteOffset = 13, .bitCount = 1}});
  EXPECT_EQ(group.parse(MdfFileBuilder::record(0, 1, 0)).direction, MessageDirection::Rx);
  const MdfCanMessage sent = group.parse(MdfFileBuilder::record(0, 1, 1));
  EXPECT_EQ(sent.direction, MessageDirection::Tx);
  EXPECT_EQ(sent.type, MessageType::Tx);
  const MdfCanMessage remote = group.parse(MdfFileBuilder::record(0, 1, 2));
  EXPECT_EQ(remote.kind, MessageKind::RR);
  EXPECT_TRUE(remote.isRemote);
}

TEST(MdfRecordParserTest, aSentErrorFrameStaysAnError) {
  Group group = frameOf({}, {{.name = "Dir", .byteOffset = 13, .bitCount = 1}}, "CAN_ErrorFrame");
  const MdfCanMessage message = group.parse(MdfFileBuilder::record(0, 1, 1));
  EXPECT_EQ(message.direction, MessageDirection::Tx);
  EXPECT_EQ(message.type, MessageType::Error);
}

TEST(MdfRecordParserTest, otherKindsOfBusAreRefused) {
  for (const std::uint32_t busKind : {0U, 1U, 2U, 3U}) {
    Group group = frameOf({}, {});
    MdfCanMessage message;
    message.busKind = busKind;
    try {
      group.parseInto(frameRecord(), message);
      EXPECT_TRUE(busKind == 0 || busKind == 3);
    } catch (const ConverterProcessingException& failure) {
      EXPECT_TRUE(busKind == 1 || busKind == 2);
      EXPECT_STREQ(failure.what(), "Not implemented");
    }
  }
}

TEST(MdfRecordParserTest, fieldsOfNoMatterAreFoundAndChangeNothing) {
  std::vector<ChannelSpec> parts;
  for (const char* const name :
       {"OriginalTime", "CRC", "SRR", "WakeUp", "SingleWire", "FrameDuration", "R0", "R1", "None", "Whatever"}) {
    parts.push_back({.name = name, .byteOffset = 1000});
  }
  const MdfCanMessage message = frameOf({}, parts).parse(frameRecord());
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.foundFields, 117U | 2U | 256U | 1024U | 0x10000U | 0x20000U | 0x40000U | 0x4000U | 0x8000U);
}

// Integers.

TEST(MdfRecordParserTest, readsIntegersOfAnyPlaceAndSize) {
  const struct {
    const char* name;
    std::uint8_t dataType;
    std::uint8_t bitOffset;
    std::uint32_t byteOffset;
    std::uint32_t bitCount;
    std::optional<std::uint32_t> value;
  } cases[] = {
      // The record's bytes from 32 on: 12 34 56 78 9A BC DE F0.
      {"a byte", 0, 0, 32, 8, 0x12},
      {"two bytes", 0, 0, 32, 16, 0x3412},
      {"big-endian", 1, 0, 32, 16, 0x1234},
      {"three bytes big-endian", 1, 0, 33, 24, 0x345678},
      {"bits", 0, 4, 33, 4, 0x3},
      {"bits of a big-endian byte", 1, 4, 33, 4, 0x3},
      {"signed is not extended", 2, 0, 37, 8, 0xBC},
      {"signed big-endian", 3, 0, 37, 16, 0xBCDE},
      {"real as its bits", 4, 0, 32, 32, 0x78563412},
      {"the low 32 of 64 bits", 0, 0, 32, 64, 0x78563412},
      {"the low 32 of 64 big-endian bits", 1, 0, 32, 64, 0x9ABCDEF0},
      // Ten bits at bit 7 take two bytes; the seventeenth bit is lost.
      {"more bits than whole bytes", 0, 7, 32, 10, 0x3412U >> 7},
      {"a bit offset beyond the bytes", 0, 8, 32, 8, 0},
      {"a bit offset beyond all bytes", 0, 255, 32, 64, 0},
      {"no bits", 0, 0, 32, 0, 0},
      {"no bits big-endian", 1, 0, 40, 0, 0},
      {"65 bits", 0, 0, 32, 65, std::nullopt},
      {"the last byte", 0, 0, 39, 8, 0xF0},
      {"past the record", 0, 0, 40, 8, std::nullopt},
      {"across the end", 0, 0, 39, 9, std::nullopt},
      {"text", 6, 0, 32, 8, std::nullopt},
      {"a huge offset", 0, 0, 0xFFFFFFFF, 64, std::nullopt},
      {"a huge count", 0, 0, 32, 0xFFFFFFFF, std::nullopt},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Group group = frameOf({}, {{.name = "DLC",
                                .dataType = each.dataType,
                                .bitOffset = each.bitOffset,
                                .byteOffset = each.byteOffset,
                                .bitCount = each.bitCount}});
    const ByteList record = join({frameRecord(),
                                  le(0, 8),
                                  {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0},
                                  {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}});
    EXPECT_EQ(group.parse(record).dlc, each.value.value_or(2U));
  }
}

TEST(MdfRecordParserTest, virtualChannelsHaveTheValueOfTheirConversion) {
  MdfFileBuilder file;
  const std::uint64_t constant = file.conversion(1, {4.6, 0.0});
  const std::uint64_t slope = file.conversion(1, {4.6, 1.0});
  EXPECT_EQ(frameOf(file, {{.name = "DLC", .type = 6, .conversion = constant}}).parse(frameRecord()).dlc, 5U);
  EXPECT_EQ(frameOf(file, {{.name = "DLC", .type = 6, .conversion = slope}}).parse(frameRecord()).dlc, 2U);
  EXPECT_EQ(frameOf(file, {{.name = "DLC", .type = 6}}).parse(frameRecord()).dlc, 2U);
}

TEST(MdfRecordParserTest, conversionsReplaceTheirValue) {
  MdfFileBuilder file;
  const std::uint64_t table = file.conversion(5, {0, 7, 10, 9});
  const std::uint64_t oneToOne = file.conversion(0, {});
  const std::uint64_t huge = file.conversion(5, {0, 1e300});
  const std::uint64_t negative = file.conversion(5, {0, -2});
  const auto dlcOf = [&](std::uint64_t conversion, std::uint8_t raw) {
    return frameOf(file, {{.name = "DLC", .byteOffset = 24, .conversion = conversion}})
        .parse(join({frameRecord(), {raw}}))
        .dlc;
  };
  EXPECT_EQ(dlcOf(table, 0), 7U);
  EXPECT_EQ(dlcOf(table, 5), 7U);
  EXPECT_EQ(dlcOf(table, 6), 9U);
  EXPECT_EQ(dlcOf(table, 200), 9U);
  EXPECT_EQ(dlcOf(oneToOne, 5), 2U);  // not understood, so not read
  EXPECT_EQ(dlcOf(huge, 5), 2U);
  EXPECT_EQ(dlcOf(negative, 5), 0xFFFFFFFEU);
}

// Payload.

TEST(MdfRecordParserTest, fixedPayloadsAreTakenWhole) {
  const MdfCanMessage message = frameOf({}, {}).parse(frameRecord(1, 3));
  EXPECT_EQ(message.length, 3U);
  EXPECT_EQ(message.data, (ByteList{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}));
}

TEST(MdfRecordParserTest, aLengthAboveThePayloadIsNotRead) {
  const MdfCanMessage message = frameOf({}, {}).parse(frameRecord(1, 9));
  EXPECT_FALSE(message.valid);
  EXPECT_EQ(message.length, 0U);
  const MdfCanMessage error = frameOf({}, {}, "CAN_ErrorFrame").parse(frameRecord(1, 9));
  EXPECT_TRUE(error.valid);
  EXPECT_EQ(error.length, 0U);
  const MdfCanMessage remote = frameOf({}, {}, "CAN_RemoteFrame").parse(frameRecord(1, 9));
  EXPECT_TRUE(remote.valid);
  EXPECT_EQ(remote.length, 9U);
}

TEST(MdfRecordParserTest, payloadsOutsideTheirRecordAreNotRead) {
  const struct {
    std::uint32_t offset;
    std::uint32_t bits;
    bool valid;
  } cases[] = {{32, 64, true},  {33, 64, false},         {33, 56, true},
               {33, 57, false}, {0xFFFFFFFF, 64, false}, {0, 0xFFFFFFFF, false}};
  for (const auto& each : cases) {
    MdfFileBuilder file;
    const std::uint64_t parts = file.channels({
        {.name = "BusChannel"},
        {.name = "ID"},
        {.name = "DLC"},
        {.name = "DataLength"},
        {.name = "DataBytes", .type = 5, .dataType = 10, .byteOffset = each.offset, .bitCount = each.bits},
    });
    const std::uint64_t top = file.topChannels("CAN_DataFrame", parts);
    EXPECT_EQ(Group(std::move(file), {.channels = top, .dataBytes = 40}).parse({}).valid, each.valid) << each.offset;
  }
}

TEST(MdfRecordParserTest, payloadsThatAreNoByteArrayAreNotRead) {
  MdfFileBuilder file;
  const std::uint64_t parts = file.channels({{.name = "DataBytes", .type = 5, .dataType = 0, .bitCount = 64}});
  const std::uint64_t top = file.topChannels("CAN_ErrorFrame", parts);
  const MdfCanMessage message = Group(std::move(file), {.channels = top}).parse(frameRecord());
  EXPECT_TRUE(message.valid);
  EXPECT_TRUE(message.data.empty());
  EXPECT_EQ(message.foundFields, 0U);
}

// A frame whose payload stands in signal data.
Group storedFrame(MdfFileBuilder file, std::uint64_t data, std::uint32_t flags = 0x400,
                  const std::string& frame = "CAN_DataFrame", std::uint32_t bitCount = 64) {
  const std::uint64_t parts = file.channels({
      {.name = "BusChannel", .byteOffset = 8},
      {.name = "ID", .byteOffset = 9, .bitCount = 32},
      {.name = "DLC", .byteOffset = 14},
      {.name = "DataLength", .byteOffset = 15},
      {.name = "DataBytes",
       .type = 1,
       .dataType = 10,
       .byteOffset = 16,
       .bitCount = bitCount,
       .flags = flags,
       .data = data},
  });
  const std::uint64_t top = file.topChannels(frame, parts);
  return {std::move(file), {.channels = top}};
}

ByteList storedRecord(std::uint64_t offset, std::uint8_t length) {
  return join({le(0, 8), {1}, le(0x123, 4), {0}, {length}, {length}, le(offset, 8)});
}

const ByteList kPayloads = join({le(2, 4), {0xAA, 0xBB}, le(3, 4), {1, 2, 3}, le(0, 4)});

TEST(MdfRecordParserTest, readsPayloadsFromSignalData) {
  MdfFileBuilder plain;
  const std::uint64_t sd = plain.block("SD", {}, kPayloads);
  MdfFileBuilder list;
  const std::uint64_t first = list.block("SD", {}, ByteList(kPayloads.begin(), kPayloads.begin() + 5));
  const std::uint64_t second = list.block("SD", {}, ByteList(kPayloads.begin() + 5, kPayloads.end()));
  const std::uint64_t dl = list.block("DL", {0, first, second}, join({le(0, 4), le(2, 4), le(0, 16)}));
  MdfFileBuilder header = list;
  const std::uint64_t hl = header.block("HL", {dl}, le(0, 8));
  std::vector<Group> groups;
  groups.push_back(storedFrame(plain, sd));
  groups.push_back(storedFrame(list, dl));
  groups.push_back(storedFrame(header, hl));
  for (Group& group : groups) {
    EXPECT_EQ(group.parse(storedRecord(0, 2)).data, (ByteList{0xAA, 0xBB}));
    EXPECT_EQ(group.parse(storedRecord(6, 3)).data, (ByteList{1, 2, 3}));
    const MdfCanMessage empty = group.parse(storedRecord(13, 0));
    EXPECT_TRUE(empty.valid);
    EXPECT_TRUE(empty.data.empty());
  }
}

TEST(MdfRecordParserTest, offsetsOutsideTheSignalDataAreNotRead) {
  MdfFileBuilder file;
  const std::uint64_t sd = file.block("SD", {}, join({kPayloads, le(9, 4), {1, 2, 3, 4}, le(1, 3)}));
  Group group = storedFrame(file, sd);
  for (const std::uint64_t offset : {std::uint64_t{17}, std::uint64_t{25}, std::uint64_t{28}, std::uint64_t{29},
                                     std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
    const MdfCanMessage message = group.parse(storedRecord(offset, 0));
    EXPECT_FALSE(message.valid) << offset;
    EXPECT_TRUE(message.data.empty()) << offset;
  }
  EXPECT_TRUE(group.parse(storedRecord(13, 0)).valid);
}

TEST(MdfRecordParserTest, aStoredPayloadLongerThanAnyFrameIsNotRead) {
  MdfFileBuilder file;
  const std::uint64_t sd = file.block("SD", {}, join({le(2048, 4), ByteList(2048), le(2049, 4), ByteList(2049)}));
  Group group = storedFrame(file, sd);
  EXPECT_EQ(group.parse(storedRecord(0, 8)).data.size(), 2048U);
  EXPECT_FALSE(group.parse(storedRecord(2052, 8)).valid);
}

TEST(MdfRecordParserTest, signalDataThatIsNotThereHasNoPayloads) {
  MdfFileBuilder file;
  const std::uint64_t dt = file.data(kPayloads);
  EXPECT_FALSE(storedFrame(file, 0).parse(storedRecord(0, 2)).valid);
  EXPECT_FALSE(storedFrame(file, dt).parse(storedRecord(0, 2)).valid);  // DT is no signal data
}

TEST(MdfRecordParserTest, offsetsOfAnySizeUpTo64Bits) {
  MdfFileBuilder file;
  const std::uint64_t sd = file.block("SD", {}, kPayloads);
  EXPECT_EQ(storedFrame(file, sd, 0x400, "CAN_DataFrame", 8).parse(storedRecord(0xFF06, 3)).data, (ByteList{1, 2, 3}));
  EXPECT_FALSE(storedFrame(file, sd, 0x400, "CAN_DataFrame", 65).parse(storedRecord(6, 3)).valid);
}

TEST(MdfRecordParserTest, remoteFramesHaveNoStoredPayload) {
  MdfFileBuilder file;
  const std::uint64_t sd = file.block("SD", {}, kPayloads);
  const MdfCanMessage message = storedFrame(file, sd, 0x400, "CAN_RemoteFrame").parse(storedRecord(1000, 2));
  EXPECT_TRUE(message.valid);
  EXPECT_TRUE(message.data.empty());
  EXPECT_EQ(message.foundFields, 117U);
}

TEST(MdfRecordParserTest, readsZippedSignalDataWithoutInflatingIt) {
  MdfFileBuilder file;
  const std::uint64_t dz = file.block(
      "DZ", {}, join({textBytes("SD"), le(0, 2), le(0, 4), le(1000, 8), le(kPayloads.size(), 8), kPayloads}));
  EXPECT_EQ(storedFrame(file, dz).parse(storedRecord(6, 3)).data, (ByteList{1, 2, 3}));
}

TEST(MdfRecordParserTest, payloadsInAStreamAreRefused) {
  MdfFileBuilder file;
  const std::uint64_t sd = file.block("SD", {}, kPayloads);
  try {
    storedFrame(file, sd, 0x4400);
    FAIL();
  } catch (const ConverterProcessingException& failure) {
    EXPECT_STREQ(failure.what(), "VLSD stream channels are not supported");
  }
}

// Errors.

TEST(MdfRecordParserTest, readsPlainErrorFields) {
  Group group = frameOf({}, {{.name = "ErrorType", .byteOffset = 24}, {.name = "BitPosition", .byteOffset = 25}},
                        "CAN_ErrorFrame");
  const MdfCanMessage message = group.parse(join({frameRecord(), {3, 77}}));
  EXPECT_EQ(message.errorType, 3);
  EXPECT_EQ(message.bitPosition, 77);
  EXPECT_EQ(message.foundFields & 0x180000U, 0x180000U);
}

TEST(MdfRecordParserTest, aCodedBitPositionIsTheLowByteOfTwo) {
  const struct {
    const char* name;
    std::uint8_t dataType;
    std::uint32_t bitCount;
    int position;
  } cases[] = {{"little-endian", 0, 16, 0x12},
               {"big-endian", 1, 16, 0x34},
               {"nine bits", 0, 9, 0x12},
               {"one byte", 0, 8, 0},
               {"three bytes", 0, 24, 0}};
  for (const auto& each : cases) {
    Group group = frameOf({},
                          {{.name = "BitPosition",
                            .dataType = each.dataType,
                            .bitOffset = 3,
                            .byteOffset = 24,
                            .bitCount = each.bitCount,
                            .flags = 0x440}},
                          "CAN_ErrorFrame");
    const MdfCanMessage message = group.parse(join({frameRecord(), {0x12, 0x34, 0x56}}));
    EXPECT_EQ(message.bitPosition, each.position) << each.name;
    EXPECT_EQ((message.foundFields & 0x80000U) != 0, each.position != 0) << each.name;
    EXPECT_TRUE(message.valid);
  }
}

TEST(MdfRecordParserTest, aCodedErrorTypeIsAByteOfItsTable) {
  MdfFileBuilder file;
  // The first bytes of the values are what counts: 0x05, 0x06.
  const std::uint64_t table =
      file.block("CC", {0, 0, 0, 0}, join({le(99, 1), le(0, 5), le(2, 2), le(0, 16), le(0xFF05, 8), le(0xEE06, 8)}));
  const auto typeOf = [&](std::uint32_t bitCount, std::uint32_t raw, std::uint64_t conversion) {
    return frameOf(file,
                   {{.name = "ErrorType",
                     .byteOffset = 24,
                     .bitCount = bitCount,
                     .flags = 0x440,
                     .conversion = conversion}},
                   "CAN_ErrorFrame")
        .parse(join({frameRecord(), le(raw, 4)}))
        .errorType;
  };
  EXPECT_EQ(typeOf(32, 0, table), 5);
  EXPECT_EQ(typeOf(32, 1, table), 6);
  EXPECT_EQ(typeOf(25, 0xFE000001, table), 6);  // masked
  EXPECT_EQ(typeOf(32, 2, table), 255);         // outside the table
  EXPECT_EQ(typeOf(32, 0xFFFFFFFF, table), 255);
  EXPECT_EQ(typeOf(24, 0, table), 255);  // not four bytes
  EXPECT_EQ(typeOf(32, 0, 0), 255);      // no table
}

TEST(MdfRecordParserTest, aFrameOfEndlessFieldsIsNotRead) {
  const auto validWith = [](std::size_t count) {
    MdfFileBuilder file;
    const std::uint64_t top =
        file.topChannels("CAN_ErrorFrame", file.channels(std::vector<ChannelSpec>(count, {.name = "DLC"})));
    return Group(std::move(file), {.channels = top}).parse({}).valid;
  };
  EXPECT_TRUE(validWith(64));
  EXPECT_FALSE(validWith(65));
}

}  // namespace
}  // namespace xlatr
