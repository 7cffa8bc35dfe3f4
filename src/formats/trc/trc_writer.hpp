// Writes a TRC file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/trc/trc_columns.hpp"
#include "formats/trc/trc_message.hpp"
#include "io/trace_writer.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

class BlfLinMessage;

// Writes the header of its target version and one line per message.
//
// An unknown target version gets no header, unless it looks like a known one with a single decimal, and no lines:
// messages have no text in it.
class TrcWriter final : public TraceWriterText {
 public:
  explicit TrcWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 2.1);
  ~TrcWriter() override;

  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // A source that is not valid gets no header. Lines written without one have the columns of their own messages.
  void WriteHeader(const ITraceInfo& source) override;
  // A text without a ";" at its start gets one.
  void WriteComment(std::string_view text) override;
  // A message of a TRC trace whose text is empty takes no number; one of another format does. A LIN frame of a BLF log
  // becomes a comment.
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_TRC; }

 protected:
  void open() override;

 private:
  void write(const BrixMessage& message);
  void write(const BlfLinMessage& message);
  template <class Other>
  void write(const Other& message);

  const TrcVersion* version_ = nullptr;  // of the lines; null if unknown
  std::uint64_t messageCount_ = 0;
  TrcColumnSet columnSet_ = 0;
  BrixMessage mapped_;  // of another format's message; reused for each
  TextBuffer line_;
};

}  // namespace xlatr
