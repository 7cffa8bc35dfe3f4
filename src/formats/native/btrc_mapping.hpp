// From the messages of other formats to those of BTRC traces: one function per class that a BTRC writer takes.
#pragma once

#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Makes the record of the message, too. What has no record of its own becomes a text.
void mapToBtrc(const BrixMessage& source, ZelkBinaryMessage& target);

}  // namespace xlatr
