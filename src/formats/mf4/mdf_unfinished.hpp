// How an MF4 file says that its writer is still at work, or was stopped.
#pragma once

#include <cstdint>
#include <span>

#include "io/buffered_output.hpp"

namespace xlatr {

// Bits of idUnfinishedFlags: what the writer fills in at the end.
inline constexpr std::uint16_t kMdfCountsMissing = 0x1;
inline constexpr std::uint16_t kMdfLastLengthMissing = 0x4;

// The first eight bytes change, too: a program that looks at nothing else takes it for another kind of file.
// `file` begins with an identification block.
void markUnfinished(std::span<std::uint8_t> file, std::uint16_t missing);
// Writes what the identification block of a finished file has in these places. The last that is written to a file.
void markFinished(BufferedOutput& output);

}  // namespace xlatr
