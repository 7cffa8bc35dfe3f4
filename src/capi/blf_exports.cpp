// BlfInfo, BlfReader and BlfMessage.
#include <memory>
#include <new>
#include <utility>

#include "capi/families.hpp"

using xlatr::capi::object;

namespace {

// Asked while the library is loaded: what becomes of the converter later does not change it.
// Nobody could catch a failure there; it is asked again then.
[[maybe_unused]] const double kConverterVersionAtLoad = []() noexcept {
  try {
    return xlatr::blfCurrentVersion();
  } catch (const std::bad_alloc&) {
    return 0.0;
  }
}();

// Leaves `message` alone at the end.
bool readNext(xlatr::BlfReader& reader, BlfMessage*& message) {
  std::unique_ptr<xlatr::BlfMessage> next;
  if (!reader.ReadNextMessage(next)) {
    return false;
  }
  message = xlatr::capi::handle<BlfMessage>(std::move(next));
  return true;
}

}  // namespace

XLATR_INFO_FORMAT_DESCRIPTION(BlfInfo, XLATR_FORMAT_BLF)
XLATR_INFO_OBJECT_FAMILY(BlfInfo)

// Asked anew each time: the converter may have been replaced.
double BlfInfo_GetCurrentVersion(void) {
  return xlatr::blfVersionNumber(xlatr::BlfConverter().queryApiVersion());
}

BlfInfo* BlfInfo_Construct(const TraceFileInfo* file) {
  return xlatr::capi::handle<BlfInfo>(std::make_unique<xlatr::BlfInfo>(object(file)));
}

bool BlfInfo_getValid(const BlfInfo* info) {
  return object(info).getValid();
}

XLATR_READER_MEMBERS(BlfReader, BlfInfo)

BlfReader* BlfReader_Construct(const BlfInfo* info, const char* temporaryFolder) {
  return xlatr::capi::handle<BlfReader>(
      std::make_unique<xlatr::BlfReader>(object(info), xlatr::capi::textIn(temporaryFolder)));
}

bool BlfReader_InitializePhaseTwoWaitBlfToCsv(BlfReader* reader, int32_t* exitCode) {
  return object(reader).InitializePhaseTwoWaitBlfToCsv(xlatr::capi::resultOf(exitCode));
}

void BlfReader_InitializePhaseThreePrepareCsvReader(BlfReader* reader, int32_t exitCode) {
  object(reader).InitializePhaseThreePrepareCsvReader(exitCode);
}

bool BlfReader_KillBlfToCsv(BlfReader* reader) {
  return object(reader).KillBlfToCsv();
}

double BlfReader_getCSVInfoStartTime(const BlfReader* reader) {
  return object(reader).getCSVInfoStartTime();
}

bool BlfReader_ReadNextMessage(BlfReader* reader, BlfMessage** message) {
  return readNext(object(reader), xlatr::capi::resultOf(message));
}

XLATR_MESSAGE_FAMILY(BlfMessage)
XLATR_MESSAGE_BUS(BlfMessage)

bool BlfMessage_isBlfCANType(const BlfMessage* message) {
  return object(message).isBlfCANType();
}

XLATR_TEXT_PAIR(BlfMessage, getAsCommentary, getAsCommentarySize, self.getAsCommentary())
