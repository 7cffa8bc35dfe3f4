#include "frames/split_target.hpp"

#include <algorithm>
#include <limits>
#include <utility>

#include "frames/frame_failure.hpp"
#include "platform/files.hpp"

namespace xlatr {
namespace {

// More than a frame needs in any format. Only longer texts make a file larger than it was to be.
constexpr std::uint64_t kBytesOfFrame = 512;

// How many frames may be written before the size is looked at again; 0 when there is no room for another one.
std::size_t roomFor(std::uint64_t limit, std::uint64_t written) {
  return static_cast<std::size_t>(
      std::min<std::uint64_t>((limit - std::min(limit, written)) / kBytesOfFrame, FrameBatch::kCapacity));
}

// The first time after this one that a part begins at.
std::int64_t nextBoundary(std::int64_t timeNs, std::int64_t everyNs) {
  const std::int64_t within = timeNs % everyNs;
  const std::int64_t left = within < 0 ? -within : everyNs - within;
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
  return timeNs > kLast - left ? kLast : timeNs + left;
}

}  // namespace

SplitTarget::SplitTarget(OutputTarget target, TargetSettings settings, const SplitSettings& split)
    : target_(std::move(target)), settings_(std::move(settings)), split_(split) {
  if (!split_.any()) {
    Part& only = parts_[0];
    only.file = std::make_unique<TargetFile>(target_, settings_);
    return;
  }
  if (target_.bytes() != nullptr) {
    throw FrameFailure(FrameProblem::BadArgument, target_.name() + ": only files can be split");
  }
  name_.emplace(target_.name(), split_.buses, split_.parts());
}

SplitTarget::~SplitTarget() = default;

void SplitTarget::create(const StreamHead& head) {
  head_ = head;
  if (!name_) {
    parts_[0].file->create(head_);
  } else if (!split_.buses) {
    begin(parts_[0], 0);
  }
}

void SplitTarget::write(const FrameBatch& batch, Account& account) {
  if (!name_) {
    Part& only = parts_[0];
    only.file->write(batch, account);
    only.frames += batch.size();
    return;
  }
  for (std::size_t row = 0; row < batch.size(); ++row) {
    batch.get(row, frame_);
    append(frame_, account);
  }
  hand(account);
}

// What names no bus goes where the frame before it went.
void SplitTarget::append(const Frame& frame, Account& account) {
  if (!split_.buses) {
    appendTo(parts_[0], frame, account);
    return;
  }
  if (frame.bus != 0) {
    appendTo(partOfBus(frame.bus), frame, account);
    return;
  }
  if (last_ != nullptr) {
    appendTo(*last_, frame, account);
    return;
  }
  if (waiting_ == nullptr) {
    waiting_ = std::make_unique<FrameBatch>();
  }
  waiting_->append(frame);
  if (waiting_->full()) {
    handWaiting(partOfBus(0), account);
  }
}

void SplitTarget::handWaiting(Part& part, Account& account) {
  const std::unique_ptr<FrameBatch> waiting = std::move(waiting_);
  for (std::size_t row = 0; waiting != nullptr && row < waiting->size(); ++row) {
    appendTo(part, waiting->at(row), account);
  }
}

SplitTarget::Part& SplitTarget::partOfBus(std::uint16_t bus) {
  Part& part = parts_[bus];
  part.place.bus = bus;
  if (parts_.size() > kMostBuses) {
    throw FrameFailure(FrameProblem::TargetRefused, target_.name() + ": the trace has more than " +
                                                        std::to_string(kMostBuses) +
                                                        " buses: select some of them, or don't split by bus");
  }
  return part;
}

void SplitTarget::appendTo(Part& part, const Frame& frame, Account& account) {
  if (last_ != &part) {
    hand(account);
    last_ = &part;
    handWaiting(part, account);
  }
  if (split_.ns != 0 && part.frames != 0 && frame.timeNs >= part.endNs) {
    hand(account);
    end(part);
  }
  if (part.file == nullptr) {
    begin(part, frame.timeNs);
  }
  if (split_.ns != 0 && part.frames == 0) {
    part.endNs = nextBoundary(frame.timeNs, split_.ns);
  }
  rows_.append(frame);
  ++part.frames;
  if (rows_.full() || (split_.bytes != 0 && --part.room == 0)) {
    hand(account);
    if (split_.bytes != 0) {
      part.room = roomFor(split_.bytes, part.file->bytesWritten());
      if (part.room == 0) {
        end(part);
      }
    }
  }
}

void SplitTarget::begin(Part& part, std::int64_t timeNs) {
  part.place.timeNs = timeNs;
  part.file = std::make_unique<TargetFile>(name_->of(part.place, head_.start), settings_);
  part.file->create(head_);
  part.frames = 0;
  part.room = std::max<std::size_t>(1, roomFor(split_.bytes, part.file->bytesWritten()));
}

void SplitTarget::hand(Account& account) {
  if (!rows_.empty()) {
    last_->file->write(rows_, account);
    rows_.clear();
  }
}

void SplitTarget::end(Part& part) {
  part.file->finish();
  files_.push_back({part.file->name(), part.file->bytesWritten(), part.frames});
  part.file.reset();
  part.frames = 0;
  ++part.place.number;
}

void SplitTarget::writeRest(Account& account) {
  if (waiting_ != nullptr) {
    handWaiting(partOfBus(0), account);
    hand(account);
  }
}

void SplitTarget::finish() {
  for (auto& [bus, part] : parts_) {
    if (part.file != nullptr) {
      end(part);
    }
  }
}

void SplitTarget::removeFinished() {
  for (const WrittenFile& file : files_) {
    platform::removeFile(file.name);
  }
  files_.clear();
}

}  // namespace xlatr
