#include "formats/native/btr_frames.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "formats/native/btr_directory.hpp"
#include "formats/native/btr_sector_output.hpp"
#include "formats/native/btr_slot_frame.hpp"
#include "formats/native/session_clock.hpp"
#include "io/buffered_output.hpp"
#include "platform/files.hpp"
#include "util/date_time.hpp"
#include "util/render.hpp"
#include "util/start_time.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kMicrosecondNs = 1'000;
constexpr std::size_t kSectorsHeld = 128;

// ---- reading

// The sectors of one session in the order in which they were recorded, whatever stands between them.
class SessionSectors {
 public:
  SessionSectors(BtrSectors& file, const BtrDirectory& directory) : file_(file), directory_(directory) {}

  void begin(const BtrSessionArea& area);
  // The next sector; null at the end.
  [[nodiscard]] const std::uint8_t* next(std::uint64_t place, Account& account);
  [[nodiscard]] std::uint64_t sectorsRead() const { return sectorsRead_; }

 private:
  // So many sectors without one of the session are its end: what a logger loses is less, and reading the rest of a
  // large and empty memory would be for nothing.
  static constexpr std::uint64_t kLargestGap = 2048;
  // The same where the newest sector is searched for.
  static constexpr std::uint64_t kLargestGapOfSearch = 64;

  [[nodiscard]] bool isOwn(const std::uint8_t* bytes) const;
  [[nodiscard]] std::optional<std::uint8_t> wrapCounterFrom(std::uint64_t sector, std::uint64_t most);
  [[nodiscard]] std::uint64_t findOldest();
  [[nodiscard]] const std::uint8_t* nextOfRun(std::uint64_t place, Account& account);

  BtrSectors& file_;
  const BtrDirectory& directory_;
  BtrSessionArea area_;
  std::uint64_t oldest_ = 0;
  std::uint64_t next_ = 0;  // of the run at hand
  std::uint64_t end_ = 0;
  std::uint64_t foreign_ = 0;  // sectors since the last one of the session
  std::uint64_t sectorsRead_ = 0;
};

bool SessionSectors::isOwn(const std::uint8_t* bytes) const {
  constexpr std::uint32_t kDate = 0x00FFFFFF;
  constexpr std::size_t kTime = layoutOffset<&DataSector::time>();
  constexpr std::size_t kCheck = layoutOffset<&DataSector::check>();
  const auto stamp = loadLittle<std::uint32_t>(bytes);
  const auto time = loadLittle<std::uint32_t>(bytes + kTime);
  const SessionDateTime& start = area_.description.dateAndTime;
  return stamp != 0 && time == start.timeWord() && (stamp & kDate) == start.dateWord() &&
         loadLittle<std::uint32_t>(bytes + kCheck) == (stamp ^ time);
}

// The wrap counter of the session's first sector at or after this one.
std::optional<std::uint8_t> SessionSectors::wrapCounterFrom(std::uint64_t sector, std::uint64_t most) {
  const std::uint64_t end = std::min(area_.end, sector + most);
  for (; sector < end; ++sector) {
    const std::uint8_t* const bytes = file_.read(sector);
    if (bytes != nullptr && isOwn(bytes)) {
      return static_cast<std::uint8_t>(loadLittle<std::uint32_t>(bytes) >> 24U);
    }
  }
  return std::nullopt;
}

// A session that came to the end of its area went on at the beginning, with another wrap counter: its oldest sector is
// the one after the newest.
std::uint64_t SessionSectors::findOldest() {
  const auto newest = wrapCounterFrom(area_.first, kLargestGap);
  if (!newest) {
    return area_.first;
  }
  std::uint64_t low = area_.first;
  std::uint64_t high = area_.end;
  while (high - low > 1) {
    const std::uint64_t middle = low + (high - low) / 2;
    (wrapCounterFrom(middle, kLargestGapOfSearch) == newest ? low : high) = middle;
  }
  return high < area_.end && wrapCounterFrom(high, kLargestGapOfSearch) ? high : area_.first;
}

void SessionSectors::begin(const BtrSessionArea& area) {
  area_ = area;
  oldest_ = findOldest();
  next_ = oldest_;
  end_ = area.end;
  foreign_ = 0;
}

const std::uint8_t* SessionSectors::next(std::uint64_t place, Account& account) {
  const std::uint8_t* bytes = nextOfRun(place, account);
  if (bytes == nullptr && end_ == area_.end && oldest_ != area_.first) {
    next_ = area_.first;
    end_ = oldest_;
    foreign_ = 0;
    bytes = nextOfRun(place, account);
  }
  return bytes;
}

const std::uint8_t* SessionSectors::nextOfRun(std::uint64_t place, Account& account) {
  while (next_ < end_ && foreign_ < kLargestGap) {
    const std::uint64_t number = next_++;
    const std::uint8_t* const bytes = file_.read(number);
    ++sectorsRead_;
    if (bytes != nullptr && isOwn(bytes)) {
      for (; foreign_ > 0; --foreign_) {
        account.note(Remark::RecordNotUnderstood, place);
      }
      return bytes;
    }
    foreign_ += directory_.sectors.contains(static_cast<std::uint32_t>(number)) ? 0U : 1U;
  }
  return nullptr;
}

class BtrFrameSource final : public FrameSource {
 public:
  // One session, or all.
  BtrFrameSource(const InputSource& source, std::optional<std::size_t> session)
      : fileSize_(source.size().value_or(0)),
        file_(source, kSectorsHeld),
        directory_(fileSize_ == 0 ? BtrDirectory() : BtrDirectory::read(file_, fileSize_ / kBtrSectorSize)),
        sectors_(file_, directory_),
        session_(session.value_or(0)),
        end_(session ? *session + 1 : directory_.sessions.size()) {
    head_.path = source.name();
    head_.format = XLATR_FORMAT_BTR;
    head_.places = PlaceUnit::Record;
    if (session_ < directory_.sessions.size()) {
      head_.version = directory_.sessions[session_].description.version;
      if (const auto start = directory_.sessions[session_].start()) {
        head_.start = TraceStart{.sinceEpochNs = *start};
      }
    }
    if (fileSize_ == 0 || fileSize_ % kBtrSectorSize != 0) {
      directory_.damage.note(Remark::SourceCut, 1);
    }
    several_ = end_ - session_ > 1;
  }

  [[nodiscard]] std::size_t sessions() const { return directory_.sessions.size(); }
  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override {
    return done_ ? fileSize_ : std::min(fileSize_, (1 + sectors_.sectorsRead()) * kBtrSectorSize);
  }

  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    account.add(std::exchange(directory_.damage, Account()));
    while (!batch.full() && (slot_ < DataSector::kEntries || nextSector(batch, account))) {
      while (!batch.full() && slot_ < DataSector::kEntries) {
        append(sector_.entries[slot_++], batch, account);
      }
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  [[nodiscard]] bool nextSector(FrameBatch& batch, Account& account);
  void beginSession(FrameBatch& batch);
  void append(const MsgEntry& slot, FrameBatch& batch, Account& account);
  [[nodiscard]] std::optional<std::int64_t> timeOf(UnsignedMicroseconds clock) const;

  std::uint64_t fileSize_;
  BtrSectors file_;
  BtrDirectory directory_;
  SessionSectors sectors_;
  StreamHead head_;
  std::size_t session_;  // at hand, or the next one
  std::size_t end_;
  bool several_ = false;
  bool inSession_ = false;
  bool done_ = false;
  SessionClocks clocks_;
  std::uint64_t clockStartUs_ = 0;  // of the session at hand
  std::int64_t sessionNs_ = 0;      // where it begins on the clock of the stream
  std::int64_t timeNs_ = 0;         // of the last frame
  DataSector sector_;
  std::size_t slot_ = DataSector::kEntries;  // the next one
  std::uint64_t slots_ = 0;                  // that held something
  Frame frame_;
  SlotBytes bytes_{};
};

// The next sector of the session at hand, or of one after it. Sessions begin while the batch has room for it.
bool BtrFrameSource::nextSector(FrameBatch& batch, Account& account) {
  while (!batch.full()) {
    if (!inSession_) {
      if (session_ >= end_) {
        done_ = true;
        return false;
      }
      beginSession(batch);
      continue;
    }
    if (const std::uint8_t* const bytes = sectors_.next(slots_ + 1, account)) {
      sector_ = DataSector::fromBytes(SectorBytes(bytes, kBtrSectorSize));
      slot_ = 0;
      return true;
    }
    inSession_ = false;
    ++session_;
  }
  return false;
}

std::string textOfSession(std::size_t number, const BtrSessionArea& session) {
  TextBuffer text;
  text.append("session ");
  appendDecimal(text, std::uint64_t{number});
  const SessionDateTime& date = session.description.dateAndTime;
  if (!session.start()) {
    text.append(" started at an unknown time");
    return std::string(text.view());
  }
  constexpr std::uint64_t kFirstYear = 2000;
  text.append(" started ");
  appendDecimal(text, kFirstYear + date.year);
  const auto append = [&text](char separator, std::uint8_t value) {
    text.append(separator);
    text.append(static_cast<char>('0' + value / 10 % 10));
    text.append(static_cast<char>('0' + value % 10));
  };
  append('-', date.month);
  append('-', date.day);
  append(' ', date.hour);
  append(':', date.minute);
  append(':', date.second);
  append('.', date.hundredths);
  return std::string(text.view());
}

void BtrFrameSource::beginSession(FrameBatch& batch) {
  // Writers that are no logger note the microseconds of the session's start there, though its time stamps begin at 0.
  constexpr std::uint64_t kMillisecondUs = 1'000;
  const BtrSessionArea& session = directory_.sessions[session_];
  const std::uint64_t stamp = session.description.startTimestampUs;
  clockStartUs_ = stamp < kMillisecondUs ? 0 : stamp;
  clocks_.start(UnsignedMicroseconds(stamp));
  sectors_.begin(session);
  inSession_ = true;
  const auto start = session.start();
  sessionNs_ = start && head_.start ? *start - head_.start->sinceEpochNs : timeNs_;
  timeNs_ = sessionNs_;
  if (several_) {
    const std::string text = textOfSession(session_ + 1, session);
    frame_.reset();
    frame_.kind = FrameKind::Event;
    frame_.timeNs = sessionNs_;
    frame_.text = text;
    frame_.place = slots_ + 1;
    batch.append(frame_);
  }
}

std::optional<std::int64_t> BtrFrameSource::timeOf(UnsignedMicroseconds clock) const {
  constexpr std::int64_t kMost = kFarthestNs / kMicrosecondNs;
  const auto sinceStart = static_cast<std::int64_t>(clock.count() - clockStartUs_);
  if (sinceStart < -kMost || sinceStart > kMost) {
    return std::nullopt;
  }
  const std::int64_t time = sessionNs_ / kMicrosecondNs + sinceStart;
  return time >= -kMost && time <= kMost ? std::optional(time * kMicrosecondNs) : std::nullopt;
}

void BtrFrameSource::append(const MsgEntry& slot, FrameBatch& batch, Account& account) {
  frame_.reset();
  const SlotContent content = takeSlot(slot, frame_, bytes_);
  if (content == SlotContent::Nothing) {
    return;
  }
  ++slots_;
  if (content == SlotContent::Tick) {
    clocks_.tick(slot.timestampUs, Way::complete());
    return;
  }
  const auto time = timeOf(clocks_.advance(slot.getSource(), slot.timestampUs, Way::complete()));
  if (!time || content == SlotContent::Unexpected) {
    account.note(Remark::RecordNotUnderstood, slots_);
  }
  timeNs_ = time.value_or(timeNs_);
  frame_.timeNs = timeNs_;
  frame_.place = slots_;
  batch.append(frame_);
}

// ---- writing

// A logger has no session of such a length.
constexpr std::int64_t kLongestSessionNs = std::chrono::nanoseconds(std::chrono::hours(24 * 3652)).count();

consteval FrameCapacity btrRow(double version) {
  FrameCapacity row;
  row.version = version;
  row.of(FrameKind::Data) = {.held = true};
  row.of(FrameKind::Remote) = {.held = true};
  const std::uint32_t counters = attributeBits(FrameAttribute::TxErrors, FrameAttribute::RxErrors);
  const std::uint32_t error = counters | attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition);
  // The direction of an error is one of its bytes.
  row.of(FrameKind::Error) = {
      .held = true, .direction = true, .needsDirection = true, .attributes = error, .filled = error};
  row.of(FrameKind::Counters) = {.held = true, .attributes = counters, .needed = counters};
  const std::uint32_t state = attributeBits(FrameAttribute::BusState);
  row.of(FrameKind::Status) = {.held = true, .attributes = state, .needed = state};
  const std::uint32_t type = attributeBits(FrameAttribute::RecordType);
  row.of(FrameKind::Event) = {.held = true, .bus = false, .bytes = true, .attributes = type, .needed = type};
  row.longDlc = true;
  row.remoteDlc = true;
  row.longRemoteDlc = true;
  row.needsRemoteDlc = true;
  row.highestBus = SessionClocks::kLogger;
  row.resolutionNs = kMicrosecondNs;
  row.earliestNs = 0;
  row.latestNs = kLongestSessionNs;
  row.stepBackNs = std::chrono::nanoseconds(SessionClock::kStepBack).count();
  row.startResolutionNs = 10'000'000;
  row.guessedBus = 1;
  row.hasRoomFor = hasSlotFor;
  return row;
}

constexpr std::array kBtrCapacities = {btrRow(1.0), btrRow(2.0), btrRow(3.0)};

const FrameCapacity& btrCapacityOf(const SinkSettings& settings) {
  const auto* const found = std::ranges::find(kBtrCapacities, settings.version, &FrameCapacity::version);
  return found == kBtrCapacities.end() ? kBtrCapacities.back() : *found;
}

// A start that the years of a session don't reach is no date: all zeros, which no reader takes for one.
SessionDateTime sessionStartOf(const StreamHead& head) {
  constexpr int kFirstYear = 2000;
  constexpr int kLastYear = 2255;
  if (!head.start) {
    return {};
  }
  const DateTime start = dateTimeOfStart(head.start->sinceEpochNs);
  if (start.year < kFirstYear || start.year > kLastYear) {
    return {};
  }
  SessionDateTime date = SessionDateTime::fromDateTime(start);
  // The weekday belongs to the date, not to the zone of the machine.
  const std::chrono::sys_days day = std::chrono::year(start.year) / start.month / start.day;
  date.dayOfWeek = static_cast<std::uint8_t>(std::chrono::weekday(day).c_encoding());
  return date;
}

class BtrFrameSink final : public FrameSink {
 public:
  BtrFrameSink(const OutputTarget& target, const StreamHead& head, const SinkSettings& settings)
      : capacity_(btrCapacityOf(settings)) {
    SessionDescriptor session;
    session.version = static_cast<std::uint8_t>(std::lround(capacity_.version));
    session.dateAndTime = sessionStartOf(head);
    session.startLocation.sector = BtrSectorOutput::kFirstDataSector;
    output_.open(target);
    sectors_.begin(session);
  }

  void write(const FrameBatch& batch, Account& account) override {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      batch.get(row, frame_);
      write(frame_, account);
    }
  }

  void close() override {
    sectors_.flushSector();
    output_.close();
  }

  [[nodiscard]] std::uint64_t bytesWritten() const override { return output_.position(); }

 private:
  void write(Frame& frame, Account& account);  // changes the frame
  [[nodiscard]] bool setClock(std::size_t source, UnsignedMicroseconds time);
  void tickUpTo(UnsignedMicroseconds time);

  const FrameCapacity& capacity_;
  BufferedOutput output_;
  BtrSectorOutput sectors_{output_};
  SessionClocks clocks_;  // as a reader has them after what was written
  Frame frame_;           // the one that is being written
};

// Whether a reader's clock of that source can be made to show the time, which it then is.
bool BtrFrameSink::setClock(std::size_t source, UnsignedMicroseconds time) {
  const auto stamp = static_cast<std::uint32_t>(time.count());
  const auto shows = [&] {
    SessionClock clock = clocks_.of(source);
    clock.advance(stamp, Way::complete());
    return clock.now() == time;
  };
  if (!shows()) {
    if (time > clocks_.of(source).now()) {
      tickUpTo(time);
    }
    if (!shows()) {
      return false;
    }
  }
  clocks_.advance(source, stamp, Way::complete());
  return true;
}

// Takes all clocks along to where the next time stamp can't be mistaken.
void BtrFrameSink::tickUpTo(UnsignedMicroseconds time) {
  constexpr UnsignedMicroseconds kBetweenTicks = std::chrono::hours(1);
  UnsignedMicroseconds now = clocks_.of(SessionClocks::kLogger).now();
  while (now < time) {
    now = std::min(time, now + kBetweenTicks);
    const auto stamp = static_cast<std::uint32_t>(now.count());
    sectors_.write(slotOfTick(stamp));
    clocks_.tick(stamp, Way::complete());
  }
}

void BtrFrameSink::write(Frame& frame, Account& account) {
  if (const std::optional<Remark> reason = whyNotHeld(capacity_, frame)) {
    account.addDropped(*reason, frame.place);
    return;
  }
  constexpr std::int64_t kHalf = kMicrosecondNs / 2;
  const UnsignedMicroseconds time(static_cast<std::uint64_t>((frame.timeNs + kHalf) / kMicrosecondNs));
  if (!setClock(sourceOf(frame), time)) {
    account.addDropped(Remark::TimeNotHeld, frame.place);
    return;
  }
  account.addWritten(1);
  reduceTo(capacity_, frame, account);
  MsgEntry slot = slotOf(frame);
  slot.timestampUs = static_cast<std::uint32_t>(time.count());
  sectors_.write(slot);
}

}  // namespace

std::span<const FrameCapacity> btrCapacities() {
  return kBtrCapacities;
}

bool looksLikeBtr(std::string_view start) {
  constexpr std::uint8_t kHighestVersion = 3;
  SessionDescriptor first;
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(start.data()), start.size());
  if (start.size() < kBtrSectorSize || !tryReadFields(bytes, first)) {
    return false;
  }
  const SessionDateTime& date = first.dateAndTime;
  const bool noDate = date.month == 0 && date.day == 0;
  const bool isDate = date.month >= 1 && date.month <= 12 && date.day >= 1 && date.day <= 31;
  return first.version >= 1 && first.version <= kHighestVersion && first.continued <= 1 && first.isUsed() &&
         (noDate || isDate) && date.hour < 24 && date.minute < 60 && date.second < 60;
}

std::unique_ptr<FrameSource> openBtrFrames(const InputSource& input) {
  return std::make_unique<BtrFrameSource>(input, std::nullopt);
}

std::unique_ptr<FrameSource> openBtrSessionFrames(const InputSource& input, std::size_t place) {
  auto source = std::make_unique<BtrFrameSource>(input, place);
  return place < source->sessions() ? std::move(source) : nullptr;
}

std::unique_ptr<FrameSink> createBtrFrames(const OutputTarget& target, const StreamHead& head,
                                           const SinkSettings& settings) {
  return std::make_unique<BtrFrameSink>(target, head, settings);
}

}  // namespace xlatr
