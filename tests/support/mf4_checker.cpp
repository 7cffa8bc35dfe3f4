#include "support/mf4_checker.hpp"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace xlatr::test {
namespace {

constexpr std::uint64_t kHeadSize = 24;
constexpr std::uint64_t kMaximumLength = 5;  // a kind of channel

struct BlockRule {
  std::string_view id;
  std::size_t links;
  std::size_t dataSize;  // 0 where it varies
  // What each link may lead to, ids joined by blanks; "" where it must be 0.
  std::array<std::string_view, 8> targets;
};

// The counts of links are those of version 4.1 and above, without optional parts.
constexpr std::array kRules = {
    BlockRule{"HD", 6, 32, {"DG", "FH", "", "", "", ""}},
    BlockRule{"FH", 2, 16, {"FH", "MD"}},
    BlockRule{"MD", 0, 0, {}},
    BlockRule{"TX", 0, 0, {}},
    BlockRule{"DG", 4, 8, {"DG", "CG", "DT DZ DL HL", ""}},
    BlockRule{"CG", 6, 32, {"CG", "CN", "TX", "SI", "", ""}},
    BlockRule{"CN", 8, 72, {"CN", "CN", "TX", "SI", "CC", "SD DZ DL HL CN", "", ""}},
    BlockRule{"CC", 4, 40, {"", "TX", "", ""}},
    BlockRule{"SI", 3, 8, {"TX", "TX", ""}},
    BlockRule{"DT", 0, 0, {}},
    BlockRule{"SD", 0, 0, {}},
    BlockRule{"DZ", 0, 0, {}},
    BlockRule{"DL", 2, 16, {"DL", "DT SD DZ"}},  // with one entry
    BlockRule{"HL", 1, 8, {"DL"}},
};

struct Block {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  std::string_view id;
  std::vector<std::uint64_t> links;
  std::uint64_t data = 0;      // offset of the data part
  std::uint64_t dataSize = 0;  // bytes

  explicit operator bool() const { return !id.empty(); }
};

class Checker {
 public:
  explicit Checker(std::string_view file) : file_(file) {}

  Mf4Report check() {
    if (file_.size() < 64) {
      fault(0, "no room for an identification");
      return report_;
    }
    checkIdentification();
    const Block header = visit(64, "HD");
    if (header) {
      report_.startNs = u64(header.data);
      require(header.links[1] != 0, 64, "a header needs a file history");
      for (Block history = visit(header.links[1], "FH"); history; history = visit(history.links[0], "FH")) {
        require(history.links[1] != 0, history.offset, "a file history needs its comment");
        checkText(visit(history.links[1], "MD"), true);
      }
      for (Block group = visit(header.links[0], "DG"); group; group = visit(group.links[0], "DG")) {
        checkDataGroup(group);
        ++dataGroups_;
      }
    }
    checkCoverage();
    return report_;
  }

 private:
  struct Channel {
    std::string name;
    std::uint64_t firstBit;
    std::uint64_t endBit;
  };

  void fault(std::uint64_t offset, const std::string& text) {
    report_.faults.push_back(std::to_string(offset) + ": " + text);
  }
  bool require(bool condition, std::uint64_t offset, const std::string& text) {
    if (!condition) {
      fault(offset, text);
    }
    return condition;
  }

  [[nodiscard]] std::uint64_t number(std::uint64_t offset, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < size; ++index) {
      value |= std::uint64_t{static_cast<unsigned char>(file_.at(offset + index))} << (8 * index);
    }
    return value;
  }
  [[nodiscard]] std::uint64_t u8(std::uint64_t offset) const { return number(offset, 1); }
  [[nodiscard]] std::uint64_t u16(std::uint64_t offset) const { return number(offset, 2); }
  [[nodiscard]] std::uint64_t u32(std::uint64_t offset) const { return number(offset, 4); }
  [[nodiscard]] std::uint64_t u64(std::uint64_t offset) const { return number(offset, 8); }
  [[nodiscard]] bool allZero(std::uint64_t offset, std::uint64_t size) const {
    const std::string_view bytes = file_.substr(offset, size);
    return std::ranges::all_of(bytes, [](char byte) { return byte == '\0'; });
  }

  void checkIdentification() {
    require(file_.substr(0, 8) == "MDF     ", 0, "not an MDF file");
    const std::string text(file_.substr(8, 4));
    static_cast<void>(std::from_chars(text.data(), text.data() + text.size(), report_.version));  // in any locale
    const auto stated = static_cast<std::uint64_t>(report_.version * 100.0 + 0.5);
    require(stated == u16(28), 28, "the versions of the identification differ");
    require(stated >= 400 && stated < 500, 8, "not version 4: " + text);
    require(allZero(12, 4), 12, "the version is not padded with zeros");
    require(allZero(24, 4) && allZero(30, 30), 24, "reserved bytes in the identification");
    require(allZero(60, 4), 60, "the file is not finished");
    seen_[0] = {.offset = 0, .length = 64, .id = "identification", .links = {}, .data = 0, .dataSize = 0};
  }

  // The block that a link leads to; an empty one if there is none or if it can't be read.
  Block visit(std::uint64_t offset, std::string_view allowed) {
    if (offset == 0) {
      return {};
    }
    if (!require(offset % 8 == 0, offset, "not at a multiple of 8") ||
        !require(offset < file_.size() && file_.size() - offset >= kHeadSize, offset, "outside the file")) {
      return {};
    }
    const std::string_view id = file_.substr(offset + 2, 2);
    const auto* const rule = std::ranges::find(kRules, id, &BlockRule::id);
    if (!require(file_.substr(offset, 2) == "##" && rule != kRules.end() && allowed.find(id) != std::string::npos,
                 offset, "is no " + std::string(allowed)) ||
        !require(!seen_.contains(offset), offset, "more than one link leads here")) {
      return {};
    }
    Block block{.offset = offset, .length = u64(offset + 8), .id = id, .links = {}, .data = 0, .dataSize = 0};
    seen_[offset] = block;
    require(allZero(offset + 4, 4), offset, "reserved bytes in the head");
    const std::uint64_t linkCount = u64(offset + 16);
    const std::uint64_t room = kHeadSize + 8 * rule->links;
    if (!require(linkCount == rule->links, offset, "has " + std::to_string(linkCount) + " links") ||
        !require(block.length >= room && block.length <= file_.size() - offset, offset, "has an impossible length")) {
      return {};
    }
    block.data = offset + room;
    block.dataSize = block.length - room;
    require(rule->dataSize == 0 || rule->dataSize == block.dataSize, offset, "has an odd length");
    for (std::size_t index = 0; index < rule->links; ++index) {
      block.links.push_back(u64(offset + kHeadSize + 8 * index));
      require(block.links.back() == 0 || !rule->targets[index].empty(), offset,
              "link " + std::to_string(index) + " leads somewhere");
    }
    return block;
  }

  std::string checkText(const Block& block, bool needed) {
    if (!block) {
      return {};
    }
    const std::string_view bytes = file_.substr(block.data, block.dataSize);
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    require(end < bytes.size() && bytes.find_first_not_of('\0', end) == std::string::npos, block.offset,
            "the text does not end in zeros");
    require(block.length % 8 == 0 && bytes.size() - end <= 8, block.offset, "the text is oddly padded");
    require(!needed || end > 0, block.offset, "an empty text");
    return std::string(bytes.substr(0, end));
  }

  // Returns its name.
  std::string checkSource(std::uint64_t link) {
    const Block source = visit(link, "SI");
    if (!source) {
      return {};
    }
    require(u8(source.data) == 2 && (u8(source.data + 1) == 2 || u8(source.data + 1) == 3), source.offset,
            "not a CAN or LIN bus");
    require(allZero(source.data + 2, 6), source.offset, "reserved bytes");
    std::string name = checkText(visit(source.links[0], "TX"), false);
    checkText(visit(source.links[1], "TX"), false);
    return name;
  }

  void checkConversion(std::uint64_t link) {
    const Block conversion = visit(link, "CC");
    if (conversion) {
      const bool linear = u8(conversion.data) == 1 && u16(conversion.data + 4) == 0 && u16(conversion.data + 6) == 2;
      require(linear, conversion.offset, "not a linear conversion");
      checkText(visit(conversion.links[1], "TX"), true);
    }
  }

  // A chain of channels. `frame` is the record, or the composition that they are components of.
  void checkChannels(std::uint64_t first, const Channel& frame, std::uint64_t& masters) {
    std::set<std::uint64_t> channels;
    std::vector<std::uint64_t> lengths;  // the channels that payloads have for their lengths
    for (Block block = visit(first, "CN"); block; block = visit(block.links[0], "CN")) {
      const std::uint64_t type = u8(block.data);
      const std::uint64_t firstBit = u32(block.data + 4) * 8 + u8(block.data + 3);
      const Channel channel{checkText(visit(block.links[2], "TX"), true), firstBit, firstBit + u32(block.data + 8)};
      require(!channel.name.empty(), block.offset, "a channel without a name");
      require(u8(block.data + 3) < 8, block.offset, channel.name + ": bit offset above 7");
      require(channel.firstBit >= frame.firstBit && channel.endBit <= frame.endBit, block.offset,
              channel.name + " lies outside of " + frame.name);
      require(frame.name.empty() || channel.name.starts_with(frame.name + "."), block.offset,
              channel.name + " is no component of " + frame.name);
      require(allZero(block.data + 16, 4) && allZero(block.data + 21, 3), block.offset, "reserved bytes");
      require(type != 1 || block.links[5] != 0, block.offset, channel.name + ": no signal data");
      masters += type == 2 ? 1 : 0;
      checkSource(block.links[3]);
      checkConversion(block.links[4]);
      channels.insert(block.offset);
      if (type == kMaximumLength && block.links[5] != 0) {
        lengths.push_back(block.links[5]);
      } else {
        for (const std::string& part : partsOf(block.links[5], "SD")) {
          checkSignalData(block.links[5], part);
        }
      }
      checkChannels(block.links[1], {channel.name, channel.firstBit, channel.endBit}, masters);
    }
    for (const std::uint64_t length : lengths) {
      require(channels.contains(length), length, "is no channel beside the one that has it for its length");
    }
  }

  void checkSignalData(std::uint64_t offset, std::string_view data) {
    while (!data.empty()) {
      std::uint64_t length = data.size();
      if (data.size() >= 4) {
        length = 0;
        for (std::size_t index = 4; index-- > 0;) {
          length = length << 8 | static_cast<unsigned char>(data[index]);
        }
      }
      if (!require(data.size() >= 4 && length <= data.size() - 4, offset,
                   "a value crosses the end of the signal data")) {
        return;
      }
      data.remove_prefix(4 + length);
    }
  }

  struct RecordLayout {
    std::size_t group;  // index in the report
    std::uint64_t size;
    std::uint64_t offset;  // of the channel group
  };

  void checkDataGroup(const Block& block) {
    const std::uint64_t idSize = u8(block.data);
    require(idSize == 0 || idSize == 1, block.offset, "an odd size of record ids");
    require(allZero(block.data + 1, 7), block.offset, "reserved bytes");
    std::map<std::uint64_t, RecordLayout> layouts;
    for (Block group = visit(block.links[1], "CG"); group; group = visit(group.links[0], "CG")) {
      checkChannelGroup(group, layouts);
    }
    require(!layouts.empty(), block.offset, "a data group without channel groups");
    require(idSize > 0 || layouts.size() == 1, block.offset, "a sorted data group has one channel group");
    countRecords(block, idSize, partsOf(block.links[2], "DT"), layouts);
  }

  void checkChannelGroup(const Block& block, std::map<std::uint64_t, RecordLayout>& layouts) {
    const std::uint64_t size = u32(block.data + 24);
    Mf4Group group;
    group.name = checkText(visit(block.links[2], "TX"), true);
    group.dataGroup = dataGroups_;
    group.recordId = u64(block.data);
    group.cycleCount = u64(block.data + 8);
    require(u16(block.data + 16) == 6, block.offset, "not a group of plain bus events");
    require(allZero(block.data + 18, 6) && u32(block.data + 28) == 0, block.offset, "reserved bytes");
    require(block.links[3] != 0, block.offset, "a bus event group needs its source");
    std::uint64_t masters = 0;
    checkChannels(block.links[1], {"", 0, size * 8}, masters);
    require(masters == 1, block.offset, "has " + std::to_string(masters) + " master channels");
    group.source = checkSource(block.links[3]);
    const bool added = layouts.emplace(group.recordId, RecordLayout{report_.groups.size(), size, block.offset}).second;
    require(added, block.offset, "two groups with one record id");
    report_.groups.push_back(std::move(group));
  }

  // The data of the blocks, of which there is one, or a list.
  std::vector<std::string> partsOf(std::uint64_t offset, const std::string& type) {
    const std::string single = type + " DZ";
    Block block = visit(offset, single + " DL HL");
    if (!block) {
      return {};
    }
    if (block.id == "DT" || block.id == "SD" || block.id == "DZ") {
      return {dataOf(block, type)};
    }
    const bool zipped = block.id == "HL";
    if (zipped) {
      require(allZero(block.data, 8), block.offset, "not the head of a list of deflated blocks");
      block = visit(block.links[0], "DL");
    }
    std::vector<std::string> parts;
    std::uint64_t size = 0;
    for (; block; block = visit(block.links[0], "DL")) {
      require(allZero(block.data, 4) && u32(block.data + 4) == 1, block.offset, "not a list of one block");
      require(u64(block.data + 8) == size, block.offset, "another offset of the data");
      const Block part = visit(block.links[1], zipped ? "DZ" : type);
      parts.push_back(part ? dataOf(part, type) : std::string());
      size += parts.back().size();
    }
    return parts;
  }

  std::string dataOf(const Block& block, std::string_view type) {
    const std::string_view bytes = file_.substr(block.data, block.dataSize);
    return block.id == type ? std::string(bytes) : inflated(block, bytes, type);
  }

  std::string inflated(const Block& block, std::string_view bytes, std::string_view type) {
    constexpr std::size_t kFieldsSize = 24;
    if (!require(bytes.size() > kFieldsSize, block.offset, "no room for zipped data")) {
      return {};
    }
    const std::uint64_t size = u64(block.data + 8);
    require(bytes.substr(0, 2) == type && allZero(block.data + 2, 6), block.offset, "not zipped " + std::string(type));
    require(u64(block.data + 16) == bytes.size() - kFieldsSize, block.offset, "another size of zipped data");
    std::string data(size, '\0');
    uLongf length = size;
    const auto* const zipped = reinterpret_cast<const Bytef*>(bytes.data() + kFieldsSize);
    const int code =
        uncompress(reinterpret_cast<Bytef*>(data.data()), &length, zipped, uLong{bytes.size() - kFieldsSize});
    require(code == Z_OK && length == size && size > 0, block.offset, "does not inflate to the stated size");
    return data;
  }

  void countRecords(const Block& block, std::uint64_t idSize, const std::vector<std::string>& parts,
                    const std::map<std::uint64_t, RecordLayout>& layouts) {
    std::map<std::uint64_t, std::uint64_t> counts;
    for (const std::string& data : parts) {
      countRecordsOf(block, idSize, data, layouts, counts);
    }
    for (const auto& [id, layout] : layouts) {
      require(counts[id] == report_.groups[layout.group].cycleCount, layout.offset,
              "has " + std::to_string(counts[id]) + " records, but states " +
                  std::to_string(report_.groups[layout.group].cycleCount));
    }
  }

  void countRecordsOf(const Block& block, std::uint64_t idSize, const std::string& data,
                      const std::map<std::uint64_t, RecordLayout>& layouts,
                      std::map<std::uint64_t, std::uint64_t>& counts) {
    std::size_t position = 0;
    while (position < data.size() && !layouts.empty()) {
      const auto layout = idSize == 0 ? layouts.begin() : layouts.find(static_cast<unsigned char>(data[position]));
      if (!require(layout != layouts.end() && data.size() - position >= idSize + layout->second.size, block.offset,
                   "no record at " + std::to_string(position) + " of the data")) {
        return;
      }
      ++counts[layout->first];
      report_.groups[layout->second.group].records += data.substr(position + idSize, layout->second.size);
      position += idSize + layout->second.size;
    }
  }

  void checkCoverage() {
    std::uint64_t end = 0;
    for (const auto& [offset, block] : seen_) {
      report_.blocks.emplace_back(block.id);
      if (!require(offset >= end, offset, "overlaps the block before")) {
        return;
      }
      require(offset - end < 8 && allZero(end, offset - end), offset, "something lies before the block");
      end = offset + block.length;
    }
    require(end <= file_.size() && file_.size() - end < 8 && allZero(end, file_.size() - end), end,
            "something lies after the last block");
  }

  std::string_view file_;
  Mf4Report report_;
  std::map<std::uint64_t, Block> seen_;
  std::uint64_t dataGroups_ = 0;
};

}  // namespace

Mf4Report checkMf4(std::string_view file) {
  return Checker(file).check();
}

std::string faultsOf(const Mf4Report& report) {
  std::string text;
  for (const std::string& fault : report.faults) {
    text += fault + "\n";
  }
  return text;
}

}  // namespace xlatr::test
