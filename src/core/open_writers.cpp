#include "core/open_writers.hpp"

#include <algorithm>

namespace xlatr {

void OpenWriters::makeRoom() {
  if (writers_.size() == kMost) {
    ITraceWriter* const last = writers_.back();
    writers_.pop_back();
    last->rest();
  }
}

// Most traces have few buses, which are then found at the front.
void OpenWriters::use(ITraceWriter& writer) {
  const auto found = std::ranges::find(writers_, &writer);
  if (found == writers_.end()) {
    makeRoom();
    writers_.insert(writers_.begin(), &writer);
  } else {
    std::rotate(writers_.begin(), found, found + 1);
  }
}

}  // namespace xlatr
