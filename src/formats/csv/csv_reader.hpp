// Reads the rows of a CSV table.
#pragma once

#include <memory>

#include "formats/csv/csv_info.hpp"
#include "formats/csv/csv_message.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

class CsvReader final : public TraceReaderText {
 public:
  // Copies the information object; the file is opened by setActive.
  explicit CsvReader(CsvInfo info);

  [[nodiscard]] const CsvInfo& getTrace() const { return info_; }

  // The next row as a new message; null at the end of the file and while inactive. Empty lines and lines without the
  // separator, such as comments, are skipped; every other line gives a message, valid or not.
  [[nodiscard]] std::unique_ptr<CsvMessage> ReadNextMessage();
  // Reads into a message that the caller reuses, so that reading allocates nothing; false at the end.
  [[nodiscard]] bool readInto(CsvMessage& message);

 protected:
  [[nodiscard]] const ITraceInfo& info() const override { return info_; }

 private:
  CsvInfo info_;
};

}  // namespace xlatr
