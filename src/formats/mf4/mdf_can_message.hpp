// A message of an MF4 file.
#pragma once

#include <cstdint>

#include "messages/message.hpp"

namespace xlatr {

class MdfCanMessage final : public MessageStyleCan {
 public:
  std::uint32_t dlc = 0;   // CAN DLC, a code
  bool isRemote = false;
  MessageKind kind = MessageKind::DT;
  double time = 0.0;  // microseconds since the start of the trace
  std::uint8_t errorType = 255;
  std::uint8_t bitPosition = 0;
  std::uint8_t frameKind = 0;  // the record id of the frame's channel group: 0 data, 1 remote, 2 error
};

}  // namespace xlatr
