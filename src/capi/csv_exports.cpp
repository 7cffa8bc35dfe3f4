// CsvInfo and CsvWriter.
#include "capi/families.hpp"

using xlatr::capi::object;

XLATR_INFO_FORMAT_FAMILY(CsvInfo, XLATR_FORMAT_CSV)
XLATR_INFO_OBJECT_GETTERS(CsvInfo)

bool CsvInfo_getValid(const CsvInfo* info) {
  return object(info).getValid();
}

XLATR_WRITER_FAMILY(CsvWriter)

CsvWriter* CsvWriter_Construct(const char* targetPath, bool overrideExistingFile, double version) {
  return xlatr::capi::handle<CsvWriter>(
      std::make_unique<xlatr::CsvWriter>(xlatr::capi::textIn(targetPath), overrideExistingFile, version));
}

void CsvWriter_setSeparator(CsvWriter* writer, const char* separator) {
  object(writer).setSeparator(xlatr::capi::textIn(separator));
}
