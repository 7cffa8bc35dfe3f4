// Reading and making single records of binary traces, without any file.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "formats/native/btrc_frames.hpp"
#include "formats/native/btrc_mapping.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"
#include "tracegen/generator.hpp"
#include "util/text_buffer.hpp"

namespace {

using xlatr::BrixMessage;
using xlatr::TextBuffer;
using xlatr::TimeScale;
using xlatr::ZelkBinaryMessage;

constexpr std::string_view kLines[] = {
    "      1        10.000 DT 1      0123 Rx -  8    0A B0 12 34 56 78 9A BC",
    "      2        10.500 DT 2  18ABCDEF Tx -  8    FF EE DD CC BB AA F9 F8",
    "      3        11.000 FB 1      0200 Rx -  11   01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14",
    "      4        11.500 RR 1      0300 Tx -  8   ",
};

std::vector<BrixMessage> messages() {
  std::vector<BrixMessage> result;
  for (const std::string_view line : kLines) {
    result.emplace_back().parseLine(line, xlatr::findTrcVersion(2.1), xlatr::kTrcColumns21);
  }
  return result;
}

void countMessages(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(std::size(kLines)));
}

void makeRecords(benchmark::State& state) {
  const std::vector<BrixMessage> sources = messages();
  ZelkBinaryMessage message;
  for ([[maybe_unused]] auto step : state) {
    for (const BrixMessage& source : sources) {
      mapToBtrc(source, message);
      message.AdjustTimestamp(xlatr::UnsignedMicroseconds(1000));
      benchmark::DoNotOptimize(message.rawBytes.data());
    }
  }
  countMessages(state);
}
BENCHMARK(makeRecords);

void readRecords(benchmark::State& state) {
  std::vector<ZelkBinaryMessage> records;
  for (const BrixMessage& source : messages()) {
    mapToBtrc(source, records.emplace_back());
  }
  ZelkBinaryMessage message;
  for ([[maybe_unused]] auto step : state) {
    for (const ZelkBinaryMessage& record : records) {
      message.readRecord(record.recordType, record.rawBytes, TimeScale());
      benchmark::DoNotOptimize(message.valid);
    }
  }
  countMessages(state);
}
BENCHMARK(readRecords);

// As a writer of TRC files does it.
void printRecords(benchmark::State& state) {
  std::vector<ZelkBinaryMessage> records;
  for (const BrixMessage& source : messages()) {
    mapToBtrc(source, records.emplace_back());
  }
  const xlatr::TrcVersion* const version = xlatr::findTrcVersion(2.1);
  BrixMessage mapped;
  TextBuffer line;
  for ([[maybe_unused]] auto step : state) {
    for (const ZelkBinaryMessage& record : records) {
      mapToTrc(record, mapped);
      line.clear();
      mapped.appendText(line, version, 1, xlatr::kTrcColumns21);
      benchmark::DoNotOptimize(line.view());
    }
  }
  countMessages(state);
}
BENCHMARK(printRecords);

// A generated file of half a million messages, removed at the end.
class Recording {
 public:
  Recording()
      : path_((std::filesystem::temp_directory_path() /
               ("xlatr_bench_" + std::to_string(std::random_device()()) + ".btrc"))
                  .string()) {
    tracegen::RecordingOptions options;
    options.traffic.makePlain();
    options.form = tracegen::Form::Btrc;
    options.maxMessages = 500000;
    tracegen::generateFile(options, path_);
  }
  ~Recording() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    std::filesystem::remove(target(), ignored);
  }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string target() const { return path_ + ".target"; }

 private:
  std::string path_;
};

// A whole file on the complete way.
void readFrames(benchmark::State& state) {
  const Recording recording;
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openBtrcFrames(recording.path());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
}
BENCHMARK(readFrames)->Unit(benchmark::kMillisecond);

// One batch again and again.
void writeFrames(benchmark::State& state) {
  const Recording recording;
  xlatr::FrameBatch batch;
  xlatr::Account account;
  if (!xlatr::openBtrcFrames(recording.path())->read(batch, account)) {
    state.SkipWithError("frames are missing");
    return;
  }
  xlatr::Account written;
  for ([[maybe_unused]] auto step : state) {
    const auto sink = xlatr::createBtrcFrames(recording.target(), {}, {});
    for (int batches = 0; batches < 30; ++batches) {
      sink->write(batch, written);
    }
    sink->close();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(written.written()));
}
BENCHMARK(writeFrames)->Unit(benchmark::kMillisecond);

}  // namespace
