// The files that a command is given: by name, in folders, in lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "arguments.hpp"

namespace xlatr::cli {

struct SourceFile {
  std::string path;
  std::string below;  // its path below the folder that it was found in, or its name
};

// The sources among `paths` in their order, those of folders (with -r) by name, those of --files-from after them, and
// of all these the ones of --shard. Raises a CommandFailure for a folder without -r, for one that can't be read, and
// for a list that can't be read.
[[nodiscard]] std::vector<SourceFile> sourceList(const Arguments& arguments, const std::vector<std::string>& paths);

// Which of `count` shards a path belongs to, from 0: the same on every machine (FNV-1a, 64 bits).
[[nodiscard]] std::size_t shardOf(const std::string& path, std::size_t count);

// Bytes of a file, 0 of what is none.
[[nodiscard]] std::uint64_t sizeOfFile(const std::string& path);
// Of all together.
[[nodiscard]] std::uint64_t sizeOfFiles(std::span<const std::string> paths);

}  // namespace xlatr::cli
