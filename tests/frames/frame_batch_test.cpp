#include "frames/frame_batch.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace xlatr {
namespace {

constexpr std::array<std::uint8_t, 3> kBytes = {0x12, 0x34, 0xFF};

Frame dataFrame() {
  Frame frame;
  frame.timeNs = -5;
  frame.bus = 2;
  frame.flags = frame_flag::kExtended | frame_flag::kReceived;
  frame.dlc = 3;
  frame.id = 0x1ABCDEF0;
  frame.data = kBytes;
  frame.place = 17;
  return frame;
}

Frame eventFrame() {
  Frame frame;
  frame.timeNs = 1'000'000'007;
  frame.kind = FrameKind::Event;
  frame.text = "begin";
  return frame;
}

Frame errorFrame() {
  Frame frame;
  frame.kind = FrameKind::Error;
  frame.attributes.set(FrameAttribute::ErrorType, 0);
  frame.attributes.set(FrameAttribute::TxErrors, 128);
  return frame;
}

TEST(FrameBatch, handsOutWhatItWasGiven) {
  const std::array frames = {dataFrame(), eventFrame(), errorFrame(), dataFrame()};
  FrameBatch batch;
  for (const Frame& frame : frames) {
    batch.append(frame);
  }
  ASSERT_EQ(batch.size(), frames.size());
  for (std::size_t row = 0; row < frames.size(); ++row) {
    EXPECT_TRUE(sameFrame(batch.at(row), frames[row])) << row;
    EXPECT_EQ(batch.at(row).place, frames[row].place) << row;
  }
}

TEST(FrameBatch, tellsAnEmptyTextFromNone) {
  FrameBatch batch;
  Frame frame;
  batch.append(frame);
  frame.text = "";
  batch.append(frame);
  EXPECT_EQ(batch.at(0).text, std::nullopt);
  EXPECT_EQ(batch.at(1).text, "");
}

TEST(FrameBatch, isLaidOutAsArrowLaysOutArrays) {
  FrameBatch batch;
  batch.append(dataFrame());
  batch.append(eventFrame());
  batch.append(dataFrame());
  EXPECT_EQ(std::vector(batch.dataOffsets().begin(), batch.dataOffsets().end()),
            (std::vector<std::int32_t>{0, 3, 3, 6}));
  EXPECT_EQ(std::vector(batch.textOffsets().begin(), batch.textOffsets().end()),
            (std::vector<std::int32_t>{0, 0, 5, 5}));
  EXPECT_EQ(batch.text(), "begin");
  EXPECT_EQ(std::vector(batch.textValidity().begin(), batch.textValidity().end()), std::vector<std::uint8_t>{0b010});
  EXPECT_EQ(std::vector(batch.times().begin(), batch.times().end()),
            (std::vector<std::int64_t>{-5, 1'000'000'007, -5}));
  for (const void* const column :
       {static_cast<const void*>(batch.times().data()), static_cast<const void*>(batch.data().data()),
        static_cast<const void*>(batch.textValidity().data())}) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(column) % 64, 0U);
  }
}

TEST(FrameBatch, hasAColumnForEachAttributeThatOccurs) {
  FrameBatch batch;
  for (int row = 0; row < 9; ++row) {
    batch.append(dataFrame());
  }
  EXPECT_EQ(batch.attributes(), 0U);
  batch.append(errorFrame());
  batch.append(dataFrame());
  EXPECT_EQ(batch.attributes(), 1U << static_cast<unsigned>(FrameAttribute::ErrorType) |
                                    1U << static_cast<unsigned>(FrameAttribute::TxErrors));
  const auto values = batch.attribute(FrameAttribute::TxErrors);
  ASSERT_EQ(values.size(), 11U);
  EXPECT_EQ(values[9], 128U);
  EXPECT_EQ(values[10], 0U);
  const auto validity = batch.attributeValidity(FrameAttribute::TxErrors);
  EXPECT_EQ(std::vector(validity.begin(), validity.end()), (std::vector<std::uint8_t>{0, 0b010}));
  EXPECT_EQ(batch.at(9).attributes.get(FrameAttribute::ErrorType), 0U);
  EXPECT_EQ(batch.at(10).attributes.get(FrameAttribute::ErrorType), std::nullopt);
}

TEST(FrameBatch, isLikeNewAfterClearing) {
  FrameBatch batch;
  batch.append(errorFrame());
  batch.append(eventFrame());
  batch.clear();
  EXPECT_TRUE(batch.empty());
  EXPECT_EQ(batch.attributes(), 0U);
  EXPECT_EQ(batch.dataOffsets().size(), 1U);
  batch.append(dataFrame());
  batch.append(errorFrame());
  EXPECT_TRUE(sameFrame(batch.at(0), dataFrame()));
  EXPECT_TRUE(sameFrame(batch.at(1), errorFrame()));
}

TEST(FrameBatch, isFilledColumnByColumn) {
  FrameBatch batch;
  batch.append(errorFrame());
  batch.append(eventFrame());
  const FrameBatch::FreeRows rows = batch.freeRows(2, kBytes.size());
  for (std::size_t row = 0; row < 2; ++row) {
    rows.times[row] = -5;
    rows.kinds[row] = static_cast<std::uint8_t>(FrameKind::Data);
    rows.buses[row] = 2;
    rows.ids[row] = 0x1ABCDEF0;
    rows.flags[row] = frame_flag::kExtended | frame_flag::kReceived;
    rows.dlcs[row] = 3;
    rows.places[row] = 17;
  }
  std::ranges::copy(kBytes, rows.data);
  rows.dataEnds[0] = rows.dataBegin + 3;
  rows.dataEnds[1] = rows.dataBegin + 3;
  EXPECT_EQ(batch.size(), 2U);
  batch.appendFilled(2);
  batch.append(eventFrame());
  Frame empty = dataFrame();
  empty.data = {};
  const std::array expected = {errorFrame(), eventFrame(), dataFrame(), empty, eventFrame()};
  ASSERT_EQ(batch.size(), expected.size());
  for (std::size_t row = 0; row < expected.size(); ++row) {
    EXPECT_TRUE(sameFrame(batch.at(row), expected[row])) << row;
  }
  EXPECT_EQ(batch.at(2).place, 17U);
  EXPECT_EQ(batch.attribute(FrameAttribute::TxErrors).size(), expected.size());
  EXPECT_THROW(static_cast<void>(batch.freeRows(FrameBatch::kCapacity, 0)), std::length_error);
}

TEST(FrameBatch, keepsTheWantedRowsWhole) {
  constexpr std::array<std::uint8_t, 64> kLong = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  std::vector<Frame> frames;
  for (std::size_t row = 0; row < 300; ++row) {
    Frame frame = row % 7 == 0 ? errorFrame() : row % 5 == 0 ? eventFrame() : dataFrame();
    if (frame.kind == FrameKind::Data) {
      constexpr std::array<std::size_t, 4> kLengths = {8, 64, 0, 3};
      frame.data = std::span(kLong).first(kLengths[row % kLengths.size()]);
    }
    frame.place = row;
    frames.push_back(frame);
  }
  // Of all frames, and of those without a text and of those without bytes.
  for (const FrameKind onlyKind : {FrameKind::Comment, FrameKind::Data, FrameKind::Error}) {
    for (const std::size_t step : {1U, 2U, 3U, 10U, 1000U}) {
      FrameBatch batch;
      std::vector<std::uint8_t> wanted;
      std::vector<Frame> expected;
      for (const Frame& frame : frames) {
        if (onlyKind != FrameKind::Comment && frame.kind != onlyKind) {
          continue;
        }
        batch.append(frame);
        wanted.push_back(frame.place % step == step - 1 ? std::uint8_t{1} : std::uint8_t{0});
        if (wanted.back() != 0) {
          expected.push_back(frame);
        }
      }
      batch.keep(wanted);
      ASSERT_EQ(batch.size(), expected.size()) << step;
      batch.append(dataFrame());
      expected.push_back(dataFrame());
      for (std::size_t row = 0; row < expected.size(); ++row) {
        EXPECT_TRUE(sameFrame(batch.at(row), expected[row])) << step << ", " << row;
        EXPECT_EQ(batch.at(row).place, expected[row].place) << step << ", " << row;
      }
    }
  }
}

TEST(FrameBatch, isFullByRowsOrByBytes) {
  FrameBatch batch;
  while (!batch.full()) {
    batch.append(dataFrame());
  }
  EXPECT_EQ(batch.size(), FrameBatch::kCapacity);
  EXPECT_THROW(batch.append(dataFrame()), std::length_error);
  EXPECT_EQ(batch.dataOffsets().back(), static_cast<std::int32_t>(FrameBatch::kCapacity * kBytes.size()));

  batch.clear();
  const std::string text(FrameBatch::kLongestText, 'x');
  Frame frame = eventFrame();
  frame.text = text;
  while (!batch.full()) {
    batch.append(frame);
  }
  EXPECT_EQ(batch.size(), 5U);
}

TEST(Frames, haveNames) {
  EXPECT_EQ(frameKindName(FrameKind::Data), "data");
  EXPECT_EQ(frameKindName(FrameKind::LinEvent), "lin_event");
  EXPECT_EQ(frameKindName(FrameKind::Comment), "comment");
  EXPECT_EQ(frameAttributeName(FrameAttribute::ErrorType), "error_type");
  EXPECT_EQ(frameAttributeName(FrameAttribute::RecordType), "record_type");
}

}  // namespace
}  // namespace xlatr
