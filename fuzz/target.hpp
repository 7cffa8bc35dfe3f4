// What every target is made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ios>
#include <stdexcept>
#include <string_view>

#include "xlatr/failures.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// Ends the process, so that the input which led here is kept.
inline void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

// Does it, and catches every failure that may leave the library: its own, those of the system, and that of a log's line
// which ends too early. Returns whether it went through.
template <typename Action>
bool attempt(const Action& action) {
  try {
    action();
  } catch (const xlatr::ConverterGenericException&) {
    return false;
  } catch (const std::ios_base::failure&) {
    return false;
  } catch (const std::out_of_range& failure) {
    require(std::string_view(failure.what()) == "invalid vector subscript");
    return false;
  }
  return true;
}

}  // namespace fuzz
