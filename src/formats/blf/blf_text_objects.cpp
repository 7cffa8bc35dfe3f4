// Texts of users and of recorders, markers, and variables: what has texts of any length after its fields. Their
// encoding is stated nowhere. A text ends at its first zero byte; what follows in its room is left over from an editor.
#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_object_frames.hpp"
#include "frames/frame_batch.hpp"
#include "util/little_endian.hpp"
#include "util/render.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

using blf_log::Object;
using Body = std::span<const std::uint8_t>;

std::uint32_t numberAt(Body body, std::size_t offset) {
  return loadLittle<std::uint32_t>(body.data() + offset);
}

// The variable part of a body, taken piece by piece.
class VariablePart {
 public:
  explicit VariablePart(Body bytes) : bytes_(bytes) {}

  // The next bytes, as far as they are there.
  Body take(std::uint32_t length) {
    const Body taken = bytes_.first(std::min<std::size_t>(length, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }

 private:
  Body bytes_;
};

// Writes the text of an event.
class EventText {
 public:
  explicit EventText(BlfReading& reading) : reading_(reading) { reading_.text.clear(); }

  EventText& words(std::string_view words) {
    reading_.text.append(words);
    return *this;
  }
  EventText& number(std::uint64_t value) {
    appendDecimal(reading_.text, value);
    return *this;
  }
  EventText& text(Body bytes) {
    const std::string_view whole(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return words(asUtf8(whole.substr(0, whole.find('\0')), reading_.converted));
  }
  // The same after a separator, or nothing.
  EventText& text(std::string_view separator, Body bytes) {
    return bytes.empty() || bytes.front() == 0 ? *this : words(separator).text(bytes);
  }
  EventText& hex(Body bytes) {
    appendHexBytes(reading_.text, bytes.first(std::min(bytes.size(), kMostBytes)));
    return *this;
  }
  // Numbers of the type, one after the other.
  template <typename Number>
  EventText& numbers(Body bytes) {
    std::string_view separator;
    for (; bytes.size() >= sizeof(Number) && !isLong(); bytes = bytes.subspan(sizeof(Number))) {
      std::array<char, 32> digits{};
      const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), loadLittle<Number>(bytes.data()));
      words(separator).words({digits.data(), static_cast<std::size_t>(result.ptr - digits.data())});
      separator = ", ";
    }
    return *this;
  }

  // Makes it the text of the frame.
  bool finish(Frame& frame) {
    frame.kind = FrameKind::Event;
    std::string_view text = reading_.text.view();
    if (isLong()) {
      text = text.substr(0, utf8Boundary(text, FrameBatch::kLongestText));
      reading_.account->note(Remark::TextCut, frame.place);
    }
    frame.text = text;
    return true;
  }

 private:
  static constexpr std::size_t kMostBytes = FrameBatch::kLongestText / 3 + 1;

  [[nodiscard]] bool isLong() const { return reading_.text.size() > FrameBatch::kLongestText; }

  BlfReading& reading_;
};

// What an application says. Long texts come in pieces, one object each.
bool readAppText(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::size_t kFixed = 16;
  constexpr std::uint32_t kDatabases = 1;
  static constexpr std::array<std::string_view, 5> kLabels = {
      "", "Databases: ", "Description: ", "Attachment: ", "Trace line: "};
  if (object.body.size() < kFixed) {
    return false;
  }
  const std::uint32_t source = numberAt(object.body, 0);
  if (source == kDatabases) {
    frame.bus = numberAt(object.body, 4) >> 8 & 0xFFU;
  }
  EventText text(reading);
  text.words(source < kLabels.size() ? kLabels[source] : "");
  return text.text(VariablePart(object.body.subspan(kFixed)).take(numberAt(object.body, 8))).finish(frame);
}

bool readComment(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::size_t kFixed = 16;
  if (object.body.size() < kFixed) {
    return false;
  }
  return EventText(reading)
      .words("Comment")
      .text(": ", VariablePart(object.body.subspan(kFixed)).take(numberAt(object.body, 4)))
      .finish(frame);
}

// Of a group, with a name and a description.
bool readMarker(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::size_t kFixed = 40;
  if (object.body.size() < kFixed) {
    return false;
  }
  EventText text(reading);
  text.words("Marker");
  VariablePart rest(object.body.subspan(kFixed));
  std::string_view separator = ": ";
  for (const std::size_t lengthOffset : {std::size_t{16}, std::size_t{20}, std::size_t{24}}) {
    const Body part = rest.take(numberAt(object.body, lengthOffset));
    text.text(separator, part);
    separator = part.empty() || part.front() == 0 ? separator : ", ";
  }
  return text.finish(frame);
}

bool readTriggerCondition(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::size_t kFixed = 12;
  static constexpr std::array<std::string_view, 4> kStates = {"", ", starts", ", stops", ", starts and stops"};
  if (object.body.size() < kFixed) {
    return false;
  }
  VariablePart rest(object.body.subspan(kFixed));
  const Body name = rest.take(numberAt(object.body, 4));
  const Body condition = rest.take(numberAt(object.body, 8));
  const std::uint32_t state = numberAt(object.body, 0);
  return EventText(reading)
      .words("Trigger condition")
      .text(" ", name)
      .text(": ", condition)
      .words(state < kStates.size() ? kStates[state] : "")
      .finish(frame);
}

enum class ValueType : std::uint8_t { Double, Int32, Text, Doubles, Int32s, Int64, Bytes };

// One value unless it is an array; what has another size than its type is shown as bytes.
void appendVariable(ValueType type, Body data, EventText& text) {
  const auto isOne = [data](std::size_t size) { return data.size() == size; };
  const auto areSome = [data](std::size_t size) { return data.size() % size == 0; };
  if (type == ValueType::Text) {
    text.text(data);
  } else if ((type == ValueType::Double && isOne(8)) || (type == ValueType::Doubles && areSome(8))) {
    text.numbers<double>(data);
  } else if ((type == ValueType::Int32 && isOne(4)) || (type == ValueType::Int32s && areSome(4))) {
    text.numbers<std::int32_t>(data);
  } else if (type == ValueType::Int64 && isOne(8)) {
    text.numbers<std::int64_t>(data);
  } else {
    text.hex(data);
  }
}

bool readVariable(std::string_view label, ValueType type, VariablePart rest, std::uint32_t nameLength,
                  std::uint32_t dataLength, Frame& frame, BlfReading& reading) {
  EventText text(reading);
  text.words(label).text(" ", rest.take(nameLength)).words(" = ");
  appendVariable(type, rest.take(dataLength), text);
  return text.finish(frame);
}

bool readSystemVariable(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::size_t kFixed = 32;
  // The numbers in the log.
  static constexpr std::array<ValueType, 8> kTypes = {ValueType::Bytes, ValueType::Double,  ValueType::Int32,
                                                      ValueType::Text,  ValueType::Doubles, ValueType::Int32s,
                                                      ValueType::Int64, ValueType::Bytes};
  const Body body = object.body;
  if (body.size() < kFixed) {
    return false;
  }
  const std::uint32_t type = numberAt(body, 0);
  return readVariable("System variable", type < kTypes.size() ? kTypes[type] : ValueType::Bytes,
                      VariablePart(body.subspan(kFixed)), numberAt(body, 16), numberAt(body, 20), frame, reading);
}

// One type of object for each type of value.
template <ValueType kType>
bool readEnvironmentVariable(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::size_t kFixed = 16;
  const Body body = object.body;
  return body.size() >= kFixed && readVariable("Environment variable", kType, VariablePart(body.subspan(kFixed)),
                                               numberAt(body, 0), numberAt(body, 4), frame, reading);
}

constexpr std::array kTextObjects = {
    BlfObjectType{6, readEnvironmentVariable<ValueType::Int32>},
    BlfObjectType{7, readEnvironmentVariable<ValueType::Double>},
    BlfObjectType{8, readEnvironmentVariable<ValueType::Text>},
    BlfObjectType{9, readEnvironmentVariable<ValueType::Bytes>},
    BlfObjectType{65, readAppText},
    BlfObjectType{72, readSystemVariable},
    BlfObjectType{92, readComment},
    BlfObjectType{96, readMarker},
    BlfObjectType{128, readTriggerCondition},
};

}  // namespace

std::span<const BlfObjectType> blfTextObjects() {
  return kTextObjects;
}

}  // namespace xlatr
