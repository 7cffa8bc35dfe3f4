// Whole conversions of TRC files and ASC logs, from xlatr_convert to the closed target.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>

#include "tracegen/generator.hpp"
#include "xlatr/frames.h"
#include "xlatr/objects.h"
#include "xlatr/xlatr.h"

namespace {

constexpr std::uint64_t kDefaultFrames = 500000;

// Null if the variable is not set.
const char* environment(const char* name) {
  // Nothing here changes the environment, so no other thread can interfere.
  return std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
}

std::uint64_t framesFromEnvironment() {
  const char* const text = environment("XLATR_BENCH_FRAMES");
  return text == nullptr ? kDefaultFrames : std::stoull(text);
}

// A fresh folder for source and targets; removed with them at the end.
class BenchFolder {
 public:
  BenchFolder() {
    const char* const chosen = environment("XLATR_BENCH_FOLDER");
    const std::filesystem::path parent = chosen == nullptr ? std::filesystem::temp_directory_path() : chosen;
    std::random_device random;
    do {
      folder_ = parent / ("xlatr_bench_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder_));
  }
  ~BenchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  BenchFolder(const BenchFolder&) = delete;
  BenchFolder& operator=(const BenchFolder&) = delete;

  [[nodiscard]] std::string path(const std::string& name) const { return (folder_ / name).string(); }

 private:
  std::filesystem::path folder_;
};

struct Source {
  std::string path;
  tracegen::RecordingSize size;
};

const BenchFolder& benchFolder() {
  static const BenchFolder folder;
  return folder;
}

Source makeSource(const std::string& name, bool plain) {
  tracegen::RecordingOptions options;
  if (plain) {
    options.traffic.makePlain();
  }
  options.maxMessages = framesFromEnvironment();
  Source source{.path = benchFolder().path(name), .size = {}};
  source.size = tracegen::generateFile(options, source.path);
  return source;
}

// Only classic data frames, which other programs understand too.
const Source& plainSource() {
  static const Source source = makeSource("plain.trc", true);
  return source;
}

// What a vehicle records: with CAN FD, remote frames, errors, events.
const Source& mixedSource() {
  static const Source source = makeSource("mixed.trc", false);
  return source;
}

// Plain traffic in this many sessions of a hardware logger.
Source makeSessions(std::uint32_t sessions) {
  tracegen::RecordingOptions options;
  options.traffic.makePlain();
  options.maxMessages = framesFromEnvironment();
  options.form = tracegen::Form::Btr;
  options.btr = {.sessions = sessions, .circular = true};
  Source source{.path = benchFolder().path("sessions" + std::to_string(sessions) + ".btr"), .size = {}};
  source.size = tracegen::generateFile(options, source.path);
  return source;
}

const Source& sessions(std::int64_t count) {
  static const Source one = makeSessions(1);
  static const Source thousand = makeSessions(1000);
  return count == 1 ? one : thousand;
}

void convert(const std::string& source, const std::string& target, TraceFormat format, double version) {
  ConversionOption option{};
  option.tag = XLATR_OPTION_TARGET_VERSION;
  option.value.version = version;
  ConversionOptions options{};
  options.target_format = format;
  options.option_count = 1;
  options.options = &option;
  ConversionResult result{};
  const int32_t status = xlatr_convert(source.c_str(), target.c_str(), &options, &result);
  const std::string text = result.text == nullptr ? "" : result.text;
  xlatr_free(&result);
  if (status != XLATR_SUCCESS) {
    throw std::runtime_error(text);
  }
}

// The same on the complete way.
void convertCompletely(const std::string& source, const std::string& target, TraceFormat format, double version) {
  xlatr_sink_options sink{};
  sink.size = sizeof sink;
  sink.format = format;
  sink.version = version;
  sink.replace = 1;
  const char* const sources[] = {source.c_str()};
  xlatr_job_options options{};
  options.size = sizeof options;
  options.sources = sources;
  options.source_count = 1;
  options.target = target.c_str();
  options.sink = &sink;
  xlatr_job* job = nullptr;
  const bool done = xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_OK;
  const std::string text = done ? "" : xlatr_job_error(job);
  xlatr_job_close(job);
  if (!done) {
    throw std::runtime_error(text);
  }
}

using Conversion = void (*)(const std::string& source, const std::string& target, TraceFormat format, double version);

void measure(benchmark::State& state, const Source& source, TraceFormat format, double version,
             Conversion conversion = convert) {
  const std::string target = benchFolder().path("target");  // gets the extension of its format
  try {
    for ([[maybe_unused]] auto step : state) {
      conversion(source.path, target, format, version);
    }
  } catch (const std::runtime_error& failure) {
    state.SkipWithError(failure.what());
    return;
  }
  const auto rounds = static_cast<std::int64_t>(state.iterations());
  state.SetItemsProcessed(rounds * static_cast<std::int64_t>(source.size.messages));
  state.SetBytesProcessed(rounds * static_cast<std::int64_t>(source.size.bytes));
}

// The same frames as an ASC log of this version. The library itself makes it from the TRC file, since only the reading
// is measured.
Source makeLog(const std::string& name, double version) {
  Source log{.path = benchFolder().path(name), .size = plainSource().size};
  convert(plainSource().path, log.path, XLATR_FORMAT_ASC, version);
  log.size.bytes = std::filesystem::file_size(log.path);
  return log;
}

const Source& plainLog(std::int64_t version) {
  static const Source log7 = makeLog("plain7.asc", 7.0);
  static const Source log8 = makeLog("plain8.asc", 8.0);
  return version < 80 ? log7 : log8;
}

// The argument is the target version times ten.
void convertPlain(benchmark::State& state) {
  measure(state, plainSource(), XLATR_FORMAT_TRC, static_cast<double>(state.range(0)) / 10);
}

void convertMixed(benchmark::State& state) {
  measure(state, mixedSource(), XLATR_FORMAT_TRC, static_cast<double>(state.range(0)) / 10);
}

void convertPlainToAsc(benchmark::State& state) {
  measure(state, plainSource(), XLATR_FORMAT_ASC, static_cast<double>(state.range(0)) / 10);
}

// The arguments are the versions of the source and of the target, both times ten.
void convertPlainFromAsc(benchmark::State& state) {
  measure(state, plainLog(state.range(0)), XLATR_FORMAT_TRC, static_cast<double>(state.range(1)) / 10);
}

void convertPlainToCsv(benchmark::State& state) {
  measure(state, plainSource(), XLATR_FORMAT_CSV, 1.0);
}

void convertMixedToCsv(benchmark::State& state) {
  measure(state, mixedSource(), XLATR_FORMAT_CSV, 1.0);
}

// The argument is the number of sessions.
void convertSessionsToCsv(benchmark::State& state) {
  measure(state, sessions(state.range(0)), XLATR_FORMAT_CSV, 1.0);
}

void convertSessionsToTrc(benchmark::State& state) {
  measure(state, sessions(1), XLATR_FORMAT_TRC, 2.1);
}

void convertPlainToBtr(benchmark::State& state) {
  measure(state, plainSource(), XLATR_FORMAT_BTR, 3.0);
}

// The argument is the version of the source times ten.
void convertPlainLogToCsv(benchmark::State& state) {
  measure(state, plainLog(state.range(0)), XLATR_FORMAT_CSV, 1.0);
}

// The same file message by message through the exported functions, without writing anything.
void readPlainByObjects(benchmark::State& state) {
  TrcInfo* const info = TrcInfo_Construct_2(plainSource().path.c_str());
  TrcReader* const reader = TrcReader_Construct(info);
  std::int64_t count = 0;
  for ([[maybe_unused]] auto step : state) {
    TrcReader_setActive(reader, true);
    MessageCan* message = nullptr;
    while (TrcReader_ReadNextMessage(reader, &message)) {
      benchmark::DoNotOptimize(MessageCan_getValid(message));
      MessageCan_Destruct(message);
      ++count;
    }
  }
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(info);
  state.SetItemsProcessed(count);
}

// The same traffic in another form, written by the generator.
Source makeForm(const std::string& name, tracegen::Form form, bool plain) {
  tracegen::RecordingOptions options;
  if (plain) {
    options.traffic.makePlain();
  }
  options.form = form;
  options.maxMessages = framesFromEnvironment();
  Source source{.path = benchFolder().path(name), .size = {}};
  source.size = tracegen::generateFile(options, source.path);
  return source;
}

// The arguments are the target format, and its version times ten.
void convertPlainFromBtrc(benchmark::State& state) {
  static const Source source = makeForm("plain.btrc", tracegen::Form::Btrc, true);
  measure(state, source, static_cast<TraceFormat>(state.range(0)), static_cast<double>(state.range(1)) / 10);
}

void convertMixedFromBtrc(benchmark::State& state) {
  static const Source source = makeForm("mixed.btrc", tracegen::Form::Btrc, false);
  measure(state, source, static_cast<TraceFormat>(state.range(0)), static_cast<double>(state.range(1)) / 10);
}

void convertPlainToBtrc(benchmark::State& state) {
  measure(state, plainSource(), XLATR_FORMAT_BTRC, 1.0);
}

// The plain traffic as the library writes it into this format.
Source makeOf(const std::string& name, TraceFormat format, double version) {
  Source source{.path = benchFolder().path(name), .size = plainSource().size};
  convert(plainSource().path, source.path, format, version);
  source.size.bytes = std::filesystem::file_size(source.path);
  return source;
}

const Source& plainBtrc() {
  static const Source source = makeForm("pair.btrc", tracegen::Form::Btrc, true);
  return source;
}

const Source& plainMf4() {
  static const Source source = makeOf("pair.mf4", XLATR_FORMAT_MF4, 4.1);
  return source;
}

const Source& plainLog8() {
  return plainLog(80);
}

const Source& oneSession() {
  return sessions(1);
}

const Source& linTrace() {
  static const Source source = makeForm("pair.ltrc", tracegen::Form::Lin, true);
  return source;
}

// What both ways convert.
struct Pair {
  const char* name;
  const Source& (*source)();
  TraceFormat format;
  double version;
};

constexpr Pair kPairs[] = {
    {"TRC to TRC", plainSource, XLATR_FORMAT_TRC, 2.1},       {"TRC to ASC", plainSource, XLATR_FORMAT_ASC, 8.0},
    {"TRC to CSV", plainSource, XLATR_FORMAT_CSV, 1.0},       {"TRC to BTR", plainSource, XLATR_FORMAT_BTR, 3.0},
    {"TRC to BTRC", plainSource, XLATR_FORMAT_BTRC, 1.0},     {"TRC to MF4", plainSource, XLATR_FORMAT_MF4, 4.1},
    {"mixed TRC to TRC", mixedSource, XLATR_FORMAT_TRC, 2.1}, {"mixed TRC to CSV", mixedSource, XLATR_FORMAT_CSV, 1.0},
    {"ASC to TRC", plainLog8, XLATR_FORMAT_TRC, 2.1},         {"ASC to CSV", plainLog8, XLATR_FORMAT_CSV, 1.0},
    {"LIN to ASC", linTrace, XLATR_FORMAT_ASC, 8.0},          {"LIN to CSV", linTrace, XLATR_FORMAT_CSV, 1.0},
    {"BTR to TRC", oneSession, XLATR_FORMAT_TRC, 2.1},        {"BTR to ASC", oneSession, XLATR_FORMAT_ASC, 8.0},
    {"BTR to CSV", oneSession, XLATR_FORMAT_CSV, 1.0},        {"BTRC to TRC", plainBtrc, XLATR_FORMAT_TRC, 2.1},
    {"BTRC to ASC", plainBtrc, XLATR_FORMAT_ASC, 8.0},        {"BTRC to CSV", plainBtrc, XLATR_FORMAT_CSV, 1.0},
    {"MF4 to TRC", plainMf4, XLATR_FORMAT_TRC, 2.1},
};

// The argument is the pair.
void convertCompatible(benchmark::State& state) {
  const Pair& pair = kPairs[state.range(0)];
  state.SetLabel(pair.name);
  measure(state, pair.source(), pair.format, pair.version);
}

void convertComplete(benchmark::State& state) {
  const Pair& pair = kPairs[state.range(0)];
  state.SetLabel(pair.name);
  measure(state, pair.source(), pair.format, pair.version, convertCompletely);
}

BENCHMARK(readPlainByObjects)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(convertPlain)
    ->ArgName("version_x10")
    ->Arg(20)
    ->Arg(21)
    ->Arg(11)
    ->Arg(13)
    ->Arg(30)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(convertMixed)
    ->ArgName("version_x10")
    ->Arg(20)
    ->Arg(21)
    ->Arg(30)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(convertPlainToCsv)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(convertMixedToCsv)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

BENCHMARK(convertSessionsToCsv)
    ->ArgName("sessions")
    ->Arg(1)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(convertSessionsToTrc)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(convertPlainToBtr)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

BENCHMARK(convertPlainToAsc)
    ->ArgName("version_x10")
    ->Arg(70)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(convertPlainFromAsc)
    ->ArgNames({"source_x10", "version_x10"})
    ->Args({70, 21})
    ->Args({80, 21})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

BENCHMARK(convertPlainLogToCsv)
    ->ArgName("source_x10")
    ->Arg(70)
    ->Arg(80)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

BENCHMARK(convertPlainFromBtrc)
    ->ArgNames({"format", "version_x10"})
    ->Args({XLATR_FORMAT_TRC, 21})
    ->Args({XLATR_FORMAT_ASC, 80})
    ->Args({XLATR_FORMAT_CSV, 10})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(convertMixedFromBtrc)
    ->ArgNames({"format", "version_x10"})
    ->Args({XLATR_FORMAT_TRC, 21})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(convertPlainToBtrc)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

BENCHMARK(convertCompatible)
    ->DenseRange(0, std::size(kPairs) - 1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
// It runs in this thread alone. What polls in the lowest scheduling class since the last conversion on the compatible
// way is not counted.
BENCHMARK(convertComplete)->DenseRange(0, std::size(kPairs) - 1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
