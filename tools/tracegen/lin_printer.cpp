#include "tracegen/lin_printer.hpp"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace tracegen {
namespace {

constexpr std::uint32_t kIdMask = 0x3F;
constexpr std::size_t kMaxLength = 8;
constexpr std::size_t kByteColumns = 3;

constexpr std::uint32_t bitOf(std::uint32_t value, unsigned bit) {
  return value >> bit & 1U;
}

// The identifier with its two parity bits, as it goes over the bus.
constexpr std::uint32_t protectedId(std::uint32_t id) {
  const std::uint32_t p0 = bitOf(id, 0) ^ bitOf(id, 1) ^ bitOf(id, 2) ^ bitOf(id, 4);
  const std::uint32_t p1 = 1U ^ bitOf(id, 1) ^ bitOf(id, 3) ^ bitOf(id, 4) ^ bitOf(id, 5);
  return id | p0 << 6 | p1 << 7;
}

// The inverted sum with carry.
std::uint32_t enhancedChecksum(std::uint32_t id, std::span<const std::uint8_t> data) {
  std::uint32_t sum = protectedId(id);
  for (const std::uint8_t byte : data) {
    sum += byte;
    sum = (sum & 0xFFU) + (sum >> 8);
  }
  return ~sum & 0xFFU;
}

}  // namespace

void LinPrinter::printHeader(TextOutput& output) {
  // 2024-03-01 08:00:00 is day 45352 and a third.
  output.text(
      ";$FILEVERSION=1.2\r\n;$STARTTIME=45352.3333333333\r\n;\r\n;   Start time: 2024-03-01 08:00:00.000\r\n;\r\n");
}

void LinPrinter::printEntry(const Entry& entry, TextOutput& output) {
  const bool error = entry.kind == EntryKind::ErrorFrame;
  if (entry.kind != EntryKind::Data && !error) {
    return;
  }
  const std::uint32_t id = entry.canId & kIdMask;
  const std::span<const std::uint8_t> data =
      error ? std::span<const std::uint8_t>()
            : entry.payload().first(std::min<std::size_t>(entry.dataLength, kMaxLength));
  output.decimalRight(++number_, 6);
  output.text(")          ");
  output.decimalRight(entry.timeUs, 7);
  output.text(entry.transmitted ? "   Pub   " : "   Sub   ");
  output.hexFilled(id, 2);
  output.text("  ");
  output.decimal(data.size());
  output.text("  ");
  output.hexBytes(data, ' ');
  if (data.size() < kMaxLength) {
    output.blanks((kMaxLength - 1 - data.size()) * kByteColumns + 2);
  }
  output.text("  ");
  output.hexFilled(error ? 0 : enhancedChecksum(id, data), 2);
  output.text("  EH  ");
  output.text(error ? std::string_view("SR\r\n") : std::string_view("\r\n"));
}

}  // namespace tracegen
