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
constexpr std::size_t kBuses = 5;  // of the logger

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
  clocks_.start(UnsignedMicroseconds(entry_.description.startTimestampUs));
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
    clocks_.tick(entry.timestampUs, Way::compatible());
  } else {
    raiseUnexpectedFrame(entry);
  }
}

void BtrSessionReader::takeFrame(const MsgEntry& entry, std::vector<SessionMessage>& messages) {
  if (entry.getSource() >= kBuses) {
    raiseFailure(FailureKind::Generic, "invalid vector subscript");
  }
  messages.emplace_back(entry, clocks_.advance(entry.getSource(), entry.timestampUs, Way::compatible()));
}

}  // namespace xlatr
