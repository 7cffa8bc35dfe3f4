#include "formats/trc/trc_reader.hpp"

#include <string_view>
#include <utility>

#include "formats/trc/trc_version.hpp"

namespace xlatr {

TrcReader::TrcReader(TrcInfo info) : info_(std::move(info)), version_(findTrcVersion(info_.getVersion())) {}

std::unique_ptr<BrixMessage> TrcReader::ReadNextMessage() {
  auto message = std::make_unique<BrixMessage>();
  return readInto(*message) ? std::move(message) : nullptr;
}

bool TrcReader::readInto(BrixMessage& message) {
  std::string_view line;
  if (!readLineAfterComments(line)) {
    return false;
  }
  message.reset();
  message.columnSet = info_.columnSet();
  if (!line.empty()) {
    message.parseLine(line, version_, info_.columnSet());
  }
  invalidCount_ += message.valid ? 0 : 1;
  return true;
}

}  // namespace xlatr
