// What became of the frames: how many were read and written, and what happened to the others.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace xlatr {

// What can happen to a frame on its way, or to a piece of a source that should have been one.
enum class Remark : std::uint8_t {
  NotSelected,  // nobody wants it

  // Damage in the source. What is left of it is a comment, which counts as read.
  LineNotUnderstood,
  RecordNotUnderstood,
  SourceCut,  // the source ends in the middle of a line, a record or a block
  TextCut,    // a text of more bytes than any trace is meant to have

  // Decided without being told.
  BusGuessed,
  LengthGuessed,
  DirectionGuessed,
  DetailGuessed,
  TimeUnitGuessed,

  // In the source, and no frame.
  OtherBus,

  // What a target can't hold: a comment stands for the frame there, or nothing.
  KindNotHeld,
  FdNotHeld,
  XlNotHeld,
  LengthNotHeld,
  IdentifierNotHeld,
  BusNotHeld,
  TimeNotHeld,
  DetailNotHeld,
  TextNotHeld,  // of a frame that says what it is in words

  // The frame is there, but for this.
  DirectionLost,
  BusLost,
  DlcLost,
  BitsLost,    // BRS or ESI
  DetailLost,  // an attribute
  TextLost,
  TimeRounded,
};
inline constexpr std::size_t kRemarkCount = 27;

// How a remark counts.
enum class RemarkClass : std::uint8_t { Selection, Damage, Guess, NotHeld, Reduced, PassedOver };

struct RemarkInfo {
  Remark remark;
  RemarkClass kind;
  std::string_view name;  // as shown to users and in JSON: "kind_not_held"
  std::string_view text;  // a sentence's end: "the target has no such kind of frame"
};

// In the order of the enumeration.
[[nodiscard]] const std::array<RemarkInfo, kRemarkCount>& remarkTable();
[[nodiscard]] const RemarkInfo& infoOf(Remark remark);

// Adds up: every frame that was read was written, as itself or as a comment, or was dropped, each with a reason. Places
// are those of `Frame::place`.
class Account {
 public:
  struct Count {
    std::uint64_t frames = 0;
    std::uint64_t first = 0;  // the place of the first of them

    bool operator==(const Count&) const = default;
  };

  void addRead(std::uint64_t frames) { read_ += frames; }
  // Frames that stand in the target, reduced or not.
  void addWritten(std::uint64_t frames) { written_ += frames; }
  // One frame that the target can't hold, and for which a comment stands there.
  void addCommented(Remark reason, std::uint64_t place);
  // One frame that is not in the target at all.
  void addDropped(Remark reason, std::uint64_t place) { addDropped(reason, 1, place); }
  // Several, the first of them at this place.
  void addDropped(Remark reason, std::uint64_t frames, std::uint64_t place);
  // Anything else that is to be told; changes none of the sums.
  void note(Remark remark, std::uint64_t place);
  // The same for a piece of a source, a line or a record, of which the first bytes help to see what it is.
  void note(Remark remark, std::uint64_t place, std::string_view line);
  void note(Remark remark, std::uint64_t place, std::span<const std::uint8_t> record);

  [[nodiscard]] std::uint64_t read() const { return read_; }
  [[nodiscard]] std::uint64_t written() const { return written_ + commented_; }
  [[nodiscard]] std::uint64_t commented() const { return commented_; }
  [[nodiscard]] std::uint64_t dropped() const { return dropped_; }
  [[nodiscard]] const Count& commented(Remark reason) const { return commentedBy_[index(reason)]; }
  [[nodiscard]] const Count& dropped(Remark reason) const { return droppedBy_[index(reason)]; }
  [[nodiscard]] const Count& noted(Remark remark) const { return notedBy_[index(remark)]; }
  // How the first piece that was noted so begins: UTF-8, or a record's bytes in hexadecimal digits. Empty if nobody
  // said it. At most kLongestMet bytes.
  [[nodiscard]] const std::string& met(Remark remark) const { return met_[index(remark)]; }
  static constexpr std::size_t kLongestMet = 62;
  // Whether everything that was wanted came over as it was.
  [[nodiscard]] bool complete() const;
  // The same, but that times may have been rounded to those that the target has.
  [[nodiscard]] bool completeButForRounding() const;

  // Adds another account, of a stream that came after this one.
  void add(const Account& other);

 private:
  using Counts = std::array<Count, kRemarkCount>;

  [[nodiscard]] static constexpr std::size_t index(Remark remark) { return static_cast<std::size_t>(remark); }

  std::uint64_t read_ = 0;
  std::uint64_t written_ = 0;
  std::uint64_t commented_ = 0;
  std::uint64_t dropped_ = 0;
  Counts commentedBy_;
  Counts droppedBy_;
  Counts notedBy_;
  std::array<std::string, kRemarkCount> met_;
};

}  // namespace xlatr
