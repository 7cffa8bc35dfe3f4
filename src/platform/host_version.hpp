// The version of the program that this library runs in.
#pragma once

#include <array>
#include <cstdint>

namespace xlatr::platform {

// Whether there is a version, and if not why. A platform need not know all of them.
enum class HostVersionState {
  Found,
  NoRecord,     // the program carries no version
  OutOfMemory,  // there was no room for its version record
  Unreadable,   // there is a record, but reading it failed
  Malformed,    // the record is not what it should be
};

struct HostVersion {
  HostVersionState state = HostVersionState::NoRecord;
  std::array<std::uint32_t, 4> parts{};  // most significant first, all 0 unless found
};

// The product version in the record of the program file, not of this library. Safe from any thread.
[[nodiscard]] HostVersion readHostVersion();

}  // namespace xlatr::platform
