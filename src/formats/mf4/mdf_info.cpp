#include "formats/mf4/mdf_info.hpp"

#include <limits>
#include <utility>

namespace xlatr {

MdfInfo::MdfInfo(TraceFileInfo file)
    : TraceInfo(std::move(file), XLATR_FORMAT_MF4), firstDataGroupPosition_(std::numeric_limits<std::uint64_t>::max()) {
  if (isOfOwnFormat()) {
    header_ = std::make_shared<MdfFileHeader>();
    tryReading([&] { header_->open(getPath()); });
    readHeader();
  }
}

MdfInfo::MdfInfo(const std::string& path) : MdfInfo(TraceFileInfo(path)) {}

bool MdfInfo::getValid() const {
  return header_ && header_->hasOpenHeader() && fileVersion_ >= getLowestVersion() &&
         fileVersion_ <= getCurrentVersion();
}

void MdfInfo::readHeader() {
  if (!header_->hasOpenHeader()) {
    return;
  }
  fileVersion_ = header_->identification()->idVersionNumber / 100.0;
  if (const std::uint64_t position = header_->header()->link(HeaderBlock::kFirstDataGroup); position != 0) {
    firstDataGroupPosition_ = position;
  }
  tryReading([&] { startDays_ = header_->startTime().toOleDate(); });  // a moment that no calendar has is none
}

}  // namespace xlatr
