// The records of a BTRC trace as frames, and frames as records.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "formats/native/native_record.hpp"
#include "frames/frame.hpp"

namespace xlatr {

// The time stamps of a file in nanoseconds since its start.
class NanosecondScale {
 public:
  NanosecondScale() = default;
  // A tick is ten to the power of the exponent seconds; `start` is the time stamp of the start.
  NanosecondScale(std::int8_t exponent, std::uint64_t start);

  // Rounded to the nearest one, halves away from zero. Nothing for a time that is farther than kFarthestNs.
  [[nodiscard]] std::optional<std::int64_t> nanoseconds(std::uint64_t ticks) const {
    const auto sinceStart = static_cast<std::int64_t>(ticks - start_);
    if (divisor_ != 1) {
      return divided(sinceStart);
    }
    return sinceStart >= -most_ && sinceStart <= most_ ? std::optional(sinceStart * factor_) : std::nullopt;
  }

 private:
  [[nodiscard]] std::int64_t divided(std::int64_t ticks) const;

  std::uint64_t start_ = 0;
  std::int64_t factor_ = 1'000;
  std::int64_t divisor_ = 1;
  std::int64_t most_ = kFarthestNs / 1'000;  // ticks
};

// Fills a frame, which must be like a new one but for its time, from a whole record that is neither filling nor a text.
// The frame refers to the record. Frames, errors, statuses and bus loads are what they are. Every other record is an
// event with its type as FrameAttribute::RecordType and its bytes, but for header, time and bus; one without a time
// keeps that of the frame. False for a record that can't be what its type says, which becomes such an event too, and
// for a frame of fewer bytes than its DLC says.
[[nodiscard]] bool takeRecord(RecordType type, std::span<const std::uint8_t> record, const NanosecondScale& scale,
                              Frame& frame);

// Whether there is a record for the details of the frame, which is of a kind that has one.
[[nodiscard]] bool hasRecordFor(const Frame& frame);

// When the records of a file that is written are.
struct RecordTimes {
  std::uint64_t start = 0;  // the time stamp of the start, in microseconds
  std::int64_t before = 0;  // the time of the frame before, which records without a time have
};

// Adds the record of a frame that has one. False, with nothing added, for an event that would be read as another frame
// than it is.
[[nodiscard]] bool appendRecord(Bytes& out, const Frame& frame, const RecordTimes& times);

}  // namespace xlatr
