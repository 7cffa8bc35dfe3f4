#include "blf2csv/object_kinds.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace blf2csv {

// The places of all numbers of a type that a row has a column for.
struct ObjectKind {
  struct Payload {
    Place length = {};
    bool lengthIsDlc = false;  // of a classic frame, in the lower four bits: a DLC above 8 means eight bytes
    std::uint8_t offset = 0;   // of the first data byte
    std::uint8_t most = 0;     // bytes; 0 for objects without payload
    bool isArray = false;      // all `most` bytes are there, whatever the length
  };
  // What tells classic frames, remote frames and CAN FD frames apart, where one type has several of them.
  struct Forms {
    std::uint32_t remoteFlag = 0;  // in `flags`
    Place dlc = {};                // what a remote frame asks for
    Place fd = {};                 // a frame is classic where none of these bits is set
    std::uint32_t fdFlag = 0;
  };

  std::uint32_t type;
  Place channel = {};
  Place id = {};
  Place flags = {};
  Place flagsExt = {};
  Place ecc = {};
  Place canFdFlags = {};
  Place dir = {};
  Place crc = {};
  Place checksumModel = {};
  Payload payload = {};
  Forms forms = {};
  std::string_view comment = {};  // what objects are that a row has no cells for
};

namespace {

constexpr Place u8(std::uint8_t offset) {
  return {offset, 1};
}
constexpr Place u16(std::uint8_t offset) {
  return {offset, 2};
}
constexpr Place u32(std::uint8_t offset) {
  return {offset, 4};
}

constexpr std::uint8_t kMostClassic = 8;
constexpr std::uint8_t kMostFd = 64;

// Classic CAN frames, without and with their duration.
constexpr ObjectKind classicFrame(std::uint32_t type) {
  return {.type = type,
          .channel = u16(0),
          .id = u32(4),
          .flags = u8(2),
          .payload = {.length = u8(3), .lengthIsDlc = true, .offset = 8, .most = kMostClassic, .isArray = true},
          .forms = {.remoteFlag = 0x80, .dlc = u8(3)}};
}

// What happened on a CAN bus and is no frame that a row has cells for. It reaches the user as a comment.
constexpr ObjectKind canEvent(std::uint32_t type, std::string_view comment) {
  return {.type = type, .channel = u16(0), .comment = comment};
}

// LIN frames of the first layout.
constexpr ObjectKind linFrame(std::uint32_t type) {
  return {.type = type,
          .channel = u16(0),
          .id = u8(2),
          .dir = u8(18),
          .crc = u16(16),
          .payload = {.length = u8(3), .offset = 4, .most = kMostClassic, .isArray = true}};
}

// LIN frames of the second layout, which has the times of their parts.
constexpr ObjectKind timedLinFrame(std::uint32_t type) {
  return {.type = type,
          .channel = u16(12),
          .id = u8(37),
          .dir = u8(122),
          .crc = u16(120),
          .checksumModel = u8(39),
          .payload = {.length = u8(38), .offset = 112, .most = kMostClassic, .isArray = true}};
}

// In the order of the types.
constexpr auto kKinds = std::to_array<ObjectKind>({
    classicFrame(1),
    canEvent(2, "error frame"),
    canEvent(3, "overload frame"),
    canEvent(4, "bus statistics"),
    linFrame(11),                                  // LIN frame
    linFrame(12),                                  // LIN frame with a wrong checksum
    {.type = 15, .channel = u16(0), .id = u8(2)},  // LIN header without response
    {.type = 20, .channel = u16(0)},               // LIN bus falls asleep or wakes up
    {.type = 21, .channel = u16(0)},               // LIN wake-up
    canEvent(31, "error counters"),
    canEvent(44, "synchronization pulse"),
    timedLinFrame(57),                                                        // LIN frame
    {.type = 58, .channel = u16(12), .id = u8(37), .checksumModel = u8(39)},  // LIN header without response
    timedLinFrame(60),                                                        // LIN frame with a wrong checksum
    {.type = 62, .channel = u16(12)},                                         // LIN wake-up
    {.type = 73,                                                              // CAN error frame with detail
     .channel = u16(0),
     .id = u32(16),
     .flags = u32(4),
     .flagsExt = u16(20),
     .ecc = u8(8),
     .payload = {.length = u8(10), .lengthIsDlc = true, .offset = 24, .most = kMostClassic}},
    canEvent(74, "error counters"),
    classicFrame(86),
    {.type = 100,  // CAN or CAN FD frame with an array of data
     .channel = u16(0),
     .id = u32(4),
     .flags = u8(2),
     .canFdFlags = u8(13),
     .payload = {.length = u8(14), .offset = 20, .most = kMostFd},
     .forms = {.remoteFlag = 0x80, .dlc = u8(3), .fd = u8(13), .fdFlag = 0x01}},
    {.type = 101,  // CAN or CAN FD frame with as much data as there is
     .channel = u8(0),
     .id = u32(4),
     .flags = u32(12),
     .dir = u8(34),
     .payload = {.length = u8(2), .offset = 40, .most = kMostFd},
     .forms = {.remoteFlag = 0x10, .dlc = u8(1), .fd = u32(12), .fdFlag = 0x1000}},
    {.type = 104,  // CAN FD error frame
     .channel = u8(0),
     .id = u32(12),
     .flags = u16(4),
     .flagsExt = u16(6),
     .ecc = u8(3),
     .payload = {.length = u8(2), .offset = 44, .most = kMostFd}},
    canEvent(129, "bus settings changed"),
});
static_assert(std::is_sorted(kKinds.begin(), kKinds.end(),
                             [](const auto& left, const auto& right) { return left.type < right.type; }));

constexpr std::size_t leastBody(const ObjectKind& kind) {
  const ObjectKind::Payload& payload = kind.payload;
  return std::max({kind.channel.end(), kind.id.end(), kind.flags.end(), kind.flagsExt.end(), kind.ecc.end(),
                   kind.canFdFlags.end(), kind.dir.end(), kind.crc.end(), kind.checksumModel.end(),
                   payload.length.end(), kind.forms.dlc.end(),
                   std::size_t{payload.offset} + (payload.isArray ? payload.most : 0)});
}

// Types are small numbers, and each object asks for its kind.
constexpr std::size_t kTypeLimit = kKinds.back().type + 1;
struct KindOfType {
  std::uint8_t place = kKinds.size();
  std::uint8_t leastBody = 0;
};
constexpr auto kKindsByType = [] {
  std::array<KindOfType, kTypeLimit> kinds{};
  for (std::size_t index = 0; index < kKinds.size(); ++index) {
    kinds[kKinds[index].type] = {static_cast<std::uint8_t>(index), static_cast<std::uint8_t>(leastBody(kKinds[index]))};
  }
  return kinds;
}();
static_assert(leastBody(kKinds[11]) <= UINT8_MAX);

constexpr std::string_view kCutShort = "cut short";

// In place of an identifier that the recorder did not get to see.
constexpr std::uint32_t kNoIdentifier = 0xFFFFFFFF;

constexpr std::array<std::uint8_t, kMostClassic> kNoData{};

// The length that a DLC stands for; the upper half of its byte is not part of it.
constexpr std::size_t classicLength(std::size_t dlc) {
  return std::min<std::size_t>(dlc & 0x0F, kMostClassic);
}

std::span<const std::uint8_t> payloadOf(const ObjectKind& kind, const Object& object, std::uint32_t flags,
                                        Remarks& remarks) {
  const ObjectKind::Forms& forms = kind.forms;
  const ObjectKind::Payload& payload = kind.payload;
  if ((flags & forms.remoteFlag) != 0) {
    // A remote frame asks for data and has none; what stands in their place is left over from other frames.
    return std::span(kNoData).first(classicLength(forms.dlc.of(object.body)));
  }
  const bool isClassic = forms.fdFlag != 0 && (forms.fd.of(object.body) & forms.fdFlag) == 0;
  const std::size_t field = payload.length.of(object.body);
  const std::size_t stated = payload.lengthIsDlc ? classicLength(field) : field;
  const std::size_t most = isClassic ? kMostClassic : payload.most;
  const auto data = object.body.bytes(payload.offset, std::min(stated, most));
  if (data.size() < stated) {
    remarks.note(Remark::CutData, object.offset);
  }
  return data;
}

}  // namespace

const ObjectKind* findObjectKind(std::uint32_t type) {
  const std::size_t place = type < kTypeLimit ? kKindsByType[type].place : kKinds.size();
  return place < kKinds.size() ? &kKinds[place] : nullptr;
}

Cells readCells(const ObjectKind& kind, const Object& object, Remarks& remarks) {
  const Fields& body = object.body;
  Cells cells;
  cells.id = kind.id.of(body);
  cells.channel = static_cast<std::uint16_t>(kind.channel.of(body));
  cells.comment = kind.comment;
  if (cells.id == kNoIdentifier) {
    cells.id = 0;
  }
  if (body.size() < kKindsByType[kind.type].leastBody) {
    cells.comment = kCutShort;
    remarks.note(Remark::CutObject, object.offset);
  }
  if (!cells.comment.empty()) {
    return cells;
  }
  cells.flags = kind.flags.of(body);
  cells.flagsExt = static_cast<std::uint16_t>(kind.flagsExt.of(body));
  cells.ecc = static_cast<std::uint8_t>(kind.ecc.of(body));
  cells.canFdFlags = static_cast<std::uint8_t>(kind.canFdFlags.of(body));
  cells.dir = static_cast<std::uint8_t>(kind.dir.of(body));
  cells.crc = static_cast<std::uint16_t>(kind.crc.of(body));
  cells.checksumModel = static_cast<std::uint8_t>(kind.checksumModel.of(body));
  if (kind.payload.most > 0) {
    cells.data = payloadOf(kind, object, cells.flags, remarks);
  }
  return cells;
}

}  // namespace blf2csv
