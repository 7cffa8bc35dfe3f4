// What was met in a log that its user should know about.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace xlatr::blf_log {

enum class Remark : std::uint8_t {
  CutContainer,      // a container that reaches beyond the end of the file
  BrokenContainer,   // a container whose bytes can't be inflated, or not to their end
  UnknownMethod,     // a container packed in a way that is not known
  WrongContentSize,  // a container that states another size than its content has
  StrayFileBytes,    // bytes between the containers that belong to none
  NestedContainer,   // a container inside a container
  StrayBytes,        // bytes between objects that belong to none
  CutObject,         // an object that is shorter than its fields
  CutData,           // a frame with fewer data bytes than it states
  UnknownTimeUnit,   // a time of an unknown unit, taken for nanoseconds
};
inline constexpr std::size_t kRemarkCount = 10;

// Counts what was met, so that a report stays short however damaged a log is.
class Remarks {
 public:
  // `offset` is where it was met: up to StrayFileBytes in the file, after that in the joined content of the containers.
  void note(Remark remark, std::uint64_t offset) {
    Count& count = counts_[static_cast<std::size_t>(remark)];
    if (count.times++ == 0) {
      count.firstOffset = offset;
    }
    ++total_;
  }

  [[nodiscard]] std::uint64_t times(Remark remark) const { return counts_[static_cast<std::size_t>(remark)].times; }
  // Where the first one was met.
  [[nodiscard]] std::uint64_t firstOffset(Remark remark) const {
    return counts_[static_cast<std::size_t>(remark)].firstOffset;
  }
  [[nodiscard]] std::uint64_t total() const { return total_; }

 private:
  struct Count {
    std::uint64_t times = 0;
    std::uint64_t firstOffset = 0;
  };

  std::array<Count, kRemarkCount> counts_{};
  std::uint64_t total_ = 0;
};

}  // namespace xlatr::blf_log
