#include "formats/blf/blf_frames.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "formats/blf/blf_converter.hpp"
#include "formats/blf/blf_log_content.hpp"
#include "formats/blf/blf_log_head.hpp"
#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_log_objects.hpp"
#include "formats/blf/blf_log_queue.hpp"
#include "formats/blf/blf_log_remarks.hpp"
#include "formats/blf/blf_object_frames.hpp"
#include "io/input_file.hpp"

namespace xlatr {
namespace {

using blf_log::DateField;
using blf_log::FileHeader;
using blf_log::Object;
using blf_log::Piece;
using LogRemark = blf_log::Remark;

// ---- the head

// The wall clock of the recorder, whose zone the log does not state. Nothing for a date that there is not.
std::optional<TraceStart> startOfLog(const FileHeader& header) {
  using std::chrono::nanoseconds;
  constexpr int kFirstYear = 1700;  // nanoseconds since 1970 reach a little farther
  constexpr int kLastYear = 2200;
  const auto field = [&header](DateField name) { return header.startTime[static_cast<std::size_t>(name)]; };
  const std::chrono::year_month_day date{std::chrono::year(field(DateField::Year)),
                                         std::chrono::month(field(DateField::Month)),
                                         std::chrono::day(field(DateField::Day))};
  if (!date.ok() || date.year() < std::chrono::year(kFirstYear) || date.year() > std::chrono::year(kLastYear)) {
    return std::nullopt;
  }
  const std::chrono::milliseconds time =
      std::chrono::hours(field(DateField::Hour)) + std::chrono::minutes(field(DateField::Minute)) +
      std::chrono::seconds(field(DateField::Second)) + std::chrono::milliseconds(field(DateField::Millisecond));
  return TraceStart{.sinceEpochNs = nanoseconds(std::chrono::sys_days(date).time_since_epoch() + time).count()};
}

bool hasObjectAt(const InputSource& source, std::uint64_t offset) {
  InputFile file(source);
  file.seek(offset);
  std::array<char, blf_log::kObjectSignature.size()> bytes{};
  std::size_t size = 0;
  for (std::size_t count = 1; count > 0 && size < bytes.size(); size += count) {
    count = file.read(std::span(bytes).subspan(size));
  }
  return std::string_view(bytes.data(), size) == blf_log::kObjectSignature;
}

// A head has one size. Where it states another, that counts if there is an object; a file without a head is looked
// through from its first byte on.
std::uint64_t firstObjectOf(const InputSource& source, const std::optional<FileHeader>& header) {
  constexpr std::uint64_t kUsual = kLayoutSize<blf_log::FileHead>;
  if (!header) {
    return 0;
  }
  const bool isUsual = header->firstObject == kUsual || hasObjectAt(source, kUsual);
  return isUsual || header->firstObject > source.size().value_or(header->firstObject) ||
                 !hasObjectAt(source, header->firstObject)
             ? kUsual
             : header->firstObject;
}

// ---- what becomes no frame

// How many of each type. Memory is bounded, though a damaged log may have any number of types.
class PassedOverObjects {
 public:
  void add(std::uint32_t type) {
    if (type < known_.size()) {
      ++known_[type];
      return;
    }
    const auto found = std::ranges::find(unknown_, type, &Count::first);
    if (found != unknown_.end()) {
      ++found->second;
    } else if (unknown_.size() < kMostUnknown) {
      unknown_.emplace_back(type, 1);
    } else {
      ++others_;
    }
  }

  [[nodiscard]] std::vector<PassedOver> list() const {
    std::vector<PassedOver> all;
    for (std::uint32_t type = 0; type < known_.size(); ++type) {
      if (known_[type] > 0) {
        all.push_back({nameOf(type), known_[type]});
      }
    }
    auto sorted = unknown_;
    std::ranges::sort(sorted);
    for (const auto& [type, count] : sorted) {
      all.push_back({nameOf(type), count});
    }
    if (others_ > 0) {
      all.push_back({"unknown object (other object types)", others_});
    }
    return all;
  }

 private:
  using Count = std::pair<std::uint32_t, std::uint64_t>;
  static constexpr std::size_t kMostUnknown = 50;

  static std::string nameOf(std::uint32_t type) {
    return std::string(blfObjectName(type)) + " (object type " + std::to_string(type) + ")";
  }

  std::array<std::uint64_t, kBlfTypeLimit> known_{};
  std::vector<Count> unknown_;
  std::uint64_t others_ = 0;
};

// ---- the frames

class BlfFrameSource final : public FrameSource {
 public:
  explicit BlfFrameSource(const InputSource& source) : BlfFrameSource(source, blf_log::readFileHeader(source)) {}

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override { return input_.position(); }
  [[nodiscard]] std::vector<PassedOver> passedOver() const override { return passedOver_.list(); }

  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    reading_.account = &account;
    Object object;
    while (!batch.full()) {
      const bool found = parser_.next(content_, piece_ != Piece::More, object);
      if (remarks_.total() != toldRemarks_) {
        tellDamage(account);
      }
      if (found) {
        ++objects_;
        append(object, batch, account);
      } else if (piece_ != Piece::End) {
        piece_ = input_.read(content_);
      } else {
        tellIfEmpty(account);
        break;
      }
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  BlfFrameSource(const InputSource& source, const std::optional<FileHeader>& header)
      : isLog_(header.has_value()),
        input_(source, firstObjectOf(source, header), remarks_),
        types_(typesByNumber()),
        parser_(remarks_, types_.longestBodies) {
    head_.path = source.name();
    head_.format = XLATR_FORMAT_BLF;
    head_.places = PlaceUnit::Record;
    if (header) {
      head_.version = blfVersionNumber(fileVersion(*header));
      head_.start = startOfLog(*header);
      // Objects that become no frame are among them. It is 0 in a log that was not closed.
      head_.frames = header->objectCount != 0 ? std::optional<std::uint64_t>(header->objectCount) : std::nullopt;
    }
  }

  // What is known of each type, by its number.
  struct Types {
    std::array<ReadBlfObject, kBlfTypeLimit> readers{};  // null for those that become no frame
    std::array<std::uint16_t, kBlfTypeLimit> longestBodies{};
  };

  static Types typesByNumber() {
    Types types;
    for (const auto& objects : {blfCanObjects(), blfLinObjects(), blfEventObjects(), blfTextObjects()}) {
      for (const BlfObjectType& object : objects) {
        types.readers[object.type] = object.read;
        types.longestBodies[object.type] = object.longestBody;
      }
    }
    return types;
  }

  void append(const Object& object, FrameBatch& batch, Account& account) {
    const ReadBlfObject readObject = object.type < types_.readers.size() ? types_.readers[object.type] : nullptr;
    if (readObject == nullptr) {
      passOver(object.type, account);
      return;
    }
    frame_.reset();
    frame_.place = objects_;
    if (!takeTime(object, account) || !readObject(object, frame_, reading_)) {
      account.note(Remark::RecordNotUnderstood, objects_, object.body);
      return;
    }
    batch.append(frame_);
  }

  void passOver(std::uint32_t type, Account& account) {
    if (type != blf_log::kRestorePointsType) {
      passedOver_.add(type);
      account.note(Remark::OtherBus, objects_);
    }
  }

  // False for a time that no trace can have.
  bool takeTime(const Object& object, Account& account) {
    constexpr std::uint64_t kTenMicroseconds = 10'000;
    constexpr auto kFarthest = static_cast<std::uint64_t>(kFarthestNs);
    const bool isCoarse = object.flags == blf_log::kTenMicroseconds;
    if (object.timestamp > (isCoarse ? kFarthest / kTenMicroseconds : kFarthest)) {
      return false;
    }
    frame_.timeNs = static_cast<std::int64_t>(object.timestamp * (isCoarse ? kTenMicroseconds : 1));
    if (!isCoarse && object.flags != blf_log::kNanoseconds) {
      account.note(Remark::TimeUnitGuessed, objects_);
    }
    return true;
  }

  // Damage lies before the next object. Where the file has ended, what is left over was cut off; a wrong size of a
  // container's content says nothing, because the content itself is there.
  void tellDamage(Account& account) {
    isCut_ = isCut_ || remarks_.times(LogRemark::CutContainer) > 0 || (piece_ == Piece::End && isLog_);
    for (std::size_t at = 0; at < blf_log::kRemarkCount; ++at) {
      const auto remark = static_cast<LogRemark>(at);
      const std::uint64_t times = remarks_.times(remark);
      for (; told_[at] < times; ++told_[at]) {
        if (remark != LogRemark::WrongContentSize) {
          account.note(meaningOf(remark), objects_ + 1);
        }
      }
    }
    toldRemarks_ = remarks_.total();
  }

  // Not even a head.
  void tellIfEmpty(Account& account) {
    if (!isLog_ && !isCut_ && input_.position() == 0) {
      account.note(Remark::SourceCut, 1);
      isCut_ = true;
    }
  }

  [[nodiscard]] Remark meaningOf(LogRemark remark) const {
    const bool isLeftOver = remark == LogRemark::StrayBytes || remark == LogRemark::StrayFileBytes;
    return remark == LogRemark::CutContainer || (isLeftOver && isCut_) ? Remark::SourceCut
                                                                       : Remark::RecordNotUnderstood;
  }

  bool isLog_;
  bool isCut_ = false;
  blf_log::Remarks remarks_;
  blf_log::ContentInput input_;
  Types types_;
  blf_log::ObjectParser parser_;
  blf_log::ByteQueue content_;
  Piece piece_ = Piece::More;
  StreamHead head_;
  PassedOverObjects passedOver_;
  std::uint64_t objects_ = 0;
  std::array<std::uint64_t, blf_log::kRemarkCount> told_{};
  std::uint64_t toldRemarks_ = 0;
  Frame frame_;
  BlfReading reading_;
};

}  // namespace

bool looksLikeBlf(std::string_view start) {
  return start.starts_with(blf_log::kFileSignature);
}

std::unique_ptr<FrameSource> openBlfFrames(const InputSource& input) {
  return std::make_unique<BlfFrameSource>(input);
}

}  // namespace xlatr
