// What the records of a BTRC trace say: from the bytes of a record to the fields of a message.
#pragma once

#include <cstdint>
#include <span>

#include "formats/native/zelk_message.hpp"

namespace xlatr {

// Fills a message that was reset from its raw bytes, which begin with a record of its record type. A type without
// content leaves it as it is; a record that ends before its fields do leaves a commentary that says so. Raises nothing.
void readContent(ZelkBinaryMessage& message, const TimeScale& timeScale);

// Adds to every time in the bytes of a record of frames, errors or the bus status, modulo 2^64. The record is whole.
void moveTimes(RecordType type, std::span<std::uint8_t> record, std::uint64_t delta);

}  // namespace xlatr
