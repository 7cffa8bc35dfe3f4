// The bodies of frames, as far as anyone asks for their fields. A field has the name of its column in the converter's
// table, if it has one.
//
// The data of frames whose body has no `data` here follow the fields, as many as the frame has. Channels are 1-based.
#pragma once

#include <array>
#include <cstdint>

#include "util/layout.hpp"

namespace xlatr::blf_log {

// The data of a frame that always has room for eight.
using DataBytes = std::array<std::uint8_t, 8>;

// What happened on a bus and has no cells of its own.
struct BusEvent {
  std::uint16_t channel = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &BusEvent::channel},
    };
  }
};

// The same, with the times of its parts in front.
struct TimedBusEvent {
  std::uint16_t channel = 0;

  static consteval auto fields() {
    return FieldList{
        Reserved{0, 12},
        Field{12, "channel", &TimedBusEvent::channel},
    };
  }
};

// A classic CAN frame. Newer ones go on with their duration.
struct CanFrame {
  std::uint16_t channel = 0;
  std::uint8_t flags = 0;
  std::uint8_t dlc = 0;
  std::uint32_t id = 0;
  DataBytes data{};

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &CanFrame::channel}, Field{2, "flags", &CanFrame::flags}, Field{3, "dlc", &CanFrame::dlc},
        Field{4, "id", &CanFrame::id},           Field{8, "data", &CanFrame::data},
    };
  }
};

// A CAN or CAN FD frame with an array of data.
struct CanFdFrame {
  std::uint16_t channel = 0;
  std::uint8_t flags = 0;
  std::uint8_t dlc = 0;
  std::uint32_t id = 0;
  std::uint8_t canFdFlags = 0;
  std::uint8_t length = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &CanFdFrame::channel},
        Field{2, "flags", &CanFdFrame::flags},
        Field{3, "dlc", &CanFdFrame::dlc},
        Field{4, "id", &CanFdFrame::id},
        Reserved{8, 5},
        Field{13, "canFdFlags", &CanFdFrame::canFdFlags},
        Field{14, "length", &CanFdFrame::length},
        Reserved{15, 5},
    };
  }
};

// A CAN or CAN FD frame with as much data as there is.
struct CanFdFrame64 {
  std::uint8_t channel = 0;
  std::uint8_t dlc = 0;
  std::uint8_t length = 0;
  std::uint32_t id = 0;
  std::uint32_t flags = 0;
  std::uint8_t dir = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &CanFdFrame64::channel}, Field{1, "dlc", &CanFdFrame64::dlc},
        Field{2, "length", &CanFdFrame64::length},   Reserved{3, 1},
        Field{4, "id", &CanFdFrame64::id},           Reserved{8, 4},
        Field{12, "flags", &CanFdFrame64::flags},    Reserved{16, 18},
        Field{34, "dir", &CanFdFrame64::dir},        Reserved{35, 5},
    };
  }
};

// A CAN error frame with detail.
struct CanErrorFrame {
  std::uint16_t channel = 0;
  std::uint32_t flags = 0;
  std::uint8_t ecc = 0;
  std::uint8_t position = 0;  // the bit, if the flags say so
  std::uint8_t dlc = 0;
  std::uint32_t id = 0;
  std::uint16_t flagsExt = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &CanErrorFrame::channel},
        Reserved{2, 2},
        Field{4, "flags", &CanErrorFrame::flags},
        Field{8, "ecc", &CanErrorFrame::ecc},
        Field{9, "position", &CanErrorFrame::position},
        Field{10, "dlc", &CanErrorFrame::dlc},
        Reserved{11, 5},
        Field{16, "id", &CanErrorFrame::id},
        Field{20, "flagsExt", &CanErrorFrame::flagsExt},
        Reserved{22, 2},
    };
  }
};

// A CAN FD error frame.
struct CanFdErrorFrame64 {
  std::uint8_t channel = 0;
  std::uint8_t length = 0;
  std::uint8_t ecc = 0;
  std::uint16_t flags = 0;
  std::uint16_t flagsExt = 0;
  std::uint16_t fdBits = 0;
  std::uint32_t id = 0;
  std::uint16_t position = 0;  // the bit, if the flags say so

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &CanFdErrorFrame64::channel},
        Reserved{1, 1},
        Field{2, "length", &CanFdErrorFrame64::length},
        Field{3, "ecc", &CanFdErrorFrame64::ecc},
        Field{4, "flags", &CanFdErrorFrame64::flags},
        Field{6, "flagsExt", &CanFdErrorFrame64::flagsExt},
        Field{8, "fdBits", &CanFdErrorFrame64::fdBits},
        Reserved{10, 2},
        Field{12, "id", &CanFdErrorFrame64::id},
        Reserved{16, 24},
        Field{40, "position", &CanFdErrorFrame64::position},
        Reserved{42, 2},
    };
  }
};

// The error counters of a controller. Newer ones go on with its state.
struct CanErrorCounters {
  std::uint16_t channel = 0;
  std::uint8_t txErrors = 0;
  std::uint8_t rxErrors = 0;
  std::uint32_t code = 0;  // of the driver

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &CanErrorCounters::channel},
        Field{2, "txErrors", &CanErrorCounters::txErrors},
        Field{3, "rxErrors", &CanErrorCounters::rxErrors},
        Field{4, "code", &CanErrorCounters::code},
    };
  }
};

// A LIN frame of the first layout.
struct LinFrame {
  std::uint16_t channel = 0;
  std::uint8_t id = 0;
  std::uint8_t length = 0;
  DataBytes data{};
  std::uint16_t crc = 0;
  std::uint8_t dir = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &LinFrame::channel},
        Field{2, "id", &LinFrame::id},
        Field{3, "length", &LinFrame::length},
        Field{4, "data", &LinFrame::data},
        Reserved{12, 4},
        Field{16, "crc", &LinFrame::crc},
        Field{18, "dir", &LinFrame::dir},
    };
  }
};

// A LIN header without response, of the first layout.
struct LinHeader {
  std::uint16_t channel = 0;
  std::uint8_t id = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "channel", &LinHeader::channel},
        Field{2, "id", &LinHeader::id},
    };
  }
};

// A LIN frame of the second layout, which has the times of its parts.
struct TimedLinFrame {
  std::uint16_t channel = 0;
  std::uint8_t id = 0;
  std::uint8_t length = 0;
  std::uint8_t checksumModel = 0;
  DataBytes data{};
  std::uint16_t crc = 0;
  std::uint8_t dir = 0;

  static consteval auto fields() {
    return FieldList{
        Reserved{0, 12},
        Field{12, "channel", &TimedLinFrame::channel},
        Reserved{14, 23},
        Field{37, "id", &TimedLinFrame::id},
        Field{38, "length", &TimedLinFrame::length},
        Field{39, "checksumModel", &TimedLinFrame::checksumModel},
        Reserved{40, 72},
        Field{112, "data", &TimedLinFrame::data},
        Field{120, "crc", &TimedLinFrame::crc},
        Field{122, "dir", &TimedLinFrame::dir},
    };
  }
};

// A LIN header without response, of the second layout.
struct TimedLinHeader {
  std::uint16_t channel = 0;
  std::uint8_t id = 0;
  std::uint8_t checksumModel = 0;

  static consteval auto fields() {
    return FieldList{
        Reserved{0, 12},  Field{12, "channel", &TimedLinHeader::channel},
        Reserved{14, 23}, Field{37, "id", &TimedLinHeader::id},
        Reserved{38, 1},  Field{39, "checksumModel", &TimedLinHeader::checksumModel},
    };
  }
};

}  // namespace xlatr::blf_log
