#include "formats/blf/blf_info.hpp"

#include <algorithm>
#include <utility>

namespace xlatr {

BlfInfo::BlfInfo(TraceFileInfo file, BlfConverter converter)
    : TraceInfo(std::move(file), XLATR_FORMAT_BLF), converter_(std::move(converter)) {
  if (isOfOwnFormat()) {
    fileVersion_ = blfVersionNumber(converter_.queryFileVersion(getPath()));
    objectsCount_ = static_cast<std::uint32_t>(std::max(converter_.queryObjectsCount(getPath()), 0));
  }
}

}  // namespace xlatr
