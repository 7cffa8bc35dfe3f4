#include "mf4_groups.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <optional>
#include <set>
#include <string_view>

namespace xlatr::cli {

namespace {

// ASAM MDF 4: a block has its id, four reserved bytes, its length, its number of links, the links, and its data.
constexpr std::uint64_t kHeadSize = 24;
constexpr std::uint64_t kLinkSize = 8;
constexpr std::uint64_t kHeaderPosition = 64;
constexpr std::size_t kMostLinks = 8;  // that are read
constexpr std::size_t kDataSize = 16;
constexpr std::size_t kLongestName = 256;

// Links by block.
constexpr std::size_t kFirstDataGroup = 0;
constexpr std::size_t kNext = 0;
constexpr std::size_t kFirstChannelGroup = 1;
constexpr std::size_t kName = 2;

std::uint64_t littleEndian(std::string_view bytes, std::size_t offset) {
  std::uint64_t value = 0;
  for (std::size_t index = sizeof value; index-- > 0;) {
    value = value << 8 | static_cast<unsigned char>(bytes[offset + index]);
  }
  return value;
}

struct Block {
  std::array<std::uint64_t, kMostLinks> links{};  // 0 for those that the block does not have
  std::string data;                               // its first bytes
};

class GroupReader {
 public:
  explicit GroupReader(const std::string& path) : file_(path, std::ios::binary) {}

  Mf4Groups read() {
    const auto header = readBlock("HD", kHeaderPosition);
    if (header) {
      readDataGroups(header->links[kFirstDataGroup]);
    }
    return groups_;
  }

 private:
  // As many bytes as there are, at most `count`.
  std::string readBytes(std::uint64_t position, std::size_t count) {
    std::string bytes(count, '\0');
    file_.clear();
    // A position that is not a valid stream offset fails here like one beyond the end.
    file_.seekg(static_cast<std::streamoff>(position));
    file_.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0)));
    return bytes;
  }

  std::optional<Block> readBlock(std::string_view id, std::uint64_t position, std::size_t dataSize = kDataSize) {
    const std::string head = readBytes(position, kHeadSize);
    if (head.size() < kHeadSize || head.substr(0, 2) != "##" || head.substr(2, 2) != id) {
      return std::nullopt;
    }
    const std::uint64_t length = littleEndian(head, 8);
    const std::uint64_t linkCount = littleEndian(head, 16);
    if (length < kHeadSize || linkCount > (length - kHeadSize) / kLinkSize) {
      return std::nullopt;
    }
    Block block;
    const std::string links =
        readBytes(position + kHeadSize, std::min<std::uint64_t>(linkCount, kMostLinks) * kLinkSize);
    for (std::size_t index = 0; index < links.size() / kLinkSize; ++index) {
      block.links[index] = littleEndian(links, index * kLinkSize);
    }
    const std::uint64_t dataLength = length - kHeadSize - linkCount * kLinkSize;
    block.data = readBytes(position + kHeadSize + linkCount * kLinkSize, std::min<std::uint64_t>(dataLength, dataSize));
    return block;
  }

  // The block of a list; nothing at the end of the list or where the list is broken.
  std::optional<Block> readListed(std::string_view id, std::uint64_t position) {
    if (position == 0) {
      return std::nullopt;
    }
    auto block =
        seen_.insert(position).second && seen_.size() <= kMaxMf4Groups ? readBlock(id, position) : std::nullopt;
    groups_.complete = groups_.complete && block.has_value();
    return block;
  }

  void readDataGroups(std::uint64_t position) {
    for (auto block = readListed("DG", position); block; block = readListed("DG", block->links[kNext])) {
      groups_.dataGroups.emplace_back();
      readChannelGroups(block->links[kFirstChannelGroup]);
    }
  }

  void readChannelGroups(std::uint64_t position) {
    for (auto block = readListed("CG", position); block; block = readListed("CG", block->links[kNext])) {
      if (block->data.size() < kDataSize) {
        groups_.complete = false;
        return;
      }
      groups_.dataGroups.back().channelGroups.push_back(
          {.name = readName(block->links[kName]), .cycleCount = littleEndian(block->data, 8)});
    }
  }

  std::string readName(std::uint64_t position) {
    const auto text = position == 0 ? std::nullopt : readBlock("TX", position, kLongestName);
    return text ? text->data.substr(0, text->data.find('\0')) : std::string();
  }

  std::ifstream file_;
  std::set<std::uint64_t> seen_;
  Mf4Groups groups_;
};

}  // namespace

Mf4Groups readMf4Groups(const std::string& path) {
  return GroupReader(path).read();
}

}  // namespace xlatr::cli
