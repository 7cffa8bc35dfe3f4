// What the directory of a BTR file tells.
#pragma once

#include <cstddef>
#include <vector>

#include "formats/native/btr_sectors.hpp"
#include "formats/native/btr_session_entry.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Reads the directory and finds the ends and beginnings of all sessions, once, at construction. Nothing is raised for a
// file that can't be read; it has no sessions.
class BtrInfo final : public TraceInfo {
 public:
  explicit BtrInfo(TraceFileInfo file);

  // Whether there is a session, and the version is one that loggers write.
  [[nodiscard]] bool getValid() const override;

  [[nodiscard]] std::size_t getSessionsCount() const { return sessions_.size(); }
  // The index is counted from 0 and must be below the count.
  [[nodiscard]] const BtrSessionEntry& GetSession(std::size_t index) const { return sessions_[index]; }

  // Whether the date of the first session does not exist; the start time is then that of this object's construction.
  [[nodiscard]] bool startTimeReplaced() const { return startTimeReplaced_; }

 private:
  [[nodiscard]] bool readDirectories(BtrSectors& sectors);
  SessionDescriptor readDirectory(const std::uint8_t* bytes);
  void findEnds(BtrSectors& sectors, std::size_t firstUnbounded);
  void takeStartTime();

  std::vector<BtrSessionEntry> sessions_;
  bool startTimeReplaced_ = false;
};

}  // namespace xlatr
