#include "formats/mf4/mdf_can_message.hpp"

namespace xlatr {

void MdfCanMessage::reset() {
  id = kNoIdentifier;
  valid = false;
  length = 0;
  data.clear();
  bus = 1;
  type = MessageType::Rx;
  direction = MessageDirection::Rx;
  extended = false;
  dlc = 0;
  isRemote = false;
  kind = MessageKind::DT;
  time = 0.0;
  errorType = kNoErrorType;
  bitPosition = 0;
  foundFields = 0;
  busKind = 0;
  frameKind = 0;
}

}  // namespace xlatr
