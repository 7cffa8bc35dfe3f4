#include "frames/shown_bytes.hpp"

#include <cstddef>

#include "messages/error_type.hpp"

namespace xlatr {

std::optional<std::uint32_t> stateOfBytes(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kBytes = 4;
  if (bytes.size() != kBytes) {
    return std::nullopt;
  }
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
         std::uint32_t{bytes[3]};
}

void appendStateBytes(std::uint32_t state, std::vector<std::uint8_t>& bytes) {
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    bytes.push_back(static_cast<std::uint8_t>(state >> shift));
  }
}

bool takeCounterBytes(std::span<const std::uint8_t> bytes, Frame& frame) {
  constexpr std::size_t kBytes = 2;
  if (bytes.size() != kBytes) {
    return false;
  }
  frame.attributes.set(FrameAttribute::RxErrors, bytes[0]);
  frame.attributes.set(FrameAttribute::TxErrors, bytes[1]);
  return true;
}

void appendCounterBytes(const Frame& frame, std::vector<std::uint8_t>& bytes) {
  for (const FrameAttribute counter : {FrameAttribute::RxErrors, FrameAttribute::TxErrors}) {
    bytes.push_back(static_cast<std::uint8_t>(frame.attributes.get(counter).value_or(0)));
  }
}

bool takeErrorBytes(std::uint32_t typeBit, std::span<const std::uint8_t> bytes, Frame& frame) {
  constexpr std::size_t kBytes = 4;
  constexpr std::uint8_t kWhileReceiving = 1;
  const auto type = errorTypeOfTrcId(typeBit);
  if (!type || bytes.size() != kBytes || bytes[0] > kWhileReceiving) {
    return false;
  }
  frame.flags = bytes[0] == kWhileReceiving ? frame_flag::kReceived : frame_flag::kTransmitted;
  frame.attributes.set(FrameAttribute::ErrorType, *type);
  frame.attributes.set(FrameAttribute::ErrorPosition, bytes[1]);
  return takeCounterBytes(bytes.subspan(2), frame);
}

void appendErrorBytes(const Frame& frame, std::vector<std::uint8_t>& bytes) {
  bytes.push_back(frame.has(frame_flag::kReceived) ? 1 : 0);
  bytes.push_back(static_cast<std::uint8_t>(frame.attributes.get(FrameAttribute::ErrorPosition).value_or(0)));
  appendCounterBytes(frame, bytes);
}

}  // namespace xlatr
