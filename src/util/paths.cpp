#include "util/paths.hpp"

#include "util/text.hpp"

namespace xlatr {

namespace {

constexpr std::string_view kSeparators = "/\\";
constexpr std::size_t kDriveSize = 2;
static_assert(kDriveSize < kDriveLimit);

bool startsWithDrive(std::string_view path) {
  if (path.size() < kDriveSize || path[1] != ':') {
    return false;
  }
  const char letter = toUpperAscii(path[0]);
  return letter >= 'A' && letter <= 'Z';
}

}  // namespace

std::optional<PathPieces> splitPath(std::string_view path) {
  PathPieces pieces;
  pieces.drive = path.substr(0, startsWithDrive(path) ? kDriveSize : 0);
  const std::string_view rest = path.substr(pieces.drive.size());
  pieces.directory = rest.substr(0, rest.find_last_of(kSeparators) + 1);
  const std::string_view file = rest.substr(pieces.directory.size());
  pieces.name = file.substr(0, file.rfind('.'));
  pieces.extension = file.substr(pieces.name.size());
  if (pieces.directory.size() >= kDirectoryLimit || pieces.name.size() >= kFileNameLimit ||
      pieces.extension.size() >= kExtensionLimit) {
    return std::nullopt;
  }
  return pieces;
}

std::string getFileExtension(std::string_view path) {
  return std::string(splitPath(path).value_or(PathPieces{}).extension);
}

std::string getFileStem(std::string_view path) {
  return std::string(splitPath(path).value_or(PathPieces{}).name);
}

std::string getFileName(std::string_view path) {
  const PathPieces pieces = splitPath(path).value_or(PathPieces{});
  return std::string(pieces.name).append(pieces.extension);
}

std::string getFileDirectory(std::string_view path) {
  const PathPieces pieces = splitPath(path).value_or(PathPieces{});
  return std::string(pieces.drive).append(pieces.directory);
}

}  // namespace xlatr
