// A whole session file: every session read to its end, twice, and written in another format, through the exported
// functions. The lowest bits of the first byte choose the target, the rest of the input is the file.
#include <cstddef>
#include <cstdint>
#include <ios>
#include <span>
#include <string>
#include <vector>

#include "scratch_folder.hpp"
#include "support/object_families.hpp"
#include "target.hpp"
#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace {

using fuzz::require;

using xlatr::test::AscWriterType;
using xlatr::test::CsvWriterType;
using xlatr::test::Owned;
using xlatr::test::TrcWriterType;

using Info = Owned<xlatr::test::BtrInfoType>;
using Entry = Owned<xlatr::test::BtrSessionEntryType>;
using Reader = Owned<xlatr::test::BtrSessionReaderType>;
using Message = Owned<xlatr::test::SessionMessageType>;

struct Sector {
  bool read = false;
  bool failed = false;
  std::vector<Message> messages;
};

Sector nextSector(BtrSessionReader* reader) {
  constexpr std::uint32_t kMostMessages = 25;
  SessionMessage** messages = nullptr;
  std::uint32_t count = 0;
  std::uint32_t size = 0;
  Sector sector;
  try {
    sector.read = BtrSessionReader_ReadNextSector(reader, &messages, &count, &size);
  } catch (const xlatr::ConverterGenericException&) {
    sector.failed = true;
  }
  require(count <= kMostMessages);
  require((count == 0) == (messages == nullptr));
  require(count == 0 || sector.read || sector.failed);
  for (std::uint32_t index = 0; index < count; ++index) {
    sector.messages.emplace_back(messages[index]);
    require(MsgEntry_getSource(SessionMessage_getMessage(messages[index])) <= 4);
  }
  BtrSessionReader_DeleteSectors(messages);
  return sector;
}

template <typename Writer>
void convertSession(const BtrInfo* info, const BtrSessionEntry* entry, const std::string& target) {
  const Reader reader(BtrSessionReader_Construct(entry, true));
  const Owned<Writer> writer(Writer::construct(target.c_str(), true, xlatr::test::kFileKindOf<Writer>.version));
  Writer::setActive(writer.get(), true);
  const SessionDateTime* const start = SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(entry));
  Writer::writeHeader2(writer.get(), reinterpret_cast<const ITraceInfo*>(info), SessionDateTime_toDouble(start));
  std::vector<std::size_t> counts;
  for (Sector sector = nextSector(reader.get()); sector.read; sector = nextSector(reader.get())) {
    for (const Message& message : sector.messages) {
      Writer::writeMessage(writer.get(), reinterpret_cast<const IMessage*>(message.get()));
    }
    counts.push_back(sector.messages.size());
    require(counts.size() <= BtrSessionEntry_getSectorsCount(entry));
  }
  require(BtrSessionReader_getPercentDone(reader.get()) <= 100.0);
  require(BtrSessionReader_setActive(reader.get(), true));
  for (const std::size_t count : counts) {
    require(nextSector(reader.get()).messages.size() == count);
  }
}

void checkEntry(const BtrInfo* info, const BtrSessionEntry* entry, std::uint32_t index) {
  require(BtrSessionEntry_getIndex(entry) == index + 1);
  const std::uint32_t start = SessionLocation_getSector(BtrSessionEntry_getStart(entry));
  const std::uint32_t end = SessionLocation_getSector(BtrSessionEntry_getEnd(entry));
  const std::uint32_t first =
      SessionLocation_getSector(SessionDescriptor_getStartLocation(BtrSessionEntry_getDescription(entry)));
  require(BtrSessionEntry_getIsCircular(entry) == (start != first));
  require(start == first || (start > first && start <= end));
  require(BtrInfo_getSessionsCount(info) > index);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  const std::span<const std::uint8_t> input(data, size);
  folder.write("source.btr", input.subspan(1));
  const Info info(BtrInfo_Construct(folder.path("source.btr").c_str()));
  require(!BtrInfo_GetValid(info.get()) || BtrInfo_getSessionsCount(info.get()) > 0);
  for (std::uint32_t index = 0; index < BtrInfo_getSessionsCount(info.get()); ++index) {
    const Entry entry(BtrInfo_GetSession(info.get(), index));
    checkEntry(info.get(), entry.get(), index);
    const std::string target = folder.path("target");
    switch (input[0] % 3) {
      case 0:
        convertSession<TrcWriterType>(info.get(), entry.get(), target);
        break;
      case 1:
        convertSession<AscWriterType>(info.get(), entry.get(), target);
        break;
      default:
        convertSession<CsvWriterType>(info.get(), entry.get(), target);
        break;
    }
  }
  return 0;
}
