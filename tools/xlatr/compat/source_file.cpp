#include "compat/source_file.hpp"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "command_failure.hpp"
#include "compat/target_files.hpp"
#include "formats.hpp"

namespace xlatr::cli {

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw CommandFailure(ExitCode::Failed, path + ": " + reason);
}

}  // namespace

void requireReadable(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    fail(path, "no such file; check the path");
  }
  if (error) {
    fail(path, error.message() + "; check the path");
  }
  if (std::filesystem::is_directory(status)) {
    fail(path, "is a folder; name a trace file in it");
  }
  if (!std::filesystem::is_regular_file(status)) {
    fail(path, "is not a regular file; copy its contents into one first");
  }
  errno = 0;
  if (!std::ifstream(path, std::ios::binary)) {
    fail(path, std::generic_category().message(errno) + "; check the permissions of the file");
  }
}

TraceFormat requireTraceFormat(const std::string& path) {
  const TraceFormat format = formatOfFile(path);
  if (format != XLATR_FORMAT_NONE) {
    return format;
  }
  // The library does not look at the extension of a path that is too long for it.
  if (formatFromName(extensionOf(path)) != XLATR_FORMAT_NONE) {
    fail(path, "the path is too long; change to the folder of the file and name it from there");
  }
  fail(path,
       "has no extension of a trace format; rename it so that it has one of " + extensionList(~XLATR_FORMAT_NONE));
}

}  // namespace xlatr::cli
