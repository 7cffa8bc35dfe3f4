// TRC text, file versions 1.1 to 3.0.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "tracegen/line_printer.hpp"
#include "tracegen/traffic_model.hpp"

namespace tracegen {

enum class TrcVersion : std::uint8_t { V1_1 = 0, V1_2 = 1, V1_3 = 2, V2_0 = 3, V2_1 = 4, V3_0 = 5 };

// "1.1" to "3.0"; nothing for another text.
std::optional<TrcVersion> trcVersionFromText(std::string_view text);
std::string_view trcVersionText(TrcVersion version);

// Whether a file of the version has a bus column; a file without one holds the traffic of a single bus.
bool hasBusColumn(TrcVersion version);

// Removes from the options what a file of the version has no form for: frames longer than eight bytes and events below
// 2.0, CAN XL below 3.0.
void limitToVersion(TrafficOptions& options, TrcVersion version);

struct TrcForm {
  TrcVersion version = TrcVersion::V2_1;
  bool carriageReturn = true;  // lines end in CR LF, as recording devices write them
  std::uint32_t buses = 3;     // for the table in the header
  std::uint64_t seed = 1;      // named in the header
};

// Every entry becomes a line; comments take no number. Must not be given entries of a kind that limitToVersion removes.
class TrcPrinter : public LinePrinter {
 public:
  explicit TrcPrinter(const TrcForm& form) : form_(form) {}

  void printHeader(TextOutput& output) override;
  void printEntry(const Entry& entry, TextOutput& output) override;

 private:
  void printOld(const Entry& entry, TextOutput& output);
  void printColumns(const Entry& entry, TextOutput& output);
  void printColumnsBeforeLength(const Entry& entry, TextOutput& output);
  void printLineEnd(TextOutput& output) const;

  TrcForm form_;
  std::uint64_t number_ = 0;
};

}  // namespace tracegen
