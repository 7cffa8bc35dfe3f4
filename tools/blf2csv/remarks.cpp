#include "blf2csv/remarks.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace blf2csv {
namespace {

// More types than producers write; a damaged log may have any number.
constexpr std::size_t kMostTypes = 200;

// In the order of the enumeration.
constexpr std::array<const char*, kRemarkCount> kTexts = {
    "containers cut off by the end of the file",
    "containers that could not be inflated to their end",
    "containers packed by an unknown method",
    "containers with more or less content than they state",
    "stretches of bytes between containers that belong to none, skipped",
    "containers inside a container, skipped",
    "stretches of bytes between objects that belong to none, skipped",
    "objects too short for their type",
    "frames with fewer data bytes than they state, or more than such a frame can have",
    "time stamps of an unknown unit, read as nanoseconds",
};

}  // namespace

void Remarks::notePassedOver(std::uint32_t type) {
  const auto known =
      std::find_if(passedOver_.begin(), passedOver_.end(), [type](const auto& entry) { return entry.first == type; });
  if (known != passedOver_.end()) {
    ++known->second;
  } else if (passedOver_.size() < kMostTypes) {
    passedOver_.emplace_back(type, 1);
  } else {
    ++otherPassedOver_;
  }
}

std::uint64_t Remarks::passedOver() const {
  std::uint64_t sum = otherPassedOver_;
  for (const auto& [type, count] : passedOver_) {
    sum += count;
  }
  return sum;
}

std::vector<std::string> Remarks::lines() const {
  std::vector<std::string> lines;
  for (std::size_t index = 0; index < kRemarkCount; ++index) {
    const auto remark = static_cast<Remark>(index);
    if (times(remark) > 0) {
      lines.push_back(std::string(kTexts[index]) + ": " + std::to_string(times(remark)) + ", the first at offset " +
                      std::to_string(firstOffset(remark)) +
                      (remark <= Remark::StrayFileBytes ? "" : " of the content"));
    }
  }
  if (!passedOver_.empty()) {
    auto sorted = passedOver_;
    std::sort(sorted.begin(), sorted.end());
    std::string line = "objects of types without a row, skipped: " + std::to_string(passedOver());
    const char* separator = " (";
    for (const auto& [type, count] : sorted) {
      line += separator + std::to_string(count) + " of type " + std::to_string(type);
      separator = ", ";
    }
    if (otherPassedOver_ > 0) {
      line += ", " + std::to_string(otherPassedOver_) + " of other types";
    }
    lines.push_back(line + ")");
  }
  return lines;
}

}  // namespace blf2csv
