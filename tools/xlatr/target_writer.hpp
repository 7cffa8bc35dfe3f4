// The writers of the library, behind one interface.
#pragma once

#include <memory>
#include <string>

#include "xlatr/objects.h"

namespace xlatr::cli {

// An active writer of one target file, which is overwritten. Failures are the library's exceptions.
class TargetWriter {
 public:
  virtual ~TargetWriter() = default;

  virtual void writeHeader(const ITraceInfo* source, double startDays) = 0;
  virtual void writeComment(const std::string& text) = 0;
  virtual void writeMessage(const IMessage* message) = 0;
  // Closes the file; the destructor does so too, but does not report a failure.
  virtual void close() = 0;
};

struct TargetOptions {
  TraceFormat format;
  double version;
  char separator;  // of a table
};

// Opens the file. Null for a format that a BLF log is not converted into.
[[nodiscard]] std::unique_ptr<TargetWriter> openTargetWriter(const TargetOptions& options, const std::string& source,
                                                             const std::string& target);

}  // namespace xlatr::cli
