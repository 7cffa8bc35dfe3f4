// BTRC files put together byte by byte, without any code of the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace xlatr::test::btrc {

inline constexpr std::size_t kBlock = 8192;

// The lowest `width` bytes of a number, low byte first.
inline std::string number(std::uint64_t value, std::size_t width) {
  std::string bytes;
  for (std::size_t index = 0; index < width; ++index) {
    bytes += static_cast<char>(value);
    value >>= 8;
  }
  return bytes;
}

// A record of this type with its content; `size` states another size than its own.
inline std::string record(std::uint16_t type, std::string_view content, int size = -1) {
  const std::size_t own = content.size() + 4;
  return number(size < 0 ? own : static_cast<std::size_t>(size), 2) + number(type, 2) + std::string(content);
}

// The microseconds from the year 1 to 2026-11-21 13:14:15.987654.
inline constexpr std::uint64_t kStart = 63930863655987654;

inline std::string info(int version = 1, int exponent = -6, unsigned blockSize = 8) {
  return record(0x8000, number(blockSize, 2) + number(static_cast<unsigned>(version), 1) +
                            number(static_cast<std::uint64_t>(exponent), 1));
}

inline std::string calibration(std::uint64_t systemTime = kStart, unsigned month = 11) {
  return record(0x8003, number(systemTime, 8) + number(2026, 2) + number(month, 1) + number(21, 1) + number(13, 1) +
                            number(14, 1) + number(15, 1) + number(0, 1) + number(987654, 4));
}

inline std::string head() {
  return info() + calibration();
}

// The end of the header of a frame, which says what the frame is.
inline std::string frameInfo(unsigned bus, unsigned dlc, unsigned flags, std::uint32_t id) {
  return number(bus, 1) + number(dlc, 1) + number(flags, 2) + number(id, 4);
}

inline std::string received(std::uint16_t type, std::uint64_t time, const std::string& frame, std::string_view data) {
  return record(type, number(time, 8) + frame + std::string(data));
}

inline std::string sent(std::uint16_t type, std::uint64_t time, const std::string& frame, std::string_view data) {
  return record(type, number(time, 8) + number(time, 8) + frame + std::string(data));
}

// A received data frame of four bytes, 24 bytes long.
inline std::string plainFrame(std::uint64_t time, unsigned bus = 0, std::uint32_t id = 0x123) {
  return received(1, time, frameInfo(bus, 4, 0, id), "\x01\x02\x03\x04");
}

inline std::string counter(std::uint64_t time, std::uint64_t records, std::uint64_t messages) {
  return record(0x8001, number(time, 8) + number(records, 8) + number(messages, 8));
}

// A filler record of this length.
inline std::string filler(std::size_t size) {
  return record(0, std::string(size - 4, '\0'));
}

// Filled up to the end of its last block.
inline std::string filled(std::string bytes) {
  const std::size_t used = bytes.size() % kBlock;
  return used == 0 ? bytes : bytes += filler(kBlock - used);
}

}  // namespace xlatr::test::btrc
