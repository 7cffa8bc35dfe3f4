// Logs of an independent writer, whose objects are also listed one by one.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "formats/blf/blf_frames.hpp"
#include "messages/can_dlc.hpp"
#include "support/recordings.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

const fs::path kRecordings = fs::path(XLATR_RECORDINGS_DIR) / "blf";

std::string hexOf(std::span<const std::uint8_t> bytes) {
  std::string text;
  char digits[3];
  for (const std::uint8_t byte : bytes) {
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

// A remote frame asks for as many bytes as its DLC says.
std::size_t lengthOf(const Frame& frame) {
  return frame.kind == FrameKind::Remote ? kDlcLengths.at(frame.dlc) : frame.data.size();
}

// time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err
std::string rowOf(const Frame& frame) {
  char id[16];
  std::snprintf(id, sizeof id, "%X", frame.id);
  std::ostringstream row;
  row << frame.timeNs << ',' << frameKindName(frame.kind) << ',' << frame.bus << ',' << id << ','
      << frame.has(frame_flag::kExtended) << ',' << frame.has(frame_flag::kTransmitted) << ','
      << frame.has(frame_flag::kFd) << ',' << frame.has(frame_flag::kBrs) << ',' << frame.has(frame_flag::kEsi) << ','
      << frame.dlc << ',' << lengthOf(frame) << ',' << hexOf(frame.data) << ',';
  return row.str();
}

std::vector<std::string> linesOf(const fs::path& path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    lines.push_back(line);
  }
  return lines;
}

TEST(BlfRecordings, areReadAsTheyAreListed) {
  if (!fs::exists(kRecordings)) {
    GTEST_SKIP() << "there is no " << kRecordings;
  }
  for (const fs::path& path : test::recordingsIn(kRecordings, ".blf")) {
    SCOPED_TRACE(path.filename());
    const auto source = openBlfFrames(path.string());
    std::vector<std::string> rows;
    FrameBatch batch;
    Account account;
    while (source->read(batch, account)) {
      for (std::size_t row = 0; row < batch.size(); ++row) {
        const Frame frame = batch.at(row);
        rows.push_back(rowOf(frame));
        const bool hasDirection = frame.kind != FrameKind::Error && frame.kind != FrameKind::Overload;
        EXPECT_EQ(frame.has(frame_flag::kReceived), hasDirection && !frame.has(frame_flag::kTransmitted));
      }
      batch.clear();
    }
    const std::vector<std::string> listed = linesOf(test::frameListOf(path));
    ASSERT_EQ(rows.size(), listed.size());
    for (std::size_t at = 0; at < rows.size(); ++at) {
      ASSERT_EQ(rows[at], listed[at]) << "object " << at + 1;
    }
    EXPECT_TRUE(account.complete());
    EXPECT_EQ(source->head().frames, rows.size());
    EXPECT_EQ(source->bytesRead(), fs::file_size(path));
  }
}

}  // namespace
}  // namespace xlatr
