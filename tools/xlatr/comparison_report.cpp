#include "comparison_report.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>

#include "frame_lines.hpp"
#include "measure.hpp"
#include "output.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {

namespace {

using Json = nlohmann::ordered_json;

std::string placeText(const ComparedTrace& trace, std::uint64_t place) {
  return (trace.placesAreRecords ? "record " : "line ") + std::to_string(place);
}

// A frame as a batch of one row, so that it is shown like those of xlatr cat.
std::string lineOf(const xlatr_frame& frame, void (*append)(const xlatr_batch&, std::size_t, std::string&)) {
  const std::array<std::int32_t, 2> dataOffsets = {0, static_cast<std::int32_t>(frame.data_size)};
  const std::array<std::int32_t, 2> textOffsets = {0, static_cast<std::int32_t>(frame.text_size)};
  xlatr_batch batch{};
  batch.size = sizeof batch;
  batch.rows = 1;
  batch.time_ns = &frame.time_ns;
  batch.kind = &frame.kind;
  batch.bus = &frame.bus;
  batch.id = &frame.id;
  batch.flags = &frame.flags;
  batch.dlc = &frame.dlc;
  batch.data_offsets = dataOffsets.data();
  batch.data = frame.data;
  batch.text_offsets = textOffsets.data();
  batch.text = frame.text;
  batch.text_validity = &frame.has_text;
  batch.place = &frame.place;
  batch.attributes = frame.attributes;
  for (std::size_t attribute = 0; attribute < XLATR_ATTRIBUTE_COUNT; ++attribute) {
    batch.attribute[attribute] = frame.attribute + attribute;
  }
  std::string line;
  append(batch, 0, line);
  return line;
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
    text += "- " + placeText(first, difference.first->place) + ": " + lineOf(*difference.first, appendTextLine);
  }
  if (difference.second != nullptr) {
    text += "+ " + placeText(second, difference.second->place) + ": " + lineOf(*difference.second, appendTextLine);
  }
  return difference.fields == 0 ? text : text + "  differ in " + fieldsText(difference.fields) + "\n";
}

std::string countsByField(const xlatr_comparison_summary& summary) {
  std::string text;
  for (std::uint32_t field = 0; field < XLATR_FIELD_COUNT; ++field) {
    if (summary.different_by[field] != 0) {
      text += (text.empty() ? "" : ", ") + std::string(xlatr_field_name(field)) + " " +
              countText(summary.different_by[field]);
    }
  }
  return text;
}

Json frameJson(const xlatr_frame* frame) {
  if (frame == nullptr) {
    return {};
  }
  Json json = {{"place", frame->place}};
  json.update(Json::parse(lineOf(*frame, appendJsonLine)));
  return json;
}

template <typename Action>
void forEachDifference(const Comparison& comparison, std::uint32_t limit, Action action) {
  for (std::uint32_t row = 0; row < limit; ++row) {
    const std::optional<xlatr_difference> difference = comparison.difference(row);
    if (!difference) {
      return;
    }
    action(*difference);
  }
}

}  // namespace

std::string comparisonText(const ComparedTrace& first, const ComparedTrace& second, const Comparison& comparison,
                           std::uint32_t limit) {
  const xlatr_comparison_summary summary = comparison.summary();
  const std::string within = "times within " + shortDuration(static_cast<double>(summary.tolerance_ns));
  const std::string one = oneLine(first.name);
  const std::string other = oneLine(second.name);
  if (summary.same != 0) {
    return one + " and " + other + ": the same " + countedFrames(summary.equal) + " (" + within +
           (summary.farthest_ns == 0
                ? ""
                : ", up to " + shortDuration(static_cast<double>(summary.farthest_ns)) + " apart") +
           ")\n";
  }
  const std::string fields = countsByField(summary);
  std::string text = one + " and " + other + ": different (" + within + ")\n";
  text += tableText({{"  equal", countText(summary.equal)},
                     {"  different", countText(summary.different) + (fields.empty() ? "" : ": " + fields)},
                     {"  only in " + one, countText(summary.only_first)},
                     {"  only in " + other, countText(summary.only_second)}});
  if (limit > 0) {
    text += "\n- " + one + "\n+ " + other + "\n\n";
  }
  forEachDifference(comparison, limit,
                    [&](const xlatr_difference& each) { text += differenceText(first, second, each); });
  const std::uint64_t all = summary.different + summary.only_first + summary.only_second;
  const std::uint64_t shown = std::min(limit, summary.differences);
  if (all > shown) {
    text += countText(all - shown) + " more; --limit shows them\n";
  }
  return text;
}

Json comparisonJson(const ComparedTrace& first, const ComparedTrace& second, const Comparison& comparison,
                    std::uint32_t limit) {
  const xlatr_comparison_summary summary = comparison.summary();
  const auto traceJson = [](const ComparedTrace& trace, std::uint64_t frames, std::uint64_t only) {
    Json json;
    json["file"] = trace.name;
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
  forEachDifference(comparison, limit, [&json](const xlatr_difference& each) {
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
