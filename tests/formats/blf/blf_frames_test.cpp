#include "formats/blf/blf_frames.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "frames/merged_frames.hpp"
#include "frames/wanted_frames.hpp"
#include "support/blf_builder.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::blf::Bytes;
using test::blf::classicFrame;
using test::blf::containerOf;
using test::blf::deflated;
using test::blf::file;
using test::blf::object;
using test::blf::stored;
using test::blf::zipped;

using Noted = std::vector<std::pair<Remark, std::uint64_t>>;

struct Read {
  std::vector<std::string> frames;
  Account account;
  StreamHead head;
  std::vector<PassedOver> passedOver;
  std::uint64_t bytesRead = 0;

  [[nodiscard]] Noted noted() const {
    Noted all;
    for (const RemarkInfo& info : remarkTable()) {
      if (const std::uint64_t count = account.noted(info.remark).frames; count > 0) {
        all.emplace_back(info.remark, count);
      }
    }
    return all;
  }
};

Read readLog(const std::string& log) {
  static const test::TempFolder folder;
  const auto source = openBlfFrames(folder.write("log.blf", log));
  Read read;
  read.head = source->head();
  read.frames = test::textsOf(*source, read.account);
  read.passedOver = source->passedOver();
  read.bytesRead = source->bytesRead();
  EXPECT_EQ(read.account.read(), read.frames.size());
  EXPECT_EQ(read.bytesRead, log.size());
  return read;
}

// The only object of a log, on either layout of the header.
struct Case {
  const char* name;
  std::uint32_t type;
  Bytes body;
  std::string frame;  // none if empty
  Noted noted = {};
  std::uint16_t objectVersion = 0;
};

void expectCases(const std::vector<Case>& cases) {
  for (const Case& test : cases) {
    for (const std::uint16_t headerVersion : {std::uint16_t{1}, std::uint16_t{2}}) {
      SCOPED_TRACE(std::string(test.name) + ", header " + std::to_string(headerVersion));
      const std::string one =
          object({.type = test.type, .timestamp = 7, .version = test.objectVersion, .headerVersion = headerVersion},
                 test.body.str());
      const Read read = readLog(file(zipped(one)));
      EXPECT_EQ(read.frames, test.frame.empty() ? std::vector<std::string>() : std::vector{test.frame});
      EXPECT_EQ(read.noted(), test.noted);
      EXPECT_TRUE(read.passedOver.empty());
    }
  }
}

Bytes classic(unsigned channel, unsigned flags, unsigned dlc, std::uint32_t id) {
  return Bytes().u16(channel).u8(flags).u8(dlc).u32(id).counting(8);
}

TEST(BlfFrames, areClassicCanFrames) {
  expectCases({
      {"received", 1, classic(2, 0, 3, 0x123), "7 data 2 123 Rx dlc3 [010203]"},
      {"sent, with duration", 86, classic(3, 1, 1, 0x7FF).u32(230000).u8(112).leftovers(3),
       "7 data 3 7FF Tx dlc1 [01]"},
      {"small extended identifier", 1, classic(1, 0, 0, 0x80000012), "7 data 1 12 x Rx"},
      {"largest identifier", 1, classic(1, 0, 0, 0x9FFFFFFF), "7 data 1 1FFFFFFF x Rx"},
      {"identifier too large for its mark", 1, classic(1, 0, 0, 0x800), "7 data 1 800 x Rx"},
      {"no bus", 1, classic(0, 0, 0, 1), "7 data 0 1 Rx"},
      {"high bus", 1, classic(65535, 0, 0, 1), "7 data 65535 1 Rx"},
      {"DLC beyond the length", 1, classic(1, 0, 12, 1), "7 data 1 1 Rx dlc12 [0102030405060708]"},
      {"upper half of the DLC", 1, classic(1, 0, 0xF2, 1), "7 data 1 1 Rx dlc2 [0102]"},
      {"remote", 1, classic(1, 0x80, 5, 0x80000001), "7 remote 1 1 x Rx known dlc5"},
      {"sent remote of DLC 15", 86, classic(1, 0x81, 15, 1), "7 remote 1 1 Tx known dlc15"},
      {"wake-up and single wire", 1, classic(1, 0x60, 1, 1), "7 data 1 1 Rx dlc1 [01]"},
      {"without its last byte",
       1,
       Bytes().u16(1).u8(0).u8(8).u32(1).counting(7),
       "",
       {{Remark::RecordNotUnderstood, 1}}},
  });
}

Bytes fd(unsigned flags, unsigned dlc, unsigned fdFlags, unsigned length) {
  return Bytes().u16(4).u8(flags).u8(dlc).u32(0x321).leftovers(5).u8(fdFlags).u8(length).leftovers(5);
}

Bytes fd64(unsigned dlc, unsigned length, std::uint32_t flags, unsigned direction) {
  return Bytes()
      .u8(5)
      .u8(dlc)
      .u8(length)
      .leftovers(1)
      .u32(0x321)
      .leftovers(4)
      .u32(flags)
      .leftovers(18)
      .u8(direction)
      .u8(0)
      .leftovers(4);
}

TEST(BlfFrames, areCanFdFrames) {
  const std::string twelve = "[0102030405060708090A0B0C]";
  expectCases({
      {"array, FD", 100, fd(0, 9, 7, 12).counting(64).leftovers(4), "7 data 4 321 Rx FD BRS ESI dlc9 " + twelve},
      {"array without its tail", 100, fd(1, 9, 1, 12).counting(12), "7 data 4 321 Tx FD dlc9 " + twelve},
      {"array, classic", 100, fd(0, 2, 6, 2).counting(64), "7 data 4 321 Rx dlc2 [0102]"},
      {"array, remote", 100, fd(0x80, 4, 0, 0).counting(64), "7 remote 4 321 Rx known dlc4"},
      {"array, FD is never remote", 100, fd(0x80, 1, 1, 1).counting(64), "7 data 4 321 Rx FD dlc1 [01]"},
      {"as long as its data", 101, fd64(9, 12, 0x7000, 0).counting(12), "7 data 5 321 Rx FD BRS ESI dlc9 " + twelve},
      {"with extra words", 101, fd64(1, 1, 0x1000, 1).counting(1).leftovers(8), "7 data 5 321 Tx FD dlc1 [01]"},
      {"to be sent", 101, fd64(1, 1, 0x1000, 2).counting(1), "7 data 5 321 Tx FD dlc1 [01]"},
      {"classic", 101, fd64(8, 8, 0, 0).counting(8), "7 data 5 321 Rx dlc8 [0102030405060708]"},
      {"remote", 101, fd64(8, 0, 0x10, 0), "7 remote 5 321 Rx known dlc8"},
      {"DLC and length contradict",
       101,
       fd64(9, 2, 0x1000, 0).counting(2),
       "7 data 5 321 Rx FD dlc9 [0102]",
       {{Remark::LengthGuessed, 1}}},
      {"more bytes than a classic frame has", 101, fd64(8, 12, 0, 0).counting(12),
       "7 data 5 321 Rx dlc8 [0102030405060708]"},
      {"fewer bytes than stated",
       101,
       fd64(9, 12, 0x1000, 0).counting(3),
       "7 data 5 321 Rx FD dlc9 [010203]",
       {{Remark::SourceCut, 1}}},
      {"too short", 101, Bytes().counting(39), "", {{Remark::RecordNotUnderstood, 1}}},
      {"too short for its array", 100, Bytes().counting(19), "", {{Remark::RecordNotUnderstood, 1}}},
  });
}

Bytes error73(std::uint32_t flags, unsigned ecc, unsigned position, std::uint32_t id, unsigned flagsExt) {
  return Bytes().u16(2).u16(0).u32(flags).u8(ecc).u8(position).u8(8).leftovers(5).u32(id).u16(flagsExt).leftovers(10);
}

Bytes error104(unsigned flags, unsigned ecc, unsigned flagsExt, unsigned fdBits, std::uint32_t id, unsigned position) {
  return Bytes()
      .u8(3)
      .u8(9)
      .u8(12)
      .u8(ecc)
      .u16(flags)
      .u16(flagsExt)
      .u16(fdBits)
      .leftovers(2)
      .u32(id)
      .leftovers(24)
      .u16(position)
      .leftovers(2);
}

TEST(BlfFrames, areErrorsAndOverloads) {
  expectCases({
      {"plain error", 2, Bytes().u16(1).u16(8).leftovers(4), "7 error 1 0"},
      {"plain error, short form", 2, Bytes().u16(1).u16(0), "7 error 1 0"},
      {"overload", 3, Bytes().u16(2).leftovers(6), "7 overload 2 0"},
      {"without detail", 73, error73(0, 0, 0, 0, 0), "7 error 2 0"},
      {"error code while receiving", 73, error73(1, 0xA5, 0, 0, 0), "7 error 2 0 Rx error_type=2 error_position=5"},
      {"error code without its mark", 73, error73(0, 0x46, 0, 0, 0), "7 error 2 0 Tx error_type=1 error_position=6"},
      {"code of another core", 73, error73(2, 0x46, 0, 0, 0x2060), "7 error 2 0 Rx error_type=1"},
      {"CRC error", 73, error73(0, 0, 0, 0xFFFFFFFF, 0x0120), "7 error 2 0 Rx \"CRC error\" error_type=3"},
      {"acknowledgement, with identifier and bit", 73, error73(5, 0xD9, 45, 0x92345678, 0x1140),
       "7 error 2 0 Tx \"acknowledgement error, id 12345678x, bit 45\" error_type=3 error_position=25"},
      {"too short", 73, Bytes().counting(23), "", {{Remark::RecordNotUnderstood, 1}}},
      {"FD error", 104, error104(5, 0xA5, 0x0020, 0xE0, 0x123, 77).counting(12),
       "7 error 3 0 Rx FD BRS ESI \"id 123, bit 77\" error_type=2 error_position=5"},
      {"FD error without detail", 104, error104(0, 0, 0, 0, 0, 77), "7 error 3 0"},
      {"error counters", 31, Bytes().u16(2).u8(96).u8(127).u32(0), "7 counters 2 0 tx_errors=96 rx_errors=127"},
      {"error counters with more", 74, Bytes().u16(2).u8(255).u8(0).u32(18).leftovers(24),
       "7 counters 2 0 \"driver error code 18\" tx_errors=255 rx_errors=0"},
  });
}

Bytes lin11(unsigned id, unsigned length, unsigned crc, unsigned direction) {
  return Bytes().u16(1).u8(id).u8(length).counting(8).leftovers(4).u16(crc).u8(direction).leftovers(5);
}

// The common heads of newer types, up to the byte times.
Bytes linHead(unsigned id, unsigned length, unsigned model) {
  return Bytes().u64(1000).u32(19200).u16(2).leftovers(2).leftovers(16).leftovers(5).u8(id).u8(length).u8(model);
}

Bytes lin57(unsigned id, unsigned length, unsigned model, unsigned direction) {
  return linHead(id, length, model).leftovers(72).counting(8).u16(0x7C).u8(direction).leftovers(9);
}

TEST(BlfFrames, areLinFrames) {
  expectCases({
      {"received", 11, lin11(0x2A, 3, 0x7C, 0), "7 lin 1 2A Rx dlc3 [010203] checksum=124"},
      {"without its last bytes", 11, Bytes().u16(1).u8(2).u8(1).counting(8).zeros(4).u16(5).u8(1).u8(0),
       "7 lin 1 2 Tx dlc1 [01] checksum=5"},
      {"to be sent", 11, lin11(0x2A, 1, 0x7C, 2), "7 lin 1 2A Tx dlc1 [01] checksum=124"},
      {"no direction", 11, lin11(0x2A, 1, 0x7C, 3), "7 lin 1 2A dlc1 [01] checksum=124"},
      {"wrong checksum", 12, lin11(0x2A, 1, 0xFF7C, 0), "7 lin 1 2A Rx dlc1 [01] checksum=124 lin_errors=1"},
      {"longer than LIN frames are",
       11,
       lin11(1, 9, 0, 0),
       "7 lin 1 1 Rx dlc9 [0102030405060708] checksum=0",
       {{Remark::LengthGuessed, 1}}},
      {"no response", 15, Bytes().u16(3).u8(0x3C).u8(8).leftovers(4), "7 lin 3 3C dlc8 lin_errors=32"},
      {"with times, classic", 57, lin57(9, 2, 0, 0), "7 lin 2 9 Rx dlc2 [0102] checksum=124 checksum_model=1", {}, 1},
      {"with times, enhanced",
       57,
       lin57(9, 2, 1, 1),
       "7 lin 2 9 Tx enhanced dlc2 [0102] checksum=124 checksum_model=2",
       {},
       1},
      {"with times, unknown model", 57, lin57(9, 2, 0xFF, 0), "7 lin 2 9 Rx dlc2 [0102] checksum=124", {}, 1},
      {"with times, no model", 57, lin57(9, 2, 1, 0), "7 lin 2 9 Rx dlc2 [0102] checksum=124"},
      {"with times, wrong checksum",
       60,
       lin57(9, 2, 1, 0),
       "7 lin 2 9 Rx enhanced dlc2 [0102] checksum=124 checksum_model=2 lin_errors=1",
       {},
       1},
      {"with times, no response",
       58,
       linHead(9, 4, 1).leftovers(28),
       "7 lin 2 9 enhanced dlc4 checksum_model=2 lin_errors=32",
       {},
       1},
      {"too short", 57, Bytes().counting(122), "", {{Remark::RecordNotUnderstood, 1}}},
      {"header too short", 58, Bytes().counting(39), "", {{Remark::RecordNotUnderstood, 1}}},
  });
}

TEST(BlfFrames, areLinEvents) {
  const auto timed = [] { return Bytes().u64(1000).u32(19200).u16(2).leftovers(2); };
  const auto event = [](const char* text, const char* bus = "1") {
    return "7 lin_event " + std::string(bus) + " 0 \"" + text + "\"";
  };
  const auto withResponse = [](unsigned count, unsigned slow, unsigned cutOff) {
    return linHead(0x21, 8, 0xFF).leftovers(72).u32(count).counting(9).u8(slow).u8(cutOff).leftovers(1);
  };
  expectCases({
      {"length found", 13, Bytes().u16(1).u8(0x21).u8(4).leftovers(4), event("Frame length found: id 21, length 4")},
      {"model found", 42, Bytes().u16(1).u8(0x21).u8(1).leftovers(4),
       event("Checksum model found: id 21, enhanced checksum")},
      {"model found, of no name", 42, Bytes().u16(1).u8(0x21).u8(7).leftovers(4),
       event("Checksum model found: id 21, checksum model 7")},
      {"receive error, old", 14, Bytes().u16(1).u8(3).u8(8).leftovers(2).u8(1).u8(2).u8(0x21).u8(0x55).leftovers(6),
       event("Receive error: id 03, length 8, framing error, waiting for the break, byte 55")},
      {"slave timeout", 16, Bytes().u16(1).u8(3).u8(4).u32(5),
       event("Slave timeout: slave 3, state left 4, state entered 5")},
      {"schedule", 17, Bytes().u16(1).u8(0).u8(2).leftovers(4), event("Schedule table changed: from 0, to 2")},
      {"sync error, old", 18, Bytes().u16(1).leftovers(2).u16(208).u16(1).u16(2).u16(3).leftovers(4),
       event("Synchronization error: edges after 208 us, 1 us, 2 us, 3 us")},
      {"baud rate", 19, Bytes().u16(1).leftovers(2).u32(19200), event("Baud rate: 19200 bit/s")},
      {"impossible baud rate", 19, Bytes().u16(1).leftovers(2).u32(0xFFFFFFFF), event("Baud rate: -1 bit/s")},
      {"sleep", 20, Bytes().u16(1).u8(1).u8(1).leftovers(4), event("Bus Sleep: sleep frame")},
      {"awake by a flag", 20, Bytes().u16(1).u8(0).u8(2).leftovers(4), event("Bus Wake Up: start of measurement")},
      {"awake by its reason", 20, Bytes().u16(1).u8(9).u8(0).leftovers(4), event("Bus Wake Up: external")},
      {"sleep, unknown reason", 20, Bytes().u16(1).u8(5).u8(0).leftovers(4), event("Bus Sleep: reason 5")},
      {"wake-up", 21, Bytes().u16(1).u8(0x80).u8(1).leftovers(4), event("Bus Wake Up: byte 80, external")},
      {"wake-up with times", 62, timed().u8(1).u8(0x80).u8(0).leftovers(5),
       event("Bus Wake Up: too short, byte 80", "2")},
      {"spike, old", 43, Bytes().u16(1).leftovers(2).u32(12), event("Spike: width 12 us")},
      {"spike", 63, timed().u32(12).u8(1).leftovers(3), event("Spike: width 12 us, simulated", "2")},
      {"statistics", 54,
       Bytes().u16(1).leftovers(6).u64(0x3FE0000000000000).u32(1).u32(2).u32(3).u32(4).u32(5).leftovers(4),
       event("Bus statistics: load 0.5, bursts 1, bursts overrun 2, frames sent 3, frames received 4, frames without "
             "response 5")},
      {"sync error", 59, timed().leftovers(16).u16(208).u16(0).u16(0).u16(9),
       event("Synchronization error: edges after 208 us, 0 us, 0 us, 9 us", "2")},
      {"receive error, bytes count", 61,
       linHead(0x21, 2, 0xFF).leftovers(72).counting(8).leftovers(2).u8(0x04).u8(0x55).u8(0).u8(0).u8(0).u8(1),
       event("Receive error: id 21, length 2, timeout, state 4, byte 55, data 01 02", "2")},
      {"receive error, bytes don't count", 61,
       linHead(0x21, 2, 0xFF).leftovers(72).counting(8).leftovers(2).u8(0x2E).u8(0x55).u8(0).u8(0).u8(0).u8(0),
       event("Receive error: id 21, length 2, framing error, after another error, byte 55", "2")},
      {"slow response", 88, withResponse(9, 1, 0),
       event("Short or slow response: id 21, length 8, slow, data 01 02 03 04 05 06 07 08 09", "2")},
      {"cut response", 105, withResponse(1, 0, 1).leftovers(16),
       event("Short or slow response: id 21, length 8, cut off by a sync break, data 01", "2")},
      {"response of any number of bytes", 88, withResponse(0xFFFFFFFF, 0, 0),
       event("Short or slow response: id 21, length 8, data 01 02 03 04 05 06 07 08 09", "2")},
      {"dominant, old", 64, timed().u8(1).leftovers(7), event("Dominant signal too long: goes on", "2")},
      {"dominant", 75, timed().u8(2).leftovers(7).u64(1234567),
       event("Dominant signal too long: ends, length 1234567 ns", "2")},
      {"unexpected wake-up", 87, timed().u64(500).u8(0x80).leftovers(7),
       event("Unexpected wake-up: width 500 ns, byte 80", "2")},
      {"disturbance", 89, Bytes().u16(1).u8(0x21).u8(0xFF).u32(0).u32(1).u32(2).u32(3).u32(16),
       event("Disturbance: dominant, id 21, byte 1, bit 2, offset 3 of 16 per bit, length 16 of 16 per bit")},
      {"too short", 89, Bytes().counting(23), "", {{Remark::RecordNotUnderstood, 1}}},
  });
}

TEST(BlfFrames, areOtherEvents) {
  const auto event = [](const char* text, const char* bus = "2") {
    return "7 event " + std::string(bus) + " 0 \"" + text + "\"";
  };
  expectCases({
      {"statistics", 4, Bytes().u16(2).u16(248).u32(1).u32(2).u32(3).u32(4).u32(5).u32(6).leftovers(4),
       event(
           "Bus statistics: standard data frames 1, extended data frames 2, standard remote frames 3, extended remote "
           "frames 4, error frames 5, overload frames 6, load 2.48 %") +
           " bus_load=248"},
      {"trigger", 5, Bytes().u64(10).u64(20).u16(2).u16(1).leftovers(4),
       event("Trigger: logging starts, before 10 ns, after 20 ns")},
      {"single trigger", 5, Bytes().u64(0).u64(0).u16(0).u16(0).leftovers(4), event("Trigger", "0")},
      {"sync pulse", 44, Bytes().u16(2).u8(1).leftovers(5), event("Hardware synchronization: sent")},
      {"driver lost data", 91, Bytes().u32(5).u16(2).leftovers(2), event("Driver lost data: LIN")},
      {"driver of another bus lost data", 91, Bytes().u32(7).u16(2).leftovers(2),
       event("Driver lost data: bus type 7")},
      {"loss begins", 125, Bytes().u32(2), event("Data loss begins: both queues", "0")},
      {"loss ends", 126, Bytes().u32(0).u64(5).u32(17), event("Data loss ends: first queue, objects lost 17", "0")},
      {"settings", 129, Bytes().u16(2).u8(1).u32(1).u32(2), event("CAN settings changed: bit timing")},
  });
}

Bytes marker(const std::string& group, const std::string& name, const std::string& description) {
  return Bytes()
      .leftovers(16)
      .u32(group.size())
      .u32(name.size())
      .u32(description.size())
      .leftovers(12)
      .text(group)
      .text(name)
      .text(description);
}

Bytes systemVariable(std::uint32_t type, const Bytes& data) {
  return Bytes().u32(type).leftovers(12).u32(6).u32(data.str().size()).leftovers(8).text("::A::B").text(data.str());
}

TEST(BlfFrames, areTextsAndVariables) {
  const auto event = [](const std::string& text) { return "7 event 0 0 \"" + text + "\""; };
  const std::string edited = std::string("short\0", 6) + "left over";
  const auto environment = [](const Bytes& data) {
    return Bytes().u32(3).u32(data.str().size()).leftovers(8).text("Var").text(data.str());
  };
  const auto appText = [](std::uint32_t source, std::uint32_t detail, const std::string& text) {
    return Bytes().u32(source).u32(detail).u32(text.size()).leftovers(4).text(text);
  };
  expectCases({
      {"text", 65, appText(0, 0, "Hello"), event("Hello")},
      {"no text", 65, appText(0, 0, ""), event("")},
      {"Latin-1", 65,
       appText(0, 0,
               "\xB0"
               "C"),
       event("\xC2\xB0"
             "C")},
      {"databases", 65, appText(1, 0x00010302, "a.dbc;"), "7 event 3 0 \"Databases: a.dbc;\""},
      {"description", 65, appText(2, 0, "<x/>"), event("Description: <x/>")},
      {"unknown source", 65, appText(9, 0, "x"), event("x")},
      {"length beyond the object", 65, Bytes().u32(0).u32(0).u32(0xFFFFFFFF).leftovers(4).text("abc"), event("abc")},
      {"comment", 92, Bytes().u32(1).u32(edited.size()).leftovers(8).text(edited), event("Comment: short")},
      {"marker", 96, marker("Group", "Name", edited), event("Marker: Group, Name, short")},
      {"marker with a name", 96, marker("", "Name", ""), event("Marker: Name")},
      {"marker that is cut", 96, Bytes().leftovers(16).u32(5).u32(100).u32(9).leftovers(12).text("GroupNam"),
       event("Marker: Group, Nam")},
      {"trigger condition", 128, Bytes().u32(1).u32(1).u32(3).text("T").text("x>1"),
       event("Trigger condition T: x>1, starts")},
      {"real", 72, systemVariable(1, Bytes().u64(0x3FF8000000000000)), event("System variable ::A::B = 1.5")},
      {"integer", 72, systemVariable(2, Bytes().u32(0xFFFFFFFF)), event("System variable ::A::B = -1")},
      {"text value", 72, systemVariable(3, Bytes().text("on")), event("System variable ::A::B = on")},
      {"reals", 72, systemVariable(4, Bytes().u64(0x3FF8000000000000).u64(0)),
       event("System variable ::A::B = 1.5, 0")},
      {"integers", 72, systemVariable(5, Bytes().u32(1).u32(2)), event("System variable ::A::B = 1, 2")},
      {"long integer", 72, systemVariable(6, Bytes().u64(0x8000000000000000)),
       event("System variable ::A::B = -9223372036854775808")},
      {"bytes", 72, systemVariable(7, Bytes().u8(1).u8(0xFE)), event("System variable ::A::B = 01 FE")},
      {"integer of another size", 72, systemVariable(2, Bytes().u8(5)), event("System variable ::A::B = 05")},
      {"unknown value type", 72, systemVariable(99, Bytes().u8(5)), event("System variable ::A::B = 05")},
      {"environment integer", 6, environment(Bytes().u32(5)), event("Environment variable Var = 5")},
      {"environment real", 7, environment(Bytes().u64(0)), event("Environment variable Var = 0")},
      {"environment text", 8, environment(Bytes().text("x")), event("Environment variable Var = x")},
      {"environment bytes", 9, environment(Bytes().u8(5)), event("Environment variable Var = 05")},
      {"too short", 72, Bytes().leftovers(31), "", {{Remark::RecordNotUnderstood, 1}}},
  });
}

TEST(BlfFrames, cutTextsOfAMillionBytes) {
  const std::string text(3'000'000, 'x');
  for (const std::string& body :
       {Bytes().u32(0).u32(0).u32(text.size()).leftovers(4).text(text).str(),
        systemVariable(5, Bytes().text(text)).str(), systemVariable(7, Bytes().text(text)).str()}) {
    const std::string log = file(stored(object({.type = body.size() > 3'000'030 ? 72U : 65U}, body)));
    const Read read = readLog(log);
    ASSERT_EQ(read.frames.size(), 1U);
    EXPECT_LT(read.frames[0].size(), 1'000'100U);
    EXPECT_EQ(read.noted(), (Noted{{Remark::TextCut, 1}}));
  }
}

TEST(BlfFrames, haveExactTimes) {
  struct Times {
    std::uint32_t unit;
    std::uint64_t stamp;
    std::string time;  // none if empty
    Noted noted = {};
  };
  for (const Times& test : {
           Times{2, 1, "1"},
           Times{2, 9'000'000'000'000'000'000, "9000000000000000000"},
           Times{2, 9'000'000'000'000'000'001, "", {{Remark::RecordNotUnderstood, 1}}},
           Times{2, UINT64_MAX, "", {{Remark::RecordNotUnderstood, 1}}},
           Times{1, 12345, "123450000"},
           Times{1, 900'000'000'000'000, "9000000000000000000"},
           Times{1, 900'000'000'000'001, "", {{Remark::RecordNotUnderstood, 1}}},
           Times{0, 12, "12", {{Remark::TimeUnitGuessed, 1}}},
       }) {
    const Read read = readLog(file(stored(classicFrame({.dlc = 0, .timestamp = test.stamp, .timeUnit = test.unit}))));
    EXPECT_EQ(read.frames, test.time.empty() ? std::vector<std::string>() : std::vector{test.time + " data 1 123 Rx"});
    EXPECT_EQ(read.noted(), test.noted);
  }
}

TEST(BlfFrames, tellWhatTheHeadSays) {
  const Read read = readLog(file({.start = {2024, 12, 2, 31, 23, 59, 58, 500}, .objects = 5, .api = 4070100}, ""));
  EXPECT_EQ(read.head.format, XLATR_FORMAT_BLF);
  EXPECT_DOUBLE_EQ(read.head.version, 4.0701);
  EXPECT_EQ(read.head.start, (TraceStart{.sinceEpochNs = 1735689598500000000}));
  EXPECT_EQ(read.head.frames, 5U);
  EXPECT_EQ(read.head.places, PlaceUnit::Record);
  EXPECT_TRUE(read.account.complete());
}

TEST(BlfFrames, haveNoStartOnADateThatThereIsNot) {
  for (const test::blf::Date& date :
       {test::blf::Date{}, test::blf::Date{2024, 13, 0, 1}, test::blf::Date{2023, 2, 0, 29},
        test::blf::Date{1500, 1, 0, 1}, test::blf::Date{2024, 1, 0, 1, 24}}) {
    const Read read = readLog(file({.start = date}, ""));
    EXPECT_EQ(read.head.start, std::nullopt);
    EXPECT_EQ(read.head.frames, std::nullopt);
  }
}

TEST(BlfFrames, spanContainers) {
  std::string content;
  std::vector<std::string> expected;
  for (std::uint32_t id = 1; id <= 9; ++id) {
    content += classicFrame({.id = id, .dlc = 1, .timestamp = id});
    expected.push_back(std::to_string(id) + " data 1 " + std::to_string(id) + " Rx dlc1 [11]");
  }
  for (std::size_t size = 1; size <= 60; ++size) {
    std::string contents;
    for (std::size_t at = 0; at < content.size(); at += size) {
      const std::string piece = content.substr(at, size);
      contents += at % 2 == 0 ? zipped(piece) : stored(piece);
    }
    const Read read = readLog(file(contents));
    ASSERT_EQ(read.frames, expected) << "containers of " << size << " bytes";
    ASSERT_TRUE(read.account.complete());
  }
}

TEST(BlfFrames, fillOneBatchAfterTheOther) {
  std::string content;
  constexpr std::size_t kFrames = FrameBatch::kCapacity * 2 + 5;
  for (std::size_t at = 0; at < kFrames; ++at) {
    content += classicFrame({.dlc = 0, .timestamp = at});
  }
  const Read read = readLog(file(zipped(content) + classicFrame({.dlc = 0, .timestamp = kFrames})));
  ASSERT_EQ(read.frames.size(), kFrames + 1);
  EXPECT_EQ(read.frames.front(), "0 data 1 123 Rx");
  EXPECT_EQ(read.frames.back(), std::to_string(kFrames) + " data 1 123 Rx");
  EXPECT_TRUE(read.account.complete());
}

TEST(BlfFrames, nameWhatBelongsToOtherBuses) {
  const Read read =
      readLog(file(stored(object({.type = 29}, "flexray") + object({.type = 71}, "ethernet") +
                          object({.type = 115}, "places") + object({.type = 29}, "flexray") +
                          object({.type = 116}, "") + object({.type = 4000}, "") + classicFrame({.dlc = 0}))));
  EXPECT_EQ(read.frames, std::vector<std::string>{"0 data 1 123 Rx"});
  EXPECT_EQ(read.passedOver, (std::vector<PassedOver>{{"FlexRay frame (object type 29)", 2},
                                                      {"Ethernet frame (object type 71)", 1},
                                                      {"unknown object (object type 116)", 1},
                                                      {"unknown object (object type 4000)", 1}}));
  EXPECT_EQ(read.account.noted(Remark::OtherBus), (Account::Count{5, 1}));
}

TEST(BlfFrames, nameWhatBelongsToOtherBusesOfSeveralLogs) {
  const test::TempFolder folder;
  const std::string flexRay = object({.type = 29}, "");
  std::vector<std::unique_ptr<FrameSource>> logs;
  logs.push_back(openBlfFrames(folder.write("one.blf", file(stored(flexRay + flexRay)))));
  logs.push_back(openBlfFrames(folder.write("two.blf", file(stored(object({.type = 71}, "") + flexRay)))));
  WantedFrames all(std::make_unique<MergedFrames>(std::move(logs)), FrameSelection(), FrameChanges());
  Account account;
  EXPECT_TRUE(test::textsOf(all, account).empty());
  EXPECT_EQ(all.passedOver(),
            (std::vector<PassedOver>{{"FlexRay frame (object type 29)", 3}, {"Ethernet frame (object type 71)", 1}}));
}

TEST(BlfFrames, nameNoMoreTypesThanFitIntoMemory) {
  std::string content;
  for (std::uint32_t type = 1000; type < 1060; ++type) {
    content += object({.type = type}, "");
  }
  const Read read = readLog(file(stored(content)));
  ASSERT_EQ(read.passedOver.size(), 51U);
  EXPECT_EQ(read.passedOver.back(), (PassedOver{"unknown object (other object types)", 10}));
}

struct Damaged {
  const char* name;
  std::string log;
  std::vector<std::uint32_t> ids;
  Noted noted;
};

std::string one(std::uint32_t id) {
  return classicFrame({.id = id, .dlc = 0});
}

// An object that states a larger size.
std::string swollen(std::string object, std::uint16_t more) {
  const auto size = static_cast<std::uint32_t>(object.size() + more);
  return object.replace(8, 4, Bytes().u32(size).str());
}

TEST(BlfFrames, areWhatIsWholeInADamagedLog) {
  const std::string two = one(1) + one(2);
  const std::string packed = deflated(two + two);
  const std::string whole = file(zipped(two));
  std::string noHead = whole;
  noHead[0] = 'X';
  std::string otherHeadSize = whole;
  otherHeadSize[5] = '\x10';
  std::string broken = packed;
  broken.resize(packed.size() - 4);
  for (const Damaged& test : {
           Damaged{"cut object", file(stored(one(1) + one(2).substr(0, 30))), {1}, {{Remark::SourceCut, 1}}},
           Damaged{"cut container", file(stored(two)).substr(0, 144 + 32 + 70), {1}, {{Remark::SourceCut, 2}}},
           Damaged{"cut head of a container",
                   file(stored(two) + stored(two).substr(0, 10)),
                   {1, 2},
                   {{Remark::SourceCut, 1}}},
           Damaged{
               "cut object outside of containers", file(one(1) + one(2).substr(0, 20)), {1}, {{Remark::SourceCut, 1}}},
           Damaged{"stray bytes", file(stored(one(1) + "stray" + one(2))), {1, 2}, {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"stray bytes between containers",
                   file(stored(one(1)) + "stray" + stored(one(2))),
                   {1, 2},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"broken container",
                   file(containerOf(2, "no zlib at all", 96) + stored(one(3))),
                   {3},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"unknown method",
                   file(containerOf(1, two, 96) + stored(one(3))),
                   {3},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"wrong size of a content that is there", file(containerOf(2, deflated(two), 7)), {1, 2}, {}},
           Damaged{"content without its end",
                   file(containerOf(2, broken, 192) + stored(one(3))),
                   {1, 2, 1, 2, 3},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"size that swallows an object",
                   file(stored(swollen(one(1), 48) + one(2) + one(3))),
                   {2, 3},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"size that swallows many objects",
                   file(stored(swollen(one(1), 10'000) + one(2) + one(3))),
                   {2, 3},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"fields that nobody knows",
                   file(stored(swollen(one(1), 40) + std::string(40, 'x') + one(3))),
                   {1, 3},
                   {}},
           Damaged{"container in a container",
                   file(stored(one(1) + stored(one(2)) + one(3))),
                   {1, 3},
                   {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"no head", noHead, {1, 2}, {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"head of another size", otherHeadSize, {1, 2}, {}},
           Damaged{"no log at all", "some text", {}, {{Remark::RecordNotUnderstood, 1}}},
           Damaged{"nothing", "", {}, {{Remark::SourceCut, 1}}},
       }) {
    SCOPED_TRACE(test.name);
    std::vector<std::string> expected;
    for (const std::uint32_t id : test.ids) {
      expected.push_back("0 data 1 " + std::to_string(id) + " Rx");
    }
    const Read read = readLog(test.log);
    EXPECT_EQ(read.frames, expected);
    EXPECT_EQ(read.noted(), test.noted);
  }
}

TEST(BlfFrames, sayWhenALogIsCutAnywhere) {
  constexpr std::size_t kChecksum = 4;  // of a zlib stream, after all of its content
  const std::string first = zipped(one(1));
  const std::string log = file(first + stored(one(2)));
  const std::size_t begin = log.size() - first.size() - stored(one(2)).size();
  const std::size_t end = begin + first.find_last_not_of('\0') + 1;  // without the padding
  for (std::size_t size = 1; size < log.size(); ++size) {
    const Read read = readLog(log.substr(0, size));
    const bool isWhole = size == begin || (size >= end && size <= begin + first.size());
    EXPECT_EQ(read.account.complete(), isWhole) << size;
    EXPECT_EQ(read.frames.size(), size >= end - kChecksum ? 1U : 0U) << size;
  }
}

TEST(BlfFrames, endWithABombInBoundedTime) {
  const std::string zeros(std::size_t{64} << 20, '\0');
  const Read read = readLog(file(containerOf(2, deflated(zeros), 0xFFFFFFFF) + stored(one(3))));
  EXPECT_EQ(read.frames.size(), 1U);
  EXPECT_EQ(read.noted(), (Noted{{Remark::RecordNotUnderstood, 1}}));
}

}  // namespace
}  // namespace xlatr
