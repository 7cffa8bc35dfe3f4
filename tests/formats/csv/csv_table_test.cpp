// Tables of version 2.0 as frames.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "formats/csv/csv_frames.hpp"
#include "support/frame_text.hpp"
#include "support/random_frames.hpp"
#include "support/temp_folder.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

using Texts = std::vector<std::string>;

constexpr char kHeader[] =
    "time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err,text,xl,dlc_known,enhanced_checksum,error_position,"
    "tx_errors,rx_errors,bus_state,bus_load,vcid,sdt,acceptance_field,rrs,sec,checksum,checksum_model,lin_errors,"
    "lin_direction,reserved,record_type\r\n";

class CsvTable : public testing::Test {
 protected:
  Texts read(const std::string& content) {
    source_ = openCsvFrames(folder_.write("source.csv", content));
    account_ = {};
    return test::textsOf(*source_, account_);
  }
  void write(const FrameBatch& batch, const StreamHead& head = {}) {
    const auto sink = createCsvFrames(folder_.file("target.csv"), head, SinkSettings{.version = 2.0});
    account_ = {};
    sink->write(batch, account_);
    sink->close();
  }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
};

constexpr std::array<std::uint8_t, 3> kBytes = {0x0A, 0xB0, 0xFF};

FrameBatch someFrames() {
  FrameBatch batch;
  Frame frame;
  frame.timeNs = -1'500'001;
  frame.bus = 2;
  frame.id = 0x1ABCDEF0;
  frame.flags =
      frame_flag::kTransmitted | frame_flag::kExtended | frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi;
  frame.dlc = 3;
  frame.data = kBytes;
  batch.append(frame);
  frame.reset();
  frame.kind = FrameKind::Remote;
  frame.id = 0x1A;
  frame.flags = frame_flag::kReceived | frame_flag::kDlcKnown;
  frame.dlc = 8;
  batch.append(frame);
  frame.reset();
  frame.kind = FrameKind::Error;
  frame.attributes.set(FrameAttribute::ErrorType, 2);
  frame.attributes.set(FrameAttribute::TxErrors, 96);
  frame.attributes.set(FrameAttribute::RecordType, 4'294'967'295);
  batch.append(frame);
  frame.reset();
  frame.kind = FrameKind::Event;
  frame.text = "say \"a,b\"\r\nand go";
  batch.append(frame);
  frame.text = "";
  batch.append(frame);
  frame.text.reset();
  batch.append(frame);
  frame.kind = FrameKind::Comment;
  frame.timeNs = 7;
  frame.text = " xlatr: not one of ours";
  batch.append(frame);
  return batch;
}

TEST_F(CsvTable, isWrittenWithAColumnForEverything) {
  StreamHead head;
  head.start = TraceStart{.sinceEpochNs = 1'627'286'400'000'000'001, .zoneMinutes = 120};
  head.producer = "Logger \"7\"";
  write(someFrames(), head);
  EXPECT_EQ(folder_.read("target.csv"),
            std::string(kHeader) +
                "0,comment,0,0,0,,0,0,0,0,0,,,\" xlatr: table version=2.0 start=2021-07-26T08:00:00.000000001+02:00 "
                "producer=Logger \"\"7\"\"\",0,0,0,,,,,,,,,,,,,,,,\r\n"
                "-1500001,data,2,1ABCDEF0,1,1,1,1,1,3,3,0ab0ff,,,0,0,0,,,,,,,,,,,,,,,,\r\n"
                "0,remote,0,1A,0,0,0,0,0,8,0,,,,0,1,0,,,,,,,,,,,,,,,,\r\n"
                "0,error,0,0,0,,0,0,0,0,0,,2,,0,0,0,,96,,,,,,,,,,,,,,4294967295\r\n"
                "0,event,0,0,0,,0,0,0,0,0,,,\"say \"\"a,b\"\"\r\nand go\",0,0,0,,,,,,,,,,,,,,,,\r\n"
                "0,event,0,0,0,,0,0,0,0,0,,,\"\",0,0,0,,,,,,,,,,,,,,,,\r\n"
                "0,event,0,0,0,,0,0,0,0,0,,,,0,0,0,,,,,,,,,,,,,,,,\r\n"
                "7,comment,0,0,0,,0,0,0,0,0,,,\" xlatr: comment time=0.000000007 text= xlatr: not one of ours\",0,0,0,"
                ",,,,,,,,,,,,,,,\r\n");
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(account_.written(), 7U);
  EXPECT_EQ(
      read(folder_.read("target.csv")),
      (Texts{"-1500001 data 2 1ABCDEF0 x Tx FD BRS ESI dlc3 [0AB0FF]", "0 remote 0 1A Rx known dlc8",
             "0 error 0 0 error_type=2 tx_errors=96 record_type=4294967295", "0 event 0 0 \"say \"a,b\"\r\nand go\"",
             "0 event 0 0 \"\"", "0 event 0 0", "7 comment 0 0 \" xlatr: not one of ours\""}));
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(source_->head().version, 2.0);
  EXPECT_EQ(source_->head().start, head.start);
  EXPECT_EQ(source_->head().producer, head.producer);
  EXPECT_EQ(source_->head().format, XLATR_FORMAT_CSV);
}

TEST_F(CsvTable, hasPlacesThatAreLines) {
  write(someFrames());
  const auto source = openCsvFrames(folder_.file("target.csv"));
  FrameBatch batch;
  ASSERT_TRUE(source->read(batch, account_));
  EXPECT_EQ(std::vector(batch.places().begin(), batch.places().end()),
            (std::vector<std::uint64_t>{3, 4, 5, 6, 8, 9, 10}));
}

TEST_F(CsvTable, mayHaveAnyOfItsColumnsInAnyOrder) {
  EXPECT_EQ(read("time_ns\n5\n-7\n"), (Texts{"5 data 0 0", "-7 data 0 0"}));
  EXPECT_EQ(read("\xEF\xBB\xBF\"data\",\"note\",\"id\",\"time_ns\"\n\"0a0b\",\"x\"\"y\",\"7FF\",\"1\"\n00,,800,2\n"),
            (Texts{"1 data 0 7FF dlc2 [0A0B]", "2 data 0 800 x dlc1 [00]"}));
  EXPECT_EQ(read("kind;time_ns;dlc;dir;text\r\nremote;1;8;Tx;\r\nevent;2;;;words, and more\r\n"),
            (Texts{"1 remote 0 0 Tx known dlc8", "2 event 0 0 \"words, and more\""}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(CsvTable, mayHaveBeenSavedByOthers) {
  EXPECT_EQ(read("time_ns,bus,ide,dlc,tx_errors\n1,2.0,True,3.0,4.00\n"), (Texts{"1 data 2 0 x dlc3 tx_errors=4"}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(CsvTable, hasCommentsForRowsThatAreNotUnderstood) {
  EXPECT_EQ(read("time_ns,kind,id,dlc,length,data,brs\n"
                 "1,data,1,2,2,0102,0\n"
                 "2,data,1,2,2,0102\n"
                 "2,data,1,2,2,0102,0,0\n"
                 "2,frame,1,2,2,0102,0\n"
                 "2,data,1,2,2,010,0\n"
                 "2,data,1,2,2,01,0\n"
                 "2,data,1,2,2,,0\n"
                 "2,data,G,2,2,0102,0\n"
                 "2,data,123456789,2,2,0102,0\n"
                 "2.5,data,1,2,2,0102,0\n"
                 "9000000000000000001,data,1,2,2,0102,0\n"
                 ",data,1,2,2,0102,0\n"
                 "2,data,1,65536,2,0102,0\n"
                 "2,data,1,2,2,0102,2\n"
                 "2,\"data\"x,1,2,2,0102,2\n"
                 "\n"
                 "3,data,1,2,2,0102,1\n")
                .size(),
            16U);
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{14, 3}));
}

TEST_F(CsvTable, hasCommentsWithoutAText) {
  EXPECT_EQ(read("time_ns,kind,text\n5,comment, xlatr: comment time=0.000000006 bus=1\n"), Texts{"6 comment 1 0 \"\""});
}

TEST_F(CsvTable, keepsWhatABrokenRowSays) {
  EXPECT_EQ(read("time_ns,text\n1,\"a\n2,b\n"), (Texts{"0 comment 0 0 \"1,\"a\"", "2 data 0 0 \"b\""}));
  EXPECT_EQ(account_.noted(Remark::LineNotUnderstood), (Account::Count{1, 2}));
}

TEST_F(CsvTable, cutsTextsThatNoTraceHas) {
  const std::string longest(FrameBatch::kLongestText, 'x');
  EXPECT_EQ(read("time_ns,text\n1,\"" + longest + "y\"\n2,b\n"),
            (Texts{"1 data 0 0 \"" + longest + "\"", "2 data 0 0 \"b\""}));
  EXPECT_EQ(account_.noted(Remark::TextCut), (Account::Count{1, 2}));
}

TEST_F(CsvTable, holdsMoreBytesThanAnyFrameHasInAComment) {
  const std::vector<std::uint8_t> bytes(3'000, 0xA5);
  FrameBatch batch;
  Frame frame;
  frame.data = bytes;
  frame.timeNs = 5;
  batch.append(frame);
  write(batch);
  EXPECT_EQ(account_.commented(Remark::LengthNotHeld).frames, 1U);
  EXPECT_EQ(read(folder_.read("target.csv")), Texts{test::textOf(batch.at(0))});
}

TEST_F(CsvTable, comesInBatches) {
  std::string table = "time_ns,bus\n";
  for (std::size_t row = 0; row < FrameBatch::kCapacity + 5; ++row) {
    table += "1,2\n";
  }
  source_ = openCsvFrames(folder_.write("long.csv", table));
  FrameBatch batch;
  std::vector<std::size_t> sizes;
  while (source_->read(batch, account_)) {
    sizes.push_back(batch.size());
    batch.clear();
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{FrameBatch::kCapacity, 5}));
  EXPECT_EQ(source_->bytesRead(), table.size());
}

// ---- an independent reader

// What a command prints, or nothing when it fails.
std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) {
    return output;
  }
  std::array<char, 4096> buffer{};
  for (std::size_t count = 0; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), count);
  }
  return ::pclose(pipe) == 0 ? output : std::string();
}

// Prints rows as test::textOf() shows frames, from the names of the columns alone.
constexpr char kPythonReader[] = R"(
import csv, sys
FLAGS = [('ide', ' x'), ('dir0', ' Rx'), ('dir1', ' Tx'), ('edl', ' FD'), ('brs', ' BRS'), ('esi', ' ESI'),
         ('xl', ' XL'), ('dlc_known', ' known'), ('enhanced_checksum', ' enhanced')]
out = open(sys.argv[2], 'w', newline='', encoding='utf-8')
with open(sys.argv[1], newline='', encoding='utf-8') as table:
    rows = csv.DictReader(table, restkey='too many', restval=None, strict=True)
    attributes = ['err'] + rows.fieldnames[17:]
    first = next(rows)
    assert first['kind'] == 'comment' and first['text'].startswith(' xlatr: table version=2.0'), first
    for row in rows:
        assert 'too many' not in row and None not in row.values(), row
        row['dir0'] = str(int(row['dir'] == '0'))
        row['dir1'] = str(int(row['dir'] == '1'))
        assert int(row['length']) * 2 == len(row['data']), row
        text = '%d %s %d %X' % (int(row['time_ns']), row['kind'], int(row['bus']), int(row['id'], 16))
        text += ''.join(word for name, word in FLAGS if row[name] == '1')
        text += ' dlc' + row['dlc'] if row['dlc'] != '0' else ''
        text += ' [' + row['data'].upper() + ']' if row['data'] else ''
        text += ' "' + row['text'] + '"' if row['text'] else ''
        for name in attributes:
            text += ' %s=%d' % ('error_type' if name == 'err' else name, int(row[name])) if row[name] else ''
        out.write(text + '\n')
)";

TEST_F(CsvTable, isReadByPython) {
  if (outputOf("python3 --version 2>/dev/null").empty()) {
    GTEST_SKIP() << "python3 is not installed";
  }
  test::RandomFrames random(7);
  FrameBatch batch;
  std::string expected;
  while (!batch.full()) {
    const test::OwnedFrame owned = random.next();
    Frame frame = owned.view();
    frame.unset(frame.has(frame_flag::kTransmitted) ? frame_flag::kReceived : std::uint16_t{0});
    if (frame.kind == FrameKind::Remote && !frame.has(frame_flag::kDlcKnown)) {
      frame.dlc = 0;
    }
    // Python does not tell an empty text from none, and comments may be written in other words.
    const bool emptyText = frame.text && frame.text->empty();
    if (frame.data.size() <= 2048 && frame.kind != FrameKind::Comment && !emptyText) {
      batch.append(frame);
      expected += test::textOf(frame) + "\n";
    }
  }
  write(batch);
  const std::string script = folder_.write("reader.py", kPythonReader);
  ASSERT_EQ(outputOf("python3 " + script + " " + folder_.file("target.csv") + " " + folder_.file("out.txt") +
                     " 2>&1 && echo done"),
            "done\n");
  EXPECT_TRUE(folder_.read("out.txt") == expected);
}

// ---- recordings

// A list of frames that was made without this library: time_ns, kind, bus, id, ide, dir, edl, brs, esi, dlc, length,
// data, err.
std::string expectedOf(const std::string& row) {
  std::vector<std::string> cells;
  std::istringstream in(row);
  for (std::string cell; std::getline(in, cell, ',');) {
    cells.push_back(cell);
  }
  cells.resize(13);
  const auto word = [&cells](std::size_t cell, const char* text) { return cells[cell] == "1" ? text : ""; };
  std::string text = cells[0] + " " + cells[1] + " " + cells[2] + " " + cells[3];
  text += word(4, " x");
  text += cells[5].empty() ? "" : cells[5] == "1" ? " Tx" : " Rx";
  text += std::string(word(6, " FD")) + word(7, " BRS") + word(8, " ESI");
  text += cells[1] == "remote" ? " known" : "";
  text += cells[9] != "0" ? " dlc" + cells[9] : "";
  text += cells[11].empty() ? "" : " [" + toUpperAscii(std::string_view(cells[11])) + "]";
  return text + (cells[12].empty() ? "" : " error_type=" + cells[12]);
}

TEST_F(CsvTable, ofRecordedTrafficIsReadWhole) {
  const fs::path recordings = XLATR_RECORDINGS_DIR;
  if (recordings.empty() || !fs::exists(recordings)) {
    GTEST_SKIP() << "there are no recordings at " << recordings;
  }
  std::size_t tables = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(recordings)) {
    const std::string path = entry.path().string();
    if (!path.ends_with(".expected.csv")) {
      continue;
    }
    ++tables;
    std::ifstream in(path, std::ios::binary);
    std::string row;
    std::getline(in, row);
    Texts expected;
    while (std::getline(in, row)) {
      expected.push_back(expectedOf(row));
    }
    const auto source = openCsvFrames(path);
    Account account;
    EXPECT_EQ(test::textsOf(*source, account), expected) << path;
    EXPECT_EQ(account.read(), expected.size()) << path;
    EXPECT_TRUE(account.complete()) << path;
  }
  EXPECT_GT(tables, 0U);
}

}  // namespace
}  // namespace xlatr
