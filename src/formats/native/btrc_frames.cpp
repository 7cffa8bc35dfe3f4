#include "formats/native/btrc_frames.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "formats/native/btrc_blocks.hpp"
#include "formats/native/btrc_record_frame.hpp"
#include "formats/native/native_frame_record.hpp"
#include "frames/frame_comment.hpp"
#include "io/block_input.hpp"
#include "io/buffered_output.hpp"
#include "util/start_time.hpp"
#include "util/text_buffer.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

constexpr std::int64_t kBtrcTick = 1'000;
constexpr std::int64_t kSecondNs = 1'000'000'000;
constexpr std::int64_t kNoStartNs = kNullDateSeconds * kSecondNs;
constexpr std::size_t kInfoRecordSize = kLayoutSize<Native_RecordInfo>;
constexpr std::size_t kCalibrationRecordSize = kLayoutSize<Native_RecordTimeCalibration>;
constexpr std::size_t kCounterSize = kLayoutSize<Native_RecordCounter>;

// A text that is longer than a record goes on in the next text, which begins with this mark. No other text does: the
// mark looks like the beginning of a frame's comment and is none.
constexpr std::string_view kGoesOn = " xlatr: more ";
constexpr std::size_t kLongestPiece = kLongestBtrcRecord - kRecordHeaderSize;
static_assert(kLongestPiece % 4 == 0);

// A full piece fills its record, so that blanks at its end are its own.
constexpr Way wayOfPiece(std::size_t size) {
  return size == kLongestPiece ? Way::compatible() : Way::complete();
}

// ---- reading

// The start that the calibration states; nothing for a date that there is not, and for the null date, which stands for
// none.
std::optional<std::int64_t> startOf(const Native_RecordTimeCalibration& record) {
  constexpr int kFirstYear = 1700;
  constexpr int kLastYear = 2200;
  const std::chrono::year_month_day date{std::chrono::year(record.year), std::chrono::month(record.month),
                                         std::chrono::day(record.day)};
  if (!date.ok() || record.year < kFirstYear || record.year > kLastYear || record.hour > 23 || record.minute > 59 ||
      record.second > 60) {
    return std::nullopt;
  }
  const std::chrono::seconds seconds = std::chrono::sys_days(date).time_since_epoch() +
                                       std::chrono::hours(record.hour) + std::chrono::minutes(record.minute) +
                                       std::chrono::seconds(record.second);
  const std::int64_t start = seconds.count() * kSecondNs + std::int64_t{record.microseconds} * kBtrcTick;
  return start == kNoStartNs ? std::nullopt : std::optional(start);
}

bool isNullDate(const Native_RecordTimeCalibration& record) {
  return record.year == 1899 && record.month == 12 && record.day == 30;
}

// A record as it stands in the file.
struct RawRecord {
  Native_RecordHeader header;
  std::span<const std::uint8_t> bytes;  // valid until the input moves
};

class BtrcFrameSource final : public FrameSource {
 public:
  explicit BtrcFrameSource(const InputSource& source) : input_(source) {
    head_.path = source.name();
    head_.format = XLATR_FORMAT_BTRC;
    head_.places = PlaceUnit::Record;
    readHead();
  }

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override { return input_.position(); }

  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    account.add(headAccount_);
    headAccount_ = {};
    RawRecord record;
    while (!batch.full() && peekRecord(record, account)) {
      append(record, batch, account);
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  void readHead();

  void skip(std::size_t bytes) { input_.skip(bytes); }
  void skipRecord(const RawRecord& record) {
    skip(record.bytes.size());
    ++records_;
  }
  [[nodiscard]] std::uint64_t place() const { return records_ + 1; }

  [[nodiscard]] bool peekRecord(RawRecord& record, Account& account);
  [[nodiscard]] bool peekAny(RawRecord& record, Account& account);
  [[nodiscard]] bool takeRecordOfSize(std::size_t size, RawRecord& record, Account& account);
  [[nodiscard]] std::size_t sizeOfRemote(std::size_t stated);
  [[nodiscard]] bool runsOverItsBlock(std::size_t size);
  [[nodiscard]] bool looksLikeRecord(std::span<const std::uint8_t> bytes) const;
  [[nodiscard]] std::uint64_t endOfBlock() {
    if (input_.position() >= blockEnd_) {
      blockEnd_ = (input_.position() / blockBytes_ + 1) * blockBytes_;
    }
    return blockEnd_;
  }
  bool skipTo(std::uint64_t position);
  void goOnAtTotals();

  void append(const RawRecord& record, FrameBatch& batch, Account& account);
  void takeText(const RawRecord& record, Account& account);
  void gatherText(Account& account);

  BlockInput input_;
  StreamHead head_;
  Account headAccount_;
  NanosecondScale scale_;
  std::uint64_t blockBytes_ = kBtrcBlockSize;
  std::uint64_t blockEnd_ = 0;  // of the block at hand, or an earlier one
  std::uint64_t records_ = 0;   // that were read
  std::int64_t timeNs_ = 0;     // of the last frame
  Frame frame_;
  FrameCommentReader frameComments_;
  std::string text_;
  std::string converted_;
};

// A file that does not begin as it should is read from the first block that does.
void BtrcFrameSource::readHead() {
  const auto bytes = input_.peek(kInfoRecordSize);
  Native_RecordInfo info;
  if (bytes.empty()) {
    headAccount_.note(Remark::SourceCut, 1);
    return;
  }
  if (!tryReadFields(bytes, info) || info.header.type != RecordType::Info || info.header.size < kInfoRecordSize) {
    headAccount_.note(Remark::RecordNotUnderstood, place());
    skipTo(endOfBlock());
    goOnAtTotals();
    return;
  }
  head_.version = info.version;
  blockBytes_ = info.blockSize == 0 ? kBtrcBlockSize : std::uint64_t{info.blockSize} * BtrcFileHeader::kBlockUnit;
  scale_ = NanosecondScale(info.timeScalingExponent, 0);
  skipTo(std::min<std::uint64_t>(info.header.size, blockBytes_));
  ++records_;
  Native_RecordTimeCalibration calibration;
  if (!tryReadFields(input_.peek(kCalibrationRecordSize), calibration) ||
      calibration.header.type != RecordType::TimeCalibration || calibration.header.size < kCalibrationRecordSize) {
    return;
  }
  scale_ = NanosecondScale(info.timeScalingExponent, calibration.systemTimeTicks);
  if (const auto start = startOf(calibration)) {
    head_.start = TraceStart{.sinceEpochNs = *start};
  } else if (!isNullDate(calibration)) {
    headAccount_.note(Remark::RecordNotUnderstood, place());
    return;  // its bytes are an event
  }
  skipTo(input_.position() + calibration.header.size);
  ++records_;
}

// Moves to the position, or to the end of the file before it. Whether all bytes on the way were zero.
bool BtrcFrameSource::skipTo(std::uint64_t position) {
  bool zeros = true;
  while (input_.position() < position) {
    const std::uint64_t left = position - input_.position();
    const auto bytes = input_.peek(static_cast<std::size_t>(std::min<std::uint64_t>(left, BlockInput::kCapacity)));
    if (bytes.empty()) {
      break;
    }
    zeros = zeros && std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
    skip(bytes.size());
  }
  return zeros;
}

// After damage: at the block at hand or after it that begins with the totals, as all but the first do.
void BtrcFrameSource::goOnAtTotals() {
  Native_RecordHeader header;
  while (tryReadFields(input_.peek(kRecordHeaderSize), header) &&
         (header.type != RecordType::Counter || header.size != kCounterSize)) {
    skipTo(endOfBlock());
  }
}

bool BtrcFrameSource::looksLikeRecord(std::span<const std::uint8_t> bytes) const {
  Native_RecordHeader header;
  if (bytes.empty()) {
    return true;  // the end of the file
  }
  if (!tryReadFields(bytes, header) || header.size < kRecordHeaderSize || header.size % 4 != 0) {
    return false;
  }
  const bool ofBus = header.type >= RecordType::CanRxMsg && header.type <= RecordType::CanBitrateFd;
  const bool overrun = header.type == RecordType::CanOverrun || header.type == RecordType::CanCritical;
  const bool ofFile = header.type >= RecordType::Info && header.type <= RecordType::TimeCalibration;
  constexpr std::size_t kShortest = 16;  // of the records of a bus
  return ofBus || overrun ? header.size >= kShortest : ofFile || header.type == RecordType::Invalid;
}

// A received remote frame has no data. Its record may state the room of its DLC all the same: it is there if no record
// begins right after the header.
std::size_t BtrcFrameSource::sizeOfRemote(std::size_t stated) {
  constexpr std::size_t kSize = Internal_ReceivedDataFrameHeader::kFixedSize;
  constexpr std::size_t kMostRoom = 64;
  if (stated <= kSize || stated > kSize + kMostRoom) {
    return stated;
  }
  const auto bytes = input_.peek(kSize + kRecordHeaderSize);
  return bytes.size() < kSize || !looksLikeRecord(bytes.subspan(kSize)) ? stated : kSize;
}

// Whether the record ends after its block though the next one begins as blocks do.
bool BtrcFrameSource::runsOverItsBlock(std::size_t size) {
  const std::uint64_t left = endOfBlock() - input_.position();
  if (size <= left) {
    return false;
  }
  Native_RecordHeader header;
  const auto bytes = input_.peek(static_cast<std::size_t>(left) + kRecordHeaderSize);
  return bytes.size() > left && tryReadFields(bytes.subspan(static_cast<std::size_t>(left)), header) &&
         header.type == RecordType::Counter && header.size == kCounterSize;
}

// The next record, whatever it is; false at the end. Damage is passed over.
bool BtrcFrameSource::peekAny(RawRecord& record, Account& account) {
  while (true) {
    const auto start = input_.peek(kRecordHeaderSize);
    if (!tryReadFields(start, record.header)) {
      if (!start.empty()) {
        account.note(Remark::SourceCut, place());
        skip(start.size());
      }
      return false;
    }
    const std::size_t stated = record.header.size;
    const std::size_t size = record.header.type == RecordType::CanRxRtrMsg ? sizeOfRemote(stated) : stated;
    if (size >= kRecordHeaderSize && !runsOverItsBlock(size)) {
      return takeRecordOfSize(size, record, account);
    }
    // Zeros up to the end of a block are filling without a header.
    const std::uint64_t damaged = place();
    std::array<std::uint8_t, kRecordHeaderSize> begin{};
    std::ranges::copy(start.first(kRecordHeaderSize), begin.begin());
    if (!skipTo(endOfBlock())) {
      account.note(Remark::RecordNotUnderstood, damaged, begin);
      goOnAtTotals();
    }
  }
}

bool BtrcFrameSource::takeRecordOfSize(std::size_t size, RawRecord& record, Account& account) {
  record.bytes = input_.peek(size);
  if (record.bytes.size() == size) {
    return true;
  }
  account.note(Remark::SourceCut, place());
  skip(record.bytes.size());
  return false;
}

// The next record that is more than order in the file.
bool BtrcFrameSource::peekRecord(RawRecord& record, Account& account) {
  while (peekAny(record, account)) {
    const bool isTotals = record.header.type == RecordType::Counter && record.bytes.size() == kCounterSize;
    if (!isTotals && record.header.type != RecordType::Invalid) {
      return true;
    }
    skipRecord(record);
  }
  return false;
}

void BtrcFrameSource::append(const RawRecord& record, FrameBatch& batch, Account& account) {
  const std::uint64_t itsPlace = place();
  frame_.reset();
  frame_.timeNs = timeNs_;
  if (record.header.type == RecordType::TextMsg) {
    takeText(record, account);
  } else {
    if (!takeRecord(record.header.type, record.bytes, scale_, frame_)) {
      account.note(Remark::RecordNotUnderstood, itsPlace, record.bytes);
    }
    skipRecord(record);
  }
  timeNs_ = frame_.timeNs;
  frame_.place = itsPlace;
  batch.append(frame_);
}

// A text is a frame's comment, or a comment.
void BtrcFrameSource::takeText(const RawRecord& record, Account& account) {
  const std::uint64_t itsPlace = place();
  const std::size_t size = record.bytes.size() - kRecordHeaderSize;
  text_.assign(commentOf(record.bytes, wayOfPiece(size)));
  skipRecord(record);
  if (size == kLongestPiece) {
    gatherText(account);
  }
  if (!frameComments_.read(text_, frame_)) {
    frame_.reset();
    frame_.kind = FrameKind::Comment;
    frame_.text = text_;
  }
  if (frame_.kind == FrameKind::Comment) {
    frame_.timeNs = timeNs_;
  }
  if (frame_.text) {
    const std::string_view text = asUtf8(*frame_.text, converted_);
    frame_.text = text.substr(0, utf8Boundary(text, FrameBatch::kLongestText));
    if (frame_.text->size() < text.size()) {
      account.note(Remark::TextCut, itsPlace);
    }
  }
}

// Adds the texts that the one at hand goes on in.
void BtrcFrameSource::gatherText(Account& account) {
  constexpr std::size_t kMost = 8 * FrameBatch::kLongestText;
  RawRecord record;
  while (text_.size() < kMost && peekRecord(record, account) && record.header.type == RecordType::TextMsg) {
    const std::string_view piece = commentOf(record.bytes, wayOfPiece(record.bytes.size() - kRecordHeaderSize));
    if (!piece.starts_with(kGoesOn)) {
      return;
    }
    text_.append(piece.substr(kGoesOn.size()));
    skipRecord(record);
  }
}

// ---- writing

consteval FrameCapacity capacity() {
  FrameCapacity row;
  row.version = 1.0;
  row.of(FrameKind::Data) = {.held = true, .direction = true, .needsDirection = true};
  row.of(FrameKind::Remote) = row.of(FrameKind::Data);
  const std::uint32_t counters = attributeBits(FrameAttribute::TxErrors, FrameAttribute::RxErrors);
  const std::uint32_t error = counters | attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition);
  row.of(FrameKind::Error) = {
      .held = true, .direction = true, .needsDirection = true, .attributes = error, .filled = error};
  row.of(FrameKind::Counters) = {
      .held = true, .direction = true, .needsDirection = true, .attributes = counters, .needed = counters};
  const std::uint32_t state = attributeBits(FrameAttribute::BusState);
  row.of(FrameKind::Status) = {.held = true, .attributes = state, .needed = state};
  row.of(FrameKind::Event) = {
      .held = true,
      .noBus = true,
      .bytes = true,
      .attributes = attributeBits(FrameAttribute::BusLoad, FrameAttribute::RecordType),
  };
  row.of(FrameKind::Comment) = {.held = true, .bus = false, .text = TextCapacity::Any};
  row.comments = true;
  row.fd = true;
  row.bitsOfFd = true;
  row.longestData = 64;
  row.longDlc = true;
  row.remoteDlc = true;
  row.longRemoteDlc = true;
  row.needsRemoteDlc = true;
  row.highestBus = 255;
  row.resolutionNs = kBtrcTick;
  row.startResolutionNs = kBtrcTick;
  row.guessedBus = 1;
  row.hasRoomFor = hasRecordFor;
  return row;
}

constexpr std::array kBtrcCapacities = {capacity()};

class BtrcFrameSink final : public FrameSink {
 public:
  BtrcFrameSink(const OutputTarget& target, const StreamHead& head) {
    const DateTime start = dateTimeOfStart(head.start ? head.start->sinceEpochNs : kNoStartNs);
    times_.start = btrcSystemTime(start).count();
    output_.open(target);
    blocks_.begin();
    appendBtrcHead(record_, start);
    blocks_.writeHead(record_);
  }

  void write(const FrameBatch& batch, Account& account) override {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      batch.get(row, frame_);
      write(frame_, account);
    }
  }

  void close() override {
    blocks_.finish();
    output_.close();
  }

  [[nodiscard]] std::uint64_t bytesWritten() const override { return output_.position(); }

 private:
  void write(Frame& frame, Account& account);  // changes the frame
  void writeText(std::string_view text);
  void writeFrameText(const Frame& frame);

  BufferedOutput output_;
  BtrcBlocks blocks_{output_};
  RecordTimes times_;
  Bytes record_;
  TextBuffer text_;
  std::string piece_;
  Frame frame_;  // the one that is being written
};

void BtrcFrameSink::write(Frame& frame, Account& account) {
  const FrameCapacity& row = kBtrcCapacities.front();
  if (const std::optional<Remark> reason = whyNotHeld(row, frame)) {
    writeFrameText(frame);
    account.addCommented(*reason, frame.place);
    return;
  }
  account.addWritten(1);
  if (frame.kind == FrameKind::Comment) {
    const std::string_view text = frame.text.value_or(std::string_view());
    if (isPlainComment(text) && text.find('\0') == std::string_view::npos && !saysMoreThanText(frame)) {
      writeText(text);
    } else {
      writeFrameText(frame);
    }
    return;
  }
  reduceTo(row, frame, account);
  record_.clear();
  if (!appendRecord(record_, frame, times_)) {
    writeFrameText(frame);  // from which all of it comes back
    return;
  }
  blocks_.write(UnsignedMicroseconds(static_cast<std::uint64_t>(frame.timeNs / kBtrcTick)), record_);
  times_.before = frame.timeNs;
}

void BtrcFrameSink::writeFrameText(const Frame& frame) {
  text_.clear();
  appendFrameComment(text_, frame);
  writeText(text_.view());
  times_.before = frame.kind == FrameKind::Comment ? times_.before : frame.timeNs;
}

void BtrcFrameSink::writeText(std::string_view text) {
  constexpr UnsignedMicroseconds kNoTime(0);
  std::string_view mark;
  do {
    const std::size_t room = kLongestPiece - mark.size();
    piece_.assign(mark).append(text.substr(0, room));
    text.remove_prefix(std::min(room, text.size()));
    record_.clear();
    appendComment(record_, piece_, wayOfPiece(piece_.size()));
    blocks_.write(kNoTime, record_);
    mark = kGoesOn;
  } while (!text.empty());
}

}  // namespace

std::span<const FrameCapacity> btrcCapacities() {
  return kBtrcCapacities;
}

bool looksLikeBtrc(std::string_view start) {
  Native_RecordInfo info;
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(start.data()), start.size());
  return tryReadFields(bytes, info) && info.header.type == RecordType::Info &&
         info.header.size == kLayoutSize<Native_RecordInfo> && info.blockSize != 0;
}

std::unique_ptr<FrameSource> openBtrcFrames(const InputSource& input) {
  return std::make_unique<BtrcFrameSource>(input);
}

std::unique_ptr<FrameSink> createBtrcFrames(const OutputTarget& target, const StreamHead& head,
                                            const SinkSettings& /*settings*/) {
  return std::make_unique<BtrcFrameSink>(target, head);
}

}  // namespace xlatr
