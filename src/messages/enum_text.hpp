// Look-up of enumerators and their texts in one table per enumeration.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "util/failures.hpp"
#include "util/text.hpp"

namespace xlatr {

template <typename Enum>
struct EnumText {
  Enum value;
  std::string_view text;
};

// The text of `value`, or `otherwise` if the table does not know it.
template <typename Enum, std::size_t Size>
[[nodiscard]] constexpr std::string_view textOf(const std::array<EnumText<Enum>, Size>& table, Enum value,
                                                std::string_view otherwise) {
  // Most tables list the values 0, 1, 2 and so on.
  const auto index = static_cast<std::size_t>(value);
  if (index < Size && table[index].value == value) {
    return table[index].text;
  }
  for (const auto& row : table) {
    if (row.value == value) {
      return row.text;
    }
  }
  return otherwise;
}

template <typename Enum, std::size_t Size>
[[nodiscard]] constexpr std::optional<Enum> valueOf(const std::array<EnumText<Enum>, Size>& table,
                                                    std::string_view text) {
  for (const auto& row : table) {
    if (row.text == text) {
      return row.value;
    }
  }
  return std::nullopt;
}

// For tables of upper-case texts whose input may have any case.
template <typename Enum, std::size_t Size>
[[nodiscard]] constexpr std::optional<Enum> valueOfAnyCase(const std::array<EnumText<Enum>, Size>& table,
                                                           std::string_view text) {
  for (const auto& row : table) {
    if (equalsIgnoreCase(row.text, text)) {
      return row.value;
    }
  }
  return std::nullopt;
}

// valueOf with one text comparison, for the words of every message: a perfect hash of the first two characters, made
// from the table by the compiler. The first two characters of all texts must differ; static_assert(isPerfect()).
template <typename Enum, std::size_t Size>
class TextIndex {
 public:
  constexpr explicit TextIndex(const std::array<EnumText<Enum>, Size>& table) : table_(table) {
    while (!fill() && factor_ < kSlots) {
      ++factor_;
    }
  }

  [[nodiscard]] constexpr bool isPerfect() const { return factor_ < kSlots; }

  [[nodiscard]] constexpr std::optional<Enum> find(std::string_view text) const {
    if (text.size() < 2) {
      return std::nullopt;
    }
    // An unused slot leads to the first row, whose comparison then fails.
    const auto& row = table_[slots_[slotOf(text)]];
    return row.text == text ? std::optional<Enum>(row.value) : std::nullopt;
  }

 private:
  static constexpr std::size_t kSlots = 64;

  [[nodiscard]] constexpr std::size_t slotOf(std::string_view text) const {
    return (static_cast<unsigned char>(text[0]) * factor_ + static_cast<unsigned char>(text[1])) % kSlots;
  }

  constexpr bool fill() {
    std::array<bool, kSlots> used{};
    for (std::size_t i = 0; i < Size; ++i) {
      const std::size_t slot = slotOf(table_[i].text);
      if (used[slot]) {
        return false;
      }
      used[slot] = true;
      slots_[slot] = static_cast<std::uint8_t>(i);
    }
    return true;
  }

  std::array<EnumText<Enum>, Size> table_;
  std::array<std::uint8_t, kSlots> slots_{};
  std::size_t factor_ = 1;
};

// The value found, or a parsing failure that shows the text.
template <typename Enum>
[[nodiscard]] Enum requireValue(std::optional<Enum> value, std::string_view word, std::string_view text) {
  if (!value) {
    throwParsingFailure(word, text);
  }
  return *value;
}

}  // namespace xlatr
