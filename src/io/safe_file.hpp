// A file on its way to its name.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "io/output_target.hpp"
#include "platform/files.hpp"

namespace xlatr {

// Why a name can't be written.
class TargetRefusal : public std::runtime_error {
 public:
  enum class Reason : std::uint8_t { Exists, Folder, InUse, Source };

  TargetRefusal(Reason reason, const std::string& text) : std::runtime_error(text), reason_(reason) {}

  [[nodiscard]] Reason reason() const noexcept { return reason_; }

 private:
  Reason reason_;
};

// What may become of a name.
struct TargetRules {
  bool replaces = false;                  // what stands there already
  std::vector<std::string> sources = {};  // files that are read, none of which may be written
};

// Keeps the files of a group, of which there may be more than a process may have open, for one conversion: by one lock,
// beside the name that theirs are made from.
class GroupLock {
 public:
  // A TargetRefusal if another conversion has the group, or if the lock would be one of the sources.
  GroupLock(const std::string& path, const std::vector<std::string>& sources);
  ~GroupLock();
  GroupLock(const GroupLock&) = delete;
  GroupLock& operator=(const GroupLock&) = delete;

 private:
  std::string written_;
  platform::File lock_;
};

// A file is written beside its name and gets the name when it is whole: under the name there is the old file or the
// whole new one at any time. What is not finished is removed; what a process that was killed has left is written over
// by the next one with the same name. A device and a pipe that somebody reads, which can't be renamed, are written to
// as they are.
//
// Raises TargetRefusals and std::ios_base::failures.
class SafeFile {
 public:
  // Nothing is created yet, but a name that can't be written is refused.
  SafeFile(std::string path, TargetRules rules);
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Whether the caller keeps others from the file by the lock of a group. The place beside the name is then one that
  // only such groups use, and takes no descriptor.
  enum class Group : std::uint8_t { None, Locked };

  // Takes the place beside the name, for nobody else. What is to be written to, under the name that the user knows.
  [[nodiscard]] OutputTarget reserve(Group group = Group::None);
  // Gives the file its name. It was written and closed.
  void finish();
  // Gives a file that is not whole a name that says so, "drive.partial.trc", which is returned; empty if there is none,
  // or if a source has that name.
  std::string keepAsPartial();
  // As if nothing had been reserved; no effect after finish.
  void drop();

  // The name that the user knows.
  [[nodiscard]] const std::string& path() const { return path_; }
  // The text of a failure of the system, with that name.
  [[nodiscard]] std::string named(std::string text) const;

 private:
  void requireFree() const;
  [[noreturn]] void refuseExisting() const;
  void requireNoSource(const std::string& path) const;

  std::string path_;
  TargetRules rules_;
  std::string target_;   // behind its links
  std::string written_;  // what is written: a file beside the target, or the target itself
  platform::File lock_;  // of the file beside
  bool beside_ = false;  // there is such a file
};

}  // namespace xlatr
