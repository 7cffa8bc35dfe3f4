// How many frames the tests take that run over all formats.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace xlatr::test {

#if defined(__SANITIZE_ADDRESS__)
#define XLATR_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define XLATR_TEST_SANITIZED 1
#endif
#endif

// The first number in an optimised build, and the second where each frame takes many times as long; XLATR_TEST_FRAMES
// says another.
inline std::size_t framesToTest([[maybe_unused]] std::size_t optimised, [[maybe_unused]] std::size_t otherwise) {
  if (const char* const asked = std::getenv("XLATR_TEST_FRAMES"); asked != nullptr) {
    return static_cast<std::size_t>(std::strtoull(asked, nullptr, 10));
  }
#if defined(XLATR_TEST_SANITIZED) || !defined(NDEBUG)
  return otherwise;
#else
  return optimised;
#endif
}

#undef XLATR_TEST_SANITIZED

}  // namespace xlatr::test
