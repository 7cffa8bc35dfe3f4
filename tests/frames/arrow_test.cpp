#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frames/arrow_export.hpp"
#include "frames/arrow_import.hpp"
#include "frames/frame_failure.hpp"
#include "support/arrow_checker.hpp"
#include "support/frame_text.hpp"
#include "support/random_frames.hpp"
#include "xlatr/frames.h"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

constexpr std::uint32_t kAllAttributes = (1U << kFrameAttributeCount) - 1;

// Frames from memory.
class ListedFrames final : public FrameSource {
 public:
  explicit ListedFrames(std::vector<test::OwnedFrame> frames) : frames_(std::move(frames)) {}

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override { return 0; }
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    while (at_ < frames_.size() && !batch.full()) {
      batch.append(frames_[at_++].view());
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  StreamHead head_;
  std::vector<test::OwnedFrame> frames_;
  std::size_t at_ = 0;
};

std::vector<test::OwnedFrame> randomFrames(std::size_t count) {
  test::RandomFrames random(7);
  std::vector<test::OwnedFrame> frames;
  for (std::size_t at = 0; at < count; ++at) {
    frames.push_back(random.next());
  }
  return frames;
}

Texts textsOfFrames(const std::vector<test::OwnedFrame>& frames) {
  Texts texts;
  for (const test::OwnedFrame& frame : frames) {
    texts.push_back(test::textOf(frame.view()));
  }
  return texts;
}

ArrowArrayStream exported(const std::vector<test::OwnedFrame>& frames, std::uint32_t attributes = kAllAttributes) {
  ArrowArrayStream stream;
  exportArrow(std::make_unique<ListedFrames>(frames), attributes, stream);
  return stream;
}

TEST(ArrowExport, keepsTheRules) {
  ArrowArrayStream stream = exported(randomFrames(40'000));
  ArrowSchema schema;
  ASSERT_EQ(stream.get_schema(&stream, &schema), 0);
  EXPECT_EQ(std::string(schema.format), "+s");
  ASSERT_EQ(schema.n_children, 8 + 17);
  EXPECT_EQ(std::string(schema.children[0]->name), "time_ns");
  EXPECT_EQ(std::string(schema.children[1]->dictionary->format), "u");
  EXPECT_EQ(std::string(schema.children[8]->name), "error_type");
  std::vector<ArrowArray> arrays;
  std::int64_t rows = 0;
  for (;;) {
    ArrowArray array;
    ASSERT_EQ(stream.get_next(&stream, &array), 0);
    if (array.release == nullptr) {
      break;
    }
    rows += array.length;
    arrays.push_back(array);
  }
  EXPECT_EQ(rows, 40'000);
  EXPECT_GT(arrays.size(), 2U);
  // Arrays outlive their stream, and keep the rules until they are released.
  stream.release(&stream);
  EXPECT_EQ(stream.release, nullptr);
  for (ArrowArray& array : arrays) {
    test::ArrowChecker checker;
    checker.check(schema, array);
    EXPECT_EQ(checker.wrong(), Texts());
    array.release(&array);
    EXPECT_EQ(array.release, nullptr);
  }
  schema.release(&schema);
  EXPECT_EQ(schema.release, nullptr);
}

TEST(ArrowExport, letsAChildBeMovedOut) {
  ArrowArrayStream stream = exported(randomFrames(100));
  ArrowArray array;
  ASSERT_EQ(stream.get_next(&stream, &array), 0);
  ArrowArray times = *array.children[0];
  array.children[0]->release = nullptr;
  array.release(&array);
  stream.release(&stream);
  EXPECT_EQ(times.length, 100);
  EXPECT_GE(static_cast<const std::int64_t*>(times.buffers[1])[99], 0);
  times.release(&times);
}

TEST(ArrowExport, usesTheMemoryOfReleasedArraysAgain) {
  ArrowArrayStream stream = exported(randomFrames(60'000), 0);
  std::vector<const void*> addresses;
  for (;;) {
    ArrowArray array;
    ASSERT_EQ(stream.get_next(&stream, &array), 0);
    if (array.release == nullptr) {
      break;
    }
    addresses.push_back(array.children[0]->buffers[1]);
    array.release(&array);
  }
  ASSERT_GT(addresses.size(), 2U);
  EXPECT_EQ(addresses[0], addresses[1]);
  EXPECT_EQ(addresses[0], addresses[2]);
  stream.release(&stream);
}

TEST(ArrowExport, tellsOfAFailure) {
  class Failing final : public FrameSource {
   public:
    [[nodiscard]] const StreamHead& head() const override { return head_; }
    [[nodiscard]] std::uint64_t bytesRead() const override { return 0; }
    [[nodiscard]] bool read(FrameBatch& /*batch*/, Account& /*account*/) override {
      throw std::ios_base::failure("the disk is gone");
    }

   private:
    StreamHead head_;
  };
  ArrowArrayStream stream;
  exportArrow(std::make_unique<Failing>(), 0, stream);
  EXPECT_EQ(stream.get_last_error(&stream), nullptr);
  ArrowArray array;
  EXPECT_EQ(stream.get_next(&stream, &array), EIO);
  EXPECT_NE(std::string(stream.get_last_error(&stream)).find("the disk is gone"), std::string::npos);
  stream.release(&stream);
}

TEST(ArrowImport, takesBackWhatWasExported) {
  const auto frames = randomFrames(40'000);
  ArrowArrayStream stream = exported(frames);
  const auto source = importArrow(stream);
  EXPECT_EQ(stream.release, nullptr);
  Account account;
  EXPECT_EQ(test::textsOf(*source, account), textsOfFrames(frames));
  EXPECT_EQ(account.read(), 40'000U);
}

// ---- arrays of other producers, made by hand

// A schema, an array, and what they refer to.
struct HandMade {
  std::string format;
  std::string name;
  ArrowSchema schema{};
  ArrowArray array{};
  std::vector<const void*> buffers;
  std::vector<ArrowSchema*> schemas;
  std::vector<ArrowArray*> arrays;
};

// Builds a stream of one struct array. What is built stays with the builder; it counts what is released.
class HandMadeStream {
 public:
  // A column of these buffers, of which the first is the validity or null.
  HandMade& add(const std::string& name, const std::string& format, std::int64_t length,
                std::initializer_list<const void*> buffers) {
    HandMade& made = make(name, format, length, buffers);
    columns_.push_back(&made);
    return made;
  }
  // A part of a column: its dictionary or the values of its lists.
  HandMade& make(const std::string& name, const std::string& format, std::int64_t length,
                 std::initializer_list<const void*> buffers) {
    HandMade& made = made_.emplace_back();
    made.name = name;
    made.format = format;
    made.buffers = buffers;
    made.schema.format = made.format.c_str();
    made.schema.name = made.name.c_str();
    made.schema.flags = ARROW_FLAG_NULLABLE;
    made.schema.release = [](ArrowSchema* schema) { schema->release = nullptr; };
    made.array.length = length;
    made.array.null_count = *buffers.begin() == nullptr ? 0 : -1;
    made.array.n_buffers = static_cast<std::int64_t>(made.buffers.size());
    made.array.buffers = made.buffers.data();
    made.array.release = [](ArrowArray* array) { array->release = nullptr; };
    return made;
  }
  static void adopt(HandMade& parent, HandMade& child) {
    parent.schemas.push_back(&child.schema);
    parent.arrays.push_back(&child.array);
    parent.schema.children = parent.schemas.data();
    parent.schema.n_children = static_cast<std::int64_t>(parent.schemas.size());
    parent.array.children = parent.arrays.data();
    parent.array.n_children = parent.schema.n_children;
  }

  // `offset` rows of the columns come before the first of the struct array.
  ArrowArrayStream stream(std::int64_t rows, std::int64_t offset = 0) {
    whole_ = &make("", "+s", rows, {nullptr});
    whole_->array.offset = offset;
    for (HandMade* const column : columns_) {
      adopt(*whole_, *column);
    }
    ArrowArrayStream stream{};
    stream.private_data = this;
    stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
      *out = of(self).whole_->schema;
      out->private_data = self->private_data;
      out->release = [](ArrowSchema* schema) {
        ++static_cast<HandMadeStream*>(schema->private_data)->released;
        schema->release = nullptr;
      };
      return 0;
    };
    stream.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
      *out = {};
      if (std::exchange(of(self).given_, true)) {
        return of(self).code;
      }
      *out = of(self).whole_->array;
      out->private_data = self->private_data;
      out->release = [](ArrowArray* array) {
        ++static_cast<HandMadeStream*>(array->private_data)->released;
        array->release = nullptr;
      };
      return 0;
    };
    stream.get_last_error = [](ArrowArrayStream* self) {
      return of(self).code == 0 ? nullptr : "the producer stumbled";
    };
    stream.release = [](ArrowArrayStream* self) {
      ++of(self).released;
      self->release = nullptr;
    };
    return stream;
  }

  int released = 0;  // the stream, the schema and the array are one each
  int code = 0;      // of the end

 private:
  static HandMadeStream& of(ArrowArrayStream* stream) { return *static_cast<HandMadeStream*>(stream->private_data); }

  std::list<HandMade> made_;
  std::vector<HandMade*> columns_;
  HandMade* whole_ = nullptr;
  bool given_ = false;
};

Texts importedTexts(ArrowArrayStream stream) {
  const auto source = importArrow(stream);
  Account account;
  return test::textsOf(*source, account);
}

std::string importFailure(ArrowArrayStream stream) {
  try {
    static_cast<void>(importedTexts(stream));
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return "no failure";
}

constexpr std::array<std::int64_t, 3> kTimes = {10, 20, 30};

TEST(ArrowImport, takesTimesAlone) {
  HandMadeStream made;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  made.add("nonsense", "+m", 3, {nullptr});
  EXPECT_EQ(importedTexts(made.stream(3)), (Texts{"10 data 0 0", "20 data 0 0", "30 data 0 0"}));
  EXPECT_EQ(made.released, 3);
}

TEST(ArrowImport, takesSlices) {
  HandMadeStream made;
  made.add("time_ns", "l", 2, {nullptr, kTimes.data()}).array.offset = 1;
  EXPECT_EQ(importedTexts(made.stream(1, 1)), (Texts{"30 data 0 0"}));
}

TEST(ArrowImport, takesNumbersOfEveryType) {
  const std::array<std::int8_t, 3> i8 = {1, 2, 3};
  const std::array<std::int16_t, 3> i16 = {1, 2, 3};
  const std::array<std::int32_t, 3> i32 = {1, 2, 3};
  const std::array<std::int64_t, 3> i64 = {1, 2, 3};
  const std::uint8_t bits = 0b101;
  struct Case {
    const char* format;
    const void* values;
    std::string second;
  };
  const std::vector<Case> cases = {{"c", i8.data(), "2"},  {"C", i8.data(), "2"},  {"s", i16.data(), "2"},
                                   {"S", i16.data(), "2"}, {"i", i32.data(), "2"}, {"I", i32.data(), "2"},
                                   {"l", i64.data(), "2"}, {"L", i64.data(), "2"}, {"b", &bits, "0"}};
  for (const Case& test : cases) {
    HandMadeStream made;
    made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
    made.add("bus", test.format, 3, {nullptr, test.values});
    EXPECT_EQ(importedTexts(made.stream(3))[1], "20 data " + test.second + " 0") << test.format;
  }
}

TEST(ArrowImport, takesDurations) {
  for (const auto& [format, first] : {std::pair("tDn", "10 "), std::pair("tDu", "10000 "),
                                      std::pair("tDm", "10000000 "), std::pair("tDs", "10000000000 ")}) {
    HandMadeStream made;
    made.add("time_ns", format, 3, {nullptr, kTimes.data()});
    EXPECT_EQ(importedTexts(made.stream(3))[0].substr(0, std::strlen(first)), first) << format;
  }
}

// "data", "event" and, where the validity says so, nothing.
constexpr std::string_view kKinds = "dataeventevent";
constexpr std::uint8_t kFirstTwo = 0b011;

TEST(ArrowImport, takesTextsOfEveryForm) {
  const std::array<std::int32_t, 4> offsets = {0, 4, 9, 14};
  const std::array<std::int64_t, 4> longOffsets = {0, 4, 9, 14};
  const Texts expected = {"10 data 0 0", "20 event 0 0", "30 data 0 0"};
  for (const bool isLong : {false, true}) {
    HandMadeStream made;
    made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
    made.add("kind", isLong ? "U" : "u", 3,
             {&kFirstTwo, isLong ? static_cast<const void*>(longOffsets.data()) : offsets.data(), kKinds.data()});
    EXPECT_EQ(importedTexts(made.stream(3)), expected);
  }
}

TEST(ArrowImport, takesDictionaries) {
  const std::array<std::int32_t, 4> offsets = {0, 4, 9, 14};
  const std::array<std::uint32_t, 3> indices = {1, 0, 2};
  HandMadeStream made;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  HandMade& kind = made.add("kind", "I", 3, {nullptr, indices.data()});
  HandMade& names = made.make("", "u", 3, {&kFirstTwo, offsets.data(), kKinds.data()});
  kind.schema.dictionary = &names.schema;
  kind.array.dictionary = &names.array;
  EXPECT_EQ(importedTexts(made.stream(3)), (Texts{"10 event 0 0", "20 data 0 0", "30 data 0 0"}));
}

struct View {
  std::int32_t length;
  std::array<char, 4> start;
  std::int32_t buffer;
  std::int32_t offset;
};

TEST(ArrowImport, takesViews) {
  constexpr std::string_view kLong = "..a text of more than twelve bytes";
  const std::array<std::int64_t, 1> lengths = {static_cast<std::int64_t>(kLong.size())};
  std::array<View, 3> views = {View{5, {'s', 'h', 'o', 'r'}, 't', 0}, View{32, {'a', ' ', 't', 'e'}, 0, 2},
                               View{0, {}, 0, 0}};
  const auto read = [&] {
    HandMadeStream made;
    made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
    made.add("text", "vu", 3, {nullptr, views.data(), kLong.data(), lengths.data()});
    return importFailure(made.stream(3));
  };
  HandMadeStream made;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  made.add("text", "vu", 3, {nullptr, views.data(), kLong.data(), lengths.data()});
  EXPECT_EQ(importedTexts(made.stream(3)),
            (Texts{"10 data 0 0 \"short\"", "20 data 0 0 \"a text of more than twelve bytes\"", "30 data 0 0 \"\""}));
  views[1].offset = 3;
  EXPECT_NE(read().find("text has a view beyond its buffer"), std::string::npos);
  views[1].buffer = 1;
  EXPECT_NE(read().find("of a buffer that there is not"), std::string::npos);
  views[1].length = -1;
  EXPECT_NE(read().find("negative length"), std::string::npos);
}

TEST(ArrowImport, takesBytesOfEveryForm) {
  constexpr std::array<std::uint8_t, 6> kBytes = {1, 2, 3, 4, 5, 6};
  const std::array<std::int32_t, 4> offsets = {0, 2, 4, 6};
  const std::array<std::int64_t, 4> longOffsets = {0, 2, 4, 6};
  struct Case {
    const char* format;
    std::vector<const void*> buffers;
    bool isList;
  };
  const std::vector<Case> cases = {
      {"z", {nullptr, offsets.data(), kBytes.data()}, false},
      {"Z", {nullptr, longOffsets.data(), kBytes.data()}, false},
      {"w:2", {nullptr, kBytes.data()}, false},
      {"+l", {nullptr, offsets.data()}, true},
      {"+L", {nullptr, longOffsets.data()}, true},
      {"+w:2", {nullptr}, true},
  };
  for (const Case& test : cases) {
    HandMadeStream made;
    made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
    HandMade& data = made.add("data", test.format, 3, {nullptr});
    data.buffers = test.buffers;
    data.array.buffers = data.buffers.data();
    data.array.n_buffers = static_cast<std::int64_t>(data.buffers.size());
    if (test.isList) {
      HandMadeStream::adopt(data, made.make("item", "C", 6, {nullptr, kBytes.data()}));
    }
    EXPECT_EQ(importedTexts(made.stream(3)), (Texts{"10 data 0 0 [0102]", "20 data 0 0 [0304]", "30 data 0 0 [0506]"}))
        << test.format;
  }
}

TEST(ArrowImport, refusesWhatIsNoFrames) {
  const std::array<std::int64_t, 3> large = {1, 70'000, -1};
  const std::array<std::int32_t, 4> falling = {0, 4, 2, 6};
  const std::array<double, 3> reals = {1.0, 2.0, 3.0};
  constexpr std::string_view kText = "\xFF\xFE\xFD\xFC\xFB\xFA";
  const std::array<std::int32_t, 4> offsets = {0, 2, 4, 6};
  struct Case {
    std::string text;
    std::function<void(HandMadeStream&)> build;
  };
  const auto withTimes = [](HandMadeStream& made) { made.add("time_ns", "l", 3, {nullptr, kTimes.data()}); };
  const std::vector<Case> cases = {
      {"there is no column time_ns",
       [](HandMadeStream& made) {
         made.add("bus", "l", 3, {nullptr, kTimes.data()});
       }},
      {"the column time_ns has the type g",
       [&](HandMadeStream& made) {
         made.add("time_ns", "g", 3, {nullptr, reals.data()});
       }},
      {"the column bus holds 70000",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("bus", "l", 3, {nullptr, large.data()});
       }},
      {"has offsets that don't grow",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("text", "u", 3, {nullptr, falling.data(), kKinds.data()});
       }},
      {"a text is no UTF-8",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("text", "u", 3, {nullptr, offsets.data(), kText.data()});
       }},
      {"there is no kind",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("kind", "u", 3, {nullptr, offsets.data(), kText.data()});
       }},
      {"there is no kind 10",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("kind", "l", 3, {nullptr, kTimes.data()});
       }},
      {"the column id is shorter than the others",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("id", "l", 2, {nullptr, kTimes.data()});
       }},
      {"has too few buffers",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("text", "u", 3, {nullptr, offsets.data()});
       }},
      {"has a null for a buffer",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("id", "I", 3, {nullptr, nullptr});
       }},
      {"285 years",
       [](HandMadeStream& made) {
         static constexpr std::array<std::int64_t, 3> kFar = {INT64_MAX, 0, 0};
         made.add("time_ns", "l", 3, {nullptr, kFar.data()});
       }},
  };
  for (const Case& test : cases) {
    HandMadeStream made;
    test.build(made);
    const std::string failure = importFailure(made.stream(3));
    EXPECT_NE(failure.find(test.text), std::string::npos) << failure;
    EXPECT_GE(made.released, 2) << test.text;
  }
}

TEST(ArrowImport, refusesColumnsThatBreakTheRules) {
  const std::array<std::int32_t, 4> offsets = {0, 4, 9, 14};
  const std::array<std::uint32_t, 3> indices = {0, 9, 0};
  static constexpr std::array<std::uint64_t, 3> kLarge = {std::uint64_t{1} << 63, 0, 0};
  static constexpr std::array<std::int64_t, 3> kLong = {INT64_MAX / 2, 0, 0};
  struct Case {
    std::string text;
    std::function<void(HandMadeStream&)> build;
  };
  const auto withTimes = [](HandMadeStream& made) { made.add("time_ns", "l", 3, {nullptr, kTimes.data()}); };
  const std::vector<Case> cases = {
      {"a number that is too large",
       [&](HandMadeStream& made) {
         made.add("time_ns", "L", 3, {nullptr, kLarge.data()});
       }},
      {"a duration that is too long",
       [&](HandMadeStream& made) {
         made.add("time_ns", "tDs", 3, {nullptr, kLong.data()});
       }},
      {"has the type +l",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("data", "+l", 3, {nullptr, offsets.data()});
       }},
      {"has the type w:x",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("data", "w:x", 3, {nullptr, offsets.data()});
       }},
      {"lacks its dictionary",
       [&](HandMadeStream& made) {
         withTimes(made);
         HandMade& kind = made.add("kind", "I", 3, {nullptr, indices.data()});
         kind.schema.dictionary = &made.make("", "u", 3, {nullptr, offsets.data(), kKinds.data()}).schema;
       }},
      {"an index beyond its dictionary",
       [&](HandMadeStream& made) {
         withTimes(made);
         HandMade& kind = made.add("kind", "I", 3, {nullptr, indices.data()});
         HandMade& names = made.make("", "u", 3, {nullptr, offsets.data(), kKinds.data()});
         kind.schema.dictionary = &names.schema;
         kind.array.dictionary = &names.array;
       }},
      {"has a null for a buffer",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("data", "w:4", 3, {nullptr, nullptr});
       }},
      {"has a null for a buffer",
       [&](HandMadeStream& made) {
         withTimes(made);
         made.add("text", "vu", 3, {nullptr, nullptr, nullptr});
       }},
  };
  for (const Case& test : cases) {
    HandMadeStream made;
    test.build(made);
    const std::string failure = importFailure(made.stream(3));
    EXPECT_NE(failure.find(test.text), std::string::npos) << test.text << ": " << failure;
  }
}

TEST(ArrowImport, saysLittleOfItsStream) {
  HandMadeStream made;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  ArrowArrayStream stream = made.stream(3);
  const auto source = importArrow(stream);
  EXPECT_EQ(source->bytesRead(), 0U);
  EXPECT_EQ(source->head().places, PlaceUnit::Record);
  EXPECT_FALSE(source->head().start.has_value());
}

TEST(ArrowImport, refusesArraysThatAreNotAsTheirSchema) {
  HandMadeStream made;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  ArrowArrayStream stream = made.stream(-1);
  EXPECT_NE(importFailure(stream).find("not as its schema"), std::string::npos);
}

TEST(ArrowImport, takesNumbersOfDictionaries) {
  const std::array<std::int64_t, 2> values = {7, 9};
  const std::array<std::uint8_t, 3> indices = {1, 0, 1};
  HandMadeStream made;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  HandMade& bus = made.add("bus", "C", 3, {nullptr, indices.data()});
  HandMade& numbers = made.make("", "l", 2, {nullptr, values.data()});
  bus.schema.dictionary = &numbers.schema;
  bus.array.dictionary = &numbers.array;
  made.add("text", "n", 3, {nullptr});
  EXPECT_EQ(importedTexts(made.stream(3)), (Texts{"10 data 9 0", "20 data 7 0", "30 data 9 0"}));
}

TEST(ArrowImport, tellsOfAFailureOfTheProducer) {
  HandMadeStream made;
  made.code = EIO;
  made.add("time_ns", "l", 3, {nullptr, kTimes.data()});
  EXPECT_NE(importFailure(made.stream(3)).find("the producer stumbled"), std::string::npos);
}

}  // namespace
}  // namespace xlatr
