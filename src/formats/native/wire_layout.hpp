// Where the fields of a binary structure stand: described once, used for reading and for writing.
//
// A structure answers its fields by a static function:
//
//   static constexpr auto wireFields() {
//     return std::tuple(WireField{&Pair::first, 0}, WireField{&Pair::second, 4});
//   }
//
// The width of a field is that of its type: integers, enumerations, structures that have fields themselves, and arrays
// of all these. Everything is little-endian and without padding. Nothing here allocates.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <tuple>
#include <type_traits>
#include <vector>

#include "util/little_endian.hpp"

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

template <class Element, std::size_t kCount>
struct WireSize<std::array<Element, kCount>> : std::integral_constant<std::size_t, kCount * kWireSize<Element>> {};

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

template <class Value>
inline constexpr bool kIsByteArray = false;
template <std::size_t kCount>
inline constexpr bool kIsByteArray<std::array<std::uint8_t, kCount>> = true;

// Fills the value from kWireSize bytes.
template <class Value>
void readWire(const std::uint8_t* bytes, Value& value) {
  if constexpr (std::is_enum_v<Value>) {
    value = static_cast<Value>(loadLittle<std::underlying_type_t<Value>>(bytes));
  } else if constexpr (WireNumber<Value>) {
    value = loadLittle<Value>(bytes);
  } else if constexpr (WireStructure<Value>) {
    std::apply([&](const auto&... field) { (readWire(bytes + field.offset, value.*field.member), ...); },
               Value::wireFields());
  } else if constexpr (kIsByteArray<Value>) {
    std::memcpy(value.data(), bytes, value.size());
  } else {
    for (auto& element : value) {
      readWire(bytes, element);
      bytes += kWireSize<typename Value::value_type>;
    }
  }
}

// Writes kWireSize bytes.
template <class Value>
void writeWire(const Value& value, std::uint8_t* bytes) {
  if constexpr (std::is_enum_v<Value>) {
    storeLittle(bytes, static_cast<std::underlying_type_t<Value>>(value));
  } else if constexpr (WireNumber<Value>) {
    storeLittle(bytes, value);
  } else if constexpr (WireStructure<Value>) {
    std::apply([&](const auto&... field) { (writeWire(value.*field.member, bytes + field.offset), ...); },
               Value::wireFields());
  } else if constexpr (kIsByteArray<Value>) {
    std::memcpy(bytes, value.data(), value.size());
  } else {
    for (const auto& element : value) {
      writeWire(element, bytes);
      bytes += kWireSize<typename Value::value_type>;
    }
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
