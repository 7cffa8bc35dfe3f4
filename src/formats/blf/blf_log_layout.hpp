// What stands in a BLF log around its objects: the head of the file, the headers of objects and of containers.
// docs/formats/blf.md describes the whole of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "util/layout.hpp"

namespace xlatr::blf_log {

inline constexpr std::string_view kFileSignature = "LOGG";

enum class DateField : std::uint8_t { Year, Month, Weekday, Day, Hour, Minute, Second, Millisecond };

// The head of the file.
struct FileHead {
  std::array<char, 4> signature{};
  std::uint32_t size = 0;                    // the first object starts there
  std::uint32_t apiNumber = 0;               // two decimal digits a part: 4070100 is 4.7.1.0
  std::uint32_t objectCount = 0;             // without containers
  std::array<std::uint16_t, 8> startTime{};  // by DateField

  static consteval auto fields() {
    return FieldList{
        Field{0, "signature", &FileHead::signature},      Field{4, "size", &FileHead::size},
        Field{8, "apiNumber", &FileHead::apiNumber},      Reserved{12, 20},
        Field{32, "objectCount", &FileHead::objectCount}, Reserved{36, 4},
        Field{40, "startTime", &FileHead::startTime},     Reserved{56, 88},
    };
  }
};

inline constexpr std::string_view kObjectSignature = "LOBJ";

// The header that every object begins with.
struct BaseHeader {
  std::array<char, 4> signature{};
  std::uint16_t headerSize = 0;  // up to the body
  std::uint32_t size = 0;        // header and body
  std::uint32_t type = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "signature", &BaseHeader::signature},
        Field{4, "headerSize", &BaseHeader::headerSize},
        Reserved{6, 2},  // its version, which does not keep to the sizes
        Field{8, "size", &BaseHeader::size},
        Field{12, "type", &BaseHeader::type},
    };
  }
};

// The header of all objects but containers. It may be longer than that: its size alone tells where the body begins.
struct ObjectHeader {
  BaseHeader base;
  std::uint32_t flags = 0;  // the unit of the time
  std::uint16_t version = 0;
  std::uint64_t timestamp = 0;  // since the start of the log

  static consteval auto fields() {
    return FieldList{
        Field{0, "base", &ObjectHeader::base},        Field{16, "flags", &ObjectHeader::flags},         Reserved{20, 2},
        Field{22, "version", &ObjectHeader::version}, Field{24, "timestamp", &ObjectHeader::timestamp},
    };
  }
};
inline constexpr std::uint32_t kTenMicroseconds = 1;
inline constexpr std::uint32_t kNanoseconds = 2;

// Containers hold the objects.
inline constexpr std::uint32_t kContainerType = 10;

struct ContainerHeader {
  BaseHeader base;
  std::uint16_t method = 0;
  std::uint32_t contentSize = 0;  // bytes once inflated

  static consteval auto fields() {
    return FieldList{
        Field{0, "base", &ContainerHeader::base},
        Field{16, "method", &ContainerHeader::method},
        Reserved{18, 6},
        Field{24, "contentSize", &ContainerHeader::contentSize},
        Reserved{28, 4},
    };
  }
};
inline constexpr std::uint32_t kStored = 0;
inline constexpr std::uint32_t kZlib = 2;

// An index into the file that logs end with. It is no event of a bus.
inline constexpr std::uint32_t kRestorePointsType = 115;

// Objects of buses are some hundred bytes long, those of other kinds some ten thousand. A size beyond this is damage.
inline constexpr std::uint32_t kLargestObject = std::uint32_t{16} << 20;

// Up to three zero bytes follow an object, by rules that differ between the types.
inline constexpr std::size_t kMostPadding = 3;

}  // namespace xlatr::blf_log
