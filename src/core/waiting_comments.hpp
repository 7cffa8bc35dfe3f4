// Comments that have no file to go to yet.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace xlatr {

// Keeps texts in order until there is a place for them: in memory while they are few, in a temporary file when they are
// many, so that a source of nothing but comments does not fill the memory.
class WaitingComments {
 public:
  void add(std::string_view text);
  // Hands out all texts in the order in which they came and forgets them. Raises a failure when some are lost.
  void handOut(const std::function<void(std::string_view)>& take);

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void spill();

  std::string held_;  // each text after its length
  std::unique_ptr<std::FILE, Close> spilled_;
};

}  // namespace xlatr
