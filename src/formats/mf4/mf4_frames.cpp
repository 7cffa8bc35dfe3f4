#include "formats/mf4/mf4_frames.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_channel_search.hpp"
#include "formats/mf4/mdf_frame_reader.hpp"
#include "formats/mf4/mdf_tree.hpp"
#include "formats/mf4/mdf_turn_queue.hpp"
#include "formats/mf4/mdf_unfinished.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

// A bit of idUnfinishedFlags that no writer of ours sets.
constexpr std::uint16_t kOffsetsUnknown = 0x40;

constexpr std::size_t kMostStreams = 1024;
constexpr std::uint32_t kLargestRecord = std::uint32_t{1} << 20;

std::string usableText(std::string_view bytes) {
  constexpr std::string_view kFilling(" \0", 2);
  bytes = bytes.substr(0, bytes.find('\0'));
  const std::size_t end = bytes.find_last_not_of(kFilling);
  std::string converted;
  return std::string(asUtf8(bytes.substr(0, end == std::string_view::npos ? 0 : end + 1), converted));
}

// What stands between <name> and </name>.
std::string_view elementOf(std::string_view xml, std::string_view name) {
  const std::string begin = std::string("<").append(name).append(">");
  const std::size_t at = xml.find(begin);
  if (at == std::string_view::npos) {
    return {};
  }
  xml.remove_prefix(at + begin.size());
  const std::size_t end = xml.find('<');
  return end == std::string_view::npos ? std::string_view() : xml.substr(0, end);
}

// The program of the first entry of the file's history, or what the identification says.
std::string producerOf(MdfTree& tree, std::uint64_t history, std::string_view program) {
  if (const auto block = tree.leaf<FileHistoryBlock>(history)) {
    const std::string comment = tree.text(block->link(1));
    std::string producer(elementOf(comment, "tool_id"));
    if (const std::string_view version = elementOf(comment, "tool_version"); !producer.empty() && !version.empty()) {
      producer.append(" ").append(version);
    }
    if (!producer.empty()) {
      return usableText(producer);
    }
  }
  return usableText(program);
}

// The clock of a place that is not named, or UTC and what the clock of the place is ahead of it.
std::optional<TraceStart> startOfHeader(const HeaderBlockData& data) {
  constexpr std::int64_t kNsOfMinute = 60'000'000'000;
  // No trace is from the first nanosecond of 1970: nobody said when it started.
  if (data.hdStartTimeNs == 0 || data.hdStartTimeNs > static_cast<std::uint64_t>(kFarthestNs)) {
    return std::nullopt;
  }
  TraceStart start{.sinceEpochNs = static_cast<std::int64_t>(data.hdStartTimeNs)};
  if ((data.hdTimeFlags & kTimeIsLocal) == 0) {
    const bool hasOffsets = (data.hdTimeFlags & kTimeOffsetsValid) != 0;
    start.zoneMinutes = hasOffsets ? data.hdTzOffsetMin + data.hdDstOffsetMin : 0;
    start.sinceEpochNs += *start.zoneMinutes * kNsOfMinute;
  }
  return start;
}

// The groups whose frames stand side by side, the times first or last.
using Table = std::vector<const MdfGroupInfo*>;

class Mf4FrameSource final : public FrameSource {
 public:
  explicit Mf4FrameSource(const InputSource& source) : stream_(source), file_(source), tree_(stream_, file_) {
    head_.path = source.name();
    head_.format = XLATR_FORMAT_MF4;
    head_.places = PlaceUnit::Record;
    readTop();
    makeReaders();
    if (tree_.damaged()) {
      state_.notes.note(Remark::RecordNotUnderstood, 1);
    }
  }

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override {
    return started_ && queue_.empty() ? file_.size() : std::min(file_.size(), file_.readCount());
  }
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override;

 private:
  void readTop();
  void makeReaders();
  void makeUnsorted(const MdfLayoutContext& context, const MdfGroupInfo& first);
  void makeSorted(const MdfLayoutContext& context, const Table& table);
  [[nodiscard]] std::vector<Table> sortedTables() const;
  [[nodiscard]] const MdfGroupInfo* groupAt(std::uint64_t position) const;
  void enqueue(std::size_t reader, std::optional<std::int64_t> timeNs);
  void noteDamage() { state_.notes.note(Remark::RecordNotUnderstood, 1); }

  BlockStream stream_;
  MdfDataFile file_;
  MdfTree tree_;
  StreamHead head_;
  std::uint16_t unfinished_ = 0;
  std::uint64_t firstDataGroup_ = 0;
  std::vector<MdfGroupInfo> groups_;
  std::unordered_map<std::uint64_t, std::size_t> groupIndex_;  // by position
  std::unordered_map<std::uint64_t, MdfRecordSizes> sizes_;    // by the position of the data group
  MdfStreamLimits limits_;
  std::size_t streams_ = 0;
  MdfReadingState state_;
  std::vector<std::unique_ptr<MdfFrameReader>> readers_;
  MdfTurnQueue<std::int64_t> queue_;
  bool started_ = false;
};

void Mf4FrameSource::readTop() {
  std::array<std::uint8_t, kLayoutSize<FileIdentificationBlock>> bytes{};
  if (!file_.readAll(0, bytes)) {
    state_.notes.note(Remark::SourceCut, 1);
    return;
  }
  FileIdentificationBlock identification;
  loadFields(bytes.data(), identification);
  constexpr double kHundredths = 100.0;
  head_.version = identification.idVersionNumber / kHundredths;
  const std::string_view magic(identification.idFile.data(), identification.idFile.size());
  unfinished_ = identification.idUnfinishedFlags;
  head_.unfinished = magic.starts_with("UnFin") || unfinished_ != 0 || identification.idCustomUnfinishedFlags != 0;
  if (head_.unfinished && unfinished_ == 0) {
    unfinished_ = kMdfCountsMissing | kMdfLastLengthMissing;  // whatever is not said
  }
  file_.hasOpenBlock = (unfinished_ & kMdfLastLengthMissing) != 0;
  const auto header = tree_.leaf<DescribedBlock<HeaderBlockData>>(HeaderBlock::kPosition);
  if (!header) {
    return;
  }
  firstDataGroup_ = header->link(HeaderBlock::kFirstDataGroup);
  head_.start = startOfHeader(header->data);
  head_.producer = producerOf(tree_, header->link(HeaderBlock::kFirstHistory),
                              {identification.idProgram.data(), identification.idProgram.size()});
}

const MdfGroupInfo* Mf4FrameSource::groupAt(std::uint64_t position) const {
  const auto found = groupIndex_.find(position);
  return found == groupIndex_.end() ? nullptr : &groups_[found->second];
}

// Groups that are stored by columns and have their times in the same other one are one table, if their channels say
// parts of the same frame.
std::vector<Table> Mf4FrameSource::sortedTables() const {
  std::vector<Table> tables;
  std::map<std::pair<std::uint64_t, const MdfFrameName*>, std::size_t> tableOf;
  for (const MdfGroupInfo& group : groups_) {
    if (group.frame == nullptr || group.recordIdSize != 0) {
      continue;
    }
    if (group.remoteMaster == 0) {
      tables.push_back({&group});
      continue;
    }
    const auto [found, isNew] = tableOf.try_emplace({group.remoteMaster, group.frame}, tables.size());
    const bool fits = !group.whole && !isNew && tables[found->second].size() < MdfRows::kMostColumns;
    if (fits) {
      tables[found->second].push_back(&group);
      continue;
    }
    Table table = {&group};
    if (const MdfGroupInfo* const master = groupAt(group.remoteMaster); master != nullptr && master != &group) {
      table.push_back(master);
    }
    tables.push_back(std::move(table));
  }
  return tables;
}

void Mf4FrameSource::makeReaders() {
  groups_ = findMdfGroups(tree_, firstDataGroup_);
  file_.sortBlocks();
  for (std::size_t at = 0; at < groups_.size(); ++at) {
    const MdfGroupInfo& group = groups_[at];
    groupIndex_[group.position] = at;
    if (group.frame == nullptr && group.isOtherBusEvent && (group.data.cgFlags & kGroupBusEvent) != 0) {
      noteDamage();  // of another bus
    }
    if (group.recordIdSize == 0) {
      continue;
    }
    MdfRecordSizes& sizes = sizes_[group.dataGroup];
    sizes.idSize = group.recordIdSize;
    sizes.sizes[group.data.cgRecordId] = (group.data.cgFlags & kGroupVariableLength) != 0
                                             ? MdfRecordSizes::kVariable
                                             : std::uint64_t{group.data.cgDataBytes} + group.data.cgInvalBytes;
  }
  const std::vector<Table> tables = sortedTables();
  constexpr std::size_t kWindows = std::size_t{12} << 20;
  const std::size_t expected = 1 + static_cast<std::size_t>(std::ranges::count_if(
                                       groups_, [](const MdfGroupInfo& group) { return group.frame != nullptr; }));
  limits_.window = std::clamp(kWindows / (2 * expected), std::size_t{8} << 10, std::size_t{256} << 10);
  const MdfLayoutContext context{tree_, file_, groups_, limits_, sizes_, (unfinished_ & kOffsetsUnknown) != 0};
  if ((unfinished_ & kMdfCountsMissing) == 0) {
    head_.frames = 0;
  }
  for (const Table& table : tables) {
    makeSorted(context, table);
  }
  std::uint64_t lastDataGroup = 0;
  for (const MdfGroupInfo& group : groups_) {
    if (group.recordIdSize != 0 && group.dataGroup != lastDataGroup) {
      lastDataGroup = group.dataGroup;
      makeUnsorted(context, group);
    }
  }
}

void Mf4FrameSource::makeSorted(const MdfLayoutContext& context, const Table& table) {
  const MdfGroupInfo& group = *table.front();
  const bool fits = std::ranges::all_of(table, [](const MdfGroupInfo* column) {
    return column->recordIdSize == 0 && column->data.cgDataBytes > 0 && column->data.cgDataBytes <= kLargestRecord &&
           column->data.cgInvalBytes <= kLargestRecord && (column->data.cgFlags & kGroupVariableLength) == 0;
  });
  streams_ += table.size() + 1;
  auto layout = fits && streams_ <= kMostStreams ? MdfFrameLayout::make(context, table) : nullptr;
  if (!layout) {
    noteDamage();
    return;
  }
  std::uint64_t count = group.data.cgCycleCount;
  if ((unfinished_ & kMdfCountsMissing) != 0) {
    count = kMdfUnknownCount;
  } else if (head_.frames) {
    *head_.frames += count;
  }
  // A count of zero is what a writer leaves that was stopped before it said anything else.
  readers_.push_back(std::make_unique<MdfSortedReader>(context, table, std::move(layout),
                                                       count == 0 ? kMdfUnknownCount : count, state_));
}

void Mf4FrameSource::makeUnsorted(const MdfLayoutContext& context, const MdfGroupInfo& first) {
  constexpr std::uint8_t kLargestIdSize = 8;
  std::vector<MdfUnsortedReader::Group> groups;
  bool hasFrames = false;
  for (const MdfGroupInfo* group = &first;
       group != groups_.data() + groups_.size() && group->dataGroup == first.dataGroup; ++group) {
    MdfUnsortedReader::Group entry;
    entry.recordId = group->data.cgRecordId;
    entry.dataBytes = group->data.cgDataBytes;
    entry.invalidationBytes = group->data.cgInvalBytes;
    entry.variable = (group->data.cgFlags & kGroupVariableLength) != 0;
    const bool fits = entry.dataBytes <= kLargestRecord && entry.invalidationBytes <= kLargestRecord;
    if (group->frame != nullptr && !entry.variable) {
      ++streams_;
      if (fits && streams_ <= kMostStreams) {
        entry.layout = MdfFrameLayout::make(context, {group});
      }
      if (!entry.layout) {
        noteDamage();
      } else if (head_.frames) {
        *head_.frames += group->data.cgCycleCount;
      }
    }
    hasFrames = hasFrames || entry.layout;
    groups.push_back(std::move(entry));
  }
  if (hasFrames && first.recordIdSize <= kLargestIdSize) {
    readers_.push_back(
        std::make_unique<MdfUnsortedReader>(context, first.dataLink, first.recordIdSize, std::move(groups), state_));
  } else if (hasFrames) {
    noteDamage();
  }
}

// A reader that has no time has no more frames.
void Mf4FrameSource::enqueue(std::size_t reader, std::optional<std::int64_t> timeNs) {
  if (!timeNs) {
    readers_[reader].reset();
    return;
  }
  queue_.push(*timeNs, reader);
}

bool Mf4FrameSource::read(FrameBatch& batch, Account& account) {
  if (!started_) {
    started_ = true;
    for (std::size_t at = 0; at < readers_.size(); ++at) {
      enqueue(at, readers_[at]->nextTime());
    }
  }
  // The earliest reader goes on until another one is earlier.
  while (!queue_.empty() && !batch.full()) {
    const std::size_t reader = queue_.pop();
    enqueue(reader, readers_[reader]->read(batch, reader, queue_.first()));
  }
  account.add(std::exchange(state_.notes, Account()));
  account.addRead(batch.size());
  return !batch.empty();
}

}  // namespace

bool looksLikeMf4(std::string_view start) {
  constexpr std::string_view kNoPrefixOfVersion4 = "MDF     3";
  return (start.starts_with("MDF     ") || start.starts_with("UnFinMF ")) && !start.starts_with(kNoPrefixOfVersion4);
}

std::unique_ptr<FrameSource> openMf4Frames(const InputSource& input) {
  return std::make_unique<Mf4FrameSource>(input);
}

}  // namespace xlatr
