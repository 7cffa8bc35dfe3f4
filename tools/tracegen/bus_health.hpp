// The error state of the recording interface on one bus.
#pragma once

#include <cstdint>
#include <limits>

#include "tracegen/entry.hpp"
#include "tracegen/random.hpp"

namespace tracegen {

// A quiet bus until it is disturbed. Then come error frames, each followed by the new error counters, and a status line
// whenever a counter crosses a limit. Afterwards the counters fall to zero in steps.
class BusHealth {
 public:
  static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

  explicit BusHealth(std::uint8_t bus) : bus_(bus) {}

  // Begins a burst of errors right after `nowUs`; a burst that is already going on grows.
  void disturb(std::uint64_t nowUs, Random& random);
  // When the next entry is due; kNever while all is quiet.
  [[nodiscard]] std::uint64_t dueUs() const { return dueUs_; }
  // Writes the entry that is due and plans the next one, which is not due earlier. Only while one is due.
  void next(Entry& entry, Random& random);

 private:
  enum class Step : std::uint8_t { ErrorFrame, Counters, Status };

  void writeErrorFrame(Entry& entry, Random& random);
  void planNext(Random& random);
  [[nodiscard]] std::uint32_t statusWord() const;

  std::uint64_t dueUs_ = kNever;
  std::uint32_t errorsLeft_ = 0;
  std::uint32_t receiveErrors_ = 0;
  std::uint32_t transmitErrors_ = 0;
  std::uint32_t reportedStatus_ = 0;
  Step step_ = Step::ErrorFrame;
  bool transmitting_ = false;  // whether the frames that the burst destroys are the interface's own
  std::uint8_t bus_;           // 1-based
};

}  // namespace tracegen
