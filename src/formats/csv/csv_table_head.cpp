#include "formats/csv/csv_table_head.hpp"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "util/render.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kBegin = "xlatr: table version=2.0";
constexpr std::string_view kStartField = " start=";
constexpr std::string_view kProducerField = " producer=";
constexpr int kMinutesPerHour = 60;
constexpr int kFarthestZone = 100 * kMinutesPerHour;  // two digits for the hours

using Nanoseconds = std::chrono::duration<std::int64_t, std::nano>;

void appendDigits(TextBuffer& out, std::int64_t value, std::size_t width) {
  char* const digits = out.extend(width);
  for (std::size_t at = width; at > 0; --at) {
    digits[at - 1] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

void appendZone(TextBuffer& out, int minutes) {
  out.append(minutes < 0 ? '-' : '+');
  appendDigits(out, std::abs(minutes) / kMinutesPerHour, 2);
  out.append(':');
  appendDigits(out, std::abs(minutes) % kMinutesPerHour, 2);
}

// ISO 8601.
void appendStart(TextBuffer& out, const TraceStart& start) {
  const Nanoseconds sinceEpoch(start.sinceEpochNs);
  const auto days = std::chrono::floor<std::chrono::days>(sinceEpoch);
  const std::chrono::year_month_day date{std::chrono::sys_days(days)};
  const std::chrono::hh_mm_ss<Nanoseconds> clock(sinceEpoch - days);
  appendDigits(out, static_cast<int>(date.year()), 4);
  out.append('-');
  appendDigits(out, static_cast<unsigned>(date.month()), 2);
  out.append('-');
  appendDigits(out, static_cast<unsigned>(date.day()), 2);
  out.append('T');
  appendDigits(out, clock.hours().count(), 2);
  out.append(':');
  appendDigits(out, clock.minutes().count(), 2);
  out.append(':');
  appendDigits(out, clock.seconds().count(), 2);
  out.append('.');
  appendDigits(out, clock.subseconds().count(), 9);
  if (start.zoneMinutes && std::abs(*start.zoneMinutes) < kFarthestZone) {
    appendZone(out, *start.zoneMinutes);
  }
}

// Takes numbers of fixed width, each with the character after it, off the front of a text.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text) {}

  // A number, or -1 from the first one on that is not as it should be.
  std::int64_t take(std::size_t width, char end) {
    std::int64_t value = 0;
    ok_ = ok_ && rest_.size() >= width && countLeading(rest_.substr(0, width), isDecimalDigit) == width &&
          (end == '\0' || rest_.substr(width).starts_with(end));
    if (!ok_) {
      return -1;
    }
    for (const char digit : rest_.substr(0, width)) {
      value = value * 10 + (digit - '0');
    }
    rest_.remove_prefix(width + (end == '\0' ? 0 : 1));
    return value;
  }
  [[nodiscard]] bool ok() const { return ok_; }
  // The next character, if it is a sign, which is then taken.
  std::optional<int> sign() {
    if (!ok_ || rest_.empty() || (rest_.front() != '+' && rest_.front() != '-')) {
      return std::nullopt;
    }
    const int sign = rest_.front() == '-' ? -1 : 1;
    rest_.remove_prefix(1);
    return sign;
  }
  [[nodiscard]] bool atEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
  bool ok_ = true;
};

std::optional<TraceStart> startOfIsoText(std::string_view text) {
  constexpr std::int64_t kFirstYear = 1678;  // nanoseconds since 1970 reach farther than these
  constexpr std::int64_t kLastYear = 2261;
  Fields fields(text);
  const std::int64_t year = fields.take(4, '-');
  const std::int64_t month = fields.take(2, '-');
  const std::int64_t day = fields.take(2, 'T');
  const std::int64_t hour = fields.take(2, ':');
  const std::int64_t minute = fields.take(2, ':');
  const std::int64_t second = fields.take(2, '.');
  const std::int64_t nanosecond = fields.take(9, '\0');
  TraceStart start;
  if (const auto sign = fields.sign()) {
    const auto hours = static_cast<int>(fields.take(2, ':'));
    start.zoneMinutes = *sign * (hours * kMinutesPerHour + static_cast<int>(fields.take(2, '\0')));
  }
  if (!fields.ok() || !fields.atEnd() || year < kFirstYear || year > kLastYear || hour > 23 || minute > 59 ||
      second > 59) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) {
    return std::nullopt;
  }
  const std::chrono::seconds clock((hour * kMinutesPerHour + minute) * 60 + second);
  start.sinceEpochNs =
      Nanoseconds(std::chrono::sys_days(date).time_since_epoch() + clock + Nanoseconds(nanosecond)).count();
  return start;
}

}  // namespace

void appendCsvTableHead(TextBuffer& out, const StreamHead& head) {
  out.append(' ');
  out.append(kBegin);
  if (head.start) {
    out.append(kStartField);
    appendStart(out, *head.start);
  }
  if (!head.producer.empty()) {
    out.append(kProducerField);
    out.append(head.producer);
  }
}

bool readCsvTableHead(std::string_view text, StreamHead& head) {
  std::string_view rest = text.substr(countLeading(text, isSpaceCharacter));
  if (!rest.starts_with(kBegin)) {
    return false;
  }
  rest.remove_prefix(kBegin.size());
  std::optional<TraceStart> start;
  if (rest.starts_with(kStartField)) {
    rest.remove_prefix(kStartField.size());
    const std::string_view value = rest.substr(0, rest.find(' '));
    rest.remove_prefix(value.size());
    start = startOfIsoText(value);
    if (!start) {
      return false;
    }
  }
  if (!rest.empty() && !rest.starts_with(kProducerField)) {
    return false;
  }
  head.start = start;
  head.producer = rest.empty() ? std::string() : std::string(rest.substr(kProducerField.size()));
  return true;
}

}  // namespace xlatr
