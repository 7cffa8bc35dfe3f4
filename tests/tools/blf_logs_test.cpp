#include <gmock/gmock.h>

#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/blf_builder.hpp"
#include "support/blf_stand_in.hpp"
#include "tools/program.hpp"
#include "tracegen/generator.hpp"

// BLF logs from end to end: made here byte by byte, and converted by the program with the converter beside the
// library.
namespace xlatr::cli {
namespace {

namespace fs = std::filesystem;

using test::blf::Bytes;
using test::blf::file;
using test::blf::Header;
using test::blf::object;
using test::blf::stored;
using test::blf::zipped;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint64_t kMs = 1'000'000;

std::string at(std::uint64_t ms, std::uint32_t type, const Bytes& body, std::uint16_t version = 0) {
  return object({.type = type, .timestamp = ms * kMs, .version = version}, body.str());
}

Bytes classic(unsigned channel, unsigned flags, unsigned dlc, std::uint32_t id) {
  return Bytes().u16(channel).u8(flags).u8(dlc).u32(id).counting(8, 0x11);
}

Bytes lin(unsigned id, unsigned length, unsigned direction) {
  return Bytes().u16(1).u8(id).u8(length).counting(8, 0x21).zeros(4).u16(0x9A).u8(direction).zeros(5);
}

Bytes timedLinHead(unsigned id, unsigned length, unsigned checksumModel) {
  return Bytes().zeros(12).u16(1).zeros(23).u8(id).u8(length).u8(checksumModel);
}

Bytes timedLin(unsigned id, unsigned length, unsigned checksumModel, unsigned direction) {
  return timedLinHead(id, length, checksumModel).zeros(72).counting(8, 0x31).u16(0xC5).u8(direction).zeros(29);
}

// A frame or an event of every type, one per millisecond, the first in units of ten microseconds.
std::string allTypes() {
  std::string content =
      object({.type = 1, .timestamp = 100, .flags = test::blf::kTenMicroseconds}, classic(1, 0, 2, 0x123).str());
  content += at(2, 86, classic(3, 1, 8, 0x80000812).zeros(8));
  content += at(3, 1, classic(2, 0x80, 4, 0x7FF));
  content += at(4, 100, Bytes().u16(1).u8(0).u8(9).u32(5).zeros(5).u8(3).u8(12).zeros(5).counting(68));
  content += at(5, 101,
                Bytes()
                    .u8(2)
                    .u8(3)
                    .u8(3)
                    .u8(0)
                    .u32(0x80001055)
                    .zeros(4)
                    .u32(0x5000)
                    .zeros(18)
                    .u8(1)
                    .zeros(5)
                    .counting(3)
                    .zeros(8));
  content += at(6, 73, Bytes().u16(1).zeros(6).u8(0x5A).u8(0).u8(2).zeros(5).u32(0x456).u16(0x20).zeros(2).counting(8));
  content += at(7, 104, Bytes().u8(2).u8(3).u8(3).u8(7).zeros(8).u32(0x77).zeros(28).counting(3).zeros(8));
  content += at(8, 2, Bytes().u16(1).zeros(6));
  content += at(9, 4, Bytes().u16(1).zeros(30));
  content += at(10, 11, lin(0x3C, 8, 0));
  content += at(11, 12, lin(0x3C, 2, 1));
  content += at(12, 15, Bytes().u16(1).u8(0x11).u8(4).zeros(4));
  content += at(13, 20, Bytes().u16(1).zeros(6));
  content += at(14, 21, Bytes().u16(1).zeros(6));
  content += at(15, 57, timedLin(0x21, 3, 1, 1), 1);
  content += at(16, 57, timedLin(0x21, 3, 0, 0), 1);
  content += at(17, 57, timedLin(0x21, 3, 1, 1), 0);
  content += at(18, 60, timedLin(0x21, 3, 1, 1), 1);
  content += at(19, 58, timedLinHead(0x22, 3, 1).zeros(32), 1);
  content += at(20, 62, Bytes().zeros(12).u16(1).zeros(10));
  content += at(21, 1, Bytes().zeros(15));
  return content;
}

// The lines of the text after the one with `marker`.
std::string after(const std::string& text, std::string_view marker) {
  const std::size_t found = text.rfind(marker);
  return found == std::string::npos ? text : text.substr(text.find('\n', found) + 1);
}

class BlfLogs : public testing::Test {
 protected:
  void expectConverted(const std::string& log, const std::vector<std::string>& arguments) {
    here.write("drive.blf", log);
    std::vector<std::string> words{"convert", "drive.blf"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Ended run = here.run(words);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, StartsWith("wrote "));
  }

  const Workspace here;
};

TEST_F(BlfLogs, becomeTables) {
  const std::string content = allTypes();
  expectConverted(file({.objects = 21}, zipped(content.substr(0, 300)) + stored(content.substr(300))), {"drive.csv"});
  const std::string table = here.read("drive.csv");
  EXPECT_THAT(table, HasSubstr("Start time: 31/12/2024 23:59:58.500\r\n"));
  EXPECT_EQ(after(table, "Number;"),
            "1;1.000;1;Rx;DT;0123;-;2;11;12\r\n"
            "2;2.000;3;Tx;DT;00000812;-;8;11;12;13;14;15;16;17;18\r\n"
            "3;3.000;2;Rx;RR;07FF;-;4;\r\n"
            "4;4.000;1;Rx;FB;0005;-;12;01;02;03;04;05;06;07;08;09;0A;0B;0C\r\n"
            "5;5.000;2;Tx;FE;00001055;-;3;01;02;03\r\n"
            "6;6.000;1;Rx;ER;0456;-;2;01;02\r\n"
            "7;7.000;2;None;ER;0077;-;3;01;02;03\r\n"
            "BLF Object Type 2 error frame\r\n"
            "BLF Object Type 4 bus statistics\r\n"
            "8;10.000;1;Rx;DT;003C;-;8;21;22;23;24;25;26;27;28\r\n"
            "9;11.000;1;Tx;ER;003C;-;2;21;22\r\n"
            "10;12.000;1;None;ER;0011;-;0;\r\n"
            "11;13.000;1;None;DT;FFFFFFFF;-;0;\r\n"
            "12;14.000;1;None;DT;FFFFFFFF;-;0;\r\n"
            "13;15.000;1;Tx;DT;0021;-;3;31;32;33\r\n"
            "14;16.000;1;Rx;DT;0021;-;3;31;32;33\r\n"
            "15;17.000;1;Tx;DT;0021;-;3;31;32;33\r\n"
            "16;18.000;1;Tx;ER;0021;-;3;31;32;33\r\n"
            "17;19.000;1;None;ER;0022;-;0;\r\n"
            "18;20.000;1;None;DT;FFFFFFFF;-;0;\r\n"
            "BLF Object Type 1 cut short\r\n");
}

TEST_F(BlfLogs, becomeTrcTraces) {
  expectConverted(file(zipped(allTypes())), {"drive.trc", "--target-version", "2.1"});
  const std::string trace = here.read("drive.trc");
  EXPECT_THAT(trace, HasSubstr("Start time: 31.12.2024 23:59:58.500.000\r\n"));
  EXPECT_EQ(after(trace, ";---+--"),
            "      1         1.000 DT 1      0123 Rx -  2    11 12\r\n"
            "      2         2.000 DT 3  00000812 Tx -  8    11 12 13 14 15 16 17 18\r\n"
            "      3         3.000 RR 2      07FF Rx -  0    \r\n"
            "      4         4.000 FB 1      0005 Rx -  9    01 02 03 04 05 06 07 08 09 0A 0B 0C\r\n"
            "      5         5.000 FE 2  00001055 Tx -  3    01 02 03\r\n"
            "      6         6.000 ER 1         - Rx -  4    00 1A 00 00\r\n"
            "      7         7.000 ER 2         - None -  4    00 07 00 00\r\n"
            ";BLF Object Type 2 error frame\r\n"
            ";BLF Object Type 4 bus statistics\r\n"
            ";BLF Object Type 11 (LIN)\r\n"
            ";BLF Object Type 12 (LIN)\r\n"
            ";BLF Object Type 15 (LIN)\r\n"
            ";BLF Object Type 20 (LIN)\r\n"
            ";BLF Object Type 21 (LIN)\r\n"
            ";BLF Object Type 57 (LIN)\r\n"
            ";BLF Object Type 57 (LIN)\r\n"
            ";BLF Object Type 57 (LIN)\r\n"
            ";BLF Object Type 60 (LIN)\r\n"
            ";BLF Object Type 58 (LIN)\r\n"
            ";BLF Object Type 62 (LIN)\r\n"
            ";BLF Object Type 1 cut short\r\n");
}

TEST_F(BlfLogs, becomeLinTraces) {
  expectConverted(file(stored(allTypes())), {"drive.ltrc"});
  EXPECT_EQ(after(here.read("drive.ltrc"), ";---+--"),
            ";BLF Object Type 1 (CAN)\r\n"
            ";BLF Object Type 86 (CAN)\r\n"
            ";BLF Object Type 1 (CAN)\r\n"
            ";BLF Object Type 100 (CAN)\r\n"
            ";BLF Object Type 101 (CAN)\r\n"
            ";BLF Object Type 73 (CAN)\r\n"
            ";BLF Object Type 104 (CAN)\r\n"
            ";BLF Object Type 2 error frame\r\n"
            ";BLF Object Type 4 bus statistics\r\n"
            "     1)            10000   Sub   3C  8  21 22 23 24 25 26 27 28  9A  --  \r\n"
            "     2)            11000   Pub   3C  2  -- --                   9A  --  CK\r\n"
            "     3)            12000   ---   11  0                           00  --  SR\r\n"
            "     4)            13000   ---   --  -  Bus Sleep                --  --\r\n"
            "     5)            14000   ---   --  -  Bus Wake Up              --  --\r\n"
            "     6)            15000   Pub   21  3  31 32 33                C5  EH  \r\n"
            "     7)            16000   Sub   21  3  31 32 33                C5  CL  \r\n"
            "     8)            17000   Pub   21  3  31 32 33                C5  --  \r\n"
            "     9)            18000   Pub   21  3  -- -- --                C5  EH  CK\r\n"
            "    10)            19000   ---   22  0                           00  EH  SR\r\n"
            "    11)            20000   ---   --  -  Bus Wake Up              --  --\r\n"
            ";BLF Object Type 1 cut short\r\n");
}

TEST_F(BlfLogs, thatAreDamagedGiveWhatIsThereAndSaySo) {
  here.write("drive.blf", file(stored(at(1, 1, classic(1, 0, 1, 1)) + "junk" + at(2, 92, Bytes()))));
  const Ended run = here.run({"convert", "drive.blf", "drive.csv"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.errors, HasSubstr("drive.blf: stretches of bytes between objects that belong to none, skipped: 1,"));
  EXPECT_THAT(run.errors, HasSubstr("drive.blf: objects of types without a row, skipped: 1 (1 of type 92)\n"));
  EXPECT_EQ(after(here.read("drive.csv"), "Number;"), "1;1.000;1;Rx;DT;0001;-;1;11\r\n");
}

TEST_F(BlfLogs, thatAreNotLogsFailWithTheReason) {
  here.write("drive.blf", "no log");
  const Ended run = here.run({"convert", "drive.blf", "drive.csv"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors,
              StartsWith("BLF2CSV: drive.blf: is not a BLF log\nxlatr: drive.blf: Error while converting BLF"));
  EXPECT_THAT(here.names(), ElementsAre("drive.blf"));
}

TEST_F(BlfLogs, mayHaveAnyName) {
  const std::string name = "a \"log\" of $HOME; it's `here`.blf";
  here.write(name, file(stored(at(1, 1, classic(1, 0, 1, 1)))));
  EXPECT_EQ(here.run({"convert", name, "drive.csv"}).exitCode, 0);
  EXPECT_EQ(after(here.read("drive.csv"), "Number;"), "1;1.000;1;Rx;DT;0001;-;1;11\r\n");
}

TEST_F(BlfLogs, areConvertedByManyProgramsAtOnce) {
  std::string content;
  for (unsigned index = 0; index < 2000; ++index) {
    content += at(index, 1, classic(1, 0, 8, index));
  }
  expectConverted(file({.objects = 2000}, zipped(content)), {"alone.csv"});
  std::vector<pid_t> programs;
  for (int index = 0; index < 8; ++index) {
    programs.push_back(here.start({"convert", "drive.blf", std::to_string(index) + ".csv", "-q"}, STDERR_FILENO));
  }
  for (const pid_t program : programs) {
    EXPECT_EQ(Workspace::wait(program), 0);
  }
  for (int index = 0; index < 8; ++index) {
    EXPECT_EQ(after(here.read(std::to_string(index) + ".csv"), "Number;"), after(here.read("alone.csv"), "Number;"));
  }
}

// At whatever moment it comes: in the converter, between the two, while the table is read.
TEST_F(BlfLogs, areLeftAloneByAnInterruptAtAnyMoment) {
  tracegen::RecordingOptions options;
  options.form = tracegen::Form::Blf;
  options.maxMessages = 200'000;
  options.traffic.makePlain();
  tracegen::generateFile(options, (here / "large.blf").string());
  fs::create_directory(here / "tmp");
  ::setenv("TMPDIR", (here / "tmp").c_str(), 1);  // NOLINT(concurrency-mt-unsafe): there is one thread
  for (int moment = 0; moment < 12; ++moment) {
    SCOPED_TRACE(moment);
    const pid_t program = here.start({"convert", "large.blf", "large.csv", "-q", "-f"}, STDERR_FILENO);
    std::this_thread::sleep_for(std::chrono::milliseconds(moment * 25));
    EXPECT_EQ(::kill(program, SIGINT), 0);
    const int exitCode = Workspace::wait(program);
    // Before the program is set up, the signal ends it at once.
    EXPECT_TRUE(exitCode == 130 || exitCode == 0) << exitCode;
    EXPECT_TRUE(fs::is_empty(here / "tmp"));
  }
  ::unsetenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace
}  // namespace xlatr::cli
