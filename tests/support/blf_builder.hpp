// Makes BLF logs byte by byte.
#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::test::blf {

// Little-endian numbers and bytes, one after the other.
class Bytes {
 public:
  Bytes& u8(std::uint64_t value) { return number(value, 1); }
  Bytes& u16(std::uint64_t value) { return number(value, 2); }
  Bytes& u32(std::uint64_t value) { return number(value, 4); }
  Bytes& u64(std::uint64_t value) { return number(value, 8); }
  Bytes& zeros(std::size_t count) {
    bytes_.append(count, '\0');
    return *this;
  }
  // Bytes that no reader may look at.
  Bytes& leftovers(std::size_t count) {
    bytes_.append(count, '\xEE');
    return *this;
  }
  Bytes& text(std::string_view text) {
    bytes_.append(text);
    return *this;
  }
  Bytes& data(std::initializer_list<int> values) {
    for (const int value : values) {
      u8(static_cast<std::uint64_t>(value));
    }
    return *this;
  }
  // `count` data bytes: first, first + 1, ...
  Bytes& counting(std::size_t count, unsigned first = 1) {
    for (std::size_t index = 0; index < count; ++index) {
      u8((first + index) & 0xFF);
    }
    return *this;
  }
  [[nodiscard]] const std::string& str() const { return bytes_; }

 private:
  Bytes& number(std::uint64_t value, unsigned width) {
    for (unsigned index = 0; index < width; ++index) {
      bytes_.push_back(static_cast<char>(value >> (8 * index)));
    }
    return *this;
  }

  std::string bytes_;
};

inline constexpr std::uint32_t kTenMicroseconds = 1;
inline constexpr std::uint32_t kNanoseconds = 2;

struct Header {
  std::uint32_t type = 1;
  std::uint64_t timestamp = 0;
  std::uint32_t flags = kNanoseconds;
  std::uint16_t version = 0;
  std::uint16_t headerVersion = 1;  // 2 has eight bytes more
};

// An object with its header; `padding` zero bytes after it, usually its size modulo 4.
inline std::string object(const Header& header, const std::string& body, std::size_t padding = SIZE_MAX) {
  const std::size_t headerSize = header.headerVersion == 2 ? 40 : 32;
  const std::size_t size = headerSize + body.size();
  Bytes bytes;
  bytes.text("LOBJ").u16(headerSize).u16(header.headerVersion).u32(size).u32(header.type);
  bytes.u32(header.flags).u16(0).u16(header.version).u64(header.timestamp);
  if (header.headerVersion == 2) {
    bytes.u64(header.timestamp + 1);
  }
  return bytes.text(body).zeros(padding == SIZE_MAX ? size % 4 : padding).str();
}

// A container around packed bytes, whatever they are.
inline std::string containerOf(std::uint16_t method, const std::string& packed, std::size_t contentSize) {
  const std::size_t size = 32 + packed.size();
  return Bytes()
      .text("LOBJ")
      .u16(16)
      .u16(1)
      .u32(size)
      .u32(10)
      .u16(method)
      .zeros(6)
      .u32(contentSize)
      .zeros(4)
      .text(packed)
      .zeros(size % 4)
      .str();
}

inline std::string stored(const std::string& content) {
  return containerOf(0, content, content.size());
}

inline std::string deflated(const std::string& content) {
  std::string packed(::compressBound(static_cast<uLong>(content.size())), '\0');
  auto size = static_cast<uLongf>(packed.size());
  if (::compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(content.data()),
                 static_cast<uLong>(content.size())) != Z_OK) {
    throw std::runtime_error("zlib did not pack");
  }
  packed.resize(size);
  return packed;
}

inline std::string zipped(const std::string& content) {
  return containerOf(2, deflated(content), content.size());
}

// Year, month, weekday, day, hour, minute, second, millisecond.
using Date = std::array<std::uint16_t, 8>;
inline constexpr Date kDate{2024, 12, 2, 31, 23, 59, 58, 500};

struct FileHead {
  Date start = kDate;
  std::uint32_t objects = 0;
  std::uint32_t api = 4070100;
};

// The head of the file, followed by what is given.
inline std::string file(const FileHead& head, const std::string& contents) {
  Bytes bytes;
  bytes.text("LOGG").u32(144).u32(head.api).u8(0).u8(6).u8(1).u8(0);
  bytes.u64(144 + contents.size()).u64(144 + contents.size()).u32(head.objects).u32(0);
  for (const Date& date : {head.start, head.start}) {
    for (const std::uint16_t field : date) {
      bytes.u16(field);
    }
  }
  return bytes.u64(0).zeros(64).text(contents).str();
}

inline std::string file(const std::string& contents) {
  return file(FileHead(), contents);
}

// Classic CAN frames, the duration of type 86 included.
struct ClassicFrame {
  std::uint32_t type = 1;
  std::uint16_t channel = 1;
  std::uint32_t id = 0x123;
  std::uint8_t flags = 0;
  std::uint8_t dlc = 8;
  std::uint64_t timestamp = 0;
  std::uint32_t timeUnit = kNanoseconds;
};

inline std::string classicFrame(const ClassicFrame& frame) {
  Bytes body;
  body.u16(frame.channel).u8(frame.flags).u8(frame.dlc).u32(frame.id).counting(8, 0x11);
  if (frame.type == 86) {
    body.u32(230000).u8(112).leftovers(3);
  }
  return object({.type = frame.type, .timestamp = frame.timestamp, .flags = frame.timeUnit}, body.str());
}

}  // namespace xlatr::test::blf
