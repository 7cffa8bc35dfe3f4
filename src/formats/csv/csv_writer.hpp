// Writes a CSV table.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/csv/csv_message.hpp"
#include "io/trace_writer.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Writes a head for people and for CsvInfo, and one numbered row per message. No cell is ever quoted, because no cell
// of a row can contain a separator that a spreadsheet would use.
class CsvWriter final : public TraceWriterText {
 public:
  explicit CsvWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 1.0);
  ~CsvWriter() override;

  // The text between cells, of any length, by default ";". Refused while the writer is active.
  void setSeparator(std::string separator);

  // The new writer has the default separator, not this writer's: aNewWriterForgetsTheSeparator.
  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // A source that is not valid gets no head.
  void WriteHeader(const ITraceInfo& source) override;
  // The text becomes a line as it is. A reader skips it unless it contains the separator.
  void WriteComment(std::string_view text) override;
  // Messages that are not valid get a row, too. Rows are counted from 1; comments between them do not count.
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_CSV; }

 protected:
  void open() override;

 private:
  void writeRow();

  std::uint64_t rowNumber_ = 0;
  CsvMessage row_;  // used again for each message; holds the separator
  TextBuffer line_;
};

}  // namespace xlatr
