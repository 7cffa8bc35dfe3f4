// KorlInfo, KorlReader, KorlWriter and MessageLin.
#include "capi/families.hpp"

using xlatr::capi::object;

XLATR_INFO_FORMAT_FAMILY(KorlInfo, XLATR_FORMAT_LIN)
XLATR_INFO_OBJECT_FAMILY(KorlInfo)

KorlInfo* KorlInfo_Construct(const TraceFileInfo* file) {
  return xlatr::capi::handle<KorlInfo>(std::make_unique<xlatr::KorlInfo>(object(file)));
}

bool KorlInfo_getValid(const KorlInfo* info) {
  return object(info).getValid();
}

XLATR_READER_FAMILY(KorlReader, KorlInfo, MessageLin)

XLATR_WRITER_FAMILY(KorlWriter)

KorlWriter* KorlWriter_Construct(const char* targetPath, bool overrideExistingFile, double version) {
  return xlatr::capi::handle<KorlWriter>(
      std::make_unique<xlatr::KorlWriter>(xlatr::capi::textIn(targetPath), overrideExistingFile, version));
}

XLATR_MESSAGE_FAMILY(MessageLin)
XLATR_MESSAGE_PARSING_TEXT(MessageLin)
