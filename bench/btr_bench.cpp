// Reading the sessions of a BTR file, without writing anything.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "formats/native/btr_frames.hpp"
#include "formats/native/btr_info.hpp"
#include "formats/native/btr_session_reader.hpp"
#include "tracegen/generator.hpp"

namespace {

constexpr std::uint64_t kMessages = 480000;  // in 20,000 sectors, 10 MB

// A file of this many sessions; removed at the end.
class Recording {
 public:
  Recording(std::uint32_t sessions, std::uint64_t messages)
      : path_((std::filesystem::temp_directory_path() /
               ("xlatr_bench_" + std::to_string(std::random_device()()) + ".btr"))
                  .string()) {
    tracegen::RecordingOptions options;
    options.traffic.makePlain();
    options.form = tracegen::Form::Btr;
    options.btr = {.sessions = sessions, .circular = true};
    options.maxMessages = messages;
    tracegen::generateFile(options, path_);
  }
  ~Recording() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] xlatr::BtrInfo info() const { return xlatr::BtrInfo(xlatr::TraceFileInfo(path_)); }

 private:
  std::string path_;
};

void readSession(benchmark::State& state) {
  const Recording recording(1, kMessages);
  const xlatr::BtrInfo info = recording.info();
  std::vector<xlatr::SessionMessage> sector;
  for ([[maybe_unused]] auto step : state) {
    xlatr::BtrSessionReader reader(info.GetSession(0), true);
    std::uint64_t messages = 0;
    while (reader.readSector(sector)) {
      messages += sector.size();
    }
    if (messages != kMessages) {
      state.SkipWithError("messages are missing");
      return;
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kMessages));
}
BENCHMARK(readSession)->Unit(benchmark::kMillisecond);

// The same on the complete way.
void readFrames(benchmark::State& state) {
  const Recording recording(1, kMessages);
  xlatr::FrameBatch batch;
  xlatr::Account account;
  for ([[maybe_unused]] auto step : state) {
    const auto source = xlatr::openBtrFrames(recording.path());
    while (source->read(batch, account)) {
      benchmark::DoNotOptimize(batch.times().data());
      batch.clear();
    }
  }
  if (account.read() != static_cast<std::uint64_t>(state.iterations()) * kMessages) {
    state.SkipWithError("frames are missing");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(account.read()));
}
BENCHMARK(readFrames)->Unit(benchmark::kMillisecond);

// One batch again and again, whose times go on.
void writeFrames(benchmark::State& state) {
  const Recording recording(1, kMessages);
  xlatr::FrameBatch batch;
  xlatr::Account account;
  if (!xlatr::openBtrFrames(recording.path())->read(batch, account)) {
    state.SkipWithError("frames are missing");
    return;
  }
  const std::string target = recording.path() + ".target";
  xlatr::Account written;
  for ([[maybe_unused]] auto step : state) {
    const auto sink = xlatr::createBtrFrames(target, {}, {});
    for (int batches = 0; batches < 30; ++batches) {
      sink->write(batch, written);
    }
    sink->close();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(written.written() + written.dropped()));
  std::filesystem::remove(target);
}
BENCHMARK(writeFrames)->Unit(benchmark::kMillisecond);

// The directory, with the searches for ends and beginnings; the argument is the number of sessions.
void readDirectory(benchmark::State& state) {
  const auto sessions = static_cast<std::uint32_t>(state.range(0));
  const Recording recording(sessions, std::uint64_t{sessions} * 500);
  for ([[maybe_unused]] auto step : state) {
    const xlatr::BtrInfo info = recording.info();
    if (info.getSessionsCount() != sessions) {
      state.SkipWithError("sessions are missing");
      return;
    }
  }
  state.SetItemsProcessed(state.iterations() * sessions);
}
BENCHMARK(readDirectory)->Arg(1)->Arg(16)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
