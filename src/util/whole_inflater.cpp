#include "util/whole_inflater.hpp"

#ifdef XLATR_HAS_LIBDEFLATE
#include <libdeflate.h>
#endif

namespace xlatr {

#ifdef XLATR_HAS_LIBDEFLATE

struct WholeInflater::State {
  // Null if there is no memory; zlib says so then.
  std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> decompressor{
      libdeflate_alloc_decompressor(), &libdeflate_free_decompressor};
};

WholeInflater::WholeInflater() : state_(std::make_unique<State>()) {}

std::size_t WholeInflater::inflate(std::span<const std::uint8_t> packed, std::span<std::uint8_t> content) {
  if (!state_->decompressor) {
    return 0;
  }
  std::size_t consumed = 0;
  // Without a place for the number of bytes, other numbers are failures.
  const libdeflate_result result = libdeflate_zlib_decompress_ex(
      state_->decompressor.get(), packed.data(), packed.size(), content.data(), content.size(), &consumed, nullptr);
  return result == LIBDEFLATE_SUCCESS ? consumed : 0;
}

#else

struct WholeInflater::State {};

WholeInflater::WholeInflater() = default;

std::size_t WholeInflater::inflate(std::span<const std::uint8_t> /*packed*/, std::span<std::uint8_t> /*content*/) {
  return 0;
}

#endif

WholeInflater::~WholeInflater() = default;

}  // namespace xlatr
