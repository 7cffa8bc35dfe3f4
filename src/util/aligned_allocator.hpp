// Memory that starts at a round address.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace xlatr {

// An allocator of the standard library whose memory starts at a multiple of `kAlignment` bytes.
template <typename Value, std::size_t kAlignment>
struct AlignedAllocator {
  using value_type = Value;

  template <typename Other>
  struct rebind {
    using other = AlignedAllocator<Other, kAlignment>;
  };

  AlignedAllocator() = default;
  template <typename Other>
  AlignedAllocator(const AlignedAllocator<Other, kAlignment>& /*other*/) noexcept {}

  [[nodiscard]] Value* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / sizeof(Value)) {
      throw std::bad_array_new_length();
    }
    return static_cast<Value*>(::operator new(count * sizeof(Value), std::align_val_t(kAlignment)));
  }
  void deallocate(Value* memory, std::size_t /*count*/) noexcept {
    ::operator delete(memory, std::align_val_t(kAlignment));
  }

  bool operator==(const AlignedAllocator&) const = default;
};

// The same for memory that its user fills: values that a container makes without being told of what are not set, so
// that pages that nobody uses are never touched.
template <typename Value, std::size_t kAlignment>
struct UnsetAllocator : AlignedAllocator<Value, kAlignment> {
  static_assert(std::is_trivially_default_constructible_v<Value>);

  template <typename Other>
  struct rebind {
    using other = UnsetAllocator<Other, kAlignment>;
  };

  void construct(Value* /*value*/) noexcept {}
  template <typename... Arguments>
  void construct(Value* value, Arguments&&... arguments) {
    ::new (static_cast<void*>(value)) Value(std::forward<Arguments>(arguments)...);
  }
};

}  // namespace xlatr
