#include "formats/asc/asc_reader.hpp"

#include <string_view>
#include <utility>

namespace xlatr {

AscReader::AscReader(AscInfo info) : info_(std::move(info)) {}

std::unique_ptr<AscMessage> AscReader::ReadNextMessage() {
  auto message = std::make_unique<AscMessage>();
  return readInto(*message) ? std::move(message) : nullptr;
}

bool AscReader::readInto(AscMessage& message) {
  std::string_view line;
  if (!readLine(line)) {
    return false;
  }
  message.reset();
  message.hexBase = info_.hexBase();
  message.timestampsMode = info_.timestampsMode();
  message.parseLine(line, info_.getVersion());
  invalidCount_ += message.valid ? 0 : 1;
  return true;
}

}  // namespace xlatr
