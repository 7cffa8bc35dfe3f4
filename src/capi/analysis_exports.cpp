// The functions of frames.h that tell what the traffic of a trace is like.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capi/frame_answers.hpp"
#include "capi/frame_handles.hpp"
#include "capi/frame_records.hpp"
#include "capi/open_stream.hpp"
#include "frames/analysis/analysis.hpp"
#include "frames/analysis/cycle_sketch.hpp"
#include "frames/analysis/frame_columns.hpp"
#include "frames/frame.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {
namespace {

static_assert(XLATR_KIND_LIMIT >= kFrameKindCount);
static_assert(XLATR_STUFFING_NONE == static_cast<int>(Stuffing::None));

// `analysis` is null if it could not be made.
struct AnalysisHandle {
  std::string error;
  std::unique_ptr<Analysis> analysis;
  // In the order of their rows; empty if something was added since.
  std::vector<const BusStatistics*> buses;
  std::vector<const IdentifierStatistics*> identifiers;
};

HandleTable<xlatr_analysis, AnalysisHandle>& analyses() {
  return table<xlatr_analysis, AnalysisHandle>();
}

Analysis& analysisOf(const AnalysisHandle& handle) {
  if (handle.analysis == nullptr) {
    refuse("the analysis was not made");
  }
  return *handle.analysis;
}

// To add to it, which makes all rows move.
Analysis& changedAnalysisOf(AnalysisHandle& handle) {
  handle.buses.clear();
  handle.identifiers.clear();
  return analysisOf(handle);
}

AnalysisSettings settingsOf(const xlatr_analysis_options* options) {
  xlatr_analysis_options known;
  if (!readRecord(options, known)) {
    refuse("options: the record does not begin with its size");
  }
  if (known.stuffing > XLATR_STUFFING_NONE) {
    refuse("stuffing: there is no such value");
  }
  if (known.most_ids > AnalysisSettings::kMostIdentifiers) {
    refuse("most_ids: no more than 1,048,576 are possible");
  }
  AnalysisSettings settings;
  settings.rates = {.nominal = known.nominal_rate,
                    .data = known.data_rate,
                    .lin = known.lin_rate,
                    .stuffing = static_cast<Stuffing>(known.stuffing)};
  const auto take = [](auto& setting, auto value) {
    if (value != 0) {
      setting = value;
    }
  };
  take(settings.gapNs, known.gap_ns);
  take(settings.burstNs, known.burst_ns);
  take(settings.mostIdentifiers, known.most_ids);
  return settings;
}

FrameColumns columnsOf(const xlatr_batch& batch) {
  const auto attribute = [&batch](std::uint32_t which) {
    const bool isThere = (batch.attributes >> which & 1U) != 0;
    return isThere ? FrameColumns::Attribute{batch.attribute[which], batch.attribute_validity[which]}
                   : FrameColumns::Attribute{};
  };
  return {.rows = static_cast<std::size_t>(batch.rows),
          .times = batch.time_ns,
          .kinds = batch.kind,
          .buses = batch.bus,
          .ids = batch.id,
          .flags = batch.flags,
          .dlcs = batch.dlc,
          .dataOffsets = batch.data_offsets,
          .data = batch.data,
          .places = batch.place,
          .busState = attribute(XLATR_ATTRIBUTE_BUS_STATE),
          .txErrors = attribute(XLATR_ATTRIBUTE_TX_ERRORS),
          .rxErrors = attribute(XLATR_ATTRIBUTE_RX_ERRORS)};
}

xlatr_code addBatch(AnalysisHandle& handle, const xlatr_batch* caller) {
  Analysis& analysis = changedAnalysisOf(handle);
  xlatr_batch batch;
  if (caller == nullptr || !readRecord(caller, batch)) {
    refuse("batch: there is none, or the record does not begin with its size");
  }
  requireValid(batch);
  analysis.add(columnsOf(batch));
  return XLATR_OK;
}

xlatr_code addStream(AnalysisHandle& handle, Stream& stream) {
  Analysis& analysis = changedAnalysisOf(handle);
  FrameSource& source = sourceOf(stream);
  stream.batch.clear();
  while (source.read(stream.batch, stream.account)) {
    analysis.add(stream.batch);
    stream.batch.clear();
  }
  return XLATR_OK;
}

xlatr_analysis_summary recordOf(const AnalysisSummary& summary) {
  xlatr_analysis_summary record{};
  std::ranges::copy(summary.frames, record.frames);
  record.traffic = summary.traffic;
  record.first_ns = summary.firstNs;
  record.last_ns = summary.lastNs;
  record.steps_back = summary.stepsBack;
  record.other_id_frames = summary.otherIdentifierFrames;
  record.other_bus_frames = summary.otherBusFrames;
  return record;
}

xlatr_bus_statistics recordOf(const Analysis& analysis, const BusStatistics& bus) {
  xlatr_bus_statistics record{};
  record.bus = bus.bus;
  record.ids = bus.identifiers;
  std::ranges::copy(bus.frames, record.frames);
  record.traffic = bus.traffic;
  record.data_bytes = bus.dataBytes;
  record.first_ns = bus.firstNs;
  record.last_ns = bus.lastNs;
  record.steps_back = bus.stepsBack;
  const std::optional<double> load = analysis.load(bus);
  record.load_known = load ? 1 : 0;
  record.load = load.value_or(0.0);
  record.highest_load = analysis.highestLoad(bus).value_or(0.0);
  record.gaps = bus.gaps;
  record.longest_gap_ns = bus.longestGapNs;
  record.longest_gap_begin_ns = bus.longestGapBeginNs;
  record.longest_gap_place = bus.longestGapPlace;
  record.error_bursts = bus.errorBursts;
  record.longest_burst = bus.longestBurst;
  record.longest_burst_begin_ns = bus.longestBurstBeginNs;
  record.bus_offs = bus.busOffs;
  record.highest_tx_errors = bus.highestTxErrors;
  record.highest_rx_errors = bus.highestRxErrors;
  record.frames_over_time = bus.framesOverTime.data();
  record.busy_over_time = bus.busyOverTime.data();
  record.bins = bus.framesOverTime.size();
  record.bins_begin_ns = analysis.busClock().originNs();
  record.bin_ns = analysis.busClock().widthNs();
  return record;
}

// The same for all identifiers.
const std::uint64_t* cycleBounds() {
  static const auto bounds = [] {
    std::array<std::uint64_t, CycleSketch::kBuckets> made{};
    for (std::size_t bucket = 0; bucket < made.size(); ++bucket) {
      made[bucket] = CycleSketch::lowerBound(bucket);
    }
    return made;
  }();
  return bounds.data();
}

xlatr_id_statistics recordOf(const Analysis& analysis, const IdentifierStatistics& identifier) {
  xlatr_id_statistics record{};
  record.id = identifier.id;
  record.bus = identifier.bus;
  record.kind = static_cast<std::uint8_t>(identifier.kind);
  record.extended = identifier.extended ? 1 : 0;
  record.flags = identifier.flags;
  record.last_dlc = identifier.lastDlc;
  record.frames = identifier.frames;
  record.data_bytes = identifier.dataBytes;
  record.shortest = identifier.shortest;
  record.longest = identifier.longest;
  record.last_length = identifier.lastLength;
  record.first_ns = identifier.firstNs;
  record.last_ns = identifier.lastNs;
  record.first_place = identifier.firstPlace;
  record.last_place = identifier.lastPlace;
  record.steps_back = identifier.stepsBack;
  record.cycles = identifier.cycles;
  record.cycle_min_ns = identifier.shortestCycleNs;
  record.cycle_max_ns = identifier.longestCycleNs;
  record.cycle_max_begin_ns = identifier.longestCycleBeginNs;
  record.cycle_max_place = identifier.longestCyclePlace;
  record.cycle_p99_ns = identifier.slowCycleNs();
  record.cycle_mean_ns = identifier.meanCycleNs;
  record.cycle_deviation_ns = identifier.cycleDeviationNs();
  std::ranges::copy(identifier.lastData, record.last_data);
  std::ranges::copy(identifier.changed, record.changed);
  record.frames_over_time = identifier.framesOverTime.data();
  record.bins = identifier.framesOverTime.size();
  record.bins_begin_ns = analysis.identifierClock().originNs();
  record.bin_ns = analysis.identifierClock().widthNs();
  record.cycle_counts = identifier.cycleSketch.counts().data();
  record.cycle_bounds_ns = cycleBounds();
  record.cycle_buckets = identifier.cycleSketch.counts().size();
  return record;
}

}  // namespace
}  // namespace xlatr::capi

using namespace xlatr;        // NOLINT(google-build-using-namespace): this file is all border
using namespace xlatr::capi;  // NOLINT(google-build-using-namespace)

xlatr_code xlatr_analysis_create(const xlatr_analysis_options* options, xlatr_analysis** analysis) {
  return openHandle(analyses(), analysis, [&](AnalysisHandle& made) {
    made.analysis = std::make_unique<Analysis>(settingsOf(options));
    return XLATR_OK;
  });
}

xlatr_code xlatr_analysis_add(xlatr_analysis* analysis, const xlatr_batch* batch) {
  return with(analyses(), analysis, [&](AnalysisHandle& open) { return addBatch(open, batch); });
}

xlatr_code xlatr_analysis_run(xlatr_analysis* analysis, xlatr_stream* stream) {
  return with(analyses(), analysis, [&](AnalysisHandle& open) {
    const std::shared_ptr<Stream> found = streams().find(stream);
    return found == nullptr ? XLATR_ERROR_HANDLE : addStream(open, *found);
  });
}

xlatr_code xlatr_analysis_get_summary(xlatr_analysis* analysis, xlatr_analysis_summary* summary) {
  return with(analyses(), analysis, [&](AnalysisHandle& open) {
    const Analysis& all = analysisOf(open);
    xlatr_analysis_summary record = recordOf(all.summary());
    record.buses = static_cast<std::uint32_t>(all.busCount());
    record.ids = static_cast<std::uint32_t>(all.identifierCount());
    return give(record, summary);
  });
}

xlatr_code xlatr_analysis_get_bus(xlatr_analysis* analysis, std::uint32_t row, xlatr_bus_statistics* bus) {
  return with(analyses(), analysis, [&](AnalysisHandle& open) {
    const Analysis& all = analysisOf(open);
    if (open.buses.empty()) {
      open.buses = all.buses();
    }
    return row < open.buses.size() ? give(recordOf(all, *open.buses[row]), bus) : XLATR_END;
  });
}

xlatr_code xlatr_analysis_get_id(xlatr_analysis* analysis, std::uint32_t row, xlatr_id_statistics* id) {
  return with(analyses(), analysis, [&](AnalysisHandle& open) {
    const Analysis& all = analysisOf(open);
    if (open.identifiers.empty()) {
      open.identifiers = all.identifiers();
    }
    return row < open.identifiers.size() ? give(recordOf(all, *open.identifiers[row]), id) : XLATR_END;
  });
}

const char* xlatr_analysis_error(xlatr_analysis* analysis) {
  return errorOf(analyses(), analysis);
}

xlatr_code xlatr_analysis_close(xlatr_analysis* analysis) {
  return close(analyses(), analysis);
}
