// Identifiers and data as they are shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace xlatr::cli {

// Capital digits, at least so many.
[[nodiscard]] std::string hexText(std::uint32_t value, std::size_t digits);

// As an identifier of a frame of this kind is typed: "123", "12345678x" for an extended one, "3C" for one of LIN.
[[nodiscard]] std::string identifierText(std::uint32_t kind, std::uint32_t id, bool extended);

// "01ab"; with a blank between each two if `separator` is one.
[[nodiscard]] std::string hexBytes(std::span<const std::uint8_t> bytes, const char* separator = "");

}  // namespace xlatr::cli
