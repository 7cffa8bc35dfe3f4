// A whole conversion.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "blf2csv/blf_table.hpp"
#include "blf2csv/remarks.hpp"

namespace blf2csv {

// Is told how much is done, in hundredths of a per cent, every few milliseconds; returns false to stop.
using Progress = std::function<bool(std::uint16_t)>;

enum class Outcome : std::uint8_t { Done, Stopped };

// Hands the table of the log to the sink. Throws std::ios_base::failure when the log can't be read, std::runtime_error
// when it is no log, and what the sink throws.
[[nodiscard]] Outcome convertToTable(const std::string& path, const Sink& sink, const Progress& progress,
                                     Remarks& remarks);

// The same into a file, which is removed again if the conversion does not get to its end.
[[nodiscard]] Outcome convertToFile(const std::string& path, const std::string& target, const Progress& progress,
                                    Remarks& remarks);

// The header of the log. Throws as convertToTable does.
[[nodiscard]] FileHeader readFileHeader(const std::string& path);

// How many objects the log has: what its header says, or, where the recorder did not get to write that, the number of
// rows of its table. Throws as convertToTable does.
[[nodiscard]] std::int32_t countObjects(const std::string& path);

}  // namespace blf2csv
