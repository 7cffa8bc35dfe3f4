#include "io/trace_info.hpp"

#include <utility>

#include "platform/files.hpp"
#include "util/render.hpp"

namespace xlatr {

BaseTraceInfo::BaseTraceInfo(TraceFormat format) : format_(normalizeFormat(format)) {
  const FormatDescriptor& known = formatOf(format_);
  shortName_ = known.shortName;
  description_ = known.description;
  allowedTargets_.assign(known.allowedTargets.begin(), known.allowedTargets.end());
  supportedVersions_.assign(known.supportedVersions.begin(), known.supportedVersions.end());
}

BaseTraceInfo::~BaseTraceInfo() = default;

TraceFileInfo::TraceFileInfo(const std::string& path) : TraceFileInfo(path, platform::fileExists(path)) {}

TraceFileInfo::TraceFileInfo(const std::string& path, bool exists)
    : BaseTraceInfo(exists ? formatOfPath(path) : XLATR_FORMAT_NONE),
      path_(exists ? path : std::string()),
      size_(exists ? platform::fileSize(path) : 0) {}

ITraceInfo::~ITraceInfo() = default;

TraceInfo::TraceInfo(TraceFileInfo file, TraceFormat format) : file_(std::move(file)), format_(format) {}

std::string TraceInfo::getVersionText() const {
  return getValid() ? formatFixed(fileVersion_, 1) : std::string();
}

}  // namespace xlatr
