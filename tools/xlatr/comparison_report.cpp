#include "comparison_report.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "hex_text.hpp"
#include "measure.hpp"
#include "output.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {

namespace {

using Json = nlohmann::ordered_json;

struct FlagName {
  std::uint16_t flag;
  const char* name;
};
// Those that are compared.
constexpr std::array kFlagNames = {FlagName{XLATR_FLAG_EXTENDED, "extended"},
                                   FlagName{XLATR_FLAG_RECEIVED, "rx"},
                                   FlagName{XLATR_FLAG_TRANSMITTED, "tx"},
                                   FlagName{XLATR_FLAG_FD, "fd"},
                                   FlagName{XLATR_FLAG_BRS, "brs"},
                                   FlagName{XLATR_FLAG_ESI, "esi"},
                                   FlagName{XLATR_FLAG_XL, "xl"}};

std::string placeText(const ComparedTrace& trace, std::uint64_t place) {
  return (trace.placesAreRecords ? "record " : "line ") + std::to_string(place);
}

std::span<const std::uint8_t> dataOf(const xlatr_frame& frame) {
  return {frame.data, static_cast<std::size_t>(frame.data_size)};
}

std::string textOf(const xlatr_frame& frame) {
  return {frame.text, static_cast<std::size_t>(frame.text_size)};
}

bool hasIdentifier(const xlatr_frame& frame) {
  return frame.kind == XLATR_KIND_DATA || frame.kind == XLATR_KIND_REMOTE || frame.kind == XLATR_KIND_LIN;
}

std::string frameText(const xlatr_frame& frame) {
  constexpr std::size_t kShown = 64;
  std::string text =
      secondsText(frame.time_ns) + "  bus " + std::to_string(frame.bus) + "  " + xlatr_kind_name(frame.kind);
  if (hasIdentifier(frame)) {
    text += " " + identifierText(frame.kind, frame.id, (frame.flags & XLATR_FLAG_EXTENDED) != 0);
  }
  for (const FlagName& flag : kFlagNames) {
    if ((frame.flags & flag.flag) != 0 && flag.flag != XLATR_FLAG_EXTENDED) {
      text += std::string(" ") + flag.name;
    }
  }
  const auto data = dataOf(frame);
  text += "  dlc " + std::to_string(frame.dlc) + (data.empty() ? "" : "  ") +
          hexBytes(data.first(std::min(data.size(), kShown)), " ") + (data.size() > kShown ? " ..." : "");
  if (frame.has_text != 0) {
    text += "  \"" + oneLine(textOf(frame)) + "\"";
  }
  return text;
}

std::string fieldsText(std::uint32_t fields) {
  std::string text;
  for (std::uint32_t field = 0; field < XLATR_FIELD_COUNT; ++field) {
    if ((fields >> field & 1U) != 0) {
      text += (text.empty() ? "" : ", ") + std::string(xlatr_field_name(field));
    }
  }
  return text;
}

std::string differenceText(const ComparedTrace& first, const ComparedTrace& second,
                           const xlatr_difference& difference) {
  std::string text;
  if (difference.first != nullptr) {
    text += "- " + placeText(first, difference.first->place) + ": " + frameText(*difference.first) + "\n";
  }
  if (difference.second != nullptr) {
    text += "+ " + placeText(second, difference.second->place) + ": " + frameText(*difference.second) + "\n";
  }
  return difference.fields == 0 ? text : text + "  differ in " + fieldsText(difference.fields) + "\n";
}

std::string countsByField(const xlatr_comparison_summary& summary) {
  std::string text;
  for (std::uint32_t field = 0; field < XLATR_FIELD_COUNT; ++field) {
    if (summary.different_by[field] != 0) {
      text += (text.empty() ? "" : ", ") + std::string(xlatr_field_name(field)) + " " +
              std::to_string(summary.different_by[field]);
    }
  }
  return text;
}

Json frameJson(const xlatr_frame* frame) {
  if (frame == nullptr) {
    return {};
  }
  Json json;
  json["place"] = frame->place;
  json["time_ns"] = frame->time_ns;
  json["kind"] = xlatr_kind_name(frame->kind);
  json["bus"] = frame->bus;
  json["id"] = hexText(frame->id, 1);
  json["flags"] = Json::array();
  for (const FlagName& flag : kFlagNames) {
    if ((frame->flags & flag.flag) != 0) {
      json["flags"].push_back(flag.name);
    }
  }
  json["dlc"] = frame->dlc;
  json["data"] = hexBytes(dataOf(*frame));
  json["text"] = frame->has_text != 0 ? Json(textOf(*frame)) : Json();
  return json;
}

template <typename Action>
void forEachDifference(const Comparison& comparison, Action action) {
  for (std::uint32_t row = 0;; ++row) {
    const std::optional<xlatr_difference> difference = comparison.difference(row);
    if (!difference) {
      return;
    }
    action(*difference);
  }
}

}  // namespace

std::string comparisonText(const ComparedTrace& first, const ComparedTrace& second, const Comparison& comparison) {
  const xlatr_comparison_summary summary = comparison.summary();
  const std::string within = "times within " + durationText(static_cast<double>(summary.tolerance_ns));
  const std::string one = oneLine(first.name);
  const std::string other = oneLine(second.name);
  if (summary.same != 0) {
    return one + " and " + other + ": the same " + std::to_string(summary.equal) + " frames (" + within +
           (summary.farthest_ns == 0 ? ""
                                     : ", up to " + durationText(static_cast<double>(summary.farthest_ns)) + " apart") +
           ")\n";
  }
  const std::string fields = countsByField(summary);
  std::string text = one + " and " + other + ": different (" + within + ")\n";
  text += tableText({{"  equal", std::to_string(summary.equal)},
                     {"  different", std::to_string(summary.different) + (fields.empty() ? "" : ": " + fields)},
                     {"  only in " + one, std::to_string(summary.only_first)},
                     {"  only in " + other, std::to_string(summary.only_second)}});
  text += "\n- " + one + "\n+ " + other + "\n\n";
  forEachDifference(comparison, [&](const xlatr_difference& each) { text += differenceText(first, second, each); });
  const std::uint64_t all = summary.different + summary.only_first + summary.only_second;
  if (all > summary.differences) {
    text += std::to_string(all - summary.differences) + " more; --limit shows them\n";
  }
  return text;
}

Json comparisonJson(const ComparedTrace& first, const ComparedTrace& second, const Comparison& comparison) {
  const xlatr_comparison_summary summary = comparison.summary();
  const auto traceJson = [](const ComparedTrace& trace, std::uint64_t frames, std::uint64_t only) {
    Json json;
    json["path"] = trace.name;
    json["places"] = trace.placesAreRecords ? "records" : "lines";
    json["frames"] = frames;
    json["only"] = only;
    return json;
  };
  Json json;
  json["same"] = summary.same != 0;
  json["tolerance_ns"] = summary.tolerance_ns;
  json["first"] = traceJson(first, summary.first_frames, summary.only_first);
  json["second"] = traceJson(second, summary.second_frames, summary.only_second);
  json["equal"] = summary.equal;
  json["reordered"] = summary.reordered;
  json["farthest_ns"] = summary.farthest_ns;
  json["different"] = summary.different;
  json["different_by"] = Json::object();
  for (std::uint32_t field = 0; field < XLATR_FIELD_COUNT; ++field) {
    if (summary.different_by[field] != 0) {
      json["different_by"][xlatr_field_name(field)] = summary.different_by[field];
    }
  }
  json["differences"] = Json::array();
  forEachDifference(comparison, [&json](const xlatr_difference& each) {
    Json difference;
    difference["fields"] = Json::array();
    for (std::uint32_t field = 0; field < XLATR_FIELD_COUNT; ++field) {
      if ((each.fields >> field & 1U) != 0) {
        difference["fields"].push_back(xlatr_field_name(field));
      }
    }
    difference["first"] = frameJson(each.first);
    difference["second"] = frameJson(each.second);
    json["differences"].push_back(std::move(difference));
  });
  return json;
}

}  // namespace xlatr::cli
