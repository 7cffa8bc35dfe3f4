// Parsing and printing single ASC lines, without any file.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

#include "formats/asc/asc_mapping.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
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

}  // namespace
