#include "tracegen/payload.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tracegen {
namespace {

constexpr std::size_t kHeadLength = 2;  // checksum and counter
constexpr std::size_t kSignalLength = 2;
// Only so many values of a long payload change; in a real one most of the rest stays the same too.
constexpr std::size_t kMovingSignals = 6;
constexpr std::uint32_t kStateChange = 200;  // frames, on average

constexpr std::array<std::uint8_t, 256> makeChecksumTable() {
  std::array<std::uint8_t, 256> table{};
  for (std::size_t index = 0; index < table.size(); ++index) {
    auto value = static_cast<std::uint32_t>(index);
    for (int bit = 0; bit < 8; ++bit) {
      value = (value & 0x80U) != 0 ? (value << 1U) ^ 0x11DU : value << 1U;
    }
    table[index] = static_cast<std::uint8_t>(value);
  }
  return table;
}

constexpr std::array<std::uint8_t, 256> kChecksumTable = makeChecksumTable();

}  // namespace

std::uint8_t checksum(std::span<const std::uint8_t> data) {
  std::uint8_t value = 0xFF;
  for (const std::uint8_t byte : data) {
    value = kChecksumTable[value ^ byte];
  }
  return static_cast<std::uint8_t>(~value);
}

Payload::Payload(std::uint32_t maxLength, Random& random) : state_(static_cast<std::uint8_t>(random.below(16))) {
  const std::size_t count = maxLength > kHeadLength ? (maxLength - kHeadLength + 1) / kSignalLength : 0;
  signals_.reserve(count);
  for (std::size_t index = 0; index < count; ++index) {
    // Values that stay the same are mostly unused bits, which control units send as all zeros or all ones.
    const bool unused = index >= kMovingSignals && !random.oneIn(4);
    const auto value = static_cast<std::uint16_t>(unused ? (random.oneIn(2) ? 0xFFFFU : 0U) : random.below(0x10000));
    signals_.push_back(
        {.value = value, .slope = static_cast<std::int16_t>(static_cast<std::int32_t>(random.below(33)) - 16)});
  }
}

void Payload::move(Signal& signal, std::uint32_t bits) {
  if ((bits & 0xF0U) == 0) {
    signal.slope = static_cast<std::int16_t>(static_cast<std::int32_t>(bits & 0xFU) * 4 - 30);
  }
  const std::int32_t noise = static_cast<std::int32_t>(bits & 3U) - 1;
  const std::int32_t moved = signal.value + signal.slope + noise;
  if (moved < 0 || moved > 0xFFFF) {
    signal.slope = static_cast<std::int16_t>(-signal.slope);
    return;
  }
  signal.value = static_cast<std::uint16_t>(moved);
}

void Payload::fill(std::span<std::uint8_t> data, Random& random) {
  if (data.empty()) {
    return;
  }
  counter_ = static_cast<std::uint8_t>((counter_ + 1U) & 0xFU);
  if (data.size() < kHeadLength) {
    data[0] = counter_;
    return;
  }
  if (random.oneIn(kStateChange)) {
    state_ = static_cast<std::uint8_t>(random.below(16));
  }
  data[1] = static_cast<std::uint8_t>((static_cast<std::uint32_t>(state_) << 4U) | counter_);

  // One random number changes all values: eight bits each.
  std::uint64_t bits = random.next();
  const std::size_t moving = std::min(signals_.size(), kMovingSignals);
  for (std::size_t index = 0; index < moving; ++index) {
    move(signals_[index], static_cast<std::uint32_t>(bits & 0xFFU));
    bits >>= 8U;
  }
  for (std::size_t at = kHeadLength; at < data.size(); ++at) {
    const std::uint32_t value = signals_[(at - kHeadLength) / kSignalLength].value;
    data[at] = static_cast<std::uint8_t>(at % 2 == 0 ? value & 0xFFU : value >> 8U);
  }
  data[0] = checksum(data.subspan(1));
}

}  // namespace tracegen
