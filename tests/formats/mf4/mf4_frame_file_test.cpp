// Whole files of frames, byte for byte, put together here from the layout of ASAM MDF 4.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "support/mf4_checker.hpp"
#include "support/temp_folder.hpp"
#include "util/host.hpp"

namespace xlatr {
namespace {

using test::ByteList;
using test::join;
using test::le;
using test::real;
using test::textBytes;

// Blocks one after the other, whose links name the blocks that they lead to.
class FileImage {
 public:
  explicit FileImage(const ByteList& identification) : bytes_(identification) {}

  // `labels`: "" for no link.
  void block(const std::string& label, const std::string& type, const std::vector<std::string>& labels,
             const ByteList& data) {
    bytes_.resize((bytes_.size() + 7) / 8 * 8);
    positions_[label] = bytes_.size();
    append(join({textBytes("##" + type), le(0, 4), le(24 + 8 * labels.size() + data.size(), 8), le(labels.size(), 8)}));
    for (const std::string& target : labels) {
      links_.emplace_back(bytes_.size(), target);
      append(le(0, 8));
    }
    append(data);
  }
  void text(const std::string& label, const std::string& text, const std::string& type = "TX") {
    ByteList data = textBytes(text);
    data.resize((data.size() / 8 + 1) * 8);
    block(label, type, {}, data);
  }

  [[nodiscard]] ByteList bytes() const {
    ByteList linked = bytes_;
    for (const auto& [at, target] : links_) {
      const ByteList position = le(target.empty() ? 0 : positions_.at(target), 8);
      std::ranges::copy(position, linked.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return linked;
  }

 private:
  void append(const ByteList& more) { bytes_.insert(bytes_.end(), more.begin(), more.end()); }

  ByteList bytes_;
  std::map<std::string, std::uint64_t> positions_;
  std::vector<std::pair<std::size_t, std::string>> links_;
};

// A channel: kind of channel, kind of data, where in the record, flags, and what stands after them.
struct Member {
  std::string name;
  unsigned byteOffset;
  unsigned bitOffset;
  unsigned bitCount;
  unsigned flags = 0x400;  // a bus event
  double limit = 0.0;
  unsigned type = 0;      // 5 maximum length, 1 variable length
  unsigned dataType = 0;  // 1 big-endian, 2 signed, 10 bytes
  std::string data = {};  // what its data link leads to
  unsigned precision = 255;
};

ByteList channelData(unsigned type, unsigned sync, unsigned dataType, const Member& member) {
  return join({le(type, 1), le(sync, 1), le(dataType, 1), le(member.bitOffset, 1), le(member.byteOffset, 4),
               le(member.bitCount, 4), le(member.flags, 4), le(0, 4), le(member.precision, 1), le(0, 3), real(0.0),
               real(0.0), real(0.0), real(member.limit), real(0.0), real(0.0)});
}

struct Group {
  std::string label;
  std::string next;
  unsigned recordId;
  std::uint64_t count;
  std::string frame;  // "CAN_DataFrame"
  std::string bus;    // "CAN1"
  unsigned busType;
  unsigned frameBytes;
  unsigned frameFlags;
  unsigned framePrecision;
  std::vector<Member> members;
};

// The bus as a source: its name, its path.
void addSource(FileImage& image, const std::string& label, const Group& group) {
  image.block(label, "SI", {label + " name", label + " path", ""}, join({le(2, 1), le(group.busType, 1), le(0, 6)}));
  image.text(label + " name", group.bus);
  image.text(label + " path", group.bus);
}

void addGroup(FileImage& image, const Group& group) {
  const auto label = [&group](const std::string& name) { return group.label + " " + name; };
  image.block(group.label, "CG", {group.next, label("t"), label("name"), label("source"), "", ""},
              join({le(group.recordId, 8), le(group.count, 8), le(6, 2), le(0, 2), le(0, 4),
                    le(8 + group.frameBytes, 4), le(0, 4)}));
  image.block(label("t"), "CN", {label("frame"), "", label("t name"), "", label("seconds"), "", "", ""},
              channelData(2, 1, 2, {"t", 0, 0, 64, 0, 0.0, 2, 2, {}, 0}));
  image.block(
      label("frame"), "CN",
      {"", label(group.members[0].name), label("frame name"), label("frame source"), "", "", "", ""},
      channelData(0, 0, 10,
                  {group.frame, 8, 0, 8 * group.frameBytes, group.frameFlags, 0.0, 0, 10, {}, group.framePrecision}));
  for (std::size_t at = 0; at < group.members.size(); ++at) {
    const Member& member = group.members[at];
    const std::string next = at + 1 < group.members.size() ? label(group.members[at + 1].name) : "";
    image.block(label(member.name), "CN", {next, "", label(member.name + " name"), "", "", member.data, "", ""},
                channelData(member.type, 0, member.dataType, member));
  }
  for (std::size_t at = group.members.size(); at-- > 0;) {
    image.text(label(group.members[at].name + " name"), group.frame + "." + group.members[at].name);
  }
  image.text(label("frame name"), group.frame);
  addSource(image, label("frame source"), group);
  image.text(label("t name"), "t");
  // Linear, from nanoseconds: two values, an offset and a factor.
  image.block(label("seconds"), "CC", {"", label("unit"), "", ""},
              join({le(1, 1), le(0, 1), le(0, 2), le(0, 2), le(2, 2), real(0.0), real(0.0), real(0.0), real(1e-9)}));
  image.text(label("unit"), "s");
  image.text(label("name"), group.frame);
  addSource(image, label("source"), group);
}

constexpr unsigned kWithLimit = 0x400 | 0x10 | 0x4;

std::vector<Member> dataMembers(unsigned payloadBits, unsigned payloadType, const std::string& payloadLink) {
  return {
      {"BusChannel", 12, 0, 8},
      {"DataBytes", 16, 0, payloadBits, 0x404, 255.0, payloadType, 10, payloadLink},
      {"DataLength", 15, 0, 8, kWithLimit, 255.0},
      {"DLC", 14, 0, 8, kWithLimit, 255.0},
      {"ID", 8, 0, 32, kWithLimit, 255.0},
      {"IDE", 13, 4, 1, 0x400, 255.0},
      {"Flags", 13, 0, 8, 0x400, 255.0},
      {"Dir", 13, 0, 1, 0x400, 255.0},
      {"EDL", 13, 1, 1, 0x400, 255.0},
      {"BRS", 13, 2, 1, 0x400, 255.0},
      {"ESI", 13, 3, 1, 0x400, 255.0},
  };
}

std::vector<Member> remoteMembers() {
  return {
      {"BusChannel", 12, 0, 8},
      {"DataLength", 15, 0, 8, kWithLimit, 255.0},
      {"DLC", 14, 0, 8, kWithLimit, 255.0},
      {"ID", 8, 0, 32, kWithLimit, 255.0},
      {"IDE", 13, 4, 1, 0x400, 255.0},
      {"Flags", 13, 0, 8, 0x400, 255.0},
      {"Dir", 13, 0, 1, 0x400, 255.0},
  };
}

std::vector<Member> errorMembers() {
  return {
      {"BusChannel", 8, 0, 8},
      {"Flags", 9, 0, 8, 0x400, 255.0},
      {"Dir", 9, 0, 1, 0x400, 255.0},
      {"ErrorType", 10, 0, 8, 0x400, 255.0},
      {"BitPosition", 11, 0, 8, 0x400, 255.0},
  };
}

Member plain(const std::string& name, unsigned byteOffset, unsigned bitCount) {
  return {name, byteOffset, 0, bitCount, 0x400, 0.0, 0, 0, {}, 0};
}

std::vector<Member> linMembers(const std::string& group) {
  return {
      plain("BusChannel", 8, 8),
      plain("ID", 9, 6),
      plain("Dir", 10, 1),
      plain("DataLength", 11, 8),
      plain("ReceivedDataByteCount", 12, 8),
      plain("Checksum", 13, 8),
      {"ChecksumModel", 14, 0, 8, 0x400, 0.0, 0, 2, {}, 0},
      {"DataBytes", 16, 0, 64, 0x400, 0.0, 5, 10, group + " DataLength", 0},
  };
}

// Identification, header, file history; the data group.
FileImage beginFile(const ByteList& historyTime) {
  FileImage image(join({textBytes("MDF     4.11"), le(0, 4), textBytes("ZELK-Con"), le(0, 4), le(411, 2), le(0, 34)}));
  // The start in UTC, with a valid offset of an hour: bit 1 of the flags.
  image.block("header", "HD", {"data group", "history", "", "", "", ""},
              join({le(1'600'000'000'123'456'789, 8), le(60, 2), le(0, 2), le(2, 1), le(0, 3), real(0.0), real(0.0)}));
  image.block("history", "FH", {"", "tool"}, join({historyTime, le(0, 8)}));
  image.text("tool",
             "<FHcomment><TX>created</TX><tool_id>ZELK-Converter</tool_id>"
             "<tool_vendor>Zelkworks Instruments</tool_vendor><tool_version>" +
                 getHostVersionText() + "</tool_version></FHcomment>",
             "MD");
  image.block("data group", "DG", {"", "A", "records", ""}, join({le(1, 1), le(0, 7)}));
  return image;
}

const ByteList kBytes = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC};

FrameBatch someFrames() {
  FrameBatch batch;
  Frame data;
  data.timeNs = 1'000;
  data.bus = 1;
  data.id = 0x123;
  data.flags = frame_flag::kTransmitted;
  data.dlc = 3;
  data.data = std::span(kBytes).first(3);
  batch.append(data);
  Frame fd = data;
  fd.timeNs = -2;
  fd.bus = 2;
  fd.id = 0x18FEF100;
  fd.flags = frame_flag::kReceived | frame_flag::kExtended | frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi;
  fd.dlc = 9;
  fd.data = kBytes;
  batch.append(fd);
  Frame remote = data;
  remote.kind = FrameKind::Remote;
  remote.flags = frame_flag::kReceived | frame_flag::kDlcKnown;
  remote.dlc = 4;
  remote.data = {};
  batch.append(remote);
  Frame error;
  error.timeNs = 2'000;
  error.kind = FrameKind::Error;
  error.flags = frame_flag::kReceived;
  error.attributes.set(FrameAttribute::ErrorType, 2);
  batch.append(error);
  Frame lin;
  lin.timeNs = 3'000;
  lin.kind = FrameKind::Lin;
  lin.bus = 3;
  lin.id = 0x2A;
  lin.flags = frame_flag::kReceived | frame_flag::kEnhancedChecksum;
  lin.dlc = 2;
  lin.data = std::span(kBytes).first(2);
  lin.attributes.set(FrameAttribute::Checksum, 0x5A);
  lin.attributes.set(FrameAttribute::ChecksumModel, 2);
  batch.append(lin);
  return batch;
}

ByteList filled(const ByteList& bytes, std::size_t size) {
  ByteList more = bytes;
  more.resize(size);
  return more;
}

const ByteList kRemoteRecord = join({le(2, 1), le(1'000, 8), le(0x123, 4), le(1, 1), le(0, 1), le(4, 1), le(4, 1)});
const ByteList kErrorRecord = join({le(3, 1), le(2'000, 8), le(0, 1), le(0, 1), le(3, 1), le(255, 1)});
const ByteList kLinRecord = join({le(4, 1), le(3'000, 8), le(3, 1), le(0x2A, 1), le(0, 1), le(2, 1), le(2, 1),
                                  le(0x5A, 1), le(1, 1), le(0, 1), le(0x2211, 8)});

std::string written(const SinkSettings& settings, const test::TempFolder& folder) {
  const std::string path = folder.file("target.mf4");
  StreamHead head;
  head.start = TraceStart{.sinceEpochNs = 1'600'003'600'123'456'789, .zoneMinutes = 60};
  Account account;
  const auto sink = createMf4Frames(path, head, settings);
  sink->write(someFrames(), account);
  sink->close();
  EXPECT_EQ(account.written(), 5U);
  EXPECT_TRUE(account.complete());
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// When the file was written is all that is not known here.
ByteList historyTimeOf(const std::string& file) {
  constexpr std::size_t kPosition = 168 + 24 + 16;
  const auto* const begin = file.data() + kPosition;
  return {begin, begin + 8};
}

void expectSame(const std::string& file, const FileImage& image) {
  const ByteList expected = image.bytes();
  const auto [one, other] = std::ranges::mismatch(expected, ByteList(file.begin(), file.end()));
  EXPECT_EQ(one - expected.begin(), static_cast<std::ptrdiff_t>(expected.size())) << "the first difference";
  EXPECT_EQ(file.size(), expected.size());
  EXPECT_EQ(test::faultsOf(test::checkMf4(file)), "");
}

void addCommonGroups(FileImage& image) {
  addGroup(image, {"C", "D", 2, 1, "CAN_RemoteFrame", "CAN1", 2, 8, 0x404, 255, remoteMembers()});
  addGroup(image, {"D", "E", 3, 1, "CAN_ErrorFrame", "CAN", 2, 4, 0x404, 255, errorMembers()});
  addGroup(image, {"E", "", 4, 1, "LIN_Frame", "LIN3", 3, 16, 0x400, 0, linMembers("E")});
}

TEST(Mf4FrameFile, hasTheseBytes) {
  const test::TempFolder folder;
  const std::string file = written({.version = 4.11}, folder);
  FileImage image = beginFile(historyTimeOf(file));
  addGroup(image, {"A", "B", 0, 1, "CAN_DataFrame", "CAN1", 2, 72, 0x404, 255, dataMembers(512, 5, "A DataLength")});
  addGroup(image, {"B", "C", 1, 1, "CAN_DataFrame", "CAN2", 2, 72, 0x404, 255, dataMembers(512, 5, "B DataLength")});
  addCommonGroups(image);
  image.block("records", "DT", {},
              join({le(0, 1), le(1'000, 8), le(0x123, 4), le(1, 1), le(0x01, 1), le(3, 1), le(3, 1),
                    filled({0x11, 0x22, 0x33}, 64),  //
                    le(1, 1), le(~std::uint64_t{1}, 8), le(0x18FEF100, 4), le(2, 1), le(0x1E, 1), le(9, 1), le(12, 1),
                    filled(kBytes, 64),  //
                    kRemoteRecord, kErrorRecord, kLinRecord}));
  expectSame(file, image);
}

TEST(Mf4FrameFile, hasTheseBytesWhereItIsCompact) {
  const test::TempFolder folder;
  const std::string file = written({.version = 4.11, .compact = true}, folder);
  FileImage image = beginFile(historyTimeOf(file));
  addGroup(image, {"A", "B", 0, 1, "CAN_DataFrame", "CAN1", 2, 16, 0x404, 255, dataMembers(64, 5, "A DataLength")});
  addGroup(image, {"B", "C", 1, 1, "CAN_DataFrame", "CAN2", 2, 16, 0x404, 255, dataMembers(64, 1, "payloads")});
  addCommonGroups(image);
  image.block("payloads", "SD", {}, join({le(12, 4), kBytes}));
  image.block("records", "DT", {},
              join({le(0, 1), le(1'000, 8), le(0x123, 4), le(1, 1), le(0x01, 1), le(3, 1), le(3, 1),
                    filled({0x11, 0x22, 0x33}, 8),  //
                    le(1, 1), le(~std::uint64_t{1}, 8), le(0x18FEF100, 4), le(2, 1), le(0x1E, 1), le(9, 1), le(12, 1),
                    le(0, 8),  //
                    kRemoteRecord, kErrorRecord, kLinRecord}));
  expectSame(file, image);
}

}  // namespace
}  // namespace xlatr
