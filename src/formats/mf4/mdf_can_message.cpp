#include "formats/mf4/mdf_can_message.hpp"

namespace xlatr {

void MdfCanMessage::reset() {
  resetCommonFields(1);
  type = MessageType::Rx;
  direction = MessageDirection::Rx;
  dlc = 0;
  isRemote = false;
  kind = MessageKind::DT;
  time = RealMicroseconds::zero();
  errorType = kNoErrorType;
  bitPosition = 0;
  foundFields = 0;
  busKind = 0;
  frameKind = 0;
}

}  // namespace xlatr
