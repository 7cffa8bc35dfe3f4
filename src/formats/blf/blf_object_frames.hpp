// From an object of a log to a frame.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "formats/blf/blf_log_objects.hpp"
#include "frames/account.hpp"
#include "frames/frame.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// What those who read objects share from object to object. One thread at a time.
struct BlfReading {
  Account* account = nullptr;
  TextBuffer text;        // of the frame
  std::string converted;  // a text of the log as UTF-8
};

// Fills a frame that is like a new one but for its time and its place. What it refers to belongs to the object and to
// `reading`, and stays until the next call. False when the object is too short for its type.
using ReadBlfObject = bool (*)(const blf_log::Object& object, Frame& frame, BlfReading& reading);

struct BlfObjectType {
  std::uint32_t type = 0;
  ReadBlfObject read = nullptr;
  std::uint16_t longestBody = 0;  // as far as is known; 0 for any
};

// The types that become frames.
[[nodiscard]] std::span<const BlfObjectType> blfCanObjects();    // frames of CAN buses
[[nodiscard]] std::span<const BlfObjectType> blfLinObjects();    // frames of LIN buses
[[nodiscard]] std::span<const BlfObjectType> blfEventObjects();  // other things that happen on either
[[nodiscard]] std::span<const BlfObjectType> blfTextObjects();   // texts, markers and variables
inline constexpr std::uint32_t kBlfTypeLimit = 132;              // above all types that are known

// The name of a type that becomes no frame, "FlexRay frame"; that of objects nobody knows for any other.
[[nodiscard]] std::string_view blfObjectName(std::uint32_t type);

}  // namespace xlatr
