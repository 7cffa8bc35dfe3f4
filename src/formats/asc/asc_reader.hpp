// Reads the messages of an ASC log.
#pragma once

#include <memory>

#include "formats/asc/asc_info.hpp"
#include "formats/asc/asc_message.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

class AscReader final : public TraceReaderText {
 public:
  // Copies the information object; the file is opened by setActive.
  explicit AscReader(AscInfo info);

  [[nodiscard]] const AscInfo& getTrace() const { return info_; }

  // The next message, a new object; null at the end of the file and while inactive. Every line gives a message, valid
  // or not; an empty line gives one that is not valid and has an empty parsing text. A line that is too short raises
  // std::out_of_range. Relative times are as written; MessageAsc's AdjustTime sums them.
  [[nodiscard]] std::unique_ptr<AscMessage> ReadNextMessage();
  // Reads into a message that the caller reuses, so that reading allocates nothing; false at the end.
  [[nodiscard]] bool readInto(AscMessage& message);

 protected:
  [[nodiscard]] const ITraceInfo& info() const override { return info_; }

 private:
  AscInfo info_;
};

}  // namespace xlatr
