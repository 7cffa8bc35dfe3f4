// Printing the lines of frames, whatever they come from.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace xlatr {

class TextBuffer;

// A data or remote frame as a line has it.
struct AscFrameLine {
  std::uint32_t bus = 0;
  std::uint32_t id = 0;
  bool extended = false;
  bool transmitted = false;
  bool brs = false;
  bool esi = false;
  std::uint32_t dlc = 0;
  std::uint32_t length = 0;  // of a data frame
  std::span<const std::uint8_t> data = {};
  std::uint32_t flags = 0;     // asc_flag
  std::string_view name = {};  // of the message
};

// Each appends the part of a line after the time, without line end.

// "1  123             Rx   d 2 01 02"
void appendAscData7(TextBuffer& out, const AscFrameLine& line);
// "1  123             Rx   r 2"; without the DLC if that is not known.
void appendAscRemote7(TextBuffer& out, const AscFrameLine& line, bool dlcKnown);
// "CANFD   1 Rx        123  ... 0 0 2  2 01 02 ..."
void appendAscData8(TextBuffer& out, const AscFrameLine& line);

// The error code (ECC) as eight binary digits.
void appendAscErrorCode(TextBuffer& out, unsigned code);

}  // namespace xlatr
