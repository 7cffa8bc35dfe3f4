// Lines that are nearly like given ones.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::test {

// Each line, and `count` copies of it with one to three characters replaced, inserted or left out. Always the same.
inline std::vector<std::string> mutatedLines(const std::vector<std::string_view>& lines, std::size_t count) {
  constexpr std::string_view kCharacters = " 0123456789ABCDEFabcdefxXRTdr.-+\tID=\x7F";
  std::mt19937 random(1);
  const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  std::vector<std::string> mutated;
  for (const std::string_view line : lines) {
    mutated.emplace_back(line);
    for (std::size_t copy = 0; copy < count; ++copy) {
      std::string changed(line);
      for (std::size_t left = 1 + below(3); left > 0; --left) {
        const std::size_t at = below(changed.size());
        const std::size_t how = below(3);
        changed.replace(at, how == 0 ? 0 : 1, how == 1 ? 0 : 1, kCharacters[below(kCharacters.size())]);
      }
      mutated.push_back(changed);
    }
  }
  return mutated;
}

// Lines that a reader of plain ones takes, and what it makes of them.
struct TakenLines {
  std::vector<std::string> lines;
  std::vector<std::string> texts;
};

// Those of the mutated lines for which `textOf` has a text. At least one of so many must be.
template <typename TextOf>
TakenLines takenOf(const std::vector<std::string_view>& lines, std::size_t oneOf, TextOf textOf) {
  constexpr std::size_t kCopies = 3000;
  TakenLines taken;
  for (const std::string& line : mutatedLines(lines, kCopies)) {
    if (const std::optional<std::string> text = textOf(line)) {
      taken.lines.push_back(line);
      taken.texts.push_back(*text);
    }
  }
  EXPECT_GT(taken.lines.size(), lines.size() * kCopies / oneOf);
  return taken;
}

// The texts of lines by two readers.
inline void expectSameTexts(const std::vector<std::string>& texts, const std::vector<std::string>& expected,
                            const std::vector<std::string>& lines) {
  ASSERT_EQ(texts.size(), expected.size());
  for (std::size_t at = 0; at < texts.size(); ++at) {
    ASSERT_EQ(texts[at], expected[at]) << lines[at];
  }
}

}  // namespace xlatr::test
