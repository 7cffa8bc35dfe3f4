// Reads the messages of a LIN trace.
#pragma once

#include <memory>

#include "formats/lin/lin_info.hpp"
#include "formats/lin/lin_message.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

class KorlReader final : public TraceReaderText {
 public:
  // Copies the information object; the file is opened by setActive.
  explicit KorlReader(KorlInfo info);

  [[nodiscard]] const KorlInfo& getTrace() const { return info_; }

  // The next message, a new object; null at the end of the file and while inactive. Comment lines are skipped; every
  // other line gives a message, valid or not.
  [[nodiscard]] std::unique_ptr<KorlMessage> ReadNextMessage();
  // Reads into a message that the caller reuses, so that reading allocates nothing; false at the end.
  [[nodiscard]] bool readInto(KorlMessage& message);

 protected:
  [[nodiscard]] const ITraceInfo& info() const override { return info_; }

 private:
  KorlInfo info_;
};

}  // namespace xlatr
