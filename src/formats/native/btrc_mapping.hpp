// From the messages of other formats to those of BTRC traces: one function a class that a BTRC writer takes.
#pragma once

#include <cstdint>

#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// Makes the record of the message, too. What has no record of its own becomes a text.
void mapToBtrc(const BrixMessage& source, ZelkBinaryMessage& target);

// A time of milliseconds in microseconds, rounded to the nearest; what is no such number, or is beyond them, is 0. A
// time before the start wraps, so that adding the start to it gives what it should.
[[nodiscard]] std::uint64_t wrappedMicroseconds(double milliseconds);

}  // namespace xlatr
