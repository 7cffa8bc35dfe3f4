// big_mf4 FORM GIGABYTES FILE writes an MF4 file of any size piece by piece; big_mf4 read FILE reads it as frames, so
// that the memory and the time that this takes can be measured. FORM is "plain", "unsorted", "zipped" (blocks of 4 MB
// in a list), "transposed" (the same, by columns) or "whole" (one zipped block).
#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mf4/mf4_frames.hpp"
#include "util/byte_growth.hpp"
#include "util/little_endian.hpp"

namespace {

using ByteList = std::vector<std::uint8_t>;

constexpr std::size_t kRecordSize = 80;
constexpr std::size_t kRecordsInBlock = 52'000;  // 4 MB
constexpr std::uint64_t kFirstGroup = 64;

template <class Number>
void put(ByteList& bytes, Number value) {
  xlatr::storeLittle(xlatr::growBytes(bytes, sizeof(Number)), value);
}

void putText(ByteList& bytes, std::string_view text) {
  xlatr::appendBytes(bytes, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

class Writer {
 public:
  explicit Writer(const char* path) : out_(path, std::ios::binary) {
    if (!out_) {
      throw std::runtime_error("can't write the file");
    }
  }

  [[nodiscard]] std::uint64_t position() const { return position_; }
  void write(const ByteList& bytes) {
    out_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    position_ += bytes.size();
  }
  // Blocks begin at multiples of 8.
  std::uint64_t block(std::string_view type, const std::vector<std::uint64_t>& links, const ByteList& data) {
    const std::uint64_t begin = beginBlock(type, links, data.size());
    write(data);
    return begin;
  }
  std::uint64_t beginBlock(std::string_view type, const std::vector<std::uint64_t>& links, std::uint64_t dataSize) {
    write(ByteList((8 - position_ % 8) % 8));
    const std::uint64_t begin = position_;
    ByteList head;
    putText(head, "##");
    putText(head, type);
    put(head, std::uint32_t{0});
    put(head, std::uint64_t{24} + 8 * links.size() + dataSize);
    put(head, std::uint64_t{links.size()});
    for (const std::uint64_t link : links) {
      put(head, link);
    }
    write(head);
    return begin;
  }
  void patch(std::uint64_t position, std::uint64_t number) {
    ByteList bytes;
    put(bytes, number);
    out_.seekp(static_cast<std::streamoff>(position));
    out_.write(reinterpret_cast<const char*>(bytes.data()), 8);
    out_.seekp(static_cast<std::streamoff>(position_));
  }
  void close() {
    out_.close();
    if (!out_) {
      throw std::runtime_error("the file could not be written whole");
    }
  }

 private:
  std::ofstream out_;
  std::uint64_t position_ = 0;
};

std::uint64_t addText(Writer& out, std::string_view text) {
  ByteList data;
  putText(data, text);
  data.resize((data.size() / 8 + 1) * 8);
  return out.block("TX", {}, data);
}

struct Channel {
  const char* name;
  std::uint8_t type;
  std::uint8_t dataType;
  std::uint8_t bitOffset;
  std::uint32_t byteOffset;
  std::uint32_t bitCount;
};

constexpr Channel kTime = {"t", 2, 0, 0, 0, 64};
constexpr std::array kMembers = {
    Channel{"CAN_DataFrame.BusChannel", 0, 0, 0, 8, 8},    Channel{"CAN_DataFrame.ID", 0, 0, 0, 9, 32},
    Channel{"CAN_DataFrame.IDE", 0, 0, 0, 13, 1},          Channel{"CAN_DataFrame.Dir", 0, 0, 1, 13, 1},
    Channel{"CAN_DataFrame.EDL", 0, 0, 3, 13, 1},          Channel{"CAN_DataFrame.BRS", 0, 0, 4, 13, 1},
    Channel{"CAN_DataFrame.DLC", 0, 0, 0, 14, 8},          Channel{"CAN_DataFrame.DataLength", 0, 0, 0, 15, 8},
    Channel{"CAN_DataFrame.DataBytes", 0, 10, 0, 16, 512},
};

std::uint64_t addChannel(Writer& out, const Channel& channel, std::uint64_t next) {
  const std::uint64_t name = addText(out, channel.name);
  ByteList data = {channel.type, std::uint8_t{channel.type == 2}, channel.dataType, channel.bitOffset};
  put(data, channel.byteOffset);
  put(data, channel.bitCount);
  data.resize(data.size() + 60);
  return out.block("CN", {next, 0, name, 0, 0, 0, 0, 0}, data);
}

// Returns where the link to the data and the number of records stand.
struct Places {
  std::uint64_t dataLink;
  std::array<std::uint64_t, 2> counts;
};

Places addGroups(Writer& out, bool unsorted) {
  std::uint64_t channels = 0;
  for (std::size_t at = kMembers.size(); at-- > 0;) {
    channels = addChannel(out, kMembers[at], channels);
  }
  channels = addChannel(out, kTime, channels);
  std::uint64_t group = 0;
  Places places{};
  for (std::uint64_t id = unsorted ? 2 : 1; id-- > 0;) {
    ByteList data;
    put(data, id);
    put(data, std::uint64_t{0});
    put(data, std::uint64_t{0x6});
    put(data, static_cast<std::uint32_t>(kRecordSize));
    put(data, std::uint32_t{0});
    group = out.block("CG", {group, id == 0 ? channels : 0, 0, 0, 0, 0}, data);
    constexpr std::uint64_t kCountAt = 80;  // in the block, after its head, six links and the record id
    places.counts[id] = group + kCountAt;
  }
  ByteList data(8);
  data[0] = unsorted ? 1 : 0;
  const std::uint64_t dataGroup = out.block("DG", {0, group, 0, 0}, data);
  out.patch(kFirstGroup + 24, dataGroup);
  places.dataLink = dataGroup + 24 + 16;
  return places;
}

class Records {
 public:
  explicit Records(bool unsorted) : unsorted_(unsorted) {}

  // So many more.
  [[nodiscard]] const ByteList& next(std::size_t count) {
    bytes_.clear();
    for (std::size_t at = 0; at < count; ++at, ++index_) {
      if (unsorted_) {
        bytes_.push_back(index_ % 10 == 9 ? 1 : 0);
      }
      put(bytes_, 100'000 * index_);
      put(bytes_, static_cast<std::uint8_t>(1 + index_ % 2));
      put(bytes_, static_cast<std::uint32_t>(random_() % 0x800));
      put(bytes_, std::uint8_t{0});
      put(bytes_, std::uint8_t{8});
      put(bytes_, std::uint8_t{8});
      put(bytes_, std::uint64_t{random_()} & 0x00FF00FFFFFFULL);
      bytes_.resize(bytes_.size() + 56);
    }
    return bytes_;
  }
  [[nodiscard]] std::uint64_t count() const { return index_; }

 private:
  bool unsorted_;
  std::uint64_t index_ = 0;
  std::mt19937_64 random_{1};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same file every time
  ByteList bytes_;
};

void addPlain(Writer& out, Records& records, const Places& places, std::uint64_t size) {
  const std::uint64_t block = out.beginBlock("DT", {}, 0);
  while (out.position() < size) {
    out.write(records.next(kRecordsInBlock));
  }
  out.patch(block + 8, out.position() - block);
  out.patch(places.dataLink, block);
}

ByteList zippedHead(bool transposed, std::uint64_t size, std::uint64_t zippedSize) {
  ByteList head;
  putText(head, "DT");
  put(head, static_cast<std::uint16_t>(transposed ? 1 : 0));
  put(head, static_cast<std::uint32_t>(transposed ? kRecordSize : 0));
  put(head, size);
  put(head, zippedSize);
  return head;
}

ByteList columnsOf(const ByteList& rows) {
  ByteList columns(rows.size());
  const std::size_t count = rows.size() / kRecordSize;
  for (std::size_t at = 0; at < rows.size(); ++at) {
    columns[at % kRecordSize * count + at / kRecordSize] = rows[at];
  }
  return columns;
}

// `size` is that of the bytes before they are zipped.
void addZipped(Writer& out, Records& records, const Places& places, std::uint64_t size, bool transposed) {
  std::vector<std::uint64_t> links = {0};
  for (std::uint64_t done = 0; done < size;) {
    const ByteList& rows = records.next(kRecordsInBlock);
    const ByteList bytes = transposed ? columnsOf(rows) : rows;
    ByteList zipped(compressBound(bytes.size()));
    uLongf zippedSize = zipped.size();
    compress2(zipped.data(), &zippedSize, bytes.data(), bytes.size(), 1);
    zipped.resize(zippedSize);
    ByteList data = zippedHead(transposed, bytes.size(), zippedSize);
    xlatr::appendBytes(data, zipped);
    links.push_back(out.block("DZ", {}, data));
    done += bytes.size();
  }
  ByteList data = {1, 0, 0, 0};
  put(data, static_cast<std::uint32_t>(links.size() - 1));
  put(data, std::uint64_t{kRecordsInBlock} * kRecordSize);
  const std::uint64_t list = out.block("DL", links, data);
  ByteList head(8);
  head[0] = 1;
  out.patch(places.dataLink, out.block("HL", {list}, head));
}

void addWhole(Writer& out, Records& records, const Places& places, std::uint64_t size) {
  const std::uint64_t block = out.beginBlock("DZ", {}, 0);
  out.write(zippedHead(false, 0, 0));
  const std::uint64_t begin = out.position();
  z_stream stream{};
  if (deflateInit(&stream, 1) != Z_OK) {
    throw std::runtime_error("can't zip");
  }
  ByteList piece(std::size_t{1} << 20);
  std::uint64_t done = 0;
  for (int result = Z_OK; result != Z_STREAM_END;) {
    if (stream.avail_in == 0 && done < size) {
      const ByteList& rows = records.next(kRecordsInBlock);
      stream.next_in = const_cast<Bytef*>(rows.data());
      stream.avail_in = static_cast<uInt>(rows.size());
      done += rows.size();
    }
    stream.next_out = piece.data();
    stream.avail_out = static_cast<uInt>(piece.size());
    result = deflate(&stream, done < size ? Z_NO_FLUSH : Z_FINISH);
    out.write(ByteList(piece.begin(), piece.end() - stream.avail_out));
  }
  deflateEnd(&stream);
  out.patch(block + 8, out.position() - block);
  out.patch(block + 24 + 8, done);
  out.patch(block + 24 + 16, out.position() - begin);
  out.patch(places.dataLink, block);
}

void writeFile(std::string_view form, std::uint64_t size, const char* path) {
  Writer out(path);
  ByteList identification;
  putText(identification, "MDF     4.10    big_mf4 ");
  put(identification, std::uint32_t{0});
  put(identification, std::uint16_t{410});
  identification.resize(64);
  out.write(identification);
  ByteList header;
  put(header, std::uint64_t{1'600'000'000'000'000'000});
  header.resize(32);
  out.block("HD", {0, 0, 0, 0, 0, 0}, header);
  const bool unsorted = form == "unsorted";
  const Places places = addGroups(out, unsorted);
  Records records(unsorted);
  if (form == "plain" || unsorted) {
    addPlain(out, records, places, size);
  } else if (form == "whole") {
    addWhole(out, records, places, size);
  } else if (form == "zipped" || form == "transposed") {
    addZipped(out, records, places, size, form == "transposed");
  } else {
    throw std::invalid_argument("there is no such form");
  }
  out.patch(places.counts[0], unsorted ? records.count() - records.count() / 10 : records.count());
  if (unsorted) {
    out.patch(places.counts[1], records.count() / 10);
  }
  out.close();
}

void readFile(const char* path) {
  const auto source = xlatr::openMf4Frames(std::string(path));
  xlatr::FrameBatch batch;
  xlatr::Account account;
  while (source->read(batch, account)) {
    batch.clear();
  }
  std::printf("%llu frames, %s\n", static_cast<unsigned long long>(account.read()),
              account.noted(xlatr::Remark::RecordNotUnderstood).frames == 0 ? "whole" : "damaged");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 3 && std::string_view(argv[1]) == "read") {
      readFile(argv[2]);
    } else if (argc == 4) {
      writeFile(argv[1], static_cast<std::uint64_t>(std::stod(argv[2]) * 1e9), argv[3]);
    } else {
      std::fputs("usage: big_mf4 plain|unsorted|zipped|transposed|whole GIGABYTES FILE, big_mf4 read FILE\n", stderr);
      return 2;
    }
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "big_mf4: %s\n", failure.what());
    return 1;
  }
  return 0;
}
