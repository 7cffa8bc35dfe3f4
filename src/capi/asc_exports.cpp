// AscInfo, AscReader, AscWriter and MessageAsc.
#include "capi/families.hpp"

using xlatr::capi::object;

namespace {

// Callers count in seconds.
bool adjustTime(xlatr::AscMessage& message, double& referenceSeconds) {
  xlatr::RealSeconds reference(referenceSeconds);
  const bool adjusted = message.AdjustTime(reference);
  referenceSeconds = reference.count();
  return adjusted;
}

}  // namespace

XLATR_INFO_FORMAT_FAMILY(AscInfo, XLATR_FORMAT_ASC)
XLATR_INFO_OBJECT_FAMILY(AscInfo)

AscInfo* AscInfo_Construct(const TraceFileInfo* file) {
  return xlatr::capi::handle<AscInfo>(std::make_unique<xlatr::AscInfo>(object(file)));
}

bool AscInfo_getValid(const AscInfo* info) {
  return object(info).getValid();
}

XLATR_READER_FAMILY(AscReader, AscInfo, MessageAsc)

XLATR_WRITER_FAMILY(AscWriter)

AscWriter* AscWriter_Construct(const char* targetPath, bool overrideExistingFile, double version) {
  return xlatr::capi::handle<AscWriter>(
      std::make_unique<xlatr::AscWriter>(xlatr::capi::textIn(targetPath), overrideExistingFile, version));
}

XLATR_MESSAGE_FAMILY(MessageAsc)
XLATR_MESSAGE_BUS(MessageAsc)
XLATR_MESSAGE_PARSING_TEXT(MessageAsc)

bool MessageAsc_AdjustTime(MessageAsc* message, double* reference) {
  return adjustTime(object(message), xlatr::capi::resultOf(reference));
}
