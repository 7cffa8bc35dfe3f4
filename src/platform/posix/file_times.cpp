#include "platform/file_times.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace xlatr::platform {
namespace {

std::optional<struct statx> readTimes(const std::string& path) {
  // The times are no secret, but a file that could not be opened must have none. Asking instead of opening leaves
  // pipes and devices alone.
  if (::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) {
    return std::nullopt;
  }
  struct statx status {};
  if (::statx(AT_FDCWD, path.c_str(), AT_STATX_SYNC_AS_STAT, STATX_TYPE | STATX_BTIME | STATX_MTIME, &status) != 0 ||
      S_ISDIR(status.stx_mode)) {
    return std::nullopt;
  }
  return status;
}

FileTime toFileTime(const statx_timestamp& time) {
  return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

}  // namespace

std::optional<FileTime> readCreationTime(const std::string& path) {
  const auto status = readTimes(path);
  if (!status) {
    return std::nullopt;
  }
  const bool hasBirthTime = (status->stx_mask & STATX_BTIME) != 0;
  return toFileTime(hasBirthTime ? status->stx_btime : status->stx_mtime);
}

std::optional<FileTime> readModificationTime(const std::string& path) {
  const auto status = readTimes(path);
  return status ? std::optional(toFileTime(status->stx_mtime)) : std::nullopt;
}

}  // namespace xlatr::platform
