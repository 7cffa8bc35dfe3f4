// Writing MF4 files in all four layouts, from messages that are already in memory.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "formats/mf4/mdf_writer.hpp"
#include "formats/trc/trc_info.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_reader.hpp"
#include "tracegen/generator.hpp"

namespace {

constexpr std::uint64_t kMessages = 100000;

// A piece of vehicle traffic, with CAN FD and remote frames, that is written over and over.
class Recording {
 public:
  Recording() {
    std::random_device random;
    do {
      folder_ = std::filesystem::temp_directory_path() / ("xlatr_bench_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder_));
    tracegen::RecordingOptions options;
    options.maxMessages = kMessages;
    tracegen::generateFile(options, path("source.trc"));
    xlatr::TrcReader reader{info()};
    reader.setActive(true);
    for (xlatr::BrixMessage message; reader.readInto(message);) {
      messages_.push_back(message);
    }
  }
  ~Recording() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  [[nodiscard]] const std::vector<xlatr::BrixMessage>& messages() const { return messages_; }
  [[nodiscard]] xlatr::TrcInfo info() const { return xlatr::TrcInfo(path("source.trc")); }
  [[nodiscard]] std::string path(const char* name) const { return (folder_ / name).string(); }

 private:
  std::filesystem::path folder_;
  std::vector<xlatr::BrixMessage> messages_;
};

// The arguments are how often the recording is written into a file, and whether that is sorted and zipped.
void writeFile(benchmark::State& state) {
  static const Recording recording;
  const xlatr::TrcInfo info = recording.info();
  const std::string target = recording.path("target.mf4");
  const auto rounds = static_cast<std::size_t>(state.range(0));
  for ([[maybe_unused]] auto step : state) {
    xlatr::MdfWriter writer(target, true, 4.2);
    writer.setSorted(state.range(1) != 0);
    writer.setZipped(state.range(2) != 0);
    writer.setActive(true);
    writer.WriteHeader(info);
    for (std::size_t round = 0; round < rounds; ++round) {
      for (const xlatr::BrixMessage& message : recording.messages()) {
        writer.WriteMessage(message);
      }
    }
    writer.setActive(false);
  }
  const auto written = static_cast<std::int64_t>(rounds * recording.messages().size());
  state.SetItemsProcessed(state.iterations() * written);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(target)));
}
BENCHMARK(writeFile)
    ->ArgNames({"rounds", "sorted", "zipped"})
    ->ArgsProduct({{20}, {0, 1}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
