// Session files converted as a user converts them: many sessions, damaged ones, those of the generator, and TRC traces
// there and back.
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/btr_image.hpp"
#include "tracegen/generator.hpp"

namespace xlatr::conversions {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::btrTick;
using Names = std::vector<std::string>;

BtrDate atMinute(std::uint8_t minute) {
  return {.minute = minute};
}

// The lines of a CSV table after its head.
Names rowsOf(const std::string& path) {
  Names rows;
  bool afterHead = false;
  for (const std::string& line : splitLines(readFile(path))) {
    if (afterHead) {
      rows.push_back(line);
    }
    afterHead = afterHead || line.starts_with("Number;");
  }
  return rows;
}

// The frames of a TRC 2.1 file, without number and header.
Names framesOf(const std::string& path) {
  Names frames;
  for (const std::string& line : splitLines(readFile(path))) {
    if (!line.starts_with(';')) {
      frames.push_back(line.substr(8));
    }
  }
  return frames;
}

// Classic traffic, tens of thousands of frames in many sectors, goes to a session file and comes back unchanged except
// for the direction, which a session does not have.
TEST(BtrConversions, carryClassicFramesThereAndBack) {
  const WorkingDirectory directory;
  tracegen::RecordingOptions options;
  options.traffic = {.seed = 5,
                     .buses = 5,
                     .identifiers = 20,
                     .fdShare = 0,
                     .remoteRate = 200,
                     .disturbanceRate = 0,
                     .eventRate = 0,
                     .commentRate = 0};
  options.maxMessages = 30000;
  tracegen::generateFile(options, "in.trc");
  expectSuccess(convert("in.trc", "mid.btr", std::nullopt, XLATR_FORMAT_BTR), {"mid.btr"});
  EXPECT_EQ(readFile("mid.btr").size(), (1 + 30000 / 25 + 1) * 512U);
  expectSuccess(convert("mid.btr", "./out.trc", 2.1), {"out_S1.trc"});
  Names expected = framesOf("in.trc");
  for (std::string& line : expected) {
    if (const auto sent = line.find(" Tx "); sent != std::string::npos) {
      line[sent + 1] = 'R';
    }
  }
  EXPECT_EQ(framesOf("out_S1.trc"), expected);
}

// A frame line without its number, split into its time and the rest.
struct TimedLine {
  double time;
  std::string rest;
};

std::vector<TimedLine> timedFramesOf(const std::string& path) {
  std::vector<TimedLine> lines;
  for (const std::string& frame : framesOf(path)) {
    lines.push_back({std::stod(frame), frame.substr(frame.find_first_of("DR"))});  // DT or RR
  }
  return lines;
}

// The generator writes the same traffic as sessions and as lines, and has separate code for each.
TEST(BtrConversions, readWhatTheGeneratorRecords) {
  for (const bool circular : {false, true}) {
    const WorkingDirectory directory;
    tracegen::RecordingOptions options;
    options.traffic = {.seed = 7,
                       .buses = 5,
                       .identifiers = 10,
                       .fdShare = 0,
                       .remoteRate = 200,
                       .disturbanceRate = 0,
                       .eventRate = 0,
                       .commentRate = 0};
    options.maxMessages = 7000;
    tracegen::generateFile(options, "lines.trc");
    options.form = tracegen::Form::Btr;
    options.btr = {.sessions = 35, .circular = circular};
    tracegen::generateFile(options, "in.btr");
    ASSERT_EQ(convert("in.btr", "./out.trc", 2.1).code, XLATR_SUCCESS);
    const std::vector<TimedLine> expected = timedFramesOf("lines.trc");
    ASSERT_EQ(expected.size(), 7000U);
    for (std::size_t session = 0; session < 35; ++session) {
      const std::vector<TimedLine> lines = timedFramesOf("out_S" + std::to_string(session + 1) + ".trc");
      ASSERT_EQ(lines.size(), 200U) << session;
      for (std::size_t index = 0; index < lines.size(); ++index) {
        const TimedLine& same = expected[session * 200 + index];
        std::string rest = same.rest;
        if (const auto sent = rest.find(" Tx "); sent != std::string::npos) {
          rest[sent + 1] = 'R';
        }
        ASSERT_EQ(lines[index].rest, rest) << session << " " << index;
        ASSERT_NEAR(lines[index].time - lines[0].time, same.time - expected[session * 200].time, 1e-6) << index;
      }
      ASSERT_EQ(lines[0].time, session % 2 == 0 ? 0.0 : 4293967.296) << "a second before the time stamps wrap";
    }
  }
}

TEST(BtrConversions, carryTimesBeyond71MinutesThereAndBack) {
  const WorkingDirectory directory;
  Names lines = {";$FILEVERSION=2.1", ";$STARTTIME=45352.34410011574", ";$COLUMNS=N,O,T,B,I,d,R,L,D"};
  Names expected;
  for (int minute = 0; minute < 300; minute += 20) {
    const std::string number = std::to_string(expected.size() + 1);
    const std::string time = std::to_string(minute * 60000) + ".125";
    lines.push_back(std::string(7 - number.size(), ' ') + number + " " + std::string(13 - time.size(), ' ') + time +
                    " DT 1      0123 Rx -  2    AA BB");
    expected.push_back(lines.back().substr(8));
  }
  writeFile("in.trc", joinLines(lines));
  expectSuccess(convert("in.trc", "mid.btr", std::nullopt, XLATR_FORMAT_BTR), {"mid.btr"});
  expectSuccess(convert("mid.btr", "./out.trc", 2.1), {"out_S1.trc"});
  EXPECT_EQ(framesOf("out_S1.trc"), expected);
}

TEST(BtrConversions, runHundredsOfSessionsAtOnce) {
  constexpr std::size_t kDirectories = 20;
  constexpr std::size_t kStride = 17;  // a directory and a sector for each of its sessions
  const WorkingDirectory directory;
  BtrImage image(kDirectories * kStride);
  Names files;
  for (std::uint32_t index = 0; index < kDirectories * 16; ++index) {
    const std::uint32_t base = index / 16 * kStride;
    const std::uint32_t sector = base + 1 + index % 16;
    const BtrDate date{.hour = static_cast<std::uint8_t>(index / 60), .minute = static_cast<std::uint8_t>(index % 60)};
    const bool linked = index % 16 == 15;
    image.session(
        index % 16,
        {.firstSector = sector,
         .date = date,
         .continued = linked ? std::uint8_t{1} : std::uint8_t{0},
         .nextDirectory = linked && index + 1 < kDirectories * 16 ? static_cast<std::uint32_t>(base + kStride) : 0},
        base);
    image.sector(sector, date, {{.id = index}});
    files.push_back("out_S" + std::to_string(index + 1) + ".csv");
  }
  writeFile("in.btr", image.bytes());
  const Outcome outcome = convert("in.btr", "./out.csv", std::nullopt, XLATR_FORMAT_CSV);
  EXPECT_EQ(outcome.code, XLATR_SUCCESS) << outcome.text;
  EXPECT_EQ(outcome.files.size(), files.size());
  for (std::size_t index = 0; index < files.size(); ++index) {
    ASSERT_EQ(rowsOf(files[index]).size(), 1U) << files[index];
  }
  EXPECT_TRUE(rowsOf("out_S320.csv").front().starts_with("1;0.000;1;Rx;DT;013F;"));
}

// A small file with everything in it: a circular session, ticks, a wrap, errors, a second session.
std::string smallFile() {
  BtrImage image(5);
  image.session(0, {.firstSector = 1, .date = atMinute(0)}).session(1, {.firstSector = 4, .date = atMinute(1)});
  image.sector(1, atMinute(0), {{.id = 1, .timestamp = 100}, btrTick(0xFFFFFFFF), btrTick(5)}, 2);
  image.sector(2, atMinute(0), {{.id = 2, .bus = 1, .length = 8}, {.id = 0xFFFFFFFF, .flags = 0x10, .length = 4}}, 1);
  image.sector(3, atMinute(0), {{.id = 0x1FFFFFFF, .flags = 2, .bus = 4, .length = 8}}, 1);
  image.sector(4, atMinute(1), {{.id = 4, .flags = 1}});
  return image.bytes();
}

// Whatever happens to a byte, the conversion ends, and its status and its text agree.
void expectAnEnd(const std::string& content, TraceFormat format) {
  writeFile("in.btr", content);
  const Outcome outcome = convert("in.btr", "./out", std::nullopt, format);
  EXPECT_TRUE(outcome.finished);
  EXPECT_EQ(outcome.code, outcome.status);
  if (outcome.code == XLATR_FAILED) {
    EXPECT_NE(outcome.text, "");
  } else if (outcome.code == XLATR_NOTHING_CONVERTED) {
    EXPECT_EQ(outcome.files, Names{});
  } else {
    EXPECT_EQ(outcome.code, XLATR_SUCCESS);
    EXPECT_EQ(outcome.text, "");
  }
}

TEST(BtrConversions, endWithAnyByteFlipped) {
  const WorkingDirectory directory;
  const std::string whole = smallFile();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ (at % 2 == 0 ? 0xFF : 0x01));
    expectAnEnd(damaged, at % 3 == 0 ? XLATR_FORMAT_TRC : XLATR_FORMAT_CSV);
    ASSERT_FALSE(HasFailure()) << at;
  }
}

TEST(BtrConversions, endAtAnyLength) {
  const WorkingDirectory directory;
  const std::string whole = smallFile();
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    expectAnEnd(whole.substr(0, length), XLATR_FORMAT_ASC);
    ASSERT_FALSE(HasFailure()) << length;
  }
}

}  // namespace
}  // namespace xlatr::conversions
