// Recorded traffic, which lies outside the tree and may be absent.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

namespace xlatr::test {

// The files with that extension, in the order of their names.
inline std::vector<std::filesystem::path> recordingsIn(const std::filesystem::path& folder,
                                                       std::string_view extension) {
  std::vector<std::filesystem::path> found;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == extension) {
      found.push_back(entry.path());
    }
  }
  std::ranges::sort(found);
  return found;
}

// The list of its frames, which lies beside it.
inline std::filesystem::path frameListOf(std::filesystem::path recording) {
  return recording.replace_extension(".expected.csv");
}

}  // namespace xlatr::test
