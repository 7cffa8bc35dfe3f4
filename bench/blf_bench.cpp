// From a BLF log to its table, with and without the file from which the library reads the table.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "blf2csv/table_conversion.hpp"
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

}  // namespace
