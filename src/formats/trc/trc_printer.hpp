// Printing one TRC line.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "formats/trc/trc_columns.hpp"

namespace xlatr {

class BrixMessage;
class TextBuffer;
struct TrcVersion;

// What a line is to hold besides the message's own fields.
struct TrcLine {
  std::uint64_t number;
  TrcColumnSet columns;  // counts from version 2.0 on
  std::uint32_t id;
  std::uint32_t length;
  std::span<const std::uint8_t> data;  // at most `length` bytes
  std::uint32_t unnumberedBus;         // the bus that is no number
  std::optional<std::int64_t> timeNs;  // counts instead of the message's time
};

// Appends a line of a version, without line end.
using TrcLinePrinter = void (*)(TextBuffer& out, const BrixMessage& message, const TrcLine& line);

void printTrc10(TextBuffer& out, const BrixMessage& message, const TrcLine& line);
void printTrc11(TextBuffer& out, const BrixMessage& message, const TrcLine& line);
void printTrc12(TextBuffer& out, const BrixMessage& message, const TrcLine& line);
void printTrc13(TextBuffer& out, const BrixMessage& message, const TrcLine& line);
void printTrc20(TextBuffer& out, const BrixMessage& message, const TrcLine& line);
void printTrc21(TextBuffer& out, const BrixMessage& message, const TrcLine& line);
void printTrc30(TextBuffer& out, const BrixMessage& message, const TrcLine& line);

// Appends the message as a line of a file of this version, without line end. `columns` counts from version 2.0 on.
void appendTrcLine(TextBuffer& out, const BrixMessage& message, const TrcVersion& version, std::uint64_t number,
                   TrcColumnSet columns);

// The same on the complete way: the time is exact and already as coarse as the version's, and bus 0 is none.
void appendTrcFrameLine(TextBuffer& out, const BrixMessage& message, std::int64_t timeNs, const TrcVersion& version,
                        std::uint64_t number);

}  // namespace xlatr
