// A message of an MF4 file with bus logging.
#pragma once

#include <cstdint>

#include "messages/message.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// One record of a channel group of CAN frames. Bus numbers count from 1.
class MdfCanMessage final : public MessageStyleCan {
 public:
  static constexpr std::uint8_t kNoErrorType = 255;

  MdfCanMessage() { reset(); }

  // Back to what a new message is, keeping the storage of its data.
  void reset();

  std::uint32_t dlc = 0;  // the code, 0 to 15; `length` is in bytes
  bool isRemote = false;
  MessageKind kind = MessageKind::DT;
  RealMicroseconds time{};                // since the start of the measurement
  std::uint8_t errorType = kNoErrorType;  // of an error frame: 1 bit, 2 form, 3 stuff error, others
  std::uint8_t bitPosition = 0;           // of an error frame: where in the frame
  std::uint32_t foundFields = 0;          // mask of BusEventField: what the record holds
  std::uint32_t busKind = 0;              // 0 for CAN, the one kind of bus whose frames are understood
  std::uint8_t frameKind = 0;             // read: the record id; to be written: 0 data, 1 remote, 2 error frame
};

}  // namespace xlatr
