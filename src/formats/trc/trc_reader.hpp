// Reads the messages of a TRC file.
#pragma once

#include <memory>

#include "formats/trc/trc_info.hpp"
#include "formats/trc/trc_message.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

class TrcReader final : public TraceReaderText {
 public:
  // Copies the information object; the file is opened by setActive.
  explicit TrcReader(TrcInfo info);

  [[nodiscard]] const TrcInfo& getTrace() const { return info_; }

  // The next message, newly made; null at the end of the file and while inactive. Comment lines give no message. Every
  // other line gives one, valid or not; that of an empty line is not valid and has an empty parsing text.
  [[nodiscard]] std::unique_ptr<BrixMessage> ReadNextMessage();
  // The same into a message that is reused, so that reading allocates nothing; false at the end.
  [[nodiscard]] bool readInto(BrixMessage& message);

 protected:
  [[nodiscard]] const ITraceInfo& info() const override { return info_; }

 private:
  TrcInfo info_;
  const TrcVersion* version_;  // null if unknown
};

}  // namespace xlatr
