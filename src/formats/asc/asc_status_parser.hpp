// Reading the lines of status and errors.
#pragma once

#include <string_view>

#include "formats/asc/asc_message.hpp"

namespace xlatr {

// Each fills the message from a line of its kind and returns true if the line needs no further look. After false the
// message may hold the time, the bus and whatever else was read. A line that ends too early raises std::out_of_range.

// "time CAN bus Status:error counter change (Zelkworks) - TxErr: n RxErr: n". A count of receive errors that is 0 is
// not a number with the blank before it, so such a line is not valid: readsNoErrorCountersWithAReceiveCountOf0.
[[nodiscard]] bool parseAscErrorCounters(std::string_view line, AscMessage& message);

// "time CAN bus Status:text (Zelkworks)". The text is kept in upper case, with its mark.
[[nodiscard]] bool parseAscStatusText(std::string_view line, AscMessage& message);

// "time bus ErrorFrame ECC: bits".
[[nodiscard]] bool parseAscErrorEcc(std::string_view line, AscMessage& message);

// "time bus ErrorFrame ECC: bits Flags = n Code = n ...", which newer loggers write. Bit 0 of the flags says whether
// the code is there; a line without it is complete and not valid.
[[nodiscard]] bool parseAscErrorFlags(std::string_view line, AscMessage& message);

}  // namespace xlatr
