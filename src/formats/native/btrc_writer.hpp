// Writes a BTRC file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "formats/native/btrc_blocks.hpp"
#include "formats/native/zelk_message.hpp"
#include "io/trace_writer.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// Writes the messages of TRC traces and comments, one record for each, in blocks (btrc_blocks.hpp).
//
// Unlike those of other writers its failures of use are ConverterParsingExceptions.
class BtrcWriter final : public TraceWriter {
 public:
  explicit BtrcWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 1.0);
  ~BtrcWriter() override;

  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // Writes the head at the start of the file. The target version, without decimals, says which: 1 has the start of the
  // trace, to which all times are then moved, and 0 has none. There is no head of another version.
  void WriteHeader(const ITraceInfo& source) override;
  // A text that takes a block of its own, or more, is written, and nothing can be written after it.
  void WriteComment(std::string_view text) override;
  // A CAN XL message has no record and is left out.
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_BTRC; }

 protected:
  void open() override;
  void close() override;

 private:
  void requireWriting() const;

  BtrcBlocks blocks_{output()};
  UnsignedMicroseconds systemTime_{};  // from the year 1 to the start of the trace
  ZelkBinaryMessage mapped_;           // of the message in hand, used again for each
  std::vector<std::uint8_t> scratch_;
};

}  // namespace xlatr
