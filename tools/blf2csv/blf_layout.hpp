// Where things lie in a BLF log. All numbers are little-endian; offsets count bytes from the start of the structure.
// docs/formats/blf.md describes the whole of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace blf2csv {

// The head of the file.
inline constexpr std::string_view kFileSignature = "LOGG";
inline constexpr std::size_t kFileHeaderSize = 144;
inline constexpr std::size_t kFileHeaderSizeField = 4;  // u32; the first object starts there
inline constexpr std::size_t kFileApiNumber = 8;        // u32, two decimal digits a part: 4070100 is 4.7.1.0
inline constexpr std::size_t kFileObjectCount = 32;     // u32, without containers
inline constexpr std::size_t kFileStartTime = 40;       // eight u16, see DateField
enum class DateField : std::uint8_t { Year, Month, Weekday, Day, Hour, Minute, Second, Millisecond };

// The header that every object begins with.
inline constexpr std::string_view kObjectSignature = "LOBJ";
inline constexpr std::size_t kBaseHeaderSize = 16;
inline constexpr std::size_t kObjectHeaderSize = 4;  // u16, up to the body
inline constexpr std::size_t kObjectSize = 8;        // u32, header and body
inline constexpr std::size_t kObjectType = 12;       // u32

// What follows in all objects but containers. A header may be longer than that; its size alone tells where the body
// begins, since its version does not keep to the sizes.
inline constexpr std::size_t kSmallestObjectHeader = 32;
inline constexpr std::size_t kObjectFlags = 16;      // u32, the unit of the time
inline constexpr std::size_t kObjectVersion = 22;    // u16
inline constexpr std::size_t kObjectTimestamp = 24;  // u64, since the start of the log
inline constexpr std::uint32_t kTenMicroseconds = 1;
inline constexpr std::uint32_t kNanoseconds = 2;

// Containers hold the objects. Behind the base header:
inline constexpr std::uint32_t kContainerType = 10;
inline constexpr std::size_t kContainerHeaderSize = 32;
inline constexpr std::size_t kContainerMethod = 16;       // u16
inline constexpr std::size_t kContainerContentSize = 24;  // u32, bytes once inflated
inline constexpr std::uint32_t kStored = 0;
inline constexpr std::uint32_t kZlib = 2;

// An index into the file that logs end with. It is no event of a bus.
inline constexpr std::uint32_t kRestorePointsType = 115;

// Objects of buses are some hundred bytes long, those of other kinds some ten thousand. A size beyond this is damage.
inline constexpr std::uint32_t kLargestObject = std::uint32_t{16} << 20;

// Up to three zero bytes follow an object, by rules that differ between the types.
inline constexpr std::size_t kMostPadding = 3;

}  // namespace blf2csv
