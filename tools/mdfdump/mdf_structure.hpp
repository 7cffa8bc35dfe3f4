// The blocks of an MDF file as text, for those who work on the library.
#pragma once

#include <string>

#include "formats/mf4/block_stream.hpp"

namespace mdfdump {

// The identification, then each block that a link leads to, once, children below their parents with two more blanks and
// the next block of a list at the same depth: offset, type, length, links, and its fields by their names. What can't be
// read has the reason in its place. Data is not shown, only its length.
[[nodiscard]] std::string describeStructure(xlatr::BlockStream& stream);

}  // namespace mdfdump
