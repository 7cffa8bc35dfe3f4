// Parsing and printing single rows, and the step from a TRC message to a row, without any file.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

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

}  // namespace
