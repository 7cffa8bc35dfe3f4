#include "formats_command.hpp"

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

std::string versionsOf(TraceFormat format, const std::vector<xlatr_capacity>& rows) {
  std::vector<double> versions;
  for (const xlatr_capacity& row : rows) {
    if (row.format == format) {
      versions.push_back(row.version);
    }
  }
  return versions.empty() ? "-" : versionListText(versions);
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

std::string textOf() {
  const std::vector<xlatr_capacity> rows = capacities();
  std::vector<std::vector<std::string>> formats{{"FORMAT", "DESCRIPTION", "READ", "WRITTEN VERSIONS"}};
  for (const TraceFormat format : allFormats()) {
    formats.push_back({formatName(format), formatDescription(format), "yes", versionsOf(format, rows)});
  }
  std::vector<std::vector<std::string>> held{
      {"WRITTEN", "FRAMES", "BRS/ESI", "REMOTE", "ERRORS", "BUSES", "TIMES", "COMMENTS", "ZONE"}};
  const auto yes = [](bool condition) { return std::string(condition ? "yes" : "-"); };
  for (const xlatr_capacity& row : rows) {
    held.push_back({formatName(row.format) + " " + versionText(row.version), framesText(row), yes(row.fd_bits != 0),
                    yes((row.kinds >> XLATR_KIND_REMOTE & 1U) != 0), yes((row.kinds >> XLATR_KIND_ERROR & 1U) != 0),
                    busesText(row), resolutionText(row.resolution_ns), yes(row.comments != 0), yes(row.zone != 0)});
  }
  return tableText(formats) + "\n" + tableText(held) +
         "\nWhat a file can't hold becomes a comment where there are comments, and is dropped and\n"
         "counted otherwise. docs/formats says more of each.\n";
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
