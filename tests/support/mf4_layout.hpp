// MF4 files written down as text, one block a line, and their bytes. Shares nothing with the library.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace xlatr::test {

// What the $names of a layout stand for: numbers for links and uN:, and texts for sN:.
struct LayoutNames {
  std::map<std::string, std::uint64_t> numbers;
  std::map<std::string, std::string> texts;
};

// A mistake in a layout.
class LayoutError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The bytes of a layout. Lines, each with an optional "# comment":
//   @OFFSET ID LENGTH (LINK...) FIELD...   a block: the head, the links, the fields
//   @OFFSET raw LENGTH FIELD...            no block, just the fields
//   @OFFSET end                            behind the last byte
//   FIELD...                               fields wherever the line before ended
// Offsets and lengths are stated so that a reader sees them; one that is not true is a LayoutError. `start` is the
// offset of the first byte.
//
// Fields: "text" as its bytes, zN for N zero bytes, sN:text padded with zeros to N bytes, u8: u16: u32: u64: f64: for
// little-endian numbers, two hexadecimal digits for a byte. Numbers may be hexadecimal ("0x10") or a $name.
[[nodiscard]] std::string layOut(std::string_view layout, const LayoutNames& names, std::uint64_t start = 0);

[[nodiscard]] std::string layOutFile(const std::filesystem::path& path, const LayoutNames& names);

}  // namespace xlatr::test
