// Results other than text across the border.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "capi/handles.hpp"
#include "util/failures.hpp"

namespace xlatr::capi {

inline std::uint32_t countOf(std::size_t count) {
  return static_cast<std::uint32_t>(count);
}

// Where a caller wants a result. A null place raises a ConverterProcessingException.
template <class Value>
Value& resultOf(Value* place) {
  if (place == nullptr) {
    throwProcessingFailure("Object cannot be null");
  }
  return *place;
}

// Hands the reader's next message out; leaves `out` alone if there is none.
template <class Reader, class MessageHandle>
bool readNextMessage(Reader& reader, MessageHandle** out) {
  MessageHandle*& result = resultOf(out);
  auto message = reader.ReadNextMessage();
  if (!message) {
    return false;
  }
  result = handle<MessageHandle>(std::move(message));
  return true;
}

}  // namespace xlatr::capi
