#include "blf2csv/object_kinds.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "formats/blf/blf_log_bodies.hpp"

namespace blf2csv {

struct ObjectKind {
  std::uint32_t type;
  Cells (*read)(const ObjectKind& kind, const Object& object, Remarks& remarks);
  std::string_view comment = {};  // what objects are that a row has no cells for; it reaches the user
};

namespace {

using xlatr::blf_log::BusEvent;
using xlatr::blf_log::CanErrorFrame;
using xlatr::blf_log::CanFdErrorFrame64;
using xlatr::blf_log::CanFdFrame;
using xlatr::blf_log::CanFdFrame64;
using xlatr::blf_log::CanFrame;
using xlatr::blf_log::DataBytes;
using xlatr::blf_log::LinFrame;
using xlatr::blf_log::LinHeader;
using xlatr::blf_log::TimedBusEvent;
using xlatr::blf_log::TimedLinFrame;
using xlatr::blf_log::TimedLinHeader;

constexpr std::string_view kCutShort = "cut short";

// In place of an identifier that the recorder did not get to see.
constexpr std::uint32_t kNoIdentifier = 0xFFFFFFFF;

constexpr std::size_t kMostClassic = 8;
constexpr std::size_t kMostFd = 64;

constexpr DataBytes kNoData{};

// The length that a DLC of a classic frame stands for: one above 8 means eight bytes. The upper half of its byte is not
// part of it.
constexpr std::size_t classicLength(std::uint8_t dlc) {
  return std::min<std::size_t>(dlc & 0x0F, kMostClassic);
}

// What a frame says of its data.
struct StatedData {
  std::size_t length;
  std::size_t most;  // that its kind of frame can have
  // A remote frame asks for data and has none; what stands in their place is left over from other frames.
  bool isRemote = false;
};

StatedData dataOf(const CanFrame& frame) {
  return {classicLength(frame.dlc), kMostClassic, (frame.flags & 0x80U) != 0};
}

// CAN and CAN FD frames have one type, and remote frames have it too.
StatedData dataOf(std::uint8_t length, std::uint8_t dlc, bool isFd, bool isRemote) {
  return {isRemote ? classicLength(dlc) : length, isFd ? kMostFd : kMostClassic, isRemote};
}
StatedData dataOf(const CanFdFrame& frame) {
  return dataOf(frame.length, frame.dlc, (frame.canFdFlags & 0x01U) != 0, (frame.flags & 0x80U) != 0);
}
StatedData dataOf(const CanFdFrame64& frame) {
  return dataOf(frame.length, frame.dlc, (frame.flags & 0x1000U) != 0, (frame.flags & 0x10U) != 0);
}

StatedData dataOf(const CanErrorFrame& frame) {
  return {classicLength(frame.dlc), kMostClassic};
}
StatedData dataOf(const CanFdErrorFrame64& frame) {
  return {frame.length, kMostFd};
}
StatedData dataOf(const LinFrame& frame) {
  return {frame.length, kMostClassic};
}
StatedData dataOf(const TimedLinFrame& frame) {
  return {frame.length, kMostClassic};
}

// Where the data of a frame begin in its body.
template <class Body>
constexpr std::size_t dataOffset() {
  if constexpr (requires(Body body) { body.data; }) {
    return xlatr::layoutOffset<&Body::data>();
  } else {
    return xlatr::kLayoutSize<Body>;
  }
}

template <class Body>
std::span<const std::uint8_t> readData(const Body& body, const Object& object, Remarks& remarks) {
  const StatedData stated = dataOf(body);
  if (stated.isRemote) {
    return std::span(kNoData).first(stated.length);
  }
  const auto there = object.body.subspan(dataOffset<Body>());
  const auto data = there.first(std::min({stated.length, stated.most, there.size()}));
  if (data.size() < stated.length) {
    remarks.note(Remark::CutData, object.offset);
  }
  return data;
}

// The cells by the fields that the body has.
template <class Body>
void fillCells(const Body& body, Cells& cells) {
  if constexpr (requires { body.flags; }) {
    cells.flags = body.flags;
  }
  if constexpr (requires { body.flagsExt; }) {
    cells.flagsExt = body.flagsExt;
  }
  if constexpr (requires { body.ecc; }) {
    cells.ecc = body.ecc;
  }
  if constexpr (requires { body.canFdFlags; }) {
    cells.canFdFlags = body.canFdFlags;
  }
  if constexpr (requires { body.dir; }) {
    cells.dir = body.dir;
  }
  if constexpr (requires { body.crc; }) {
    cells.crc = body.crc;
  }
  if constexpr (requires { body.checksumModel; }) {
    cells.checksumModel = body.checksumModel;
  }
}

template <class Body>
Cells readAs(const ObjectKind& kind, const Object& object, Remarks& remarks) {
  Body body;
  xlatr::readFieldsLeniently(object.body, body);
  Cells cells;
  cells.channel = body.channel;
  cells.comment = kind.comment;
  if constexpr (requires { body.id; }) {
    cells.id = body.id == kNoIdentifier ? 0 : body.id;
  }
  if (object.body.size() < xlatr::kLayoutSize<Body>) {
    cells.comment = kCutShort;
    remarks.note(Remark::CutObject, object.offset);
  }
  if (cells.comment.empty()) {
    fillCells(body, cells);
    if constexpr (requires { dataOf(body); }) {
      cells.data = readData(body, object, remarks);
    }
  }
  return cells;
}

// In the order of the types.
constexpr auto kKinds = std::to_array<ObjectKind>({
    {1, readAs<CanFrame>},
    {2, readAs<BusEvent>, "error frame"},
    {3, readAs<BusEvent>, "overload frame"},
    {4, readAs<BusEvent>, "bus statistics"},
    {11, readAs<LinFrame>},
    {12, readAs<LinFrame>},  // with a wrong checksum
    {15, readAs<LinHeader>},
    {20, readAs<BusEvent>},  // a LIN bus falls asleep or wakes up
    {21, readAs<BusEvent>},  // LIN wake-up
    {31, readAs<BusEvent>, "error counters"},
    {44, readAs<BusEvent>, "synchronization pulse"},
    {57, readAs<TimedLinFrame>},
    {58, readAs<TimedLinHeader>},
    {60, readAs<TimedLinFrame>},  // with a wrong checksum
    {62, readAs<TimedBusEvent>},  // LIN wake-up
    {73, readAs<CanErrorFrame>},
    {74, readAs<BusEvent>, "error counters"},
    {86, readAs<CanFrame>},  // with its duration
    {100, readAs<CanFdFrame>},
    {101, readAs<CanFdFrame64>},
    {104, readAs<CanFdErrorFrame64>},
    {129, readAs<BusEvent>, "bus settings changed"},
});
static_assert(std::is_sorted(kKinds.begin(), kKinds.end(),
                             [](const auto& left, const auto& right) { return left.type < right.type; }));

// Types are small numbers, and each object asks for its kind.
constexpr std::size_t kTypeLimit = kKinds.back().type + 1;
constexpr auto kPlacesByType = [] {
  std::array<std::uint8_t, kTypeLimit> places{};
  places.fill(kKinds.size());
  for (std::size_t index = 0; index < kKinds.size(); ++index) {
    places[kKinds[index].type] = static_cast<std::uint8_t>(index);
  }
  return places;
}();

}  // namespace

const ObjectKind* findObjectKind(std::uint32_t type) {
  const std::size_t place = type < kTypeLimit ? kPlacesByType[type] : kKinds.size();
  return place < kKinds.size() ? &kKinds[place] : nullptr;
}

Cells readCells(const ObjectKind& kind, const Object& object, Remarks& remarks) {
  return kind.read(kind, object, remarks);
}

}  // namespace blf2csv
