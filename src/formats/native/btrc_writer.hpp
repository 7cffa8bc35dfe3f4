// Writes a BTRC file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "formats/native/native_record.hpp"
#include "formats/native/zelk_message.hpp"
#include "io/trace_writer.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// Writes the messages of TRC traces and comments, one record for each, in blocks of equal length: a record never runs
// over the end of a block unless it is longer than one, so that a reader can go on at any block after a damaged one.
// Each block but the first begins with a record of the totals.
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
  [[nodiscard]] std::uint64_t blockLimit() const;
  void writeRecord(UnsignedMicroseconds timestamp, std::span<const std::uint8_t> record);
  void fillBlock();
  void writeCounter(UnsignedMicroseconds timestamp);
  void writeBytes(std::span<const std::uint8_t> bytes);

  std::uint64_t position_ = 0;    // bytes from the start of the file
  std::uint32_t blockIndex_ = 1;  // number of the current block
  std::uint64_t totalRecords_ = 0;
  std::uint64_t totalMessages_ = 0;
  UnsignedMicroseconds systemTime_{};  // from the year 1 to the start of the trace
  ZelkBinaryMessage mapped_;           // of the message in hand, used again for each
  std::vector<std::uint8_t> scratch_;
};

}  // namespace xlatr
