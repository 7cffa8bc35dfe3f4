#include "frames/wanted_frames.hpp"

#include <cstddef>
#include <limits>
#include <numeric>
#include <optional>

#include "frames/frame_failure.hpp"

namespace xlatr {
namespace {

FrameSelection sinceStart(FrameSelection selection, const StreamHead& head) {
  if (!selection.absolute) {
    return selection;
  }
  if (!head.start) {
    throw FrameFailure(FrameProblem::BadArgument,
                       head.path + ": the trace does not say when it started: give times in seconds since its start");
  }
  for (std::optional<std::int64_t>* const time : {&selection.fromNs, &selection.untilNs}) {
    if (*time) {
      *time = shiftedTime(**time, -head.start->sinceEpochNs);
    }
  }
  return selection;
}

}  // namespace

WantedFrames::WantedFrames(std::unique_ptr<FrameSource> source, FrameSelection selection, FrameChanges changes)
    : source_(std::move(source)),
      selector_(sinceStart(std::move(selection), source_->head())),
      changes_(std::move(changes)),
      head_(source_->head()),
      shiftNs_(changes_.shiftNs) {
  if (!changes_.buses.empty()) {
    buses_.resize(std::size_t{std::numeric_limits<std::uint16_t>::max()} + 1);
    std::iota(buses_.begin(), buses_.end(), std::uint16_t{0});
    for (const auto& [from, to] : changes_.buses) {
      buses_[from] = to;
    }
  }
  if (head_.start && !head_.start->zoneMinutes) {
    head_.start->zoneMinutes = changes_.zoneMinutes;
  }
  if (changes_.rebase) {
    readFirst();
  }
}

void WantedFrames::readFirst() {
  first_.emplace();
  bool more = true;
  while (more && first_->empty()) {
    first_->clear();
    more = readSelected(*first_, firstAccount_);
  }
  if (first_->empty()) {
    return;
  }
  const std::int64_t firstNs = first_->times().front();
  shiftNs_ = shiftedTime(shiftNs_, -firstNs);
  if (head_.start) {
    head_.start->sinceEpochNs = shiftedTime(head_.start->sinceEpochNs, firstNs);
  }
}

bool WantedFrames::readSelected(FrameBatch& batch, Account& account) {
  const bool more = source_->read(batch, account);
  selector_.select(batch, account);
  return more;
}

void WantedFrames::change(FrameBatch& batch) const {
  if (shiftNs_ != 0) {
    batch.shiftTimes(shiftNs_);
  }
  if (!buses_.empty()) {
    batch.mapBuses(buses_);
  }
}

bool WantedFrames::read(FrameBatch& batch, Account& account) {
  bool more = true;
  if (first_) {
    batch = std::move(*first_);
    first_.reset();
    account.add(firstAccount_);
    more = !batch.empty();
  } else {
    more = readSelected(batch, account);
  }
  change(batch);
  return more;
}

}  // namespace xlatr
