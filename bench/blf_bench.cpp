// From a BLF log to its table, with and without the file from which the library reads the table, and to frames.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "blf2csv/table_conversion.hpp"
#include "formats/blf/blf_frames.hpp"
#include "formats/blf/blf_log_content.hpp"
#include "formats/blf/blf_log_queue.hpp"
#include "formats/blf/blf_log_remarks.hpp"
#include "tracegen/generator.hpp"

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kFrames = 500'000;

// Each benchmark has its own log, which is removed with it.
class Log {
 public:
  explicit Log(std::uint32_t fdShare) {
    std::string pattern = (fs::temp_directory_path() / "blf_XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
    tracegen::RecordingOptions options;
    options.form = tracegen::Form::Blf;
    options.maxMessages = kFrames;
    options.traffic.makePlain();
    options.traffic.fdShare = fdShare;
    tracegen::generateFile(options, source());
  }
  ~Log() { fs::remove_all(folder_); }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  [[nodiscard]] std::string source() const { return folder_ / "log.blf"; }
  [[nodiscard]] std::string plain() const { return folder_ / "plain.blf"; }
  [[nodiscard]] std::string table() const { return folder_ / "table.csv"; }

 private:
  fs::path folder_;
};

bool goOn(std::uint16_t /*progress*/) {
  return true;
}

template <class Convert>
void run(benchmark::State& state, Convert convert) {
  const Log log(static_cast<std::uint32_t>(state.range(0)));
  for ([[maybe_unused]] auto step : state) {
    blf2csv::Remarks remarks;
    benchmark::DoNotOptimize(convert(log, remarks));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kFrames));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(log.source())));
}

void toTable(benchmark::State& state) {
  run(state, [](const Log& log, blf2csv::Remarks& remarks) {
    const auto drop = [](std::string_view block) { benchmark::DoNotOptimize(block); };
    return blf2csv::convertToTable(log.source(), drop, goOn, remarks);
  });
}
BENCHMARK(toTable)->ArgName("fd_share")->Arg(0)->Arg(50)->Unit(benchmark::kMillisecond)->UseRealTime();

void toFile(benchmark::State& state) {
  run(state, [](const Log& log, blf2csv::Remarks& remarks) {
    return blf2csv::convertToFile(log.source(), log.table(), goOn, remarks);
  });
}
BENCHMARK(toFile)->ArgName("fd_share")->Arg(0)->Arg(50)->Unit(benchmark::kMillisecond)->UseRealTime();

void putNumber(std::string& bytes, std::uint64_t value, std::size_t width) {
  for (std::size_t index = 0; index < width; ++index) {
    bytes.push_back(static_cast<char>(value >> (8 * index)));
  }
}

// The same log with its content in containers that are not packed.
void unpack(const Log& log) {
  constexpr std::size_t kHead = 144;
  constexpr std::size_t kContainer = std::size_t{128} * 1024;
  namespace blf_log = xlatr::blf_log;
  blf_log::Remarks remarks;
  blf_log::ContentInput input(log.source(), kHead, remarks);
  blf_log::ByteQueue content;
  while (input.read(content) != blf_log::Piece::End) {
  }
  std::string out(kHead, '\0');
  std::ifstream(log.source(), std::ios::binary).read(out.data(), kHead);
  while (!content.empty()) {
    const std::size_t size = std::min(content.size(), kContainer);
    out += "LOBJ";
    putNumber(out, 16, 2);
    putNumber(out, 1, 2);
    putNumber(out, 32 + size, 4);
    putNumber(out, 10, 4);
    putNumber(out, 0, 8);
    putNumber(out, size, 4);
    putNumber(out, 0, 4);
    out.append(reinterpret_cast<const char*>(content.bytes().data()), size);
    out.append(size % 4, '\0');
    content.drop(size);
  }
  std::ofstream(log.plain(), std::ios::binary) << out;
}

// On the complete way.
void readFrames(benchmark::State& state) {
  const Log log(static_cast<std::uint32_t>(state.range(0)));
  unpack(log);
  const std::string path = state.range(1) != 0 ? log.source() : log.plain();
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openBlfFrames(path);
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(path)));
}
BENCHMARK(readFrames)
    ->ArgNames({"fd_share", "packed"})
    ->ArgsProduct({{0, 50}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
