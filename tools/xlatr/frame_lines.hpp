// Frames as lines: for people, and as JSON for programs.
#pragma once

#include <cstdint>
#include <string>

#include "xlatr/frames.h"

namespace xlatr::cli {

// "    12.345678  1  Rx       123  data      8  11 22 33 44 55 66 77 88". Times in seconds with as many decimals as a
// nanosecond needs, but at least six. What a frame lacks is a "-".
void appendTextLine(const xlatr_batch& batch, std::size_t row, std::string& out);

// {"time_ns":12345678,"kind":"data","bus":1,"id":"123","ide":0,"dir":0,...}: the names and the values of the columns of
// a csv table of version 2.0, of those that the frame has.
void appendJsonLine(const xlatr_batch& batch, std::size_t row, std::string& out);

}  // namespace xlatr::cli
