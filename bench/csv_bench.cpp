// Parsing and printing single rows, and the step from a TRC message to a row, without any file.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "formats/csv/csv_frames.hpp"
#include "formats/csv/csv_mapping.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"

namespace {

using xlatr::CsvMessage;
using xlatr::TextBuffer;

struct Sample {
  const char* name;
  bool blfRows;
  std::string_view columns;
  std::vector<std::string_view> rows;
};

// What a bus carries, in the proportions of a passenger car: mostly full data frames.
const Sample kSamples[] = {
    {"narrow",
     false,
     "Number;Time (ms);Bus;Direction;Type;ID (hex);Reserved;Length;D0;D1;D2;D3;D4;D5;D6;D7;;D...",
     {"1234567;10.000;1;Rx;DT;0123;-;8;0A;B0;12;34;56;78;9A;BC",
      "1234568;10.500;2;Rx;DT;18ABCDEF;-;8;FF;FE;FD;FC;FB;FA;F9;F8"}},
    {"wide",
     false,
     "Number;Time (ms);Bus;Direction;Type;ID/PID (hex);Reserved;VCID;SDT;AF;RRS;SEC;Length;D0;D1;D2;D3;D4;D5;D6;D7;;"
     "D...",
     {"1234567;10.000;1;Rx;DT;0123;-;-;-;-;-;-;8;0A;B0;12;34;56;78;9A;BC",
      "1234568;10.500;2;Rx;DT;18ABCDEF;-;-;-;-;-;-;8;FF;FE;FD;FC;FB;FA;F9;F8"}},
    {"converter",
     true,
     "Number;ObjectType;ObjectTimestamp;ObjectFlags;Valid;Comment;Id;Channel;Flags;FlagsExt;Ecc;CanFdFLags;Dir;Crc;"
     "ObjectVersion;ChecksumModel;Length;D0;D1;D2;D3;D4;D5;D6;D7",
     {"1234567;1;10000000;2;1;-;291;1;0;0;0;0;0;0;0;0;8;0A;B0;12;34;56;78;9A;BC",
      "1234568;1;10500000;2;1;-;2561396207;2;0;0;0;0;0;0;0;0;8;FF;FE;FD;FC;FB;FA;F9;F8"}},
};

void countRows(benchmark::State& state, const Sample& sample) {
  std::size_t bytes = 0;
  for (const std::string_view row : sample.rows) {
    bytes += row.size();
  }
  state.SetLabel(sample.name);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sample.rows.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void parseRows(benchmark::State& state) {
  const Sample& sample = kSamples[state.range(0)];
  const xlatr::CsvColumnLine line = xlatr::parseCsvColumnLine(sample.columns);
  CsvMessage message(line.separator);
  message.columns = line.columns;
  for ([[maybe_unused]] auto step : state) {
    for (const std::string_view row : sample.rows) {
      message.reset();
      message.parseRow(row, sample.blfRows);
      benchmark::DoNotOptimize(message.valid);
    }
  }
  if (!message.valid) {
    state.SkipWithError("the row was not understood");
  }
  countRows(state, sample);
}
BENCHMARK(parseRows)->DenseRange(0, std::size(kSamples) - 1);

// From the message of a TRC line to the row, as the writer does it.
void printRows(benchmark::State& state) {
  const Sample& sample = kSamples[1];
  const std::string_view lines[] = {"1 10.000 DT 1 0123 Rx - 8 0A B0 12 34 56 78 9A BC",
                                    "2 10.500 DT 2 18ABCDEF Rx - 8 FF FE FD FC FB FA F9 F8"};
  std::vector<xlatr::BrixMessage> sources(sample.rows.size());
  for (std::size_t index = 0; index < sources.size(); ++index) {
    sources[index].parseLine(lines[index], xlatr::findTrcVersion(2.1), xlatr::kTrcColumns21);
  }
  CsvMessage row(";");
  TextBuffer out;
  for ([[maybe_unused]] auto step : state) {
    std::uint64_t number = 1234567;
    for (const xlatr::BrixMessage& source : sources) {
      out.clear();
      xlatr::mapToCsv(source, row);
      row.toRow(out, number++);
      benchmark::DoNotOptimize(out.view());
    }
  }
  if (out.view() != sample.rows.back()) {
    state.SkipWithError("the row is not the expected one");
  }
  countRows(state, sample);
}
BENCHMARK(printRows);

// Frames of a passenger car again: full ones, of both kinds of identifiers.
xlatr::FrameBatch fullBatch() {
  constexpr std::array<std::uint8_t, 8> kBytes = {0x0A, 0xB0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};
  xlatr::FrameBatch batch;
  xlatr::Frame frame;
  frame.set(xlatr::frame_flag::kReceived);
  frame.dlc = kBytes.size();
  frame.data = kBytes;
  while (!batch.full()) {
    const bool extended = batch.size() % 2 != 0;
    frame.timeNs += 500'000;
    frame.bus = extended ? 2 : 1;
    frame.id = extended ? 0x18ABCDEF : 0x123;
    frame.unset(xlatr::frame_flag::kExtended);
    frame.set(extended ? xlatr::frame_flag::kExtended : std::uint16_t{0});
    batch.append(frame);
  }
  return batch;
}

// A file of half a million frames, removed at the end.
class FrameFile {
 public:
  static constexpr std::size_t kBatches = 32;

  explicit FrameFile(double version)
      : version_(version),
        path_(std::filesystem::temp_directory_path() /
              ("xlatr_bench_" + std::to_string(std::random_device()()) + ".csv")) {}
  ~FrameFile() { std::filesystem::remove(path_); }
  FrameFile(const FrameFile&) = delete;
  FrameFile& operator=(const FrameFile&) = delete;

  [[nodiscard]] std::string path() const { return path_.string(); }

  void write(const xlatr::FrameBatch& batch, xlatr::Account& account) const {
    const auto sink = xlatr::createCsvFrames(path(), xlatr::StreamHead(), xlatr::SinkSettings{.version = version_});
    for (std::size_t at = 0; at < kBatches; ++at) {
      sink->write(batch, account);
    }
    sink->close();
  }

 private:
  double version_;
  std::filesystem::path path_;
};

// The argument is the version.
void writeFrames(benchmark::State& state) {
  const FrameFile file(static_cast<double>(state.range(0)));
  const xlatr::FrameBatch batch = fullBatch();
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    file.write(batch, account);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.written()));
}
BENCHMARK(writeFrames)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void readFrames(benchmark::State& state) {
  const FrameFile file(static_cast<double>(state.range(0)));
  xlatr::Account account;
  file.write(fullBatch(), account);
  account = {};
  xlatr::FrameBatch batch;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openCsvFrames(file.path());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
}
BENCHMARK(readFrames)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace
