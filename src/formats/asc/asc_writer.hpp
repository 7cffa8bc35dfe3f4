// Writes an ASC log.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "formats/asc/asc_message.hpp"
#include "io/trace_writer.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

class BrixMessage;
class KorlMessage;
class SessionMessage;
class ZelkBinaryMessage;

// Writes a head of four lines and one line per message, always hexadecimal and with absolute times. There are two
// forms: that of 7.0.0, which has no CAN FD frames, below version 8.0, and that of 8.1.0 from 8.0 on. Messages of a
// logger session or a LIN bus have the old form in all versions.
class AscWriter final : public TraceWriterText {
 public:
  explicit AscWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 7.0);
  ~AscWriter() override;

  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // A source that is not valid gets no head. Without a head all messages are written in the 7.0.0 form.
  void WriteHeader(const ITraceInfo& source) override;
  // A text that begins with "// " stays as it is; any other gets it as a prefix.
  void WriteComment(std::string_view text) override;
  // Writes nothing for a message that has no form in the version, and a comment for a CAN XL frame.
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_ASC; }

 private:
  void write(const BrixMessage& message);
  void write(const KorlMessage& message);
  void write(const SessionMessage& message);
  void write(const ZelkBinaryMessage& message);
  template <class Other>
  void writeMapped(const Other& message);
  void writeMapped();

  bool version8_ = false;
  AscMessage mapped_;  // made from another format's message; reused
  TextBuffer line_;
};

}  // namespace xlatr
