#include "util/host.hpp"

#include <cstddef>
#include <utility>

#include "platform/calendar.hpp"
#include "platform/module_path.hpp"
#include "platform/unique_id.hpp"
#include "util/hex.hpp"

namespace xlatr {

namespace {

// The lowest `bytes` bytes of the number, most significant first.
void appendHex(std::string& text, std::uint32_t value, unsigned bytes) {
  for (unsigned left = bytes; left > 0; --left) {
    text.append(hexPair(static_cast<std::uint8_t>(value >> (8 * (left - 1)))));
  }
}

}  // namespace

DateTime getFileCreationTime(const std::string& path) {
  const auto time = platform::readCreationTime(path);
  return time ? fileTimeToDateTime(*time) : DateTime();
}

DateTime getFileModificationTime(const std::string& path) {
  const auto time = platform::readModificationTime(path);
  return time ? fileTimeToDateTime(*time) : DateTime();
}

DateTime fileTimeToDateTime(const platform::FileTime& time) {
  const auto fields = platform::toLocalCalendar(time.seconds);
  if (!fields) {
    return {};
  }
  return DateTime::fromLocalFields(*fields, time.nanoseconds / 1'000'000, time.nanoseconds / 1'000 % 1'000);
}

std::string getHostVersionText() {
  return hostVersionToText(platform::readHostVersion());
}

std::string hostVersionToText(const platform::HostVersion& version) {
  switch (version.state) {
    case platform::HostVersionState::Found: {
      std::string text;
      for (const std::uint32_t part : version.parts) {
        text.append(text.empty() ? "" : ".").append(std::to_string(part));
      }
      return text;
    }
    case platform::HostVersionState::NoRecord:
      return "No Version Information!";
    case platform::HostVersionState::OutOfMemory:
      return "Out of memory!";
    case platform::HostVersionState::Unreadable:
      return "Failed!";
    case platform::HostVersionState::Malformed:
      break;
  }
  return "Could Not Retrieve Values!";
}

std::string getLibraryDirectory() {
  return platform::moduleDirectory();
}

std::uint32_t runCommandAndWait(const std::string& program, const std::vector<std::string>& arguments) {
  platform::Process process;
  return process.start(program, arguments) ? process.wait() : platform::kNoExitCode;
}

std::optional<CommandAnswer> runCommandAndRead(const std::string& program, const std::vector<std::string>& arguments,
                                               std::size_t mostOutput) {
  platform::Process process;
  auto output = process.run(program, arguments, mostOutput);
  if (!output) {
    return std::nullopt;
  }
  return CommandAnswer{std::move(*output), process.wait()};
}

bool startCommand(const std::string& program, const std::vector<std::string>& arguments, platform::Process& process) {
  return process.start(program, arguments, platform::StandardStreams::Closed, platform::ProgramTie::Link);
}

bool makeUniqueFilePath(const std::string& directory, const std::string& prefix, const std::string& extension,
                        std::string& path) {
  const auto id = platform::makeUniqueId();
  if (!id) {
    return false;
  }
  std::string made = directory;
  made += platform::pathSeparator();
  made += prefix;
  appendHex(made, id->data1, 4);
  appendHex(made, id->data2, 2);
  appendHex(made, id->data3, 2);
  for (const std::uint8_t byte : id->data4) {
    appendHex(made, byte, 1);
  }
  made.append(".").append(extension);
  if (made.size() >= kUniquePathLimit) {
    return false;
  }
  path = std::move(made);
  return true;
}

}  // namespace xlatr
