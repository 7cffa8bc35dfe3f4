// Where the fields of a binary structure stand: described once, used for reading and for writing.
//
// A structure answers its fields by a static function:
//
//   static constexpr auto wireFields() {
//     return std::tuple(WireField{&Pair::first, 0}, WireField{&Pair::second, 4});
//   }
//
// The width of a field is that of its type: integers, enumerations, arrays of bytes, and structures that have fields
// themselves. Everything is little-endian and without padding. Nothing here allocates.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <tuple>
#include <type_traits>
#include <vector>

namespace xlatr {

template <class Owner, class Value>
struct WireField {
  Value Owner::*member;
  std::size_t offset;
};

template <class Owner, class Value>
WireField(Value Owner::*, std::size_t) -> WireField<Owner, Value>;

template <class Value>
concept WireNumber = std::is_integral_v<Value> || std::is_enum_v<Value>;

template <class Value>
concept WireStructure = requires {
  Value::wireFields();
};

// The bytes of a value in a file.
template <class Value>
struct WireSize;

template <class Value>
inline constexpr std::size_t kWireSize = WireSize<Value>::value;

template <WireNumber Value>
struct WireSize<Value> : std::integral_constant<std::size_t, sizeof(Value)> {};

template <std::size_t Count>
struct WireSize<std::array<std::uint8_t, Count>> : std::integral_constant<std::size_t, Count> {};

// A field stands directly behind the one before it, so that a wrong offset in a description does not compile.
template <class... Owners, class... Values>
consteval std::size_t sizeOfContiguous(const std::tuple<WireField<Owners, Values>...>& fields) {
  std::size_t end = 0;
  std::apply(
      [&end](const auto&... field) {
        ((field.offset == end ? void(end += kWireSize<Values>) : throw "a gap between two fields"), ...);
      },
      fields);
  return end;
}

template <WireStructure Value>
struct WireSize<Value> : std::integral_constant<std::size_t, sizeOfContiguous(Value::wireFields())> {};

// Copies a number between memory and a file's byte order, which is the same operation both ways.
template <class Value>
void copyLittleEndian(const void* from, void* to) {
  if constexpr (std::endian::native == std::endian::little || sizeof(Value) == 1) {
    std::memcpy(to, from, sizeof(Value));
  } else {
    for (std::size_t index = 0; index < sizeof(Value); ++index) {
      static_cast<std::uint8_t*>(to)[sizeof(Value) - 1 - index] = static_cast<const std::uint8_t*>(from)[index];
    }
  }
}

// Fills the value from kWireSize bytes.
template <class Value>
void readWire(const std::uint8_t* bytes, Value& value) {
  if constexpr (WireNumber<Value>) {
    copyLittleEndian<Value>(bytes, &value);
  } else if constexpr (WireStructure<Value>) {
    std::apply([&](const auto&... field) { (readWire(bytes + field.offset, value.*field.member), ...); },
               Value::wireFields());
  } else {
    std::memcpy(value.data(), bytes, value.size());
  }
}

// Writes kWireSize bytes.
template <class Value>
void writeWire(const Value& value, std::uint8_t* bytes) {
  if constexpr (WireNumber<Value>) {
    copyLittleEndian<Value>(&value, bytes);
  } else if constexpr (WireStructure<Value>) {
    std::apply([&](const auto&... field) { (writeWire(value.*field.member, bytes + field.offset), ...); },
               Value::wireFields());
  } else {
    std::memcpy(bytes, value.data(), value.size());
  }
}

// readWire as far as the bytes reach: false, and the value untouched, when they are too few.
template <class Value>
[[nodiscard]] bool tryReadWire(std::span<const std::uint8_t> bytes, Value& value) {
  if (bytes.size() < kWireSize<Value>) {
    return false;
  }
  readWire(bytes.data(), value);
  return true;
}

template <class Value>
void appendWire(std::vector<std::uint8_t>& out, const Value& value) {
  const std::size_t begin = out.size();
  out.resize(begin + kWireSize<Value>);
  writeWire(value, out.data() + begin);
}

}  // namespace xlatr
