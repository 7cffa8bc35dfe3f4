#include "info_command.hpp"

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "command_failure.hpp"
#include "formats.hpp"
#include "mf4_groups.hpp"
#include "output.hpp"
#include "source_file.hpp"
#include "start_time.hpp"

namespace xlatr::cli {

namespace {

struct FileDescription {
  std::string path;
  TraceFormat format = XLATR_FORMAT_NONE;
  std::uint64_t size = 0;
  std::optional<TraceHeader> header;
  std::optional<std::string> reasonAgainst;
  std::optional<Mf4Groups> groups;
};

FileDescription describe(const std::string& path) {
  requireReadable(path);
  FileDescription file;
  file.path = path;
  file.format = requireTraceFormat(path);
  file.size = std::filesystem::file_size(path);
  file.header = readTraceHeader(file.format, path);
  file.reasonAgainst = reasonAgainstConversion(file.format, path);
  if (file.format == XLATR_FORMAT_MF4) {
    file.groups = readMf4Groups(path);
  }
  return file;
}

std::string conversionText(const FileDescription& file) {
  if (!file.reasonAgainst) {
    return {};
  }
  return "  convertible " + (file.reasonAgainst->empty() ? "yes" : "no: " + oneLine(*file.reasonAgainst)) + "\n";
}

std::string groupsText(const FileDescription& file) {
  if (!file.groups) {
    return {};
  }
  std::string text;
  std::size_t number = 0;
  for (const Mf4DataGroup& dataGroup : file.groups->dataGroups) {
    text += "  data group " + std::to_string(++number) + "\n";
    for (const Mf4ChannelGroup& group : dataGroup.channelGroups) {
      text += "    " + (group.name.empty() ? "(no name)" : oneLine(group.name)) + ": cycle count " +
              std::to_string(group.cycleCount) + "\n";
    }
  }
  return text + (file.groups->complete ? "" : "  further groups can't be read\n");
}

std::string textOf(const FileDescription& file) {
  const std::string startTime = file.header ? startTimeText(file.header->startDays) : std::string();
  const std::string targets = nameList(xlatr_get_formats_convertible_from(file.format));
  const bool versionStated = file.header && file.header->version > 0.0;
  std::string validity = "not checked";
  if (file.header) {
    validity = file.header->valid ? "yes" : "no";
  }
  return oneLine(file.path) + "\n" +  //
         "  format      " + formatName(file.format) + ", " + formatDescription(file.format) + "\n" + "  version     " +
         (versionStated ? versionText(file.header->version) : "unknown") + "\n" + "  start time  " +
         (startTime.empty() ? "unknown" : startTime) + "\n" + "  size        " + sizeText(file.size) + "\n" +
         "  valid       " + validity + "\n" + conversionText(file) + "  targets     " +
         (targets.empty() ? "none" : targets) + "\n" + groupsText(file);
}

nlohmann::ordered_json jsonOf(const Mf4Groups& groups) {
  auto json = nlohmann::ordered_json::array();
  for (const Mf4DataGroup& dataGroup : groups.dataGroups) {
    auto channelGroups = nlohmann::ordered_json::array();
    for (const Mf4ChannelGroup& group : dataGroup.channelGroups) {
      channelGroups.push_back({{"name", group.name}, {"cycleCount", group.cycleCount}});
    }
    json.push_back({{"channelGroups", channelGroups}});
  }
  return json;
}

// A line for each session; nothing for a file that is not made of sessions.
std::string sessionsTextOf(const FileDescription& file) {
  if (!file.header || !file.header->sessions) {
    return {};
  }
  std::string text = "  sessions    " + std::to_string(file.header->sessions->size()) + "\n";
  for (const TraceSession& session : *file.header->sessions) {
    text += "    " + std::to_string(session.index) + "  " + startTimeText(session.startDays) + "  " +
            std::to_string(session.sectors) + (session.sectors == 1 ? " sector" : " sectors") +
            (session.circular ? ", circular" : "") + "\n";
  }
  return text;
}

nlohmann::ordered_json jsonOf(const TraceSession& session) {
  return {{"index", session.index},
          {"startTime", startTimeText(session.startDays)},
          {"sectors", session.sectors},
          {"circular", session.circular}};
}

nlohmann::ordered_json jsonOf(const FileDescription& file) {
  nlohmann::ordered_json json;
  json["file"] = file.path;
  json["format"] = formatName(file.format);
  json["description"] = formatDescription(file.format);
  json["version"] = nullptr;
  json["startTime"] = nullptr;
  json["size"] = file.size;
  json["valid"] = nullptr;
  if (file.header) {
    if (file.header->version > 0.0) {
      json["version"] = file.header->version;
    }
    const std::string startTime = startTimeText(file.header->startDays);
    if (!startTime.empty()) {
      json["startTime"] = startTime;
    }
    json["valid"] = file.header->valid;
  }
  json["targets"] = nlohmann::ordered_json::array();
  for (const TraceFormat target : formatsOf(xlatr_get_formats_convertible_from(file.format))) {
    json["targets"].push_back(formatName(target));
  }
  if (file.reasonAgainst) {
    json["convertible"] = file.reasonAgainst->empty();
    json["reason"] = nullptr;
    if (!file.reasonAgainst->empty()) {
      json["reason"] = *file.reasonAgainst;
    }
  }
  if (file.groups) {
    json["dataGroups"] = jsonOf(*file.groups);
    json["groupsComplete"] = file.groups->complete;
  }
  if (file.header && file.header->sessions) {
    json["sessions"] = nlohmann::ordered_json::array();
    for (const TraceSession& session : *file.header->sessions) {
      json["sessions"].push_back(jsonOf(session));
    }
  }
  return json;
}

}  // namespace

ExitCode runInfo(const InfoArguments& arguments) {
  auto code = ExitCode::Done;
  auto array = nlohmann::ordered_json::array();
  bool first = true;
  for (const auto& path : arguments.files) {
    try {
      const FileDescription file = describe(path);
      if (arguments.json) {
        array.push_back(jsonOf(file));
      } else {
        std::cout << (first ? "" : "\n") << textOf(file) << sessionsTextOf(file);
      }
      first = false;
    } catch (const CommandFailure& failure) {
      printError(failure.what());
      code = failure.code();
      if (arguments.json) {
        array.push_back({{"file", path}, {"error", failure.what()}});
      }
    }
  }
  if (arguments.json) {
    // A path need not be UTF-8, JSON must be.
    std::cout << array.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
  }
  return code;
}

}  // namespace xlatr::cli
