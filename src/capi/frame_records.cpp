#include "capi/frame_records.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <string_view>
#include <utility>

#include "frames/frame.hpp"
#include "frames/frame_failure.hpp"
#include "util/utf8.hpp"

namespace xlatr::capi {
namespace {

static_assert(XLATR_KIND_COUNT == kFrameKindCount);
static_assert(XLATR_KIND_COMMENT == static_cast<int>(FrameKind::Comment));
static_assert(XLATR_ATTRIBUTE_COUNT == kFrameAttributeCount);
static_assert(XLATR_ATTRIBUTE_RECORD_TYPE == static_cast<int>(FrameAttribute::RecordType));
static_assert(XLATR_FLAG_ENHANCED_CHECKSUM == frame_flag::kEnhancedChecksum);
static_assert(XLATR_FLAG_DLC_KNOWN == frame_flag::kDlcKnown);
static_assert(XLATR_REMARK_LIMIT >= kRemarkCount);
static_assert(XLATR_CLASS_PASSED_OVER == static_cast<int>(RemarkClass::PassedOver));

template <class Record>
Record known(const Record* caller, const char* name) {
  Record record;
  if (!readRecord(caller, record)) {
    refuse(std::string(name) + ": the record does not begin with its size");
  }
  return record;
}

// The values of a caller's array.
template <class Value>
std::span<const Value> arrayOf(const Value* values, std::size_t count, const char* name) {
  if (values == nullptr && count != 0) {
    refuse(std::string(name) + ": the array is null");
  }
  return {values, values == nullptr ? 0 : count};
}

bool bitAt(const std::uint8_t* validity, std::size_t row) {
  return validity == nullptr || (validity[row / 8] >> row % 8 & 1U) != 0;
}

}  // namespace

void refuse(const std::string& text) {
  throw FrameFailure(FrameProblem::BadArgument, text);
}

FrameSelection selectionOf(const xlatr_selection* caller) {
  const auto record = known(caller, "selection");
  FrameSelection selection;
  if (record.from_ns != 0 || record.until_ns != 0) {
    selection.fromNs = record.from_ns;
    selection.untilNs = record.until_ns;
  }
  selection.absolute = record.absolute_times != 0;
  for (const xlatr_bus_rule& rule : arrayOf(record.buses, record.bus_count, "buses")) {
    selection.buses.push_back({rule.first, rule.last});
  }
  for (const xlatr_id_rule& rule : arrayOf(record.ids, record.id_count, "ids")) {
    constexpr std::uint32_t kBase = 11;
    constexpr std::uint32_t kExtended = 29;
    if (rule.length != 0 && rule.length != kBase && rule.length != kExtended) {
      refuse("ids: the length of an identifier is 0, 11 or 29");
    }
    IdentifierRule own{.first = rule.first, .last = rule.last};
    if (rule.mask != 0) {
      own.mask = rule.mask;
    }
    if (rule.length != 0) {
      own.extended = rule.length == kExtended;
    }
    selection.identifiers.push_back(own);
  }
  selection.otherBuses = record.other_buses != 0;
  selection.otherIdentifiers = record.other_ids != 0;
  if ((record.kinds & ~std::uint32_t{kAllFrameKinds}) != 0) {
    refuse("kinds: there is no such kind");
  }
  selection.kinds = record.kinds == 0 ? kAllFrameKinds : static_cast<FrameKindSet>(record.kinds);
  selection.directions = static_cast<std::uint16_t>(record.directions);
  return selection;
}

FrameChanges changesOf(const xlatr_changes* caller) {
  const auto record = known(caller, "changes");
  FrameChanges changes;
  changes.shiftNs = record.shift_ns;
  changes.rebase = record.rebase != 0;
  const auto buses = arrayOf(record.buses, std::size_t{record.bus_pair_count} * 2, "buses");
  for (std::size_t at = 0; at + 1 < buses.size(); at += 2) {
    changes.buses.emplace_back(buses[at], buses[at + 1]);
  }
  if (record.zone_known != 0) {
    changes.zoneMinutes = record.zone_minutes;
  }
  return changes;
}

SinkTarget targetOf(const xlatr_sink_options* caller) {
  const auto record = known(caller, "options");
  SinkTarget target;
  target.writing.format = record.format;
  target.writing.replaces = record.replace != 0;
  target.writing.keepsPartial = record.keep_partial != 0;
  SinkSettings& sink = target.writing.sink;
  sink.version = record.version;
  sink.zipped = record.zipped != 0;
  sink.compact = record.compact != 0;
  if (record.separator != nullptr) {
    sink.separator = record.separator;
  }
  if (record.split_ns < 0) {
    refuse("split_ns: the time of a part is negative");
  }
  target.split = {.bytes = record.split_bytes, .ns = record.split_ns, .buses = record.split_buses != 0};
  return target;
}

JobSettings settingsOf(const xlatr_job_options& options) {
  JobSettings settings;
  for (const char* const path : arrayOf(options.sources, options.source_count, "sources")) {
    if (path == nullptr) {
      refuse("sources: a path is null");
    }
    settings.sources.push_back({std::string(path), options.source_format});
  }
  settings.target = std::string(options.target == nullptr ? "" : options.target);
  SinkTarget target = targetOf(options.sink);
  settings.writing = std::move(target.writing);
  settings.split = target.split;
  settings.strict = options.strict != 0;
  settings.merging = {.alignsStarts = options.align_starts != 0, .closesGaps = options.close_gaps != 0};
  settings.selection = selectionOf(options.selection);
  settings.changes = changesOf(options.changes);
  return settings;
}

StreamHead headOf(const xlatr_head* caller) {
  const auto record = known(caller, "head");
  StreamHead head;
  head.format = record.format;
  head.version = record.version;
  head.path = record.path == nullptr ? "" : record.path;
  head.producer = record.producer == nullptr ? "" : record.producer;
  if (record.start_known != 0) {
    head.start = TraceStart{.sinceEpochNs = record.start_ns};
    if (record.zone_known != 0) {
      head.start->zoneMinutes = record.zone_minutes;
    }
  }
  return head;
}

xlatr_head recordOf(const StreamHead& head) {
  xlatr_head record{};
  record.format = head.format;
  record.version = head.version;
  record.path = head.path.c_str();
  record.producer = head.producer.c_str();
  if (head.start) {
    record.start_known = 1;
    record.start_ns = head.start->sinceEpochNs;
    record.zone_known = head.start->zoneMinutes ? 1 : 0;
    record.zone_minutes = head.start->zoneMinutes.value_or(0);
  }
  record.frames_known = head.frames ? 1 : 0;
  record.frames = head.frames.value_or(0);
  record.places_are_records = head.places == PlaceUnit::Record ? 1 : 0;
  record.unfinished = head.unfinished ? 1 : 0;
  return record;
}

xlatr_account recordOf(const Account& account) {
  xlatr_account record{};
  record.read = account.read();
  record.written = account.written();
  record.dropped = account.dropped();
  record.commented = account.commented();
  record.complete = account.completeButForRounding() ? 1 : 0;
  const auto take = [](const Account::Count& count) { return xlatr_count{count.frames, count.first}; };
  for (const RemarkInfo& info : remarkTable()) {
    const auto at = static_cast<std::size_t>(info.remark);
    record.dropped_by[at] = take(account.dropped(info.remark));
    record.commented_by[at] = take(account.commented(info.remark));
    record.noted[at] = take(account.noted(info.remark));
    static_assert(Account::kLongestMet < XLATR_MET_SIZE);
    std::ranges::copy(account.met(info.remark), record.met[at]);
  }
  return record;
}

xlatr_batch recordOf(const FrameBatch& batch) {
  xlatr_batch record{};
  record.rows = batch.size();
  record.time_ns = batch.times().data();
  record.kind = batch.kinds().data();
  record.bus = batch.buses().data();
  record.id = batch.ids().data();
  record.flags = batch.flags().data();
  record.dlc = batch.dlcs().data();
  record.data_offsets = batch.dataOffsets().data();
  record.data = batch.data().data();
  record.text_offsets = batch.textOffsets().data();
  record.text = batch.text().data();
  record.text_validity = batch.textValidity().data();
  record.place = batch.places().data();
  record.attributes = batch.attributes();
  for (std::uint32_t left = batch.attributes(); left != 0; left &= left - 1) {
    const auto at = static_cast<std::size_t>(std::countr_zero(left));
    record.attribute[at] = batch.attribute(static_cast<FrameAttribute>(at)).data();
    record.attribute_validity[at] = batch.attributeValidity(static_cast<FrameAttribute>(at)).data();
  }
  return record;
}

xlatr_job_progress recordOf(const ReadProgress& progress) {
  xlatr_job_progress record{};
  record.bytes_read = progress.bytesRead;
  record.bytes_total = progress.bytesTotal;
  record.frames_read = progress.framesRead;
  record.seconds = progress.seconds;
  record.bytes_per_second = progress.seconds > 0.0 ? static_cast<double>(progress.bytesRead) / progress.seconds : 0.0;
  return record;
}

bool wantsToGoOn(xlatr_progress_function function, void* context, const ReadProgress& progress) {
  if (function == nullptr) {
    return true;
  }
  xlatr_job_progress record = recordOf(progress);
  record.size = sizeof record;
  return function(context, &record) == 0;
}

xlatr_written recordOf(const WrittenFile& file) {
  xlatr_written record{};
  record.path = file.name.c_str();
  record.bytes = file.bytes;
  record.frames = file.frames;
  return record;
}

xlatr_passed_over recordOf(const PassedOver& row) {
  xlatr_passed_over record{};
  record.name = row.name.c_str();
  record.count = row.count;
  return record;
}

Frame frameOf(const xlatr_batch& batch, std::size_t row) {
  const auto slice = [row](const std::int32_t* offsets, const auto* bytes) {
    const auto begin = static_cast<std::size_t>(offsets[row]);
    const auto length = static_cast<std::size_t>(offsets[row + 1]) - begin;
    return length == 0 ? std::span(bytes, 0) : std::span(bytes + begin, length);
  };
  Frame frame;
  frame.timeNs = batch.time_ns[row];
  frame.kind = static_cast<FrameKind>(batch.kind[row]);
  frame.bus = batch.bus[row];
  frame.id = batch.id[row];
  frame.flags = batch.flags[row];
  frame.dlc = batch.dlc[row];
  frame.data = slice(batch.data_offsets, batch.data);
  if (bitAt(batch.text_validity, row)) {
    const auto text = slice(batch.text_offsets, batch.text);
    frame.text = std::string_view(text.data(), text.size());
  }
  frame.place = batch.place == nullptr ? row + 1 : batch.place[row];
  for (std::uint32_t left = batch.attributes; left != 0; left &= left - 1) {
    const auto at = static_cast<std::size_t>(std::countr_zero(left));
    if (bitAt(batch.attribute_validity[at], row)) {
      frame.attributes.set(static_cast<FrameAttribute>(at), batch.attribute[at][row]);
    }
  }
  return frame;
}

namespace {

void requireColumns(const xlatr_batch& batch) {
  const std::array<const void*, 8> columns = {batch.time_ns, batch.kind, batch.bus,          batch.id,
                                              batch.flags,   batch.dlc,  batch.data_offsets, batch.text_offsets};
  if (std::ranges::find(columns, nullptr) != columns.end()) {
    refuse("batch: a column is null");
  }
  if (batch.attributes >> kFrameAttributeCount != 0) {
    refuse("batch: there is no such attribute");
  }
  for (std::uint32_t left = batch.attributes; left != 0; left &= left - 1) {
    if (batch.attribute[std::countr_zero(left)] == nullptr) {
      refuse("batch: the column of an attribute is null");
    }
  }
}

void requireOffsets(const std::int32_t* offsets, const void* bytes, std::size_t rows, std::int32_t longest) {
  if (bytes == nullptr && offsets[rows] != offsets[0]) {
    refuse("batch: a column is null");
  }
  if (offsets[0] < 0) {
    refuse("batch: an offset is negative");
  }
  for (std::size_t row = 0; row < rows; ++row) {
    if (offsets[row + 1] < offsets[row] || offsets[row + 1] - offsets[row] > longest) {
      refuse("batch: the offsets of row " + std::to_string(row) + " don't grow, or by too much");
    }
  }
}

}  // namespace

void requireValid(const xlatr_batch& batch) {
  if (batch.rows == 0) {
    return;
  }
  requireColumns(batch);
  constexpr auto kLongest = static_cast<std::int32_t>(FrameBatch::kLongestText);
  const auto rows = static_cast<std::size_t>(batch.rows);
  requireOffsets(batch.data_offsets, batch.data, rows, kLongest);
  requireOffsets(batch.text_offsets, batch.text, rows, kLongest);
  for (std::size_t row = 0; row < rows; ++row) {
    if (batch.kind[row] >= kFrameKindCount) {
      refuse("batch: row " + std::to_string(row) + " is of no kind");
    }
    if (batch.time_ns[row] > kFarthestNs || batch.time_ns[row] < -kFarthestNs) {
      refuse("batch: the time of row " + std::to_string(row) + " is more than 285 years away");
    }
    const auto begin = static_cast<std::size_t>(batch.text_offsets[row]);
    const auto end = static_cast<std::size_t>(batch.text_offsets[row + 1]);
    if (begin != end && bitAt(batch.text_validity, row) && !isUtf8(std::string_view(batch.text + begin, end - begin))) {
      refuse("batch: the text of row " + std::to_string(row) + " is no UTF-8");
    }
  }
}

}  // namespace xlatr::capi
