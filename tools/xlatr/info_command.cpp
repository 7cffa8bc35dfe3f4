#include "info_command.hpp"

#include <array>
#include <cstdint>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats.hpp"
#include "frame_counts.hpp"
#include "job.hpp"
#include "measure.hpp"
#include "mf4_groups.hpp"
#include "open_trace.hpp"
#include "output.hpp"
#include "report.hpp"
#include "signals.hpp"
#include "source_list.hpp"
#include "start_time.hpp"

namespace xlatr::cli {
namespace {

using Json = nlohmann::ordered_json;

struct FileInfo {
  std::string path;
  xlatr_head head{};  // without its texts
  std::string producer;
  std::uint64_t size = 0;
  std::optional<std::vector<TraceSession>> sessions;
  std::optional<Mf4Groups> groups;
  // Of a file that was read to its end.
  std::optional<FrameCounts> counts;
  xlatr_account account = emptyAccount();
  bool whole = false;
};

FileInfo infoOf(const std::string& path, bool counts) {
  FileInfo file;
  file.path = path;
  Stream stream = openTrace(path, XLATR_FORMAT_NONE, Wanted{Arguments()}, nullptr);
  file.head = stream.head();
  file.producer = file.head.producer;
  file.head.path = nullptr;
  file.head.producer = nullptr;
  file.size = sizeOfFile(path);
  if (file.head.format == XLATR_FORMAT_BTR) {
    if (const auto header = readTraceHeader(XLATR_FORMAT_BTR, path)) {
      file.sessions = header->sessions;
    }
  }
  if (file.head.format == XLATR_FORMAT_MF4) {
    file.groups = readMf4Groups(path);
  }
  if (!counts) {
    return file;
  }
  file.counts.emplace();
  while (const auto batch = stream.next()) {
    file.counts->add(*batch);
    if (interruption()) {
      return file;
    }
  }
  file.account = stream.account();
  file.whole = isWhole(stream);
  return file;
}

// A data group with one channel group has the records of one kind in their order.
bool isSorted(const Mf4Groups& groups) {
  for (const Mf4DataGroup& group : groups.dataGroups) {
    if (group.channelGroups.size() > 1) {
      return false;
    }
  }
  return true;
}

class Lines {
 public:
  void add(std::string_view name, const std::string& value) {
    constexpr std::size_t kNameWidth = 12;
    text_.append("  ").append(name).append(kNameWidth - name.size(), ' ').append(oneLine(value)).append("\n");
  }
  void addBelow(const std::string& value) { text_.append("    ").append(oneLine(value)).append("\n"); }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string startLine(const FileInfo& file) {
  if (file.head.start_known == 0) {
    return "not stated";
  }
  return startText(file.head) + (file.head.zone_known != 0 ? "" : ", zone unknown");
}

std::string framesLine(const FileInfo& file) {
  if (file.counts) {
    return countText(file.account.read);
  }
  if (file.head.frames_known == 0) {
    return "not stated; --count reads the file";
  }
  return countText(file.head.frames) + (file.head.unfinished != 0 ? ", as it was when the writer stopped" : "");
}

void addCounts(const FileInfo& file, Lines& lines) {
  for (const auto& [bus, kinds] : file.counts->ofBus) {
    std::string text = bus == 0 ? "no bus:" : "bus " + std::to_string(bus) + ":";
    for (std::uint32_t kind = 0; kind < XLATR_KIND_COUNT; ++kind) {
      if (kinds.at(kind) != 0) {
        text.append(" ").append(xlatr_kind_name(kind)).append(" ").append(countText(kinds.at(kind)));
      }
    }
    lines.addBelow(text);
  }
  lines.add("duration", secondsText(file.counts->durationNs()));
  const std::string remarks = remarksText(file.account, file.head);
  lines.add("whole", file.whole ? "yes" : "no" + remarks);
}

void addSessions(const FileInfo& file, Lines& lines) {
  if (!file.sessions) {
    return;
  }
  lines.add("sessions", std::to_string(file.sessions->size()));
  for (const TraceSession& session : *file.sessions) {
    lines.addBelow(std::to_string(session.index) + "  " + startTimeText(session.startDays) + "  " +
                   std::to_string(session.sectors) + (session.sectors == 1 ? " sector" : " sectors") +
                   (session.circular ? ", circular" : ""));
  }
}

void addGroups(const FileInfo& file, Lines& lines) {
  if (!file.groups) {
    return;
  }
  lines.add("finalised", file.head.unfinished != 0 ? "no: its writer was stopped; its counts may be too low" : "yes");
  lines.add("sorted", isSorted(*file.groups) ? "yes" : "no");
  std::size_t number = 0;
  for (const Mf4DataGroup& dataGroup : file.groups->dataGroups) {
    lines.add("data group", std::to_string(++number));
    for (const Mf4ChannelGroup& group : dataGroup.channelGroups) {
      lines.addBelow((group.name.empty() ? "(no name)" : group.name) + ": cycle count " + countText(group.cycleCount));
    }
  }
  if (!file.groups->complete) {
    lines.addBelow("further groups can't be read");
  }
}

std::string textOf(const FileInfo& file) {
  Lines lines;
  lines.add("format", formatName(file.head.format) + ", " + formatDescription(file.head.format));
  lines.add("version", file.head.version > 0.0 ? versionText(file.head.version) : "not stated");
  if (!file.producer.empty()) {
    lines.add("producer", file.producer);
  }
  lines.add("start", startLine(file));
  lines.add("size", sizeText(file.size));
  lines.add("frames", framesLine(file));
  if (file.counts) {
    addCounts(file, lines);
  }
  addSessions(file, lines);
  addGroups(file, lines);
  return oneLine(file.path) + "\n" + lines.text();
}

Json countsJson(const FileInfo& file) {
  auto buses = Json::array();
  for (const auto& [bus, kinds] : file.counts->ofBus) {
    Json row;
    row["bus"] = bus;
    for (std::uint32_t kind = 0; kind < XLATR_KIND_COUNT; ++kind) {
      if (kinds.at(kind) != 0) {
        row[xlatr_kind_name(kind)] = kinds.at(kind);
      }
    }
    buses.push_back(row);
  }
  return buses;
}

Json groupsJson(const Mf4Groups& groups) {
  auto json = Json::array();
  for (const Mf4DataGroup& dataGroup : groups.dataGroups) {
    auto channelGroups = Json::array();
    for (const Mf4ChannelGroup& group : dataGroup.channelGroups) {
      channelGroups.push_back({{"name", group.name}, {"cycle_count", group.cycleCount}});
    }
    json.push_back({{"channel_groups", channelGroups}});
  }
  return json;
}

template <typename Value>
Json orNull(bool known, const Value& value) {
  return known ? Json(value) : Json(nullptr);
}

Json jsonOf(const FileInfo& file) {
  Json json;
  json["file"] = file.path;
  json["format"] = formatName(file.head.format);
  json["description"] = formatDescription(file.head.format);
  json["version"] = orNull(file.head.version > 0.0, file.head.version);
  json["producer"] = file.producer;
  json["start"] = orNull(file.head.start_known != 0, file.head.start_known != 0 ? startText(file.head) : "");
  json["zone_known"] = file.head.zone_known != 0;
  json["size"] = file.size;
  json["unfinished"] = file.head.unfinished != 0;
  json["frames"] =
      orNull(file.counts || file.head.frames_known != 0, file.counts ? file.account.read : file.head.frames);
  if (file.counts) {
    json["duration_ns"] = file.counts->durationNs();
    json["buses"] = countsJson(file);
    json["whole"] = file.whole;
    json["remarks"] = remarksJson(file.account);
  }
  if (file.sessions) {
    json["sessions"] = Json::array();
    for (const TraceSession& session : *file.sessions) {
      json["sessions"].push_back({{"index", session.index},
                                  {"start", startTimeText(session.startDays)},
                                  {"sectors", session.sectors},
                                  {"circular", session.circular}});
    }
  }
  if (file.groups) {
    json["sorted"] = isSorted(*file.groups);
    json["data_groups"] = groupsJson(*file.groups);
    json["groups_complete"] = file.groups->complete;
  }
  return json;
}

}  // namespace

ExitCode runInfo(const Arguments& arguments) {
  ExitCode code = ExitCode::Done;
  auto array = Json::array();
  std::string before;
  watchSignals();
  for (const std::string& path : arguments.paths) {
    try {
      const FileInfo file = infoOf(path, arguments.count);
      if (arguments.json) {
        array.push_back(jsonOf(file));
      } else {
        std::cout << std::exchange(before, "\n") << textOf(file);
      }
    } catch (const Error& error) {
      const ReadFailure failure = failureOf(error);
      printError(failure.text);
      code = worse(code, failure.exitCode);
      array.push_back({{"file", path}, {"error", error.what()}});
    }
    if (const auto ended = interruption()) {
      return *ended;
    }
  }
  if (arguments.json) {
    std::cout << jsonText(array);
  }
  return code;
}

}  // namespace xlatr::cli
