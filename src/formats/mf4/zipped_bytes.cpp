#include "formats/mf4/zipped_bytes.hpp"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <memory>

#include "formats/mf4/block_failures.hpp"
#include "util/failures.hpp"
#include "util/whole_inflater.hpp"

namespace xlatr {
namespace {

// zlib counts what it is given at once in 32 bits.
constexpr std::size_t kLargestPiece = std::size_t{1} << 30;

class Inflater {
 public:
  Inflater() : ready_(inflateInit(&stream_) == Z_OK) {}
  ~Inflater() {
    if (ready_) {
      inflateEnd(&stream_);
    }
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  // Whether `in` is a stream that ends and gives exactly the bytes of `out`.
  [[nodiscard]] bool inflateAll(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    std::uint8_t scratch = 0;  // zlib wants a place to write to, also for nothing
    std::span<std::uint8_t> target = out.empty() ? std::span(&scratch, 1) : out;
    int result = ready_ ? Z_OK : Z_STREAM_ERROR;
    while (result == Z_OK) {
      const std::size_t inPiece = std::min(in.size(), kLargestPiece);
      const std::size_t outPiece = std::min(target.size(), kLargestPiece);
      stream_.next_in = const_cast<std::uint8_t*>(in.data());
      stream_.avail_in = static_cast<uInt>(inPiece);
      stream_.next_out = target.data();
      stream_.avail_out = static_cast<uInt>(outPiece);
      result = inflate(&stream_, Z_NO_FLUSH);
      in = in.subspan(inPiece - stream_.avail_in);
      target = target.subspan(outPiece - stream_.avail_out);
    }
    return result == Z_STREAM_END && target.size() == (out.empty() ? 1 : 0);
  }

 private:
  z_stream stream_{};
  bool ready_;
};

}  // namespace

void inflateInto(std::span<const std::uint8_t> zipped, std::span<std::uint8_t> out) {
  if (!Inflater().inflateAll(zipped, out)) {
    throwProcessingFailure(kInflateFailure);
  }
}

bool inflateWhole(std::span<const std::uint8_t> zipped, std::span<std::uint8_t> out) {
  return WholeInflater().inflate(zipped, out) > 0 || Inflater().inflateAll(zipped, out);
}

void deflateInto(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  out.resize(size);
  if (bytes.size() > kLargestPiece ||
      compress(out.data(), &size, bytes.data(), static_cast<uLong>(bytes.size())) != Z_OK) {
    throwProcessingFailure(kDeflateFailure);
  }
  out.resize(size);
}

void transpose(std::span<const std::uint8_t> in, std::size_t width, std::span<std::uint8_t> out) {
  // So that what is written stays in the cache.
  constexpr std::size_t kRowsAtOnce = 64;
  const std::size_t rows = in.size() / width;
  for (std::size_t first = 0; first < rows; first += kRowsAtOnce) {
    const std::size_t last = std::min(rows, first + kRowsAtOnce);
    for (std::size_t column = 0; column < width; ++column) {
      for (std::size_t row = first; row < last; ++row) {
        out[row * width + column] = in[column * rows + row];
      }
    }
  }
}

}  // namespace xlatr
