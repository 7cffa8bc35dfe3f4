// How many frames of which kind are on which bus.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>

#include "xlatr/frames.hpp"

namespace xlatr::cli {

struct FrameCounts {
  using Kinds = std::array<std::uint64_t, XLATR_KIND_COUNT>;

  std::map<std::uint16_t, Kinds> ofBus;  // bus 0: frames that name none
  std::int64_t firstNs = std::numeric_limits<std::int64_t>::max();
  std::int64_t lastNs = std::numeric_limits<std::int64_t>::min();

  void add(const BatchView& batch) {
    const xlatr_batch& columns = batch.columns();
    Kinds* kinds = nullptr;
    std::uint16_t bus = 0;
    for (std::size_t row = 0; row < batch.size(); ++row) {
      if (kinds == nullptr || columns.bus[row] != bus) {
        bus = columns.bus[row];
        kinds = &ofBus[bus];
      }
      ++kinds->at(columns.kind[row]);
      if (columns.kind[row] != XLATR_KIND_COMMENT) {  // whose time is that of the frame before
        firstNs = std::min(firstNs, columns.time_ns[row]);
        lastNs = std::max(lastNs, columns.time_ns[row]);
      }
    }
  }
  // From the first frame to the last one.
  [[nodiscard]] std::int64_t durationNs() const { return lastNs < firstNs ? 0 : lastNs - firstNs; }
};

}  // namespace xlatr::cli
