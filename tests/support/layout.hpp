// Binary files written as text that a person can review, and their bytes. Shares nothing with the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::test {

// What the $names of a layout stand for: numbers for offsets, links and uN:, and texts for sN:.
struct LayoutNames {
  std::map<std::string, std::uint64_t> numbers;
  std::map<std::string, std::string> texts;
};

// A mistake in a layout.
class LayoutError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The bytes of a layout, and the line that each of them comes from.
struct LaidOut {
  std::string bytes;
  std::vector<std::string> lines;  // "file:number: text", in the order of their bytes
  std::vector<std::size_t> ends;   // the offset after the last byte of each line

  // The line that laid the byte at an offset; empty after the last byte.
  [[nodiscard]] std::string lineAt(std::size_t offset) const;
};

// Lays out a text. Lines, each with an optional "# comment":
//   FIELD...                               fields, wherever the line before ended
//   @OFFSET raw LENGTH FIELD...            the same, with their offset and their length stated
//   @OFFSET ID LENGTH (LINK...) FIELD...   an MDF block: the head, the links, the fields
//   @OFFSET zipped ID {                    an MDF block DZ of a deflated block ID that holds the lines up to "}"
//   @OFFSET end                            after the last byte
//   ... {                                  any of the lines with a length: the lines up to "}" belong to it
//   repeat COUNT {                         the lines up to "}" that many times
//   align SIZE                             zeros up to the next multiple of SIZE
//   include PATH                           the lines of another file, relative to this one
//   $NAME = NUMBER, $NAME = "text"         a name from here on
// Offsets and lengths are stated so that a reader sees them; one that is not true is a LayoutError. An offset may be a
// $NAME that has no number yet: it then becomes the name of that place, and lines before it may use it too.
//
// Fields: "text" as its bytes, zN for N zero bytes, sN:text padded with zeros to N bytes, u8: u16: u32: u64: f64: for
// little-endian numbers, two hexadecimal digits for a byte. Numbers may be negative, hexadecimal ("0x10"), a $NAME, or
// a sum of such ("$start+1000").
//
// `start` is the offset of the first byte.
[[nodiscard]] std::string layOut(std::string_view layout, const LayoutNames& names, std::uint64_t start = 0);

[[nodiscard]] std::string layOutFile(const std::filesystem::path& path, const LayoutNames& names);

// The same, with the lines that the bytes come from.
[[nodiscard]] LaidOut laidOutFile(const std::filesystem::path& path, const LayoutNames& names);

// The files that a layout includes, directly or not.
[[nodiscard]] std::vector<std::filesystem::path> includesOf(const std::filesystem::path& layout);

}  // namespace xlatr::test
