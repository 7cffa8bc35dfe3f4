// MdfInfo, MdfReader, MdfWriter and MdfCanMessage.
#include <string>

#include "capi/families.hpp"

using xlatr::capi::object;

namespace {

bool validate(xlatr::MdfReader& reader, char* buffer, std::uint32_t bufferSize) {
  std::string reason;
  const bool valid = reader.ValidateFile(reason);
  xlatr::capi::copyText(reason, buffer, bufferSize);
  return valid;
}

}  // namespace

XLATR_INFO_FORMAT_FAMILY(MdfInfo, XLATR_FORMAT_MF4)
XLATR_INFO_OBJECT_FAMILY(MdfInfo)

MdfInfo* MdfInfo_Construct(const TraceFileInfo* file) {
  return xlatr::capi::handle<MdfInfo>(std::make_unique<xlatr::MdfInfo>(object(file)));
}

bool MdfInfo_getValid(const MdfInfo* info) {
  return object(info).getValid();
}

XLATR_READER_FAMILY(MdfReader, MdfInfo, MdfCanMessage)

bool MdfReader_ValidateFile(MdfReader* reader, char* buffer, std::uint32_t bufferSize) {
  return validate(object(reader), buffer, bufferSize);
}

XLATR_WRITER_FAMILY(MdfWriter)

MdfWriter* MdfWriter_Construct(const char* targetPath, bool overrideExistingFile, double version) {
  return xlatr::capi::handle<MdfWriter>(
      std::make_unique<xlatr::MdfWriter>(xlatr::capi::textIn(targetPath), overrideExistingFile, version));
}

void MdfWriter_setZipped(MdfWriter* writer, bool zipped) {
  object(writer).setZipped(zipped);
}

void MdfWriter_setSorted(MdfWriter* writer, bool sorted) {
  object(writer).setSorted(sorted);
}

XLATR_MESSAGE_FAMILY(MdfCanMessage)
XLATR_MESSAGE_BUS(MdfCanMessage)
