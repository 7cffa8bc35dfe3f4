#include "formats/mf4/value_table.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>

namespace xlatr {
namespace {

constexpr std::uint32_t kNowhere = std::numeric_limits<std::uint32_t>::max();

// Places that nothing has been said of yet.
class FreePlaces {
 public:
  explicit FreePlaces(std::size_t count) : next_(count + 1) { std::iota(next_.begin(), next_.end(), 0U); }

  // The first one from `place` on; their number if there is none. The way there is shortened for the next search.
  [[nodiscard]] std::size_t from(std::size_t place) {
    while (next_[place] != place) {
      next_[place] = next_[next_[place]];
      place = next_[place];
    }
    return place;
  }
  void take(std::size_t place) { next_[place] = static_cast<std::uint32_t>(place + 1); }

 private:
  std::vector<std::uint32_t> next_;
};

}  // namespace

ValueTable::ValueTable(std::span<const double> elements) : elements_(elements) {
  if (elements_.size() < 2 || elements_.size() % 2 != 0) {
    return;
  }
  std::ranges::copy_if(elements_, std::back_inserter(sorted_), [](double element) { return !std::isnan(element); });
  std::ranges::sort(sorted_);
  sorted_.erase(std::unique(sorted_.begin(), sorted_.end()), sorted_.end());
  findStops();
}

// An element takes its own place and those up to the element two further on, as far as no element before it has them.
void ValueTable::findStops() {
  stops_.assign(2 * sorted_.size() + 1, kNowhere);
  FreePlaces free(stops_.size());
  const auto take = [&](std::size_t first, std::size_t end, std::size_t index) {
    for (std::size_t place = free.from(first); place < end; place = free.from(place)) {
      stops_[place] = static_cast<std::uint32_t>(index);
      free.take(place);
    }
  };
  for (std::size_t index = 0; index + 1 < elements_.size(); ++index) {
    const double element = elements_[index];
    if (std::isnan(element)) {
      continue;
    }
    const std::size_t here = placeOf(element);
    take(here, here + 1, index);
    if (index + 2 < elements_.size() && element < elements_[index + 2]) {
      take(here + 1, placeOf(elements_[index + 2]), index);
    }
  }
}

std::size_t ValueTable::placeOf(double input) const {
  const auto found = std::ranges::lower_bound(sorted_, input);
  const auto below = static_cast<std::size_t>(found - sorted_.begin());
  return 2 * below + (found != sorted_.end() && *found == input ? 1 : 0);
}

std::optional<double> ValueTable::lookUp(double input) const {
  if (stops_.empty()) {
    return std::nullopt;
  }
  if (input < elements_.front()) {
    return elements_[1];
  }
  if (input > elements_[elements_.size() - 2]) {
    return elements_.back();
  }
  const std::uint32_t stop = std::isnan(input) ? kNowhere : stops_[placeOf(input)];
  if (stop == kNowhere) {
    return std::nullopt;
  }
  const double element = elements_[stop];
  if (element == input) {
    return elements_[stop + 1];
  }
  const bool lowerIsNearer = input - element <= elements_[stop + 2] - input;
  const std::size_t found = stop + (lowerIsNearer ? 1U : 3U);
  return found < elements_.size() ? std::optional(elements_[found]) : std::nullopt;
}

}  // namespace xlatr
