// What a converter and the library tell each other while the converter runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/shared_memory.hpp"

namespace xlatr {

// A table, and so its block, is named by this and a GUID.
inline constexpr std::string_view kBlfTablePrefix = "BLF";

// Four bytes under a name and the lock that guards them. Each access is to one word. The converter counts its progress
// in the first word; the library asks it to stop in the second one. One thread at a time.
class BlfSharedBlock {
 public:
  // Makes both, or attaches to those that the converter has made.
  explicit BlfSharedBlock(std::string name);
  // Removes both names; a converter that is attached keeps what it has.
  ~BlfSharedBlock();
  BlfSharedBlock(const BlfSharedBlock&) = delete;
  BlfSharedBlock& operator=(const BlfSharedBlock&) = delete;

  // Removes both names of the block of this name, if they exist. Takes no memory.
  static void removeNames(std::string_view name) noexcept;
  // Removes the names of blocks that other processes were to remove and could not, because they were ended.
  static void removeForgotten();

  [[nodiscard]] bool isOpen() const { return memory_.isOpen() && mutex_.isOpen(); }
  // Hundredths of a percent; nothing if the lock was not free in time.
  [[nodiscard]] std::optional<std::uint16_t> readProgress();
  // False if the lock could not be had in time.
  [[nodiscard]] bool requestStop();

 private:
  std::string name_;
  platform::SharedMemory memory_;
  platform::NamedMutex mutex_;
};

}  // namespace xlatr
