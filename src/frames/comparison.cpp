#include "frames/comparison.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "frames/frame_capacity.hpp"
#include "io/format.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

constexpr std::uint16_t kComparedFlags =
    frame_flag::kExtended | frame_flag::kFd | frame_flag::kBrs | frame_flag::kEsi | frame_flag::kXl;
constexpr std::uint16_t kDirections = frame_flag::kReceived | frame_flag::kTransmitted;
// How many frames that are too late a search passes, since traces of several buses are not quite in order.
constexpr std::size_t kLateFrames = 64;
// How many frames that could belong to a frame are tried.
constexpr std::size_t kMostCandidates = 4;

constexpr std::uint64_t distanceOf(std::int64_t one, std::int64_t other) {
  const auto first = static_cast<std::uint64_t>(one);
  const auto second = static_cast<std::uint64_t>(other);
  return one < other ? second - first : first - second;
}

// A row of a batch.
struct Row {
  const FrameBatch* batch;
  std::size_t at;

  [[nodiscard]] std::int64_t timeNs() const { return batch->times()[at]; }
  [[nodiscard]] FrameKind kind() const { return static_cast<FrameKind>(batch->kinds()[at]); }
  [[nodiscard]] std::uint16_t bus() const { return batch->buses()[at]; }
  [[nodiscard]] std::uint32_t id() const { return batch->ids()[at]; }
  [[nodiscard]] std::uint16_t flags() const { return batch->flags()[at]; }
  [[nodiscard]] std::uint16_t dlc() const { return batch->dlcs()[at]; }
  [[nodiscard]] std::span<const std::uint8_t> data() const {
    const auto begin = static_cast<std::size_t>(batch->dataOffsets()[at]);
    return batch->data().subspan(begin, static_cast<std::size_t>(batch->dataOffsets()[at + 1]) - begin);
  }
};

bool sameBytes(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other) {
  return one.size() == other.size() && (one.empty() || std::memcmp(one.data(), other.data(), one.size()) == 0);
}

bool differsInFlags(std::uint16_t one, std::uint16_t other) {
  const auto differing = static_cast<std::uint16_t>(one ^ other);
  const bool bothDirected = (one & kDirections) != 0 && (other & kDirections) != 0;
  return (differing & (bothDirected ? kComparedFlags | kDirections : kComparedFlags)) != 0;
}

bool differsInDlc(const Row& one, const Row& other) {
  const auto isKnown = [](const Row& row) {
    return row.kind() != FrameKind::Remote || (row.flags() & frame_flag::kDlcKnown) != 0;
  };
  return one.dlc() != other.dlc() && isKnown(one) && isKnown(other);
}

bool differsInAttributes(const Frame& one, const Frame& other) {
  const std::uint32_t both = one.attributes.present() & other.attributes.present();
  return both != 0 && !(one.attributes.only(both) == other.attributes.only(both));
}

// One trace: the frames that it is at, of which those that were found equal to one of the other trace are done.
class Side {
 public:
  Side(FrameSource& source, Account& account, const ComparisonSettings& settings)
      : source_(source), account_(account), kinds_(settings.kinds), ahead_(std::max<std::size_t>(settings.ahead, 1)) {
    load(batches_[0], done_[0]);
  }

  // Passes over what is done. False at the end.
  bool findNext() {
    for (;;) {
      const std::vector<std::uint8_t>& done = done_[current_];
      while (at_ < done.size() && done[at_] != 0) {
        ++at_;
      }
      if (at_ < done.size()) {
        return true;
      }
      if (!nextBatch()) {
        return false;
      }
    }
  }

  [[nodiscard]] Row next() const { return {&batches_[current_], at_}; }
  [[nodiscard]] std::uint64_t frames() const { return frames_; }

  void finish(const Row& row) { done_[row.batch == batches_.data() ? 0 : 1][row.at] = 1; }

  // Calls an action with each frame that is not done, the next one first, until the action answers false. False if
  // there are more than are searched.
  template <typename Action>
  bool search(Action action) {
    std::size_t left = ahead_;
    if (!searchIn(current_, at_, left, action)) {
      return true;
    }
    if (left > 0 && done_[1 - current_].empty() && !ended_) {
      load(batches_[1 - current_], done_[1 - current_]);
    }
    return !searchIn(1 - current_, 0, left, action) || (left > 0 && ended_);
  }

 private:
  void load(FrameBatch& batch, std::vector<std::uint8_t>& done) {
    batch.clear();
    while (!ended_ && batch.empty()) {
      ended_ = !source_.read(batch, account_);
    }
    done.clear();
    for (const std::uint8_t kind : batch.kinds()) {
      const bool wanted = (kinds_ >> kind & 1U) != 0;
      done.push_back(wanted ? 0 : 1);
      frames_ += wanted ? 1U : 0U;
    }
  }

  bool nextBatch() {
    done_[current_].clear();
    current_ = 1 - current_;
    at_ = 0;
    if (done_[current_].empty()) {
      load(batches_[current_], done_[current_]);
    }
    return !done_[current_].empty();
  }

  template <typename Action>
  bool searchIn(std::size_t batch, std::size_t from, std::size_t& left, Action& action) const {
    const std::vector<std::uint8_t>& done = done_[batch];
    for (std::size_t row = from; row < done.size() && left > 0; ++row, --left) {
      if (done[row] == 0 && !action(Row{&batches_[batch], row})) {
        return false;
      }
    }
    return true;
  }

  FrameSource& source_;
  Account& account_;
  FrameKindSet kinds_;
  std::size_t ahead_;
  bool ended_ = false;
  std::uint64_t frames_ = 0;
  std::size_t current_ = 0;
  std::size_t at_ = 0;
  std::array<FrameBatch, 2> batches_;
  std::array<std::vector<std::uint8_t>, 2> done_;  // by row; empty if the batch is
};

class Comparer {
 public:
  Comparer(Side& first, Side& second, const ComparisonSettings& settings, std::uint64_t toleranceNs)
      : sides_{&first, &second}, settings_(settings) {
    result_.toleranceNs = toleranceNs;
  }

  ComparisonResult run() {
    for (;;) {
      const bool hasFirst = sides_[0]->findNext();
      const bool hasSecond = sides_[1]->findNext();
      if (!hasFirst && !hasSecond) {
        break;
      }
      if (hasFirst && hasSecond) {
        compareNext();
      } else {
        const std::size_t side = hasFirst ? 0 : 1;
        noteOnly(side, sides_[side]->next());
      }
    }
    result_.frames = {sides_[0]->frames(), sides_[1]->frames()};
    return std::move(result_);
  }

 private:
  void compareNext() {
    const Row first = sides_[0]->next();
    const Row second = sides_[1]->next();
    if (equal(first, second)) {
      noteEqual(first, second);
      return;
    }
    // The earlier one: what could be equal to it comes no later in the other trace.
    const std::size_t side = first.timeNs() <= second.timeNs() ? 0 : 1;
    const Row& row = side == 0 ? first : second;
    if (const std::optional<Row> found = findEqual(row, side)) {
      ++result_.reordered;
      noteEqual(side == 0 ? row : *found, side == 0 ? *found : row);
    } else if (const std::optional<Row> belonging = findBelonging(row, side)) {
      noteDifferent(side == 0 ? row : *belonging, side == 0 ? *belonging : row);
    } else {
      noteOnly(side, row);
    }
  }

  [[nodiscard]] bool inTime(const Row& one, const Row& other) const {
    return distanceOf(one.timeNs(), other.timeNs()) <= result_.toleranceNs;
  }

  // Those that don't need whole frames first.
  [[nodiscard]] FrameFieldSet differingColumns(const Row& one, const Row& other) const {
    const auto bit = [](FrameField field, bool differs) { return differs ? fieldBit(field) : 0U; };
    return bit(FrameField::Time, !inTime(one, other)) |
           bit(FrameField::Bus, one.bus() != other.bus() && one.bus() != 0 && other.bus() != 0) |
           bit(FrameField::Id, one.id() != other.id()) |
           bit(FrameField::Flags, differsInFlags(one.flags(), other.flags())) |
           bit(FrameField::Dlc, differsInDlc(one, other)) | bit(FrameField::Data, !sameBytes(one.data(), other.data()));
  }

  [[nodiscard]] FrameFieldSet differingFields(const Row& one, const Row& other) {
    FrameFieldSet fields = differingColumns(one, other);
    if (settings_.texts || settings_.attributes) {
      one.batch->get(one.at, frames_[0]);
      other.batch->get(other.at, frames_[1]);
      if (settings_.texts && frames_[0].text != frames_[1].text) {
        fields |= fieldBit(FrameField::Text);
      }
      if (settings_.attributes && differsInAttributes(frames_[0], frames_[1])) {
        fields |= fieldBit(FrameField::Attributes);
      }
    }
    return fields;
  }

  [[nodiscard]] bool equal(const Row& one, const Row& other) {
    return one.kind() == other.kind() && one.id() == other.id() && differingFields(one, other) == 0;
  }

  // Calls an action with what the other side has up to the latest time that can be equal, and a little later. False if
  // that is not all searched.
  template <typename Action>
  bool searchOther(const Row& row, std::size_t side, Action action) {
    std::size_t late = 0;
    return sides_[1 - side]->search([&](const Row& other) {
      const bool isLate = other.timeNs() > row.timeNs() && !inTime(row, other);
      late += isLate ? 1U : 0U;
      return late <= kLateFrames && action(other);
    });
  }

  [[nodiscard]] std::optional<Row> findEqual(const Row& row, std::size_t side) {
    std::optional<Row> found;
    searchOther(row, side, [&](const Row& other) {
      if (equal(row, other)) {
        found = other;
      }
      return !found;
    });
    return found;
  }

  // Whether nothing that the other side has at its time is equal to the frame. Not so if the other side has to go on
  // before that is known.
  [[nodiscard]] bool hasNoEqual(const Row& row, std::size_t side) {
    bool found = false;
    const bool searchedAll = searchOther(row, side, [&](const Row& other) {
      found = equal(row, other);
      return !found;
    });
    return searchedAll && !found;
  }

  // How little two frames differ that are not equal; 0 if they have nothing to do with each other.
  [[nodiscard]] unsigned closeness(const Row& row, const Row& other) {
    if (row.kind() != other.kind()) {
      return 0;
    }
    constexpr FrameFieldSet kTime = fieldBit(FrameField::Time);
    constexpr FrameFieldSet kWho = fieldBit(FrameField::Bus) | fieldBit(FrameField::Id);
    constexpr FrameFieldSet kWhat = fieldBit(FrameField::Data) | fieldBit(FrameField::Dlc);
    const FrameFieldSet fields = differingFields(row, other);
    const bool sameLength = ((row.flags() ^ other.flags()) & frame_flag::kExtended) == 0;
    if ((fields & (kTime | kWho)) == 0 && sameLength) {
      return 3;
    }
    if (fields == kTime) {
      return 2;
    }
    return (fields & (kTime | kWhat)) == 0 ? 1 : 0;
  }

  [[nodiscard]] std::optional<Row> findBelonging(const Row& row, std::size_t side) {
    std::optional<Row> best;
    unsigned closest = 0;
    std::size_t tried = 0;
    searchOther(row, side, [&](const Row& other) {
      const unsigned close = closeness(row, other);
      if (close > closest) {
        ++tried;
        if (hasNoEqual(other, 1 - side)) {
          best = other;
          closest = close;
        }
      }
      return closest < 3 && tried < kMostCandidates;
    });
    return best;
  }

  void noteEqual(const Row& first, const Row& second) {
    ++result_.equal;
    result_.farthestNs = std::max(result_.farthestNs, distanceOf(first.timeNs(), second.timeNs()));
    sides_[0]->finish(first);
    sides_[1]->finish(second);
  }

  void noteDifferent(const Row& first, const Row& second) {
    ++result_.different;
    const FrameFieldSet fields = differingFields(first, second);
    for (FrameFieldSet left = fields; left != 0; left &= left - 1) {
      ++result_.byField[static_cast<std::size_t>(std::countr_zero(left))];
    }
    if (FrameDifference* const kept = keepOne(DifferenceKind::Both)) {
      kept->fields = fields;
      keep(first, kept->first);
      keep(second, kept->second);
    }
    sides_[0]->finish(first);
    sides_[1]->finish(second);
  }

  void noteOnly(std::size_t side, const Row& row) {
    ++result_.onlyIn[side];
    if (FrameDifference* const kept = keepOne(side == 0 ? DifferenceKind::OnlyFirst : DifferenceKind::OnlySecond)) {
      keep(row, side == 0 ? kept->first : kept->second);
    }
    sides_[side]->finish(row);
  }

  // Null if enough are told.
  FrameDifference* keepOne(DifferenceKind kind) {
    if (result_.differences.size() >= std::min(settings_.mostDifferences, ComparisonSettings::kMostDifferences)) {
      return nullptr;
    }
    FrameDifference& made = result_.differences.emplace_back();
    made.kind = kind;
    return &made;
  }

  static void keep(const Row& row, KeptFrame& kept) {
    constexpr std::size_t kLongestText = 200;
    row.batch->get(row.at, kept.frame);
    kept.data.assign(kept.frame.data.begin(), kept.frame.data.end());
    kept.frame.data = {};  // the batch is used again
    if (kept.frame.text) {
      const std::string_view text = *std::exchange(kept.frame.text, "");
      kept.text = text.substr(0, utf8Boundary(text, std::min(text.size(), kLongestText)));
    }
  }

  std::array<Side*, 2> sides_;
  ComparisonSettings settings_;
  ComparisonResult result_;
  std::array<Frame, 2> frames_;  // to be used again
};

std::int64_t resolutionOf(const StreamHead& head) {
  const FormatDescriptor& format = formatOf(head.format);
  if (format.format == XLATR_FORMAT_NONE || format.frameCapacities == nullptr) {
    return 1;
  }
  return capacityOfVersion(format.frameCapacities(), head.version).resolutionNs;
}

}  // namespace

std::string_view frameFieldName(FrameField field) {
  constexpr std::array<std::string_view, kFrameFieldCount> kNames = {"time", "bus",  "id",   "flags",
                                                                     "dlc",  "data", "text", "attributes"};
  return kNames[static_cast<std::size_t>(field)];
}

std::uint64_t toleranceOf(const StreamHead& first, const StreamHead& second) {
  return static_cast<std::uint64_t>(std::max(resolutionOf(first), resolutionOf(second)));
}

ComparisonResult compareFrames(FrameSource& first, Account& firstAccount, FrameSource& second, Account& secondAccount,
                               const ComparisonSettings& settings) {
  Side one(first, firstAccount, settings);
  Side other(second, secondAccount, settings);
  Comparer comparer(one, other, settings, settings.toleranceNs.value_or(toleranceOf(first.head(), second.head())));
  return comparer.run();
}

}  // namespace xlatr
