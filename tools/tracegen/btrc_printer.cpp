#include "tracegen/btrc_printer.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tracegen {
namespace {

constexpr std::size_t kBlockSize = 8192;
constexpr std::size_t kHeaderSize = 4;

// 0001-01-01 to 1970-01-01.
constexpr std::uint64_t kSecondsTo1970 = 62135596800;
constexpr std::uint64_t kStartUs = (kSecondsTo1970 + kStartUnixSeconds) * 1000000;

void put(std::string& out, std::uint64_t value, std::size_t width) {
  for (std::size_t byte = 0; byte < width; ++byte) {
    out += static_cast<char>(value >> (8 * byte) & 0xFFU);
  }
}

// The content after size and type, both of which are filled in here.
std::string record(std::uint32_t type, std::string_view content) {
  std::string bytes;
  put(bytes, content.size() + kHeaderSize, 2);
  put(bytes, type, 2);
  bytes += content;
  return bytes;
}

std::string textRecord(std::string_view text) {
  std::string padded(text);
  padded.resize((padded.size() + 3) / 4 * 4, ' ');
  return record(0x8002, padded);
}

std::uint32_t dlcOf(const Entry& entry) {
  const auto* const place = std::lower_bound(kFdLengths.begin(), kFdLengths.end(), entry.dataLength);
  return static_cast<std::uint32_t>(place - kFdLengths.begin());
}

// Received records are 1 to 3 and sent ones 4 to 6: data, remote and CAN FD frames. Sent ones have two times.
std::string frameRecord(const Entry& entry) {
  std::uint32_t type = 1;
  std::uint32_t flags = entry.extended ? 0x02U : 0;
  if (entry.kind == EntryKind::Remote) {
    type = 2;
    flags |= 0x01U;
  } else if (entry.kind == EntryKind::FdData) {
    type = 3;
    flags |= 0x10U | (entry.bitRateSwitch ? 0x20U : 0) | (entry.errorStateIndicator ? 0x40U : 0);
  }
  std::string content;
  put(content, kStartUs + entry.timeUs, 8);
  if (entry.transmitted) {
    type += 3;
    put(content, kStartUs + entry.timeUs, 8);
  }
  put(content, entry.bus - 1U, 1);
  put(content, dlcOf(entry), 1);
  put(content, flags, 2);
  put(content, entry.canId, 4);
  if (entry.kind != EntryKind::Remote) {
    for (const std::uint8_t byte : entry.payload()) {
      put(content, byte, 1);
    }
    content.resize((content.size() + 3) / 4 * 4, '\0');
  }
  return record(type, content);
}

// Flags, bit position and both counters of an error, or the state of a bus.
std::string busRecord(std::uint32_t type, const Entry& entry, std::uint32_t flags, std::span<const std::uint8_t> more,
                      std::size_t reserved) {
  std::string content;
  put(content, kStartUs + entry.timeUs, 8);
  put(content, entry.bus - 1U, 1);
  put(content, flags, 1);
  for (const std::uint8_t byte : more) {
    put(content, byte, 1);
  }
  content.append(reserved, '\0');
  return record(type, content);
}

std::string errorRecord(const Entry& entry) {
  const std::span<const std::uint8_t> data = entry.payload();
  if (entry.kind == EntryKind::ErrorCounters) {
    return busRecord(7, entry, 0xC0, std::array<std::uint8_t, 3>{0, data[1], data[0]}, 3);
  }
  std::uint32_t flags = data[1] != 0 ? 0x80U : 0;
  for (std::uint32_t bit = 1; bit < 4; ++bit) {
    flags |= data[0] == 1U << bit ? bit << 4 : 0;
  }
  return busRecord(7, entry, flags, std::array<std::uint8_t, 3>{data[2], data[4], data[3]}, 3);
}

std::string statusRecord(const Entry& entry) {
  const std::span<const std::uint8_t> data = entry.payload();
  const std::uint32_t flags = ((data[3] & 0x10U) != 0 ? 0x80U : 0) | ((data[3] & 0x08U) != 0 ? 0x40U : 0) |
                              ((data[1] & 0x04U) != 0 ? 0x20U : 0);
  return busRecord(8, entry, flags, {}, 2);
}

std::string recordOf(const Entry& entry) {
  switch (entry.kind) {
    case EntryKind::Data:
    case EntryKind::FdData:
    case EntryKind::Remote:
      return frameRecord(entry);
    case EntryKind::Status:
      return statusRecord(entry);
    case EntryKind::ErrorCounters:
    case EntryKind::ErrorFrame:
      return errorRecord(entry);
    case EntryKind::Event:
    case EntryKind::Comment:
      return textRecord(entry.text);
    case EntryKind::XlData:
      break;
  }
  return {};
}

}  // namespace

// Blocks of 8 units of 1024 bytes, version 1, microseconds; then the start of the recording, 2024-03-01 08:00:00.
void BtrcPrinter::printHeader(TextOutput& /*output*/) {
  std::string info;
  put(info, kBlockSize / 1024, 2);
  put(info, 1, 1);
  put(info, static_cast<std::uint64_t>(-6), 1);
  std::string start;
  put(start, kStartUs, 8);
  put(start, 2024, 2);
  for (const std::uint32_t field : {3U, 1U, 8U, 0U, 0U, 0U}) {
    put(start, field, 1);
  }
  put(start, 0, 4);
  block_ = record(0x8000, info) + record(0x8003, start);
}

void BtrcPrinter::printEntry(const Entry& entry, TextOutput& output) {
  const std::string bytes = recordOf(entry);
  if (!bytes.empty()) {
    appendRecord(bytes, entry.timeUs, output);
    ++records_;
  }
}

void BtrcPrinter::printEnd(TextOutput& output) {
  closeBlock(output);
}

// A record that ends with its block leaves the block full; either way the next one begins with the totals.
void BtrcPrinter::appendRecord(const std::string& bytes, std::uint64_t timeUs, TextOutput& output) {
  const auto openBlock = [&] {
    closeBlock(output);
    std::string totals;
    put(totals, kStartUs + timeUs, 8);
    put(totals, records_, 8);
    put(totals, records_, 8);
    block_ = record(0x8001, totals);
  };
  if (block_.size() + bytes.size() > kBlockSize) {
    openBlock();
  }
  block_ += bytes;
  if (block_.size() == kBlockSize) {
    openBlock();
  }
}

void BtrcPrinter::closeBlock(TextOutput& output) {
  if (block_.size() < kBlockSize) {
    block_ += record(0, std::string(kBlockSize - block_.size() - kHeaderSize, '\0'));
  }
  if (!first_ && form_.damageRate > 0 && noise_.below(10000) < form_.damageRate) {
    damageBlock();
  }
  output.text(block_);
  first_ = false;
}

// As memory cells that lost their charge leave it.
void BtrcPrinter::damageBlock() {
  constexpr std::uint32_t kLongest = 64;
  const std::uint32_t begin = noise_.below(kBlockSize - kLongest);
  const std::uint32_t count = 1 + noise_.below(kLongest);
  for (std::uint32_t index = 0; index < count; ++index) {
    block_[begin + index] = static_cast<char>(noise_.next() & 0xFFU);
  }
}

}  // namespace tracegen
