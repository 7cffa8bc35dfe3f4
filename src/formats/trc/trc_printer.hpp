// Printing one TRC line.
#pragma once

#include <cstdint>

#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_version.hpp"

namespace xlatr {

// Appends the message as a line of a file of this version, without line end. `columns` is looked at from version 2.0
// on.
void appendTrcLine(TextBuffer& out, const BrixMessage& message, TrcVersion version, std::uint64_t number,
                   TrcColumnSet columns);

}  // namespace xlatr
