#include "stats_report.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>
#include <vector>

#include "hex_text.hpp"
#include "measure.hpp"
#include "output.hpp"
#include "sparkline.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {

namespace {

using Json = nlohmann::ordered_json;
using Rows = std::vector<std::vector<std::string>>;

// Columns that a narrow terminal does without.
constexpr std::string_view kP99 = "P99 ms";
constexpr std::string_view kLastData = "LAST DATA";
constexpr std::string_view kOverTime = "OVER TIME";

std::span<const std::uint8_t> lastDataOf(const xlatr_id_statistics& id) {
  return std::span(id.last_data).first(std::min<std::size_t>(id.last_length, std::size(id.last_data)));
}

// The first eight bytes, with blanks.
std::string payloadText(const xlatr_id_statistics& id) {
  constexpr std::size_t kShown = 8;
  const auto bytes = lastDataOf(id);
  const std::string text = hexBytes(bytes.first(std::min(bytes.size(), kShown)), " ");
  return id.last_length > kShown ? text + " ..." : text;
}

double secondsOf(const xlatr_analysis_summary& summary) {
  constexpr double kNanosecond = 1e-9;
  const std::uint64_t duration =
      static_cast<std::uint64_t>(summary.last_ns) - static_cast<std::uint64_t>(summary.first_ns);
  return static_cast<double>(duration) * kNanosecond;
}

std::string lengthText(const xlatr_id_statistics& id) {
  return id.shortest == id.longest ? std::to_string(id.longest)
                                   : std::to_string(id.shortest) + "-" + std::to_string(id.longest);
}

// The columns before the last `left` ones are aligned to the right, which numbers are easier to compare in.
std::string numbersText(Rows rows, std::size_t left) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], row[column].size());
    }
  }
  for (auto& row : rows) {
    for (std::size_t column = 0; column + left < row.size(); ++column) {
      row[column].insert(0, widths[column] - row[column].size(), ' ');
    }
  }
  return tableText(rows);
}

std::string kindsText(const std::uint64_t* frames) {
  std::string text;
  for (std::uint32_t kind = 0; kind < XLATR_KIND_COUNT; ++kind) {
    if (frames[kind] != 0) {
      text += (text.empty() ? "" : ", ") + countText(frames[kind]) + " " + xlatr_kind_name(kind);
    }
  }
  return text.empty() ? "no frames" : text;
}

std::string headText(const std::string& name, const xlatr_analysis_summary& summary) {
  std::string text = oneLine(name) + ": " + kindsText(summary.frames) + "\n";
  if (summary.traffic != 0) {
    text += "from " + secondsText(summary.first_ns) + " to " + secondsText(summary.last_ns) + ": " +
            shortDuration(secondsOf(summary) * 1e9) + "\n";
  }
  if (summary.steps_back != 0) {
    text += countedFrames(summary.steps_back, " is", " are") + " earlier than the one before\n";
  }
  if (summary.other_id_frames != 0) {
    text += countedFrames(summary.other_id_frames, " has", " have") + " identifiers beyond the first " +
            countText(summary.ids) + ", which are not shown\n";
  }
  if (summary.other_bus_frames != 0) {
    text += countedFrames(summary.other_bus_frames, " is", " are") + " of buses beyond the first " +
            countText(summary.buses) + ", which are not shown\n";
  }
  return text;
}

std::string busTable(const Analysis& analysis, double seconds) {
  const auto buses = analysis.buses();
  const bool loads = std::ranges::any_of(buses, [](const auto& bus) { return bus.load_known != 0; });
  Rows rows{{"BUS", "FRAMES", "/S", "IDS", "BYTES", "ERRORS", "BURSTS", "GAPS"}};
  if (loads) {
    rows[0].insert(rows[0].end(), {"LOAD", "HIGHEST"});
  }
  rows[0].push_back("LONGEST SILENCE");
  for (const xlatr_bus_statistics& bus : buses) {
    std::vector<std::string> row = {std::to_string(bus.bus),
                                    std::to_string(bus.traffic),
                                    seconds > 0.0 ? fixedText(static_cast<double>(bus.traffic) / seconds, 1) : "-",
                                    std::to_string(bus.ids),
                                    std::to_string(bus.data_bytes),
                                    std::to_string(bus.frames[XLATR_KIND_ERROR]),
                                    std::to_string(bus.error_bursts),
                                    std::to_string(bus.gaps)};
    if (loads) {
      const bool known = bus.load_known != 0;
      row.push_back(known ? percentText(bus.load) : "-");
      row.push_back(known ? percentText(bus.highest_load) : "-");
    }
    row.push_back(bus.longest_gap_ns == 0 ? "-"
                                          : shortDuration(static_cast<double>(bus.longest_gap_ns)) + " at " +
                                                secondsText(bus.longest_gap_begin_ns));
    rows.push_back(std::move(row));
  }
  return numbersText(std::move(rows), 1);
}

// In characters, of the longest line.
std::size_t widthOf(std::string_view text) {
  std::size_t longest = 0;
  std::size_t width = 0;
  for (const char character : text) {
    const bool goesOn = (static_cast<unsigned char>(character) & 0xC0U) == 0x80U;  // with a character of UTF-8
    width = character == '\n' ? 0 : width + (goesOn ? 0 : 1);
    longest = std::max(longest, width);
  }
  return longest;
}

// With the columns that there is room for; 0 is room for all.
std::string fittingText(Rows rows, std::size_t width) {
  constexpr std::array<std::string_view, 3> kFirstToGo = {kP99, kOverTime, kLastData};
  std::size_t left = 2;
  std::string text = numbersText(rows, left);
  for (const std::string_view name : kFirstToGo) {
    if (width == 0 || widthOf(text) <= width) {
      break;
    }
    const auto column = std::ranges::find(rows.front(), name) - rows.front().begin();
    std::ranges::for_each(rows, [column](auto& row) { row.erase(row.begin() + column); });
    left -= name == kP99 ? 0U : 1U;
    text = numbersText(rows, left);
  }
  return text;
}

std::string identifierTable(const std::vector<xlatr_id_statistics>& ids, std::int64_t lastNs, bool utf8,
                            std::size_t width) {
  constexpr std::size_t kSparks = 16;
  Rows rows{{"BUS", "ID", "KIND", "FRAMES", "/S", "MIN ms", "MEAN ms", "MAX ms", std::string(kP99), "LEN",
             std::string(kLastData), std::string(kOverTime)}};
  for (const xlatr_id_statistics& id : ids) {
    const bool cycles = id.cycles != 0;
    const auto milliseconds = [cycles](double ns) { return cycles ? millisecondsText(ns) : "-"; };
    // Times may be farther from each other than a signed number can say.
    const std::uint64_t covered = static_cast<std::uint64_t>(lastNs) - static_cast<std::uint64_t>(id.bins_begin_ns);
    rows.push_back({std::to_string(id.bus), identifierText(id.kind, id.id, id.extended != 0), xlatr_kind_name(id.kind),
                    std::to_string(id.frames),
                    cycles && id.cycle_mean_ns > 0.0 ? fixedText(1e9 / id.cycle_mean_ns, 1) : "-",
                    milliseconds(static_cast<double>(id.cycle_min_ns)), milliseconds(id.cycle_mean_ns),
                    milliseconds(static_cast<double>(id.cycle_max_ns)),
                    milliseconds(static_cast<double>(id.cycle_p99_ns)), lengthText(id), payloadText(id),
                    sparkline({id.frames_over_time, static_cast<std::size_t>(id.bins)},
                              static_cast<double>(covered) / static_cast<double>(id.bin_ns), kSparks, utf8)});
  }
  return fittingText(std::move(rows), width);
}

// ---- JSON

Json kindsJson(const std::uint64_t* frames) {
  Json json = Json::object();
  for (std::uint32_t kind = 0; kind < XLATR_KIND_COUNT; ++kind) {
    if (frames[kind] != 0) {
      json[xlatr_kind_name(kind)] = frames[kind];
    }
  }
  return json;
}

Json busJson(const xlatr_bus_statistics& bus) {
  const auto orNull = [&bus](double load) { return bus.load_known != 0 ? Json(load) : Json(); };
  Json json;
  json["bus"] = bus.bus;
  json["frames"] = kindsJson(bus.frames);
  json["traffic"] = bus.traffic;
  json["ids"] = bus.ids;
  json["data_bytes"] = bus.data_bytes;
  json["first_ns"] = bus.first_ns;
  json["last_ns"] = bus.last_ns;
  json["steps_back"] = bus.steps_back;
  json["load"] = orNull(bus.load);
  json["highest_load"] = orNull(bus.highest_load);
  json["gaps"] = bus.gaps;
  json["longest_gap_ns"] = bus.longest_gap_ns;
  json["longest_gap_begin_ns"] = bus.longest_gap_begin_ns;
  json["longest_gap_place"] = bus.longest_gap_place;
  json["error_bursts"] = bus.error_bursts;
  json["longest_burst"] = bus.longest_burst;
  json["longest_burst_begin_ns"] = bus.longest_burst_begin_ns;
  json["bus_offs"] = bus.bus_offs;
  json["highest_tx_errors"] = bus.highest_tx_errors;
  json["highest_rx_errors"] = bus.highest_rx_errors;
  json["frames_over_time"] = std::vector<std::uint64_t>(bus.frames_over_time, bus.frames_over_time + bus.bins);
  json["bins_begin_ns"] = bus.bins_begin_ns;
  json["bin_ns"] = bus.bin_ns;
  return json;
}

Json identifierJson(const xlatr_id_statistics& id) {
  Json json;
  json["bus"] = id.bus;
  json["kind"] = xlatr_kind_name(id.kind);
  json["id"] = hexText(id.id, 1);
  json["extended"] = id.extended != 0;
  json["fd"] = (id.flags & XLATR_FLAG_FD) != 0;
  json["frames"] = id.frames;
  json["data_bytes"] = id.data_bytes;
  json["shortest"] = id.shortest;
  json["longest"] = id.longest;
  json["last_length"] = id.last_length;
  json["last_data"] = hexBytes(lastDataOf(id));
  json["changed"] = hexBytes(std::span(id.changed).first(std::min<std::size_t>(id.longest, std::size(id.changed))));
  json["first_ns"] = id.first_ns;
  json["last_ns"] = id.last_ns;
  json["first_place"] = id.first_place;
  json["last_place"] = id.last_place;
  json["steps_back"] = id.steps_back;
  json["cycles"] = id.cycles;
  json["cycle_min_ns"] = id.cycle_min_ns;
  json["cycle_mean_ns"] = id.cycle_mean_ns;
  json["cycle_max_ns"] = id.cycle_max_ns;
  json["cycle_max_begin_ns"] = id.cycle_max_begin_ns;
  json["cycle_max_place"] = id.cycle_max_place;
  json["cycle_p99_ns"] = id.cycle_p99_ns;
  json["cycle_deviation_ns"] = id.cycle_deviation_ns;
  json["frames_over_time"] = std::vector<std::uint32_t>(id.frames_over_time, id.frames_over_time + id.bins);
  json["bins_begin_ns"] = id.bins_begin_ns;
  json["bin_ns"] = id.bin_ns;
  return json;
}

}  // namespace

std::string statsText(const std::string& name, const Analysis& analysis, bool utf8, std::size_t width) {
  const xlatr_analysis_summary summary = analysis.summary();
  std::string text = headText(name, summary);
  if (summary.buses != 0) {
    text += "\n" + busTable(analysis, secondsOf(summary));
  }
  if (const auto ids = analysis.ids(); !ids.empty()) {
    text += "\n" + identifierTable(ids, summary.last_ns, utf8, width);
  }
  return text;
}

Json statsJson(const std::string& name, bool placesAreRecords, const Analysis& analysis) {
  const xlatr_analysis_summary summary = analysis.summary();
  Json json;
  json["file"] = name;
  json["places"] = placesAreRecords ? "records" : "lines";
  json["frames"] = kindsJson(summary.frames);
  json["traffic"] = summary.traffic;
  json["first_ns"] = summary.first_ns;
  json["last_ns"] = summary.last_ns;
  json["steps_back"] = summary.steps_back;
  json["other_id_frames"] = summary.other_id_frames;
  json["other_bus_frames"] = summary.other_bus_frames;
  json["buses"] = Json::array();
  for (const xlatr_bus_statistics& bus : analysis.buses()) {
    json["buses"].push_back(busJson(bus));
  }
  json["ids"] = Json::array();
  for (const xlatr_id_statistics& id : analysis.ids()) {
    json["ids"].push_back(identifierJson(id));
  }
  return json;
}

}  // namespace xlatr::cli
