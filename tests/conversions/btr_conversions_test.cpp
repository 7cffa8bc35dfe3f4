// Session files converted as a user converts them: from images written down in the tests, and round from TRC traces.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/btr_image.hpp"
#include "support/conversion.hpp"
#include "tracegen/generator.hpp"

namespace xlatr::conversions {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::BtrSlot;
using test::btrTick;
using Names = std::vector<std::string>;

BtrDate atMinute(std::uint8_t minute) {
  return {.minute = minute};
}

// Three sessions of one sector each: the frames 1 to 3, on the buses 1 to 3.
BtrImage threeSessions() {
  BtrImage image(5);
  for (std::uint8_t index = 0; index < 3; ++index) {
    image.session(index, {.firstSector = index + 1U, .date = atMinute(index)});
    image.sector(index + 1U, atMinute(index),
                 {{.id = index + 1U, .bus = index, .length = 1, .timestamp = 1500, .data = {0xA0}}});
  }
  return image;
}

// The lines of a CSV table that are rows.
Names rowsOf(const std::string& path, const std::string& separator = ";") {
  Names rows;
  bool behindHead = false;
  for (const std::string& line : splitLines(readFile(path))) {
    if (behindHead) {
      rows.push_back(line);
    }
    behindHead = behindHead || line.starts_with("Number" + separator);
  }
  return rows;
}

// Converts sessions, counted from 1; none means all.
Outcome convertSessions(const std::vector<std::uint32_t>& sessions, TraceFormat format, const char* target,
                        double version = -1.0) {
  test::Options options{.format = format};
  options.version(version);
  for (const std::uint32_t session : sessions) {
    options.session(session);
  }
  test::Result result;
  Outcome outcome;
  outcome.code = options.convert("in.btr", target, &result);
  outcome.status = result.status();
  outcome.finished = result.finished();
  outcome.text = result.text();
  outcome.files = result.files();
  std::ranges::sort(outcome.files);  // they are in the order of the sessions' ends
  return outcome;
}

Outcome toTable(const BtrImage& image) {
  writeFile("in.btr", image.bytes());
  return convertSessions({}, XLATR_FORMAT_CSV, "./out.csv");
}

TEST(BtrConversions, makeAFileASessionNamedByItsIndex) {
  const WorkingDirectory directory;
  writeFile("in.btr", threeSessions().bytes());
  expectSuccess(convertSessions({}, XLATR_FORMAT_TRC, "./out.trc", 2.1), {"out_S1.trc", "out_S2.trc", "out_S3.trc"});
  EXPECT_EQ(directory.names(), (Names{"in.btr", "out_S1.trc", "out_S2.trc", "out_S3.trc"}));
  const std::string second = readFile("out_S2.trc");
  EXPECT_NE(second.find(";   .//out_S2.trc\r\n"), std::string::npos) << "the folder gets a separator of its own";
  EXPECT_NE(second.find(";   Start time: 01.03.2024 08:01:30.250.000\r\n"), std::string::npos) << second;
  EXPECT_NE(second.find(";   1    BRIX-BRIDGE  Channel-0   CAN\r\n"), std::string::npos);
  EXPECT_TRUE(second.ends_with("\r\n      1         1.500 DT 2      0002 Rx -  1    A0\r\n")) << second;
}

// The fraction is added to the seconds before the days that lie in front of them, which shows in the last digit.
TEST(BtrConversions, giveTheStartOfASessionToTheMicrosecond) {
  const WorkingDirectory directory;
  const BtrDate date{
      .year = 24, .month = 12, .day = 6, .hour = 12, .minute = 11, .second = 17, .hundredths = 7, .dayOfWeek = 5};
  writeFile("in.btr", BtrImage(2).session(0, {.date = date}).sector(1, date).bytes());
  expectSuccess(convertSessions({}, XLATR_FORMAT_TRC, "./out.trc", 2.1), {"out_S1.trc"});
  EXPECT_NE(readFile("out_S1.trc").find(";   Start time: 06.12.2024 12:11:17.070.000\r\n"), std::string::npos);
}

TEST(BtrConversions, convertTheSessionsThatAreNamed) {
  const WorkingDirectory directory;
  writeFile("in.btr", threeSessions().bytes());
  expectSuccess(convertSessions({3, 1, 3}, XLATR_FORMAT_CSV, "./out.csv"), {"out_S1.csv", "out_S3.csv"});
  expectSuccess(convertSessions({2, 4}, XLATR_FORMAT_ASC, "./out.asc"), {"out_S2.asc"});
  expectSuccess(convertSessions({0}, XLATR_FORMAT_ASC, "./all.asc"), {"all_S1.asc", "all_S2.asc", "all_S3.asc"});
  EXPECT_EQ(rowsOf("out_S3.csv"), Names{"1;1.500;3;Rx;DT;0003;-;1;A0"});
}

TEST(BtrConversions, separateTheCellsOfEverySessionAlike) {
  const WorkingDirectory directory;
  writeFile("in.btr", threeSessions().bytes());
  test::Result result;
  EXPECT_EQ(test::Options{.format = XLATR_FORMAT_CSV}.session(1).session(3).separator('|').convert("in.btr",
                                                                                                   "./out.csv", result),
            XLATR_SUCCESS);
  EXPECT_EQ(rowsOf("out_S1.csv", "|"), Names{"1|1.500|1|Rx|DT|0001|-|1|A0"});
  EXPECT_EQ(rowsOf("out_S3.csv", "|"), Names{"1|1.500|3|Rx|DT|0003|-|1|A0"});
}

// Its information object is not valid, which only the head of the target depends on.
TEST(BtrConversions, writeNoHeadForAFileOfAVersionThatThereIsNot) {
  const WorkingDirectory directory;
  writeFile("in.btr", BtrImage(2).session(0, {.version = 4}).sector(1, {}, {{.id = 1}, {.id = 2}}).bytes());
  expectSuccess(convertSessions({}, XLATR_FORMAT_TRC, "./out.trc", 1.2), {"out_S1.trc"});
  EXPECT_EQ(readFile("out_S1.trc"),
            "     1)        0.000  1  Rx         0001  0  \r\n"
            "     2)        0.000  1  Rx         0002  0  \r\n");
}

TEST(BtrConversions, aSessionWhoseDateIsNoneBeginsIn1970) {
  const WorkingDirectory directory;
  const BtrDate none = {.month = 13};
  BtrImage image = threeSessions();
  image.session(1, {.firstSector = 2, .date = none}).sector(2, none, {{.id = 2}});
  writeFile("in.btr", image.bytes());
  expectSuccess(convertSessions({}, XLATR_FORMAT_TRC, "./out.trc", 2.1), {"out_S1.trc", "out_S2.trc", "out_S3.trc"});
  const struct {
    const char* path;
    const char* start;
  } cases[] = {{"out_S1.trc", ";   Start time: 01.03.2024 08:00:30.250.000\r\n"},
               {"out_S2.trc", ";   Start time: 01.01.1970 00:00:00.000.000\r\n"},
               {"out_S3.trc", ";   Start time: 01.03.2024 08:02:30.250.000\r\n"}};
  for (const auto& test : cases) {
    EXPECT_NE(readFile(test.path).find(test.start), std::string::npos) << test.path;
  }
  EXPECT_NE(readFile("out_S2.trc").find("\r\n;$STARTTIME=25569"), std::string::npos);
}

TEST(BtrConversions, haveNothingToConvertInASessionThatIsNotThere) {
  const WorkingDirectory directory;
  writeFile("in.btr", threeSessions().bytes());
  const Outcome outcome = convertSessions({4}, XLATR_FORMAT_CSV, "./out.csv");
  EXPECT_EQ(outcome.code, XLATR_NOTHING_CONVERTED);
  EXPECT_EQ(outcome.status, XLATR_NOTHING_CONVERTED);
  EXPECT_EQ(outcome.text, "");
  EXPECT_EQ(outcome.files, Names{});
}

TEST(BtrConversions, haveNothingToConvertInAFileWithoutSessions) {
  const WorkingDirectory directory;
  for (const std::string& content : {std::string(), std::string(512, '\0'), std::string("no session file")}) {
    writeFile("in.btr", content);
    const Outcome outcome = convertSessions({}, XLATR_FORMAT_TRC, "./out.trc");
    EXPECT_EQ(outcome.code, XLATR_NOTHING_CONVERTED) << content;
    EXPECT_EQ(outcome.text, "") << content;
  }
}

TEST(BtrConversions, makeAFileASessionAndBusWithoutABusColumn) {
  const WorkingDirectory directory;
  writeFile(
      "in.btr",
      threeSessions().sector(1, atMinute(0), {{.id = 1, .bus = 0}, {.id = 2, .bus = 4}, {.id = 3, .bus = 0}}).bytes());
  expectSuccess(convertSessions({1, 2}, XLATR_FORMAT_TRC, "./out.trc", 1.1),
                {"out_S1_BUS1.trc", "out_S1_BUS5.trc", "out_S2_BUS2.trc"});
  const std::string busOne = readFile("out_S1_BUS1.trc");
  EXPECT_TRUE(busOne.ends_with(
      "\r\n     1)         0.0  Rx         0001  0  \r\n     2)         0.0  Rx         0003  0  \r\n"))
      << busOne;
}

TEST(BtrConversions, makeAFileOfASessionWithoutAMessage) {
  const WorkingDirectory directory;
  expectSuccess(toTable(BtrImage(2).session(0, {}).sector(1, {})), {"out_S1.csv"});
  EXPECT_EQ(rowsOf("out_S1.csv"), Names{});
}

TEST(BtrConversions, makeAFileOfASessionWhoseSectorsAreGone) {
  const WorkingDirectory directory;
  expectSuccess(toTable(BtrImage(1).session(0, {})), {"out_S1.csv"});
  EXPECT_EQ(rowsOf("out_S1.csv"), Names{});
}

TEST(BtrConversions, readACircularSessionInTheOrderOfItsRecording) {
  const WorkingDirectory directory;
  BtrImage image(6);
  image.session(0, {});
  for (std::uint32_t sector = 1; sector <= 5; ++sector) {
    image.sector(sector, {}, {{.id = sector, .timestamp = (sector + 2) % 5 * 1000}}, sector <= 2 ? 3 : 2);
  }
  expectSuccess(toTable(image), {"out_S1.csv"});
  EXPECT_EQ(rowsOf("out_S1.csv"),
            (Names{"1;0.000;1;Rx;DT;0003;-;0;", "2;1.000;1;Rx;DT;0004;-;0;", "3;2.000;1;Rx;DT;0005;-;0;",
                   "4;3.000;1;Rx;DT;0001;-;0;", "5;4.000;1;Rx;DT;0002;-;0;"}));
}

TEST(BtrConversions, followTheWrapsOfTheTimeStamps) {
  const WorkingDirectory directory;
  constexpr std::uint32_t kMinute = 60'000'000;
  BtrImage image(4);
  image.session(0, {.startTimestamp = 0x1'0000'0000});
  image.sector(1, {}, {{.id = 1, .timestamp = 0xFFFFFFF0}, btrTick(40 * kMinute), {.id = 2, .timestamp = 0x10}});
  image.sector(2, {}, {btrTick(70 * kMinute), {.id = 3, .bus = 1, .timestamp = 71 * kMinute}, btrTick(3 * kMinute)});
  image.sector(3, {}, {{.id = 4, .bus = 1, .timestamp = 4 * kMinute}, {.id = 5, .bus = 2, .timestamp = 5 * kMinute}});
  expectSuccess(toTable(image), {"out_S1.csv"});
  EXPECT_EQ(rowsOf("out_S1.csv"), (Names{"1;8589934.576;1;Rx;DT;0001;-;0;",     // 2^32 + 0xFFFFFFF0 microseconds
                                         "2;8589934.608;1;Rx;DT;0002;-;0;",     // 2 * 2^32 + 16
                                         "3;8554967.296;2;Rx;DT;0003;-;0;",     // 2^32 + 71 minutes
                                         "4;8829934.592;2;Rx;DT;0004;-;0;",     // 2 * 2^32 + 4 minutes
                                         "5;8889934.592;3;Rx;DT;0005;-;0;"}));  // a bus silent until then, likewise
}

TEST(BtrConversions, failInTheSessionThatMakesNoSenseAndKeepTheOthers) {
  const WorkingDirectory directory;
  BtrImage image(6);
  image.session(0, {.firstSector = 1, .date = atMinute(0)}).session(1, {.firstSector = 4, .date = atMinute(1)});
  image.sector(1, atMinute(0), {{.id = 1}});
  image.sector(2, atMinute(0), {{.id = 2}, {.id = 3, .bus = 15}, {.id = 4}});
  image.sector(3, atMinute(0), {{.id = 5}});
  image.sector(4, atMinute(1), {{.id = 6}});
  const Outcome outcome = toTable(image);
  EXPECT_EQ(outcome.code, XLATR_FAILED);
  EXPECT_EQ(outcome.text, "Unexpected frame received. Type: 15, ID: 0x3 ");
  EXPECT_EQ(rowsOf("out_S1.csv"), Names{"1;0.000;1;Rx;DT;0001;-;0;"}) << "the sectors in front of it are kept";
  EXPECT_EQ(rowsOf("out_S2.csv"), Names{"1;0.000;1;Rx;DT;0006;-;0;"});
}

TEST(BtrConversions, endAtADamagedSector) {
  const WorkingDirectory directory;
  BtrImage image(6);
  image.session(0, {.date = atMinute(0)}).session(1, {.firstSector = 5, .date = atMinute(1)});
  for (std::uint32_t sector = 1; sector <= 4; ++sector) {
    image.sector(sector, atMinute(0), {{.id = sector}});
  }
  image.sector(5, atMinute(1)).put(std::size_t{2} * 512 + 508, 0, 4);
  expectSuccess(toTable(image), {"out_S1.csv", "out_S2.csv"});
  EXPECT_EQ(rowsOf("out_S1.csv"), Names{"1;0.000;1;Rx;DT;0001;-;0;"});
}

TEST(BtrConversions, refuseATargetThatSessionsCannotBecome) {
  const WorkingDirectory directory;
  writeFile("in.btr", threeSessions().bytes());
  for (const TraceFormat format : {XLATR_FORMAT_BTR, XLATR_FORMAT_BTRC, XLATR_FORMAT_MF4}) {
    const Outcome outcome = convertSessions({1}, format, "./out");
    EXPECT_EQ(outcome.code, XLATR_FAILED) << format;
    EXPECT_EQ(outcome.text, "The specified conversion is invalid or not supported ") << format;
    EXPECT_EQ(outcome.files, Names{}) << format;
  }
}

TEST(BtrConversions, makeAFileOfATrace) {
  const WorkingDirectory directory;
  writeFile("in.trc",
            ";$FILEVERSION=1.3\n;$STARTTIME=45352.34410011574\n"
            "  1)  10.5 1 Rx     0123 -  2    AA BB\n"
            "  2)  11.0 5 Tx 1ABCDEF0 -  8    01 02 03 04 05 06 07 08\n"
            "  3)  12.0 2 Rx     07FF -  4    RTR\n"
            "a line that is no frame\n");
  expectSuccess(convert("in.trc", "out.btr", std::nullopt, XLATR_FORMAT_BTR), {"out.btr"});
  const BtrDate date{.dayOfWeek = 5};
  EXPECT_TRUE(sameBytes(readFile("out.btr"),
                        BtrImage(2)
                            .session(0, {.date = date})
                            .sector(1, date,
                                    {{.id = 0x123, .bus = 0, .length = 2, .timestamp = 10500, .data = {0xAA, 0xBB}},
                                     {.id = 0x1ABCDEF0,
                                      .flags = 2,
                                      .bus = 4,
                                      .length = 8,
                                      .timestamp = 11000,
                                      .data = {1, 2, 3, 4, 5, 6, 7, 8}},
                                     {.id = 0x7FF, .flags = 1, .bus = 1, .length = 4, .timestamp = 12000}})
                            .bytes()));
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

// Classic traffic, tens of thousands of frames over many sectors, goes to a session file and comes back the same but
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

// A frame line without its number, taken apart into time and the rest.
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

// The generator writes the same traffic as sessions and as lines, with code of its own for both.
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
    ASSERT_EQ(convertSessions({}, XLATR_FORMAT_TRC, "./out.trc", 2.1).code, XLATR_SUCCESS);
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

TEST(BtrConversions, leaveOutWhatASessionHasNoFormFor) {
  const WorkingDirectory directory;
  writeFile("in.trc",
            ";$FILEVERSION=2.1\n;$STARTTIME=45352.34410011574\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n"
            " 1 1.000 DT 1 0001 Rx - 1 AA\n"
            " 2 2.000 FD 1 0002 Rx - 1 AA\n"
            " 3 3.000 EV 1 a text of the user\n"
            " 4 4.000 ST 1 - Rx - 4 00 00 00 08\n"
            " 5 5.000 ER 1 - Rx - 5 04 00 0C 1E 02\n"
            " 6 6.000 EC 1 - Rx - 2 03 04\n"
            " 7 7.000 DT 1 0007 Tx - 1 BB\n");
  expectSuccess(convert("in.trc", "mid.btr", std::nullopt, XLATR_FORMAT_BTR), {"mid.btr"});
  expectSuccess(convert("mid.btr", "./out.trc", 2.1), {"out_S1.trc"});
  EXPECT_EQ(
      framesOf("out_S1.trc"),
      (Names{"        1.000 DT 1      0001 Rx -  1    AA", "        5.000 ER 1         - Rx -  5    04 00 0C 1E 02",
             "        6.000 EC 1         - Rx -  2    03 04", "        7.000 DT 1      0007 Rx -  1    BB"}));
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
  const Outcome outcome = toTable(image);
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

// Whatever happens to a byte, the conversion ends, with a status and a text that fit each other.
void expectAnEnd(const std::string& content, TraceFormat format, double version) {
  writeFile("in.btr", content);
  const Outcome outcome = convertSessions({}, format, "./out", version);
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
    expectAnEnd(damaged, at % 3 == 0 ? XLATR_FORMAT_TRC : XLATR_FORMAT_CSV, -1.0);
    ASSERT_FALSE(HasFailure()) << at;
  }
}

TEST(BtrConversions, endAtAnyLength) {
  const WorkingDirectory directory;
  const std::string whole = smallFile();
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    expectAnEnd(whole.substr(0, length), XLATR_FORMAT_ASC, -1.0);
    ASSERT_FALSE(HasFailure()) << length;
  }
}

}  // namespace
}  // namespace xlatr::conversions
