// The log form of the SocketCAN utilities.
#pragma once

#include "tracegen/line_printer.hpp"

namespace tracegen {

// One line per frame, "(1709280000.000000) can0 123#DEADBEEF", ended by a line feed: time in seconds since 1970,
// interface, which is the bus counted from 0, identifier, data. "##" and a digit of flags mark CAN FD, "#R" and the
// length a remote frame. Only data, remote and error frames have a form here.
class CandumpPrinter : public LinePrinter {
 public:
  void printHeader(TextOutput& output) override;
  void printEntry(const Entry& entry, TextOutput& output) override;
};

}  // namespace tracegen
