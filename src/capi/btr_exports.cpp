// BtrInfo, BtrSessionEntry, BtrSessionReader, BtrSessionWriter, SessionMessage and the session data.
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "capi/families.hpp"

using xlatr::capi::borrowedHandle;
using xlatr::capi::handle;
using xlatr::capi::object;

namespace {

// An entry of its own for the caller; null if there is no such session.
BtrSessionEntry* sessionAt(const xlatr::BtrInfo& info, std::uint32_t index) {
  return index < info.getSessionsCount()
             ? handle<BtrSessionEntry>(std::make_unique<xlatr::BtrSessionEntry>(info.GetSession(index)))
             : nullptr;
}

// The fields of a date in the order of `places`, of which a null one gets nothing.
void copyFields(const xlatr::SessionDateTime& date, const std::array<std::uint8_t*, 7>& places) {
  const std::array<std::uint8_t, 7> fields{date.year,   date.month,  date.day,       date.hour,
                                           date.minute, date.second, date.hundredths};
  for (std::size_t index = 0; index < places.size(); ++index) {
    if (places.at(index) != nullptr) {
      *places.at(index) = fields.at(index);
    }
  }
}

// Gives the caller copies of a sector's messages.
void handOut(const std::vector<xlatr::SessionMessage>& sector, SessionMessage**& messages, std::uint32_t& count) {
  if (sector.empty()) {
    return;
  }
  std::vector<std::unique_ptr<xlatr::SessionMessage>> copies;
  copies.reserve(sector.size());
  for (const xlatr::SessionMessage& message : sector) {
    copies.push_back(std::make_unique<xlatr::SessionMessage>(message));
  }
  messages = new SessionMessage*[copies.size()];
  count = xlatr::capi::countOf(copies.size());
  for (std::size_t index = 0; index < copies.size(); ++index) {
    messages[index] = handle<SessionMessage>(std::move(copies[index]));
  }
}

// The messages before a frame that makes no sense are the caller's, so this is the one place that catches a failure and
// raises it again.
bool readNextSector(BtrSessionReader* reader, SessionMessage**& messages, std::uint32_t& count,
                    std::uint32_t* structSize) {
  messages = nullptr;
  count = 0;
  if (structSize != nullptr) {
    *structSize = xlatr::capi::countOf(sizeof(xlatr::SessionMessage));
  }
  xlatr::BtrSessionReader& session = object(reader);
  std::vector<xlatr::SessionMessage> sector;
  try {
    const bool read = session.readSector(sector);
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
  return sessionAt(object(info), index);
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
  return xlatr::capi::countOf(xlatr::kLayoutSize<xlatr::SessionDescriptor>);
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
  copyFields(object(date), {year, month, day, hour, minute, second, hundredths});
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
  return readNextSector(reader, xlatr::capi::resultOf(messages), xlatr::capi::resultOf(count), structSize);
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
