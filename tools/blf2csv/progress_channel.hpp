// How the converter and the program that started it talk while it runs.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/shared_memory.hpp"

namespace blf2csv {

// Four bytes of shared memory and the lock that guards them: the converter tells its progress in the first word, in
// hundredths of a per cent, and finds a 1 in the second when it is to stop. Without such memory it
// runs all the same. One thread at a time.
class ProgressChannel {
 public:
  // Makes the memory of this name, or attaches to it.
  explicit ProgressChannel(std::string name);
  // Takes the name away.
  ~ProgressChannel();
  ProgressChannel(const ProgressChannel&) = delete;
  ProgressChannel& operator=(const ProgressChannel&) = delete;

  // False when the converter is to stop.
  [[nodiscard]] bool tell(std::uint16_t progress);

 private:
  std::string name_;
  std::string lockName_;
  xlatr::platform::SharedMemory memory_;
  xlatr::platform::NamedMutex lock_;
  std::chrono::milliseconds limit_;
};

}  // namespace blf2csv
