#include "formats/native/btr_session_reader.hpp"

#include <exception>
#include <utility>

#include "util/failures.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kHighestIdentifier = 0x1FFFFFFF;
constexpr std::uint32_t kTickIdentifier = 256;
constexpr std::size_t kSectorsAhead = 64;

bool isUnused(const MsgEntry& entry) {
  if (entry.id == MsgEntry::kNoId) {
    return !entry.isError() || entry.getSource() == MsgEntry::kLoggerSource;
  }
  return entry.id > kHighestIdentifier;
}

[[noreturn]] void raiseUnexpectedFrame(const MsgEntry& entry) {
  TextBuffer text;
  text.append("Unexpected frame received. Type: ");
  appendDecimal(text, entry.getSource());
  text.append(", ID: 0x");
  appendHex(text, entry.id, 1);
  raiseFailure(FailureKind::Generic, std::string(text.view()));
}

}  // namespace

SessionClock SessionClock::at(UnsignedMicroseconds time) {
  return {static_cast<std::uint32_t>(time.count()), static_cast<std::uint32_t>(time.count() >> 32U)};
}

void SessionClock::advance(std::uint32_t stampUs) {
  if (stampUs < low) {
    ++high;
  }
  low = stampUs;
}

BtrSessionReader::BtrSessionReader(BtrSessionEntry entry, bool activate) : entry_(std::move(entry)) {
  if (activate) {
    static_cast<void>(open());
  }
}

double BtrSessionReader::getPercentDone() const {
  const std::uint32_t count = entry_.sectorsCount();
  return count == 0 ? 100.0 : sectorsRead_ * 100.0 / count;
}

bool BtrSessionReader::open() {
  close();
  failure_.clear();
  loggerClock_ = SessionClock::at(UnsignedMicroseconds(entry_.description.startTimestampUs));
  busClocks_.fill(loggerClock_);
  sectorsRead_ = 0;
  nextSector_ = entry_.start.sector;
  try {
    sectors_.emplace(entry_.sourcePath, kSectorsAhead);
    active_ = true;
  } catch (const std::exception& failure) {
    failure_ = failure.what();
    close();
  }
  return active_;
}

void BtrSessionReader::close() {
  active_ = false;
  sectors_.reset();
}

bool BtrSessionReader::readSector(std::vector<SessionMessage>& messages) {
  messages.clear();
  if (!active_ || !moveToNextSector()) {
    return false;
  }
  const DataSector sector = readNextSector();
  if (!sector.belongsTo(entry_.description.dateAndTime)) {
    return false;
  }
  for (const MsgEntry& entry : sector.entries) {
    takeEntry(entry, messages);
  }
  return true;
}

// Whether there is a sector left. Goes from the end of the area to its beginning when that is due.
bool BtrSessionReader::moveToNextSector() {
  if (sectorsRead_ == entry_.sectorsCount()) {
    return false;
  }
  if (nextSector_ > entry_.end.sector) {
    if (!entry_.isCircular() || sectorsRead_ >= entry_.sectorsCount()) {
      return false;
    }
    nextSector_ = entry_.firstSector();
  }
  return true;
}

DataSector BtrSessionReader::readNextSector() {
  const std::uint8_t* bytes = nullptr;
  try {
    bytes = sectors_->read(nextSector_);
  } catch (const std::exception& failure) {
    raiseFailure(FailureKind::Generic, failure.what());
  }
  if (bytes == nullptr) {
    raiseFailure(FailureKind::Generic,
                 entry_.sourcePath + ": ends before sector " + std::to_string(nextSector_) + " does");
  }
  ++nextSector_;
  ++sectorsRead_;
  return DataSector::fromBytes(SectorBytes(bytes, kBtrSectorSize));
}

void BtrSessionReader::takeEntry(const MsgEntry& entry, std::vector<SessionMessage>& messages) {
  if (isUnused(entry)) {
    return;
  }
  if (entry.getSource() != MsgEntry::kLoggerSource) {
    takeFrame(entry, messages);
  } else if (entry.id == kTickIdentifier) {
    takeTick(entry);
  } else {
    raiseUnexpectedFrame(entry);
  }
}

void BtrSessionReader::takeFrame(const MsgEntry& entry, std::vector<SessionMessage>& messages) {
  const std::size_t place = std::size_t{entry.getSource()} + 1;
  if (place >= kClocks) {
    raiseFailure(FailureKind::Generic, "invalid vector subscript");
  }
  SessionClock& clock = busClocks_[place];
  clock.advance(entry.timestampUs);
  messages.emplace_back(entry, clock.now());
}

// The logger's clock ticks on where a bus is silent. A bus that was silent for long is taken along, so that it can't
// miss a wrap of its time stamps; it stays behind the logger, since frames of a short while ago may still come.
void BtrSessionReader::takeTick(const MsgEntry& entry) {
  constexpr UnsignedMicroseconds kLongSilence = std::chrono::minutes(30);
  constexpr UnsignedMicroseconds kDistance = std::chrono::minutes(10);
  loggerClock_.advance(entry.timestampUs);
  const UnsignedMicroseconds now = loggerClock_.now();
  for (SessionClock& clock : busClocks_) {
    const UnsignedMicroseconds then = clock.now();
    if (now > then && now - then >= kLongSilence) {
      clock = SessionClock::at(now - kDistance);
    }
  }
}

}  // namespace xlatr
