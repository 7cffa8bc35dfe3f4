// Which files a conversion will write, known before it runs, so that none is overwritten unasked.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xlatr/xlatr.h"

namespace xlatr::cli {

// The files that the library writes for one target path: directory + stem + extension. The stem is the file name
// without its extension if that is a trace format's, and the whole file name otherwise.
struct TargetFiles {
  std::string directory;  // with its final separator; empty for a name alone
  std::string stem;
  std::string extension;    // the target format's, with its point
  bool perBus = false;      // one file per bus: "_BUS" and the bus number after the stem
  bool perSession = false;  // one file per session: "_S" and the session's index after the stem

  // The path of the one file, or the one that the numbered names are made of.
  [[nodiscard]] std::string plainPath() const;

  // What the library is given as the target. It puts a separator before a session's file name, so that without a
  // directory the path would start at the root: then "./" keeps it in the working directory.
  [[nodiscard]] std::string pathForLibrary() const;

  // Whether a file of this name is one of those that the conversion may write.
  [[nodiscard]] bool mayWrite(std::string_view fileName) const;

  // The sorted paths of existing files that the conversion may overwrite. The plain path counts even if all names are
  // numbered: the user named it. Folders don't count: no file can take their place.
  [[nodiscard]] std::vector<std::string> existing() const;
};

// The files of a conversion of a `source` format into `target` of the format and version.
[[nodiscard]] TargetFiles targetFiles(const std::string& target, TraceFormat format, double version,
                                      TraceFormat source);

// "out.trc" or "out_BUS1.trc and 2 more", for messages. `paths` is not empty.
[[nodiscard]] std::string firstAndCount(const std::vector<std::string>& paths);

}  // namespace xlatr::cli
