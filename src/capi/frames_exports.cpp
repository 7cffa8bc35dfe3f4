// The functions of frames.h: every one looks its handle up, does its work and turns what went wrong into a code.
#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "capi/caller_input.hpp"
#include "capi/caller_output.hpp"
#include "capi/frame_answers.hpp"
#include "capi/frame_handles.hpp"
#include "capi/frame_records.hpp"
#include "capi/open_stream.hpp"
#include "frames/arrow_export.hpp"
#include "frames/arrow_import.hpp"
#include "frames/frame_capacity.hpp"
#include "frames/frame_failure.hpp"
#include "frames/frame_job.hpp"
#include "frames/merged_frames.hpp"
#include "frames/split_target.hpp"
#include "frames/trace_file.hpp"
#include "frames/wanted_frames.hpp"
#include "frames/watched_frames.hpp"
#include "io/format.hpp"
#include "io/input_file.hpp"
#include "io/output_target.hpp"
#include "util/mutex.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {
namespace {

// ---- what the handles stand for

struct Sink {
  std::string error;
  std::unique_ptr<SplitTarget> target;  // null if creating failed, and once it is finished
  FrameBatch batch;
  Account account;
  std::vector<WrittenFile> files;  // as told last
};

struct Job {
  std::string error;
  JobSettings settings;
  xlatr_progress_function callback = nullptr;
  void* context = nullptr;
  std::atomic<bool> started{false};
  std::atomic<bool> cancelled{false};
  JobReport report;
  Mutex mutex;
  ReadProgress progress XLATR_GUARDED_BY(mutex);
};

HandleTable<xlatr_sink, Sink>& sinks() {
  return table<xlatr_sink, Sink>();
}
HandleTable<xlatr_job, Job>& jobs() {
  return table<xlatr_job, Job>();
}

template <class Row, class Record>
xlatr_code giveRow(const std::vector<Row>& rows, std::uint32_t row, Record* caller) {
  return row < rows.size() ? give(recordOf(rows[row]), caller) : XLATR_END;
}

// ---- streams

const char* pathOf(const char* path) {
  if (path == nullptr || *path == '\0') {
    refuse("the path is missing");
  }
  return path;
}

xlatr_code openStream(Stream& stream, const InputSource& input, const xlatr_stream_options* options) {
  xlatr_stream_options known;
  if (!readRecord(options, known)) {
    refuse("options: the record does not begin with its size");
  }
  FrameSelection selection = selectionOf(known.selection);
  FrameChanges changes = changesOf(known.changes);
  std::unique_ptr<FrameSource> source = openTrace(input, known.format);
  stream.size = input.size().value_or(0);
  if (known.progress != nullptr) {
    source = std::make_unique<WatchedFrames>(
        std::move(source), stream.size, [watch = known.progress, context = known.context](const ReadProgress& now) {
          return wantsToGoOn(watch, context, now);
        });
  }
  stream.source = std::make_unique<WantedFrames>(std::move(source), std::move(selection), std::move(changes));
  return XLATR_OK;
}

// Looks all handles up before it takes one of them over.
xlatr_code mergeStreams(Stream& merged, xlatr_stream** parts, std::uint32_t count) {
  if (parts == nullptr || count == 0) {
    refuse("there are no streams to merge");
  }
  std::vector<std::shared_ptr<Stream>> objects;
  for (std::uint32_t at = 0; at < count; ++at) {
    objects.push_back(streams().find(parts[at]));
    if (objects.back() == nullptr || std::ranges::count(objects, objects.back()) > 1) {
      return XLATR_ERROR_HANDLE;
    }
    static_cast<void>(sourceOf(*objects.back()));
  }
  std::vector<std::unique_ptr<FrameSource>> sources;
  sources.reserve(count);
  for (std::uint32_t at = 0; at < count; ++at) {
    sources.push_back(std::move(objects[at]->source));
    merged.size += objects[at]->size;
    merged.account.add(objects[at]->account);
    static_cast<void>(streams().remove(parts[at]));
  }
  merged.source = std::make_unique<MergedFrames>(std::move(sources));
  return XLATR_OK;
}

xlatr_code readNext(Stream& stream, xlatr_batch* out) {
  FrameSource& source = sourceOf(stream);
  stream.batch.clear();
  bool more = true;
  while (more && stream.batch.empty()) {
    more = source.read(stream.batch, stream.account);
  }
  const xlatr_code given = give(recordOf(stream.batch), out);
  return given == XLATR_OK && stream.batch.empty() ? XLATR_END : given;
}

// ---- sinks

SplitTarget& openTargetOf(const Sink& sink) {
  if (sink.target == nullptr) {
    refuse("the sink was not created, or is finished");
  }
  return *sink.target;
}

xlatr_code createSink(Sink& sink, OutputTarget to, const xlatr_head* head, const xlatr_sink_options* options) {
  SinkTarget wanted = targetOf(options);
  auto target = std::make_unique<SplitTarget>(std::move(to), std::move(wanted.writing), wanted.split);
  target->create(headOf(head));
  sink.target = std::move(target);
  return XLATR_OK;
}

xlatr_code finishSink(Sink& sink) {
  static_cast<void>(openTargetOf(sink));
  const std::unique_ptr<SplitTarget> target = std::move(sink.target);  // finished, even if it fails
  target->writeRest(sink.account);
  target->finish();
  sink.files = target->files();
  return XLATR_OK;
}

xlatr_code writeBatch(Sink& sink, const xlatr_batch* caller) {
  SplitTarget& target = openTargetOf(sink);
  xlatr_batch batch;
  if (caller == nullptr || !readRecord(caller, batch)) {
    refuse("batch: there is none, or the record does not begin with its size");
  }
  requireValid(batch);
  for (std::uint64_t row = 0; row < batch.rows;) {
    sink.batch.clear();
    while (row < batch.rows && !sink.batch.full()) {
      sink.batch.append(frameOf(batch, static_cast<std::size_t>(row++)));
    }
    sink.account.addRead(sink.batch.size());
    target.write(sink.batch, sink.account);
  }
  return XLATR_OK;
}

xlatr_code writeArrow(Sink& sink, FrameSource& source) {
  SplitTarget& target = openTargetOf(sink);
  sink.batch.clear();
  while (source.read(sink.batch, sink.account)) {
    target.write(sink.batch, sink.account);
    sink.batch.clear();
  }
  return XLATR_OK;
}

// ---- jobs

// What a job reads and writes that is no file.
struct CallerEnds {
  std::vector<CallerInput> inputs;
  std::optional<CallerOutput> output;
};

// Before anything can fail, so that all are released.
void takeEnds(const xlatr_job_options* options, CallerEnds& ends) {
  xlatr_job_options known;
  if (!readRecord(options, known)) {
    return;
  }
  if (known.output != nullptr) {
    ends.output.emplace(known.output);
  }
  if (known.inputs != nullptr) {
    ends.inputs.reserve(known.input_count);
    for (std::uint32_t at = 0; at < known.input_count; ++at) {
      ends.inputs.emplace_back(known.inputs[at]);
    }
  }
}

xlatr_code createJob(Job& job, const xlatr_job_options* options, CallerEnds& ends) {
  xlatr_job_options known;
  if (options == nullptr || !readRecord(options, known)) {
    refuse("options: there are none, or the record does not begin with its size");
  }
  job.settings = settingsOf(known);
  if (ends.output) {
    job.settings.target = std::move(*ends.output).target();
  }
  for (CallerInput& input : ends.inputs) {
    job.settings.sources.push_back({std::move(input).source(), known.source_format});
  }
  job.callback = known.progress;
  job.context = known.context;
  return XLATR_OK;
}

bool goesOn(Job& job, const ReadProgress& progress) {
  {
    const MutexLock lock(job.mutex);
    job.progress = progress;
  }
  return wantsToGoOn(job.callback, job.context, progress) && !job.cancelled.load();
}

xlatr_code runJob(Job& job) {
  if (job.started.exchange(true)) {
    refuse("the job has run already");
  }
  if (job.cancelled.load()) {
    throw FrameFailure(FrameProblem::Cancelled, job.settings.target.name() + ": the conversion was cancelled");
  }
  xlatr::runJob(job.settings, job.report, [&job](const ReadProgress& progress) { return goesOn(job, progress); });
  return XLATR_OK;
}

// ---- formats

struct CapacityRow {
  const FormatDescriptor* format;
  const FrameCapacity* capacity;
};

std::vector<CapacityRow> capacityRows() {
  std::vector<CapacityRow> rows;
  for (const FormatDescriptor* const format : formatRegistry()) {
    if (format->frameCapacities == nullptr) {
      continue;
    }
    for (const FrameCapacity& capacity : format->frameCapacities()) {
      rows.push_back({format, &capacity});
    }
  }
  return rows;
}

xlatr_capacity recordOf(const CapacityRow& row) {
  const FrameCapacity& capacity = *row.capacity;
  xlatr_capacity record{};
  record.format = row.format->format;
  record.version = capacity.version;
  record.comments = capacity.comments ? 1 : 0;
  for (std::size_t at = 0; at < kFrameKindCount; ++at) {
    const KindCapacity& kind = capacity.kinds[at];
    const auto bit = [at](bool condition) { return std::uint32_t{condition} << at; };
    record.kinds |= bit(kind.held);
    record.directions |= bit(kind.held && kind.direction);
    record.texts |= bit(kind.held && kind.text != TextCapacity::None);
    record.attributes |= kind.held ? kind.attributes : 0;
  }
  record.fd = capacity.fd ? 1 : 0;
  record.fd_bits = capacity.bitsOfFd ? 1 : 0;
  record.xl = capacity.xl ? 1 : 0;
  record.longest_data = capacity.longestData;
  record.remote_dlc = capacity.remoteDlc ? 1 : 0;
  record.lowest_bus = capacity.lowestBus;
  record.highest_bus = capacity.highestBus;
  record.zone = capacity.zone ? 1 : 0;
  record.resolution_ns = capacity.resolutionNs;
  record.earliest_ns = capacity.earliestNs;
  record.latest_ns = capacity.latestNs;
  record.start_resolution_ns = capacity.startResolutionNs;
  return record;
}

// A text of a table, which is a literal and so ends in a zero; null beyond the last.
template <typename Enumeration>
const char* nameOf(std::string_view (*name)(Enumeration), std::uint32_t value, std::size_t count) {
  return value < count ? name(static_cast<Enumeration>(value)).data() : nullptr;
}

const FormatDescriptor* knownFormat(TraceFormat format) noexcept {
  const FormatDescriptor& known = formatOf(format);
  return known.format == XLATR_FORMAT_NONE ? nullptr : &known;
}

}  // namespace
}  // namespace xlatr::capi

using namespace xlatr;        // NOLINT(google-build-using-namespace): this file is all border
using namespace xlatr::capi;  // NOLINT(google-build-using-namespace)

std::uint32_t xlatr_version(void) {
  return XLATR_VERSION_MAJOR << 16U | XLATR_VERSION_MINOR << 8U | XLATR_VERSION_PATCH;
}

const char* xlatr_code_text(xlatr_code code) {
  switch (code) {
    case XLATR_OK:
      return "all is well";
    case XLATR_END:
      return "there is no more";
    case XLATR_ERROR_ARGUMENT:
      return "an argument is missing or has no such value";
    case XLATR_ERROR_HANDLE:
      return "there is no live handle of this kind";
    case XLATR_ERROR_NOT_FOUND:
      return "there is no such file";
    case XLATR_ERROR_NOT_A_TRACE:
      return "the file is no trace";
    case XLATR_ERROR_NOT_WRITTEN:
      return "the format is not written, or has no such version";
    case XLATR_ERROR_TARGET_EXISTS:
      return "the target exists";
    case XLATR_ERROR_TARGET_IS_SOURCE:
      return "the target is the source";
    case XLATR_ERROR_CANCELLED:
      return "it was cancelled";
    case XLATR_ERROR_SYSTEM:
      return "the system refused to read the source";
    case XLATR_ERROR_TARGET:
      return "the system refused to write the target";
    case XLATR_ERROR_INCOMPLETE:
      return "not everything came over";
    case XLATR_ERROR_MEMORY:
      return "there is no memory left";
    default:
      return "something unexpected happened";
  }
}

const char* xlatr_kind_name(std::uint32_t kind) {
  return nameOf(frameKindName, kind, kFrameKindCount);
}

const char* xlatr_attribute_name(std::uint32_t attribute) {
  return nameOf(frameAttributeName, attribute, kFrameAttributeCount);
}

const char* xlatr_remark_name(std::uint32_t remark) {
  return remark < kRemarkCount ? remarkTable()[remark].name.data() : nullptr;
}

const char* xlatr_remark_text(std::uint32_t remark) {
  return remark < kRemarkCount ? remarkTable()[remark].text.data() : nullptr;
}

std::int32_t xlatr_remark_class(std::uint32_t remark) {
  return remark < kRemarkCount ? static_cast<std::int32_t>(remarkTable()[remark].kind) : -1;
}

xlatr_code xlatr_stream_open(const char* path, const xlatr_stream_options* options, xlatr_stream** stream) {
  return openHandle(streams(), stream,
                    [&](Stream& opened) { return openStream(opened, std::string(pathOf(path)), options); });
}

xlatr_code xlatr_stream_open_input(const xlatr_input* input, const xlatr_stream_options* options,
                                   xlatr_stream** stream) {
  CallerInput taken(input);
  return openHandle(streams(), stream,
                    [&](Stream& opened) { return openStream(opened, std::move(taken).source(), options); });
}

xlatr_code xlatr_stream_merge(xlatr_stream** parts, std::uint32_t count, xlatr_stream** merged) {
  return openHandle(streams(), merged, [&](Stream& opened) { return mergeStreams(opened, parts, count); });
}

xlatr_code xlatr_stream_get_head(xlatr_stream* stream, xlatr_head* head) {
  return with(streams(), stream, [&](Stream& open) { return give(recordOf(sourceOf(open).head()), head); });
}

xlatr_code xlatr_stream_next(xlatr_stream* stream, xlatr_batch* batch) {
  return with(streams(), stream, [&](Stream& open) { return readNext(open, batch); });
}

xlatr_code xlatr_stream_get_account(xlatr_stream* stream, xlatr_account* account) {
  return with(streams(), stream, [&](Stream& open) { return give(recordOf(open.account), account); });
}

xlatr_code xlatr_stream_get_passed_over(xlatr_stream* stream, std::uint32_t row, xlatr_passed_over* passedOver) {
  return with(streams(), stream, [&](Stream& open) {
    open.passedOver = sourceOf(open).passedOver();
    return giveRow(open.passedOver, row, passedOver);
  });
}

xlatr_code xlatr_stream_get_position(xlatr_stream* stream, std::uint64_t* bytes, std::uint64_t* size) {
  return with(streams(), stream, [&](Stream& open) {
    if (bytes == nullptr || size == nullptr) {
      return XLATR_ERROR_ARGUMENT;
    }
    *bytes = sourceOf(open).bytesRead();
    *size = open.size;
    return XLATR_OK;
  });
}

const char* xlatr_stream_error(xlatr_stream* stream) {
  return errorOf(streams(), stream);
}

xlatr_code xlatr_stream_close(xlatr_stream* stream) {
  return close(streams(), stream);
}

xlatr_code xlatr_sink_create(const char* path, const xlatr_head* head, const xlatr_sink_options* options,
                             xlatr_sink** sink) {
  return openHandle(sinks(), sink,
                    [&](Sink& created) { return createSink(created, std::string(pathOf(path)), head, options); });
}

xlatr_code xlatr_sink_create_output(const xlatr_output* output, const xlatr_head* head,
                                    const xlatr_sink_options* options, xlatr_sink** sink) {
  CallerOutput taken(output);
  return openHandle(sinks(), sink,
                    [&](Sink& created) { return createSink(created, std::move(taken).target(), head, options); });
}

xlatr_code xlatr_sink_write(xlatr_sink* sink, const xlatr_batch* batch) {
  return with(sinks(), sink, [&](Sink& open) { return writeBatch(open, batch); });
}

xlatr_code xlatr_sink_get_account(xlatr_sink* sink, xlatr_account* account) {
  return with(sinks(), sink, [&](Sink& open) { return give(recordOf(open.account), account); });
}

xlatr_code xlatr_sink_get_written(xlatr_sink* sink, std::uint32_t row, xlatr_written* written) {
  return with(sinks(), sink, [&](Sink& open) {
    if (open.target != nullptr) {
      open.files = open.target->files();
    }
    return giveRow(open.files, row, written);
  });
}

const char* xlatr_sink_error(xlatr_sink* sink) {
  return errorOf(sinks(), sink);
}

xlatr_code xlatr_sink_finish(xlatr_sink* sink) {
  return with(sinks(), sink, [](Sink& open) { return finishSink(open); });
}

xlatr_code xlatr_sink_close(xlatr_sink* sink) {
  return close(sinks(), sink);
}

xlatr_code xlatr_job_create(const xlatr_job_options* options, xlatr_job** job) {
  CallerEnds ends;
  const xlatr_code taken = answer([&] {
    takeEnds(options, ends);
    return XLATR_OK;
  });
  return taken != XLATR_OK ? taken
                           : openHandle(jobs(), job, [&](Job& created) { return createJob(created, options, ends); });
}

xlatr_code xlatr_job_run(xlatr_job* job) {
  return with(jobs(), job, [](Job& open) { return runJob(open); });
}

xlatr_code xlatr_job_cancel(xlatr_job* job) {
  return with(jobs(), job, [](Job& open) {
    open.cancelled.store(true);
    return XLATR_OK;
  });
}

xlatr_code xlatr_job_get_progress(xlatr_job* job, xlatr_job_progress* progress) {
  return with(jobs(), job, [&](Job& open) {
    ReadProgress now;
    {
      const MutexLock lock(open.mutex);
      now = open.progress;
    }
    return give(recordOf(now), progress);
  });
}

xlatr_code xlatr_job_get_head(xlatr_job* job, xlatr_head* head) {
  return with(jobs(), job, [&](Job& open) { return give(recordOf(open.report.head), head); });
}

xlatr_code xlatr_job_get_account(xlatr_job* job, xlatr_account* account) {
  return with(jobs(), job, [&](Job& open) { return give(recordOf(open.report.account), account); });
}

xlatr_code xlatr_job_get_passed_over(xlatr_job* job, std::uint32_t row, xlatr_passed_over* passedOver) {
  return with(jobs(), job, [&](Job& open) { return giveRow(open.report.passedOver, row, passedOver); });
}

xlatr_code xlatr_job_get_written(xlatr_job* job, std::uint32_t row, xlatr_written* written) {
  return with(jobs(), job, [&](Job& open) { return giveRow(open.report.files, row, written); });
}

const char* xlatr_job_error(xlatr_job* job) {
  return errorOf(jobs(), job);
}

xlatr_code xlatr_job_close(xlatr_job* job) {
  return close(jobs(), job);
}

xlatr_code xlatr_get_capacity(std::uint32_t row, xlatr_capacity* capacity) {
  return answer([&] {
    static const std::vector<CapacityRow> rows = capacityRows();
    return row < rows.size() ? give(recordOf(rows[row]), capacity) : XLATR_END;
  });
}

xlatr_code xlatr_get_format(const char* path, TraceFormat* format) {
  return answer([&] {
    if (format == nullptr) {
      return XLATR_ERROR_ARGUMENT;
    }
    *format = XLATR_FORMAT_NONE;
    *format = formatOfTrace(std::string(pathOf(path))).format;
    return XLATR_OK;
  });
}

const char* xlatr_format_description(TraceFormat format) {
  const FormatDescriptor* const known = knownFormat(format);
  return known == nullptr ? nullptr : known->description.data();
}

const char* xlatr_format_extension(TraceFormat format) {
  const FormatDescriptor* const known = knownFormat(format);
  return known == nullptr ? nullptr : known->extension.data();
}

xlatr_code xlatr_stream_export_arrow(xlatr_stream* stream, std::uint32_t attributes, ArrowArrayStream* out) {
  return with(streams(), stream, [&](Stream& open) {
    if (out == nullptr || attributes >> kFrameAttributeCount != 0) {
      return XLATR_ERROR_ARGUMENT;
    }
    static_cast<void>(sourceOf(open));
    exportArrow(std::move(open.source), attributes, *out);
    static_cast<void>(streams().remove(stream));
    return XLATR_OK;
  });
}

xlatr_code xlatr_sink_write_arrow(xlatr_sink* sink, ArrowArrayStream* frames) {
  if (frames == nullptr || frames->release == nullptr) {
    return XLATR_ERROR_ARGUMENT;
  }
  std::unique_ptr<FrameSource> source;
  std::string error;
  const xlatr_code imported = answer(error, [&] {
    source = importArrow(*frames);
    return XLATR_OK;
  });
  return with(sinks(), sink, [&](Sink& open) {
    if (imported != XLATR_OK) {
      open.error = error;
      return imported;
    }
    return writeArrow(open, *source);
  });
}
