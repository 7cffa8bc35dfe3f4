// The groups of an MF4 file, to show what it holds. The library hands out frames and no structure, so the few fields
// that are needed are read here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace xlatr::cli {

struct Mf4ChannelGroup {
  std::string name;  // the acquisition name; empty without one
  std::uint64_t cycleCount = 0;
};

struct Mf4DataGroup {
  std::vector<Mf4ChannelGroup> channelGroups;
};

struct Mf4Groups {
  std::vector<Mf4DataGroup> dataGroups;
  bool complete = true;  // false if a link leads nowhere or back, or if there are more groups than anybody wants to see
};

// At most this many groups of both kinds are reported for one file.
inline constexpr std::uint64_t kMaxMf4Groups = 10000;

// Reads no more than a few hundred bytes per group, whatever the file says. A file that is not an MF4 file has no
// groups.
[[nodiscard]] Mf4Groups readMf4Groups(const std::string& path);

}  // namespace xlatr::cli
