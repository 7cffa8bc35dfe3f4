// From the messages of other formats to those of ASC logs: one function per class that an ASC writer takes.
#pragma once

#include "formats/asc/asc_message.hpp"
#include "formats/lin/lin_message.hpp"
#include "formats/native/session_message.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Bus 0, which a trace without a bus column has, becomes bus 1. A frame of a kind without a direction word of its own
// in TRC, such as CAN FD, gets its type from its direction. A CAN XL message has no form here; its text becomes a
// comment.
void mapToAsc(const BrixMessage& source, AscMessage& target);
// An error frame has four data bytes; a line shows the direction and the position of the error from them.
void mapToAsc(const SessionMessage& source, AscMessage& target);

// As above, except that the counters of an error come after two zero bytes.
void mapToAsc(const ZelkBinaryMessage& source, AscMessage& target);

// A LIN frame becomes one of CAN on bus 1 and of type Rx; one of more than 8 bytes leaves the message empty and not
// valid.
void mapToAsc(const KorlMessage& source, AscMessage& target);

}  // namespace xlatr
