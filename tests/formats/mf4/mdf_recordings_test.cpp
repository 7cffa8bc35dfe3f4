#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mf4/mdf_reader.hpp"

// Files of other producers. They lie outside the tree, each with a list of its frames beside it.
namespace xlatr {
namespace {

namespace fs = std::filesystem;

const fs::path kRecordings = fs::path(XLATR_RECORDINGS_DIR) / "mf4";

struct Frame {
  double timeUs = 0.0;
  std::string kind;  // data, remote, error or overload
  unsigned bus = 0;
  unsigned id = 0;
  bool extended = false;
  bool sent = false;
  bool edl = false;
  bool brs = false;
  bool esi = false;
  unsigned dlc = 0;
  unsigned length = 0;
  std::string data;  // hexadecimal
  std::string error;
};

std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> cells(1);
  for (const char c : line) {
    if (c == ',') {
      cells.emplace_back();
    } else if (c != '\r') {
      cells.back() += c;
    }
  }
  return cells;
}

unsigned toNumber(const std::string& text, int base = 10) {
  unsigned value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, base);
  return value;
}

std::string readPlainOrGzip(const fs::path& path) {
  std::string text;
  const gzFile file = gzopen(path.c_str(), "rb");
  std::array<char, 65536> buffer{};
  for (int count = 1; count > 0;) {
    count = file == nullptr ? 0 : gzread(file, buffer.data(), static_cast<unsigned>(buffer.size()));
    text.append(buffer.data(), static_cast<std::size_t>(std::max(0, count)));
  }
  gzclose(file);
  return text;
}

// Columns: time_ns,kind,bus,id,ide,dir,edl,brs,esi,dlc,length,data,err
std::vector<Frame> readFrameList(const fs::path& path) {
  std::vector<Frame> frames;
  std::istringstream in(readPlainOrGzip(fs::exists(path) ? path : fs::path(path.string() + ".gz")));
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    const std::vector<std::string> cells = split(line);
    frames.push_back({.timeUs = std::strtod(cells.at(0).c_str(), nullptr) / 1000.0,
                      .kind = cells.at(1),
                      .bus = toNumber(cells.at(2)),
                      .id = toNumber(cells.at(3), 16),
                      .extended = cells.at(4) == "1",
                      .sent = cells.at(5) == "1",
                      .edl = cells.at(6) == "1",
                      .brs = cells.at(7) == "1",
                      .esi = cells.at(8) == "1",
                      .dlc = toNumber(cells.at(9)),
                      .length = toNumber(cells.at(10)),
                      .data = cells.at(11),
                      .error = cells.at(12)});
  }
  return frames;
}

std::string toHex(const std::vector<std::uint8_t>& bytes, std::size_t count) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (std::size_t index = 0; index < std::min(count, bytes.size()); ++index) {
    text += kDigits[bytes[index] / 16];
    text += kDigits[bytes[index] % 16];
  }
  return text;
}

MessageKind kindOf(const Frame& frame) {
  if (frame.kind == "remote") {
    return MessageKind::RR;
  }
  if (frame.kind == "error") {
    return MessageKind::ER;
  }
  static constexpr MessageKind kFdKinds[] = {MessageKind::FD, MessageKind::FB, MessageKind::FE, MessageKind::BI};
  return frame.edl ? kFdKinds[(frame.brs ? 1 : 0) + (frame.esi ? 2 : 0)] : MessageKind::DT;
}

void expectFrame(const MdfCanMessage& message, const Frame& frame) {
  if (frame.kind == "overload") {
    EXPECT_FALSE(message.valid);
    return;
  }
  EXPECT_TRUE(message.valid);
  EXPECT_NEAR(message.time.count(), frame.timeUs, 0.001);
  EXPECT_EQ(message.kind, kindOf(frame));
  EXPECT_EQ(message.bus, frame.bus);
  EXPECT_EQ(message.direction, frame.sent ? MessageDirection::Tx : MessageDirection::Rx);
  if (frame.kind == "error") {
    EXPECT_EQ(message.type, MessageType::Error);
    EXPECT_EQ(message.errorType, toNumber(frame.error));
    return;
  }
  EXPECT_EQ(message.id, frame.id);
  EXPECT_EQ(message.extended, frame.extended);
  EXPECT_EQ(message.dlc, frame.dlc);
  EXPECT_EQ(message.isRemote, frame.kind == "remote");
  if (frame.kind == "data") {
    EXPECT_EQ(message.length, frame.length);
    EXPECT_EQ(toHex(message.data, message.length), frame.data);
  }
}

std::string pathOf(std::string name) {
  return (kRecordings / name.append(".mf4")).string();
}

// The text of the failure that ends the reading, if one does.
std::optional<std::string> readFrames(const std::string& name, std::vector<MdfCanMessage>& messages) {
  MdfReader reader{MdfInfo(pathOf(name))};
  std::string reason;
  if (!reader.ValidateFile(reason)) {
    return reason;
  }
  try {
    EXPECT_TRUE(reader.setActive(true));
    for (MdfCanMessage message; reader.readInto(message);) {
      messages.push_back(message);
    }
    EXPECT_EQ(reader.getPercentDone(), 100.0);
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return std::nullopt;
}

class MdfRecordings : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!fs::exists(kRecordings)) {
      GTEST_SKIP() << "there are no recordings in " << kRecordings;
    }
  }
};

TEST_P(MdfRecordings, haveTheFramesOfTheirLists) {
  const std::vector<Frame> frames = readFrameList(kRecordings / (std::string(GetParam()) + ".expected.csv"));
  ASSERT_FALSE(frames.empty());
  std::vector<MdfCanMessage> messages;
  ASSERT_EQ(readFrames(GetParam(), messages), std::nullopt);
  ASSERT_EQ(messages.size(), frames.size());
  for (std::size_t index = 0; index < frames.size() && !HasFailure(); ++index) {
    SCOPED_TRACE("frame " + std::to_string(index + 1));
    expectFrame(messages[index], frames[index]);
  }
}

INSTANTIATE_TEST_SUITE_P(Files, MdfRecordings,
                         testing::Values("l_be", "s_dt_v410", "s_dzt", "s_fd_fixed", "s_sd_dl", "t_f64_ms_lin",
                                         "u_fixed_r2", "v420_ld", "vehicle", "vehicle-long", "x_one"),
                         [](const auto& each) {
                           std::string name = each.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

using MdfRefusedRecordings = MdfRecordings;

TEST_P(MdfRefusedRecordings, sayWhy) {
  static const std::map<std::string, std::string> kReasons = {
      {"u_vcg", "VLSD Channel groups are not supported"},
      {"z_unfin_vcg", "Only finalized MDF4 files are supported"},
      {"l_inval", "CG Invalidation bits are not supported"},
      // Its list has transposed blocks that are no whole number of rows, which come to nothing, so that the records end
      // before their time.
      {"s_hl_mix", "Index is out of range for next cycle for Channel Group 0x"},
  };
  std::vector<MdfCanMessage> messages;
  const auto failure = readFrames(GetParam(), messages);
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->substr(0, kReasons.at(GetParam()).size()), kReasons.at(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Files, MdfRefusedRecordings, testing::Values("u_vcg", "z_unfin_vcg", "l_inval", "s_hl_mix"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
}  // namespace xlatr
