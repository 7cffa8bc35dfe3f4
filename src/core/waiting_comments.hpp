// Comments that have no file to go to yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/files.hpp"

namespace xlatr {

// Keeps texts in order until there is a place for them: in memory while they are few, in a temporary file when they are
// many, so that a source of nothing but comments does not fill the memory.
class WaitingComments {
 public:
  void add(std::string_view text);
  // Hands out all texts in the order in which they came and forgets them. Raises a failure when some are lost.
  void handOut(const std::function<void(std::string_view)>& take);

 private:
  static constexpr std::size_t kMostHeld = std::size_t{1} << 20;

  void spill();

  std::string held_;  // each text after its length
  std::size_t mostHeld_ = kMostHeld;
  platform::File spilled_;
  std::uint64_t spilledBytes_ = 0;
};

}  // namespace xlatr
