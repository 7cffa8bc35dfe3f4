#include "formats/blf/blf_info.hpp"

#include <algorithm>
#include <utility>

namespace xlatr {

BlfInfo::BlfInfo(TraceFileInfo file, BlfConverter converter)
    : TraceInfo(std::move(file), XLATR_FORMAT_BLF), converter_(std::move(converter)) {
  if (isOfOwnFormat()) {
    versionCode_ = std::max(converter_.queryFileVersion(getPath()), 0);
    fileVersion_ = blfVersionNumber(versionCode_);
    objectsCount_ = static_cast<std::uint32_t>(std::max(converter_.queryObjectsCount(getPath()), 0));
  }
}

std::string BlfInfo::getVersionText() const {
  return getValid() ? blfVersionText(versionCode_) : std::string();
}

}  // namespace xlatr
