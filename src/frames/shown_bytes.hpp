// The bytes in which lines of TRC traces and rows of CSV tables show what has no payload: states, counters, errors.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "frames/frame.hpp"

namespace xlatr {

// The state of a bus: four bytes, the highest first. Nothing for another number of bytes.
[[nodiscard]] std::optional<std::uint32_t> stateOfBytes(std::span<const std::uint8_t> bytes);
void appendStateBytes(std::uint32_t state, std::vector<std::uint8_t>& bytes);

// The receive and the transmit error counter. False, with the frame as it was, for another number of bytes.
[[nodiscard]] bool takeCounterBytes(std::span<const std::uint8_t> bytes, Frame& frame);
void appendCounterBytes(const Frame& frame, std::vector<std::uint8_t>& bytes);

// The type of an error as a bit, and four bytes: whether it was seen while receiving, its position, and the counters.
// False, with the frame as it was, for what says something else.
[[nodiscard]] bool takeErrorBytes(std::uint32_t typeBit, std::span<const std::uint8_t> bytes, Frame& frame);
// The four bytes. A frame without a direction counts as transmitted.
void appendErrorBytes(const Frame& frame, std::vector<std::uint8_t>& bytes);

}  // namespace xlatr
