// Reads one session of a BTR file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "formats/native/btr_sectors.hpp"
#include "formats/native/btr_session_entry.hpp"
#include "formats/native/session_message.hpp"
#include "io/trace_reader.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// The 64 bits of a clock of microseconds of which the file has the low 32.
struct SessionClock {
  std::uint32_t low = 0;
  std::uint32_t high = 0;

  [[nodiscard]] static SessionClock at(UnsignedMicroseconds time);
  [[nodiscard]] UnsignedMicroseconds now() const { return UnsignedMicroseconds(std::uint64_t{high} << 32U | low); }
  // A stamp that is lower than the one before has wrapped.
  void advance(std::uint32_t stampUs);
};

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
  void takeTick(const MsgEntry& entry);

  // The logger has five buses. The clock of bus n stands at n + 1: the first place is that of no bus.
  static constexpr std::size_t kClocks = 6;

  BtrSessionEntry entry_;
  std::optional<BtrSectors> sectors_;
  std::uint64_t nextSector_ = 0;
  std::uint32_t sectorsRead_ = 0;
  SessionClock loggerClock_;
  std::array<SessionClock, kClocks> busClocks_{};
};

}  // namespace xlatr
