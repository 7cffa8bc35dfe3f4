// Identifiers and data as they are shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace xlatr::cli {

// Capital digits, at least so many.
void appendHex(std::string& out, std::uint32_t value, std::size_t digits);
[[nodiscard]] std::string hexText(std::uint32_t value, std::size_t digits);

// How many digits identifiers of this kind have.
[[nodiscard]] std::size_t identifierDigits(std::uint32_t kind, bool extended);

// As an identifier of a frame of this kind is typed: "123", "12345678x" for an extended one, "3C" for one of LIN.
[[nodiscard]] std::string identifierText(std::uint32_t kind, std::uint32_t id, bool extended);

// "01ab", with what stands between each two.
void appendHexBytes(std::string& out, std::span<const std::uint8_t> bytes, std::string_view separator);

// "01ab"; with a blank between each two if `separator` is one.
[[nodiscard]] std::string hexBytes(std::span<const std::uint8_t> bytes, std::string_view separator = {});

}  // namespace xlatr::cli
