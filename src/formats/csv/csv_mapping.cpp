#include "formats/csv/csv_mapping.hpp"

#include <algorithm>

namespace xlatr {
namespace {

// The longest frame of all, one of CAN XL, has 2048 bytes.
constexpr std::uint32_t kMaxPayload = 2048;
constexpr std::size_t kDataRoom = 2050;

// What all messages have in common.
void takeMessage(const Message& source, CsvMessage& target) {
  target.reset();
  target.id = source.getIdentifier();
  target.valid = source.getValid();
  target.length = source.getLength();
}

// What messages of a CAN bus have in common, whatever their format.
void takeCommon(const MessageStyleCan& source, CsvMessage& target) {
  takeMessage(source, target);
  target.bus = source.bus;
  target.type = source.type;
  target.direction = source.direction;
  target.extended = source.extended;
}

void takeData(const Message& source, CsvMessage& target) {
  target.data.reserve(kDataRoom);
  target.data.assign(source.data.begin(), source.data.end());
}

// A remote frame has a length but no data; a row holds zeros for it. A length that no frame has comes from a damaged
// line and gets no memory.
void setZeros(CsvMessage& target) {
  target.data.assign(std::min(target.length, kMaxPayload), 0);
}

// A frame of a LIN bus as a row, which has no columns for what is special to LIN. Any error makes it an error frame.
void takeLinFrame(const Message& source, DirectionType direction, std::uint32_t errorFlags, CsvMessage& target) {
  takeMessage(source, target);
  target.bus = 1;
  target.type = MessageType::Rx;
  target.direction = messageDirectionOf(direction);
  target.kind = errorFlags > 0 ? MessageKind::ER : MessageKind::DT;
  takeData(source, target);
}

void takePayload(const MessageStyleCan& source, CsvMessage& target) {
  if (target.remote) {
    setZeros(target);
  } else {
    takeData(source, target);
  }
}

MessageKind kindOf(const AscMessage& source) {
  if (!source.isRemote() && source.type == MessageType::Error) {
    return MessageKind::ER;
  }
  if (!source.isRemote() && source.type == MessageType::Warng) {
    return MessageKind::ST;
  }
  return messageKindOfAscFlags(source.flags);
}

}  // namespace

void mapToCsv(const BrixMessage& source, CsvMessage& target) {
  takeCommon(source, target);
  target.time = source.timeOffset;
  target.kind = source.kind;
  target.text = source.comment;
  target.remote = source.remote;
  target.reserved = static_cast<std::uint16_t>(source.reserved);  // -1, none, is 0xFFFF
  target.wideRow = true;
  target.vcid = source.xl.vcid.value_or(target.vcid);
  target.sdt = source.xl.sdt.value_or(target.sdt);
  target.af = source.xl.acceptance.value_or(target.af);
  target.rrs = source.xl.rrs.value_or(target.rrs);
  target.sec = source.xl.sec.value_or(target.sec);
  takePayload(source, target);
}

void mapToCsv(const SessionMessage& source, CsvMessage& target) {
  constexpr std::uint32_t kErrorLength = 4;
  const MsgEntry& entry = source.entry;
  target.reset();
  target.id = source.getIdentifier();
  target.valid = source.getValid();
  target.time = source.time;
  target.bus = entry.getSource() + 1U;
  target.direction = MessageDirection::Rx;
  target.extended = entry.isExtended();
  if (entry.isError()) {
    target.length = kErrorLength;
    target.kind = MessageKind::ER;
    target.type = MessageType::Error;
  } else {
    target.length = source.getLength();
    target.remote = entry.isRemote();
    target.kind = target.remote ? MessageKind::RR : MessageKind::DT;
    target.type = MessageType::Rx;
  }
  target.data.reserve(kDataRoom);
  if (target.remote) {
    setZeros(target);
  } else {
    const auto bytes = entry.payload(target.length);
    target.data.assign(bytes.begin(), bytes.end());
  }
}

void mapToCsv(const AscMessage& source, CsvMessage& target) {
  takeCommon(source, target);
  target.time = source.time;
  target.kind = kindOf(source);
  target.remote = source.isRemote();
  takeData(source, target);
}

void mapToCsv(const KorlMessage& source, CsvMessage& target) {
  if (source.getLength() > kMaxLinLength) {
    target.reset();
    return;
  }
  takeLinFrame(source, source.direction, source.errorFlags, target);
  target.time = source.timestamp;
}

void mapToCsv(const BlfCanMessage& source, CsvMessage& target) {
  takeCommon(source, target);
  target.time = source.milliseconds();
  target.kind = source.kind();
  target.remote = source.remote;
  takeData(source, target);
}

void mapToCsv(const BlfLinMessage& source, CsvMessage& target) {
  takeLinFrame(source, source.linDirection, source.errorFlags, target);
  target.time = source.milliseconds();
}

void mapToCsv(const ZelkBinaryMessage& source, CsvMessage& target) {
  takeCommon(source, target);
  target.time = source.timestamp;
  target.bus = source.bus + 1;
  target.kind = source.kind;
  target.text = source.commentary;
  target.remote = source.remote;
  takePayload(source, target);
}

}  // namespace xlatr
