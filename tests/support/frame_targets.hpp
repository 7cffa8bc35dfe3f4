// Every format and version that frames are written in, for tests that run over all of them.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "frames/frame_capacity.hpp"
#include "frames/frame_sink.hpp"
#include "io/format.hpp"

namespace xlatr::test {

struct FrameTarget {
  const FormatDescriptor* format;
  const FrameCapacity* capacity;

  // "trc_210": the extension and a hundred times the version. Also the name of a test's parameter.
  [[nodiscard]] std::string name() const {
    return std::string(format->extension.substr(1)) + "_" + std::to_string(std::lround(capacity->version * 100));
  }
  [[nodiscard]] SinkSettings settings() const { return {.version = capacity->version}; }
};

// In the order of the formats and of their versions.
inline std::vector<FrameTarget> frameTargets() {
  std::vector<FrameTarget> targets;
  for (const FormatDescriptor* const format : formatRegistry()) {
    if (format->createFrames == nullptr) {
      continue;
    }
    for (const FrameCapacity& capacity : format->frameCapacities()) {
      targets.push_back({format, &capacity});
    }
  }
  return targets;
}

}  // namespace xlatr::test
