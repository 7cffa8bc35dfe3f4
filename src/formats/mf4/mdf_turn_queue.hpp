// The order in which several rows of frames become one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace xlatr {

// When a frame happened, and which of the sources has it: the earlier one first, and at the same time that of the
// source that stands first in the file.
template <class Time>
struct MdfTurn {
  Time time;
  std::size_t source;

  [[nodiscard]] bool isBefore(const MdfTurn& other) const {
    return time < other.time || (time == other.time && source < other.source);
  }
};

// The next frame of each source that has one.
template <class Time>
class MdfTurnQueue {
 public:
  [[nodiscard]] bool empty() const { return turns_.empty(); }
  // The earliest; null without any.
  [[nodiscard]] const MdfTurn<Time>* first() const { return turns_.empty() ? nullptr : &turns_.front(); }
  void push(Time time, std::size_t source) {
    turns_.push_back({time, source});
    std::ranges::push_heap(turns_, isLater);
  }
  // Takes the earliest away and returns its source.
  [[nodiscard]] std::size_t pop() {
    std::ranges::pop_heap(turns_, isLater);
    const std::size_t source = turns_.back().source;
    turns_.pop_back();
    return source;
  }
  void clear() { turns_.clear(); }

 private:
  [[nodiscard]] static bool isLater(const MdfTurn<Time>& left, const MdfTurn<Time>& right) {
    return right.isBefore(left);
  }

  std::vector<MdfTurn<Time>> turns_;  // a heap
};

}  // namespace xlatr
