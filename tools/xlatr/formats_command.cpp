#include "formats_command.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "formats.hpp"
#include "output.hpp"
#include "report.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {
namespace {

using Json = nlohmann::ordered_json;

std::vector<xlatr_capacity> capacities() {
  std::vector<xlatr_capacity> rows;
  xlatr_capacity row{};
  row.size = sizeof row;
  for (std::uint32_t at = 0; xlatr_get_capacity(at, &row) == XLATR_OK; ++at) {
    rows.push_back(row);
  }
  return rows;
}

std::vector<std::string> kindsOf(std::uint32_t kinds) {
  std::vector<std::string> names;
  for (std::uint32_t kind = 0; kind < XLATR_KIND_COUNT; ++kind) {
    if ((kinds >> kind & 1U) != 0) {
      names.emplace_back(xlatr_kind_name(kind));
    }
  }
  return names;
}

std::string framesText(const xlatr_capacity& row) {
  if (row.xl != 0) {
    return "CAN, FD, XL";
  }
  const bool can = (row.kinds >> XLATR_KIND_DATA & 1U) != 0;
  if (!can) {
    return "LIN";
  }
  return row.fd != 0 ? "CAN, FD" : "CAN";
}

std::string busesText(const xlatr_capacity& row) {
  return row.highest_bus == 0 ? "none" : std::to_string(row.lowest_bus) + "-" + std::to_string(row.highest_bus);
}

std::string resolutionText(std::int64_t ns) {
  constexpr std::int64_t kThousand = 1000;
  if (ns % (kThousand * kThousand) == 0) {
    return std::to_string(ns / kThousand / kThousand) + " ms";
  }
  return ns % kThousand == 0 ? std::to_string(ns / kThousand) + " us" : std::to_string(ns) + " ns";
}

bool isWritten(TraceFormat format, const std::vector<xlatr_capacity>& rows) {
  return std::ranges::any_of(rows, [format](const xlatr_capacity& row) { return row.format == format; });
}

// What the table shows of a version, but for its name.
std::vector<std::string> cellsOf(const xlatr_capacity& row) {
  const auto yes = [](bool condition) { return std::string(condition ? "yes" : "-"); };
  return {framesText(row),
          yes((row.kinds >> XLATR_KIND_REMOTE & 1U) != 0),
          yes((row.kinds >> XLATR_KIND_ERROR & 1U) != 0),
          busesText(row),
          resolutionText(row.resolution_ns),
          yes(row.comments != 0),
          yes(row.zone != 0)};
}

// Versions that follow each other and can hold the same share a row.
std::string heldText(const std::vector<xlatr_capacity>& rows) {
  std::vector<std::vector<std::string>> table{
      {"WRITTEN", "FRAMES", "REMOTE", "ERRORS", "BUSES", "TIMES", "COMMENTS", "ZONE"}};
  for (std::size_t at = 0; at < rows.size();) {
    const std::vector<std::string> cells = cellsOf(rows[at]);
    std::size_t last = at;
    while (last + 1 < rows.size() && rows[last + 1].format == rows[at].format && cellsOf(rows[last + 1]) == cells) {
      ++last;
    }
    std::string name = formatName(rows[at].format) + " " + versionText(rows[at].version);
    if (last != at) {
      name.append(last == at + 1 ? ", " : " to ").append(versionText(rows[last].version));
    }
    table.push_back({name});
    table.back().insert(table.back().end(), cells.begin(), cells.end());
    at = last + 1;
  }
  return tableText(table);
}

std::string textOf() {
  const std::vector<xlatr_capacity> rows = capacities();
  std::vector<std::vector<std::string>> formats{{"FORMAT", "DESCRIPTION", "READ", "WRITTEN"}};
  for (const TraceFormat format : allFormats()) {
    formats.push_back({formatName(format), formatDescription(format), "yes", isWritten(format, rows) ? "yes" : "-"});
  }
  return tableText(formats) + "\n" + heldText(rows) +
         "\nWhat a file can't hold becomes a comment where there are comments, and is\n"
         "dropped and counted otherwise. docs/formats says more of each.\n";
}

Json jsonOf(const xlatr_capacity& row) {
  return {{"version", row.version},
          {"kinds", kindsOf(row.kinds)},
          {"fd", row.fd != 0},
          {"brs_esi", row.fd_bits != 0},
          {"xl", row.xl != 0},
          {"longest_data", row.longest_data},
          {"lowest_bus", row.lowest_bus},
          {"highest_bus", row.highest_bus},
          {"resolution_ns", row.resolution_ns},
          {"comments", row.comments != 0},
          {"zone", row.zone != 0}};
}

Json json() {
  const std::vector<xlatr_capacity> rows = capacities();
  auto array = Json::array();
  for (const TraceFormat format : allFormats()) {
    Json entry;
    entry["format"] = formatName(format);
    entry["extension"] = formatExtension(format);
    entry["description"] = formatDescription(format);
    entry["reads"] = true;
    entry["versions"] = Json::array();
    for (const xlatr_capacity& row : rows) {
      if (row.format == format) {
        entry["versions"].push_back(jsonOf(row));
      }
    }
    entry["compat_targets"] = Json::array();
    for (const TraceFormat target : formatsOf(xlatr_get_formats_convertible_from(format))) {
      entry["compat_targets"].push_back(formatName(target));
    }
    array.push_back(entry);
  }
  return array;
}

}  // namespace

ExitCode runFormats(const Arguments& arguments) {
  std::cout << (arguments.json ? jsonText(json()) : textOf());
  return ExitCode::Done;
}

}  // namespace xlatr::cli
