// Parsing and printing single TRC lines, without any file.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "formats/trc/trc_frames.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_reader.hpp"
#include "formats/trc/trc_version.hpp"
#include "tracegen/generator.hpp"
#include "util/text_buffer.hpp"

namespace {

using xlatr::BrixMessage;
using xlatr::TextBuffer;

struct Sample {
  double version;
  xlatr::TrcColumnSet columns;
  std::vector<std::string_view> lines;
};

// What a bus carries, in the proportions of a passenger car: mostly full data frames.
const Sample kSamples[] = {
    {1.1,
     0,
     {"     1)        10.0  Rx         0123  8  0A B0 12 34 56 78 9A BC",
      "     2)        10.5  Rx     18ABCDEF  8  FF FE FD FC FB FA F9 F8"}},
    {2.0,
     xlatr::kTrcColumns20,
     {"      1        10.000 DT     0123 Rx 8  0A B0 12 34 56 78 9A BC",
      "      2        10.500 DT 18ABCDEF Rx 8  FF FE FD FC FB FA F9 F8"}},
    {2.1,
     xlatr::kTrcColumns21,
     {"      1        10.000 DT 1      0123 Rx -  8    0A B0 12 34 56 78 9A BC",
      "      2        10.500 DT 2  18ABCDEF Rx -  8    FF FE FD FC FB FA F9 F8"}},
    {3.0,
     xlatr::kTrcColumns30,
     {"      1        10.000 DT 1       123 Rx -  -  -  -        - - 8    0A B0 12 34 56 78 9A BC",
      "      2        10.500 DT 2  18ABCDEF Rx -  -  -  -        - - 8    FF FE FD FC FB FA F9 F8"}},
};

void countLines(benchmark::State& state, const Sample& sample) {
  std::size_t bytes = 0;
  for (const std::string_view line : sample.lines) {
    bytes += line.size();
  }
  state.SetLabel("TRC " + std::to_string(sample.version).substr(0, 3));
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sample.lines.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void parseLines(benchmark::State& state) {
  const Sample& sample = kSamples[state.range(0)];
  const xlatr::TrcVersion* const version = xlatr::findTrcVersion(sample.version);
  BrixMessage message;
  for ([[maybe_unused]] auto step : state) {
    for (const std::string_view line : sample.lines) {
      message.reset();
      message.parseLine(line, version, sample.columns);
      benchmark::DoNotOptimize(message.valid);
    }
  }
  countLines(state, sample);
}
BENCHMARK(parseLines)->DenseRange(0, std::size(kSamples) - 1);

void printLines(benchmark::State& state) {
  const Sample& sample = kSamples[state.range(0)];
  const xlatr::TrcVersion* const version = xlatr::findTrcVersion(sample.version);
  std::vector<BrixMessage> messages(sample.lines.size());
  for (std::size_t index = 0; index < messages.size(); ++index) {
    messages[index].parseLine(sample.lines[index], version, sample.columns);
  }
  TextBuffer line;
  for ([[maybe_unused]] auto step : state) {
    for (const BrixMessage& message : messages) {
      line.clear();
      message.appendText(line, version, 1234567, sample.columns);
      benchmark::DoNotOptimize(line.view());
    }
  }
  countLines(state, sample);
}
BENCHMARK(printLines)->DenseRange(0, std::size(kSamples) - 1);

// A generated file of half a million messages, removed at the end.
class SampleFile {
 public:
  SampleFile()
      : path_(std::filesystem::temp_directory_path() /
              ("xlatr_bench_" + std::to_string(std::random_device()()) + ".trc")) {
    tracegen::RecordingOptions options;
    options.traffic.makePlain();
    options.maxMessages = 500000;
    tracegen::generateFile(options, path_.string());
  }
  ~SampleFile() { std::filesystem::remove(path_); }
  SampleFile(const SampleFile&) = delete;
  SampleFile& operator=(const SampleFile&) = delete;

  [[nodiscard]] std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

// A whole file as a conversion reads it, into the same message again and again.
void readFile(benchmark::State& state) {
  const SampleFile file;
  xlatr::TrcReader reader{xlatr::TrcInfo(xlatr::TraceFileInfo(file.path()))};
  BrixMessage message;
  std::int64_t count = 0;
  for ([[maybe_unused]] auto step : state) {
    reader.setActive(true);
    while (reader.readInto(message)) {
      benchmark::DoNotOptimize(message.valid);
      ++count;
    }
  }
  state.SetItemsProcessed(count);
}
BENCHMARK(readFile)->Unit(benchmark::kMillisecond);

// The same on the complete way.
void readFrames(benchmark::State& state) {
  const SampleFile file;
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openTrcFrames(file.path());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
}
BENCHMARK(readFrames)->Unit(benchmark::kMillisecond);

}  // namespace
