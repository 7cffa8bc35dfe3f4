// What a conversion met that its user should know about.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/blf/blf_log_remarks.hpp"

namespace blf2csv {

using xlatr::blf_log::kRemarkCount;
using xlatr::blf_log::Remark;

// Damage, and what has no row. Memory is bounded.
class Remarks : public xlatr::blf_log::Remarks {
 public:
  // An object of a type that has no row.
  void notePassedOver(std::uint32_t type);

  [[nodiscard]] std::uint64_t passedOver() const;

  // One line per remark, without line ends; empty when nothing was met.
  [[nodiscard]] std::vector<std::string> lines() const;

 private:
  std::vector<std::pair<std::uint32_t, std::uint64_t>> passedOver_;  // type and how many
  std::uint64_t otherPassedOver_ = 0;                                // of types that found no place any more
};

}  // namespace blf2csv
