#include "frames/frame_capacity.hpp"

#include <bit>
#include <string_view>

#include "messages/can_dlc.hpp"
#include "messages/enumerations.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr std::uint16_t kDirection = frame_flag::kReceived | frame_flag::kTransmitted;
constexpr std::uint16_t kBits = frame_flag::kBrs | frame_flag::kEsi;

// The flags that mean something for a kind of frame, besides its direction.
constexpr std::uint16_t flagsOf(FrameKind kind) {
  switch (kind) {
    case FrameKind::Data:
      return frame_flag::kExtended | frame_flag::kFd | frame_flag::kXl | kBits;
    case FrameKind::Remote:
      return frame_flag::kExtended | frame_flag::kDlcKnown;
    case FrameKind::Lin:
      return frame_flag::kEnhancedChecksum;
    default:
      return 0;
  }
}

constexpr std::size_t kLongestXl = kMaxXlDlc + 1;  // no frame has more bytes

bool hasIdentifier(FrameKind kind) {
  return kind == FrameKind::Data || kind == FrameKind::Remote || kind == FrameKind::Lin;
}

bool hasPayload(FrameKind kind) {
  return kind == FrameKind::Data || kind == FrameKind::Lin;
}

bool saysItInWords(FrameKind kind) {
  return kind == FrameKind::Status || kind == FrameKind::LinEvent || kind == FrameKind::Event ||
         kind == FrameKind::Comment;
}

std::uint32_t highestIdentifier(const Frame& frame) {
  constexpr std::uint32_t kHighestBase = 0x7FF;
  constexpr std::uint32_t kHighestExtended = 0x1FFFFFFF;
  constexpr std::uint32_t kHighestLin = 0x3F;
  if (frame.kind == FrameKind::Lin) {
    return kHighestLin;
  }
  return frame.has(frame_flag::kExtended) ? kHighestExtended : kHighestBase;
}

// Whether there are frames of so many bytes, and files of the version have them.
bool holdsLength(const FrameCapacity& capacity, const Frame& frame) {
  constexpr std::size_t kLongestClassic = 8;
  const std::size_t length = frame.data.size();
  if (frame.kind == FrameKind::Remote) {
    return length == 0;
  }
  if (frame.kind == FrameKind::Data && frame.has(frame_flag::kXl)) {
    return length > 0 && length <= kLongestXl;
  }
  if (frame.kind == FrameKind::Lin || !frame.has(frame_flag::kFd)) {
    return length <= kLongestClassic;
  }
  return length <= capacity.longestData &&
         dlcToLength(lengthToDlc(static_cast<std::uint32_t>(length))) == static_cast<std::uint32_t>(length);
}

// The DLC of a data or LIN frame, which follows from its length; but eight bytes of a classic frame have several, and
// the bytes of a LIN frame may not be known.
std::uint16_t dlcOf(const FrameCapacity& capacity, const Frame& frame) {
  constexpr std::uint16_t kClassic = 8;
  if (frame.kind == FrameKind::Lin && frame.data.empty() && capacity.hiddenLinData && frame.dlc <= kClassic) {
    return frame.dlc;
  }
  const auto length = static_cast<std::uint32_t>(frame.data.size());
  if (frame.has(frame_flag::kXl)) {
    return static_cast<std::uint16_t>(lengthToXlDlc(length));
  }
  const bool several = frame.kind == FrameKind::Data && !frame.has(frame_flag::kFd) && length == kClassic;
  if (several && frame.dlc > kClassic && frame.dlc < kDlcLengths.size()) {
    return frame.dlc;
  }
  // Nearly all frames have no more bytes than this, and no code but their length.
  return static_cast<std::uint16_t>(length <= kClassic ? length : lengthToDlc(length));
}

// Bytes that are no payload, or an identifier where there is none.
bool saysMoreThan(const KindCapacity& kind, const Frame& frame) {
  return (!hasIdentifier(frame.kind) && frame.id != 0) ||
         (!hasPayload(frame.kind) && !kind.bytes && !frame.data.empty());
}

bool holdsText(TextCapacity capacity, std::string_view text) {
  const auto lacks = [text](std::string_view characters) { return !containsAny(text, characters); };
  constexpr std::string_view kSpaces = " \t\n\v\f\r";
  switch (capacity) {
    case TextCapacity::Word:
      return !text.empty() && lacks(kSpaces);
    case TextCapacity::Words:
      return !text.empty() && lacks(kSpaces.substr(1)) && text.front() != ' ' && text.back() != ' ' &&
             text.find("  ") == std::string_view::npos;
    case TextCapacity::Line:
      return lacks("\n\r");
    case TextCapacity::Any:
      return true;
    case TextCapacity::None:
      break;
  }
  return false;
}

std::int64_t rounded(std::int64_t time, std::int64_t resolution) {
  const std::int64_t rest = time % resolution;
  const std::int64_t whole = time - rest;
  if (rest >= resolution - rest) {
    return whole + resolution;
  }
  return -rest >= resolution + rest ? whole - resolution : whole;
}

// One frame that loses what a file can't hold.
class Reduction {
 public:
  Reduction(const FrameCapacity& capacity, Frame& frame, Account& account)
      : capacity_(capacity), kind_(capacity.of(frame.kind)), frame_(frame), account_(account) {}

  void run() {
    if (capacity_.whole) {
      dropContradiction();
      roundTime();
      return;
    }
    reduceFlags();
    reduceDlc();
    reduceText();
    reduceAttributes();
    settleChecksumModel();
    reduceBus();
    roundTime();
  }

 private:
  void roundTime() {
    const std::int64_t time = frame_.timeNs;
    if (capacity_.resolutionNs > 1) {
      frame_.timeNs = rounded(time, capacity_.resolutionNs);
    }
    noteIf(frame_.timeNs != time, Remark::TimeRounded);
  }

  // What is transmitted is not received, and a DLC that is not known has no value.
  void dropContradiction() {
    if (frame_.has(frame_flag::kTransmitted)) {
      frame_.unset(frame_flag::kReceived);
    }
    if (frame_.kind == FrameKind::Remote && !frame_.has(frame_flag::kDlcKnown)) {
      frame_.dlc = 0;
    }
  }

  void noteIf(bool lost, Remark remark) {
    if (lost) {
      account_.note(remark, frame_.place);
    }
  }

  void lose(std::uint16_t flags, Remark remark) {
    noteIf(frame_.has(flags), remark);
    frame_.unset(flags);
  }

  void reduceBus() {
    if (!capacity_.namesBuses() || !kind_.bus) {
      noteIf(frame_.bus != 0, Remark::BusLost);
      frame_.bus = 0;
    } else if (frame_.bus == 0 && capacity_.guessedBus != 0 && !kind_.noBus) {
      frame_.bus = capacity_.guessedBus;
      account_.note(Remark::BusGuessed, frame_.place);
    }
  }

  // Whether the line gets what the frame lacks.
  [[nodiscard]] bool fills() const {
    return kind_.fill == FillRule::Always || (frame_.attributes.present() & kind_.filled) != 0 ||
           (kind_.fill == FillRule::WithDirection && frame_.has(kDirection));
  }

  void reduceFlags() {
    frame_.flags = static_cast<std::uint16_t>(frame_.flags & (flagsOf(frame_.kind) | kDirection));
    if (frame_.has(frame_flag::kXl)) {
      frame_.unset(frame_flag::kFd);
    }
    if (!frame_.has(frame_flag::kFd)) {
      frame_.unset(kBits);
    }
    if (!capacity_.bitsOfFd) {
      lose(kBits, Remark::BitsLost);
    }
    if (!capacity_.enhancedChecksum) {
      lose(frame_flag::kEnhancedChecksum, Remark::DetailLost);
    }
    dropContradiction();
    if (!kind_.direction) {
      lose(kDirection, Remark::DirectionLost);
    } else if (kind_.needsDirection && !frame_.has(kDirection) && fills()) {
      frame_.set(frame_flag::kReceived);
      account_.note(Remark::DirectionGuessed, frame_.place);
    }
  }

  void reduceDlc() {
    const std::uint16_t dlc = frame_.dlc;
    if (frame_.kind == FrameKind::Remote) {
      reduceRemoteDlc();
      return;
    }
    frame_.dlc = hasPayload(frame_.kind) ? dlcOf(capacity_, frame_) : std::uint16_t{0};
    constexpr std::uint16_t kLongest = 8;
    if (frame_.kind == FrameKind::Data && !frame_.has(frame_flag::kFd | frame_flag::kXl) && !capacity_.longDlc &&
        frame_.dlc > kLongest) {
      frame_.dlc = kLongest;
    }
    noteIf(frame_.dlc != dlc, Remark::DlcLost);
  }

  void reduceRemoteDlc() {
    if (!capacity_.remoteDlc) {
      lose(frame_flag::kDlcKnown, Remark::DlcLost);
    } else if (capacity_.needsRemoteDlc && !frame_.has(frame_flag::kDlcKnown)) {
      frame_.set(frame_flag::kDlcKnown);
      frame_.dlc = 0;
      account_.note(Remark::LengthGuessed, frame_.place);
    }
    constexpr std::uint16_t kLongest = 8;
    const std::uint16_t dlc = frame_.dlc;
    if (!frame_.has(frame_flag::kDlcKnown)) {
      frame_.dlc = 0;
    } else if (dlc > kLongest && (!capacity_.longRemoteDlc || dlc >= kDlcLengths.size())) {
      frame_.dlc = kLongest;
      account_.note(Remark::DlcLost, frame_.place);
    }
  }

  void reduceText() {
    if (frame_.text && !holdsText(kind_.text, *frame_.text)) {
      frame_.text.reset();
      account_.note(Remark::TextLost, frame_.place);
    }
  }

  [[nodiscard]] bool holdsErrorPosition() const {
    const auto position = frame_.attributes.get(FrameAttribute::ErrorPosition);
    return !position || (*position >= capacity_.lowestErrorPosition && *position <= capacity_.highestErrorPosition);
  }

  void reduceAttributes() {
    const std::uint32_t present = frame_.attributes.present();
    const std::uint32_t held =
        holdsErrorPosition() ? kind_.attributes : kind_.attributes & ~attributeBits(FrameAttribute::ErrorPosition);
    if ((present & ~held) != 0) {
      frame_.attributes = frame_.attributes.only(held);
      account_.note(Remark::DetailLost, frame_.place);
    }
    const std::uint32_t missing = fills() ? kind_.filled & ~present : 0;
    noteIf(missing != 0, Remark::DetailGuessed);
    for (std::uint32_t left = missing; left != 0; left &= left - 1) {
      const auto attribute = static_cast<FrameAttribute>(std::countr_zero(left));
      frame_.attributes.set(attribute, filledAttribute(attribute));
    }
  }

  // The flag and the attribute say the same.
  void settleChecksumModel() {
    constexpr auto kModel = FrameAttribute::ChecksumModel;
    constexpr auto kEnhanced = static_cast<std::uint32_t>(ChecksumType::Enhanced);
    if (frame_.kind != FrameKind::Lin || (kind_.attributes & attributeBits(kModel)) == 0) {
      return;
    }
    if (!frame_.attributes.has(kModel) && frame_.has(frame_flag::kEnhancedChecksum)) {
      frame_.attributes.set(kModel, kEnhanced);
    }
    frame_.unset(frame_flag::kEnhancedChecksum);
    if (frame_.attributes.get(kModel) == kEnhanced) {
      frame_.set(frame_flag::kEnhancedChecksum);
    }
  }

  const FrameCapacity& capacity_;
  const KindCapacity& kind_;
  Frame& frame_;
  Account& account_;
};

std::optional<Remark> whyNotWhole(const FrameCapacity& capacity, const Frame& frame) {
  if (frame.kind == FrameKind::Comment) {
    return std::nullopt;
  }
  if (frame.data.size() > kLongestXl) {
    return Remark::LengthNotHeld;
  }
  const bool inTime = frame.timeNs >= capacity.earliestNs && frame.timeNs <= capacity.latestNs;
  return inTime ? std::nullopt : std::optional(Remark::TimeNotHeld);
}

}  // namespace

std::optional<Remark> whyNotHeld(const FrameCapacity& capacity, const Frame& frame) {
  const KindCapacity& kind = capacity.of(frame.kind);
  if (!kind.held) {
    return Remark::KindNotHeld;
  }
  if (capacity.whole) {
    return whyNotWhole(capacity, frame);
  }
  if (frame.kind == FrameKind::Data && frame.has(frame_flag::kXl) && !capacity.xl) {
    return Remark::XlNotHeld;
  }
  if (frame.kind == FrameKind::Data && frame.has(frame_flag::kFd) && !frame.has(frame_flag::kXl) && !capacity.fd) {
    return Remark::FdNotHeld;
  }
  if (hasIdentifier(frame.kind) && !holdsLength(capacity, frame)) {
    return Remark::LengthNotHeld;
  }
  if (hasIdentifier(frame.kind) && frame.id > highestIdentifier(frame)) {
    return Remark::IdentifierNotHeld;
  }
  if (frame.kind == FrameKind::Comment) {
    return std::nullopt;
  }
  if (frame.text && saysItInWords(frame.kind) && !holdsText(kind.text, *frame.text)) {
    return Remark::TextNotHeld;
  }
  const bool hasNeeded = (frame.attributes.present() & kind.needed) == kind.needed;
  if (!hasNeeded || saysMoreThan(kind, frame) || (capacity.hasRoomFor != nullptr && !capacity.hasRoomFor(frame))) {
    return Remark::DetailNotHeld;
  }
  const std::uint16_t bus = frame.bus == 0 && !kind.noBus ? capacity.guessedBus : frame.bus;
  if (capacity.namesBuses() && kind.bus && (bus < capacity.lowestBus || bus > capacity.highestBus)) {
    return Remark::BusNotHeld;
  }
  if (frame.timeNs < capacity.earliestNs || frame.timeNs > capacity.latestNs) {
    return Remark::TimeNotHeld;
  }
  return std::nullopt;
}

void reduceTo(const FrameCapacity& capacity, Frame& frame, Account& account) {
  Reduction(capacity, frame, account).run();
}

Frame reducedTo(const FrameCapacity& capacity, const Frame& frame, Account& account) {
  Frame reduced = frame;
  reduceTo(capacity, reduced, account);
  return reduced;
}

}  // namespace xlatr
