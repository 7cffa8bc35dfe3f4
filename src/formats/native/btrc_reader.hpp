// Reads the records of a BTRC file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "formats/native/btrc_info.hpp"
#include "formats/native/zelk_message.hpp"
#include "io/block_input.hpp"
#include "io/trace_reader.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// Hands out one message per record, whatever the record is. Times count from the start of the trace. Reading ends with
// the file, and at a record that says it is shorter than its own header: there is no telling where the next one begins.
// A caller that can't use a record goes on at the next block, which begins with a record.
class BtrcReader final : public TraceReader {
 public:
  // Copies the information object; the file is opened by setActive.
  explicit BtrcReader(BtrcInfo info);

  [[nodiscard]] const BtrcInfo& getTrace() const { return info_; }
  [[nodiscard]] double getPercentDone() const override;

  // The next message, made anew; null at the end of the file and while inactive.
  [[nodiscard]] std::unique_ptr<ZelkBinaryMessage> ReadNextMessage();
  // The same into a message that is used again and again, so that reading allocates nothing; false at the end.
  [[nodiscard]] bool readInto(ZelkBinaryMessage& message);

  // Goes on at the next end of a block and returns a report of that; at the end of a block a whole one is skipped. The
  // report is empty while inactive.
  std::string SkipCurrentBlock();

 protected:
  bool open() override;
  void close() override;

 private:
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> nextRecord(Native_RecordHeader& header);

  BtrcInfo info_;
  TimeScale timeScale_;
  std::optional<BlockInput> input_;
};

}  // namespace xlatr
