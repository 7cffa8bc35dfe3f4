// What happens on a bus beside its frames. Such an event is said in words: "Receive error: id 3, length 8, timeout".
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_object_frames.hpp"
#include "util/hex.hpp"
#include "util/little_endian.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

using blf_log::Object;

enum class Form : std::uint8_t {
  Number,    // unsigned, of the width
  HighHalf,  // the same of the upper four bits of a byte
  LowHalf,
  Signed,   // of 32 bits
  Real,     // of 64 bits
  Percent,  // of the width, in hundredths
  Hex,      // of the width, all digits
  Id,       // of a LIN frame
};

// What a value stands for; without a text it says nothing.
struct ValueWord {
  std::uint64_t value;
  std::string_view text;
};

// A part of a body.
struct Part {
  std::string_view name;
  std::uint16_t offset;
  std::uint8_t width;  // 1, 2, 4 or 8 bytes
  Form form = Form::Number;
  std::string_view unit = {};
  std::span<const ValueWord> words = {};  // of some values, which then stand for themselves
};

// `length` is that of the bytes that are there.
struct ByteRun {
  std::uint16_t offset = 0;  // 0 if there is none
  std::uint8_t most = 0;
  std::uint16_t lengthOffset = 0;
  std::uint16_t validOffset = 0;  // of a byte that is not 0 if they count, 0 if they always do
};

struct EventLayout {
  std::uint32_t type;
  FrameKind kind;
  std::string_view label;
  std::uint16_t busOffset;  // kNoBus if there is none
  std::uint16_t least;      // bytes that make a whole body; late parts may be missing
  std::span<const Part> parts = {};
  ByteRun bytes = {};
};

constexpr std::uint16_t kNoBus = 0xFFFF;
constexpr std::uint16_t kTimedBus = 12;  // after the start of the frame and the baud rate

// ---- words

constexpr ValueWord kZeroIsNothing[] = {{0, ""}};
constexpr ValueWord kNoId[] = {{0xFF, ""}};
constexpr ValueWord kSimulated[] = {{0, ""}, {1, "simulated"}};
constexpr ValueWord kExternal[] = {{0, ""}, {1, "external"}};
constexpr ValueWord kModels[] = {{0, "classic checksum"}, {1, "enhanced checksum"}, {0xFF, "unknown checksum"}};
constexpr ValueWord kSlow[] = {{0, ""}, {1, "slow"}};
constexpr ValueWord kCutOff[] = {{0, ""}, {1, "cut off by a sync break"}};
constexpr ValueWord kPhases[] = {{0, "begins"}, {1, "goes on"}, {2, "ends"}};
constexpr ValueWord kLengthChecks[] = {{0, ""}, {1, "too short"}, {2, "too long"}};
constexpr ValueWord kSleepReasons[] = {{0, "start of measurement"}, {1, "sleep frame"},  {2, "idle timeout"},
                                       {3, "silent sleep frame"},   {9, "external"},     {10, "internal"},
                                       {11, "traffic on the bus"},  {18, "stayed awake"}};
constexpr ValueWord kWaitingFor[] = {
    {0, "while idle"},         {1, "waiting for the break"}, {2, "waiting for the sync field"},
    {3, "waiting for the id"}, {14, "after another error"},  {15, "while asleep"}};
constexpr ValueWord kReasons[] = {{0, "timeout"},
                                  {1, "byte against the protocol"},
                                  {2, "framing error"},
                                  {3, "unexpected break"},
                                  {4, "unknown reason"}};
constexpr ValueWord kDisturbances[] = {
    {0, "dominant"}, {1, "recessive"}, {2, "by a header"}, {3, "by a bit stream"}, {4, "by a variable bit stream"}};
constexpr ValueWord kPulses[] = {{0, ""}, {1, "sent"}, {2, "external"}, {4, "received"}};
constexpr ValueWord kSettings[] = {{0, "reset"}, {1, "bit timing"}, {0xFF, "invalid"}};
constexpr ValueWord kBuses[] = {{1, "CAN"}, {5, "LIN"}};
constexpr ValueWord kTriggers[] = {{0, ""}, {1, "logging starts"}, {2, "logging stops"}};
constexpr ValueWord kQueues[] = {{0, "first queue"}, {1, "second queue"}, {2, "both queues"}};

// ---- parts

constexpr Part kStatistics[] = {{"standard data frames", 4, 4},    {"extended data frames", 8, 4},
                                {"standard remote frames", 12, 4}, {"extended remote frames", 16, 4},
                                {"error frames", 20, 4},           {"overload frames", 24, 4},
                                {"load", 2, 2, Form::Percent, "%"}};
constexpr Part kTrigger[] = {{"kind", 18, 2, Form::Number, "", kTriggers},
                             {"before", 0, 8, Form::Number, "ns", kZeroIsNothing},
                             {"after", 8, 8, Form::Number, "ns", kZeroIsNothing}};
constexpr Part kFoundLength[] = {{"id", 2, 1, Form::Id}, {"length", 3, 1}};
constexpr Part kFoundModel[] = {{"id", 2, 1, Form::Id}, {"checksum model", 3, 1, Form::Number, "", kModels}};
constexpr Part kOldReceiveError[] = {{"id", 2, 1, Form::Id},
                                     {"length", 3, 1},
                                     {"reason", 8, 1, Form::HighHalf, "", kReasons},
                                     {"state", 8, 1, Form::LowHalf, "", kWaitingFor},
                                     {"byte", 9, 1, Form::Hex}};
constexpr Part kSlaveTimeout[] = {{"slave", 2, 1}, {"state left", 3, 1}, {"state entered", 4, 4}};
constexpr Part kSchedule[] = {{"from", 2, 1}, {"to", 3, 1}};
constexpr Part kOldSync[] = {{"edges after", 4, 2, Form::Number, "us"},
                             {"", 6, 2, Form::Number, "us"},
                             {"", 8, 2, Form::Number, "us"},
                             {"", 10, 2, Form::Number, "us"}};
constexpr Part kSync[] = {{"edges after", 32, 2, Form::Number, "us"},
                          {"", 34, 2, Form::Number, "us"},
                          {"", 36, 2, Form::Number, "us"},
                          {"", 38, 2, Form::Number, "us"}};
constexpr Part kBaudRate[] = {{"", 4, 4, Form::Signed, "bit/s"}};
constexpr Part kWakeUp[] = {{"byte", 2, 1, Form::Hex}, {"external", 3, 1, Form::Number, "", kExternal}};
constexpr Part kOldSpike[] = {{"width", 4, 4, Form::Number, "us"}};
constexpr Part kPulse[] = {{"flags", 2, 1, Form::Number, "", kPulses}};
constexpr Part kLinStatistics[] = {{"load", 8, 8, Form::Real}, {"bursts", 16, 4},
                                   {"bursts overrun", 20, 4},  {"frames sent", 24, 4},
                                   {"frames received", 28, 4}, {"frames without response", 32, 4}};
constexpr Part kReceiveError[] = {{"id", 37, 1, Form::Id},
                                  {"length", 38, 1},
                                  {"reason", 122, 1, Form::HighHalf, "", kReasons},
                                  {"state", 122, 1, Form::LowHalf, "", kWaitingFor},
                                  {"byte", 123, 1, Form::Hex}};
constexpr Part kTimedWakeUp[] = {{"length check", 16, 1, Form::Number, "", kLengthChecks},
                                 {"byte", 17, 1, Form::Hex},
                                 {"external", 18, 1, Form::Number, "", kExternal}};
constexpr Part kSpike[] = {{"width", 16, 4, Form::Number, "us"}, {"simulated", 20, 1, Form::Number, "", kSimulated}};
constexpr Part kDominant[] = {{"phase", 16, 1, Form::Number, "", kPhases}, {"length", 24, 8, Form::Number, "ns"}};
constexpr Part kUnexpectedWakeUp[] = {{"width", 16, 8, Form::Number, "ns", kZeroIsNothing}, {"byte", 24, 1, Form::Hex}};
constexpr Part kShortResponse[] = {{"id", 37, 1, Form::Id},
                                   {"length", 38, 1},
                                   {"slow", 125, 1, Form::Number, "", kSlow},
                                   {"cut off", 126, 1, Form::Number, "", kCutOff}};
constexpr Part kDisturbance[] = {{"kind", 4, 4, Form::Number, "", kDisturbances},
                                 {"id", 2, 1, Form::Id, "", kNoId},
                                 {"by id", 3, 1, Form::Id, "", kNoId},
                                 {"byte", 8, 4},
                                 {"bit", 12, 4},
                                 {"offset", 16, 4, Form::Number, "of 16 per bit"},
                                 {"length", 20, 4, Form::Number, "of 16 per bit"}};
constexpr Part kLostByDriver[] = {{"bus type", 0, 4, Form::Number, "", kBuses}};
constexpr Part kLossBegins[] = {{"queue", 0, 4, Form::Number, "", kQueues}};
constexpr Part kLossEnds[] = {{"queue", 0, 4, Form::Number, "", kQueues}, {"objects lost", 12, 4}};
constexpr Part kCanSettings[] = {{"kind", 2, 1, Form::Number, "", kSettings}};
constexpr Part kSleep[] = {{"reason", 2, 1, Form::Number, "", kSleepReasons}};

constexpr ByteRun kResponse = {116, 9, 112};

// ---- events. A LIN bus falls asleep and wakes up in the words of LIN traces.

constexpr std::string_view kBusSleep = "Bus Sleep";
constexpr std::string_view kBusWakeUp = "Bus Wake Up";

constexpr auto kEvents = std::to_array<EventLayout>({
    {4, FrameKind::Event, "Bus statistics", 0, 28, kStatistics},
    {5, FrameKind::Event, "Trigger", 16, 20, kTrigger},
    {13, FrameKind::LinEvent, "Frame length found", 0, 4, kFoundLength},
    {14, FrameKind::LinEvent, "Receive error", 0, 10, kOldReceiveError},
    {16, FrameKind::LinEvent, "Slave timeout", 0, 8, kSlaveTimeout},
    {17, FrameKind::LinEvent, "Schedule table changed", 0, 4, kSchedule},
    {18, FrameKind::LinEvent, "Synchronization error", 0, 12, kOldSync},
    {19, FrameKind::LinEvent, "Baud rate", 0, 8, kBaudRate},
    {20, FrameKind::LinEvent, kBusSleep, 0, 3, kSleep},
    {21, FrameKind::LinEvent, kBusWakeUp, 0, 3, kWakeUp},
    {42, FrameKind::LinEvent, "Checksum model found", 0, 4, kFoundModel},
    {43, FrameKind::LinEvent, "Spike", 0, 8, kOldSpike},
    {44, FrameKind::Event, "Hardware synchronization", 0, 3, kPulse},
    {54, FrameKind::LinEvent, "Bus statistics", 0, 36, kLinStatistics},
    {59, FrameKind::LinEvent, "Synchronization error", kTimedBus, 40, kSync},
    {61, FrameKind::LinEvent, "Receive error", kTimedBus, 124, kReceiveError, {112, 8, 38, 127}},
    {62, FrameKind::LinEvent, kBusWakeUp, kTimedBus, 18, kTimedWakeUp},
    {63, FrameKind::LinEvent, "Spike", kTimedBus, 20, kSpike},
    {64, FrameKind::LinEvent, "Dominant signal too long", kTimedBus, 17, kDominant},
    {75, FrameKind::LinEvent, "Dominant signal too long", kTimedBus, 17, kDominant},
    {87, FrameKind::LinEvent, "Unexpected wake-up", kTimedBus, 24, kUnexpectedWakeUp},
    {88, FrameKind::LinEvent, "Short or slow response", kTimedBus, 125, kShortResponse, kResponse},
    {89, FrameKind::LinEvent, "Disturbance", 0, 24, kDisturbance},
    {91, FrameKind::Event, "Driver lost data", 4, 6, kLostByDriver},
    {105, FrameKind::LinEvent, "Short or slow response", kTimedBus, 125, kShortResponse, kResponse},
    {125, FrameKind::Event, "Data loss begins", kNoBus, 4, kLossBegins},
    {126, FrameKind::Event, "Data loss ends", kNoBus, 16, kLossEnds},
    {129, FrameKind::Event, "CAN settings changed", 0, 3, kCanSettings},
});

// ---- from a body to its text

using Body = std::span<const std::uint8_t>;

std::uint64_t valueOf(const Part& part, Body body) {
  std::uint64_t value = 0;
  for (std::size_t at = part.width; at-- > 0;) {
    value = value << 8 | body[part.offset + at];
  }
  constexpr std::uint64_t kHalf = 0x0F;
  if (part.form == Form::HighHalf) {
    return value >> 4 & kHalf;
  }
  return part.form == Form::LowHalf ? value & kHalf : value;
}

void appendReal(TextBuffer& text, double value) {
  std::array<char, 32> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text.append(std::string_view(digits.data(), static_cast<std::size_t>(result.ptr - digits.data())));
}

void appendValue(const Part& part, Body body, std::uint64_t value, TextBuffer& text) {
  switch (part.form) {
    case Form::Number:
    case Form::HighHalf:
    case Form::LowHalf:
      appendDecimal(text, value);
      return;
    case Form::Signed: {
      const auto number = static_cast<std::int32_t>(value);
      text.append(number < 0 ? "-" : "");
      appendDecimal(text, number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number));
      return;
    }
    case Form::Real:
      appendReal(text, loadLittle<double>(body.data() + part.offset));
      return;
    case Form::Percent:
      appendUnitsFixed(text, static_cast<std::int64_t>(value), 2, 0);
      return;
    case Form::Hex:
      appendHex(text, static_cast<std::uint32_t>(value), std::size_t{2} * part.width);
      return;
    case Form::Id:
      appendHex(text, static_cast<std::uint32_t>(value), 2);
      return;
  }
}

const ValueWord* findWord(const Part& part, std::uint64_t value) {
  for (const ValueWord& word : part.words) {
    if (word.value == value) {
      return &word;
    }
  }
  return nullptr;
}

// Begins the next part of an event's text.
void beginPart(const EventLayout& event, TextBuffer& text) {
  text.append(text.size() == event.label.size() ? ": " : ", ");
}

void appendPart(const EventLayout& event, const Part& part, Body body, TextBuffer& text) {
  if (part.offset + std::size_t{part.width} > body.size()) {
    return;
  }
  const std::uint64_t value = valueOf(part, body);
  const ValueWord* const word = findWord(part, value);
  if (word != nullptr && word->text.empty()) {
    return;
  }
  beginPart(event, text);
  if (word != nullptr) {
    text.append(word->text);
    return;
  }
  text.append(part.name);
  text.append(part.name.empty() ? "" : " ");
  appendValue(part, body, value, text);
  text.append(part.unit.empty() ? "" : " ");
  text.append(part.unit);
}

void appendBytes(const EventLayout& event, Body body, TextBuffer& text) {
  const ByteRun& run = event.bytes;
  const bool counts = run.validOffset == 0 || (run.validOffset < body.size() && body[run.validOffset] != 0);
  const std::size_t length = run.offset != 0 ? std::min(body[run.lengthOffset], run.most) : 0;
  if (counts && length > 0) {
    beginPart(event, text);
    text.append("data ");
    appendHexBytes(text, body.subspan(run.offset, length));
  }
}

// Of type 20, which is for falling asleep and for waking up.
bool isAwake(Body body) {
  constexpr std::uint8_t kFirstReasonToWakeUp = 9;
  constexpr std::uint8_t kIsAwake = 2;
  return body[2] >= kFirstReasonToWakeUp || (body.size() > 3 && (body[3] & kIsAwake) != 0);
}

const EventLayout* findEvent(std::uint32_t type) {
  static constexpr auto kPlaces = [] {
    std::array<std::uint8_t, kBlfTypeLimit> places{};
    for (std::size_t at = 0; at < kEvents.size(); ++at) {
      places[kEvents[at].type] = static_cast<std::uint8_t>(at);
    }
    return places;
  }();
  return &kEvents[kPlaces[type]];
}

bool readEvent(const Object& object, Frame& frame, BlfReading& reading) {
  constexpr std::uint32_t kStatisticsType = 4;
  constexpr std::uint32_t kSleepType = 20;
  const EventLayout* event = findEvent(object.type);
  const Body body = object.body;
  if (body.size() < event->least) {
    return false;
  }
  static constexpr EventLayout kAwake = {kSleepType, FrameKind::LinEvent, kBusWakeUp, 0, 3, kSleep};
  if (object.type == kSleepType && isAwake(body)) {
    event = &kAwake;
  }
  frame.kind = event->kind;
  frame.bus = event->busOffset != kNoBus ? loadLittle<std::uint16_t>(body.data() + event->busOffset) : std::uint16_t{0};
  if (object.type == kStatisticsType) {
    frame.attributes.set(FrameAttribute::BusLoad, loadLittle<std::uint16_t>(body.data() + 2));
  }
  reading.text.clear();
  reading.text.append(event->label);
  for (const Part& part : event->parts) {
    appendPart(*event, part, body, reading.text);
  }
  appendBytes(*event, body, reading.text);
  frame.text = reading.text.view();
  return true;
}

constexpr auto kEventObjects = [] {
  constexpr std::uint16_t kLongest = 152;  // of any event
  std::array<BlfObjectType, kEvents.size()> objects{};
  for (std::size_t at = 0; at < objects.size(); ++at) {
    objects[at] = {kEvents[at].type, readEvent, kLongest};
  }
  return objects;
}();

}  // namespace

std::span<const BlfObjectType> blfEventObjects() {
  return kEventObjects;
}

}  // namespace xlatr
