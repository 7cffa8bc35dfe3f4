// Growing of byte vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace xlatr {

// Adds zeros at the end and answers where they begin. In a file of its own, since compilers that see through the growth
// of a vector warn of writes that can't happen.
std::uint8_t* growBytes(std::vector<std::uint8_t>& bytes, std::size_t count);

void appendBytes(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> more);

}  // namespace xlatr
