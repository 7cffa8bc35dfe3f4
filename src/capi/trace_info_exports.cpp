// BaseTraceInfo and TraceFileInfo.
#include "capi/families.hpp"

using xlatr::capi::copyText;
using xlatr::capi::object;
using xlatr::capi::textSize;

TraceFormat BaseTraceInfo_getFormat(const BaseTraceInfo* info) {
  return object(info).getFormat();
}

const TraceFormat* BaseTraceInfo_getSupportedConversions(const BaseTraceInfo* info) {
  return object(info).getSupportedConversions().data();
}

uint32_t BaseTraceInfo_getSupportedConversionsSize(const BaseTraceInfo* info) {
  return xlatr::capi::countOf(object(info).getSupportedConversions().size());
}

const double* BaseTraceInfo_getSupportedVersions(const BaseTraceInfo* info) {
  return object(info).getSupportedVersions().data();
}

uint32_t BaseTraceInfo_getSupportedVersionsSize(const BaseTraceInfo* info) {
  return xlatr::capi::countOf(object(info).getSupportedVersions().size());
}

XLATR_TEXT_PAIR(BaseTraceInfo, getFormatDescription, getFormatDescriptionSize, self.getFormatDescription())

uint32_t BaseTraceInfo_GetTraceFormatDescriptionSize(TraceFormat format) {
  return textSize(xlatr::formatOf(format).description);
}

void BaseTraceInfo_GetTraceFormatDescription(TraceFormat format, char* buffer, uint32_t bufferSize) {
  copyText(xlatr::formatOf(format).description, buffer, bufferSize);
}

void BaseTraceInfo_GetTraceExtension(TraceFormat format, char* buffer, uint32_t bufferSize) {
  copyText(xlatr::formatOf(format).extension, buffer, bufferSize);
}

double BaseTraceInfo_GetTraceCurrentVersion(TraceFormat format) {
  const xlatr::FormatDescriptor& known = xlatr::formatOf(format);
  return known.askCurrentVersion != nullptr ? known.askCurrentVersion() : known.currentVersion;
}

bool BaseTraceInfo_GetIfConvertible(TraceFormat format) {
  return !xlatr::formatOf(format).allowedTargets.empty();
}

const double* BaseTraceInfo_GetTraceSupportedVersions(TraceFormat format) {
  return xlatr::formatOf(format).supportedVersions.data();
}

uint32_t BaseTraceInfo_GetTraceSupportedVersionsSize(TraceFormat format) {
  return xlatr::capi::countOf(xlatr::formatOf(format).supportedVersions.size());
}

bool BaseTraceInfo_GetIfSplitByBus(TraceFormat format, double version) {
  return xlatr::formatOf(format).isSplitTarget(version);
}

bool BaseTraceInfo_GetIfSplitBySession(TraceFormat format) {
  return !xlatr::formatOf(format).sessionMarker.empty();
}

TraceFileInfo* TraceFileInfo_Construct(const char* path) {
  return xlatr::capi::handle<TraceFileInfo>(std::make_unique<xlatr::TraceFileInfo>(xlatr::capi::textIn(path)));
}

void TraceFileInfo_Destruct(TraceFileInfo* file) {
  xlatr::capi::destruct(file);
}

bool TraceFileInfo_getValid(const TraceFileInfo* file) {
  return object(file).getValid();
}

uint64_t TraceFileInfo_getSize(const TraceFileInfo* file) {
  return object(file).getSize();
}

XLATR_TEXT_PAIR(TraceFileInfo, getPath, getPathSize, self.getPath())
XLATR_TEXT_PAIR(TraceFileInfo, ToString, getToStringSize, self.getPath())
