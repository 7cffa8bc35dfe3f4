// Writes a BTR file of one session.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formats/native/btr_sector_output.hpp"
#include "io/trace_writer.hpp"

namespace xlatr {

class BrixMessage;

// Writes a directory of one session and its sectors after it, one after the other and never circularly. Takes
// classic frames and error frames; whatever else a trace has is left out.
class BtrSessionWriter final : public TraceWriter {
 public:
  explicit BtrSessionWriter(std::string targetPath = {}, std::int32_t ownerBus = -1, double targetVersion = 3.0);
  ~BtrSessionWriter() override;

  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // Writes the directory, also for a source that is not valid. Called again, it writes from the beginning of the file.
  void WriteHeader(const ITraceInfo& source) override;
  // A logger knows no comments: nothing is written.
  void WriteComment(std::string_view text) override;
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_BTR; }

 protected:
  // The last sector is written whatever it holds, so that every file ends in one that is not full.
  void close() override;

 private:
  void write(const BrixMessage& message);

  BtrSectorOutput sectors_{output()};
};

}  // namespace xlatr
