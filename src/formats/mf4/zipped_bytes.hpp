// What zlib squeezed, and what was turned around before that so that it squeezes better.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace xlatr {

// Inflates one whole stream. One that does not end, or gives another number of bytes than `out` has, raises
// kInflateFailure.
void inflateInto(std::span<const std::uint8_t> zipped, std::span<std::uint8_t> out);

// The same without a failure: whether it is a stream of as many bytes. Takes half of the time, or less, where
// libdeflate is there. What `out` holds when it is not is of no use.
[[nodiscard]] bool inflateWhole(std::span<const std::uint8_t> zipped, std::span<std::uint8_t> out);

// Squeezes bytes into one whole stream, at zlib's default level. Raises kDeflateFailure.
void deflateInto(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out);

// Columns to rows: `in` holds the first bytes of all rows, then all second bytes, and so on. `width` is the bytes of a
// row; `in` and `out` are a whole number of rows of the same size.
void transpose(std::span<const std::uint8_t> in, std::size_t width, std::span<std::uint8_t> out);

}  // namespace xlatr
