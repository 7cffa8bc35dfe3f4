// What a conversion met that its user should know about.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace blf2csv {

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

// Counts what was met, so that the report stays short however damaged a log is. Memory is bounded.
class Remarks {
 public:
  // `offset` is where it was met: up to StrayFileBytes in the file, after that in the joined content of the containers.
  void note(Remark remark, std::uint64_t offset) {
    Count& count = counts_[static_cast<std::size_t>(remark)];
    if (count.times++ == 0) {
      count.firstOffset = offset;
    }
  }
  // An object of a type that has no row.
  void notePassedOver(std::uint32_t type);

  [[nodiscard]] std::uint64_t times(Remark remark) const { return counts_[static_cast<std::size_t>(remark)].times; }
  [[nodiscard]] std::uint64_t passedOver() const;

  // One line per remark, without line ends; empty when nothing was met.
  [[nodiscard]] std::vector<std::string> lines() const;

 private:
  struct Count {
    std::uint64_t times = 0;
    std::uint64_t firstOffset = 0;
  };

  std::array<Count, kRemarkCount> counts_{};
  std::vector<std::pair<std::uint32_t, std::uint64_t>> passedOver_;  // type and how many
  std::uint64_t otherPassedOver_ = 0;                                // of types that found no place any more
};

}  // namespace blf2csv
