#include "util/files.hpp"

#include <array>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/files.hpp"

namespace xlatr {

std::optional<std::uint64_t> getFileSize(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

std::uint32_t detectLineEnding(const std::string& path) {
  constexpr std::uint32_t kLineFeed = 1;
  constexpr std::uint32_t kCarriageReturnAndLineFeed = 2;
  // The first line of a damaged or binary file may be gigabytes long, so it is searched piece by piece.
  std::array<char, 4096> buffer;
  bool empty = true;
  bool lineFeed = false;
  platform::File file = platform::File::openForReading(path);
  while (!lineFeed) {
    const std::string_view piece(buffer.data(), file.read(buffer));
    if (piece.empty()) {
      break;
    }
    empty = false;
    const std::size_t end = piece.find('\n');
    lineFeed = end != std::string_view::npos;
    if (piece.substr(0, end).find('\r') != std::string_view::npos) {
      return kCarriageReturnAndLineFeed;
    }
  }
  return empty ? kCarriageReturnAndLineFeed : kLineFeed;
}

}  // namespace xlatr
