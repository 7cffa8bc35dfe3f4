// What happened on a bus at a time, in SI units and the field's terms: the same for every format.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace xlatr {

enum class FrameKind : std::uint8_t {
  Data,      // a CAN, CAN FD or CAN XL data frame
  Remote,    // a remote frame, which has a DLC and no data
  Error,     // an error frame
  Overload,  // an overload frame
  Status,    // the state of a bus or of its controller has changed
  Counters,  // the error counters of a controller
  Lin,       // a LIN frame
  LinEvent,  // wake-up, sleep, checksum or synchronisation errors and the like; the text says which
  Event,     // a user's text, and what a producer logs beside the traffic
  Comment,   // a line or record that is no frame
};
inline constexpr std::size_t kFrameKindCount = 10;

// As shown to users: "data", "lin_event".
[[nodiscard]] std::string_view frameKindName(FrameKind kind);

[[nodiscard]] std::optional<FrameKind> frameKindOfName(std::string_view name);

// 285 years: every rounding of such a time fits into 64 bits. No frame is farther from the start of its trace.
inline constexpr std::int64_t kFarthestNs = 9'000'000'000'000'000'000;

// The sum; times that go beyond kFarthestNs stay there.
[[nodiscard]] constexpr std::int64_t shiftedTime(std::int64_t timeNs, std::int64_t byNs) {
  // Halves can't overflow.
  const std::int64_t half = timeNs / 2 + byNs / 2;
  if (half >= kFarthestNs / 2 || half <= -(kFarthestNs / 2)) {
    return half > 0 ? kFarthestNs : -kFarthestNs;
  }
  return timeNs + byNs;
}

// Properties of a frame. A frame without kReceived and kTransmitted has no known direction.
namespace frame_flag {
inline constexpr std::uint16_t kExtended = 0x0001;  // a 29-bit identifier (IDE)
inline constexpr std::uint16_t kReceived = 0x0002;
inline constexpr std::uint16_t kTransmitted = 0x0004;
inline constexpr std::uint16_t kFd = 0x0008;                // CAN FD (FDF, also called EDL)
inline constexpr std::uint16_t kBrs = 0x0010;               // bit rate switch
inline constexpr std::uint16_t kEsi = 0x0020;               // error state indicator: the sender is error passive
inline constexpr std::uint16_t kXl = 0x0040;                // CAN XL
inline constexpr std::uint16_t kDlcKnown = 0x0080;          // of a remote frame: the source states its DLC
inline constexpr std::uint16_t kEnhancedChecksum = 0x0100;  // of a LIN frame: the identifier is part of the checksum
}  // namespace frame_flag

// As shown to users: "extended", "brs".
struct FrameFlagName {
  std::uint16_t flag;
  std::string_view name;
};
[[nodiscard]] std::span<const FrameFlagName> frameFlagNames();
[[nodiscard]] std::optional<std::uint16_t> frameFlagOfName(std::string_view name);

// What few formats have. Each is a number that a frame has or lacks.
enum class FrameAttribute : std::uint8_t {
  ErrorType,        // 0 bit, 1 form, 2 stuff, 3 any other (messages/error_type.hpp)
  ErrorPosition,    // the bit of the frame at which the error was seen, as the controller counts
  TxErrors,         // transmit error counter
  RxErrors,         // receive error counter
  BusState,         // an OR of WarningErrors (messages/enumerations.hpp)
  BusLoad,          // in hundredths of a percent
  Vcid,             // CAN XL: virtual CAN network id
  Sdt,              // CAN XL: SDU type
  AcceptanceField,  // CAN XL
  Rrs,              // CAN XL: remote request substitution
  Sec,              // CAN XL: simple extended content
  Checksum,         // of a LIN frame
  ChecksumModel,    // a ChecksumType (messages/enumerations.hpp)
  LinErrors,        // an OR of ErrorCode (messages/enumerations.hpp)
  LinDirection,     // a DirectionType (messages/enumerations.hpp), which knows more than the flags
  Reserved,         // TRC's column for future use
  RecordType,       // of a logger's record that has no other home; its bytes are the frame's data
};
inline constexpr std::size_t kFrameAttributeCount = 17;

// As shown to users, in columns and JSON: "error_type", "tx_errors".
[[nodiscard]] std::string_view frameAttributeName(FrameAttribute attribute);
[[nodiscard]] std::optional<FrameAttribute> frameAttributeOfName(std::string_view name);

// The attributes of a frame.
class FrameAttributes {
 public:
  [[nodiscard]] bool empty() const { return present_ == 0; }
  [[nodiscard]] bool has(FrameAttribute attribute) const { return (present_ >> index(attribute) & 1U) != 0; }
  [[nodiscard]] std::optional<std::uint32_t> get(FrameAttribute attribute) const {
    return has(attribute) ? std::optional(values_[index(attribute)]) : std::nullopt;
  }
  void set(FrameAttribute attribute, std::uint32_t value) {
    present_ |= 1U << index(attribute);
    values_[index(attribute)] = value;
  }
  void clear() { present_ = 0; }

  // One bit an attribute.
  [[nodiscard]] std::uint32_t present() const { return present_; }
  // Without those that are not in the mask of bits.
  [[nodiscard]] FrameAttributes only(std::uint32_t bits) const;

  // Whether both have the same attributes with the same values.
  bool operator==(const FrameAttributes& other) const;

 private:
  [[nodiscard]] static constexpr std::size_t index(FrameAttribute attribute) {
    return static_cast<std::size_t>(attribute);
  }

  std::uint32_t present_ = 0;
  std::array<std::uint32_t, kFrameAttributeCount> values_{};  // anything where the bit is not set
};

// One frame. Data and text belong to whoever hands the frame out, who says how long they stay.
struct Frame {
  std::int64_t timeNs = 0;  // since the start of the trace; may be negative
  FrameKind kind = FrameKind::Data;
  std::uint16_t bus = 0;  // counted from 1; 0 when the source names none
  std::uint16_t flags = 0;
  std::uint16_t dlc = 0;                      // the code, as the standard defines it for the kind of frame
  std::uint32_t id = 0;                       // 11, 29 or, for LIN, 6 bits
  std::span<const std::uint8_t> data = {};    // the payload
  std::optional<std::string_view> text = {};  // UTF-8: a status word, an error's text, an event, a comment
  FrameAttributes attributes = {};
  std::uint64_t place = 0;  // in the source, counted from 1: the line of a text, the record of a binary trace

  // Makes it like a new one, in less time than a new one takes.
  void reset() {
    timeNs = 0;
    kind = FrameKind::Data;
    bus = 0;
    flags = 0;
    dlc = 0;
    id = 0;
    data = {};
    text.reset();
    attributes.clear();
    place = 0;
  }

  [[nodiscard]] bool has(std::uint16_t mask) const { return (flags & mask) != 0; }
  void set(std::uint16_t mask) { flags = static_cast<std::uint16_t>(flags | mask); }
  void unset(std::uint16_t mask) { flags = static_cast<std::uint16_t>(flags & ~mask); }
};

// Whether the frames are the same in every field but their places.
[[nodiscard]] bool sameFrame(const Frame& one, const Frame& other);

}  // namespace xlatr
