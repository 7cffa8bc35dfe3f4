#include "frames/frame_selection.hpp"

#include <algorithm>
#include <cstddef>

namespace xlatr {
namespace {

constexpr std::uint16_t kEitherDirection = frame_flag::kReceived | frame_flag::kTransmitted;

constexpr FrameKindSet kKindsWithIdentifier =
    kindBit(FrameKind::Data) | kindBit(FrameKind::Remote) | kindBit(FrameKind::Lin);

constexpr std::uint8_t digitOf(bool condition) {
  return condition ? 1 : 0;
}

constexpr std::uint8_t bitOf(FrameKindSet kinds, std::uint8_t kind) {
  return static_cast<std::uint8_t>(kinds >> kind & 1U);
}

bool names(const IdentifierRule& rule, std::uint32_t id, std::uint16_t flags) {
  if (rule.extended && *rule.extended != ((flags & frame_flag::kExtended) != 0)) {
    return false;
  }
  return rule.mask ? (id & *rule.mask) == (rule.first & *rule.mask) : id >= rule.first && id <= rule.last;
}

}  // namespace

bool FrameSelection::wantsAll() const {
  return !fromNs && !untilNs && buses.empty() && identifiers.empty() && kinds == kAllFrameKinds && directions == 0;
}

// The loops below need no branch, so that the compiler makes vectors of them.

void FrameSelector::selectTimes(const FrameBatch& batch) {
  if (!selection_.fromNs && !selection_.untilNs) {
    return;
  }
  const std::int64_t from = selection_.fromNs.value_or(-kFarthestNs);
  const std::int64_t until = selection_.untilNs.value_or(kFarthestNs + 1);
  const auto times = batch.times();
  for (std::size_t row = 0; row < times.size(); ++row) {
    wanted_[row] &= digitOf(times[row] >= from && times[row] < until);
  }
}

void FrameSelector::selectBuses(const FrameBatch& batch) {
  if (selection_.buses.empty()) {
    return;
  }
  const auto buses = batch.buses();
  std::ranges::fill(named_, std::uint8_t{0});
  for (const BusRule& rule : selection_.buses) {
    for (std::size_t row = 0; row < buses.size(); ++row) {
      named_[row] |= digitOf(buses[row] >= rule.first && buses[row] <= rule.last);
    }
  }
  for (std::size_t row = 0; row < buses.size(); ++row) {
    wanted_[row] &= digitOf((named_[row] != 0) != selection_.otherBuses);
  }
}

void FrameSelector::selectIdentifiers(const FrameBatch& batch) {
  if (selection_.identifiers.empty()) {
    return;
  }
  const auto ids = batch.ids();
  const auto flags = batch.flags();
  const auto kinds = batch.kinds();
  std::ranges::fill(named_, std::uint8_t{0});
  for (const IdentifierRule& rule : selection_.identifiers) {
    for (std::size_t row = 0; row < ids.size(); ++row) {
      named_[row] |= digitOf(names(rule, ids[row], flags[row]));
    }
  }
  for (std::size_t row = 0; row < ids.size(); ++row) {
    const bool isNamed = (named_[row] & bitOf(kKindsWithIdentifier, kinds[row])) != 0;
    wanted_[row] &= digitOf(isNamed != selection_.otherIdentifiers);
  }
}

void FrameSelector::selectKinds(const FrameBatch& batch) {
  if (selection_.kinds == kAllFrameKinds) {
    return;
  }
  const auto kinds = batch.kinds();
  for (std::size_t row = 0; row < kinds.size(); ++row) {
    wanted_[row] &= bitOf(selection_.kinds, kinds[row]);
  }
}

void FrameSelector::selectDirections(const FrameBatch& batch) {
  const auto directions = static_cast<std::uint16_t>(selection_.directions & kEitherDirection);
  if (directions == 0) {
    return;
  }
  const auto flags = batch.flags();
  for (std::size_t row = 0; row < flags.size(); ++row) {
    wanted_[row] &= digitOf((flags[row] & directions) != 0);
  }
}

void FrameSelector::select(FrameBatch& batch, Account& account) {
  if (selection_.wantsAll() || batch.empty()) {
    return;
  }
  wanted_.assign(batch.size(), 1);
  named_.resize(batch.size());
  selectTimes(batch);
  selectBuses(batch);
  selectIdentifiers(batch);
  selectKinds(batch);
  selectDirections(batch);
  const auto unwanted = static_cast<std::size_t>(std::ranges::count(wanted_, std::uint8_t{0}));
  if (unwanted == 0) {
    return;
  }
  const auto first = static_cast<std::size_t>(std::ranges::find(wanted_, std::uint8_t{0}) - wanted_.begin());
  account.addDropped(Remark::NotSelected, unwanted, batch.places()[first]);
  batch.keep(wanted_);
}

}  // namespace xlatr
