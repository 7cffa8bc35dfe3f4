// The traces that both ways convert, and where what they write differs.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "io/quirk.hpp"
#include "xlatr/xlatr.h"

namespace xlatr::test {

// A trace as frames, which is written in every version that can hold all of it.
struct OneTrace {
  std::string_view name;
  std::vector<std::string_view> frames = {};         // as comments have them
  std::int64_t startNs = 1'627'279'200'000'000'000;  // 2021-07-26 06:00
};
[[nodiscard]] std::span<const OneTrace> tracesForBothWays();

// A trace as its file, for what only other programs write.
struct TextTrace {
  std::string_view name;
  TraceFormat format;
  std::string_view text;
};
[[nodiscard]] std::span<const TextTrace> textsForBothWays();

// Versions of a format, from one to another.
struct Versions {
  TraceFormat format;
  double lowest = 0.0;
  double highest = 1'000.0;
};

// A quirk makes the ways differ for each of these traces (where there are none: for many), from and to each of these
// versions.
struct Difference {
  Quirk quirk;
  std::vector<std::string_view> traces;
  std::vector<Versions> from;
  std::vector<Versions> to;
};
[[nodiscard]] std::span<const Difference> differences();

}  // namespace xlatr::test
