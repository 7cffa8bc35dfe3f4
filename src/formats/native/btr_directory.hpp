// The sessions of a BTR file as its directory tells them, whatever is damaged in it.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_set>
#include <vector>

#include "formats/native/btr_layout.hpp"
#include "formats/native/btr_sectors.hpp"
#include "frames/account.hpp"

namespace xlatr {

// A session and the sectors that can be its own. No sector can be of two sessions.
struct BtrSessionArea {
  SessionDescriptor description;
  std::uint64_t first = 0;
  std::uint64_t end = 0;  // after the last sector

  // Nanoseconds since 1970; nothing for a date that there is not.
  [[nodiscard]] std::optional<std::int64_t> start() const;
};

struct BtrDirectory {
  std::vector<BtrSessionArea> sessions;
  std::unordered_set<std::uint32_t> sectors;  // of the directory itself
  Account damage;

  // Of a file of so many whole sectors.
  [[nodiscard]] static BtrDirectory read(BtrSectors& file, std::uint64_t sectorCount);

 private:
  // The link to the sector in which the directory goes on; 0 for none.
  std::uint32_t takeSector(const std::uint8_t* bytes);
  void bound(std::uint64_t sectorCount);
};

}  // namespace xlatr
