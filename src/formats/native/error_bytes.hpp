// Errors as the logger notes them, with a byte for each detail.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "frames/frame.hpp"
#include "messages/error_type.hpp"

namespace xlatr {

// Whether an error frame, or a change of the counters, has no detail that a byte can't hold.
[[nodiscard]] inline bool isErrorOfBytes(const Frame& frame) {
  constexpr std::array kBytes = {FrameAttribute::TxErrors, FrameAttribute::RxErrors, FrameAttribute::ErrorPosition};
  constexpr std::uint32_t kMost = 0xFF;
  return frame.attributes.get(FrameAttribute::ErrorType).value_or(0) <= kOtherError &&
         std::ranges::all_of(kBytes, [&frame](auto byte) { return frame.attributes.get(byte).value_or(0) <= kMost; });
}

}  // namespace xlatr
