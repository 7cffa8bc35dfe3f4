// BtrInfo, BtrSessionEntry, BtrSessionReader, BtrSessionWriter, SessionMessage and the session data.
#include <exception>
#include <utility>
#include <vector>

#include "capi/families.hpp"

using xlatr::capi::borrowedHandle;
using xlatr::capi::handle;
using xlatr::capi::object;

namespace {

// What becomes of a sector's messages in the caller's hands.
void handOut(const std::vector<xlatr::SessionMessage>& sector, SessionMessage*** messages, std::uint32_t* count) {
  if (sector.empty()) {
    return;
  }
  std::vector<std::unique_ptr<xlatr::SessionMessage>> copies;
  for (const xlatr::SessionMessage& message : sector) {
    copies.push_back(std::make_unique<xlatr::SessionMessage>(message));
  }
  *messages = new SessionMessage*[copies.size()];
  *count = xlatr::capi::countOf(copies.size());
  for (std::size_t index = 0; index < copies.size(); ++index) {
    (*messages)[index] = handle<SessionMessage>(std::move(copies[index]));
  }
}

bool readNextSector(xlatr::BtrSessionReader& reader, SessionMessage*** messages, std::uint32_t* count) {
  std::vector<xlatr::SessionMessage> sector;
  try {
    const bool read = reader.readSector(sector);
    handOut(sector, messages, count);
    return read;
  } catch (const xlatr::ConverterGenericException&) {
    handOut(sector, messages, count);
    throw;
  }
}

}  // namespace

XLATR_INFO_FORMAT_FAMILY(BtrInfo, XLATR_FORMAT_BTR)

BtrInfo* BtrInfo_Construct(const char* path) {
  return handle<BtrInfo>(std::make_unique<xlatr::BtrInfo>(xlatr::TraceFileInfo(xlatr::capi::textIn(path))));
}

void BtrInfo_Destruct(BtrInfo* info) {
  xlatr::capi::destruct(info);
}

bool BtrInfo_GetValid(const BtrInfo* info) {
  return object(info).getValid();
}

double BtrInfo_GetVersion(const BtrInfo* info) {
  return object(info).getVersion();
}

std::uint32_t BtrInfo_getSessionsCount(const BtrInfo* info) {
  return xlatr::capi::countOf(object(info).getSessionsCount());
}

BtrSessionEntry* BtrInfo_GetSession(const BtrInfo* info, std::uint32_t index) {
  const xlatr::BtrInfo& trace = object(info);
  return index < trace.getSessionsCount()
             ? handle<BtrSessionEntry>(std::make_unique<xlatr::BtrSessionEntry>(trace.GetSession(index)))
             : nullptr;
}

void BtrSessionEntry_Destruct(BtrSessionEntry* entry) {
  xlatr::capi::destruct(entry);
}

XLATR_TEXT_PAIR(BtrSessionEntry, getSourcePath, getSourcePathSize, self.sourcePath)

BtrInfo* BtrSessionEntry_getTrace(const BtrSessionEntry* entry) {
  return handle<BtrInfo>(std::make_unique<xlatr::BtrInfo>(xlatr::TraceFileInfo(object(entry).sourcePath)));
}

const SessionDescriptor* BtrSessionEntry_getDescription(const BtrSessionEntry* entry) {
  return borrowedHandle<SessionDescriptor>(object(entry).description);
}

const SessionLocation* BtrSessionEntry_getStart(const BtrSessionEntry* entry) {
  return borrowedHandle<SessionLocation>(object(entry).start);
}

const SessionLocation* BtrSessionEntry_getEnd(const BtrSessionEntry* entry) {
  return borrowedHandle<SessionLocation>(object(entry).end);
}

bool BtrSessionEntry_getIsCircular(const BtrSessionEntry* entry) {
  return object(entry).isCircular();
}

std::uint32_t BtrSessionEntry_getSectorsCount(const BtrSessionEntry* entry) {
  return object(entry).sectorsCount();
}

std::uint32_t BtrSessionEntry_getIndex(const BtrSessionEntry* entry) {
  return object(entry).index;
}

std::uint32_t DataSector_getSize(void) {
  return xlatr::capi::countOf(xlatr::kBtrSectorSize);
}

std::uint32_t SessionDescriptor_getSize(void) {
  return xlatr::capi::countOf(xlatr::kWireSize<xlatr::SessionDescriptor>);
}

const SessionDateTime* SessionDescriptor_getDateAndTime(const SessionDescriptor* descriptor) {
  return borrowedHandle<SessionDateTime>(object(descriptor).dateAndTime);
}

const SessionLocation* SessionDescriptor_getStartLocation(const SessionDescriptor* descriptor) {
  return borrowedHandle<SessionLocation>(object(descriptor).startLocation);
}

std::uint32_t SessionLocation_getSector(const SessionLocation* location) {
  return object(location).sector;
}

std::uint64_t SessionLocation_getPosition(const SessionLocation* location) {
  return object(location).getPosition();
}

void SessionDateTime_getDateTimeItems(const SessionDateTime* date, std::uint8_t* year, std::uint8_t* month,
                                      std::uint8_t* day, std::uint8_t* hour, std::uint8_t* minute, std::uint8_t* second,
                                      std::uint8_t* hundredths) {
  const xlatr::SessionDateTime& items = object(date);
  const std::pair<std::uint8_t*, std::uint8_t> parts[] = {{year, items.year},
                                                          {month, items.month},
                                                          {day, items.day},
                                                          {hour, items.hour},
                                                          {minute, items.minute},
                                                          {second, items.second},
                                                          {hundredths, items.hundredths}};
  for (const auto& [out, value] : parts) {
    if (out != nullptr) {
      *out = value;
    }
  }
}

std::int32_t SessionDateTime_compareTo(const SessionDateTime* left, const SessionDateTime* right) {
  return object(left).compareTo(object(right));
}

double SessionDateTime_toDouble(const SessionDateTime* date) {
  return object(date).toDouble();
}

std::uint8_t MsgEntry_getSource(const MsgEntry* entry) {
  return object(entry).getSource();
}

BtrSessionReader* BtrSessionReader_Construct(const BtrSessionEntry* entry, bool activate) {
  return handle<BtrSessionReader>(std::make_unique<xlatr::BtrSessionReader>(object(entry), activate));
}

void BtrSessionReader_Destruct(BtrSessionReader* reader) {
  xlatr::capi::destruct(reader);
}

bool BtrSessionReader_setActive(BtrSessionReader* reader, bool active) {
  return object(reader).setActive(active);
}

bool BtrSessionReader_ReadNextSector(BtrSessionReader* reader, SessionMessage*** messages, std::uint32_t* count,
                                     std::uint32_t* structSize) {
  if (messages == nullptr || count == nullptr) {
    xlatr::throwProcessingFailure("Object cannot be null");
  }
  *messages = nullptr;
  *count = 0;
  if (structSize != nullptr) {
    *structSize = xlatr::capi::countOf(sizeof(xlatr::SessionMessage));
  }
  return readNextSector(object(reader), messages, count);
}

void BtrSessionReader_DeleteSectors(SessionMessage** messages) {
  delete[] messages;
}

double BtrSessionReader_getPercentDone(const BtrSessionReader* reader) {
  return object(reader).getPercentDone();
}

void SessionMessage_Destruct(SessionMessage* message) {
  xlatr::capi::destruct(message);
}

const MsgEntry* SessionMessage_getMessage(const SessionMessage* message) {
  return borrowedHandle<MsgEntry>(object(message).entry);
}

XLATR_WRITER_FAMILY(BtrSessionWriter)

BtrSessionWriter* BtrSessionWriter_Construct(const char* targetPath, std::int32_t ownerBus, double version) {
  return handle<BtrSessionWriter>(
      std::make_unique<xlatr::BtrSessionWriter>(xlatr::capi::textIn(targetPath), ownerBus, version));
}
