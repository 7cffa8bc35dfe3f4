// Parsing and printing single LIN lines, and reading a whole trace.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "formats/lin/lin_frames.hpp"
#include "formats/lin/lin_reader.hpp"
#include "tracegen/generator.hpp"

namespace {

using xlatr::KorlMessage;

constexpr std::array<std::string_view, 2> kLines = {
    "1234567)          12345678   Pub   2A  8  0A B0 12 34 56 78 9A BC  7C  EH  ",
    "1234568)          12355678   Sub   15  4  FF FE FD FC             15  CL  "};

void countLines(benchmark::State& state) {
  std::size_t bytes = 0;
  for (const std::string_view line : kLines) {
    bytes += line.size();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kLines.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void parseLines(benchmark::State& state) {
  KorlMessage message;
  for ([[maybe_unused]] auto step : state) {
    for (const std::string_view line : kLines) {
      message.reset();
      message.parseLine(line);
      benchmark::DoNotOptimize(message.valid);
    }
  }
  if (!message.valid) {
    state.SkipWithError("the line was not understood");
  }
  countLines(state);
}
BENCHMARK(parseLines);

void printLines(benchmark::State& state) {
  std::array<KorlMessage, kLines.size()> messages;
  for (std::size_t index = 0; index < messages.size(); ++index) {
    messages[index].parseLine(kLines[index]);
  }
  xlatr::TextBuffer out;
  for ([[maybe_unused]] auto step : state) {
    std::uint64_t number = 1234567;
    for (const KorlMessage& message : messages) {
      out.clear();
      message.appendText(out, 1.2, number++);
      benchmark::DoNotOptimize(out.view());
    }
  }
  if (out.view() != kLines.back()) {
    state.SkipWithError("the line is not the expected one");
  }
  countLines(state);
}
BENCHMARK(printLines);

// A generated trace in its own folder.
class Trace {
 public:
  Trace() {
    std::string pattern = (std::filesystem::temp_directory_path() / "lin_bench_XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no folder at " + pattern);
    }
    folder_ = pattern;
    tracegen::RecordingOptions options;
    options.form = tracegen::Form::Lin;
    options.traffic.makePlain();
    options.maxMessages = 500000;
    size_ = tracegen::generateFile(options, path());
  }
  ~Trace() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  [[nodiscard]] std::string path() const { return folder_ / "trace.ltrc"; }
  [[nodiscard]] const tracegen::RecordingSize& size() const { return size_; }

 private:
  std::filesystem::path folder_;
  tracegen::RecordingSize size_;
};

void readTrace(benchmark::State& state) {
  static const Trace trace;
  KorlMessage message;
  for ([[maybe_unused]] auto step : state) {
    xlatr::KorlReader reader{xlatr::KorlInfo(xlatr::TraceFileInfo(trace.path()))};
    if (!reader.setActive(true)) {
      state.SkipWithError("the trace can't be opened");
      return;
    }
    while (reader.readInto(message)) {
      benchmark::DoNotOptimize(message.valid);
    }
    if (reader.invalidCount() != 0) {
      state.SkipWithError("a line was not understood");
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(trace.size().messages));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(trace.size().bytes));
}
BENCHMARK(readTrace)->Unit(benchmark::kMillisecond);

// The same on the complete way.
void readFrames(benchmark::State& state) {
  static const Trace trace;
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openLinFrames(trace.path());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
}
BENCHMARK(readFrames)->Unit(benchmark::kMillisecond);

}  // namespace
