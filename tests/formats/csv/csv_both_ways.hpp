// A TRC trace as a table on both ways.
#pragma once

#include <string>
#include <string_view>

#include "formats/csv/csv_frames.hpp"
#include "formats/csv/csv_writer.hpp"
#include "formats/trc/trc_frames.hpp"
#include "formats/trc/trc_reader.hpp"
#include "support/temp_folder.hpp"
#include "util/text.hpp"

namespace xlatr::test {

struct BothTables {
  std::string compatible;
  std::string complete;
};

inline std::string compatibleTableOf(const TempFolder& folder, const std::string& trace) {
  TrcReader reader{TrcInfo(TraceFileInfo(trace))};
  CsvWriter writer(folder.file("compatible.csv"), true);
  writer.setActive(true);
  writer.WriteHeader(reader.getTrace());
  reader.setActive(true);
  BrixMessage message;
  while (reader.readInto(message)) {
    if (message.getValid()) {
      writer.WriteMessage(message);
    } else if (!trimmed(message.parsingText).empty()) {
      writer.WriteComment(message.parsingText);
    }
  }
  writer.setActive(false);
  return folder.read("compatible.csv");
}

inline std::string completeTableOf(const TempFolder& folder, const std::string& trace, Account& account) {
  const auto source = openTrcFrames(trace);
  const auto sink = createCsvFrames(folder.file("complete.csv"), source->head(), SinkSettings());
  FrameBatch batch;
  while (source->read(batch, account)) {
    sink->write(batch, account);
    batch.clear();
  }
  sink->close();
  return folder.read("complete.csv");
}

inline BothTables bothTablesOf(const TempFolder& folder, std::string_view trace) {
  const std::string path = folder.write("trace.trc", trace);
  Account account;
  return {compatibleTableOf(folder, path), completeTableOf(folder, path, account)};
}

// What follows the column line.
inline std::string rowsOf(const std::string& table) {
  return table.substr(table.find("D...\r\n") + 6);
}

}  // namespace xlatr::test
