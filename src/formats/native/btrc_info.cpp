#include "formats/native/btrc_info.hpp"

#include <utility>

namespace xlatr {

BtrcInfo::BtrcInfo(TraceFileInfo file) : TraceInfo(std::move(file), XLATR_FORMAT_BTRC) {
  if (!isOfOwnFormat()) {
    return;
  }
  tryReading([&] { header_ = BtrcFileHeader(getPath()); });
  fileVersion_ = header_.info.version;
  headerLength_ = header_.valid ? header_.firstFramePosition : 0;
  startDays_ = header_.startDateTime.toOleDate();
}

BtrcInfo::BtrcInfo(const std::string& path) : BtrcInfo(TraceFileInfo(path)) {}

bool BtrcInfo::getValid() const {
  constexpr double kReadableVersion = 1.0;
  return header_.valid && fileVersion_ == kReadableVersion;
}

}  // namespace xlatr
