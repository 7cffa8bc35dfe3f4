#include "formats/mf4/value_table.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <random>
#include <vector>

namespace xlatr {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::optional<double> lookUp(const std::vector<double>& elements, double input) {
  return ValueTable(elements).lookUp(input);
}

// One element after the other.
std::optional<double> walk(const std::vector<double>& elements, double input) {
  const std::size_t size = elements.size();
  if (size < 2 || size % 2 != 0) {
    return std::nullopt;
  }
  if (input < elements.front()) {
    return elements[1];
  }
  if (input > elements[size - 2]) {
    return elements[size - 1];
  }
  for (std::size_t index = 0; index + 1 < size; ++index) {
    if (elements[index] == input) {
      return elements[index + 1];
    }
    if (index + 2 < size && elements[index] < input && input < elements[index + 2]) {
      const std::size_t found = index + (input - elements[index] <= elements[index + 2] - input ? 1 : 3);
      return found < size ? std::optional(elements[found]) : std::nullopt;
    }
  }
  return std::nullopt;
}

bool same(std::optional<double> first, std::optional<double> second) {
  return first.has_value() == second.has_value() &&
         (!first || *first == *second || (std::isnan(*first) && std::isnan(*second)));
}

TEST(ValueTableTest, hasNothingUnlessItIsMadeOfPairs) {
  EXPECT_EQ(lookUp({}, 0.0), std::nullopt);
  EXPECT_EQ(lookUp({0.0}, 0.0), std::nullopt);
  EXPECT_EQ(lookUp({0.0, 1.0, 2.0}, 0.0), std::nullopt);
}

TEST(ValueTableTest, givesTheValueOfTheKey) {
  const std::vector<double> elements{10, 100, 20, 200, 30, 300};
  EXPECT_EQ(lookUp(elements, 10), 100);
  EXPECT_EQ(lookUp(elements, 20), 200);
  EXPECT_EQ(lookUp(elements, 30), 300);
}

TEST(ValueTableTest, givesTheValueOfTheNearerKeyAndOfTheLowerOfTwoAsNear) {
  const std::vector<double> elements{10, 100, 20, 200, 30, 300};
  EXPECT_EQ(lookUp(elements, 14), 100);
  EXPECT_EQ(lookUp(elements, 15), 100);
  EXPECT_EQ(lookUp(elements, 16), 200);
}

TEST(ValueTableTest, givesTheFirstAndTheLastValueOutside) {
  const std::vector<double> elements{10, 100, 20, 200};
  EXPECT_EQ(lookUp(elements, -1), 100);
  EXPECT_EQ(lookUp(elements, 21), 200);
}

TEST(ValueTableTest, goesThroughTheValuesToo) {
  EXPECT_EQ(lookUp({0, 5, 2, 8, 6, 1}, 5), 2) << "the key after a value that equals the input";
  EXPECT_EQ(lookUp({4, 1, 2, 9, 20, 3}, 5), 2) << "the key after the lower of two values";
}

TEST(ValueTableTest, givesWhatAWalkWouldWhateverTheOrder) {
  std::mt19937 random(1);
  const auto number = [&random](unsigned count) { return static_cast<double>(random() % count); };
  constexpr std::array kOdd{kNan, kInfinity, -kInfinity, -0.0};
  for (int round = 0; round < 20'000; ++round) {
    std::vector<double> elements(random() % 12);
    for (double& element : elements) {
      const std::size_t kind = random() % 20;
      element = kind < kOdd.size() ? kOdd.at(kind) : number(12) - 3;
    }
    if (round % 3 == 0) {
      std::ranges::sort(elements);
    }
    const ValueTable table(elements);
    for (const double input : {kNan, kInfinity, -kInfinity, number(32) / 2 - 4, number(32) / 2 - 4, number(32) - 8}) {
      ASSERT_TRUE(same(table.lookUp(input), walk(elements, input)))
          << input << " in " << testing::PrintToString(elements);
    }
  }
}

}  // namespace
}  // namespace xlatr
