// Reads one session of a BTR file.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "formats/native/btr_sectors.hpp"
#include "formats/native/btr_session_entry.hpp"
#include "formats/native/session_clock.hpp"
#include "formats/native/session_message.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

// Hands out the frames of a session sector by sector in the order in which they were recorded: a session that was
// recorded circularly is read from its oldest sector to the end of its area, and then from the beginning of that.
class BtrSessionReader final : public TraceReader {
 public:
  // Copies the entry. The file is opened here with `activate`, and by setActive.
  explicit BtrSessionReader(BtrSessionEntry entry, bool activate = false);

  [[nodiscard]] const BtrSessionEntry& session() const { return entry_; }

  // Fills `messages` with the frames of the next sector, which may be none; false, and no messages, at the end of the
  // session, at a sector that belongs to another one, and while inactive. Raises a ConverterGenericException at a
  // sector that can't be read and at a slot that makes no sense; `messages` then holds the frames before that.
  [[nodiscard]] bool readSector(std::vector<SessionMessage>& messages);

  // Sectors read, in parts of those that the session has; 100 when it has none.
  [[nodiscard]] double getPercentDone() const override;

 protected:
  bool open() override;
  void close() override;

 private:
  [[nodiscard]] bool moveToNextSector();
  [[nodiscard]] DataSector readNextSector();
  void takeEntry(const MsgEntry& entry, std::vector<SessionMessage>& messages);
  void takeFrame(const MsgEntry& entry, std::vector<SessionMessage>& messages);

  BtrSessionEntry entry_;
  std::optional<BtrSectors> sectors_;
  std::uint64_t nextSector_ = 0;
  std::uint32_t sectorsRead_ = 0;
  SessionClocks clocks_;
};

}  // namespace xlatr
