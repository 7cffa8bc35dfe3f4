// What tests that read whole MF4 files as frames share.
#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "formats/mf4/mdf_file_builder.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::test {

using Texts = std::vector<std::string>;

struct ReadFile {
  Texts frames;
  Account account;
  StreamHead head;

  [[nodiscard]] std::uint64_t damaged() const { return account.noted(Remark::RecordNotUnderstood).frames; }
  [[nodiscard]] std::uint64_t cut() const { return account.noted(Remark::SourceCut).frames; }
};

inline ReadFile readFile(const std::string& bytes) {
  const TempFolder folder;
  const std::string path = folder.file("trace.mf4");
  std::ofstream(path, std::ios::binary) << bytes;
  ReadFile result;
  const auto source = openMf4Frames(path);
  result.frames = textsOf(*source, result.account);
  result.head = source->head();
  EXPECT_EQ(result.account.read(), result.frames.size());
  EXPECT_EQ(source->bytesRead(), bytes.size());
  return result;
}

inline ReadFile readFile(const MdfFileBuilder& file) {
  return readFile(file.asText());
}

inline ByteList zipped(const ByteList& bytes) {
  uLongf size = compressBound(bytes.size());
  ByteList out(size);
  compress(out.data(), &size, bytes.data(), bytes.size());
  out.resize(size);
  return out;
}

inline ByteList zippedBlock(const ByteList& bytes, std::uint8_t type = 0, std::uint32_t width = 0,
                            const char* of = "DT") {
  const ByteList out = zipped(bytes);
  return join({textBytes(of), le(type, 1), le(0, 1), le(width, 4), le(bytes.size(), 8), le(out.size(), 8), out});
}

// Rows to columns; what is no whole row stays at the end.
inline ByteList transposed(const ByteList& bytes, std::size_t width) {
  ByteList out;
  const std::size_t rows = bytes.size() / width;
  for (std::size_t column = 0; column < width; ++column) {
    for (std::size_t row = 0; row < rows; ++row) {
      out.push_back(bytes[row * width + column]);
    }
  }
  out.insert(out.end(), bytes.begin() + static_cast<std::ptrdiff_t>(rows * width), bytes.end());
  return out;
}

// `count` records, a microsecond apart.
inline ByteList manyRecords(std::size_t count) {
  ByteList bytes;
  for (std::size_t at = 0; at < count; ++at) {
    const ByteList record = MdfFileBuilder::record(1'000 * at, static_cast<std::uint32_t>(at % 0x700));
    bytes.insert(bytes.end(), record.begin(), record.end());
  }
  return bytes;
}

inline std::string frameAt(std::size_t at) {
  char text[64];
  std::snprintf(text, sizeof text, "%zu data 1 %zX Rx dlc2 [1122]", 1'000 * at, at % 0x700);
  return text;
}

inline void expectMany(const ReadFile& read, std::size_t count) {
  ASSERT_EQ(read.frames.size(), count);
  for (std::size_t at = 0; at < count; ++at) {
    ASSERT_EQ(read.frames[at], frameAt(at));
  }
}

// A sorted file whose data are at this link.
inline void addGroup(MdfFileBuilder& file, std::uint64_t data, std::uint64_t cycles) {
  file.setFirstDataGroup(file.dataGroup(file.group({.channels = file.frameChannels(), .cycles = cycles}), data));
}

inline std::uint64_t addList(MdfFileBuilder& file, const std::vector<std::uint64_t>& parts, std::uint64_t equalLength,
                             std::uint64_t next = 0) {
  std::vector<std::uint64_t> links = {next};
  links.insert(links.end(), parts.begin(), parts.end());
  return file.block("DL", links, join({le(1, 1), le(0, 3), le(parts.size(), 4), le(equalLength, 8)}));
}

// `groups` sorted groups, each with zipped data of its own that are `rows` records of `width` bytes, are read whole.
inline void expectRowsOfGroups(const ByteList& zippedRows, std::size_t groups, std::size_t rows, std::uint32_t width) {
  MdfFileBuilder file;
  std::uint64_t next = 0;
  for (std::size_t at = 0; at < groups; ++at) {
    const std::uint64_t group = file.group({.channels = file.frameChannels(), .cycles = rows, .dataBytes = width});
    next = file.dataGroup(group, file.block("DZ", {}, zippedRows), 0, next);
  }
  file.setFirstDataGroup(next);
  const TempFolder folder;
  const auto source = openMf4Frames(folder.write("trace.mf4", file.asText()));
  FrameBatch batch;
  Account account;
  while (source->read(batch, account)) {
    batch.clear();
  }
  EXPECT_EQ(account.read(), groups * rows);
  EXPECT_EQ(account.noted(Remark::RecordNotUnderstood).frames, 0U);
}

}  // namespace xlatr::test
