// Parsing and printing ASC lines: single ones without any file, and whole files on the complete way.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "formats/asc/asc_frames.hpp"
#include "formats/asc/asc_mapping.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/trc/trc_frames.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "tracegen/generator.hpp"
#include "util/text_buffer.hpp"

namespace {

using xlatr::AscMessage;
using xlatr::BrixMessage;
using xlatr::TextBuffer;

struct Sample {
  const char* name;
  double version;
  std::vector<std::string_view> lines;
};

const Sample kSamples[] = {
    {"7.0",
     7.0,
     {"   0.010000 1  123             Rx   d 8 0A B0 12 34 56 78 9A BC",
      "   0.010500 2  18ABCDEFx       Rx   d 8 FF FE FD FC FB FA F9 F8"}},
    // What loggers add after the data.
    {"8.1, d lines",
     8.1,
     {"   0.010000 1  123             Rx   d 8 0A B0 12 34 56 78 9A BC  Length = 230000 BitCount = 118 ID = 291",
      "   0.010500 2  18ABCDEFx       Rx   d 8 FF FE FD FC FB FA F9 F8  Length = 270000 BitCount = 138 ID = "
      "413912559x"}},
    {"8.1, CANFD lines",
     8.1,
     {"   0.010000 CANFD   1 Rx        123                                   0 0 8  8 0A B0 12 34 56 78 9A BC        0"
      "    0   200000        0        0        0        0        0",
      "   0.010500 CANFD   2 Rx   18ABCDEFx                                  1 0 8  8 FF FE FD FC FB FA F9 F8        0"
      "    0     3000        0        0        0        0        0"}},
};

void countLines(benchmark::State& state, const Sample& sample) {
  std::size_t bytes = 0;
  for (const std::string_view line : sample.lines) {
    bytes += line.size();
  }
  state.SetLabel(std::string("ASC ") + sample.name);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sample.lines.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void parseLines(benchmark::State& state) {
  const Sample& sample = kSamples[state.range(0)];
  AscMessage message;
  for ([[maybe_unused]] auto step : state) {
    for (const std::string_view line : sample.lines) {
      message.reset();
      message.parseLine(line, sample.version);
      benchmark::DoNotOptimize(message.valid);
    }
  }
  countLines(state, sample);
}
BENCHMARK(parseLines)->DenseRange(0, std::size(kSamples) - 1);

// From the messages of a TRC trace, as a writer does it. The argument is 7 or 8, the form.
void printLines(benchmark::State& state) {
  constexpr std::string_view kLines[] = {"      1        10.000 DT 1      0123 Rx -  8    0A B0 12 34 56 78 9A BC",
                                         "      2        10.500 DT 2  18ABCDEF Rx -  8    FF EE DD CC BB AA F9 F8"};
  BrixMessage sources[std::size(kLines)];
  for (std::size_t index = 0; index < std::size(kLines); ++index) {
    sources[index].parseLine(kLines[index], xlatr::findTrcVersion(2.1), xlatr::kTrcColumns21);
  }
  AscMessage message;
  TextBuffer line;
  for ([[maybe_unused]] auto step : state) {
    for (const BrixMessage& source : sources) {
      mapToAsc(source, message);
      line.clear();
      if (state.range(0) == 8) {
        message.toText8(line);
      } else {
        message.toText7(line);
      }
      benchmark::DoNotOptimize(line.view());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(std::size(kLines)));
}
BENCHMARK(printLines)->Arg(7)->Arg(8);

// Half a million generated messages as a TRC trace and as an ASC log, removed at the end.
class SampleFiles {
 public:
  explicit SampleFiles(double version)
      : stem_((std::filesystem::temp_directory_path() / ("xlatr_bench_" + std::to_string(std::random_device()())))
                  .string()),
        version_(version) {
    tracegen::RecordingOptions options;
    options.traffic.makePlain();
    options.maxMessages = 500000;
    tracegen::generateFile(options, stem_ + ".trc");
    const auto source = xlatr::openTrcFrames(stem_ + ".trc");
    const auto sink = create(source->head());
    xlatr::FrameBatch batch;
    xlatr::Account account;
    while (source->read(batch, account)) {
      sink->write(batch, account);
      batch.clear();
    }
    sink->close();
  }
  ~SampleFiles() {
    std::filesystem::remove(stem_ + ".trc");
    std::filesystem::remove(asc());
  }
  SampleFiles(const SampleFiles&) = delete;
  SampleFiles& operator=(const SampleFiles&) = delete;

  [[nodiscard]] std::string asc() const { return stem_ + ".asc"; }
  [[nodiscard]] std::unique_ptr<xlatr::FrameSink> create(const xlatr::StreamHead& head) const {
    return xlatr::createAscFrames(asc(), head, {.version = version_});
  }

 private:
  std::string stem_;
  double version_;
};

// The argument is the version: 7 has short lines, 8 has long ones.
void readFrames(benchmark::State& state) {
  const SampleFiles files(static_cast<double>(state.range(0)));
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openAscFrames(files.asc());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
}
BENCHMARK(readFrames)->Arg(7)->Arg(8)->Unit(benchmark::kMillisecond);

// One batch of frames again and again.
void writeFrames(benchmark::State& state) {
  const SampleFiles files(static_cast<double>(state.range(0)));
  const auto source = xlatr::openAscFrames(files.asc());
  const xlatr::StreamHead head = source->head();
  xlatr::FrameBatch batch;
  xlatr::Account account;
  static_cast<void>(source->read(batch, account));
  constexpr int kBatches = 30;
  for ([[maybe_unused]] auto step : state) {
    const auto sink = files.create(head);
    for (int count = 0; count < kBatches; ++count) {
      sink->write(batch, account);
    }
    sink->close();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.written()));
}
BENCHMARK(writeFrames)->Arg(7)->Arg(8)->Unit(benchmark::kMillisecond);

}  // namespace
