// What the library asks of the machine and the program that it runs in. Nothing here throws for what it does not find.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/file_times.hpp"
#include "platform/host_version.hpp"
#include "platform/process.hpp"
#include "util/date_time.hpp"

namespace xlatr {

// When the file was created, in local fields; where the file system does not know, when it was last modified. Second 0
// if the file can't be opened for reading or its times can't be had. No handle on the file stays open.
[[nodiscard]] DateTime getFileCreationTime(const std::string& path);

// When the file was last modified, in local fields; second 0 if that can't be had.
[[nodiscard]] DateTime getFileModificationTime(const std::string& path);

// A file time in local fields, the tenths of a microsecond cut off; second 0 for one that no calendar breaks down.
[[nodiscard]] DateTime fileTimeToDateTime(const platform::FileTime& time);

// The product version of the host program as "1.2.3.4", or a word for why there is none. It goes into written headers
// as it is.
[[nodiscard]] std::string getHostVersionText();
[[nodiscard]] std::string hostVersionToText(const platform::HostVersion& version);

// Absolute, without a trailing separator. Helper programs are looked for there.
[[nodiscard]] std::string getLibraryDirectory();

// Runs the program, waits for its end without a limit and answers its exit code, or 0xFFFFFFFF if it could not be
// started or its code not be had. Arguments reach the program as they are, blanks and quotes included.
[[nodiscard]] std::uint32_t runCommandAndWait(const std::string& program, const std::vector<std::string>& arguments);

// Starts the program and goes on; `process` then refers to it. False if it could not be started.
[[nodiscard]] bool startCommand(const std::string& program, const std::vector<std::string>& arguments,
                                platform::Process& process);

// The shortest path that is too long for `makeUniqueFilePath`.
inline constexpr std::size_t kUniquePathLimit = 260;

// A path in the directory for a file that nobody else has: the prefix, a fresh GUID in hexadecimal, a point and the
// extension. No file is made. False, and `path` untouched, if there is no GUID to be had or the path is too long.
[[nodiscard]] bool makeUniqueFilePath(const std::string& directory, const std::string& prefix,
                                      const std::string& extension, std::string& path);

}  // namespace xlatr
