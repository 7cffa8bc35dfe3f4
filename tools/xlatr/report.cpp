#include "report.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>

#include "formats.hpp"
#include "measure.hpp"
#include "output.hpp"
#include "start_time.hpp"

namespace xlatr::cli {
namespace {

using Json = nlohmann::ordered_json;

// The three ways in which a remark counts.
struct CountRow {
  std::string_view name;  // in JSON
  std::string_view text;
  xlatr_count (xlatr_account::*counts)[XLATR_REMARK_LIMIT];
};
constexpr std::array kCounts = {
    CountRow{"dropped", "dropped", &xlatr_account::dropped_by},
    CountRow{"commented", "kept as a comment", &xlatr_account::commented_by},
    CountRow{"noted", "noted", &xlatr_account::noted},
};

std::string_view className(std::int32_t remarkClass) {
  static constexpr std::array<std::string_view, 6> kNames = {"selection", "damage",  "guess",
                                                             "not_held",  "reduced", "passed_over"};
  return kNames.at(static_cast<std::size_t>(remarkClass));
}

// How the first line or record begins that a count is about; empty if that is not known.
std::string_view metAt(const xlatr_account& account, const CountRow& row, std::uint32_t remark) {
  return row.counts == &xlatr_account::noted ? account.met[remark] : "";
}

std::string targetText(const JobReport& report) {
  if (report.written.size() > 1) {
    return report.written.front().path + " and " + countText(report.written.size() - 1) + " more";
  }
  return report.written.empty() ? report.paths.target : report.written.front().path;
}

std::string sourceText(const JobReport& report) {
  const std::string& first = report.paths.sources.front();
  return report.paths.sources.size() == 1 ? first
                                          : first + " and " + countText(report.paths.sources.size() - 1) + " more";
}

std::string_view statusName(const JobReport& report) {
  if (report.skipped) {
    return "skipped";
  }
  if (!report.error.empty()) {
    return "failed";
  }
  return report.exitCode == ExitCode::Done ? "complete" : "incomplete";
}

Json headJson(const JobReport& report) {
  Json json;
  json["format"] = formatName(report.head.format);
  json["version"] = report.head.version;
  json["producer"] = report.producer;
  json["start"] = nullptr;
  if (report.head.start_known != 0) {
    json["start"] = startText(report.head);
  }
  json["unfinished"] = report.head.unfinished != 0;
  return json;
}

Json jsonOf(const JobReport& report) {
  Json json;
  json["sources"] = report.paths.sources;
  json["target"] = report.paths.target;
  json["status"] = statusName(report);
  json["exit_code"] = static_cast<int>(report.exitCode);
  json["error"] = nullptr;
  if (!report.error.empty()) {
    json["error"] = report.error;
  }
  json["head"] = nullptr;
  if (report.head.format != 0) {
    json["head"] = headJson(report);
  }
  json["read"] = report.account.read;
  json["written"] = report.account.written;
  json["commented"] = report.account.commented;
  json["dropped"] = report.account.dropped;
  json["remarks"] = remarksJson(report.account);
  json["passed_over"] = Json::array();
  for (const auto& [name, count] : report.passedOver) {
    json["passed_over"].push_back({{"name", name}, {"count", count}});
  }
  json["files"] = Json::array();
  for (const WrittenFile& file : report.written) {
    json["files"].push_back({{"path", file.path}, {"bytes", file.bytes}, {"frames", file.frames}});
  }
  constexpr double kMilliseconds = 1000.0;
  json["seconds"] = std::round(report.seconds * kMilliseconds) / kMilliseconds;
  return json;
}

}  // namespace

std::string remarksText(const xlatr_account& account, const xlatr_head& head) {
  std::string text;
  for (const CountRow& row : kCounts) {
    for (std::uint32_t remark = 0; xlatr_remark_name(remark) != nullptr; ++remark) {
      const xlatr_count& count = (account.*row.counts)[remark];
      if (count.frames == 0) {
        continue;
      }
      text.append("; ").append(countText(count.frames));
      text.append(" ").append(row.text).append(": ").append(xlatr_remark_text(remark));
      if (xlatr_remark_class(remark) != XLATR_CLASS_SELECTION && count.first != 0) {
        text.append(" (the first is ").append(head.places_are_records != 0 ? "record " : "line ");
        text.append(countText(count.first));
        const std::string_view met = metAt(account, row, remark);
        if (!met.empty()) {
          text.append(": ").append(head.places_are_records != 0 ? met : "\"" + std::string(met) + "\"");
        }
        text.append(")");
      }
    }
  }
  if (head.unfinished != 0) {
    text += "; the source was not finished by its writer";
  }
  return text;
}

Json remarksJson(const xlatr_account& account) {
  auto json = Json::array();
  for (const CountRow& row : kCounts) {
    for (std::uint32_t remark = 0; xlatr_remark_name(remark) != nullptr; ++remark) {
      const xlatr_count& count = (account.*row.counts)[remark];
      if (count.frames != 0) {
        json.push_back({{"remark", xlatr_remark_name(remark)},
                        {"class", className(xlatr_remark_class(remark))},
                        {"effect", row.name},
                        {"text", xlatr_remark_text(remark)},
                        {"count", count.frames},
                        {"first", count.first},
                        {"met", metAt(account, row, remark)}});
      }
    }
  }
  return json;
}

std::string reportLine(const JobReport& report) {
  if (report.skipped) {
    return report.paths.target + ": exists; left out";
  }
  if (!report.error.empty()) {
    return report.error + (report.exitCode == ExitCode::DoneWithLosses ? remarksText(report.account, report.head) : "");
  }
  std::string text = sourceText(report) + " -> " + targetText(report) + ": " + countedFrames(report.account.read) +
                     " read, " + countText(report.account.written) + " written";
  text += remarksText(report.account, report.head);
  for (const auto& [name, count] : report.passedOver) {
    text += "; " + name + ": " + countText(count);
  }
  return text;
}

std::string summaryLine(const std::vector<JobReport>& reports) {
  std::uint64_t read = 0;
  std::uint64_t written = 0;
  std::uint64_t dropped = 0;
  std::array<std::size_t, 4> counts{};
  static constexpr std::array<std::string_view, 4> kNames = {"complete", "incomplete", "failed", "skipped"};
  for (const JobReport& report : reports) {
    read += report.account.read;
    written += report.account.written;
    dropped += report.account.dropped;
    ++counts.at(static_cast<std::size_t>(std::ranges::find(kNames, statusName(report)) - kNames.begin()));
  }
  std::string text = countText(reports.size()) + " sources: " + countedFrames(read) + " read, " + countText(written) +
                     " written, " + countText(dropped) + " dropped";
  for (std::size_t at = 0; at < kNames.size(); ++at) {
    if (counts.at(at) != 0) {
      text += "; " + countText(counts.at(at)) + " " + std::string(kNames.at(at));
    }
  }
  return text;
}

Json reportJson(const std::vector<JobReport>& reports) {
  Json json;
  json["xlatr"] = XLATR_PROGRAM_VERSION;
  json["conversions"] = Json::array();
  ExitCode code = ExitCode::Done;
  for (const JobReport& report : reports) {
    json["conversions"].push_back(jsonOf(report));
    code = worse(code, report.exitCode);
  }
  json["exit_code"] = static_cast<int>(code);
  return json;
}

std::string jsonText(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace xlatr::cli
