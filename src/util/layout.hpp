// The layout of binary records, blocks and log objects: described once, used to read, write, measure and print them.
//
// A structure names its fields in the order of the file:
//
//   struct Example {
//     std::uint16_t kind = 0;
//     std::uint32_t id = 0;
//     std::uint16_t count = 0;
//     std::vector<double> values;
//
//     static consteval auto fields() {
//       return FieldList{
//           Field{0, "kind", &Example::kind},
//           Reserved{2, 2},
//           Field{4, "id", &Example::id},
//           Field{8, "count", &Example::count},
//           Counted{"values", &Example::values, &Example::count},
//       };
//     }
//   };
//
// All numbers are little-endian and nothing is padded. The fields of fixed size come first and state their offsets,
// which the compiler checks: a gap or an overlap does not compile. Fields whose size depends on the ones before them
// follow: Counted, When, Rest. A structure without those has a size at compile time, kLayoutSize.
//
// Nothing is read beyond the bytes at hand, and bytes after the last field are left alone: newer files add fields
// there.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <tuple>
#include <type_traits>
#include <vector>

#include "util/byte_growth.hpp"
#include "util/little_endian.hpp"

namespace xlatr {

using Bytes = std::vector<std::uint8_t>;

// What a field of fixed size can be: a number or an enumeration, a structure that has such fields itself, or an array
// of all these. An array of char is a text.
template <class Value>
concept LayoutNumber = (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>) || std::is_enum_v<Value>;

template <class Value>
concept Described = requires {
  Value::fields();
};

template <Described Value>
inline constexpr auto kFieldsOf = Value::fields();

// The bytes of a value in a file.
template <class Value>
struct LayoutSize;

template <class Value>
inline constexpr std::size_t kLayoutSize = LayoutSize<Value>::value;

template <LayoutNumber Value>
struct LayoutSize<Value> : std::integral_constant<std::size_t, sizeof(Value)> {};

template <class Element, std::size_t kCount>
struct LayoutSize<std::array<Element, kCount>> : std::integral_constant<std::size_t, kCount * kLayoutSize<Element>> {};

template <Described Value>
requires(kFieldsOf<Value>.kIsFixed) struct LayoutSize<Value>
    : std::integral_constant<std::size_t, kFieldsOf<Value>.fixedSize> {
};

// Fills the value from kLayoutSize bytes.
template <class Value>
void loadFields(const std::uint8_t* bytes, Value& value);

// Writes kLayoutSize bytes.
template <class Value>
void storeFields(std::uint8_t* bytes, const Value& value);

// What fields with a name have in common. The visitor is called with the name and the value.
template <class Owner, class Value>
struct NamedField {
  template <class Self, class Visitor>
  void visit(const Self& self, Visitor& visitor) const {
    visitor(name, self.*member);
  }

  const char* name;
  Value Owner::*member;
};

// A field of fixed size. It states its offset, unless it is part of a When.
template <class Owner, class Value>
struct Field : NamedField<Owner, Value> {
  constexpr Field(std::size_t fieldOffset, const char* fieldName, Value Owner::*fieldMember)
      : NamedField<Owner, Value>{fieldName, fieldMember}, offset(fieldOffset) {}
  constexpr Field(const char* fieldName, Value Owner::*fieldMember) : Field(~std::size_t{0}, fieldName, fieldMember) {}

  static constexpr bool kIsFixed = true;

  template <class Self>
  void load(const std::uint8_t* begin, Self& self) const {
    loadFields(begin + offset, self.*this->member);
  }
  template <class Self>
  void store(std::uint8_t* begin, const Self& self) const {
    storeFields(begin + offset, self.*this->member);
  }

  // The same of a part of a When.
  template <class Self>
  [[nodiscard]] bool take(std::span<const std::uint8_t>& rest, Self& self) const {
    if (rest.size() < size) {
      return false;
    }
    loadFields(rest.data(), self.*this->member);
    rest = rest.subspan(size);
    return true;
  }
  template <class Self>
  void append(Bytes& out, const Self& self) const {
    storeFields(growBytes(out, size), self.*this->member);
  }

  std::size_t offset;
  std::size_t size = kLayoutSize<Value>;
};

// Bytes without a meaning: not read, and written as zeros.
struct Reserved {
  static constexpr bool kIsFixed = true;

  template <class Self>
  void load(const std::uint8_t* /*begin*/, Self& /*self*/) const {}
  template <class Self>
  void store(std::uint8_t* begin, const Self& /*self*/) const {
    std::memset(begin + offset, 0, size);
  }
  template <class Self, class Visitor>
  void visit(const Self& /*self*/, Visitor& /*visitor*/) const {}

  std::size_t offset;
  std::size_t size;
};

// As many values as the structure says by `count`: a field before, or a member function. The count may come from a
// file: nothing is allocated for values that are not there. All values are written, whatever the count says.
template <class Owner, class Value, class Count>
struct Counted : NamedField<Owner, std::vector<Value>> {
  constexpr Counted(const char* fieldName, std::vector<Value> Owner::*fieldMember, Count countOfValues)
      : NamedField<Owner, std::vector<Value>>{fieldName, fieldMember}, count(countOfValues) {}

  static constexpr bool kIsFixed = false;

  template <class Self>
  [[nodiscard]] bool take(std::span<const std::uint8_t>& rest, Self& self) const {
    const std::uint64_t wanted = std::invoke(count, self);
    if (wanted > rest.size() / kLayoutSize<Value>) {
      return false;
    }
    std::vector<Value>& values = self.*this->member;
    values.resize(static_cast<std::size_t>(wanted));
    for (Value& value : values) {
      loadFields(rest.data(), value);
      rest = rest.subspan(kLayoutSize<Value>);
    }
    return true;
  }
  template <class Self>
  void append(Bytes& out, const Self& self) const {
    for (const Value& value : self.*this->member) {
      storeFields(growBytes(out, kLayoutSize<Value>), value);
    }
  }

  Count count;
};

// All bytes up to the end.
template <class Owner>
struct Rest : NamedField<Owner, Bytes> {
  constexpr Rest(const char* fieldName, Bytes Owner::*fieldMember) : NamedField<Owner, Bytes>{fieldName, fieldMember} {}

  static constexpr bool kIsFixed = false;

  template <class Self>
  [[nodiscard]] bool take(std::span<const std::uint8_t>& rest, Self& self) const {
    (self.*this->member).assign(rest.begin(), rest.end());
    rest = {};
    return true;
  }
  template <class Self>
  void append(Bytes& out, const Self& self) const {
    appendBytes(out, self.*this->member);
  }
};

// A Field without an offset, or a Counted, that is there if the structure says so.
template <class Condition, class Part>
struct When {
  constexpr When(Condition isThere, Part conditionalPart) : condition(isThere), part(conditionalPart) {}

  static constexpr bool kIsFixed = false;

  template <class Self>
  [[nodiscard]] bool take(std::span<const std::uint8_t>& rest, Self& self) const {
    return !std::invoke(condition, self) || part.take(rest, self);
  }
  template <class Self>
  void append(Bytes& out, const Self& self) const {
    if (std::invoke(condition, self)) {
      part.append(out, self);
    }
  }
  template <class Self, class Visitor>
  void visit(const Self& self, Visitor& visitor) const {
    if (std::invoke(condition, self)) {
      part.visit(self, visitor);
    }
  }

  Condition condition;
  Part part;
};

// The fields of a structure, in order.
template <class... Parts>
class FieldList {
 public:
  // Does not compile with a wrong offset.
  consteval explicit FieldList(Parts... fields) : parts(fields...) { (addSize(fields), ...); }

  static constexpr bool kIsFixed = (Parts::kIsFixed && ...);

  std::tuple<Parts...> parts;
  std::size_t fixedSize = 0;  // bytes of the fields that state an offset; every image begins with them

 private:
  template <class Part>
  consteval void addSize(const Part& part) {
    if constexpr (Part::kIsFixed) {
      if (part.offset != fixedSize || hasVariablePart_) {
        throw "a field does not begin where the one before it ends";
      }
      fixedSize += part.size;
    } else {
      hasVariablePart_ = true;
    }
  }

  bool hasVariablePart_ = false;
};

template <class... Parts>
FieldList(Parts...) -> FieldList<Parts...>;

// The size of the fields of fixed size, which come first.
template <Described Value>
inline constexpr std::size_t kFixedSize = kFieldsOf<Value>.fixedSize;

namespace detail {

template <class Value>
inline constexpr bool kIsArrayOfBytes = false;
template <std::size_t kCount>
inline constexpr bool kIsArrayOfBytes<std::array<std::uint8_t, kCount>> = true;
template <std::size_t kCount>
inline constexpr bool kIsArrayOfBytes<std::array<char, kCount>> = true;

// Calls `action` with each part of the description.
template <Described Value, class Action>
constexpr void forEachPart(Action&& action) {
  std::apply([&action](const auto&... part) { (action(part), ...); }, kFieldsOf<Value>.parts);
}

// The variable part of the structure, as far as the bytes reach.
template <Described Value>
[[nodiscard]] bool takeVariableParts(std::span<const std::uint8_t> rest, Value& value) {
  bool whole = true;
  forEachPart<Value>([&]<class Part>(const Part& part) {
    if constexpr (!Part::kIsFixed) {
      whole = whole && part.take(rest, value);
    }
  });
  return whole;
}

template <Described Value>
void loadFixedParts(const std::uint8_t* bytes, Value& value) {
  forEachPart<Value>([&]<class Part>(const Part& part) {
    if constexpr (Part::kIsFixed) {
      part.load(bytes, value);
    }
  });
}

template <Described Value>
void storeFixedParts(std::uint8_t* bytes, const Value& value) {
  forEachPart<Value>([&]<class Part>(const Part& part) {
    if constexpr (Part::kIsFixed) {
      part.store(bytes, value);
    }
  });
}

template <class Value>
struct MemberOf;
template <class Owner, class Value>
struct MemberOf<Value Owner::*> {
  using OwnerType = Owner;
  using ValueType = Value;
};

}  // namespace detail

template <class Value>
void loadFields(const std::uint8_t* bytes, Value& value) {
  if constexpr (std::is_enum_v<Value>) {
    value = static_cast<Value>(loadLittle<std::underlying_type_t<Value>>(bytes));
  } else if constexpr (LayoutNumber<Value>) {
    value = loadLittle<Value>(bytes);
  } else if constexpr (Described<Value>) {
    static_assert(kFieldsOf<Value>.kIsFixed);
    detail::loadFixedParts(bytes, value);
  } else if constexpr (detail::kIsArrayOfBytes<Value>) {
    std::memcpy(value.data(), bytes, value.size());
  } else {
    for (auto& element : value) {
      loadFields(bytes, element);
      bytes += kLayoutSize<typename Value::value_type>;
    }
  }
}

template <class Value>
void storeFields(std::uint8_t* bytes, const Value& value) {
  if constexpr (std::is_enum_v<Value>) {
    storeLittle(bytes, static_cast<std::underlying_type_t<Value>>(value));
  } else if constexpr (LayoutNumber<Value>) {
    storeLittle(bytes, value);
  } else if constexpr (Described<Value>) {
    static_assert(kFieldsOf<Value>.kIsFixed);
    detail::storeFixedParts(bytes, value);
  } else if constexpr (detail::kIsArrayOfBytes<Value>) {
    std::memcpy(bytes, value.data(), value.size());
  } else {
    for (const auto& element : value) {
      storeFields(bytes, element);
      bytes += kLayoutSize<typename Value::value_type>;
    }
  }
}

// False when the bytes are too few. A structure of fixed size is then left as it was.
template <Described Value>
[[nodiscard]] bool tryReadFields(std::span<const std::uint8_t> bytes, Value& value) {
  if (bytes.size() < kFixedSize<Value>) {
    return false;
  }
  detail::loadFixedParts(bytes.data(), value);
  return detail::takeVariableParts(bytes.subspan(kFixedSize<Value>), value);
}

// For files of other versions, whose structures may be shorter: a field that the bytes do not hold in full is zero.
template <class Value>
void readFieldsLeniently(std::span<const std::uint8_t> bytes, Value& value) {
  if (bytes.size() >= kLayoutSize<Value>) {
    loadFields(bytes.data(), value);
  } else if constexpr (LayoutNumber<Value> || detail::kIsArrayOfBytes<Value>) {
    value = {};
    if constexpr (detail::kIsArrayOfBytes<Value>) {
      std::copy(bytes.begin(), bytes.end(), value.begin());
    }
  } else if constexpr (Described<Value>) {
    detail::forEachPart<Value>([&]<class Part>(const Part& part) {
      if constexpr (requires { part.member; }) {
        readFieldsLeniently(bytes.subspan(part.offset < bytes.size() ? part.offset : bytes.size()), value.*part.member);
      }
    });
  } else {
    for (auto& element : value) {
      readFieldsLeniently(bytes, element);
      constexpr std::size_t kSize = kLayoutSize<typename Value::value_type>;
      bytes = bytes.subspan(kSize < bytes.size() ? kSize : bytes.size());
    }
  }
}

// Adds the bytes of the value, those of its variable part included.
template <Described Value>
void appendFields(Bytes& out, const Value& value) {
  detail::storeFixedParts(growBytes(out, kFixedSize<Value>), value);
  detail::forEachPart<Value>([&]<class Part>(const Part& part) {
    if constexpr (!Part::kIsFixed) {
      part.append(out, value);
    }
  });
}

// Calls `visitor` with the name and the value of each field that is there, in order; for whoever prints a structure.
template <Described Value, class Visitor>
void visitFields(const Value& value, Visitor&& visitor) {
  detail::forEachPart<Value>([&](const auto& part) { part.visit(value, visitor); });
}

// Where a field of fixed size begins in the image of its structure: layoutOffset<&Example::id>() is 4.
template <auto kMember>
[[nodiscard]] consteval std::size_t layoutOffset() {
  constexpr std::size_t kNone = ~std::size_t{0};
  using Owner = typename detail::MemberOf<decltype(kMember)>::OwnerType;
  std::size_t offset = kNone;
  detail::forEachPart<Owner>([&offset]<class Part>(const Part& part) {
    if constexpr (requires {
                    part.offset;
                    requires std::is_same_v<decltype(part.member), decltype(kMember)>;
                  }) {
      offset = part.member == kMember ? part.offset : offset;
    }
  });
  if (offset == kNone) {
    throw "the structure does not describe this member";
  }
  return offset;
}

// One field of a structure in place, without the others; zero if the bytes do not hold it in full.
template <auto kMember>
[[nodiscard]] auto readField(std::span<const std::uint8_t> bytes) {
  typename detail::MemberOf<decltype(kMember)>::ValueType value{};
  constexpr std::size_t kOffset = layoutOffset<kMember>();
  if (kOffset < bytes.size()) {
    readFieldsLeniently(bytes.subspan(kOffset), value);
  }
  return value;
}

}  // namespace xlatr
