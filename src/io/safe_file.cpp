#include "io/safe_file.hpp"

#include <algorithm>
#include <cstddef>
#include <ios>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/module_path.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

struct FolderAndName {
  std::string_view folder;  // with its separator
  std::string_view name;
};

FolderAndName cut(std::string_view path) {
  const std::size_t nameAt = path.rfind(platform::pathSeparator()) + 1;
  return {path.substr(0, nameAt), path.substr(nameAt)};
}

// As much of a name as file systems have room for beside what is put around it. A name that is too long by itself is to
// fail at once, and not when all is written.
std::string_view shortened(std::string_view name, std::size_t added) {
  constexpr std::size_t kLongestName = 255;  // bytes, of most file systems
  if (name.size() > kLongestName) {
    return name;
  }
  return name.substr(0, utf8Boundary(name, std::min(name.size(), kLongestName - added)));
}

constexpr std::string_view kFragment = ".xlatr-part";
constexpr std::string_view kFragmentOfGroup = ".xlatr-bus-part";

// ".drive.trc.xlatr-part": hidden, in the target's folder, and the same each time, so that a fragment is found again.
std::string nameBeside(std::string_view path, std::string_view end) {
  const auto [folder, name] = cut(path);
  return std::string(folder).append(".").append(shortened(name, end.size() + 1)).append(end);
}

[[noreturn]] void refuseUsed(const std::string& path) {
  throw TargetRefusal(TargetRefusal::Reason::InUse, path + ": another conversion is writing this file");
}

bool isAmong(const std::vector<std::string>& sources, const std::string& path) {
  return std::ranges::any_of(sources,
                             [&path](const std::string& source) { return platform::isSameFile(source, path); });
}

[[noreturn]] void refuseSource(const std::string& path) {
  throw TargetRefusal(TargetRefusal::Reason::Source, path + ": the target is the source; choose another name");
}

// Without the name of the file beside, which nobody knows.
std::string withName(std::string text, const std::string& written, const std::string& path) {
  return !written.empty() && text.starts_with(written) ? text.replace(0, written.size(), path) : text;
}

// "drive.partial.trc".
std::string partialName(std::string_view path) {
  constexpr std::string_view kMark = ".partial";
  const auto [folder, name] = cut(path);
  const std::size_t point = name.rfind('.');
  const std::string_view stem = name.substr(0, point);
  const std::string_view extension = point == std::string_view::npos ? "" : name.substr(point);
  return std::string(folder).append(shortened(stem, kMark.size() + extension.size())).append(kMark).append(extension);
}

}  // namespace

SafeFile::SafeFile(std::string path, TargetRules rules) : path_(std::move(path)), rules_(std::move(rules)) {
  requireNoSource(path_);
  requireFree();
}

SafeFile::~SafeFile() {
  drop();
}

void SafeFile::requireFree() const {
  switch (platform::kindOfPath(path_)) {
    case platform::PathKind::Nothing:
    case platform::PathKind::Device:
    case platform::PathKind::Pipe:
      break;
    case platform::PathKind::File:
      if (!rules_.replaces) {
        refuseExisting();
      }
      break;
    case platform::PathKind::BrokenLink:
      if (!rules_.replaces) {
        throw TargetRefusal(TargetRefusal::Reason::Exists, path_ + ": a link that leads nowhere has this name");
      }
      break;
    case platform::PathKind::Folder:
      throw TargetRefusal(TargetRefusal::Reason::Folder, path_ + ": this is a folder: name a file in it");
  }
}

void SafeFile::refuseExisting() const {
  throw TargetRefusal(TargetRefusal::Reason::Exists, path_ + ": the file exists and is not to be replaced");
}

void SafeFile::requireNoSource(const std::string& path) const {
  if (isAmong(rules_.sources, path)) {
    refuseSource(path_);
  }
}

GroupLock::GroupLock(const std::string& path, const std::vector<std::string>& sources)
    : written_(nameBeside(path, kFragment)) {
  if (isAmong(sources, written_)) {
    refuseSource(path);
  }
  try {
    lock_ = platform::File::lockForWriting(written_);
  } catch (const std::ios_base::failure& failure) {
    throw std::runtime_error(withName(failure.what(), written_, path));
  }
  if (!lock_.isOpen()) {
    refuseUsed(path);
  }
}

GroupLock::~GroupLock() {
  platform::removeFile(written_);
}

OutputTarget SafeFile::reserve(Group group) {
  const platform::PathKind kind = platform::kindOfPath(path_);
  if (kind == platform::PathKind::Device || kind == platform::PathKind::Pipe) {
    written_ = path_;
    return {path_, platform::Creation::Replace, platform::Pipes::Take};
  }
  target_ = platform::pathBehindLinks(path_);
  written_ = nameBeside(target_, group == Group::Locked ? kFragmentOfGroup : kFragment);
  requireNoSource(written_);  // what a killed process has left, which somebody wants to save
  lock_ = platform::File::lockForWriting(written_);
  if (!lock_.isOpen()) {
    refuseUsed(path_);
  }
  beside_ = true;
  if (group == Group::Locked) {
    lock_ = platform::File();
  }
  requireFree();  // whoever had the place until now may have finished the file
  return {written_, path_};
}

void SafeFile::finish() {
  if (beside_) {
    if (rules_.replaces) {
      platform::replaceFile(target_, written_);
    } else if (!platform::nameFile(target_, written_)) {
      refuseExisting();
    }
    beside_ = false;
  }
  drop();
}

std::string SafeFile::keepAsPartial() {
  if (!beside_ || isAmong(rules_.sources, partialName(target_))) {
    return {};
  }
  platform::replaceFile(partialName(target_), written_);
  beside_ = false;
  drop();
  return partialName(path_);
}

void SafeFile::drop() {
  if (beside_) {
    platform::removeFile(written_);
    beside_ = false;
  }
  lock_ = platform::File();
}

std::string SafeFile::named(std::string text) const {
  return withName(std::move(text), written_, path_);
}

}  // namespace xlatr
