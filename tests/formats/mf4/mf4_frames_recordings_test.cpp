// Files of other producers as frames. They lie outside the tree, each with a list of its frames beside it.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "formats/mf4/mf4_frames.hpp"
#include "support/frame_text.hpp"
#include "support/recordings.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

const fs::path kFolder = fs::path(XLATR_RECORDINGS_DIR) / "mf4";

// Reads what is not zipped as well.
std::string bytesOfZipped(const fs::path& path) {
  std::string bytes;
  if (gzFile const file = gzopen(path.c_str(), "rb"); file != nullptr) {
    std::array<char, 65536> piece;
    for (int count = 0; (count = gzread(file, piece.data(), piece.size())) > 0;) {
      bytes.append(piece.data(), static_cast<std::size_t>(count));
    }
    gzclose(file);
  }
  return bytes;
}

std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream in(line);
  for (std::string cell; std::getline(in, cell, ',');) {
    cells.push_back(cell);
  }
  cells.resize(13);
  return cells;
}

// What a frame's kind has: of an error or overload frame its bus alone, since readers agree on nothing else.
std::string textOfKind(Frame frame) {
  if (frame.kind == FrameKind::Error || frame.kind == FrameKind::Overload) {
    frame.flags = 0;
    frame.attributes.clear();
  }
  if (frame.kind == FrameKind::Remote) {
    frame.unset(frame_flag::kDlcKnown);
    frame.dlc = 0;
  }
  return test::textOf(frame);
}

// Columns: time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err.
std::vector<std::string> listedFrames(const fs::path& recording) {
  fs::path list = test::frameListOf(recording);
  std::istringstream in(bytesOfZipped(fs::exists(list) ? list : list += ".gz"));
  std::vector<std::string> texts;
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    line.erase(line.find_last_not_of('\r') + 1);
    const std::vector<std::string> cells = cellsOf(line);
    Frame frame;
    frame.timeNs = std::stoll(cells[0]);
    frame.kind = frameKindOfName(cells[1]).value();
    frame.bus = static_cast<std::uint16_t>(std::stoul(cells[2]));
    std::vector<std::uint8_t> bytes;
    if (frame.kind == FrameKind::Data || frame.kind == FrameKind::Remote) {
      const auto flagIf = [&cells](std::size_t column, std::uint16_t flag) {
        return cells[column] == "1" ? flag : std::uint16_t{0};
      };
      frame.id = static_cast<std::uint32_t>(std::stoul(cells[3], nullptr, 16));
      frame.set(flagIf(4, frame_flag::kExtended));
      frame.set(cells[5] == "1" ? frame_flag::kTransmitted : frame_flag::kReceived);
    }
    if (frame.kind == FrameKind::Data) {
      frame.set(cells[6] == "1" ? frame_flag::kFd : std::uint16_t{0});
      frame.set(cells[7] == "1" ? frame_flag::kBrs : std::uint16_t{0});
      frame.set(cells[8] == "1" ? frame_flag::kEsi : std::uint16_t{0});
      frame.dlc = static_cast<std::uint16_t>(std::stoul(cells[9]));
      for (std::size_t at = 0; at + 1 < cells[11].size(); at += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(cells[11].substr(at, 2), nullptr, 16)));
      }
    }
    frame.data = bytes;
    texts.push_back(textOfKind(frame));
  }
  return texts;
}

TEST(Mf4FrameRecordings, areReadWhole) {
  if (!fs::exists(kFolder)) {
    GTEST_SKIP() << "there is no " << kFolder;
  }
  for (const fs::path& recording : test::recordingsIn(kFolder, ".mf4")) {
    SCOPED_TRACE(recording.filename());
    const std::vector<std::string> expected = listedFrames(recording);
    const auto source = openMf4Frames(recording.string());
    std::vector<std::string> read;
    FrameBatch batch;
    Account account;
    while (source->read(batch, account)) {
      for (std::size_t row = 0; row < batch.size(); ++row) {
        read.push_back(textOfKind(batch.at(row)));
      }
      batch.clear();
    }
    EXPECT_EQ(read.size(), expected.size());
    EXPECT_EQ(account.read(), expected.size());
    EXPECT_TRUE(account.complete());
    const bool isFinished = !recording.filename().string().starts_with("z_unfin");
    EXPECT_EQ(source->head().unfinished, !isFinished);
    EXPECT_EQ(source->head().frames.has_value(), isFinished);
    EXPECT_EQ(source->head().frames.value_or(expected.size()), expected.size());
    for (std::size_t at = 0; at < std::min(read.size(), expected.size()); ++at) {
      ASSERT_EQ(read[at], expected[at]) << "frame " << at + 1;
    }
  }
}

}  // namespace
}  // namespace xlatr
