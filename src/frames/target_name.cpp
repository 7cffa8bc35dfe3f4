#include "frames/target_name.hpp"

#include <algorithm>
#include <cstddef>

#include "frames/frame_failure.hpp"
#include "platform/module_path.hpp"
#include "util/start_time.hpp"

namespace xlatr {
namespace {

constexpr char kPlaceMark = '%';

std::string padded(std::uint64_t number, std::size_t digits) {
  std::string text = std::to_string(number);
  text.insert(0, digits - std::min(digits, text.size()), '0');
  return text;
}

std::string timeText(std::int64_t timeNs, const std::optional<TraceStart>& start) {
  if (!start) {
    constexpr std::int64_t kNsPerSecond = 1'000'000'000;
    return std::to_string(timeNs / kNsPerSecond);
  }
  const DateTime time = dateTimeOfStart(shiftedTime(start->sinceEpochNs, timeNs));
  constexpr std::size_t kYear = 4;
  constexpr std::size_t kOther = 2;
  const auto field = [](auto value, std::size_t digits) { return padded(static_cast<std::uint64_t>(value), digits); };
  return field(time.year, kYear) + field(time.month, kOther) + field(time.day, kOther) + "-" +
         field(time.hour, kOther) + field(time.minute, kOther) + field(time.second, kOther);
}

// A piece of a pattern that stands for something: "%n", "%3n".
struct Place {
  char letter = '\0';
  std::size_t digits = 0;
  std::size_t size = 0;
};

Place placeAt(std::string_view pattern, std::size_t at) {
  Place place{.size = 2};
  std::size_t letterAt = at + 1;
  if (letterAt < pattern.size() && pattern[letterAt] >= '1' && pattern[letterAt] <= '9') {
    place.digits = static_cast<std::size_t>(pattern[letterAt++] - '0');
    ++place.size;
  }
  place.letter = letterAt < pattern.size() ? pattern[letterAt] : '\0';
  return place;
}

// "drive.trc" with "_%3n" is "drive_%3n.trc".
std::string withMarks(std::string_view path, std::string_view marks) {
  const std::size_t nameAt = path.rfind(platform::pathSeparator()) + 1;
  const std::size_t point = path.rfind('.');
  const std::size_t end = point == std::string_view::npos || point <= nameAt ? path.size() : point;
  return std::string(path.substr(0, end)).append(marks).append(path.substr(end));
}

}  // namespace

TargetName::TargetName(std::string_view path, bool hasBuses, bool hasParts) : pattern_(path) {
  if (path.find(kPlaceMark) == std::string_view::npos) {
    pattern_ = withMarks(path, std::string(hasBuses ? "_BUS%b" : "") + (hasParts ? "_%3n" : ""));
    return;
  }
  std::string letters;
  for (std::size_t at = path.find(kPlaceMark); at < path.size();) {
    const Place place = placeAt(path, at);
    if (place.letter == '\0' || std::string_view("bnt%").find(place.letter) == std::string_view::npos) {
      throw FrameFailure(FrameProblem::BadArgument,
                         pattern_ + ": a percent sign stands before b (bus), n (number), t (time) or another one");
    }
    letters += place.letter;
    at = path.find(kPlaceMark, at + place.size);
  }
  const auto lacks = [&letters](char letter) { return letters.find(letter) == std::string::npos; };
  if ((hasBuses && lacks('b')) || (hasParts && lacks('n'))) {
    throw FrameFailure(FrameProblem::BadArgument, pattern_ + ": the parts would have one name: put %" +
                                                      (hasBuses && lacks('b') ? "b" : "n") + " into it");
  }
}

std::string TargetName::of(const PartOfTrace& part, const std::optional<TraceStart>& start) const {
  std::string name;
  for (std::size_t at = 0; at < pattern_.size();) {
    if (pattern_[at] != kPlaceMark) {
      name += pattern_[at++];
      continue;
    }
    const Place place = placeAt(pattern_, at);
    at += place.size;
    switch (place.letter) {
      case 'b':
        name += padded(part.bus, place.digits);
        break;
      case 'n':
        name += padded(part.number, place.digits);
        break;
      case 't':
        name += timeText(part.timeNs, start);
        break;
      default:
        name += kPlaceMark;
    }
  }
  return name;
}

}  // namespace xlatr
