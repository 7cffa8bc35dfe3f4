#include "formats/native/btr_frames.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <ios>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/native/btr_info.hpp"
#include "formats/native/btr_session_reader.hpp"
#include "formats/native/btr_session_writer.hpp"
#include "formats/trc/trc_info.hpp"
#include "io/format.hpp"
#include "support/both_ways.hpp"
#include "support/btr_image.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using test::BtrDate;
using test::BtrImage;
using test::BtrSession;
using test::BtrSlot;
using test::btrTick;
using Texts = std::vector<std::string>;

// 2024-03-01 08:15:30.25, the date of an image unless it says another one.
constexpr std::int64_t kDateNs = 1'709'280'930'250'000'000;
constexpr std::int64_t kMinuteNs = 60'000'000'000;

class BtrFrames : public testing::Test {
 protected:
  Texts read(const std::string& bytes) {
    source_ = openBtrFrames(folder_.write("source.btr", bytes));
    account_ = {};
    return test::textsOf(*source_, account_);
  }
  // Of a session of one sector with these slots.
  Texts readSlots(const std::vector<BtrSlot>& slots, std::uint64_t startTimestamp = 0) {
    return read(BtrImage(2).session(0, {.startTimestamp = startTimestamp}).sector(1, {}, slots).bytes());
  }
  // What a reader of the compatible way makes of the first session: how many frames, and whether it fails.
  std::pair<std::size_t, bool> readCompatible() {
    const BtrInfo info(TraceFileInfo(folder_.file("source.btr")));
    if (info.getSessionsCount() == 0) {
      return {0, true};
    }
    BtrSessionReader reader(info.GetSession(0), true);
    std::vector<SessionMessage> sector;
    std::size_t count = 0;
    try {
      while (reader.readSector(sector)) {
        count += sector.size();
      }
    } catch (const ConverterGenericException&) {
      return {count, true};
    }
    return {count, false};
  }

  std::string write(const std::vector<Frame>& frames, std::optional<std::int64_t> start = kDateNs) {
    StreamHead head;
    if (start) {
      head.start = TraceStart{.sinceEpochNs = *start};
    }
    const auto sink = createBtrFrames(folder_.file("target.btr"), head, {});
    FrameBatch batch;
    written_ = {};
    for (const Frame& frame : frames) {
      batch.append(frame);
    }
    sink->write(batch, written_);
    sink->close();
    return folder_.read("target.btr");
  }
  Texts writeAndRead(const std::vector<Frame>& frames) { return read(write(frames)); }

  test::TempFolder folder_;
  std::unique_ptr<FrameSource> source_;
  Account account_;
  Account written_;
};

Frame busFrame(FrameKind kind, std::int64_t timeNs = 0, std::uint16_t bus = 1) {
  static constexpr std::uint8_t kData[] = {0xAA, 0xBB};
  Frame frame;
  frame.kind = kind;
  frame.timeNs = timeNs;
  frame.bus = bus;
  if (kind == FrameKind::Data) {
    frame.id = 0x123;
    frame.dlc = 2;
    frame.data = kData;
  }
  return frame;
}

Frame errorFrame() {
  Frame error = busFrame(FrameKind::Error, 3'000, 2);
  error.flags = frame_flag::kReceived;
  error.attributes.set(FrameAttribute::ErrorType, 2);
  error.attributes.set(FrameAttribute::ErrorPosition, 25);
  error.attributes.set(FrameAttribute::TxErrors, 8);
  error.attributes.set(FrameAttribute::RxErrors, 96);
  return error;
}

Frame statusFrame(std::uint32_t state) {
  Frame status = busFrame(FrameKind::Status, 4'000);
  status.attributes.set(FrameAttribute::BusState, state);
  return status;
}

TEST_F(BtrFrames, areReadOfEveryKind) {
  EXPECT_EQ(
      readSlots({
          {.id = 0x123, .bus = 0, .length = 2, .timestamp = 10, .data = {0xAA, 0xBB}},
          {.id = 0x18ABCDEF, .flags = 2, .bus = 4, .length = 8, .timestamp = 11, .data = {1, 2, 3, 4, 5, 6, 7, 8}},
          {.id = 0x7FF, .flags = 1, .bus = 1, .length = 9, .timestamp = 12},
          {.id = 0x100, .bus = 1, .length = 12, .timestamp = 13, .data = {1, 2, 3, 4, 5, 6, 7, 8}},
          {.id = 0xFFFFFFFF, .flags = 16, .length = 5, .timestamp = 14, .data = {4, 1, 25, 96, 8}},
          {.id = 2, .flags = 16, .length = 4, .timestamp = 15, .data = {0, 25, 96, 8}},
          {.id = 0, .flags = 16, .length = 2, .timestamp = 16, .data = {96, 8}},
          {.id = 0xFFFFFFFF, .flags = 16, .length = 4, .timestamp = 17, .data = {0, 4, 0, 24}},
          btrTick(18),
      }),
      (Texts{"10000 data 1 123 dlc2 [AABB]", "11000 data 5 18ABCDEF x dlc8 [0102030405060708]",
             "12000 remote 2 7FF known dlc9", "13000 data 2 100 dlc12 [0102030405060708]",
             "14000 error 1 0 Rx error_type=2 error_position=25 tx_errors=8 rx_errors=96",
             "15000 error 1 0 Tx error_type=1 error_position=25 tx_errors=8 rx_errors=96",
             "16000 counters 1 0 tx_errors=8 rx_errors=96", "17000 status 1 0 bus_state=262168"}));
  EXPECT_EQ(source_->head().start, (TraceStart{kDateNs, std::nullopt}));
  EXPECT_EQ(source_->head().version, 3.0);
  EXPECT_EQ(source_->bytesRead(), 1024U);
  EXPECT_TRUE(account_.complete());
}

TEST_F(BtrFrames, recoverAStatusThatIsNotMarked) {
  EXPECT_EQ(readSlots({{.id = 0xFFFFFFFF, .bus = 1, .length = 4, .timestamp = 1, .data = {0, 0, 0, 8}},
                       {.id = 0xFFFFFFFF, .bus = 1, .length = 4, .timestamp = 1, .data = {1, 2, 3, 4}}}),
            (Texts{"1000 status 2 0 bus_state=8"}));
  EXPECT_EQ(readCompatible().first, 0U);
  EXPECT_EQ(writeAndRead({statusFrame(16)}), (Texts{"4000 status 1 0 bus_state=16"}));
}

TEST_F(BtrFrames, comeBackFromFifteenBuses) {
  EXPECT_EQ(readSlots({{.bus = 5}, {.bus = 14, .timestamp = 1}}), (Texts{"0 data 6 123", "1000 data 15 123"}));
  EXPECT_EQ(readCompatible(), (std::pair<std::size_t, bool>{0, true}));
  EXPECT_EQ(writeAndRead(
                {busFrame(FrameKind::Data, 0, 15), busFrame(FrameKind::Data, 0, 16), busFrame(FrameKind::Data, 0, 0)}),
            (Texts{"0 data 15 123 dlc2 [AABB]", "0 data 1 123 dlc2 [AABB]"}));
  EXPECT_EQ(written_.dropped(Remark::BusNotHeld).frames, 1U);
  EXPECT_EQ(written_.noted(Remark::BusGuessed).frames, 1U);
}

TEST_F(BtrFrames, countFromTheStartOfTheirSession) {
  EXPECT_EQ(readSlots({{.timestamp = 5'000'010}, {.timestamp = 5'000'020}}, 5'000'000),
            (Texts{"10000 data 1 123", "20000 data 1 123"}));
  // Microseconds of the start are no clock.
  EXPECT_EQ(readSlots({{.timestamp = 10}, {.timestamp = 999}}, 999), (Texts{"10000 data 1 123", "999000 data 1 123"}));
}

TEST_F(BtrFrames, keepNotesOfTheLogger) {
  const Texts texts =
      readSlots({{.timestamp = 1}, {.id = 257, .bus = 15, .timestamp = 2, .data = {7, 8}}, {.timestamp = 3}});
  ASSERT_EQ(texts.size(), 3U);
  EXPECT_EQ(texts[1], "2000 event 0 0 [0101000000000708000000000000] record_type=61440");
  EXPECT_TRUE(account_.complete());
  EXPECT_TRUE(readCompatible().second);
}

TEST_F(BtrFrames, areReadAroundDamage) {
  const auto image = [] {
    BtrImage made(5);
    made.session(0, {});
    for (std::size_t sector = 1; sector < 5; ++sector) {
      made.sector(sector, {}, {{.timestamp = static_cast<std::uint32_t>(sector)}});
    }
    return made;
  };
  const Texts expected = {"1000 data 1 123", "3000 data 1 123", "4000 data 1 123"};
  EXPECT_EQ(read(image().put(2 * 512 + 508, 0, 4).bytes()), expected);
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
  EXPECT_EQ(readCompatible().first, 1U);
  EXPECT_EQ(read(image().put(2 * 512, 0, 4).bytes()), expected);
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
  // A slot that nobody understands is an event.
  EXPECT_EQ(read(image().put(2 * 512 + 4, 0x20000000, 4).bytes()),
            (Texts{"1000 data 1 123", "2000 event 0 0 [0000002000000000000000000000] record_type=0", "3000 data 1 123",
                   "4000 data 1 123"}));
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood), (Account::Count{1, 2}));
  // A directory that goes on where no file is.
  EXPECT_EQ(read(image().session(15, {.firstSector = 0, .continued = 1, .nextDirectory = 99}).bytes()).size(), 4U);
  EXPECT_EQ(account_.noted(Remark::SourceCut), (Account::Count{1, 1}));
  EXPECT_EQ(readCompatible().first, 0U);
}

TEST_F(BtrFrames, ofACutFileAreThoseOfWholeSectors) {
  const std::string bytes =
      BtrImage(3).session(0, {}).sector(1, {}, {{.timestamp = 1}}).sector(2, {}, {{.timestamp = 2}}).bytes();
  EXPECT_EQ(read(bytes.substr(0, bytes.size() - 1)), (Texts{"1000 data 1 123"}));
  EXPECT_EQ(account_.noted(Remark::SourceCut), (Account::Count{1, 1}));
  EXPECT_EQ(source_->bytesRead(), bytes.size() - 1);
  EXPECT_EQ(read(bytes.substr(0, 100)), Texts());
  EXPECT_NE(account_.noted(Remark::SourceCut).frames, 0U);
}

TEST_F(BtrFrames, ofACircularSessionBeginWithTheOldest) {
  BtrImage image(8);
  image.session(0, {}).session(1, {.firstSector = 7, .date = {.year = 25}});
  const std::uint32_t stamps[] = {50, 60, 10, 20, 30, 40};
  for (std::size_t at = 0; at < 6; ++at) {
    image.sector(at + 1, {}, {{.timestamp = stamps[at]}}, at < 2 ? 9 : 8);
  }
  image.sector(7, {.year = 25}, {{.timestamp = 1}});
  source_ = openBtrSessionFrames(folder_.write("c.btr", image.bytes()), 0);
  const Texts expected = {"10000 data 1 123", "20000 data 1 123", "30000 data 1 123",
                          "40000 data 1 123", "50000 data 1 123", "60000 data 1 123"};
  EXPECT_EQ(test::textsOf(*source_, account_), expected);
  EXPECT_TRUE(account_.complete());
  image.put(3 * 512 + 508, 0, 4);
  source_ = openBtrSessionFrames(folder_.write("d.btr", image.bytes()), 0);
  EXPECT_EQ(test::textsOf(*source_, account_), (Texts{"20000 data 1 123", "30000 data 1 123", "40000 data 1 123",
                                                      "50000 data 1 123", "60000 data 1 123"}));
}

TEST_F(BtrFrames, ofSeveralSessionsAreOnTheClockOfTheFirst) {
  const BtrDate later = {.minute = 16, .hundredths = 27};
  const BtrDate none = {.month = 13};
  const std::string bytes = BtrImage(4)
                                .session(0, {})
                                .session(1, {.firstSector = 2, .date = later, .startTimestamp = 0xFFFFFFF0})
                                .session(2, {.firstSector = 3, .date = none})
                                .sector(1, {}, {{.timestamp = 5}})
                                .sector(2, later, {{.timestamp = 0xFFFFFFF1}, {.timestamp = 2}})
                                .sector(3, none, {{.timestamp = 3}})
                                .bytes();
  EXPECT_EQ(read(bytes),
            (Texts{"0 event 0 0 \"session 1 started 2024-03-01 08:15:30.25\"", "5000 data 1 123",
                   "60020000000 event 0 0 \"session 2 started 2024-03-01 08:16:30.27\"", "60020001000 data 1 123",
                   "60020018000 data 1 123", "60020018000 event 0 0 \"session 3 started at an unknown time\"",
                   "60020021000 data 1 123"}));
  EXPECT_TRUE(account_.complete());
  source_ = openBtrSessionFrames(folder_.file("source.btr"), 1);
  ASSERT_NE(source_, nullptr);
  EXPECT_EQ(source_->head().start, (TraceStart{kDateNs + 60'020'000'000, std::nullopt}));
  EXPECT_EQ(test::textsOf(*source_, account_), (Texts{"1000 data 1 123", "18000 data 1 123"}));
  EXPECT_EQ(openBtrSessionFrames(folder_.file("source.btr"), 3), nullptr);
}

TEST_F(BtrFrames, areReadOnceThoughTheDirectoryLies) {
  BtrImage image(3);
  for (std::size_t slot = 0; slot < 16; ++slot) {
    image.session(slot, {.firstSector = slot == 15 ? 77U : 1U});
  }
  image.sector(1, {}, {{.timestamp = 5}}).sector(2, {}, {{.timestamp = 6}});
  const Texts texts = read(image.bytes());
  EXPECT_EQ(texts.size(), 16U + 2U);
  EXPECT_EQ(account_.noted(Remark::RecordNotUnderstood).frames, 14U);
  EXPECT_EQ(account_.noted(Remark::SourceCut).frames, 1U);
}

TEST_F(BtrFrames, havePlacesThatCountSlots) {
  source_ = openBtrFrames(folder_.write(
      "p.btr", BtrImage(2).session(0, {}).sector(1, {}, {{.timestamp = 5}, btrTick(6), {.timestamp = 7}}).bytes()));
  FrameBatch batch;
  ASSERT_TRUE(source_->read(batch, account_));
  ASSERT_EQ(batch.size(), 2U);
  EXPECT_EQ(batch.at(0).place, 1U);
  EXPECT_EQ(batch.at(1).place, 3U);
}

TEST_F(BtrFrames, comeInBatches) {
  constexpr std::size_t kSectors = 1'400;  // 35,000 frames
  BtrImage image(kSectors + 1);
  image.session(0, {});
  for (std::size_t sector = 1; sector <= kSectors; ++sector) {
    image.sector(sector, {}, std::vector<BtrSlot>(25));
  }
  source_ = openBtrFrames(folder_.write("long.btr", image.bytes()));
  FrameBatch batch;
  std::vector<std::size_t> sizes;
  while (source_->read(batch, account_)) {
    sizes.push_back(batch.size());
    batch.clear();
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{FrameBatch::kCapacity, FrameBatch::kCapacity, 2'232}));
}

TEST_F(BtrFrames, ofAMissingFileAreAFailureOfTheSystem) {
  EXPECT_THROW(static_cast<void>(openBtrFrames(folder_.file("missing.btr"))), std::ios_base::failure);
}

TEST_F(BtrFrames, areWrittenByteForByte) {
  Frame remote = busFrame(FrameKind::Remote, 2'000, 5);
  remote.id = 0x18ABCDEF;
  remote.flags = frame_flag::kExtended | frame_flag::kDlcKnown;
  remote.dlc = 8;
  Frame counters = busFrame(FrameKind::Counters, 5'000);
  counters.attributes.set(FrameAttribute::TxErrors, 8);
  counters.attributes.set(FrameAttribute::RxErrors, 96);
  EXPECT_EQ(
      write({busFrame(FrameKind::Data, 1'499), remote, errorFrame(), statusFrame(0x40008), counters}),
      BtrImage(2)
          .session(0, {})
          .sector(1, {},
                  {{.length = 2, .timestamp = 1, .data = {0xAA, 0xBB}},
                   {.id = 0x18ABCDEF, .flags = 3, .bus = 4, .length = 8, .timestamp = 2},
                   {.id = 0xFFFFFFFF, .flags = 16, .bus = 1, .length = 5, .timestamp = 3, .data = {4, 1, 25, 96, 8}},
                   {.id = 0xFFFFFFFF, .flags = 16, .length = 4, .timestamp = 4, .data = {0, 4, 0, 8}},
                   {.id = 0, .flags = 16, .length = 2, .timestamp = 5, .data = {96, 8}}})
          .bytes());
  EXPECT_EQ(written_.written(), 5U);
  EXPECT_EQ(written_.noted(Remark::TimeRounded).frames, 1U);
}

TEST_F(BtrFrames, haveTicksWhereABusIsSilentForLong) {
  std::vector<Frame> frames;
  Texts expected;
  for (const std::int64_t minute : {0, 70, 145, 146, 1'000, 1'070, 100'000}) {
    frames.push_back(busFrame(FrameKind::Data, minute * kMinuteNs, 1));
    expected.push_back(test::textOf(frames.back()));
  }
  frames.push_back(busFrame(FrameKind::Data, 100'001 * kMinuteNs, 2));
  expected.push_back(test::textOf(frames.back()));
  EXPECT_EQ(writeAndRead(frames), expected);
  EXPECT_EQ(written_.written(), frames.size());
  // Without ticks a bus loses the wraps of the clock; with them the compatible way reads the same times.
  const BtrInfo info(TraceFileInfo(folder_.file("source.btr")));
  BtrSessionReader reader(info.GetSession(0), true);
  std::vector<SessionMessage> sector;
  std::vector<double> times;
  while (reader.readSector(sector)) {
    for (const SessionMessage& message : sector) {
      times.push_back(message.time.count());
    }
  }
  ASSERT_EQ(times.size(), frames.size());
  for (std::size_t at = 0; at < times.size(); ++at) {
    EXPECT_EQ(times[at] * 1e6, static_cast<double>(frames[at].timeNs));
  }
}

TEST_F(BtrFrames, haveNoTicksWhereNoneAreNeeded) {
  EXPECT_EQ(write({busFrame(FrameKind::Data), busFrame(FrameKind::Data, 70 * kMinuteNs)}),
            BtrImage(2)
                .session(0, {})
                .sector(1, {},
                        {{.length = 2, .data = {0xAA, 0xBB}},
                         {.length = 2, .timestamp = 4'200'000'000, .data = {0xAA, 0xBB}}})
                .bytes());
}

TEST_F(BtrFrames, mayStepBackAMinute) {
  EXPECT_EQ(writeAndRead({busFrame(FrameKind::Data, 2 * kMinuteNs), busFrame(FrameKind::Data, kMinuteNs),
                          busFrame(FrameKind::Data, 3 * kMinuteNs), busFrame(FrameKind::Data, kMinuteNs)}),
            (Texts{"120000000000 data 1 123 dlc2 [AABB]", "60000000000 data 1 123 dlc2 [AABB]",
                   "180000000000 data 1 123 dlc2 [AABB]"}));
  EXPECT_EQ(written_.dropped(Remark::TimeNotHeld).frames, 1U);
}

TEST_F(BtrFrames, haveTheirStartCarried) {
  read(write({}, kDateNs + 249'999'999'999));
  EXPECT_EQ(source_->head().start->sinceEpochNs, kDateNs + 250'000'000'000);
  for (const std::int64_t start : {std::int64_t{0}, std::int64_t{9'100'000'000'000'000'000}}) {
    read(write({busFrame(FrameKind::Data)}, start));
    EXPECT_EQ(source_->head().start, std::nullopt);
    EXPECT_EQ(account_.read(), 1U);
  }
  read(write({}, std::nullopt));
  EXPECT_EQ(source_->head().start, std::nullopt);
  // 45352.3333333333 days, which the compatible way writes as 100 hundredths.
  const std::string trace = ";$FILEVERSION=2.1\n;$STARTTIME=45352.3333333333\n;$COLUMNS=N,O,T,B,I,d,L,D\n";
  const TrcInfo info(TraceFileInfo(folder_.write("s.trc", trace)));
  BtrSessionWriter writer(folder_.file("compatible.btr"));
  writer.setActive(true);
  writer.WriteHeader(info);
  writer.setActive(false);
  EXPECT_EQ(folder_.read("compatible.btr")[8], 100);
  const auto source = openTrcFrames(folder_.file("s.trc"));
  createBtrFrames(folder_.file("complete.btr"), source->head(), {})->close();
  EXPECT_EQ(folder_.read("complete.btr")[8], 99);  // 3 us before the full second, cut to hundredths
}

TEST_F(BtrFrames, dropAndCountWhatASessionCantHold) {
  const std::vector<std::uint8_t> bytes(64, 1);
  Frame fd = busFrame(FrameKind::Data);
  fd.flags = frame_flag::kFd;
  fd.data = bytes;
  Frame xl = fd;
  xl.flags = frame_flag::kXl;
  Frame event = busFrame(FrameKind::Event);
  event.text = "lunch";
  Frame comment = busFrame(FrameKind::Comment);
  comment.text = "lunch";
  Frame early = busFrame(FrameKind::Data, -1);
  Frame error = errorFrame();
  error.attributes.set(FrameAttribute::RxErrors, 256);
  EXPECT_EQ(write({fd, xl, event, comment, early, error, busFrame(FrameKind::Lin), busFrame(FrameKind::Overload)}),
            BtrImage(2).session(0, {}).sector(1, {}).bytes());
  EXPECT_EQ(written_.dropped(), 8U);
  EXPECT_EQ(written_.dropped(Remark::FdNotHeld).frames, 1U);
  EXPECT_EQ(written_.dropped(Remark::XlNotHeld).frames, 1U);
  EXPECT_EQ(written_.dropped(Remark::TextNotHeld).frames, 1U);
  EXPECT_EQ(written_.dropped(Remark::KindNotHeld).frames, 3U);
  EXPECT_EQ(written_.dropped(Remark::TimeNotHeld).frames, 1U);
  EXPECT_EQ(written_.dropped(Remark::DetailNotHeld).frames, 1U);
}

TEST_F(BtrFrames, comeBackAsTheTableSays) {
  const std::vector<std::uint8_t> bytes(14, 0xA5);
  std::vector<Frame> frames;
  for (const std::uint16_t flags : std::to_array<std::uint16_t>({0, 1, 2, 4, 0x80, 0x81})) {
    for (const std::uint16_t dlc : std::to_array<std::uint16_t>({0, 1, 8, 9, 15})) {
      Frame frame = busFrame(FrameKind::Data, 1'500, dlc);
      frame.flags = flags;
      frame.dlc = dlc;
      frame.data = std::span(bytes).first(std::min<std::size_t>(dlc, 8));
      frames.push_back(frame);
      frame.kind = FrameKind::Remote;
      frame.data = {};
      frames.push_back(frame);
    }
  }
  for (const std::uint32_t value : {0U, 3U, 255U, 256U, 0xFFFFFFFFU}) {
    for (std::size_t at = 0; at < kFrameKindCount; ++at) {
      Frame frame = busFrame(static_cast<FrameKind>(at), 1'000, 3);
      frames.push_back(frame);
      for (std::size_t attribute = 0; attribute < kFrameAttributeCount; ++attribute) {
        frame.attributes.set(static_cast<FrameAttribute>(attribute), value);
      }
      frames.push_back(frame);
    }
  }
  for (const std::uint32_t type : {0U, 1U, 0x10U, 0x410U, 0xF000U, 0xFFFFU, 0x10000U}) {
    Frame event = busFrame(FrameKind::Event, 2'000, 0);
    event.attributes.set(FrameAttribute::RecordType, type);
    event.data = bytes;
    frames.push_back(event);
    event.data = std::span(bytes).first(13);
    frames.push_back(event);
  }
  const FrameCapacity& capacity = btrCapacities().back();
  Texts expected;
  Account account;
  for (const Frame& frame : frames) {
    if (!whyNotHeld(capacity, frame)) {
      expected.push_back(test::textOf(reducedTo(capacity, frame, account)));
    }
  }
  const Texts texts = writeAndRead(frames);
  EXPECT_GT(texts.size(), 60U);
  EXPECT_EQ(texts, expected);
  EXPECT_EQ(written_.written() + written_.dropped(), frames.size());
}

TEST_F(BtrFrames, areRecognisedByTheFirstSession) {
  const std::string bytes = BtrImage(2).session(0, {}).sector(1, {}, {}).bytes();
  EXPECT_TRUE(looksLikeBtr(bytes));
  EXPECT_FALSE(looksLikeBtr(bytes.substr(0, 511)));
  // The version, and the fields of the date, of which a month and a day of 0 are no date.
  const struct {
    std::size_t offset;
    char value;
  } cases[] = {{0, 0}, {0, 4}, {9, 60}, {10, 60}, {11, 24}, {13, 0}, {13, 32}, {14, 0}, {14, 13}};
  for (const auto& [offset, value] : cases) {
    std::string other = bytes;
    other[offset] = value;
    EXPECT_FALSE(looksLikeBtr(other)) << offset << ": " << static_cast<int>(value);
  }
  std::string dateless = bytes;
  dateless[13] = 0;
  dateless[14] = 0;
  EXPECT_TRUE(looksLikeBtr(dateless));
}

// What holds nothing that a quirk touches.
TEST_F(BtrFrames, ofATraceAreTheSameBytesOnBothWays) {
  std::string trace = ";$FILEVERSION=2.1\n;$STARTTIME=45352.5\n;$COLUMNS=N,O,T,B,I,d,R,L,D\n";
  const char* const lines[] = {
      "1 %d.5 DT 1 0123 Rx - 8 00 01 02 03 04 05 06 07\n",
      "1 %d.501 DT 5 18ABCDEF Tx - 3 0A 0B 0C\n",
      "1 %d.502 RR 2 0123 Tx - 8\n",
      "1 %d.503 RR 2 0123 Rx - 0\n",
      "1 %d.506 ER 1 - Rx - 5 04 00 12 08 60\n",
      "1 %d.507 EC 1 - Rx - 2 08 60\n",
  };
  for (int number = 0; number < 200; ++number) {
    for (const char* const line : lines) {
      std::array<char, 400> text{};
      static_cast<void>(std::snprintf(text.data(), text.size(), line, number));
      trace += text.data();
    }
  }
  const std::string path = folder_.write("source.trc", trace);
  const std::string complete = test::completeOf(folder_, path, formatOf(XLATR_FORMAT_BTR), account_);
  EXPECT_EQ(complete, test::compatibleOf<BtrSessionWriter>(folder_, path));
  EXPECT_EQ(account_.written(), 1'200U);
}

}  // namespace
}  // namespace xlatr
