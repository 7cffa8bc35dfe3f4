// Where frames come from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "util/date_time.hpp"
#include "xlatr/xlatr.h"

namespace xlatr {

// When a trace started. Most formats state the wall clock of a place that they don't name.
struct TraceStart {
  std::int64_t sinceEpochNs = 0;        // since 1970-01-01 00:00:00, on the clock that the file means
  std::optional<int> zoneMinutes = {};  // what that clock is ahead of UTC, where the file says so

  bool operator==(const TraceStart&) const = default;
};

// The start as headers state it that have a number of days for it: day zero of their scale, 1899-12-30, if there is
// none.
[[nodiscard]] inline std::int64_t startOrNone(const std::optional<TraceStart>& start) {
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  return start ? start->sinceEpochNs : kNullDateSeconds * kNanosecondsPerSecond;
}

// What Frame::place counts.
enum class PlaceUnit : std::uint8_t { Line, Record };

// What a stream says before its first frame.
struct StreamHead {
  std::string path = {};  // or the name of other bytes; empty for what is no trace
  TraceFormat format = XLATR_FORMAT_NONE;
  double version = 0.0;
  std::string producer = {};
  std::optional<TraceStart> start = {};
  std::optional<std::uint64_t> frames = {};  // where the file states their number
  PlaceUnit places = PlaceUnit::Line;
  bool unfinished = false;  // the file says that its writer was stopped before its end
};

// What a source holds that becomes no frame, such as the traffic of other buses.
struct PassedOver {
  std::string name = {};  // "FlexRay frame (object type 41)"
  std::uint64_t count = 0;

  bool operator==(const PassedOver&) const = default;
};

// One trace that is read. Made for a file of its format; raises std::ios_base::failure when the system refuses, from
// its construction on. Nothing that a file holds raises: what can't be understood is a comment, with a remark. One
// thread at a time.
class FrameSource {
 public:
  virtual ~FrameSource() = default;

  [[nodiscard]] virtual const StreamHead& head() const = 0;
  // Fills an empty batch until it is full or the trace ends, and counts what it read. False, with an empty batch, at
  // the end. A batch can be empty before the end too, if nothing in it is wanted.
  [[nodiscard]] virtual bool read(FrameBatch& batch, Account& account) = 0;
  // What was passed over so far, each kind once; the account has their sum (Remark::OtherBus).
  [[nodiscard]] virtual std::vector<PassedOver> passedOver() const { return {}; }
  // How much of the file was read, in bytes.
  [[nodiscard]] virtual std::uint64_t bytesRead() const = 0;

 protected:
  FrameSource() = default;
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;
};

}  // namespace xlatr
