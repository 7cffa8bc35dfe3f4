// Builds MDF files block by block, with any mistake a test wants in them. Shares no code with the library.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::test {

using ByteList = std::vector<std::uint8_t>;

// Little-endian, `size` bytes.
inline ByteList le(std::uint64_t value, std::size_t size) {
  ByteList bytes;
  for (std::size_t index = 0; index < size; ++index) {
    bytes.push_back(static_cast<std::uint8_t>(index < 8 ? value >> (8 * index) : 0));
  }
  return bytes;
}

inline ByteList real(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof(bits));
  return le(bits, 8);
}

inline ByteList join(const std::vector<ByteList>& parts) {
  ByteList bytes;
  for (const ByteList& part : parts) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  }
  return bytes;
}

inline ByteList textBytes(std::string_view text) {
  return {text.begin(), text.end()};
}

struct ChannelSpec {
  std::string name = {};
  std::uint8_t type = 0;
  std::uint8_t dataType = 0;
  std::uint8_t bitOffset = 0;
  std::uint32_t byteOffset = 0;
  std::uint32_t bitCount = 8;
  std::uint32_t flags = 0x400;
  std::uint64_t composition = 0;
  std::uint64_t conversion = 0;
  std::uint64_t data = 0;
  std::uint32_t invalidBit = 0;
  std::uint64_t unit = 0;
};

struct GroupSpec {
  std::uint64_t channels = 0;
  std::uint64_t cycles = 0;
  std::uint32_t dataBytes = 24;
  std::uint64_t recordId = 0;
  std::uint16_t flags = 6;
  std::uint16_t separator = 0;
  std::uint32_t invalidationBytes = 0;
  std::uint8_t busType = 2;
  std::string name = {};
};

// Positions are offsets in the file. Blocks are appended, so that links lead to blocks made before, or are set later.
class MdfFileBuilder {
 public:
  static constexpr std::uint64_t kHeader = 64;

  MdfFileBuilder() : MdfFileBuilder(410) {}
  explicit MdfFileBuilder(std::uint16_t version) {
    bytes_ = join({textBytes("MDF     4.10    Stranger"), le(0, 4), le(version, 2), le(0, 34)});
    block("HD", std::vector<std::uint64_t>(6),
          join({le(1'500'000'000'123'456'789, 8), le(0, 2), le(0, 2), le(1, 1), le(0, 19)}));
  }

  // Any block; `statedLinks` and `statedLength` replace the true counts when they are not negative.
  std::uint64_t block(std::string_view type, const std::vector<std::uint64_t>& links, const ByteList& data,
                      std::int64_t statedLinks = -1, std::int64_t statedLength = -1) {
    bytes_.resize((bytes_.size() + 7) / 8 * 8);
    const std::uint64_t position = bytes_.size();
    const std::uint64_t length = 24 + 8 * links.size() + data.size();
    ByteList linkBytes;
    for (const std::uint64_t link : links) {
      linkBytes = join({linkBytes, le(link, 8)});
    }
    append(join({textBytes("##"), textBytes(type), le(0, 4),
                 le(statedLength >= 0 ? static_cast<std::uint64_t>(statedLength) : length, 8),
                 le(statedLinks >= 0 ? static_cast<std::uint64_t>(statedLinks) : links.size(), 8), linkBytes, data}));
    return position;
  }

  std::uint64_t text(std::string_view text) {
    ByteList data = textBytes(text);
    data.resize((text.size() / 8 + 1) * 8);
    return block("TX", {}, data);
  }

  std::uint64_t conversion(std::uint8_t type, const std::vector<double>& values, std::string_view unit = "") {
    const std::uint64_t unitText = unit.empty() ? 0 : text(unit);
    ByteList data = join({le(type, 1), le(0, 5), le(values.size(), 2), le(0, 16)});
    for (const double value : values) {
      const ByteList bytes = real(value);
      data.insert(data.end(), bytes.begin(), bytes.end());
    }
    return block("CC", {0, unitText, 0, 0}, data);
  }

  std::uint64_t channel(const ChannelSpec& spec, std::uint64_t next = 0) {
    const std::uint64_t name = text(spec.name);
    return block("CN", {next, spec.composition, name, 0, spec.conversion, spec.data, spec.unit, 0},
                 join({le(spec.type, 1), le(0, 1), le(spec.dataType, 1), le(spec.bitOffset, 1), le(spec.byteOffset, 4),
                       le(spec.bitCount, 4), le(spec.flags, 4), le(spec.invalidBit, 4), le(0, 4), le(0, 48)}));
  }
  // The position of the first.
  std::uint64_t channels(const std::vector<ChannelSpec>& specs) {
    std::uint64_t next = 0;
    for (std::size_t index = specs.size(); index-- > 0;) {
      next = channel(specs[index], next);
    }
    return next;
  }

  std::uint64_t group(const GroupSpec& spec, std::uint64_t next = 0) {
    const std::uint64_t name = spec.name.empty() ? 0 : text(spec.name);
    const std::uint64_t source = block("SI", {0, 0, 0}, join({le(2, 1), le(spec.busType, 1), le(0, 6)}));
    return block("CG", {next, spec.channels, name, source, 0, 0},
                 join({le(spec.recordId, 8), le(spec.cycles, 8), le(spec.flags, 2), le(spec.separator, 2), le(0, 4),
                       le(spec.dataBytes, 4), le(spec.invalidationBytes, 4)}));
  }

  std::uint64_t dataGroup(std::uint64_t firstGroup, std::uint64_t data, std::uint8_t recordIdSize = 0,
                          std::uint64_t next = 0) {
    return block("DG", {next, firstGroup, data, 0}, join({le(recordIdSize, 1), le(0, 7)}));
  }

  std::uint64_t data(const ByteList& records) { return block("DT", {}, records); }

  void setLink(std::uint64_t position, std::size_t index, std::uint64_t target) {
    patch(position + 24 + 8 * index, le(target, 8));
  }
  void setFirstDataGroup(std::uint64_t position) { setLink(kHeader, 0, position); }
  void patch(std::uint64_t position, const ByteList& bytes) {
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(position));
  }
  void append(const ByteList& bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }

  [[nodiscard]] const ByteList& bytes() const { return bytes_; }
  [[nodiscard]] std::string asText() const { return {bytes_.begin(), bytes_.end()}; }

  // Frames as most tests want them: a record has the time in nanoseconds (8 bytes), bus (1), identifier (4), flags (1:
  // IDE, Dir, RTR, EDL, BRS, ESI from bit 0 on), DLC (1), length (1), payload (8).
  std::uint64_t frameChannels(const std::string& frame = "CAN_DataFrame", const std::string& separator = ".",
                              std::uint64_t timeConversion = 0) {
    const std::string prefix = frame + separator;
    const std::uint64_t parts = channels({
        {.name = prefix + "BusChannel", .byteOffset = 8},
        {.name = prefix + "ID", .byteOffset = 9, .bitCount = 32},
        {.name = prefix + "IDE", .bitOffset = 0, .byteOffset = 13, .bitCount = 1},
        {.name = prefix + "Dir", .bitOffset = 1, .byteOffset = 13, .bitCount = 1},
        {.name = prefix + "RTR", .bitOffset = 2, .byteOffset = 13, .bitCount = 1},
        {.name = prefix + "EDL", .bitOffset = 3, .byteOffset = 13, .bitCount = 1},
        {.name = prefix + "BRS", .bitOffset = 4, .byteOffset = 13, .bitCount = 1},
        {.name = prefix + "ESI", .bitOffset = 5, .byteOffset = 13, .bitCount = 1},
        {.name = prefix + "DLC", .byteOffset = 14},
        {.name = prefix + "DataLength", .byteOffset = 15},
        {.name = prefix + "DataBytes", .type = 5, .dataType = 10, .byteOffset = 16, .bitCount = 64},
    });
    return topChannels(frame, parts, timeConversion);
  }
  // The master and the frame that has these parts.
  std::uint64_t topChannels(const std::string& frame, std::uint64_t parts, std::uint64_t timeConversion = 0) {
    return channels({
        {.name = "Timestamp", .type = 2, .dataType = 0, .byteOffset = 0, .bitCount = 64, .conversion = timeConversion},
        {.name = frame, .dataType = 10, .byteOffset = 8, .bitCount = 128, .composition = parts},
    });
  }
  static ByteList record(std::uint64_t timeNs, std::uint32_t id = 0x123, std::uint8_t flags = 0,
                         std::uint8_t length = 2, std::uint8_t bus = 1) {
    return join({le(timeNs, 8),
                 le(bus, 1),
                 le(id, 4),
                 le(flags, 1),
                 le(length, 1),
                 le(length, 1),
                 {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}});
  }

  // A whole file with one sorted data group of such records.
  void sortedFile(const std::vector<ByteList>& records) {
    const std::uint64_t only = group({.channels = frameChannels(), .cycles = records.size()});
    setFirstDataGroup(dataGroup(only, data(join(records))));
  }

 private:
  ByteList bytes_;
};

}  // namespace xlatr::test
