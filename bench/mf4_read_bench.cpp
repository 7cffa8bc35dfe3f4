// Reading MF4 files into messages, plain and zipped, sorted and not, without writing anything. Classic frames in room
// for CAN FD, one remote frame in a hundred: 80 or 81 bytes per record.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

#include "formats/mf4/mdf_data_output.hpp"
#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "util/little_endian.hpp"

namespace {

using xlatr::BusEventFrameType;
using xlatr::Bytes;

constexpr std::size_t kFrames = 2'000'000;
constexpr std::uint64_t kStartNs = 1'600'000'000'000'000'000;

struct Records {
  Bytes bytes;
  std::uint64_t count = 0;
};

template <class Number>
void append(Bytes& bytes, Number value) {
  bytes.resize(bytes.size() + sizeof(Number));
  xlatr::storeLittle(bytes.data() + bytes.size() - sizeof(Number), value);
}

// The traffic is the same in all files; only the order of the records differs.
void appendFrame(Bytes& bytes, std::size_t index, bool remote, std::mt19937_64& random) {
  append(bytes, static_cast<double>(index) * 125'000.0);
  append(bytes, static_cast<std::uint32_t>(random() % 0x800));
  append(bytes, static_cast<std::uint8_t>(1 + index % 2));
  append(bytes, std::uint8_t{0});
  append(bytes, std::uint8_t{8});
  append(bytes, std::uint8_t{8});
  if (!remote) {
    append(bytes, static_cast<std::uint64_t>(random() & 0x00FF00FFFFFFULL));
    bytes.resize(bytes.size() + 56);
  }
}

std::string_view textOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class BenchFile {
 public:
  explicit BenchFile(const xlatr::MdfLayoutOptions& options)
      : path_((std::filesystem::temp_directory_path() / "xlatr_mf4_read_bench.mf4").string()) {
    std::array<Records, 3> records;
    std::mt19937_64 random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same file every time
    for (std::size_t index = 0; index < kFrames; ++index) {
      const bool remote = index % 100 == 99;
      const std::size_t group = remote && options.isSorted() ? 1 : 0;
      if (!options.isSorted()) {
        append(records[group].bytes, static_cast<std::uint8_t>(remote ? 1 : 0));
      }
      appendFrame(records[group].bytes, index, remote, random);
      ++records[remote ? 1 : 0].count;
    }
    write(options, records);
  }
  ~BenchFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  BenchFile(const BenchFile&) = delete;
  BenchFile& operator=(const BenchFile&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  void write(const xlatr::MdfLayoutOptions& options, const std::array<Records, 3>& records) const {
    const auto file = xlatr::MdfFileHeader::createForWriting(options, xlatr::UnsignedNanoseconds(kStartNs), 4.1);
    xlatr::HeaderBlock& header = *file->header();
    std::size_t groupCount = 0;
    for (auto& group : header.dataGroups()) {
      static_cast<void>(group);
      ++groupCount;
    }
    Bytes bytes = file->toBytes();
    for (std::size_t kind = 0; kind < records.size(); ++kind) {
      const std::size_t group = options.isSorted() ? kind : 0;
      const auto position = header.cycleCountPosition(group, static_cast<BusEventFrameType>(kind));
      xlatr::storeLittle(bytes.data() + position, records[kind].count);
    }
    xlatr::BufferedOutput output;
    output.open(path_);
    output.write(textOf(bytes));
    std::uint64_t end = bytes.size();
    for (std::size_t group = 0; group < groupCount; ++group) {
      const std::uint64_t begin = (end + 7) / 8 * 8;
      output.write(std::string(begin - end, '\0'));
      xlatr::MdfDataOutput data(output, begin, options.zipped);
      data.append(textOf(records[group].bytes));
      xlatr::storeLittle(bytes.data() + header.dataLinkPosition(group), data.finish());
      end = data.end();
    }
    output.seek(0);
    output.write(textOf(bytes));  // now with the links to the data
    output.close();
  }

  std::string path_;
};

void readMessages(benchmark::State& state) {
  const bool zipped = state.range(0) != 0;
  const bool sorted = state.range(1) != 0;
  const BenchFile file({.largePayload = true,
                        .layout = sorted ? xlatr::MdfLayout::Sorted : xlatr::MdfLayout::Unsorted,
                        .zipped = zipped,
                        .dataFramesOnly = false});
  state.SetLabel(std::string(zipped ? "zipped" : "plain") + (sorted ? ", sorted" : ", unsorted"));
  for ([[maybe_unused]] auto step : state) {
    xlatr::MdfReader reader{xlatr::MdfInfo(file.path())};
    reader.setActive(true);
    xlatr::MdfCanMessage message;
    std::size_t valid = 0;
    while (reader.readInto(message)) {
      valid += message.valid ? 1 : 0;
    }
    if (valid != kFrames) {
      state.SkipWithError("not all frames were read");
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(file.path())));
}
BENCHMARK(readMessages)->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);

// The same on the complete way.
void readFrames(benchmark::State& state) {
  const bool zipped = state.range(0) != 0;
  const bool sorted = state.range(1) != 0;
  const BenchFile file({.largePayload = true,
                        .layout = sorted ? xlatr::MdfLayout::Sorted : xlatr::MdfLayout::Unsorted,
                        .zipped = zipped,
                        .dataFramesOnly = false});
  state.SetLabel(std::string(zipped ? "zipped" : "plain") + (sorted ? ", sorted" : ", unsorted"));
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openMf4Frames(file.path());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  if (account.read() != static_cast<std::uint64_t>(state.iterations()) * kFrames) {
    state.SkipWithError("not all frames were read");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(file.path())));
}
BENCHMARK(readFrames)->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);

}  // namespace
