// From the messages of other formats to those of ASC logs: one function a class that an ASC writer takes.
#pragma once

#include "formats/asc/asc_message.hpp"
#include "formats/native/session_message.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Bus 0, which a trace without a bus column has, becomes bus 1. A frame of a kind that TRC gives no direction word of
// its own, as CAN FD, gets its type from its direction. A CAN XL message has no form here; its text is for a comment.
void mapToAsc(const BrixMessage& source, AscMessage& target);
// An error frame has four data bytes, of which a line shows the direction and the position of the error.
void mapToAsc(const SessionMessage& source, AscMessage& target);

// As above, but for the counters of an error, which move behind two zero bytes.
void mapToAsc(const ZelkBinaryMessage& source, AscMessage& target);

}  // namespace xlatr
