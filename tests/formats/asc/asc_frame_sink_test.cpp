#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "formats/asc/asc_frames.hpp"
#include "formats/asc/asc_mapping.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/asc/asc_writer.hpp"
#include "formats/lin/lin_message.hpp"
#include "io/format.hpp"
#include "messages/can_dlc.hpp"
#include "support/both_ways.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"
#include "util/hex.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

constexpr std::uint16_t kRx = frame_flag::kReceived;
constexpr std::uint16_t kTx = frame_flag::kTransmitted;
constexpr std::uint16_t kX = frame_flag::kExtended;
constexpr std::int64_t kSecond = 1'000'000'000;

const std::vector<std::uint8_t> kBytes = [] {
  std::vector<std::uint8_t> bytes;
  for (int byte = 1; byte <= 64; ++byte) {
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  return bytes;
}();

Frame frameOf(FrameKind kind, std::uint16_t flags = 0, std::uint32_t id = 0, std::size_t bytes = 0) {
  Frame frame;
  frame.timeNs = 1'500'000'000;
  frame.kind = kind;
  frame.bus = 1;
  frame.flags = flags;
  frame.id = id;
  frame.data = std::span(kBytes).first(bytes);
  frame.dlc = static_cast<std::uint16_t>(lengthToDlc(static_cast<std::uint32_t>(bytes)));
  return frame;
}

Frame with(Frame frame, FrameAttribute attribute, std::uint32_t value) {
  frame.attributes.set(attribute, value);
  return frame;
}

Frame withText(Frame frame, std::string_view text) {
  frame.text = text;
  return frame;
}

Frame withDlc(Frame frame, std::uint16_t dlc) {
  frame.dlc = dlc;
  return frame;
}

Frame on(Frame frame, std::uint16_t bus) {
  frame.bus = bus;
  return frame;
}

class AscFrameSink : public testing::Test {
 protected:
  std::string write(const std::vector<Frame>& frames, double version, const StreamHead& head = {}) {
    account_ = {};
    const auto sink = createAscFrames(folder_.file("target.asc"), head, {.version = version});
    FrameBatch batch;
    for (const Frame& frame : frames) {
      batch.append(frame);
      if (batch.full()) {
        sink->write(batch, account_);
        batch.clear();
      }
    }
    sink->write(batch, account_);
    sink->close();
    return folder_.read("target.asc");
  }

  Texts readBack() {
    Account account;
    return test::textsOf(*openAscFrames(folder_.file("target.asc")), account);
  }

  // What the two ways write for a TRC trace.
  std::string compatibleOf(const std::string& trc, double version) {
    return test::compatibleOf<AscWriter>(folder_, trc, true, version);
  }
  std::string completeOf(const std::string& trc, double version) {
    return test::completeOf(folder_, trc, formatOf(XLATR_FORMAT_ASC), account_, {.version = version});
  }

  test::TempFolder folder_;
  Account account_;
};

std::vector<Frame> oneOfEachKind() {
  return {
      frameOf(FrameKind::Data, kRx, 0x123, 2),
      withDlc(frameOf(FrameKind::Data, kTx | kX, 0x18ABCDEF, 8), 15),
      withText(frameOf(FrameKind::Data, kRx | frame_flag::kFd | frame_flag::kBrs, 0x123, 12), "Axle"),
      withDlc(frameOf(FrameKind::Remote, kRx | frame_flag::kDlcKnown, 0x123), 8),
      frameOf(FrameKind::Remote, kTx | kX, 0x123),
      frameOf(FrameKind::Error),
      with(with(frameOf(FrameKind::Error, kRx), FrameAttribute::ErrorType, 2), FrameAttribute::ErrorPosition, 25),
      withText(frameOf(FrameKind::Error, kTx), "Stuff error"),
      frameOf(FrameKind::Overload),
      with(frameOf(FrameKind::Status), FrameAttribute::BusState, 16),
      withText(with(frameOf(FrameKind::Status), FrameAttribute::BusState, 8), "chip status warning level"),
      with(with(frameOf(FrameKind::Counters), FrameAttribute::TxErrors, 8), FrameAttribute::RxErrors, 0),
      with(with(frameOf(FrameKind::Lin, kRx | frame_flag::kEnhancedChecksum, 0x2D, 2), FrameAttribute::Checksum, 7),
           FrameAttribute::ChecksumModel, 2),
      withText(on(frameOf(FrameKind::LinEvent), 2), "WakeupFrame 80"),
      withText(on(frameOf(FrameKind::Event), 0), "lunch"),
      withText(on(frameOf(FrameKind::Event), 0), "EnvSpeed := 7"),
      withText(on(frameOf(FrameKind::Comment), 0), " plain"),
      frameOf(FrameKind::Data, kRx | frame_flag::kXl, 0x123, 3),
  };
}

StreamHead startedAt(std::int64_t sinceEpochNs) {
  StreamHead head;
  head.start = TraceStart{.sinceEpochNs = sinceEpochNs};
  return head;
}

TEST_F(AscFrameSink, writesTheFormOf8) {
  const std::string tail = "        0        0        0        0        0\r\n";
  EXPECT_EQ(
      write(oneOfEachKind(), 0.0, startedAt(1'627'276'799'721'000'000)),
      "date Mon Jul 26 05:19:59.721 2021\r\n"
      "base hex  timestamps absolute\r\n"
      "no internal events logged\r\n"
      "// version 8.1.0\r\n"
      "   1.500000 CANFD   1 Rx        123                                   0 0 2  2 01 02        0    0   200000" +
          tail +
          "   1.500000 CANFD   1 Tx   18ABCDEFx                                  0 0 F  8 01 02 03 04 05 06 07 08"
          "        0    0   200000" +
          tail +
          "   1.500000 CANFD   1 Rx        123  Axle                             1 0 9 12 01 02 03 04 05 06 07 08"
          " 09 0A 0B 0C        0    0     3000" +
          tail +
          "   1.500000 1  123             Rx   r 8\r\n"
          "   1.500000 1  123x            Tx   r\r\n"
          "   1.500000 1  ErrorFrame\r\n"
          "   1.500000 1  ErrorFrame ECC: 10111001\r\n"
          "   1.500000 CANFD   1 Tx ErrorFrame Stuff error\r\n"
          "   1.500000 1  OverloadFrame\r\n"
          "   1.500000 CAN 1  Status:BUSOFF (Zelkworks)\r\n"
          "   1.500000 CAN 1  Status:chip status warning level\r\n"
          "   1.500000 CAN 1  Status:error counter change (Zelkworks) - TxErr: 8 RxErr: 0\r\n"
          "   1.500000 Li 2D              Rx     2 01 02  checksum = 07  CSM = enhanced\r\n"
          "   1.500000 L2 WakeupFrame 80\r\n"
          "   1.500000 Comment: 0 lunch\r\n"
          "   1.500000 EnvSpeed := 7\r\n"
          "// plain\r\n"
          "// xlatr: data time=1.500000000 bus=1 id=123 flags=received,xl dlc=3 data=010203\r\n");
  EXPECT_EQ(account_.written(), 18U);
  EXPECT_EQ(account_.commented(Remark::XlNotHeld).frames, 1U);
  Texts expected;
  for (const Frame& frame : oneOfEachKind()) {
    expected.push_back(test::textOf(frame));
  }
  EXPECT_EQ(readBack(), expected);
}

TEST_F(AscFrameSink, writesTheFormOf7) {
  EXPECT_EQ(
      write({frameOf(FrameKind::Data, kRx, 0x123, 2), withDlc(frameOf(FrameKind::Data, kTx | kX, 0x18ABCDEF, 8), 15),
             withDlc(frameOf(FrameKind::Remote, kRx | frame_flag::kDlcKnown, 0x7FF), 12),
             frameOf(FrameKind::Data, kRx | frame_flag::kFd, 0x123, 12),
             withText(frameOf(FrameKind::Error, kTx), "Stuff error")},
            7.0),
      "date Sat Dec 30 00:00:00.000 1899\r\n"
      "base hex  timestamps absolute\r\n"
      "no internal events logged\r\n"
      "// version 7.0.0\r\n"
      "   1.500000 1  123             Rx   d 2 01 02\r\n"
      "   1.500000 1  18ABCDEFx       Tx   d F 01 02 03 04 05 06 07 08\r\n"
      "   1.500000 1  7FF             Rx   r C\r\n"
      "// xlatr: data time=1.500000000 bus=1 id=123 flags=received,fd dlc=9 data=0102030405060708090A0B0C\r\n"
      "   1.500000 1  ErrorFrame ECC: 11000000 Stuff error\r\n");
  EXPECT_EQ(account_.commented(Remark::FdNotHeld).frames, 1U);
  EXPECT_EQ(account_.noted(Remark::DetailGuessed).frames, 1U);
}

TEST_F(AscFrameSink, saysWhatItGuessed) {
  EXPECT_EQ(write({on(frameOf(FrameKind::Data, 0, 0x123), 0)}, 7.0).substr(111),
            "   1.500000 1  123             Rx   d 0 \r\n");
  EXPECT_EQ(account_.noted(Remark::BusGuessed).frames, 1U);
  EXPECT_EQ(account_.noted(Remark::DirectionGuessed).frames, 1U);
}

TEST_F(AscFrameSink, writesNoThousandMilliseconds) {
  const auto date = [this](std::int64_t start) { return write({}, 7.0, startedAt(start)).substr(0, 33); };
  EXPECT_EQ(date(1'627'286'399'999'600'000), "date Mon Jul 26 08:00:00.000 2021");
  EXPECT_EQ(date(1'627'286'399'999'400'000), "date Mon Jul 26 07:59:59.999 2021");
  EXPECT_EQ(date(-kSecond / 4), "date Wed Dec 31 23:59:59.750 1969");
  EXPECT_EQ(date(1'709'164'800 * kSecond), "date Thu Feb 29 00:00:00.000 2024");

  const std::string trc = folder_.write("source.trc", ";$FILEVERSION=2.1\n;$STARTTIME=45352.3333333333\n");
  EXPECT_TRUE(compatibleOf(trc, 7.0).starts_with("date Fri Mar 01 07:59:59.1000 2024\r\n"));
  EXPECT_TRUE(completeOf(trc, 7.0).starts_with("date Fri Mar 01 08:00:00.000 2024\r\n"));
}

TEST_F(AscFrameSink, writesRemoteFramesAsOthersReadThem) {
  const std::string trc = folder_.write("source.trc",
                                        ";$FILEVERSION=2.1\n;$STARTTIME=44403.25\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n"
                                        "1 1500.0 RR 1 0123 Rx - 8\n");
  EXPECT_EQ(compatibleOf(trc, 8.0).substr(111),
            "   1.500000 CANFD   1 Rx        123                                   0 0 8  0        0    0       16"
            "        0        0        0        0        0\r\n");
  EXPECT_EQ(completeOf(trc, 8.0).substr(111), "   1.500000 1  123             Rx   r 8\r\n");
}

TEST_F(AscFrameSink, writesWhatTheCompatibleWayWrites) {
  const std::string trc = folder_.write("source.trc",
                                        ";$FILEVERSION=2.1\n;$STARTTIME=44403.25\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n"
                                        "1 0.001 DT 1 0123 Rx - 2 01 02\n"
                                        "2 1.5 DT 16 18ABCDEF Tx - 0\n"
                                        "3 123456.789 DT 1 0123 Rx - 8 01 02 03 04 05 06 07 08\n"
                                        "4 123456.790 ER 2 - Rx - 5 04 01 1D 00 08\n"
                                        "5 123456.791 ER 2 - Rx - 5 02 00 02 00 08\n"
                                        "6 123456.792 ST 1 - Rx - 4 00 00 00 08\n"
                                        "7 123456.793 ST 1 - Rx - 4 00 04 00 10\n"
                                        "8 123456.794 ST 1 - Rx - 4 00 00 00 00\n"
                                        "9 123456.795 EC 1 - Rx - 2 08 7F\n");
  EXPECT_EQ(completeOf(trc, 7.0), compatibleOf(trc, 7.0));
  EXPECT_EQ(completeOf(trc, 8.0), compatibleOf(trc, 8.0));
  const std::string fd = folder_.write("fd.trc",
                                       ";$FILEVERSION=2.1\n;$STARTTIME=44403.25\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n"
                                       "1 0.001 FD 1 0123 Rx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C\n"
                                       "2 0.002 BI 2 18ABCDEF Tx - 1 FF\n");
  EXPECT_EQ(completeOf(fd, 8.0), compatibleOf(fd, 8.0));
}

TEST_F(AscFrameSink, writesLinLinesWhereTheCompatibleWayWritesDataFrames) {
  KorlMessage message;
  message.id = 0x2D;
  message.valid = true;
  message.length = 2;
  message.data = {1, 2};
  AscMessage mapped;
  mapToAsc(message, mapped);
  TextBuffer line;
  mapped.toText7(line);
  EXPECT_EQ(line.view(), "   0.000000 1  2D              Rx   d 2 01 02");
  EXPECT_EQ(write({frameOf(FrameKind::Lin, kTx, 0x2D, 2)}, 7.0).substr(111),
            "   1.500000 Li 2D              Tx     2 01 02\r\n");
}

TEST_F(AscFrameSink, writesACommentForWhatWouldBeReadAsSomethingElse) {
  const std::vector<Frame> frames = {
      withText(frameOf(FrameKind::Data, kRx, 0x123, 1), "5"),
      withText(frameOf(FrameKind::Error), "ECC: 00000001"),
      withText(frameOf(FrameKind::Error), "Flags = 0x1 Code = 0x1"),
      withText(frameOf(FrameKind::Error), " late"),
      with(frameOf(FrameKind::Error, kRx), FrameAttribute::ErrorPosition, 32),
      with(frameOf(FrameKind::Error, kRx), FrameAttribute::ErrorType, 4),
      withText(frameOf(FrameKind::Overload), "late "),
      frameOf(FrameKind::Status),
      with(frameOf(FrameKind::Status), FrameAttribute::BusState, 1),
      withText(frameOf(FrameKind::Status), "BusOff"),
      withText(with(frameOf(FrameKind::Status), FrameAttribute::BusState, 4), "noise"),
      withText(frameOf(FrameKind::Status), "noise (Zelkworks)"),
      withText(frameOf(FrameKind::Status), "noise - TxErr: 1 RxErr: 2"),
      with(withText(frameOf(FrameKind::Status), "noise"), FrameAttribute::TxErrors, 2),
      withText(frameOf(FrameKind::LinEvent), "2d Rx"),
      frameOf(FrameKind::LinEvent),
      frameOf(FrameKind::Lin, kRx, 0x40),
      with(frameOf(FrameKind::Lin, kRx, 1), FrameAttribute::ChecksumModel, 4),
      withText(on(frameOf(FrameKind::Event), 0), "two\nlines"),
      on(frameOf(FrameKind::Data, kRx, 1), 256),
  };
  write(frames, 8.0);
  EXPECT_EQ(account_.commented(), frames.size());
  Texts expected;
  for (const Frame& frame : frames) {
    expected.push_back(test::textOf(frame));
  }
  EXPECT_EQ(readBack(), expected);
}

// ---- a program that shares no code with us

// The frames that asc2log finds in the file that was written last: bus, identifier and bytes.
std::vector<std::string> foundByAsc2log(const test::TempFolder& folder) {
  const std::string command =
      "cd '" + folder.path().string() + "' && asc2log -I target.asc -O target.log >/dev/null 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);  // NOLINT(concurrency-mt-unsafe): one thread
  std::vector<std::string> found;
  std::istringstream log(folder.read("target.log"));
  for (std::string line; std::getline(log, line);) {
    std::string frame = line.substr(line.find(')') + 2);
    frame.resize(std::min(frame.size(), frame.find_last_of("RT") - 1));  // without the direction
    found.push_back(frame);
  }
  return found;
}

TEST_F(AscFrameSink, writesWhatAsc2logReads) {
  if (std::system("command -v asc2log >/dev/null 2>&1") != 0) {  // NOLINT(concurrency-mt-unsafe): one thread
    GTEST_SKIP() << "asc2log of the package can-utils is not installed";
  }
  std::vector<Frame> frames = oneOfEachKind();
  frames.push_back(on(frameOf(FrameKind::Data, kTx | kX | frame_flag::kFd | frame_flag::kEsi, 0x1FFFFFFF, 64), 2));
  const std::string error = "can0 20000080#0000000000000000";
  // It knows no DLC above 8 in the lines of 7.0, and an extended remote frame without a DLC has none.
  write(frames, 7.0, startedAt(1'627'276'799'721'000'000));
  EXPECT_EQ(foundByAsc2log(folder_), (Texts{"can0 123#0102", "can0 123#R8", "can0 00000123#R", error, error, error}));
  std::string bytes;
  for (const std::uint8_t byte : kBytes) {
    bytes += hexPair(byte);
  }
  write(frames, 8.0, startedAt(1'627'276'799'721'000'000));
  EXPECT_EQ(foundByAsc2log(folder_),
            (Texts{"can0 123#0102", "can0 18ABCDEF#0102030405060708", "can0 123##1" + bytes.substr(0, 24),
                   "can0 123#R8", "can0 00000123#R", error, error, "can1 1FFFFFFF##2" + bytes}));
}

TEST(AscCapacities, standInTheOrderOfTheVersions) {
  const auto capacities = ascCapacities();
  ASSERT_EQ(capacities.size(), 10U);
  EXPECT_TRUE(capacities[0].fd);  // a sink takes version 0 for the newest
  EXPECT_EQ(capacities[1].version, 7.0);
  EXPECT_FALSE(capacities[1].fd);
  EXPECT_TRUE(capacities[2].fd);
  EXPECT_EQ(capacities.back().version, 15.0);
}

}  // namespace
}  // namespace xlatr
