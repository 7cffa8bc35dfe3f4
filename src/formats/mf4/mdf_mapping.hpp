// From the messages of other formats to those of MF4 files: one function per class that an MF4 writer takes.
#pragma once

#include "formats/mf4/mdf_can_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Leaves the message not valid for what is no CAN or CAN FD frame: status, error counters, events, CAN XL. The DLC is
// that of the smallest frame that holds the length. An error frame's type and bit position come from its data or, where
// the trace is of a version that keeps them apart, from its identifier and data.
void mapToMdf(const BrixMessage& source, MdfCanMessage& target);

}  // namespace xlatr
