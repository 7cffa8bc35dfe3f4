// Calls of frames.h in any order, with any handle, live or not. The input chooses the calls and their arguments; what
// follows them is the content of the source. Nothing may be thrown, and what is said of accounts must hold.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "call_arguments.hpp"
#include "scratch_folder.hpp"
#include "target.hpp"
#include "xlatr/frames.h"

namespace {

using fuzz::require;

constexpr std::array kNames = {"source.trc",  "target.trc", "target.asc",  "target.csv", "target.btr",
                               "target.btrc", "target.mf4", "target.ltrc", "missing.trc"};
constexpr std::size_t kSource = 0;
constexpr std::size_t kMostCalls = 64;

// The handles that were given out, closed ones among them.
template <class Handle>
class Handles {
 public:
  void add(Handle* handle) {
    if (handle != nullptr) {
      handles_.push_back(handle);
    }
  }
  Handle* choose(fuzz::Arguments& arguments) const {
    const std::size_t at = arguments.choice(handles_.size() + 2);
    if (at < handles_.size()) {
      return handles_[at];
    }
    static char object = 0;
    return at == handles_.size() ? nullptr : reinterpret_cast<Handle*>(&object);
  }
  template <typename Close>
  void closeAll(Close close) const {
    for (Handle* const handle : handles_) {
      close(handle);
    }
  }

 private:
  std::vector<Handle*> handles_;
};

template <class Record>
Record sized() {
  Record record{};
  record.size = sizeof record;
  return record;
}

class Calls {
 public:
  Calls(fuzz::Arguments& arguments, std::span<const std::uint8_t> source, const fuzz::ScratchFolder& folder)
      : arguments_(arguments), source_(source) {
    for (const char* const name : kNames) {
      paths_.push_back(folder.path(name));
    }
  }
  ~Calls() {
    streams_.closeAll(xlatr_stream_close);
    sinks_.closeAll(xlatr_sink_close);
    jobs_.closeAll(xlatr_job_close);
    analyses_.closeAll(xlatr_analysis_close);
    comparisons_.closeAll(xlatr_comparison_close);
    require(releasedInputs_ == madeInputs_ && releasedOutputs_ == madeOutputs_);
  }
  Calls(const Calls&) = delete;
  Calls& operator=(const Calls&) = delete;

  void make() {
    static constexpr std::array kCalls = {
        &Calls::openStream, &Calls::merge,        &Calls::useStream,      &Calls::next,    &Calls::closeStream,
        &Calls::createSink, &Calls::write,        &Calls::writeOwn,       &Calls::useSink, &Calls::closeSink,
        &Calls::passArrow,  &Calls::createJob,    &Calls::useJob,         &Calls::runJob,  &Calls::readTables,
        &Calls::openInput,  &Calls::createOutput, &Calls::createAnalysis, &Calls::analyse, &Calls::useAnalysis,
        &Calls::compare};
    (this->*kCalls[arguments_.choice(kCalls.size())])();
  }

 private:
  const char* path() { return arguments_.isNull() ? nullptr : paths_[arguments_.choice(paths_.size())].c_str(); }

  xlatr_selection selection() {
    auto made = sized<xlatr_selection>();
    made.from_ns = std::int64_t{arguments_.byte()} * 1'000'000;
    made.until_ns = made.from_ns + std::int64_t{arguments_.word()} * 1'000'000;
    made.kinds = arguments_.word();
    made.directions = arguments_.byte();
    ids_.front() = {arguments_.word(), arguments_.word(), arguments_.byte(), arguments_.flag() ? 11U : 0U};
    buses_.front() = {arguments_.byte(), arguments_.byte()};
    made.ids = ids_.data();
    made.id_count = arguments_.flag() ? 1 : 0;
    made.buses = buses_.data();
    made.bus_count = arguments_.flag() ? 1 : 0;
    made.other_ids = arguments_.flag() ? 1 : 0;
    made.other_buses = arguments_.flag() ? 1 : 0;
    return made;
  }
  xlatr_changes changes() {
    auto made = sized<xlatr_changes>();
    map_ = {arguments_.byte(), arguments_.byte()};
    made.shift_ns = (std::int64_t{arguments_.byte()} - 128) << (arguments_.byte() % 56);
    made.rebase = arguments_.flag() ? 1 : 0;
    made.buses = map_.data();
    made.bus_pair_count = arguments_.flag() ? 1 : 0;
    made.zone_known = arguments_.flag() ? 1 : 0;
    return made;
  }
  xlatr_sink_options sinkOptions() {
    auto made = sized<xlatr_sink_options>();
    made.replace = 1;
    made.version = arguments_.number();
    made.format = arguments_.flag() ? arguments_.format() : 0;
    made.zipped = arguments_.flag() ? 1 : 0;
    made.compact = arguments_.flag() ? 1 : 0;
    made.keep_partial = arguments_.flag() ? 1 : 0;
    if (arguments_.isNull()) {
      made.split_buses = arguments_.flag() ? 1 : 0;
      made.split_bytes = arguments_.flag() ? std::uint64_t{arguments_.word()} << 8U : 0;
      made.split_ns = std::int64_t{arguments_.byte()} << 28U;
    }
    return made;
  }

  // A place for bytes, which may refuse them.
  xlatr_output output() {
    ++madeOutputs_;
    auto made = sized<xlatr_output>();
    made.context = this;
    made.write = [](void* context, const void* bytes, std::uint64_t count) {
      require(bytes != nullptr && count > 0);
      return static_cast<Calls*>(context)->atOnce_ == 0 ? -1 : 0;
    };
    made.release = [](void* context) { ++static_cast<Calls*>(context)->releasedOutputs_; };
    made.name = arguments_.isNull() ? nullptr : path();
    return made;
  }

  // The source as bytes, of which the function hands out some at a time, or none.
  xlatr_input input() {
    ++madeInputs_;
    atOnce_ = arguments_.byte();
    auto made = sized<xlatr_input>();
    made.context = this;
    made.read = [](void* context, std::uint64_t offset, void* buffer, std::uint64_t bytes) {
      return static_cast<Calls*>(context)->readSource(offset, buffer, bytes);
    };
    made.release = [](void* context) { ++static_cast<Calls*>(context)->releasedInputs_; };
    made.name = arguments_.isNull() ? nullptr : path();
    made.length = arguments_.flag() ? source_.size() : arguments_.word();
    made.length_known = arguments_.flag() ? 1 : 0;
    made.in_order = arguments_.flag() ? 1 : 0;
    return made;
  }
  static std::int32_t cancelSoon(void* context, const xlatr_job_progress* progress) {
    require(context == nullptr && progress->size == sizeof *progress);
    return progress->frames_read > 100 ? 1 : 0;
  }
  std::int64_t readSource(std::uint64_t offset, void* buffer, std::uint64_t bytes) const {
    if (atOnce_ == 0) {
      return -1;
    }
    const std::uint64_t left = source_.size() - std::min<std::uint64_t>(offset, source_.size());
    const auto count = static_cast<std::size_t>(std::min({left, bytes, std::uint64_t{atOnce_}}));
    if (count > 0) {
      std::memcpy(buffer, source_.data() + offset, count);
    }
    return static_cast<std::int64_t>(count);
  }

  void openInput() {
    const xlatr_input made = input();
    auto options = sized<xlatr_stream_options>();
    options.format = arguments_.flag() ? arguments_.format() : 0;
    xlatr_stream* stream = nullptr;
    xlatr_stream_open_input(&made, &options, &stream);
    streams_.add(stream);
  }
  void openStream() {
    xlatr_selection wanted = selection();
    xlatr_changes changed = changes();
    auto options = sized<xlatr_stream_options>();
    options.selection = arguments_.flag() ? &wanted : nullptr;
    options.changes = arguments_.flag() ? &changed : nullptr;
    options.format = arguments_.flag() ? arguments_.format() : 0;
    options.progress = arguments_.flag() ? cancelSoon : nullptr;
    xlatr_stream* stream = nullptr;
    xlatr_stream_open(path(), &options, &stream);
    streams_.add(stream);
  }
  void merge() {
    std::array<xlatr_stream*, 2> parts = {streams_.choose(arguments_), streams_.choose(arguments_)};
    xlatr_stream* merged = nullptr;
    xlatr_stream_merge(parts.data(), static_cast<std::uint32_t>(arguments_.choice(3)), &merged);
    streams_.add(merged);
  }
  void useStream() {
    xlatr_stream* const stream = streams_.choose(arguments_);
    auto head = sized<xlatr_head>();
    auto account = sized<xlatr_account>();
    std::uint64_t bytes = 0;
    std::uint64_t size = 0;
    xlatr_stream_get_head(stream, &head);
    if (xlatr_stream_get_account(stream, &account) == XLATR_OK) {
      require(account.written == 0 && account.dropped <= account.read);
    }
    xlatr_stream_get_position(stream, &bytes, &size);
    auto passedOver = sized<xlatr_passed_over>();
    for (std::uint32_t row = 0; xlatr_stream_get_passed_over(stream, row, &passedOver) == XLATR_OK; ++row) {
      require(passedOver.count > 0 && passedOver.name != nullptr);
    }
    xlatr_stream_error(stream);
  }
  void next() {
    auto batch = sized<xlatr_batch>();
    xlatr_stream* const stream = streams_.choose(arguments_);
    const xlatr_code code = xlatr_stream_next(stream, &batch);
    require((code == XLATR_OK) == (batch.rows > 0));
  }
  void closeStream() { xlatr_stream_close(streams_.choose(arguments_)); }

  void createSink() {
    auto head = sized<xlatr_head>();
    head.start_known = arguments_.flag() ? 1 : 0;
    head.start_ns = std::int64_t{arguments_.word()} << (arguments_.byte() % 48);
    const xlatr_sink_options options = sinkOptions();
    xlatr_sink* sink = nullptr;
    const std::size_t at = 1 + arguments_.choice(paths_.size() - 1);
    xlatr_sink_create(paths_[at].c_str(), &head, &options, &sink);
    sinks_.add(sink);
  }
  void createOutput() {
    const xlatr_output made = output();
    const xlatr_sink_options options = sinkOptions();
    xlatr_sink* sink = nullptr;
    xlatr_sink_create_output(&made, nullptr, &options, &sink);
    sinks_.add(sink);
  }
  // What a stream gives, a sink takes.
  void write() {
    auto batch = sized<xlatr_batch>();
    xlatr_sink* const sink = sinks_.choose(arguments_);
    if (xlatr_stream_next(streams_.choose(arguments_), &batch) == XLATR_OK) {
      xlatr_sink_write(sink, &batch);
    }
  }
  void writeOwn() {
    const std::int64_t time = (std::int64_t{arguments_.byte()} - 128) << (arguments_.byte() % 56);
    const std::uint8_t kind = arguments_.byte();
    const std::uint16_t bus = arguments_.word();
    const std::uint32_t id = arguments_.word() * 3U;
    const std::uint16_t flags = arguments_.word();
    const std::uint16_t dlc = arguments_.byte();
    const auto data = arguments_.take(arguments_.byte());
    const std::array<std::int32_t, 2> dataOffsets = {0, static_cast<std::int32_t>(data.size())};
    const auto text = arguments_.take(arguments_.byte());
    const std::array<std::int32_t, 2> textOffsets = {0, static_cast<std::int32_t>(text.size())};
    const std::uint8_t hasText = arguments_.flag() ? 1 : 0;
    const std::uint32_t value = arguments_.word();
    const std::size_t attribute = arguments_.choice(XLATR_ATTRIBUTE_COUNT);
    auto batch = sized<xlatr_batch>();
    batch.rows = 1;
    batch.time_ns = &time;
    batch.kind = &kind;
    batch.bus = &bus;
    batch.id = &id;
    batch.flags = &flags;
    batch.dlc = &dlc;
    batch.data = data.data();
    batch.data_offsets = dataOffsets.data();
    batch.text = reinterpret_cast<const char*>(text.data());
    batch.text_offsets = textOffsets.data();
    batch.text_validity = &hasText;
    batch.attributes = 1U << attribute;
    batch.attribute[attribute] = &value;
    xlatr_sink_write(sinks_.choose(arguments_), &batch);
  }
  void useSink() {
    xlatr_sink* const sink = sinks_.choose(arguments_);
    checkAccount(sink, xlatr_sink_get_account);
    auto written = sized<xlatr_written>();
    xlatr_sink_get_written(sink, arguments_.byte(), &written);
    xlatr_sink_error(sink);
    if (arguments_.flag()) {
      xlatr_sink_finish(sink);
    }
  }
  void closeSink() { xlatr_sink_close(sinks_.choose(arguments_)); }

  void passArrow() {
    ArrowArrayStream frames{};
    const std::uint32_t attributes = arguments_.word();
    if (xlatr_stream_export_arrow(streams_.choose(arguments_), attributes, &frames) == XLATR_OK) {
      xlatr_sink_write_arrow(sinks_.choose(arguments_), &frames);
      require(frames.release == nullptr);
    }
  }

  void createJob() {
    const std::array<const char*, 2> sources = {paths_[kSource].c_str(), path()};
    const xlatr_sink_options sink = sinkOptions();
    const xlatr_selection wanted = selection();
    const xlatr_changes changed = changes();
    auto options = sized<xlatr_job_options>();
    options.sources = sources.data();
    options.source_count = static_cast<std::uint32_t>(arguments_.choice(3));
    options.target = path();
    options.sink = &sink;
    options.selection = arguments_.flag() ? &wanted : nullptr;
    options.changes = arguments_.flag() ? &changed : nullptr;
    std::array<const xlatr_input*, 1> inputs{};
    xlatr_input bytes{};
    if (arguments_.isNull()) {
      bytes = input();
      inputs.front() = &bytes;
      options.inputs = inputs.data();
      options.input_count = 1;
    }
    xlatr_output bytesOut{};
    if (arguments_.isNull()) {
      bytesOut = output();
      options.output = &bytesOut;
    }
    options.strict = arguments_.flag() ? 1 : 0;
    xlatr_job* job = nullptr;
    xlatr_job_create(&options, &job);
    jobs_.add(job);
  }
  void useJob() {
    xlatr_job* const job = jobs_.choose(arguments_);
    auto head = sized<xlatr_head>();
    auto progress = sized<xlatr_job_progress>();
    xlatr_job_get_head(job, &head);
    xlatr_job_get_progress(job, &progress);
    auto passedOver = sized<xlatr_passed_over>();
    xlatr_job_get_passed_over(job, arguments_.byte(), &passedOver);
    auto written = sized<xlatr_written>();
    xlatr_job_get_written(job, arguments_.byte(), &written);
    xlatr_job_error(job);
    if (arguments_.isNull()) {
      xlatr_job_cancel(job);
    }
    if (arguments_.isNull()) {
      xlatr_job_close(job);
    }
  }
  void runJob() {
    xlatr_job* const job = jobs_.choose(arguments_);
    if (xlatr_job_run(job) == XLATR_OK) {
      checkAccount(job, xlatr_job_get_account);
    }
  }
  template <class Handle>
  static void checkAccount(Handle* handle, xlatr_code (*get)(Handle*, xlatr_account*)) {
    auto account = sized<xlatr_account>();
    if (get(handle, &account) == XLATR_OK) {
      require(account.read == account.written + account.dropped && account.commented <= account.written);
    }
  }

  void createAnalysis() {
    auto options = sized<xlatr_analysis_options>();
    options.nominal_rate = arguments_.word();
    options.data_rate = arguments_.word();
    options.lin_rate = arguments_.word();
    options.stuffing = static_cast<std::uint32_t>(arguments_.choice(4));
    options.gap_ns = arguments_.word();
    options.burst_ns = arguments_.word();
    options.most_ids = arguments_.byte();
    xlatr_analysis* analysis = nullptr;
    xlatr_analysis_create(&options, &analysis);
    analyses_.add(analysis);
  }
  void analyse() {
    xlatr_analysis* const analysis = analyses_.choose(arguments_);
    xlatr_stream* const stream = streams_.choose(arguments_);
    auto batch = sized<xlatr_batch>();
    if (arguments_.flag() && xlatr_stream_next(stream, &batch) == XLATR_OK) {
      xlatr_analysis_add(analysis, &batch);
    }
    xlatr_analysis_run(analysis, stream);
  }
  void useAnalysis() {
    xlatr_analysis* const analysis = analyses_.choose(arguments_);
    auto summary = sized<xlatr_analysis_summary>();
    xlatr_analysis_get_summary(analysis, &summary);
    std::uint64_t traffic = summary.other_bus_frames;
    auto bus = sized<xlatr_bus_statistics>();
    for (std::uint32_t row = 0; xlatr_analysis_get_bus(analysis, row, &bus) == XLATR_OK; ++row) {
      traffic += bus.traffic;
      require(bus.highest_load >= bus.load && row < summary.buses);
    }
    require(traffic == summary.traffic);
    auto id = sized<xlatr_id_statistics>();
    for (std::uint32_t row = 0; xlatr_analysis_get_id(analysis, row, &id) == XLATR_OK; ++row) {
      require(id.frames == 1 + id.cycles + id.steps_back && row < summary.ids);
      require(id.cycle_min_ns <= id.cycle_p99_ns && id.cycle_p99_ns <= id.cycle_max_ns);
    }
    xlatr_analysis_error(analysis);
    if (arguments_.isNull()) {
      xlatr_analysis_close(analysis);
    }
  }

  void compare() {
    auto options = sized<xlatr_comparison_options>();
    options.tolerance_known = arguments_.flag() ? 1 : 0;
    options.tolerance_ns = std::uint64_t{arguments_.word()} << (arguments_.byte() % 48);
    options.texts = arguments_.flag() ? 1 : 0;
    options.attributes = arguments_.flag() ? 1 : 0;
    options.kinds = arguments_.word();
    options.ahead = arguments_.byte();
    options.most_differences = arguments_.byte();
    xlatr_comparison* comparison = nullptr;
    xlatr_comparison_create(&options, &comparison);
    auto summary = sized<xlatr_comparison_summary>();
    xlatr_stream* const first = streams_.choose(arguments_);
    xlatr_stream* const second = streams_.choose(arguments_);
    if (xlatr_comparison_run(comparison, first, second) == XLATR_OK &&
        xlatr_comparison_get_summary(comparison, &summary) == XLATR_OK) {
      const std::uint64_t both = summary.equal + summary.different;
      require(summary.first_frames == both + summary.only_first);
      require(summary.second_frames == both + summary.only_second);
    }
    auto difference = sized<xlatr_difference>();
    for (std::uint32_t row = 0; xlatr_comparison_get_difference(comparison, row, &difference) == XLATR_OK; ++row) {
      require((difference.fields != 0) == (difference.first != nullptr && difference.second != nullptr));
    }
    xlatr_comparison_error(comparison);
    xlatr_comparison_close(comparison);
    comparisons_.add(comparison);
  }

  void readTables() {
    auto capacity = sized<xlatr_capacity>();
    TraceFormat format = XLATR_FORMAT_NONE;
    const std::uint32_t number = arguments_.byte();
    xlatr_get_capacity(number, &capacity);
    xlatr_get_format(path(), &format);
    xlatr_format_description(arguments_.format());
    xlatr_format_extension(arguments_.format());
    xlatr_kind_name(number);
    xlatr_attribute_name(number);
    xlatr_field_name(number);
    xlatr_remark_name(number);
    xlatr_remark_text(number);
    xlatr_remark_class(number);
    xlatr_code_text(static_cast<xlatr_code>(number) - 128);
    require(xlatr_version() > 0);
  }

  fuzz::Arguments& arguments_;
  std::span<const std::uint8_t> source_;
  std::uint8_t atOnce_ = 0;
  std::size_t madeInputs_ = 0;
  std::size_t releasedInputs_ = 0;
  std::size_t madeOutputs_ = 0;
  std::size_t releasedOutputs_ = 0;
  std::vector<std::string> paths_;
  Handles<xlatr_stream> streams_;
  Handles<xlatr_sink> sinks_;
  Handles<xlatr_job> jobs_;
  Handles<xlatr_analysis> analyses_;
  Handles<xlatr_comparison> comparisons_;
  std::array<xlatr_id_rule, 1> ids_{};
  std::array<xlatr_bus_rule, 1> buses_{};
  std::array<std::uint16_t, 2> map_{};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  const std::span<const std::uint8_t> input(data, size);
  const std::size_t calls = size / 2;
  folder.write(kNames[kSource], input.subspan(calls));
  fuzz::Arguments arguments(input.first(calls), folder);
  Calls made(arguments, input.subspan(calls), folder);
  for (std::size_t count = 0; count < kMostCalls && !arguments.atEnd(); ++count) {
    made.make();
  }
  return 0;
}
