// What a converter and the library tell each other while the one runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/shared_memory.hpp"

namespace xlatr {

// Four bytes under a name and the lock that guards them, for one word an access. The converter counts its progress in
// the first word; the library asks it to stop in the second one. One thread at a time.
class BlfSharedBlock {
 public:
  // Makes both, or attaches to what the converter has made.
  explicit BlfSharedBlock(std::string name);
  // Takes both names away; a converter that is attached keeps what it has.
  ~BlfSharedBlock();
  BlfSharedBlock(const BlfSharedBlock&) = delete;
  BlfSharedBlock& operator=(const BlfSharedBlock&) = delete;

  // Takes away both names of the block of this name, should they be there.
  static void removeNames(const std::string& name);

  [[nodiscard]] bool isOpen() const { return memory_.isOpen() && mutex_.isOpen(); }
  // Hundredths of a per cent; nothing when the lock was not to be had in time.
  [[nodiscard]] std::optional<std::uint16_t> readProgress();
  // False when the lock was not to be had in time.
  [[nodiscard]] bool requestStop();

 private:
  std::string name_;
  platform::SharedMemory memory_;
  platform::NamedMutex mutex_;
};

}  // namespace xlatr
