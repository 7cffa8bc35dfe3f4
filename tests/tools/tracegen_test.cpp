#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <ios>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tracegen/blf_printer.hpp"
#include "tracegen/candump_printer.hpp"
#include "tracegen/generator.hpp"
#include "tracegen/payload.hpp"
#include "tracegen/random.hpp"
#include "tracegen/traffic_model.hpp"
#include "tracegen/trc_printer.hpp"

namespace tracegen {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

constexpr std::array kAllVersions{TrcVersion::V1_1, TrcVersion::V1_2, TrcVersion::V1_3,
                                  TrcVersion::V2_0, TrcVersion::V2_1, TrcVersion::V3_0};

// Small and busy: everything happens within a few thousand entries.
RecordingOptions busyOptions() {
  RecordingOptions options;
  options.traffic = {.seed = 5,
                     .buses = 3,
                     .identifiers = 10,
                     .fdShare = 30,
                     .xlShare = 0,
                     .remoteRate = 100,
                     .disturbanceRate = 40,
                     .eventRate = 60,
                     .commentRate = 60};
  options.maxMessages = 10000;
  return options;
}

RecordingOptions busyOptions(TrcVersion version) {
  RecordingOptions options = busyOptions();
  options.version = version;
  options.traffic.buses = hasBusColumn(version) ? 3 : 1;
  return options;
}

std::string generateText(const RecordingOptions& options) {
  std::string text;
  generate(options, [&](std::string_view piece) { text.append(piece); });
  return text;
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.ends_with('\r')) {
      line.pop_back();
    }
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> splitTokens(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> tokens;
  for (std::string token; stream >> token;) {
    tokens.push_back(token);
  }
  return tokens;
}

std::vector<std::string> messageLines(const RecordingOptions& options) {
  std::vector<std::string> lines = splitLines(generateText(options));
  std::erase_if(lines, [](const std::string& line) { return line.starts_with(';'); });
  return lines;
}

Entry makeEntry(EntryKind kind, std::uint32_t canId, std::initializer_list<std::uint8_t> data) {
  Entry entry;
  entry.kind = kind;
  entry.timeUs = 1234567;
  entry.bus = 2;
  entry.canId = canId;
  entry.dataLength = static_cast<std::uint32_t>(data.size());
  std::copy(data.begin(), data.end(), entry.data.begin());
  return entry;
}

std::string printOne(LinePrinter& printer, const Entry& entry) {
  std::string text;
  TextOutput output([&](std::string_view piece) { text.append(piece); });
  printer.printEntry(entry, output);
  output.flush();
  return text;
}

Entry dataEntry() {
  return makeEntry(EntryKind::Data, 0x7A, {0xAB, 0x0C});
}

Entry extendedEntry() {
  Entry entry = makeEntry(EntryKind::Data, 0x18FEF100, {0x01});
  entry.extended = true;
  entry.transmitted = true;
  return entry;
}

Entry remoteEntry() {
  Entry entry = makeEntry(EntryKind::Remote, 0x7A, {});
  entry.dataLength = 8;
  return entry;
}

Entry fdEntry(bool bitRateSwitch, bool errorStateIndicator) {
  Entry entry = makeEntry(EntryKind::FdData, 0x123, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xA, 0xB});
  entry.bitRateSwitch = bitRateSwitch;
  entry.errorStateIndicator = errorStateIndicator;
  return entry;
}

Entry eventEntry() {
  Entry entry = makeEntry(EntryKind::Event, 0, {});
  entry.text = "Ignition on";
  return entry;
}

Entry commentEntry() {
  Entry entry;
  entry.text = "Note 1: road wet";
  return entry;
}

TEST(TracegenRandom, isXoshiro256StarStar) {
  // The published algorithm, seeded by splitmix64 from 0.
  Random random(0);
  EXPECT_EQ(random.next(), 0x99EC5F36CB75F2B4U);
  EXPECT_EQ(random.next(), 0xBF6E1F784956452AU);
  EXPECT_EQ(random.next(), 0x1A5F849D4933E6E0U);
}

TEST(TracegenRandom, staysBelowTheBound) {
  Random random(1);
  std::set<std::uint32_t> seen;
  for (int count = 0; count < 1000; ++count) {
    seen.insert(random.below(5));
  }
  EXPECT_THAT(seen, ElementsAre(0, 1, 2, 3, 4));
}

TEST(TracegenPayload, hasTheUsualChecksum) {
  // The check value of this CRC in the catalogues.
  constexpr std::array<std::uint8_t, 9> kDigits{'1', '2', '3', '4', '5', '6', '7', '8', '9'};
  EXPECT_EQ(checksum(kDigits), 0x4B);
}

TEST(TracegenPayload, countsAndChecks) {
  Random random(1);
  Payload payload(8, random);
  std::array<std::uint8_t, 8> data{};
  for (std::uint32_t frame = 1; frame <= 40; ++frame) {
    payload.fill(data, random);
    EXPECT_EQ(data[1] & 0xFU, frame % 16);
    EXPECT_EQ(data[0], checksum(std::span(data).subspan(1)));
  }
}

TEST(TracegenPayload, changesSlowly) {
  Random random(3);
  Payload payload(8, random);
  std::array<std::uint8_t, 8> data{};
  payload.fill(data, random);
  for (int frame = 0; frame < 5000; ++frame) {
    const std::int32_t before = data[2] + 256 * data[3];
    payload.fill(data, random);
    EXPECT_LE(std::abs(data[2] + 256 * data[3] - before), 40);
  }
}

struct LineCase {
  const char* name;
  TrcVersion version;
  Entry entry;
  const char* line;
};

TEST(TracegenTrcPrinter, printsTheColumnsOfEachVersion) {
  const Entry status = makeEntry(EntryKind::Status, 0, {0, 4, 0, 0});
  const Entry counters = makeEntry(EntryKind::ErrorCounters, 0, {0x60, 0x08});
  const Entry error = makeEntry(EntryKind::ErrorFrame, 0, {4, 1, 0x19, 0x60, 0x08});
  const std::vector<LineCase> cases{
      {"1.1 data", TrcVersion::V1_1, dataEntry(), "     1)      1234.6  Rx         007A  2  AB 0C"},
      {"1.1 extended", TrcVersion::V1_1, extendedEntry(), "     1)      1234.6  Tx     18FEF100  1  01"},
      {"1.1 remote", TrcVersion::V1_1, remoteEntry(), "     1)      1234.6  Rx         007A  8  RTR"},
      {"1.1 status", TrcVersion::V1_1, status, "     1)      1234.6  Warng  FFFFFFFF  4  00 04 00 00 BUSPASSIVE"},
      {"1.1 healthy status", TrcVersion::V1_1, makeEntry(EntryKind::Status, 0, {0, 0, 0, 0}),
       "     1)      1234.6  Warng  FFFFFFFF  4  00 00 00 00"},
      {"1.1 counters", TrcVersion::V1_1, counters, "     1)      1234.6  Error      0000  2  60 08"},
      {"1.1 error", TrcVersion::V1_1, error, "     1)      1234.6  Error      0004  4  01 19 60 08"},
      {"1.2 data", TrcVersion::V1_2, dataEntry(), "     1)     1234.567  2  Rx         007A  2  AB 0C"},
      {"1.2 remote", TrcVersion::V1_2, remoteEntry(), "     1)     1234.567  2  Rx         007A  8  RTR"},
      {"1.3 data", TrcVersion::V1_3, dataEntry(), "      1)     1234.567 2  Rx        007A -  2    AB 0C"},
      {"1.3 extended", TrcVersion::V1_3, extendedEntry(), "      1)     1234.567 2  Tx    18FEF100 -  1    01"},
      {"1.3 remote", TrcVersion::V1_3, remoteEntry(), "      1)     1234.567 2  Rx        007A -  8    RTR"},
      {"1.3 status", TrcVersion::V1_3, status, "      1)     1234.567 2  Warng FFFFFFFF -  4    00 04 00 00"},
      {"1.3 error", TrcVersion::V1_3, error, "      1)     1234.567 2  Error     0004 -  4    01 19 60 08"},
      {"2.0 data", TrcVersion::V2_0, dataEntry(), "      1      1234.567 DT     007A Rx 2  AB 0C"},
      {"2.0 FD", TrcVersion::V2_0, fdEntry(false, false),
       "      1      1234.567 FD     0123 Rx 12 00 01 02 03 04 05 06 07 08 09 0A 0B"},
      {"2.0 remote", TrcVersion::V2_0, remoteEntry(), "      1      1234.567 RR     007A Rx 8  "},
      {"2.0 status", TrcVersion::V2_0, status, "      1      1234.567 ST          Rx    00 04 00 00"},
      {"2.0 event", TrcVersion::V2_0, eventEntry(), "      1      1234.567 EV Ignition on"},
      {"2.1 data", TrcVersion::V2_1, dataEntry(), "      1      1234.567 DT 2      007A Rx -  2    AB 0C"},
      {"2.1 extended", TrcVersion::V2_1, extendedEntry(), "      1      1234.567 DT 2  18FEF100 Tx -  1    01"},
      {"2.1 FD", TrcVersion::V2_1, fdEntry(false, false),
       "      1      1234.567 FD 2      0123 Rx -  9    00 01 02 03 04 05 06 07 08 09 0A 0B"},
      {"2.1 BRS", TrcVersion::V2_1, fdEntry(true, false),
       "      1      1234.567 FB 2      0123 Rx -  9    00 01 02 03 04 05 06 07 08 09 0A 0B"},
      {"2.1 ESI", TrcVersion::V2_1, fdEntry(false, true),
       "      1      1234.567 FE 2      0123 Rx -  9    00 01 02 03 04 05 06 07 08 09 0A 0B"},
      {"2.1 BRS and ESI", TrcVersion::V2_1, fdEntry(true, true),
       "      1      1234.567 BI 2      0123 Rx -  9    00 01 02 03 04 05 06 07 08 09 0A 0B"},
      {"2.1 remote", TrcVersion::V2_1, remoteEntry(), "      1      1234.567 RR 2      007A Rx -  8    "},
      {"2.1 status", TrcVersion::V2_1, status, "      1      1234.567 ST 2         - Rx -  4    00 04 00 00"},
      {"2.1 counters", TrcVersion::V2_1, counters, "      1      1234.567 EC 2         - Rx -  2    60 08"},
      {"2.1 error", TrcVersion::V2_1, error, "      1      1234.567 ER 2         - Rx -  5    04 01 19 60 08"},
      {"2.1 event", TrcVersion::V2_1, eventEntry(), "      1      1234.567 EV 2  Ignition on"},
      {"2.1 comment", TrcVersion::V2_1, commentEntry(), ";   Note 1: road wet"},
      {"3.0 data", TrcVersion::V3_0, dataEntry(),
       "      1      1234.567 DT 2       07A Rx -  -  -  -        - - 2    AB 0C"},
      {"3.0 extended", TrcVersion::V3_0, extendedEntry(),
       "      1      1234.567 DT 2  18FEF100 Tx -  -  -  -        - - 1    01"},
      {"3.0 status", TrcVersion::V3_0, status,
       "      1      1234.567 ST 2         - Rx -  -  -  -        - - 4    00 04 00 00"},
      {"3.0 event", TrcVersion::V3_0, eventEntry(), "      1      1234.567 EV 2  Ignition on"},
      // 7Ah: network 7Ah mod 40h, type 1 + 7Ah mod 5, acceptance field 7Ah times 1003Fh; the DLC is the length less
      // one.
      {"3.0 XL", TrcVersion::V3_0, makeEntry(EntryKind::XlData, 0x7A, {0xAB, 0x0C, 0x0D}),
       "      1      1234.567 XL 2       07A Rx -  3A 03 007A1E06 0 1 2    AB 0C 0D"},
  };
  for (const LineCase& test : cases) {
    TrcPrinter printer({.version = test.version});
    EXPECT_EQ(printOne(printer, test.entry), std::string(test.line) + "\r\n") << test.name;
  }
}

TEST(TracegenTrcPrinter, numbersMessagesButNotComments) {
  TrcPrinter printer({.version = TrcVersion::V2_0, .carriageReturn = false});
  EXPECT_THAT(printOne(printer, dataEntry()), StartsWith("      1 "));
  EXPECT_THAT(printOne(printer, commentEntry()), StartsWith(";"));
  EXPECT_THAT(printOne(printer, dataEntry()), StartsWith("      2 "));
}

TEST(TracegenTrcPrinter, heedsTheLineEnd) {
  TrcPrinter printer({.version = TrcVersion::V2_0, .carriageReturn = false});
  EXPECT_THAT(printOne(printer, dataEntry()), ::testing::EndsWith("0C\n"));
}

TEST(TracegenTrcPrinter, writesAHeaderOfKeysAndComments) {
  std::string text;
  TextOutput output([&](std::string_view piece) { text.append(piece); });
  TrcPrinter printer({.version = TrcVersion::V2_1, .buses = 2, .seed = 77});
  printer.printHeader(output);
  output.flush();
  // 19783 days and eight hours after 1970-01-01, which is day 25569.
  EXPECT_EQ(text,
            ";$FILEVERSION=2.1\r\n"
            ";$STARTTIME=45352.3333333333\r\n"
            ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
            ";\r\n"
            ";   Start time: 01.03.2024 08:00:00.000.000\r\n"
            ";   Generated by tracegen from seed 77\r\n"
            ";\r\n"
            ";   Bus  Name\r\n"
            ";   1    CAN 1\r\n"
            ";   2    CAN 2\r\n"
            ";\r\n"
            ";   Message   Time    Type    ID     Rx/Tx\r\n"
            ";   Number    Offset  |  Bus  [hex]  |  Reserved\r\n"
            ";   |         [ms]    |  |    |      |  |  Data Length Code\r\n"
            ";   |         |       |  |    |      |  |  |    Data [hex] ...\r\n"
            ";---+-- ------+------ +- +- --+----- +- +- +--- +- -- -- -- -- -- -- --\r\n");
}

TEST(TracegenTrcPrinter, putsColumnsUnderTheirRuler) {
  for (const TrcVersion version : kAllVersions) {
    RecordingOptions options = busyOptions(version);
    options.traffic.makePlain();
    options.maxMessages = 1;
    const std::vector<std::string> lines = splitLines(generateText(options));
    ASSERT_GE(lines.size(), 2U);
    const std::string& ruler = lines[lines.size() - 2];
    const std::string& line = lines.back();
    ASSERT_THAT(ruler, StartsWith(";---+-"));
    // No column starts left of its place in the ruler or reaches beyond it: where the ruler is blank, so is the line.
    for (std::size_t at = 0; at < std::min(ruler.size(), line.size()); ++at) {
      // The parenthesis of the old versions is in the ruler's gap.
      if (ruler[at] == ' ' && line[at] != ')') {
        EXPECT_EQ(line[at], ' ') << trcVersionText(version) << " column " << at;
      }
    }
  }
}

std::uint64_t numberAt(std::string_view bytes, std::size_t offset, std::size_t width) {
  std::uint64_t value = 0;
  for (std::size_t index = width; index > 0; --index) {
    value = value << 8 | static_cast<std::uint8_t>(bytes.at(offset + index - 1));
  }
  return value;
}

TEST(TracegenBlfPrinter, saysInTheHeadHowTheRecordingEnded) {
  BlfPrinter printer;
  std::string log;
  TextOutput output([&log](std::string_view piece) { log.append(piece); });
  printer.printHeader(output);
  Entry entry;
  entry.kind = EntryKind::Data;
  entry.bus = 1;
  entry.dataLength = 8;
  constexpr std::uint64_t kFrames = 3000;
  for (std::uint64_t frame = 0; frame < kFrames; ++frame) {
    entry.timeUs = frame * 1'000'000;
    printer.printEntry(entry, output);
  }
  entry.kind = EntryKind::Comment;
  printer.printEntry(entry, output);  // has no form
  printer.printEnd(output);
  output.flush();
  EXPECT_EQ(numberAt(log, 32, 4), 0U);
  const std::string head = printer.finalHeader();
  ASSERT_EQ(head.size(), 144U);
  EXPECT_EQ(head.substr(0, 4), "LOGG");
  EXPECT_EQ(numberAt(head, 4, 4), 144U);
  EXPECT_EQ(numberAt(head, 16, 8), log.size());
  // Two containers, each with a header of 32 bytes, of objects of 56 bytes.
  EXPECT_EQ(numberAt(head, 24, 8), 144 + 2 * 32 + kFrames * 56);
  EXPECT_EQ(numberAt(head, 32, 4), kFrames);
  const auto date = [&head](std::size_t offset) {
    std::vector<std::uint64_t> fields;
    for (std::size_t index = 0; index < 8; ++index) {
      fields.push_back(numberAt(head, offset + 2 * index, 2));
    }
    return fields;
  };
  EXPECT_THAT(date(40), ElementsAre(2024, 3, 5, 1, 8, 0, 0, 0));
  EXPECT_THAT(date(56), ElementsAre(2024, 3, 5, 1, 8, 49, 59, 0));
}

TEST(TracegenCandumpPrinter, printsFrames) {
  struct Case {
    const char* name;
    Entry entry;
    const char* line;
  };
  const std::vector<Case> cases{
      {"data", dataEntry(), "(1709280001.234567) can1 07A#AB0C\n"},
      {"extended", extendedEntry(), "(1709280001.234567) can1 18FEF100#01\n"},
      {"FD", fdEntry(false, false), "(1709280001.234567) can1 123##0000102030405060708090A0B\n"},
      {"BRS", fdEntry(true, false), "(1709280001.234567) can1 123##1000102030405060708090A0B\n"},
      {"BRS and ESI", fdEntry(true, true), "(1709280001.234567) can1 123##3000102030405060708090A0B\n"},
      {"remote", remoteEntry(), "(1709280001.234567) can1 07A#R8\n"},
      {"error", makeEntry(EntryKind::ErrorFrame, 0, {4, 1, 0x19, 0x60, 0x08}),
       "(1709280001.234567) can1 20000008#0000000000000000\n"},
      {"status", makeEntry(EntryKind::Status, 0, {0, 4, 0, 0}), ""},
      {"event", eventEntry(), ""},
      {"comment", commentEntry(), ""},
  };
  CandumpPrinter printer;
  for (const Case& test : cases) {
    EXPECT_EQ(printOne(printer, test.entry), test.line) << test.name;
  }
}

TEST(TracegenTrafficModel, neverRunsBackwards) {
  TrafficModel model(busyOptions().traffic);
  std::uint64_t last = 0;
  for (int count = 0; count < 50000; ++count) {
    const Entry& entry = model.next();
    ASSERT_GE(entry.timeUs, last);
    last = entry.timeUs;
  }
}

TEST(TracegenTrafficModel, neverRunsBackwardsOnAnOverloadedBus) {
  TrafficOptions options = busyOptions().traffic;
  options.identifiers = kMaxIdentifiers;
  TrafficModel model(options);
  std::uint64_t last = 0;
  for (int count = 0; count < 50000; ++count) {
    const Entry& entry = model.next();
    ASSERT_GE(entry.timeUs, last);
    last = entry.timeUs;
  }
}

TEST(TracegenTrafficModel, putsOneFrameAtATimeOnABus) {
  TrafficOptions options;
  options.makePlain();
  TrafficModel model(options);
  std::map<std::uint8_t, std::uint64_t> freeUs;
  for (int count = 0; count < 20000; ++count) {
    const Entry& entry = model.next();
    EXPECT_GE(entry.timeUs, freeUs[entry.bus]);
    // A frame without stuffed bits at 500 kbit/s.
    freeUs[entry.bus] = entry.timeUs + 2 * (47 + std::uint64_t{8} * entry.dataLength);
  }
}

TEST(TracegenTrafficModel, keepsThePeriodOfEachIdentifier) {
  TrafficOptions options;
  options.buses = 1;
  options.identifiers = 14;
  options.makePlain();
  TrafficModel model(options);
  std::map<std::uint32_t, std::vector<std::uint64_t>> times;
  for (int count = 0; count < 20000; ++count) {
    const Entry& entry = model.next();
    times[entry.canId].push_back(entry.timeUs);
  }
  ASSERT_EQ(times.size(), options.identifiers);
  std::set<std::uint64_t> periodsMs;
  bool jitter = false;
  for (const auto& [canId, stamps] : times) {
    ASSERT_GE(stamps.size(), 3U);
    const std::uint64_t mean = (stamps.back() - stamps.front()) / (stamps.size() - 1);
    const std::uint64_t periodMs = (mean + 500) / 1000;
    periodsMs.insert(periodMs);
    EXPECT_NEAR(static_cast<double>(mean), static_cast<double>(periodMs) * 1000, 200) << std::hex << canId;
    jitter = jitter || stamps[1] - stamps[0] != stamps[2] - stamps[1];
  }
  EXPECT_THAT(periodsMs, ElementsAre(10, 20, 50, 100, 200, 500, 1000));
  EXPECT_TRUE(jitter);
}

TEST(TracegenTrafficModel, showsEveryKindOfEntry) {
  TrafficOptions options = busyOptions().traffic;
  options.xlShare = 10;
  TrafficModel model(options);
  std::set<EntryKind> kinds;
  std::set<std::uint32_t> fdLengths;
  std::set<std::pair<bool, bool>> fdFlags;
  std::set<std::uint8_t> buses;
  std::set<bool> extended;
  std::set<bool> transmitted;
  std::set<std::uint32_t> statusWords;
  for (int count = 0; count < 20000; ++count) {
    const Entry& entry = model.next();
    kinds.insert(entry.kind);
    buses.insert(entry.bus);
    if (entry.kind == EntryKind::FdData) {
      fdLengths.insert(entry.dataLength);
      fdFlags.insert({entry.bitRateSwitch, entry.errorStateIndicator});
    } else if (entry.kind == EntryKind::Data) {
      extended.insert(entry.extended);
      transmitted.insert(entry.transmitted);
      EXPECT_LE(entry.dataLength, 8U);
    } else if (entry.kind == EntryKind::Status) {
      statusWords.insert(entry.data[1] * 0x10000U + entry.data[3]);
    }
  }
  EXPECT_THAT(kinds,
              ElementsAre(EntryKind::Data, EntryKind::FdData, EntryKind::XlData, EntryKind::Remote, EntryKind::Status,
                          EntryKind::ErrorCounters, EntryKind::ErrorFrame, EntryKind::Event, EntryKind::Comment));
  EXPECT_THAT(fdLengths, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64));
  EXPECT_EQ(fdFlags.size(), 4U);
  EXPECT_THAT(buses, ElementsAre(0, 1, 2, 3));
  EXPECT_EQ(extended.size(), 2U);
  EXPECT_EQ(transmitted.size(), 2U);
  EXPECT_THAT(statusWords, UnorderedElementsAre(0U, 8U, 0x10U, 0x40000U));
}

TEST(Tracegen, isDeterministic) {
  EXPECT_EQ(generateText(busyOptions()), generateText(busyOptions()));
  RecordingOptions other = busyOptions();
  other.traffic.seed = 6;
  EXPECT_NE(generateText(busyOptions()), generateText(other));
}

TEST(Tracegen, writesAsManyMessagesAsAskedFor) {
  for (const TrcVersion version : kAllVersions) {
    const RecordingOptions options = busyOptions(version);
    EXPECT_EQ(messageLines(options).size(), options.maxMessages) << trcVersionText(version);
  }
}

TEST(Tracegen, endsWithTheLineThatReachesTheSize) {
  RecordingOptions options = busyOptions();
  options.maxMessages = UINT64_MAX;
  options.maxBytes = 100000;
  std::string text;
  const RecordingSize size = generate(options, [&](std::string_view piece) { text.append(piece); });
  EXPECT_EQ(size.bytes, text.size());
  EXPECT_GE(text.size(), options.maxBytes);
  const std::size_t lastLine = text.size() - text.rfind('\n', text.size() - 2) - 1;
  EXPECT_LT(text.size() - lastLine, options.maxBytes);
}

TEST(Tracegen, countsWhatItWrites) {
  std::string text;
  const RecordingSize size = generate(busyOptions(), [&](std::string_view piece) { text.append(piece); });
  EXPECT_EQ(size.messages, 10000U);
  EXPECT_GT(size.comments, 0U);
  RecordingOptions headerOnly = busyOptions();
  headerOnly.maxMessages = 0;
  const std::size_t headerLines = splitLines(generateText(headerOnly)).size();
  EXPECT_EQ(splitLines(text).size(), headerLines + size.messages + size.comments);
}

TEST(Tracegen, writesOnlyWordsThatTheVersionKnows) {
  const std::set<std::string> oldWords{"Rx", "Tx", "Warng", "Error"};
  const std::set<std::string> newWords{"DT", "FD", "FB", "FE", "BI", "RR", "ST", "EC", "ER", "EV"};
  for (const TrcVersion version : kAllVersions) {
    RecordingOptions options = busyOptions(version);
    options.traffic.xlShare = 10;
    std::set<std::string> expected = version < TrcVersion::V2_0 ? oldWords : newWords;
    if (version == TrcVersion::V3_0) {
      expected.insert("XL");
    }
    const bool wordBehindBus = version == TrcVersion::V1_2 || version == TrcVersion::V1_3;
    std::set<std::string> words;
    for (const std::string& line : messageLines(options)) {
      words.insert(splitTokens(line)[wordBehindBus ? 3 : 2]);
    }
    EXPECT_EQ(words, expected) << trcVersionText(version);
  }
}

TEST(Tracegen, writesPlainTrafficOfDataFramesOnly) {
  RecordingOptions options;
  options.traffic.makePlain();
  options.maxMessages = 5000;
  const std::string text = generateText(options);
  for (const std::string& line : messageLines(options)) {
    EXPECT_EQ(splitTokens(line)[2], "DT");
  }
  RecordingOptions headerOnly = options;
  headerOnly.maxMessages = 0;
  const std::string header = generateText(headerOnly);
  ASSERT_THAT(text, StartsWith(header));
  EXPECT_EQ(text.find(';', header.size()), std::string::npos) << "no comments after the header";
}

TEST(Tracegen, writesTheSameFramesAsTrcAndAsLog) {
  RecordingOptions options = busyOptions();
  options.traffic.makePlain();
  const std::vector<std::string> trc = messageLines(options);
  options.form = Form::Candump;
  const std::vector<std::string> log = splitLines(generateText(options));
  ASSERT_EQ(trc.size(), log.size());
  for (std::size_t index = 0; index < trc.size(); ++index) {
    const std::vector<std::string> tokens = splitTokens(trc[index]);
    std::string data;
    for (std::size_t at = 8; at < tokens.size(); ++at) {
      data += tokens[at];
    }
    const std::vector<std::string> parts = splitTokens(log[index]);
    ASSERT_EQ(parts.size(), 3U);
    // Bus 1 is can0. A base identifier has four digits in a trace and three in a log.
    EXPECT_EQ(parts[1], "can" + std::to_string(std::stoi(tokens[3]) - 1));
    EXPECT_EQ(parts[2], tokens[4].substr(tokens[4].size() == 4 ? 1 : 0) + "#" + data);
    // "123.456" milliseconds are the end of "(17092800ss.123456)".
    std::string digits = tokens[1];
    std::erase(digits, '.');
    const std::uint64_t timeUs = std::stoull(digits);
    EXPECT_EQ(parts[0], "(" + std::to_string(1709280000 + timeUs / 1000000) + "." +
                            std::to_string(1000000 + timeUs % 1000000).substr(1) + ")");
  }
}

TEST(Tracegen, writesLinTracesWithTheirChecksums) {
  RecordingOptions options = busyOptions();
  options.form = Form::Lin;
  options.maxMessages = 2000;
  const std::vector<std::string> lines = splitLines(generateText(options));
  ASSERT_GT(lines.size(), 1000U);
  EXPECT_EQ(lines[0], ";$FILEVERSION=1.2");
  for (std::size_t index = 5; index < lines.size(); ++index) {
    const std::vector<std::string> tokens = splitTokens(lines[index]);
    ASSERT_EQ(tokens[0], std::to_string(index - 4) + ")");
    const std::uint32_t id = static_cast<std::uint32_t>(std::stoul(tokens[3], nullptr, 16));
    const std::size_t length = std::stoul(tokens[4]);
    ASSERT_LT(id, 64U);
    if (tokens.back() == "SR") {
      ASSERT_EQ(length, 0U);
      continue;
    }
    ASSERT_EQ(tokens.size(), 7 + length) << lines[index];
    // Identifier with parity, data and checksum add up to all ones.
    const std::uint32_t p0 = (id ^ id >> 1 ^ id >> 2 ^ id >> 4) & 1U;
    const std::uint32_t p1 = ~(id >> 1 ^ id >> 3 ^ id >> 4 ^ id >> 5) & 1U;
    std::uint32_t sum = id | p0 << 6 | p1 << 7;
    for (std::size_t at = 5; at <= 5 + length; ++at) {
      sum += static_cast<std::uint32_t>(std::stoul(tokens[at], nullptr, 16));
      sum = (sum & 0xFFU) + (sum >> 8);
    }
    ASSERT_EQ(sum, 0xFFU) << lines[index];
  }
}

RecordingOptions btrcOptions() {
  RecordingOptions options = busyOptions();
  options.form = Form::Btrc;
  return options;
}

TEST(TracegenBtrc, fillsItsBlocksWithRecordsAndTheirTotals) {
  const std::string file = generateText(btrcOptions());
  ASSERT_EQ(file.size() % 8192, 0U);
  std::map<std::uint64_t, std::uint64_t> counts;
  std::uint64_t written = 0;
  std::uint64_t previousType = 0;
  for (std::size_t offset = 0; offset < file.size();) {
    const std::uint64_t size = numberAt(file, offset, 2);
    const std::uint64_t type = numberAt(file, offset + 2, 2);
    ASSERT_GE(size, 4U) << offset;
    ASSERT_LE(offset % 8192 + size, 8192U) << offset;
    ++counts[type];
    if (offset % 8192 == 0 && offset > 0) {
      EXPECT_EQ(type, 0x8001U);
      // A record that ends with its block is not counted yet.
      EXPECT_EQ(numberAt(file, offset + 12, 8), written - (previousType == 0 ? 0 : 1));
    }
    previousType = type;
    written += type == 0x8000 || type == 0x8001 || type == 0x8003 || type == 0 ? 0 : 1;
    offset += size;
  }
  RecordingOptions text = busyOptions();
  const RecordingSize size = generate(text, [](std::string_view) {});
  EXPECT_EQ(written, size.messages + size.comments);
  for (const std::uint32_t type : {1U, 2U, 3U, 4U, 6U, 7U, 8U, 0x8002U}) {
    EXPECT_GT(counts[type], 0U) << type;
  }
  EXPECT_EQ(counts[0x8000], 1U);
  EXPECT_EQ(counts[0x8003], 1U);
  EXPECT_EQ(counts[0x8001], file.size() / 8192 - 1);
}

TEST(TracegenBtrc, beginsWithTheStartOfTheRecording) {
  constexpr char kHead[] =
      "\x08\0\0\x80\x08\0\x01\xFA\x18\0\x03\x80\0\x80\x64\xC2\x93\xD2\xE2\0\xE8\x07\x03\x01\x08\0\0\0\0\0\0";
  EXPECT_EQ(generateText(btrcOptions()).substr(0, 32), std::string(kHead, 32));
}

TEST(TracegenBtrc, damagesAsManyBlocksAsItIsAskedTo) {
  const std::string whole = generateText(btrcOptions());
  RecordingOptions options = btrcOptions();
  options.damageRate = 10000;
  const std::string damaged = generateText(options);
  ASSERT_EQ(damaged.size(), whole.size());
  EXPECT_EQ(damaged.substr(0, 8192), whole.substr(0, 8192)) << "the head is spared";
  for (std::size_t offset = 8192; offset < whole.size(); offset += 8192) {
    EXPECT_NE(damaged.substr(offset, 8192), whole.substr(offset, 8192));
  }
}

TEST(Tracegen, writesSessionsInWholeSectors) {
  RecordingOptions options = busyOptions();
  options.form = Form::Btr;
  options.btr.sessions = 17;
  options.maxMessages = std::uint64_t{17} * 25;  // each session has a sector of 24 messages and one more
  RecordingSize size = generate(options, [](std::string_view) {});
  EXPECT_EQ(size.messages, 17U * 25);
  EXPECT_EQ(size.bytes, (2 + 17 * 2) * 512U);
  const std::string bytes = generateText(options);
  EXPECT_EQ(bytes.size(), size.bytes);
  EXPECT_EQ(bytes, generateText(options));
  // The last slot of the first directory is marked and links to sector 33, after 16 sessions.
  EXPECT_EQ(bytes[15 * 32 + 3], 1);
  EXPECT_EQ(bytes.substr(15 * 32 + 4, 4), std::string("\x21\0\0\0", 4));
  EXPECT_EQ(bytes.substr(24, 4), std::string("\x01\0\0\0", 4)) << "the first session begins at sector 1";
  EXPECT_EQ(bytes.substr(8, 8), std::string("\0\0\0\x08\x05\x01\x03\x18", 8)) << "on Friday, 1 March 2024, at 8";

  options.maxMessages = UINT64_MAX;
  options.maxBytes = std::uint64_t{10} * 512;
  EXPECT_EQ(generate(options, [](std::string_view) {}).messages, 240U);
}

TEST(Tracegen, refusesOptionsOutsideTheirRange) {
  struct Case {
    const char* name;
    void (*spoil)(RecordingOptions& options);
  };
  constexpr std::array kCases{
      Case{"no bus", [](RecordingOptions& options) { options.traffic.buses = 0; }},
      Case{"too many buses", [](RecordingOptions& options) { options.traffic.buses = 17; }},
      Case{"no identifier", [](RecordingOptions& options) { options.traffic.identifiers = 0; }},
      Case{"too many identifiers", [](RecordingOptions& options) { options.traffic.identifiers = 129; }},
      Case{"share above 100", [](RecordingOptions& options) { options.traffic.fdShare = 101; }},
      Case{"shares above 100", [](RecordingOptions& options) { options.traffic.xlShare = 71; }},
      Case{"rate above 10000", [](RecordingOptions& options) { options.traffic.eventRate = 10001; }},
      Case{"damage above 10000", [](RecordingOptions& options) { options.damageRate = 10001; }},
      Case{"too many buses for a session file",
           [](RecordingOptions& options) {
             options.form = Form::Btr;
             options.traffic.buses = 6;
           }},
      Case{"no session", [](RecordingOptions& options) { options.btr.sessions = 0; }},
      Case{"buses without a column", [](RecordingOptions& options) { options.version = TrcVersion::V2_0; }},
  };
  for (const Case& test : kCases) {
    RecordingOptions options = busyOptions();
    test.spoil(options);
    EXPECT_THROW(generateText(options), std::invalid_argument) << test.name;
  }
}

TEST(Tracegen, takesOptionsAtTheirLimits) {
  RecordingOptions options = busyOptions();
  options.maxMessages = 100;
  options.traffic.buses = kMaxBuses;
  options.traffic.identifiers = kMaxIdentifiers;
  options.traffic.fdShare = 100;
  options.traffic.eventRate = 10000;
  EXPECT_EQ(messageLines(options).size(), 100U);
  options.traffic.buses = 1;
  options.traffic.identifiers = 1;
  options.traffic.fdShare = 0;
  EXPECT_EQ(messageLines(options).size(), 100U);
}

TEST(Tracegen, reportsAFullDisk) {
  EXPECT_THROW(generateFile(busyOptions(), "/dev/full"), std::ios_base::failure);
}

TEST(Tracegen, reportsAMissingFolder) {
  EXPECT_THROW(generateFile(busyOptions(), "/nonexistent/folder/x.trc"), std::ios_base::failure);
}

}  // namespace
}  // namespace tracegen
