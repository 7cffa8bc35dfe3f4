#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "support/blf_builder.hpp"
#include "tools/blf2csv/table.hpp"

// Whatever is in a file: a conversion ends, in bounded memory, with rows that have the form of rows.
namespace blf2csv {
namespace {

using xlatr::test::blf::Bytes;
using xlatr::test::blf::classicFrame;
using xlatr::test::blf::containerOf;
using xlatr::test::blf::file;
using xlatr::test::blf::object;
using xlatr::test::blf::stored;
using xlatr::test::blf::zipped;

// One object of each form, in containers of both methods, one of them cut through an object.
std::string mixedLog() {
  std::string content = classicFrame({.dlc = 8}) + classicFrame({.type = 86, .flags = 0x80});
  content += object({.type = 100}, Bytes().u16(1).u8(0).u8(9).u32(5).zeros(5).u8(1).u8(12).zeros(5).counting(68).str());
  content +=
      object({.type = 101}, Bytes().u8(1).u8(9).u8(12).u8(0).u32(5).zeros(4).u32(0x1000).zeros(24).counting(12).str());
  content += object({.type = 57, .headerVersion = 2},
                    Bytes().zeros(12).u16(1).zeros(23).u8(3).u8(4).zeros(73).counting(8).zeros(32).str());
  content +=
      object({.type = 92}, "other") + object({.type = 73}, Bytes().u16(1).zeros(8).u8(8).zeros(13).counting(8).str());
  return file(zipped(content.substr(0, 100)) + stored(content.substr(100)) + classicFrame({}));
}

// What every table must be.
void expectTable(const Converted& converted) {
  const std::string& table = converted.table;
  ASSERT_TRUE(table.ends_with("\n"));
  std::size_t begin = table.find('\n', table.find('\n') + 1) + 1;
  for (std::uint64_t number = 1; begin < table.size(); ++number) {
    const std::size_t end = table.find('\n', begin);
    const std::string row = table.substr(begin, end - begin);
    ASSERT_TRUE(row.starts_with(std::to_string(number) + ";")) << row;
    ASSERT_GE(std::count(row.begin(), row.end(), ';'), 16) << row;
    ASSERT_LE(std::count(row.begin(), row.end(), ';'), 80) << row;
    ASSERT_EQ(row.find(";;"), std::string::npos) << row;
    begin = end + 1;
  }
}

void expectEnd(const std::string& log) {
  try {
    expectTable(convertLog(log));
  } catch (const std::runtime_error&) {
    // It is not a log any more, and the program says so.
    EXPECT_TRUE(log.size() < 144 || !log.starts_with("LOGG"));
  }
}

TEST(Blf2CsvHostile, aLogCutAnywhere) {
  const std::string log = mixedLog();
  for (std::size_t size = 0; size <= log.size(); ++size) {
    SCOPED_TRACE(size);
    expectEnd(log.substr(0, size));
  }
}

TEST(Blf2CsvHostile, eachByteFlipped) {
  const std::string log = mixedLog();
  for (std::size_t at = 0; at < log.size(); ++at) {
    for (const int flip : {0xFF, 0x01}) {
      SCOPED_TRACE(std::to_string(at) + " with " + std::to_string(flip));
      std::string damaged = log;
      damaged[at] = static_cast<char>(damaged[at] ^ flip);
      expectEnd(damaged);
    }
  }
}

TEST(Blf2CsvHostile, eachWordExtreme) {
  const std::string log = mixedLog();
  for (std::size_t at = 0; at + 4 <= log.size(); ++at) {
    for (const std::uint32_t value : {0U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
      SCOPED_TRACE(std::to_string(at) + " is " + std::to_string(value));
      std::string damaged = log;
      damaged.replace(at, 4, Bytes().u32(value).str());
      expectEnd(damaged);
    }
  }
}

// A gigabyte of zeros in a megabyte: what is beyond the largest content is cut off.
TEST(Blf2CsvHostile, aBombIsCutOff) {
  // Made by hand, a deflate stream that repeats the same packed block of zeros over and over.
  constexpr std::size_t kBlock = std::size_t{1} << 20;
  z_stream stream{};
  ASSERT_EQ(::deflateInit(&stream, Z_BEST_COMPRESSION), Z_OK);
  std::string zeros(kBlock, '\0');
  std::string packed;
  std::string out(kBlock, '\0');
  for (int block = 0; block < 400; ++block) {
    stream.next_in = reinterpret_cast<Bytef*>(zeros.data());
    stream.avail_in = kBlock;
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = kBlock;
    ASSERT_EQ(::deflate(&stream, block == 399 ? Z_FINISH : Z_NO_FLUSH), block == 399 ? Z_STREAM_END : Z_OK);
    packed.append(out, 0, kBlock - stream.avail_out);
  }
  ::deflateEnd(&stream);
  const Converted converted = convertLog(file(containerOf(2, packed, 0xFFFFFFFF) + stored(classicFrame({}))));
  EXPECT_TRUE(converted.rows().starts_with("1;1;0;2;1;-;291;"));
  EXPECT_EQ(converted.remarks.times(Remark::BrokenContainer), 1U);
}

// Signatures at every fourth byte, each with a size that is impossible or reaches beyond the end: searching them takes
// time in proportion to their number.
TEST(Blf2CsvHostile, manyFalseHeadersTakeLittleTime) {
  const auto start = std::chrono::steady_clock::now();
  for (const std::uint32_t size : {0U, 15U, 5'000'000U, 16U << 20, 0xFFFFFFFFU}) {
    std::string content;
    while (content.size() < 4'000'000) {
      content += Bytes().text("LOBJ").u16(32).u16(1).u32(size).u32(1).str();
    }
    expectEnd(file(stored(content)));
    expectEnd(file(content));
    expectEnd(file(zipped(content)));
  }
  std::string containers;
  while (containers.size() < 4'000'000) {
    containers += Bytes().text("LOBJ").u16(16).u16(1).u32(0x7FFFFFFF).u32(10).u16(2).zeros(14).data({0x78, 1}).str();
  }
  expectEnd(file(containers));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

}  // namespace
}  // namespace blf2csv
