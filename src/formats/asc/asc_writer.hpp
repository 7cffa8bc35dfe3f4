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

// Writes a head of four lines and a line a message, always hexadecimal and with absolute times. There are two forms for
// all versions: below 8.0 that of 7.0.0, which has no CAN FD frames, from 8.0 on that of 8.1.0; what comes from a
// logger session or a LIN bus has the old form in both.
class AscWriter final : public TraceWriterText {
 public:
  explicit AscWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 7.0);
  ~AscWriter() override;

  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // A source that is not valid gets no head. Without a head all messages are written in the 7.0.0 form.
  void WriteHeader(const ITraceInfo& source) override;
  // A text that begins with "// " stays as it is, any other gets it in front.
  void WriteComment(std::string_view text) override;
  // A message that has no form in the version writes nothing, a CAN XL frame a comment.
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
  AscMessage mapped_;  // of another format's message, used again for each
  TextBuffer line_;
};

}  // namespace xlatr
