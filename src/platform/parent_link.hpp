// How a program that this library starts stays in touch with the process that started it.
#pragma once

#include <cstdint>

namespace xlatr::platform {

// The started program's end of the link. Without one, as when a user starts the program, nothing here has an effect.
class ParentLink {
 public:
  // Takes the link over from the environment.
  ParentLink();
  ~ParentLink();
  ParentLink(const ParentLink&) = delete;
  ParentLink& operator=(const ParentLink&) = delete;

  // Whether the process that started this one has ended, however that came, or has let go of it.
  [[nodiscard]] bool isCut() const;
  // Tells the exit code, which the system does not keep for a process that ignores the ends of its programs. Not more
  // than eight bits of it.
  void tellExitCode(int exitCode) const;

 private:
  int socket_ = -1;
};

// From now on nobody but the user may read or write what this process makes. For programs, not for the library.
void keepNewFilesPrivate();

}  // namespace xlatr::platform
