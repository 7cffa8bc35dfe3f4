#include "compat/target_files.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "formats.hpp"
#include "xlatr/objects.h"

namespace xlatr::cli {

namespace {

// Cuts the marker and the number after it off the front of `rest`; false if they aren't there.
bool takeNumbered(std::string_view& rest, std::string_view marker) {
  if (!rest.starts_with(marker)) {
    return false;
  }
  rest.remove_prefix(marker.size());
  const auto digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
  rest.remove_prefix(digits);
  return digits > 0;
}

// A link that leads nowhere is in the way, too.
bool isInTheWay(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path, error)) &&
         !std::filesystem::is_directory(path, error);
}

}  // namespace

std::string TargetFiles::plainPath() const {
  return directory + stem + extension;
}

std::string TargetFiles::pathForLibrary() const {
  return (directory.empty() && perSession ? "./" : directory) + stem + extension;
}

bool TargetFiles::mayWrite(std::string_view fileName) const {
  if (!fileName.starts_with(stem)) {
    return false;
  }
  std::string_view rest = fileName.substr(stem.size());
  return (!perSession || takeNumbered(rest, "_S")) && (!perBus || takeNumbered(rest, "_BUS")) && rest == extension;
}

std::vector<std::string> TargetFiles::existing() const {
  std::vector<std::string> paths;
  if (isInTheWay(plainPath())) {
    paths.push_back(plainPath());
  }
  if (!perBus && !perSession) {
    return paths;
  }
  std::error_code error;
  // A folder that can't be listed ends the loop before it starts: the library then says what is wrong with it.
  std::filesystem::directory_iterator entry(directory.empty() ? "." : directory, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (mayWrite(name) && isInTheWay(entry->path())) {
      paths.push_back(directory + name);
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

TargetFiles targetFiles(const std::string& target, TraceFormat format, double version, TraceFormat source) {
  const std::string name = std::filesystem::path(target).filename().string();
  const std::string given = extensionOf(target);
  TargetFiles files;
  files.directory = target.substr(0, target.size() - name.size());
  files.stem = formatFromName(given) == XLATR_FORMAT_NONE ? name : name.substr(0, name.size() - given.size());
  files.extension = formatExtension(format);
  files.perBus = BaseTraceInfo_GetIfSplitByBus(format, version);
  files.perSession = BaseTraceInfo_GetIfSplitBySession(source);
  return files;
}

std::string firstAndCount(const std::vector<std::string>& paths) {
  return paths.size() == 1 ? paths.front() : paths.front() + " and " + std::to_string(paths.size() - 1) + " more";
}

}  // namespace xlatr::cli
