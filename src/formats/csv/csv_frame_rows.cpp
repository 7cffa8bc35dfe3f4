#include "formats/csv/csv_frame_rows.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <type_traits>

#include "frames/shown_bytes.hpp"
#include "messages/can_dlc.hpp"
#include "messages/error_type.hpp"
#include "messages/fd_kind.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kErrorDetail = 1U << static_cast<unsigned>(FrameAttribute::ErrorType) |
                                       1U << static_cast<unsigned>(FrameAttribute::ErrorPosition) |
                                       1U << static_cast<unsigned>(FrameAttribute::TxErrors) |
                                       1U << static_cast<unsigned>(FrameAttribute::RxErrors);

// ---- from a row to a frame

void takeRowDirection(const CsvMessage& row, Frame& frame) {
  if (row.direction != MessageDirection::None) {
    frame.set(row.direction == MessageDirection::Tx ? frame_flag::kTransmitted : frame_flag::kReceived);
  }
}

// Tables from traces of other formats have the type as the identifier, and counters as an error of two bytes.
void takeErrorRow(const CsvMessage& row, Frame& frame) {
  constexpr std::size_t kWithType = 5;
  const std::span<const std::uint8_t> bytes = row.data;
  frame.kind = FrameKind::Error;
  takeRowDirection(row, frame);
  const bool withType = bytes.size() == kWithType && row.id == kNoIdentifier;
  if (withType ? takeErrorBytes(bytes.front(), bytes.subspan(1), frame) : takeErrorBytes(row.id, bytes, frame)) {
    frame.flags = row.direction == MessageDirection::None ? std::uint16_t{0} : frame.flags;
    return;
  }
  if (row.id == 0 && takeCounterBytes(bytes, frame)) {
    frame.kind = FrameKind::Counters;
    frame.flags = 0;
    return;
  }
  frame.id = row.id == kNoIdentifier ? 0 : row.id;
  frame.data = bytes;
}

void takeStatusRow(const CsvMessage& row, Frame& frame) {
  frame.kind = FrameKind::Status;
  if (const auto state = stateOfBytes(row.data)) {
    frame.attributes.set(FrameAttribute::BusState, *state);
  } else {
    frame.data = row.data;
  }
}

void takeXlCells(const CsvMessage& row, Frame& frame) {
  const auto take = [&](FrameAttribute attribute, std::uint32_t value, std::uint8_t bit) {
    if ((row.missingXlFields & bit) == 0) {
      frame.attributes.set(attribute, value);
    }
  };
  take(FrameAttribute::Vcid, row.vcid, csv_xl_bit::kVcid);
  take(FrameAttribute::Sdt, row.sdt, csv_xl_bit::kSdt);
  take(FrameAttribute::AcceptanceField, row.af, csv_xl_bit::kAf);
  take(FrameAttribute::Rrs, row.rrs, csv_xl_bit::kRrs);
  take(FrameAttribute::Sec, row.sec, csv_xl_bit::kSec);
}

void takeFrameRow(const CsvMessage& row, Frame& frame) {
  takeRowDirection(row, frame);
  frame.id = row.id;
  frame.set(row.extended ? frame_flag::kExtended : std::uint16_t{0});
  frame.dlc = static_cast<std::uint16_t>(lengthToDlc(row.length));
  if (row.remote) {
    frame.kind = FrameKind::Remote;
    frame.set(row.lengthUnknown ? std::uint16_t{0} : frame_flag::kDlcKnown);
  } else {
    frame.data = row.data;
  }
  if (row.kind == MessageKind::XL) {
    frame.set(frame_flag::kXl);
    frame.dlc = static_cast<std::uint16_t>(lengthToXlDlc(row.length));
    if (row.wideRow) {
      takeXlCells(row, frame);
    }
  } else if (isFd(row.kind)) {
    frame.set(frame_flag::kFd);
    frame.set(hasBrs(row.kind) ? frame_flag::kBrs : std::uint16_t{0});
    frame.set(hasEsi(row.kind) ? frame_flag::kEsi : std::uint16_t{0});
  }
}

void takeCells(const CsvMessage& row, Frame& frame) {
  switch (row.kind) {
    case MessageKind::ST:
      takeStatusRow(row, frame);
      break;
    case MessageKind::EC:
      frame.kind = FrameKind::Counters;
      if (!takeCounterBytes(row.data, frame)) {
        frame.data = row.data;
      }
      break;
    case MessageKind::ER:
      takeErrorRow(row, frame);
      break;
    case MessageKind::EV:
      frame.kind = FrameKind::Event;
      takeRowDirection(row, frame);
      frame.data = row.data;
      break;
    default:
      takeFrameRow(row, frame);
  }
  frame.timeNs = row.timeNs.value_or(0);
  frame.bus = static_cast<std::uint16_t>(row.bus);
  if (row.reserved != CsvMessage::kNoReserved) {
    frame.attributes.set(FrameAttribute::Reserved, row.reserved);
  }
  if (row.hasText) {
    frame.text = row.text;
  }
}

// ---- from a frame to a row

MessageDirection directionOf(const Frame& frame) {
  if (frame.has(frame_flag::kTransmitted)) {
    return MessageDirection::Tx;
  }
  return frame.has(frame_flag::kReceived) ? MessageDirection::Rx : MessageDirection::None;
}

bool hasAll(const Frame& frame, std::uint32_t attributes) {
  return (frame.attributes.present() & attributes) == attributes;
}

void giveErrorRow(const Frame& frame, CsvMessage& row) {
  row.kind = MessageKind::ER;
  if (!hasAll(frame, kErrorDetail)) {
    row.data.assign(frame.data.begin(), frame.data.end());
    return;
  }
  const std::uint32_t type = frame.attributes.get(FrameAttribute::ErrorType).value_or(kOtherError) & kOtherError;
  row.data.push_back(static_cast<std::uint8_t>(trcIdOfErrorType(type)));
  appendErrorBytes(frame, row.data);
  // The bytes have the direction. As in TRC lines the column then shows no more than that there is one.
  row.direction = row.direction == MessageDirection::None ? MessageDirection::None : MessageDirection::Rx;
}

void giveStatusRow(const Frame& frame, CsvMessage& row) {
  row.kind = MessageKind::ST;
  row.direction = MessageDirection::Rx;
  if (const auto state = frame.attributes.get(FrameAttribute::BusState)) {
    appendStateBytes(*state, row.data);
  } else {
    row.data.assign(frame.data.begin(), frame.data.end());
  }
}

void giveCountersRow(const Frame& frame, CsvMessage& row) {
  row.kind = MessageKind::EC;
  row.direction = MessageDirection::Rx;
  row.id = 0;
  if (frame.attributes.has(FrameAttribute::RxErrors) && frame.attributes.has(FrameAttribute::TxErrors)) {
    appendCounterBytes(frame, row.data);
  } else {
    row.data.assign(frame.data.begin(), frame.data.end());
  }
}

void giveXlCells(const FrameAttributes& attributes, CsvMessage& row) {
  const auto give = [&](FrameAttribute attribute, auto& field, std::uint8_t bit) {
    const auto value = attributes.get(attribute);
    field = static_cast<std::remove_reference_t<decltype(field)>>(value.value_or(0));
    row.missingXlFields = static_cast<std::uint8_t>(row.missingXlFields | (value ? 0 : bit));
  };
  give(FrameAttribute::Vcid, row.vcid, csv_xl_bit::kVcid);
  give(FrameAttribute::Sdt, row.sdt, csv_xl_bit::kSdt);
  give(FrameAttribute::AcceptanceField, row.af, csv_xl_bit::kAf);
  give(FrameAttribute::Rrs, row.rrs, csv_xl_bit::kRrs);
  give(FrameAttribute::Sec, row.sec, csv_xl_bit::kSec);
}

MessageKind dataKindOf(const Frame& frame) {
  if (frame.has(frame_flag::kXl)) {
    return MessageKind::XL;
  }
  return frame.has(frame_flag::kFd) ? fdKind(frame.has(frame_flag::kBrs), frame.has(frame_flag::kEsi))
                                    : MessageKind::DT;
}

void giveFrameRow(const Frame& frame, CsvMessage& row) {
  row.id = frame.id;
  row.extended = frame.has(frame_flag::kExtended);
  if (frame.kind == FrameKind::Remote) {
    row.kind = MessageKind::RR;
    row.remote = true;
    row.lengthUnknown = !frame.has(frame_flag::kDlcKnown);
    row.length = dlcToLength(frame.dlc).value_or(0);
    return;
  }
  row.data.assign(frame.data.begin(), frame.data.end());
  row.kind = frame.kind == FrameKind::Lin
                 ? (frame.attributes.has(FrameAttribute::LinErrors) ? MessageKind::ER : MessageKind::DT)
                 : dataKindOf(frame);
  if (row.kind == MessageKind::XL) {
    giveXlCells(frame.attributes, row);
  }
}

void giveCells(const Frame& frame, CsvMessage& row) {
  row.valid = true;
  row.timeNs = frame.timeNs;
  row.bus = frame.bus;
  row.direction = directionOf(frame);
  switch (frame.kind) {
    case FrameKind::Status:
      giveStatusRow(frame, row);
      break;
    case FrameKind::Counters:
      giveCountersRow(frame, row);
      break;
    case FrameKind::Error:
      giveErrorRow(frame, row);
      break;
    case FrameKind::Event:
      row.kind = MessageKind::EV;
      row.data.assign(frame.data.begin(), frame.data.end());
      break;
    default:
      giveFrameRow(frame, row);
  }
  if (!row.remote) {
    row.length = static_cast<std::uint32_t>(row.data.size());
  }
  if (const auto reserved = frame.attributes.get(FrameAttribute::Reserved)) {
    row.reserved = static_cast<std::uint16_t>(*reserved);
  }
  if (frame.text) {
    row.text = *frame.text;
    row.hasText = true;
  }
}

// Whether the width of the cell tells what sort of identifier is in it.
bool hasTellingIdentifier(const Frame& frame, const CsvMessage& row) {
  const bool has = frame.kind == FrameKind::Data || frame.kind == FrameKind::Remote;
  return !has || row.extended || row.id <= std::numeric_limits<std::uint16_t>::max();
}

bool isPlain(const Frame& frame) {
  constexpr std::uint16_t kOfClassic = frame_flag::kExtended | frame_flag::kReceived | frame_flag::kTransmitted;
  constexpr std::uint32_t kHighestBase = 0x7FF;
  constexpr std::uint16_t kLongest = 8;
  return frame.kind == FrameKind::Data && (frame.flags & ~kOfClassic) == 0 && frame.attributes.empty() && !frame.text &&
         frame.data.size() == frame.dlc && frame.dlc <= kLongest &&
         (frame.has(frame_flag::kExtended) || frame.id <= kHighestBase);
}

}  // namespace

bool hasCsvType(FrameKind kind) {
  return kind != FrameKind::Overload && kind != FrameKind::LinEvent && kind != FrameKind::Comment;
}

void CsvRowMaker::giveRow(const Frame& frame, CsvMessage& row) {
  giveCells(frame, row);
  // Nearly all frames, for which the comparison would take most of the time.
  if (isPlain(frame)) {
    return;
  }
  Frame shown;
  takeCells(row, shown);
  const bool hasLineEnd = frame.text && containsAny(*frame.text, "\r\n");
  const bool isMistaken = frame.text && looksLikeFrameComment(*frame.text);
  if (!sameFrame(shown, frame) || !hasTellingIdentifier(frame, row) || hasLineEnd || isMistaken) {
    comment_.clear();
    appendFrameComment(comment_, frame);
    row.text = comment_.view();
    row.hasText = true;
  }
}

bool CsvRowTaker::takeRow(const CsvMessage& row, Frame& frame) {
  constexpr std::int64_t kFarthest = kFarthestNs;
  if (row.hasText && looksLikeFrameComment(row.text)) {
    if (comments_.read(row.text, frame) && frame.kind != FrameKind::Comment) {
      return true;
    }
    frame.reset();
  }
  takeCells(row, frame);
  return row.bus <= std::numeric_limits<std::uint16_t>::max() && frame.timeNs >= -kFarthest &&
         frame.timeNs <= kFarthest;
}

}  // namespace xlatr
