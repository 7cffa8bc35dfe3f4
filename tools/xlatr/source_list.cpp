#include "source_list.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <system_error>

#include "command_failure.hpp"
#include "formats.hpp"
#include "standard_streams.hpp"
#include "values.hpp"

namespace xlatr::cli {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw CommandFailure(ExitCode::Failed, path + ": " + reason);
}

// The files below a folder that have an extension of ours, in the order of their names.
void addFolder(const std::string& folder, std::vector<SourceFile>& sources) {
  std::vector<SourceFile> found;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    const std::string path = entry->path().string();
    const std::string name = entry->path().filename().string();
    if (!name.starts_with('.') && entry->is_regular_file(ignored) &&
        formatFromName(extensionOf(path)) != XLATR_FORMAT_NONE) {
      found.push_back({path, entry->path().lexically_relative(folder).string()});
    }
  }
  if (error) {
    fail(folder, error.message());
  }
  std::ranges::sort(found, {}, &SourceFile::path);
  sources.insert(sources.end(), found.begin(), found.end());
}

void addPath(const Arguments& arguments, const std::string& path, std::vector<SourceFile>& sources) {
  std::error_code error;
  if (path != kStandardStream && fs::is_directory(path, error)) {
    if (!arguments.recursive) {
      fail(path, "this is a folder; give -r to take the traces in it");
    }
    addFolder(path, sources);
    return;
  }
  sources.push_back({path, fs::path(path).filename().string()});
}

std::vector<std::string> linesOf(std::istream& list, char end) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(list, line, end);) {
    if (end == '\n' && line.ends_with('\r')) {
      line.pop_back();
    }
    if (!line.empty()) {
      lines.push_back(line);
    }
  }
  return lines;
}

std::vector<std::string> listedPaths(const Arguments& arguments) {
  const char end = arguments.null ? '\0' : '\n';
  if (arguments.filesFrom == kStandardStream) {
    return linesOf(std::cin, end);
  }
  std::ifstream list(arguments.filesFrom, std::ios::binary);
  std::vector<std::string> lines = linesOf(list, end);
  if (!list.eof()) {
    fail(arguments.filesFrom, "the list of files can't be read");
  }
  return lines;
}

void keepShard(const std::string& shard, std::vector<SourceFile>& sources) {
  constexpr std::uint32_t kMost = 1'000'000;
  const std::size_t slash = shard.find('/');
  if (slash == std::string::npos) {
    failValue("--shard", shard, "write it as 1/4: the first of four parts");
  }
  const std::size_t part = numberValue("--shard", std::string_view(shard).substr(0, slash), kMost);
  const std::size_t count = numberValue("--shard", std::string_view(shard).substr(slash + 1), kMost);
  if (part == 0 || part > count) {
    failValue("--shard", shard, "there is no such part: the parts are counted from 1");
  }
  std::erase_if(sources, [&](const SourceFile& source) { return shardOf(source.path, count) != part - 1; });
}

}  // namespace

std::vector<SourceFile> sourceList(const Arguments& arguments, const std::vector<std::string>& paths) {
  std::vector<SourceFile> sources;
  for (const std::string& path : paths) {
    addPath(arguments, path, sources);
  }
  if (!arguments.filesFrom.empty()) {
    for (const std::string& path : listedPaths(arguments)) {
      addPath(arguments, path, sources);
    }
  }
  if (!arguments.shard.empty()) {
    keepShard(arguments.shard, sources);
  }
  return sources;
}

std::size_t shardOf(const std::string& path, std::size_t count) {
  constexpr std::uint64_t kBasis = 14695981039346656037U;
  constexpr std::uint64_t kPrime = 1099511628211U;
  std::uint64_t hash = kBasis;
  for (const char character : path) {
    hash = (hash ^ static_cast<unsigned char>(character)) * kPrime;
  }
  return static_cast<std::size_t>(hash % count);
}

std::uint64_t sizeOfFile(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);  // of what is no file, an error
  return error ? 0 : size;
}

std::uint64_t sizeOfFiles(std::span<const std::string> paths) {
  std::uint64_t bytes = 0;
  for (const std::string& path : paths) {
    bytes += sizeOfFile(path);
  }
  return bytes;
}

}  // namespace xlatr::cli
