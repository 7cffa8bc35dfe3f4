// TrcInfo, TrcReader, TrcWriter and MessageCan.
#include "capi/families.hpp"

using xlatr::capi::object;

XLATR_INFO_FORMAT_FAMILY(TrcInfo, XLATR_FORMAT_TRC)
XLATR_INFO_OBJECT_FAMILY(TrcInfo)

TrcInfo* TrcInfo_Construct(const TraceFileInfo* file) {
  return xlatr::capi::handle<TrcInfo>(std::make_unique<xlatr::TrcInfo>(object(file)));
}

TrcInfo* TrcInfo_Construct_2(const char* path) {
  return xlatr::capi::handle<TrcInfo>(std::make_unique<xlatr::TrcInfo>(xlatr::capi::textIn(path)));
}

bool TrcInfo_getValid(const TrcInfo* info) {
  return object(info).getValid();
}

XLATR_READER_FAMILY(TrcReader, TrcInfo, MessageCan)

XLATR_WRITER_FAMILY(TrcWriter)

TrcWriter* TrcWriter_Construct(const char* targetPath, bool overrideExistingFile, double version) {
  return xlatr::capi::handle<TrcWriter>(
      std::make_unique<xlatr::TrcWriter>(xlatr::capi::textIn(targetPath), overrideExistingFile, version));
}

XLATR_MESSAGE_FAMILY(MessageCan)
XLATR_MESSAGE_BUS(MessageCan)
XLATR_MESSAGE_PARSING_TEXT(MessageCan)

bool MessageCan_ValidateForTargetVersion(const MessageCan* message, double version) {
  return object(message).ValidateForTargetVersion(version);
}
