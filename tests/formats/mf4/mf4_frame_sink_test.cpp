// Frames written as MF4 files.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "support/frame_text.hpp"
#include "support/mf4_checker.hpp"
#include "support/random_frames.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

std::string bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

Texts framesOf(const std::string& path, StreamHead* head = nullptr) {
  const auto source = openMf4Frames(path);
  Account account;
  Texts texts = test::textsOf(*source, account);
  EXPECT_TRUE(account.complete());
  if (head != nullptr) {
    *head = source->head();
  }
  return texts;
}

// Their number, and the last two.
std::size_t countOf(const std::string& path, StreamHead& head, Texts& last) {
  const auto source = openMf4Frames(path);
  head = source->head();
  FrameBatch batch;
  Account account;
  while (source->read(batch, account)) {
    last = {test::textOf(batch.at(batch.size() - 2)), test::textOf(batch.at(batch.size() - 1))};
    batch.clear();
  }
  return account.read();
}

const std::vector<std::uint8_t> kBytes = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC};

Frame dataFrame(std::int64_t timeNs, std::size_t length, std::uint16_t flags = frame_flag::kReceived) {
  Frame frame;
  frame.timeNs = timeNs;
  frame.bus = 2;
  frame.id = 0x123;
  frame.flags = flags;
  frame.dlc = static_cast<std::uint16_t>(length == 12 ? 9 : length);
  frame.data = std::span(kBytes).first(length);
  return frame;
}

Frame frameOf(FrameKind kind, std::int64_t timeNs) {
  Frame frame;
  frame.timeNs = timeNs;
  frame.kind = kind;
  frame.bus = 1;
  frame.flags = frame_flag::kReceived;
  return frame;
}

// One of each kind and shape that a file holds.
FrameBatch everyKind() {
  FrameBatch batch;
  batch.append(dataFrame(9'007'199'254'740'993, 8));
  batch.append(dataFrame(-5, 12, frame_flag::kTransmitted | frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi));
  Frame remote = frameOf(FrameKind::Remote, 1);
  remote.id = 0x1ABCDEF0;
  remote.dlc = 15;
  remote.set(frame_flag::kExtended | frame_flag::kDlcKnown);
  batch.append(remote);
  Frame error = frameOf(FrameKind::Error, 2);
  error.attributes.set(FrameAttribute::ErrorType, 2);
  error.attributes.set(FrameAttribute::ErrorPosition, 20);
  batch.append(error);
  batch.append(frameOf(FrameKind::Error, 3));
  batch.append(frameOf(FrameKind::Overload, 4));
  Frame lin = frameOf(FrameKind::Lin, 5);
  lin.id = 0x3F;
  lin.dlc = 2;
  lin.data = std::span(kBytes).first(2);
  lin.attributes.set(FrameAttribute::Checksum, 0x5A);
  batch.append(lin);
  lin.set(frame_flag::kEnhancedChecksum);
  lin.attributes.set(FrameAttribute::ChecksumModel, 2);
  lin.attributes.set(FrameAttribute::LinErrors, 1);
  batch.append(lin);
  // Nobody sent the four bytes that were asked for.
  Frame silent = frameOf(FrameKind::Lin, 6);
  silent.id = 7;
  silent.dlc = 4;
  silent.attributes.set(FrameAttribute::Checksum, 0);
  silent.attributes.set(FrameAttribute::LinErrors, 32);
  batch.append(silent);
  return batch;
}

const Texts kEveryKind = {
    "9007199254740993 data 2 123 Rx dlc8 [1122334455667788]",
    "-5 data 2 123 Tx FD BRS ESI dlc9 [112233445566778899AABBCC]",
    "1 remote 1 1ABCDEF0 x Rx known dlc15",
    "2 error 1 0 Rx error_type=2 error_position=20",
    "3 error 1 0 Rx",
    "4 overload 1 0 Rx",
    "5 lin 1 3F Rx dlc2 [1122] checksum=90",
    "5 lin 1 3F Rx enhanced dlc2 [1122] checksum=90 checksum_model=2 lin_errors=1",
    "6 lin 1 7 Rx dlc4 checksum=0 lin_errors=32",
};

TEST(Mf4FrameSink, writesEveryKindInEveryForm) {
  for (const bool zipped : {false, true}) {
    for (const bool compact : {false, true}) {
      const test::TempFolder folder;
      const std::string path = folder.file("target.mf4");
      StreamHead head;
      head.start = TraceStart{.sinceEpochNs = 1'600'000'000'123'456'789, .zoneMinutes = -90};
      Account account;
      const auto sink = createMf4Frames(path, head, {.version = 4.11, .zipped = zipped, .compact = compact});
      sink->write(everyKind(), account);
      sink->close();
      EXPECT_EQ(account.written(), kEveryKind.size());
      EXPECT_TRUE(account.complete());
      StreamHead read;
      EXPECT_EQ(framesOf(path, &read), kEveryKind);
      EXPECT_EQ(read.version, 4.11);
      EXPECT_EQ(read.start, head.start);
      EXPECT_EQ(read.frames, kEveryKind.size());
      EXPECT_FALSE(read.unfinished);
      EXPECT_TRUE(read.producer.starts_with("ZELK-Converter"));
    }
  }
}

TEST(Mf4FrameSink, writesRecordsLikeTheCompatibleOnes) {
  const test::TempFolder folder;
  const std::string path = folder.file("target.mf4");
  FrameBatch batch;
  batch.append(dataFrame(0x0102030405060708, 3, frame_flag::kTransmitted));
  Account account;
  const auto sink = createMf4Frames(path, {}, {});
  sink->write(batch, account);
  sink->close();
  const std::string bytes = bytesOf(path);
  const std::string expected = std::string("##DT\0\0\0\0\x69\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 24) +
                               std::string(1, '\0') + "\x08\x07\x06\x05\x04\x03\x02\x01" +
                               std::string("\x23\x01\0\0\x02\x01\x03\x03", 8) + "\x11\x22\x33" + std::string(61, '\0');
  EXPECT_EQ(bytes.substr(bytes.size() - expected.size()), expected);
  EXPECT_EQ(bytes.substr(0, 17), std::string("MDF     4.20\0\0\0\0Z", 17));
  EXPECT_EQ(bytes.substr(60, 2), std::string(2, '\0'));

  // The compatible way reads it too.
  MdfReader reader{MdfInfo(path)};
  std::string reason;
  EXPECT_TRUE(reader.ValidateFile(reason)) << reason;
  ASSERT_TRUE(reader.setActive(true));
  MdfCanMessage message;
  ASSERT_TRUE(reader.readInto(message));
  EXPECT_TRUE(message.valid);
  EXPECT_EQ(message.id, 0x123U);
  EXPECT_EQ(message.length, 3U);
  EXPECT_FALSE(reader.readInto(message));
}

TEST(Mf4FrameSink, listsTheBlocksOfLargeFiles) {
  constexpr std::int64_t kCount = 120'000;  // 9.7 MB of records
  for (const bool zipped : {false, true}) {
    const test::TempFolder folder;
    const std::string path = folder.file("target.mf4");
    Account account;
    const auto sink = createMf4Frames(path, {}, {.zipped = zipped});
    FrameBatch batch;
    for (std::int64_t at = 0; at < kCount; ++at) {
      batch.append(at == kCount - 2 ? frameOf(FrameKind::Overload, at) : dataFrame(at, 4));
      if (batch.full() || at + 1 == kCount) {
        sink->write(batch, account);
        batch.clear();
      }
    }
    // Whoever is stopped here leaves all blocks but the last one behind.
    StreamHead head;
    Texts last;
    const std::size_t found = countOf(path, head, last);
    EXPECT_GT(found, std::size_t{100'000});
    EXPECT_LT(found, std::size_t{kCount});
    EXPECT_TRUE(head.unfinished);
    EXPECT_EQ(head.frames, std::nullopt);
    sink->close();
    EXPECT_EQ(countOf(path, head, last), std::size_t{kCount});
    EXPECT_EQ(head.frames, std::size_t{kCount});
    EXPECT_EQ(last, (Texts{"119998 overload 1 0 Rx", "119999 data 2 123 Rx dlc4 [11223344]"}));
    const std::string bytes = bytesOf(path);
    EXPECT_EQ(bytes.find("##HL") != std::string::npos, zipped);
    EXPECT_NE(bytes.find("##DL"), std::string::npos);
  }
}

TEST(Mf4FrameSink, makesShortRecordsWhereTheyAreAskedFor) {
  const test::TempFolder folder;
  const auto sizeOf = [&folder](bool compact) {
    const std::string path = folder.file("target.mf4");
    Account account;
    const auto sink = createMf4Frames(path, {}, {.compact = compact});
    FrameBatch batch;
    for (int at = 0; at < 1'000; ++at) {
      batch.append(dataFrame(at, 8));
    }
    sink->write(batch, account);
    sink->close();
    return std::filesystem::file_size(path);
  };
  EXPECT_EQ(sizeOf(false) - sizeOf(true), 56'000U);
}

// What comes back is what the table says.
TEST(Mf4FrameSink, keepsRandomFramesInEveryForm) {
  for (const bool zipped : {false, true}) {
    for (const bool compact : {false, true}) {
      const test::TempFolder folder;
      const std::string path = folder.file("target.mf4");
      const auto sink = createMf4Frames(path, {}, {.zipped = zipped, .compact = compact});
      test::RandomFrames random(7);
      FrameBatch batch;
      Account account;
      Account reductions;
      Texts expected;
      for (int at = 0; at < 3'000; ++at) {
        const test::OwnedFrame made = random.next();
        batch.append(made.view());
        if (!whyNotHeld(mf4Capacities().back(), made.view())) {
          expected.push_back(test::textOf(reducedTo(mf4Capacities().back(), made.view(), reductions)));
        }
      }
      sink->write(batch, account);
      sink->close();
      EXPECT_EQ(account.written(), expected.size());
      EXPECT_EQ(framesOf(path), expected);
      EXPECT_EQ(test::faultsOf(test::checkMf4(bytesOf(path))), "");
    }
  }
}

TEST(Mf4FrameSink, leavesOutPositionsOfErrorsThatNoRecordHolds) {
  const test::TempFolder folder;
  const std::string path = folder.file("target.mf4");
  FrameBatch batch;
  for (const std::uint32_t position : {2U, 3U, 257U, 258U}) {
    Frame frame = frameOf(FrameKind::Error, 1);
    frame.attributes.set(FrameAttribute::ErrorPosition, position);
    batch.append(frame);
  }
  Account account;
  const auto sink = createMf4Frames(path, {}, {});
  sink->write(batch, account);
  sink->close();
  EXPECT_EQ(account.written(), 4U);
  EXPECT_EQ(account.noted(Remark::DetailLost).frames, 2U);
  const Texts frames = framesOf(path);
  ASSERT_EQ(frames.size(), 4U);
  for (std::size_t at = 0; at < frames.size(); ++at) {
    EXPECT_EQ(frames[at].find("error_position=") != std::string::npos, at == 1 || at == 2) << frames[at];
  }
}

TEST(Mf4FrameSink, dropsWhatNoRecordHolds) {
  const test::TempFolder folder;
  const std::string path = folder.file("target.mf4");
  FrameBatch batch;
  for (const FrameKind kind :
       {FrameKind::Status, FrameKind::Counters, FrameKind::LinEvent, FrameKind::Event, FrameKind::Comment}) {
    batch.append(frameOf(kind, 1));
  }
  Frame bus = dataFrame(1, 1);
  bus.bus = 256;
  batch.append(bus);
  struct Detail {
    FrameKind kind;
    FrameAttribute attribute;
    std::uint32_t value;
  };
  constexpr std::array kDetails = {
      Detail{FrameKind::Error, FrameAttribute::ErrorType, 4},
      Detail{FrameKind::Lin, FrameAttribute::LinErrors, 33},
      Detail{FrameKind::Lin, FrameAttribute::Checksum, 256},
      Detail{FrameKind::Lin, FrameAttribute::ChecksumModel, 4},
  };
  for (const Detail& detail : kDetails) {
    Frame frame = frameOf(detail.kind, 1);
    frame.attributes.set(detail.attribute, detail.value);
    batch.append(frame);
  }
  Account account;
  const auto sink = createMf4Frames(path, {}, {});
  sink->write(batch, account);
  sink->close();
  EXPECT_EQ(account.written(), 0U);
  EXPECT_EQ(account.dropped(Remark::KindNotHeld).frames, 5U);
  EXPECT_EQ(account.dropped(Remark::BusNotHeld).frames, 1U);
  EXPECT_EQ(account.dropped(Remark::DetailNotHeld).frames, kDetails.size());
  EXPECT_EQ(framesOf(path), Texts());
}

}  // namespace
}  // namespace xlatr
