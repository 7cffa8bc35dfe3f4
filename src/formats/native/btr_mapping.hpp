// From the messages of other formats to the frame slots of BTR files: one function per class that a BTR writer takes.
#pragma once

#include "formats/native/btr_layout.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Whether a slot can hold the message at all: a classic frame or an error frame of at most eight bytes.
[[nodiscard]] bool fitsBtrEntry(const BrixMessage& source);

// Buses from 6 on, and 0, have numbers in the file that no logger gives to a bus. The time is cut to 32 bits of
// microseconds.
[[nodiscard]] MsgEntry mapToBtrEntry(const BrixMessage& source);

}  // namespace xlatr
