// Session files, the memory image of a hardware logger.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tracegen/text_output.hpp"
#include "tracegen/traffic_model.hpp"

namespace tracegen {

// The logger's buses.
inline constexpr std::uint32_t kMaxBtrBuses = 5;

struct BtrForm {
  std::uint32_t sessions = 1;
  // Every session went on at the beginning of its area: the newest third of its sectors comes first.
  bool circular = false;
};

// Removes from the options what a session has no form for: frames longer than eight bytes, events and comments.
void limitToBtr(TrafficOptions& options);

// Writes `messages` of the traffic, shared out evenly among the sessions, one session after the other. Each sector
// begins with a tick of the logger's clock. A directory precedes every 16 sessions and links to the next one. Session n
// begins n minutes later than its traffic does, so that no two begin at the same time; the time stamps of every second
// session begin a second before they wrap. Returns the number of bytes written.
std::uint64_t writeBtrRecording(TrafficModel& model, const BtrForm& form, std::uint64_t messages, const Sink& sink);

}  // namespace tracegen
