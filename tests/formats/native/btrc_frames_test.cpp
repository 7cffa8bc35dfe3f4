#include "formats/native/btrc_frames.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <ios>
#include <memory>
#include <string>
#include <vector>

#include "formats/native/btrc_reader.hpp"
#include "formats/native/btrc_writer.hpp"
#include "formats/trc/trc_info.hpp"
#include "formats/trc/trc_message.hpp"
#include "io/format.hpp"
#include "support/both_ways.hpp"
#include "support/btrc_image.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;
using namespace std::string_literals;
using Texts = std::vector<std::string>;

// 2026-11-21 13:14:15.987654 in nanoseconds since 1970.
constexpr std::int64_t kStartNs = 1'795'266'855'987'654'000;

class BtrcFrames : public testing::Test {
 protected:
  Texts read(const std::string& bytes) {
    source_ = openBtrcFrames(folder_.write("source.btrc", bytes));
    account_ = {};
    return test::textsOf(*source_, account_);
  }
  Texts readRecords(const std::string& records) { return read(filled(head() + records)); }

  // The bytes of a file of these frames, whose account is `written_`.
  std::string write(const std::vector<Frame>& frames, std::optional<TraceStart> start = TraceStart{kStartNs, {}}) {
    StreamHead head;
    head.start = start;
    const auto sink = createBtrcFrames(folder_.file("target.btrc"), head, {});
    FrameBatch batch;
    written_ = {};
    for (const Frame& frame : frames) {
      batch.append(frame);
    }
    sink->write(batch, written_);
    sink->close();
    return folder_.read("target.btrc");
  }
  // What a file of these frames holds.
  Texts writeAndRead(const std::vector<Frame>& frames) { return read(write(frames)); }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
  Account written_;
};

Frame dataFrame(std::int64_t timeNs, std::uint16_t flags = frame_flag::kReceived) {
  static constexpr std::uint8_t kData[] = {1, 2, 3, 4};
  Frame frame;
  frame.timeNs = timeNs;
  frame.bus = 1;
  frame.flags = flags;
  frame.id = 0x123;
  frame.dlc = 4;
  frame.data = kData;
  return frame;
}

Frame frameOf(FrameKind kind, std::int64_t timeNs = 1'000, std::uint16_t bus = 1) {
  Frame frame;
  frame.kind = kind;
  frame.timeNs = timeNs;
  frame.bus = bus;
  return frame;
}

TEST_F(BtrcFrames, areReadOfEveryKind) {
  EXPECT_EQ(
      readRecords(plainFrame(kStart + 1) +  //
                  sent(4, kStart + 2, frameInfo(1, 8, 2, 0x18ABCDEF), "ABCDEFGH") +
                  received(2, kStart + 3, frameInfo(0, 3, 1, 0x7FF), "") +
                  sent(5, kStart + 4, frameInfo(0, 9, 1, 0x7FF), "") +
                  received(3, kStart + 5, frameInfo(254, 9, 0x70, 0x100), "ABCDEFGHIJKL") +
                  sent(6, kStart + 6, frameInfo(255, 2, 0x10, 0x100), "AB\0\0"s)),
      (Texts{"1000 data 1 123 Rx dlc4 [01020304]", "2000 data 2 18ABCDEF x Tx dlc8 [4142434445464748]",
             "3000 remote 1 7FF Rx known dlc3", "4000 remote 1 7FF Tx known dlc9",
             "5000 data 255 100 Rx FD BRS ESI dlc9 [4142434445464748494A4B4C]", "6000 data 0 100 Tx FD dlc2 [4142]"}));
  EXPECT_EQ(source_->head().start, (TraceStart{kStartNs, std::nullopt}));
  EXPECT_EQ(source_->head().version, 1.0);
  EXPECT_EQ(source_->bytesRead(), kBlock);
  EXPECT_TRUE(account_.complete());
}

TEST_F(BtrcFrames, areErrorsAndStates) {
  EXPECT_EQ(readRecords(record(7, number(kStart + 1, 8) + "\x01\xA0\x19\x08\x60\0\0\0"s) +
                        record(7, number(kStart + 2, 8) + "\x01\xC0\0\x08\x60\0\0\0"s) +
                        record(8, number(kStart + 3, 8) + "\x01\xE0\0\0"s) +
                        record(9, number(kStart + 4, 8) + "\x01\x2A\0\0"s)),
            (Texts{"1000 error 2 0 Rx error_type=2 error_position=25 tx_errors=8 rx_errors=96",
                   "2000 counters 2 0 Rx tx_errors=8 rx_errors=96", "3000 status 2 0 bus_state=262168",
                   "4000 event 2 0 bus_load=4200"}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(BtrcFrames, keepWhatHasNoOtherHome) {
  const Texts expected = {
      "1000 data 1 123 Rx dlc4 [01020304]",
      "2000 event 3 0 [00000007000000] record_type=16",
      "2000 event 0 0 [000801000203040500E1F505] record_type=10",
      "2000 event 0 0 [01020304] record_type=4660",
      "2000 comment 0 0 \"lunch\"",
      "3000 event 1 0 [5019086000000000] record_type=7",
      "3000 data 1 123 Rx dlc4 [01020304]",
  };
  const std::string records = plainFrame(kStart + 1) + record(0x10, number(kStart + 2, 8) + "\x02\0\0\0\x07\0\0\0"s) +
                              record(10, "\0\x08\x01\0\x02\x03\x04\x05"s + number(100'000'000, 4)) +
                              record(0x1234, "\x01\x02\x03\x04") + record(0x8002, "lunch   ") +
                              record(7, number(kStart + 3, 8) + "\0\x50\x19\x08\x60\0\0\0\0"s) + plainFrame(kStart + 3);
  EXPECT_EQ(readRecords(records).size(), expected.size());
  const Texts texts = readRecords(records);
  for (std::size_t at = 0; at < expected.size(); ++at) {
    EXPECT_EQ(at < texts.size() ? texts[at] : "", expected[at]) << at;
  }
  EXPECT_TRUE(account_.complete());
  // The compatible way hands out what is a frame alone.
  BtrcReader reader(BtrcInfo(folder_.file("source.btrc")));
  reader.setActive(true);
  ZelkBinaryMessage message;
  std::size_t valid = 0;
  while (reader.readInto(message)) {
    valid += message.getValid() ? 1U : 0U;
  }
  EXPECT_EQ(valid, 3U);
}

TEST_F(BtrcFrames, havePlacesThatCountRecords) {
  source_ =
      openBtrcFrames(folder_.write("x.btrc", filled(head() + plainFrame(kStart) + filler(8) + plainFrame(kStart))));
  FrameBatch batch;
  ASSERT_TRUE(source_->read(batch, account_));
  ASSERT_EQ(batch.size(), 2U);
  EXPECT_EQ(batch.at(0).place, 3U);
  EXPECT_EQ(batch.at(1).place, 5U);
  EXPECT_EQ(source_->head().places, PlaceUnit::Record);
}

TEST_F(BtrcFrames, countTheirStartInTheUnitOfTheFile) {
  const std::uint64_t start = kStart * 10;  // in tenths of a microsecond
  const std::string bytes = filled(
      info(1, -7) + record(0x8003, number(start, 8) + number(2026, 2) + "\x0B\x15\x0D\x0E\x0F\0"s + number(987654, 4)) +
      plainFrame(start + 15) + plainFrame(start + 16));
  EXPECT_EQ(read(bytes), (Texts{"1500 data 1 123 Rx dlc4 [01020304]", "1600 data 1 123 Rx dlc4 [01020304]"}));
  EXPECT_EQ(source_->head().start, (TraceStart{kStartNs, std::nullopt}));
  BtrcReader reader(BtrcInfo(folder_.file("source.btrc")));
  reader.setActive(true);
  const auto message = reader.ReadNextMessage();
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->timestamp.count(), kStart + 1 - start);  // modulo 2^64
}

TEST_F(BtrcFrames, haveTimesInAnyUnit) {
  struct Case {
    int exponent;
    std::uint64_t ticks;
    const char* time;
  };
  for (const Case& test : {Case{-9, 7, "7"}, Case{-3, 7, "7000000"}, Case{0, 7, "7000000000"}, Case{-10, 25, "3"},
                           Case{-12, 1499, "1"}, Case{2, 1, "100000000000"}}) {
    EXPECT_EQ(read(filled(info(0, test.exponent) + plainFrame(test.ticks))),
              (Texts{test.time + " data 1 123 Rx dlc4 [01020304]"s}))
        << test.exponent;
  }
}

TEST_F(BtrcFrames, beforeTheStartHaveNegativeTimes) {
  EXPECT_EQ(readRecords(plainFrame(kStart - 5)), (Texts{"-5000 data 1 123 Rx dlc4 [01020304]"}));
}

TEST_F(BtrcFrames, haveNoStartWithoutACalibration) {
  EXPECT_EQ(read(filled(info(0) + plainFrame(3))), (Texts{"3000 data 1 123 Rx dlc4 [01020304]"}));
  EXPECT_EQ(source_->head().start, std::nullopt);
  EXPECT_EQ(source_->head().version, 0.0);
  EXPECT_TRUE(account_.complete());
}

TEST_F(BtrcFrames, ofADateThatIsNoneKeepTheTimesAndTheCalibration) {
  const Texts texts = read(filled(info() + calibration(kStart, 13) + plainFrame(kStart + 3)));
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0].substr(texts[0].size() - 17), "record_type=32771");
  EXPECT_EQ(texts[1], "3000 data 1 123 Rx dlc4 [01020304]");
  EXPECT_EQ(source_->head().start, std::nullopt);
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
}

TEST_F(BtrcFrames, areReadAfterARemoteFrameThatStatesRoom) {
  const std::string lying = record(2, number(kStart, 8) + frameInfo(0, 8, 1, 0x100), 28);
  const std::string honest = record(2, number(kStart, 8) + frameInfo(0, 8, 1, 0x100) + std::string(8, '\0'));
  const Texts expected = {"0 remote 1 100 Rx known dlc8", "0 remote 1 100 Rx known dlc8",
                          "1000 data 1 123 Rx dlc4 [01020304]"};
  EXPECT_EQ(readRecords(lying + lying + plainFrame(kStart + 1)), expected);
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(readRecords(honest + honest + plainFrame(kStart + 1)), expected);
  EXPECT_TRUE(account_.complete());
  EXPECT_EQ(read(head() + lying), (Texts{expected[0]}));
}

TEST_F(BtrcFrames, ofFewerBytesThanTheirDlcHaveThose) {
  EXPECT_EQ(readRecords(sent(6, kStart, frameInfo(0, 15, 0x10, 0x100), "0123456789ABCDEF")),
            (Texts{"0 data 1 100 Tx FD dlc15 [30313233343536373839414243444546]"}));
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 3}));
}

TEST_F(BtrcFrames, areReadAroundDamage) {
  const std::string second = counter(0, 1, 1) + plainFrame(kStart + 9);
  const Texts bothBlocks = {"1000 data 1 123 Rx dlc4 [01020304]", "9000 data 1 123 Rx dlc4 [01020304]"};
  struct Case {
    const char* name;
    std::string damage;
  };
  for (const Case& test :
       {Case{"too short for a header", number(3, 2) + "abcdef"},
        Case{"over the end of its block", number(9000, 2) + "\x01\0"s}, Case{"no header", "\0\0\0\0abc"s}}) {
    const std::string first = head() + plainFrame(kStart + 1) + test.damage;
    EXPECT_EQ(read(filled(first + std::string(kBlock - first.size(), '\0') + second)), bothBlocks) << test.name;
    EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 4})) << test.name;
  }
  // The compatible way ends at the first of them.
  const std::string first = head() + plainFrame(kStart + 1) + number(3, 2) + "abcdef";
  BtrcReader reader(
      BtrcInfo(folder_.write("damaged.btrc", filled(first + std::string(kBlock - first.size(), '\0') + second))));
  reader.setActive(true);
  EXPECT_NE(reader.ReadNextMessage(), nullptr);
  EXPECT_EQ(reader.ReadNextMessage(), nullptr);
}

TEST_F(BtrcFrames, areReadAfterFillingWithoutAHeader) {
  const std::string first = head() + plainFrame(kStart + 1);
  EXPECT_EQ(read(first + std::string(kBlock - first.size(), '\0') + counter(0, 1, 1) + plainFrame(kStart + 9)),
            (Texts{"1000 data 1 123 Rx dlc4 [01020304]", "9000 data 1 123 Rx dlc4 [01020304]"}));
  EXPECT_TRUE(account_.complete());
}

TEST_F(BtrcFrames, ofACutFileAreTheWholeOnes) {
  const std::string bytes = head() + plainFrame(kStart + 1) + plainFrame(kStart + 2);
  for (std::size_t cut = 1; cut < 24; ++cut) {
    EXPECT_EQ(read(bytes.substr(0, bytes.size() - cut)), (Texts{"1000 data 1 123 Rx dlc4 [01020304]"})) << cut;
    EXPECT_EQ(account_.noted(Remark::SourceCut), (Account::Count{1, 4})) << cut;
    EXPECT_EQ(source_->bytesRead(), bytes.size() - cut);
  }
}

TEST_F(BtrcFrames, ofRecordsThatAreTooShortAreEventsAndCounted) {
  EXPECT_EQ(readRecords(plainFrame(kStart + 1) + record(1, "abcd") + record(0x10, "abcd") +
                        received(1, kStart + 1, frameInfo(0, 0, 0, 0x20000000), "")),
            (Texts{"1000 data 1 123 Rx dlc4 [01020304]", "1000 event 0 0 [61626364] record_type=1",
                   "1000 event 0 0 [61626364] record_type=16",
                   "1000 event 0 0 [C7296622C820E3000000000000000020] record_type=1"}));
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{3, 4}));
}

TEST_F(BtrcFrames, areNoneInWhatIsNoTrace) {
  EXPECT_EQ(read(std::string(100'000, 'x')), Texts());
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 1}));
  EXPECT_EQ(source_->bytesRead(), 100'000U);
}

TEST_F(BtrcFrames, ofAMissingFileAreAFailureOfTheSystem) {
  EXPECT_THROW(static_cast<void>(openBtrcFrames(folder_.file("missing.btrc"))), std::ios_base::failure);
}

TEST_F(BtrcFrames, areWrittenByteForByte) {
  Frame fd = dataFrame(2'000, frame_flag::kTransmitted | frame_flag::kFd | frame_flag::kBrs | frame_flag::kExtended);
  std::vector<std::uint8_t> bytes(64, 0x55);
  fd.data = bytes;
  fd.dlc = 15;
  Frame remote = frameOf(FrameKind::Remote, 3'000, 2);
  remote.flags = frame_flag::kReceived | frame_flag::kDlcKnown;
  remote.id = 0x7FF;
  remote.dlc = 8;
  Frame error = frameOf(FrameKind::Error, 4'000);
  error.flags = frame_flag::kReceived;
  error.attributes.set(FrameAttribute::ErrorType, 2);
  error.attributes.set(FrameAttribute::ErrorPosition, 25);
  error.attributes.set(FrameAttribute::TxErrors, 8);
  error.attributes.set(FrameAttribute::RxErrors, 96);
  Frame status = frameOf(FrameKind::Status, 5'000);
  status.attributes.set(FrameAttribute::BusState, 16);
  Frame comment = frameOf(FrameKind::Comment, 5'000, 0);
  comment.text = "lunch";
  EXPECT_EQ(write({dataFrame(1'000), fd, remote, error, status, comment}),
            filled(head() + plainFrame(kStart + 1) +
                   sent(6, kStart + 2, frameInfo(0, 15, 0x32, 0x123), std::string(64, 'U')) +
                   received(2, kStart + 3, frameInfo(1, 8, 1, 0x7FF), "") +
                   record(7, number(kStart + 4, 8) + "\0\xA0\x19\x08\x60\0\0\0"s) +
                   record(8, number(kStart + 5, 8) + "\0\x80\0\0"s) + record(0x8002, "lunch\0\0\0"s)));
  EXPECT_TRUE(written_.complete());
  EXPECT_EQ(written_.written(), 6U);
}

// The record of a text, filled with zeros.
std::string textRecord(std::string text) {
  text.resize((text.size() + 3) / 4 * 4, '\0');
  return record(0x8002, text);
}

TEST_F(BtrcFrames, writeEventsAsTextsThatComeBack) {
  const std::string text = "two words\nand\\a zero\0"s;
  Frame event = frameOf(FrameKind::Event, 7'500, 3);
  event.text = text;
  EXPECT_EQ(write({event}),
            filled(head() + textRecord(" xlatr: event time=0.000007500 bus=3 text=two words\\nand\\\\a zero\\0")));
  EXPECT_EQ(read(folder_.read("target.btrc")), (Texts{test::textOf(event)}));
  EXPECT_EQ(written_.commented(Remark::TextNotHeld), (Account::Count{1, 0}));
  // The compatible way writes a text of its own.
  BtrcWriter writer(folder_.file("compatible.btrc"));
  writer.setActive(true);
  BrixMessage message;
  message.valid = true;
  message.kind = MessageKind::EV;
  message.comment = "two words";
  writer.WriteMessage(message);
  writer.setActive(false);
  EXPECT_EQ(folder_.read("compatible.btrc").substr(4, 36), "TODO 'Event Framer (EV)': two words ");
}

TEST_F(BtrcFrames, writeLongTextsInPieces) {
  for (const std::size_t length : {8'155U, 8'156U, 8'157U, 8'158U, 20'000U, 1'000'000U}) {
    for (const char last : {'x', ' '}) {
      std::string text(length, last);
      text.front() = 'a';
      Frame comment = frameOf(FrameKind::Comment, 0, 0);
      comment.text = text;
      EXPECT_EQ(writeAndRead({comment, dataFrame(1'000)}),
                (Texts{"0 comment 0 0 \"" + text + "\"", "1000 data 1 123 Rx dlc4 [01020304]"}))
          << length;
      EXPECT_EQ(std::filesystem::file_size(folder_.file("target.btrc")) % kBlock, 0U);
      EXPECT_TRUE(account_.complete());
    }
  }
}

TEST_F(BtrcFrames, cutTextsThatNoTraceHas) {
  const std::string longest(FrameBatch::kLongestText, 'x');
  const std::string text = longest + "y";
  Frame comment = frameOf(FrameKind::Comment, 0, 0);
  comment.text = text;
  EXPECT_EQ(writeAndRead({comment, dataFrame(1'000)}),
            (Texts{"0 comment 0 0 \"" + longest + "\"", "1000 data 1 123 Rx dlc4 [01020304]"}));
  EXPECT_EQ(account_.noted(Remark::TextCut).frames, 1U);
}

TEST_F(BtrcFrames, writeOtherStatusesAsTexts) {
  Frame light = frameOf(FrameKind::Status);
  light.attributes.set(FrameAttribute::BusState, 4 | 8);
  Frame worded = frameOf(FrameKind::Status);
  worded.attributes.set(FrameAttribute::BusState, 8);
  worded.text = "BUSHEAVY";
  EXPECT_EQ(writeAndRead({light, worded}),
            (Texts{"1000 status 1 0 bus_state=12", "1000 status 1 0 \"BUSHEAVY\" bus_state=8"}));
  EXPECT_EQ(written_.commented(Remark::DetailNotHeld).frames, 1U);
  EXPECT_EQ(written_.commented(Remark::TextNotHeld).frames, 1U);
}

TEST_F(BtrcFrames, writeFramesOfNoBusOnTheFirst) {
  Frame none = dataFrame(0);
  none.bus = 0;
  Frame last = dataFrame(0);
  last.bus = 255;
  Frame high = dataFrame(0);
  high.bus = 256;
  EXPECT_EQ(write({none, last, high}),
            filled(head() + plainFrame(kStart) + plainFrame(kStart, 254) +
                   textRecord(" xlatr: data time=0.000000000 bus=256 id=123 flags=received dlc=4 data=01020304")));
  EXPECT_EQ(written_.noted(Remark::BusGuessed).frames, 1U);
  EXPECT_EQ(written_.commented(Remark::BusNotHeld).frames, 1U);
  EXPECT_EQ(read(folder_.read("target.btrc")).back(), "0 data 256 123 Rx dlc4 [01020304]");
}

TEST_F(BtrcFrames, haveTheirStartExact) {
  // The days of this start are 46347.5516896719, a hair below the microsecond.
  EXPECT_EQ(write({}), filled(head()));
  const std::string trace = ";$FILEVERSION=2.1\n;$STARTTIME=45352.3333333333\n;$COLUMNS=N,O,T,B,I,d,L,D\n";
  const auto source = openTrcFrames(folder_.write("s.trc", trace));
  const auto sink = createBtrcFrames(folder_.file("exact.btrc"), source->head(), {});
  sink->close();
  const auto exact = openBtrcFrames(folder_.file("exact.btrc"));
  EXPECT_EQ(exact->head().start->sinceEpochNs, 1'709'279'999'999'997'000);
  BtrcWriter writer(folder_.file("days.btrc"));
  writer.setActive(true);
  writer.WriteHeader(TrcInfo(TraceFileInfo(folder_.file("s.trc"))));
  writer.setActive(false);
  EXPECT_NE(folder_.read("days.btrc").substr(0, 32), folder_.read("exact.btrc").substr(0, 32));
}

TEST_F(BtrcFrames, haveNoStartWhereTheSourceHasNone) {
  read(write({dataFrame(0)}, std::nullopt));
  EXPECT_EQ(source_->head().start, std::nullopt);
  EXPECT_TRUE(account_.complete());
}

TEST_F(BtrcFrames, comeBackAsTheTableSays) {
  std::vector<std::uint8_t> bytes(2048, 0xA5);
  std::vector<Frame> frames;
  for (const std::uint16_t flags :
       std::to_array<std::uint16_t>({0x000, 0x001, 0x002, 0x004, 0x00A, 0x01C, 0x02D, 0x03A})) {
    for (const std::size_t length : {0U, 1U, 8U, 12U, 64U}) {
      Frame frame = dataFrame(1'499, flags);
      frame.data = std::span(bytes).first((flags & frame_flag::kFd) != 0 ? length : std::min(length, std::size_t{8}));
      frame.dlc = length > 8 ? 13 : static_cast<std::uint16_t>(length);
      frames.push_back(frame);
    }
  }
  Frame xl = dataFrame(5, frame_flag::kXl);
  xl.data = bytes;
  xl.dlc = 2047;
  frames.push_back(xl);
  for (const std::uint16_t dlc : std::to_array<std::uint16_t>({0, 5, 8, 12, 15})) {
    Frame remote = frameOf(FrameKind::Remote);
    remote.flags = dlc % 2 == 0 ? frame_flag::kDlcKnown : frame_flag::kTransmitted;
    remote.dlc = dlc;
    frames.push_back(remote);
  }
  for (const std::uint32_t value : {0U, 3U, 255U, 256U}) {
    for (std::size_t at = 0; at < kFrameKindCount; ++at) {
      const auto kind = static_cast<FrameKind>(at);
      Frame frame = frameOf(kind, 1'000 + value, static_cast<std::uint16_t>(value));
      for (std::size_t attribute = 0; attribute < kFrameAttributeCount; ++attribute) {
        frame.attributes.set(static_cast<FrameAttribute>(attribute), value);
      }
      frame.text = kind == FrameKind::Comment ? std::optional<std::string_view>("c") : std::nullopt;
      frames.push_back(frame);
      Frame plain = frameOf(kind, 1'000 + value);
      plain.text = frame.text;
      frames.push_back(plain);
    }
  }
  for (const std::uint32_t type : {1U, 2U, 7U, 9U, 10U, 16U, 0x1234U, 0x8000U, 0x8001U, 0x8002U, 0x10000U}) {
    for (const std::size_t size : {0U, 3U, 4U, 7U, 12U, 24U}) {
      Frame event = frameOf(FrameKind::Event, 2'000, type == 16 ? 2 : 0);
      event.attributes.set(FrameAttribute::RecordType, type);
      event.data = std::span(bytes).first(size);
      frames.push_back(event);
    }
  }
  const FrameCapacity& capacity = btrcCapacities().front();
  Texts expected;
  Account account;
  std::int64_t time = 0;
  for (const Frame& frame : frames) {
    const bool asItIs = frame.kind == FrameKind::Comment || whyNotHeld(capacity, frame);
    Frame back = asItIs ? frame : reducedTo(capacity, frame, account);
    back.timeNs = frame.kind == FrameKind::Comment ? time : back.timeNs;
    time = back.timeNs;
    expected.push_back(test::textOf(back));
  }
  const Texts texts = writeAndRead(frames);
  ASSERT_EQ(texts.size(), expected.size());
  for (std::size_t at = 0; at < texts.size(); ++at) {
    EXPECT_EQ(texts[at], expected[at]) << test::textOf(frames[at]);
  }
  EXPECT_EQ(written_.written(), frames.size());
}

TEST_F(BtrcFrames, areTheSameBytesWhenTheyAreWrittenAgain) {
  const std::string bytes =
      filled(head() + plainFrame(kStart + 1) + record(0x10, number(kStart + 2, 8) + "\x02\0\0\0\x07\0\0\0"s) +
             record(10, "\0\x08\x01\0\x02\x03\x04\x05"s + number(100'000'000, 4)) + record(0x1234, "\x01\x02\x03\x04") +
             record(9, number(kStart + 4, 8) + "\x01\x2A\0\0"s) + record(0x8002, "lunch\0\0\0"s));
  source_ = openBtrcFrames(folder_.write("source.btrc", bytes));
  const auto sink = createBtrcFrames(folder_.file("again.btrc"), source_->head(), {});
  FrameBatch batch;
  while (source_->read(batch, account_)) {
    sink->write(batch, account_);
    batch.clear();
  }
  sink->close();
  EXPECT_EQ(folder_.read("again.btrc"), bytes);
  EXPECT_TRUE(account_.complete());
}

// What holds nothing that a quirk touches.
TEST_F(BtrcFrames, ofATraceAreTheSameBytesOnBothWays) {
  std::string trace = ";$FILEVERSION=2.1\n;$STARTTIME=46347.5\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n";
  const char* const lines[] = {
      "1 %d.5 DT 1 0123 Rx - 8 00 01 02 03 04 05 06 07\n",
      "1 %d.501 DT 16 18ABCDEF Tx - 3 0A 0B 0C\n",
      "1 %d.502 RR 2 0123 Tx - 8\n",
      "1 %d.503 RR 2 0123 Rx - 0\n",
      "1 %d.504 FB 1 0123 Rx - 15 "
      "00 01 02 03 04 05 06 07 00 01 02 03 04 05 06 07 00 01 02 03 04 05 06 07 00 01 "
      "02 03 04 05 06 07 00 01 02 03 04 05 06 07 00 01 02 03 04 05 06 07 00 01 02 03 04 05 06 07 00 01 02 03 04 05 06 "
      "07\n",
      "1 %d.505 BI 1 0123 Tx - 9 00 01 02 03 04 05 06 07 08 09 0A 0B\n",
      "1 %d.506 ER 1 - Rx - 5 04 00 12 08 60\n",
      "1 %d.507 EC 1 - Rx - 2 08 60\n",
      "1 %d.508 ST 1 - Rx - 4 00 04 00 18\n",
  };
  for (int number = 0; number < 300; ++number) {
    for (const char* const line : lines) {
      char text[400];
      std::snprintf(text, sizeof text, line, number);
      trace += text;
    }
  }
  const std::string path = folder_.write("source.trc", trace);
  const std::string complete = test::completeOf(folder_, path, formatOf(XLATR_FORMAT_BTRC), account_);
  EXPECT_EQ(complete, test::compatibleOf<BtrcWriter>(folder_, path));
  EXPECT_EQ(account_.written(), 2'700U);
}

}  // namespace
}  // namespace xlatr
