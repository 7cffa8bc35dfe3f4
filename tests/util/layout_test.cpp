// The description of binary structures, on structures made for it.
#include "util/layout.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace xlatr {
namespace {

using ::testing::ElementsAre;

enum class Color : std::uint16_t { None = 0, Green = 0x0201 };

struct Point {
  std::uint8_t x = 0;
  std::int16_t y = 0;

  static constexpr auto fields() { return FieldList{Field{0, "x", &Point::x}, Field{1, "y", &Point::y}}; }
};

// One of each kind of fixed field.
struct Head {
  Color color = Color::None;
  double ratio = 0.0;
  std::array<char, 2> text{};
  std::array<std::uint8_t, 2> bytes{};
  std::array<Point, 2> points{};

  static constexpr auto fields() {
    return FieldList{
        Field{0, "color", &Head::color},  Reserved{2, 1},
        Field{3, "ratio", &Head::ratio},  Field{11, "text", &Head::text},
        Field{13, "bytes", &Head::bytes}, Field{15, "points", &Head::points},
    };
  }
};

static_assert(kLayoutSize<Color> == 2);
static_assert(kLayoutSize<Point> == 3);
static_assert(kLayoutSize<Head> == 21);
static_assert(layoutOffset<&Head::color>() == 0);
static_assert(layoutOffset<&Head::points>() == 15);

// 0.5 has one byte that is not zero.
const Bytes kHeadImage = {1, 2, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F, 'a', 'b', 7, 8, 1, 0xFE, 0xFF, 2, 3, 0};

Head headOfImage() {
  return {.color = Color::Green, .ratio = 0.5, .text = {'a', 'b'}, .bytes = {7, 8}, .points = {{{1, -2}, {2, 3}}}};
}

// A number that says how many values follow, and another one that says whether a number or values come next.
struct Tail {
  std::uint8_t count = 0;
  std::uint8_t flags = 0;
  std::vector<std::uint16_t> values;
  std::uint32_t single = 0;
  std::vector<std::uint8_t> many;
  Bytes rest;

  [[nodiscard]] bool hasSingle() const { return (flags & 1U) != 0; }
  [[nodiscard]] bool hasMany() const { return !hasSingle(); }

  static constexpr auto fields() {
    return FieldList{
        Field{0, "count", &Tail::count},
        Field{1, "flags", &Tail::flags},
        Counted{"values", &Tail::values, &Tail::count},
        When{&Tail::hasSingle, Field{"single", &Tail::single}},
        When{&Tail::hasMany, Counted{"many", &Tail::many, &Tail::count}},
        Rest{"rest", &Tail::rest},
    };
  }
};

static_assert(kFixedSize<Tail> == 2);

TEST(Layout, storesFieldsLittleEndianAndReservedBytesAsZeros) {
  Bytes image(kLayoutSize<Head>, 0xAA);
  storeFields(image.data(), headOfImage());
  EXPECT_EQ(image, kHeadImage);
  Bytes appended = {9};
  appendFields(appended, headOfImage());
  EXPECT_EQ(appended.size(), 1 + kHeadImage.size());
  EXPECT_TRUE(std::equal(kHeadImage.begin(), kHeadImage.end(), appended.begin() + 1));
}

TEST(Layout, loadsWhatItStored) {
  Head head;
  ASSERT_TRUE(tryReadFields(kHeadImage, head));
  EXPECT_EQ(head.color, Color::Green);
  EXPECT_EQ(head.ratio, 0.5);
  EXPECT_THAT(head.text, ElementsAre('a', 'b'));
  EXPECT_THAT(head.bytes, ElementsAre(7, 8));
  EXPECT_EQ(head.points[0].y, -2);
  EXPECT_EQ(head.points[1].x, 2);
}

TEST(Layout, ignoresWhatIsReservedAndWhatFollows) {
  Bytes image = kHeadImage;
  image[2] = 0xFF;
  image.push_back(0xFF);
  Head head;
  ASSERT_TRUE(tryReadFields(image, head));
  Bytes again;
  appendFields(again, head);
  EXPECT_EQ(again, kHeadImage);
}

TEST(Layout, refusesBytesThatEndEarly) {
  for (std::size_t size = 0; size < kHeadImage.size(); ++size) {
    Head head;
    EXPECT_FALSE(tryReadFields(std::span(kHeadImage).first(size), head)) << size;
    EXPECT_EQ(head.color, Color::None) << size;
  }
}

TEST(Layout, takesFieldsBeyondTheEndForZeroWhenLenient) {
  for (std::size_t size = 0; size <= kHeadImage.size(); ++size) {
    Head head = headOfImage();
    readFieldsLeniently(std::span(kHeadImage).first(size), head);
    EXPECT_EQ(head.color, size >= 2 ? Color::Green : Color::None) << size;
    EXPECT_EQ(head.ratio, size >= 11 ? 0.5 : 0.0) << size;
    EXPECT_EQ(head.text[0], size >= 12 ? 'a' : '\0') << size;
    EXPECT_EQ(head.bytes[1], size >= 15 ? 8 : 0) << size;
    EXPECT_EQ(head.points[0].y, size >= 18 ? -2 : 0) << "half a number is none, " << size;
    EXPECT_EQ(head.points[1].y, size >= 21 ? 3 : 0) << size;
  }
}

TEST(Layout, readsOneFieldInPlace) {
  EXPECT_EQ(readField<&Head::color>(kHeadImage), Color::Green);
  EXPECT_EQ(readField<&Head::points>(kHeadImage)[1].x, 2);
  EXPECT_EQ(readField<&Head::color>(std::span(kHeadImage).first(1)), Color::None);
  EXPECT_EQ(readField<&Head::ratio>(std::span(kHeadImage).first(2)), 0.0);
}

TEST(Layout, variablePartFollowsWhatTheFieldsSay) {
  const Bytes withSingle = {2, 1, 5, 0, 6, 0, 4, 3, 2, 1, 9, 9};
  Tail tail;
  ASSERT_TRUE(tryReadFields(withSingle, tail));
  EXPECT_THAT(tail.values, ElementsAre(5, 6));
  EXPECT_EQ(tail.single, 0x01020304U);
  EXPECT_THAT(tail.many, ElementsAre());
  EXPECT_THAT(tail.rest, ElementsAre(9, 9));
  Bytes image;
  appendFields(image, tail);
  EXPECT_EQ(image, withSingle);

  const Bytes withMany = {2, 0, 5, 0, 6, 0, 4, 3};
  Tail other;
  ASSERT_TRUE(tryReadFields(withMany, other));
  EXPECT_THAT(other.many, ElementsAre(4, 3));
  EXPECT_THAT(other.rest, ElementsAre());
  image.clear();
  appendFields(image, other);
  EXPECT_EQ(image, withMany);
}

TEST(Layout, refusesAVariablePartThatEndsEarly) {
  const Bytes whole = {2, 1, 5, 0, 6, 0, 4, 3, 2, 1};
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Tail tail;
    EXPECT_FALSE(tryReadFields(std::span(whole).first(size), tail)) << size;
  }
}

TEST(Layout, allocatesNothingForValuesThatAreNotThere) {
  Tail tail;
  EXPECT_FALSE(tryReadFields(Bytes{255, 0, 1}, tail));
  EXPECT_EQ(tail.values.capacity(), 0U);
}

struct Printer {
  std::string text;

  template <class Value>
  void operator()(const char* name, const Value& value) {
    text.append(name).append(" ");
    if constexpr (std::is_integral_v<Value>) {
      text.append(std::to_string(value)).append(" ");
    }
  }
};

TEST(Layout, visitsTheFieldsThatAreThereByName) {
  Tail tail;
  tail.flags = 1;
  tail.single = 12;
  Printer printer;
  visitFields(tail, printer);
  EXPECT_EQ(printer.text, "count 0 flags 1 values single 12 rest ");
  Printer ofHead;
  visitFields(headOfImage(), ofHead);
  EXPECT_EQ(ofHead.text, "color ratio text bytes points ");
}

}  // namespace
}  // namespace xlatr
