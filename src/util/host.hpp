// What the library asks the machine and the host program. Nothing here throws if something is not found.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_times.hpp"
#include "platform/host_version.hpp"
#include "platform/process.hpp"
#include "util/date_time.hpp"

namespace xlatr {

// When the file was created, in local fields; if the file system does not know, when it was last modified. Second 0 if
// the file can't be opened for reading or has no times. No handle on the file stays open.
[[nodiscard]] DateTime getFileCreationTime(const std::string& path);

// When the file was last modified, in local fields; second 0 if that is not known.
[[nodiscard]] DateTime getFileModificationTime(const std::string& path);

// A file time in local fields, with the tenths of a microsecond cut off; second 0 for a time that no calendar can break
// down.
[[nodiscard]] DateTime fileTimeToDateTime(const platform::FileTime& time);

// The product version of the host program as "1.2.3.4", or a word that says why there is none. Written headers contain
// it as it is.
[[nodiscard]] std::string getHostVersionText();
[[nodiscard]] std::string hostVersionToText(const platform::HostVersion& version);

// Absolute, without a trailing separator. Helper programs are looked for there.
[[nodiscard]] std::string getLibraryDirectory();

// Runs the program, waits for its end without a limit and returns its exit code, or 0xFFFFFFFF if it could not be
// started or has no exit code. The program gets the arguments unchanged, blanks and quotes included.
[[nodiscard]] std::uint32_t runCommandAndWait(const std::string& program, const std::vector<std::string>& arguments);

// Starts the program, with its standard input and output closed and a link to this process, and does not wait for it;
// `process` then refers to it. False if it could not be started.
[[nodiscard]] bool startCommand(const std::string& program, const std::vector<std::string>& arguments,
                                platform::Process& process);

// What a program that has ended left: its output, or the start of it, and its exit code.
struct CommandAnswer {
  std::string output;
  std::uint32_t exitCode = platform::kNoExitCode;
};

// Runs the program like runCommandAndWait, with nothing to read from its standard input, and takes the first
// `mostOutput` bytes of what it prints. Nothing if it could not be started.
[[nodiscard]] std::optional<CommandAnswer> runCommandAndRead(const std::string& program,
                                                             const std::vector<std::string>& arguments,
                                                             std::size_t mostOutput);

// The shortest path that is too long for `makeUniqueFilePath`.
inline constexpr std::size_t kUniquePathLimit = 260;

// A path in the directory for a file that nobody else uses: the prefix, a fresh GUID in hexadecimal, a point and the
// extension. No file is made. Returns false and leaves `path` alone if there is no GUID or the path is too long.
[[nodiscard]] bool makeUniqueFilePath(const std::string& directory, const std::string& prefix,
                                      const std::string& extension, std::string& path);

}  // namespace xlatr
