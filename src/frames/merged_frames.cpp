#include "frames/merged_frames.hpp"

#include <algorithm>
#include <functional>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

namespace xlatr {
namespace {

// Since 1970 on a clock that all starts have in common: UTC where the zone is known.
std::int64_t commonClock(const TraceStart& start) {
  constexpr std::int64_t kMinute = 60'000'000'000;
  return shiftedTime(start.sinceEpochNs, -std::int64_t{start.zoneMinutes.value_or(0)} * kMinute);
}

}  // namespace

MergedFrames::MergedFrames(std::vector<std::unique_ptr<FrameSource>> sources, const MergeSettings& settings)
    : inputs_(sources.size()), settings_(settings) {
  for (std::size_t at = 0; at < sources.size(); ++at) {
    inputs_[at].source = std::move(sources[at]);
  }
  const auto headOf = [](const Input& input) -> const StreamHead& { return input.source->head(); };
  head_ = headOf(inputs_.front());
  const bool allKnown = !settings_.alignsStarts && std::ranges::all_of(inputs_, [&](const Input& input) {
    return headOf(input).start.has_value();
  });
  if (allKnown) {
    const auto clockOf = [&](const Input& input) { return commonClock(*headOf(input).start); };
    const auto earliest = std::ranges::min_element(inputs_, {}, clockOf);
    for (Input& input : inputs_) {
      input.offsetNs = shiftedTime(clockOf(input), -clockOf(*earliest));
    }
    head_.start = headOf(*earliest).start;
  }
  for (const Input& input : std::span(inputs_).subspan(1)) {
    head_.frames =
        head_.frames && headOf(input).frames ? std::optional(*head_.frames + *headOf(input).frames) : std::nullopt;
  }
}

MergedFrames::Input* MergedFrames::next(Account& account) {
  Input* first = nullptr;
  std::int64_t firstNs = 0;
  for (Input& input : inputs_) {
    while (!input.ended && input.row == input.batch.size()) {
      input.batch.clear();
      input.row = 0;
      input.ended = !input.source->read(input.batch, account);
    }
    if (input.ended) {
      continue;
    }
    const std::int64_t timeNs = shiftedTime(input.batch.times()[input.row], input.offsetNs);
    if (first == nullptr || timeNs < firstNs) {
      first = &input;
      firstNs = timeNs;
    }
  }
  return first;
}

// The silence between recordings is that before the first frame of one when all that began before have ended.
void MergedFrames::closeGap(const Input& input, std::int64_t timeNs) {
  const auto goesOn = [](const Input& other) { return other.begun && !other.ended; };
  if (any_ && !input.begun && timeNs > lastNs_ && std::ranges::none_of(inputs_, goesOn)) {
    shiftNs_ = shiftedTime(shiftNs_, lastNs_ - timeNs);
  }
  any_ = true;
  lastNs_ = std::max(lastNs_, timeNs);
}

bool MergedFrames::read(FrameBatch& batch, Account& account) {
  while (!batch.full()) {
    Input* const input = next(account);
    if (input == nullptr) {
      break;
    }
    input->batch.get(input->row++, frame_);
    frame_.timeNs = shiftedTime(frame_.timeNs, input->offsetNs);
    if (settings_.closesGaps) {
      closeGap(*input, frame_.timeNs);
      input->begun = true;
    }
    frame_.timeNs = shiftedTime(frame_.timeNs, shiftNs_);
    batch.append(frame_);
  }
  return !batch.empty();
}

std::vector<PassedOver> MergedFrames::passedOver() const {
  std::vector<PassedOver> all;
  for (const Input& input : inputs_) {
    for (PassedOver& kind : input.source->passedOver()) {
      const auto known = std::ranges::find(all, kind.name, &PassedOver::name);
      if (known != all.end()) {
        known->count += kind.count;
      } else {
        all.push_back(std::move(kind));
      }
    }
  }
  return all;
}

std::uint64_t MergedFrames::bytesRead() const {
  return std::transform_reduce(inputs_.begin(), inputs_.end(), std::uint64_t{0}, std::plus<>(),
                               [](const Input& input) { return input.source->bytesRead(); });
}

}  // namespace xlatr
