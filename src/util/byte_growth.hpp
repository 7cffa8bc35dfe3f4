// Growing of byte vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace xlatr {

// Adds zeros at the end and returns where they begin. It has a source file of its own because compilers that see how a
// vector grows warn of writes that can't happen.
std::uint8_t* growBytes(std::vector<std::uint8_t>& bytes, std::size_t count);

void appendBytes(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> more);

}  // namespace xlatr
