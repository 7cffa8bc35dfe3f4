#include "formats/lin/lin_reader.hpp"

#include <string_view>
#include <utility>

namespace xlatr {

KorlReader::KorlReader(KorlInfo info) : info_(std::move(info)) {}

std::unique_ptr<KorlMessage> KorlReader::ReadNextMessage() {
  auto message = std::make_unique<KorlMessage>();
  return readInto(*message) ? std::move(message) : nullptr;
}

bool KorlReader::readInto(KorlMessage& message) {
  std::string_view line;
  if (!readLineAfterComments(line)) {
    return false;
  }
  message.reset();
  message.parseLine(line);
  invalidCount_ += message.valid ? 0 : 1;
  return true;
}

}  // namespace xlatr
