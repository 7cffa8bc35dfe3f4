// A message of an ASC log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "formats/asc/asc_flags.hpp"
#include "messages/message.hpp"
#include "util/text_buffer.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// What a line is. Only frames, errors and some status lines become valid messages; the other kinds exist for callers
// that look at invalid messages.
enum class AscLineKind : std::uint32_t {
  Unclassified = 0,  // includes a frame line whose identifier was not read
  StandardFrame = 1,
  ExtendedFrame = 2,
  SessionRemoteFrame = 3,  // never read; it comes from a session record
  ErrorFrame = 4,
  Statistic = 5,
  Status = 6,  // or an error counter
  OverloadFrame = 7,
  FdErrorFrame = 10,
  LogTriggerEvent = 11,
  TriggerEvent = 12,
  LogDirectStart = 13,
  LogDirectStop = 14,
  BlockBegin = 15,
  BlockEnd = 16,
  EnvironmentVariable = 17,
  SystemVariable = 18,
  Macro = 19,
  GpsDevice = 20,
  Comment = 21,
  Marker = 22,
  TestFeatureSet = 23,
};

enum class AscFrameClass : std::uint32_t { None = 0, Classic = 1, Fd = 2 };

// Whether the time of a line counts from the start of the log or from the line before.
enum class AscTimestamps : std::uint32_t { Absolute = 0, Relative = 1 };

// One line of an ASC log of any version, and what becomes one: a writer of ASC logs turns every other class into this
// one first. Bus numbers count from 1; 0 means that the bus was not read.
class AscMessage final : public MessageStyleCan {
 public:
  AscMessage() { bus = 0; }

  // Back to what a new message is, keeping the storage of its texts and data. The base of numbers and the mode of time
  // stamps belong to the file; its reader sets them after this.
  void reset();

  // Reads a line of a file of this version, after a reset. A line that is not a frame, or can't be understood, leaves
  // the message not valid, with what was read so far and the line as its parsing text; nothing is raised for it. The
  // exception is a line that ends before a token that its form needs: it raises std::out_of_range with the text
  // "invalid vector subscript", because a log that is cut off can't be trusted.
  void parseLine(std::string_view line, double version);

  // Append the line of a file, without line end, in the form of version 7.0.0 or of 8.1.0; nothing if the message has
  // no such form. toText7 has none for CAN FD frames; toText8 prints classic frames as CANFD lines, too.
  void toText7(TextBuffer& out) const;
  void toText8(TextBuffer& out) const;

  // The status text followed by the maker's mark; empty if there is no text.
  [[nodiscard]] std::string getStatusText() const;
  // Type, direction and position of an error frame, as the eight binary digits of an ECC.
  [[nodiscard]] std::string getErrorCounterBits() const;

  // Turns a relative time into an absolute one by adding it to `reference`, which becomes the sum, and returns true.
  // Leaves an absolute time and the reference alone and returns false.
  bool AdjustTime(RealSeconds& reference);

  [[nodiscard]] bool isRemote() const { return (flags & asc_flag::kRemote) != 0; }

  RealSeconds time{};
  std::string parsingText;   // the line as read
  std::string commentText;   // the text of a status, or the name of a message
  double fileVersion = 0.0;  // of the file it came from
  AscFrameClass frameClass = AscFrameClass::None;
  AscLineKind lineKind = AscLineKind::Unclassified;
  std::uint32_t flags = 0;  // asc_flag
  bool hexBase = true;      // the line's numbers are hexadecimal
  AscTimestamps timestampsMode = AscTimestamps::Absolute;
  bool symbolicId = false;      // the identifier field holds a name
  std::uint32_t errorCode = 0;  // the ECC, or the Code item, of an error frame
  std::uint64_t txErrors = 0;
  std::uint64_t rxErrors = 0;
  bool textVersion8 = false;  // to be printed in the 8.1.0 form
};

}  // namespace xlatr
