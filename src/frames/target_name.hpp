// The names of the files that one trace is split into.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "frames/frame_stream.hpp"

namespace xlatr {

// What tells one part from the others.
struct PartOfTrace {
  std::uint16_t bus = 0;
  std::uint32_t number = 1;  // of the bus, from 1
  std::int64_t timeNs = 0;   // of its first frame
};

// A path with places to fill in: %b the bus, %n the number of the part, %t when it begins ("20240301-080000" on the
// clock of the trace, or seconds since its start if it does not say when that was), %% a percent sign. A digit before
// the letter says how many digits there are at least: %3n is 001.
class TargetName {
 public:
  // A path without any gets "_BUS%b" for the buses and "_%3n" for the parts before its extension. Raises a FrameFailure
  // for another letter after a percent sign, and for a path that would give two parts one name.
  TargetName(std::string_view path, bool hasBuses, bool hasParts);

  [[nodiscard]] std::string of(const PartOfTrace& part, const std::optional<TraceStart>& start) const;

 private:
  std::string pattern_;
};

}  // namespace xlatr
