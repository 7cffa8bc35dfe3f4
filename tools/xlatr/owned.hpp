// What the library hands out, as C++ keeps it: objects in smart pointers, texts in strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace xlatr::cli {

// Releases an object with the function of its family.
template <auto Destruct>
struct Release {
  template <class Object>
  void operator()(Object* object) const {
    Destruct(object);
  }
};

template <class Object, auto Destruct>
using Owned = std::unique_ptr<Object, Release<Destruct>>;

// The text that a pair of functions returns for `key`, which is an object or a flag.
template <auto Size, auto Copy, typename... Key>
[[nodiscard]] std::string libraryText(Key... key) {
  std::string text(std::size_t{Size(key...)} + 1, '\0');
  Copy(key..., text.data(), static_cast<std::uint32_t>(text.size()));
  text.pop_back();
  return text;
}

}  // namespace xlatr::cli
