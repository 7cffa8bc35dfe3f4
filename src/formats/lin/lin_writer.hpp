// Writes a LIN trace.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/lin/lin_message.hpp"
#include "io/trace_writer.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

class BlfCanMessage;
class BlfLinMessage;

// Writes the header of its target version and one line per message of a BLF log. The default version has no header; a
// caller sets the one it wants.
class KorlWriter final : public TraceWriterText {
 public:
  explicit KorlWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 1.3);
  ~KorlWriter() override;

  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // A target version that does not print as 1.0, 1.1 or 1.2 gets no header.
  void WriteHeader(const ITraceInfo& source) override;
  // A text that begins with ";" stays as it is; any other gets it as a prefix.
  void WriteComment(std::string_view text) override;
  // A frame of a CAN bus becomes a comment. A LIN message that is not valid is not written, but counts as a line
  // number.
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_LIN; }

 protected:
  void open() override;

 private:
  void write(const BlfLinMessage& message);
  void write(const BlfCanMessage& message);

  std::uint64_t frameNumber_ = 0;
  KorlMessage mapped_;  // made from another format's message; reused
  TextBuffer line_;
};

}  // namespace xlatr
