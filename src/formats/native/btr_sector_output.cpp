#include "formats/native/btr_sector_output.hpp"

namespace xlatr {
namespace {

constexpr std::uint8_t kWrapCounter = 1;  // of a session that never wraps

}  // namespace

void BtrSectorOutput::begin(const SessionDescriptor& session) {
  session_ = session;
  SectorImage directory{};
  storeFields(directory.data(), session_);
  output_.seek(0);
  writeSector(directory);
  sector_.seal(session_.dateAndTime, kWrapCounter);
}

void BtrSectorOutput::write(const MsgEntry& entry) {
  sector_.entryAt(entryCount_) = entry;
  if (++entryCount_ == DataSector::kEntries) {
    flushSector();
  }
}

void BtrSectorOutput::flushSector() {
  entryCount_ = 0;
  const SectorImage image = sector_.toBytes();
  sector_ = {};
  sector_.seal(session_.dateAndTime, kWrapCounter);
  writeSector(image);
}

void BtrSectorOutput::writeSector(const SectorImage& image) {
  output_.write({reinterpret_cast<const char*>(image.data()), image.size()});
}

}  // namespace xlatr
