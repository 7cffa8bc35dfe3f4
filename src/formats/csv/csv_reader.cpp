#include "formats/csv/csv_reader.hpp"

#include <string_view>
#include <utility>

namespace xlatr {

CsvReader::CsvReader(CsvInfo info) : info_(std::move(info)) {}

std::unique_ptr<CsvMessage> CsvReader::ReadNextMessage() {
  auto message = std::make_unique<CsvMessage>();
  return readInto(*message) ? std::move(message) : nullptr;
}

bool CsvReader::readInto(CsvMessage& message) {
  std::string_view line;
  do {
    if (!readLine(line)) {
      return false;
    }
  } while (line.empty() || line.find(info_.separator()) == std::string_view::npos);
  message.reset();
  message.separator = info_.separator();
  message.columns = info_.columns();
  message.parsingText = line;
  message.parseRow(line, info_.blfTable());
  invalidCount_ += message.valid ? 0 : 1;
  return true;
}

}  // namespace xlatr
