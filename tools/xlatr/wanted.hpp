// Which frames the user wants, and what is changed of them.
#pragma once

#include <cstdint>
#include <vector>

#include "arguments.hpp"
#include "xlatr/frames.h"

namespace xlatr::cli {

class Wanted {
 public:
  // Raises a CommandFailure with ExitCode::WrongUsage for what can't be understood.
  explicit Wanted(const Arguments& arguments);

  // They refer to this object. Any thread.
  [[nodiscard]] xlatr_selection selection() const;
  [[nodiscard]] xlatr_changes changes() const;

 private:
  void readTimes(const Arguments& arguments);
  void readBuses(const Arguments& arguments);
  void readIdentifiers(const Arguments& arguments);
  void readKinds(const Arguments& arguments);
  void readDirections(const Arguments& arguments);
  void readChanges(const Arguments& arguments);

  std::vector<xlatr_bus_rule> buses_;
  std::vector<xlatr_id_rule> ids_;
  std::vector<std::uint16_t> busMap_;
  // Without the arrays above.
  xlatr_selection selection_{};
  xlatr_changes changes_{};
};

}  // namespace xlatr::cli
