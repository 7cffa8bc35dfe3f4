// A whole recording, from its options to bytes.
#pragma once

#include <cstdint>
#include <string>

#include "tracegen/btr_recording.hpp"
#include "tracegen/text_output.hpp"
#include "tracegen/traffic_model.hpp"
#include "tracegen/trc_printer.hpp"

namespace tracegen {

enum class Form : std::uint8_t { Trc, Candump, Blf, Lin, Btrc, Btr };

struct RecordingOptions {
  TrafficOptions traffic;
  Form form = Form::Trc;
  // What a file of this version can't hold is left out of the traffic in every form, so that the same options give the
  // same traffic in each.
  TrcVersion version = TrcVersion::V2_1;
  bool carriageReturn = true;    // TRC only
  std::uint32_t damageRate = 0;  // BTRC only: blocks in 10000 that are damaged
  BtrForm btr;                   // BTR only
  // The recording ends with the entry that reaches the first of these limits. Comments are not messages.
  std::uint64_t maxMessages = UINT64_MAX;
  std::uint64_t maxBytes = UINT64_MAX;
};

struct RecordingSize {
  std::uint64_t messages = 0;  // of the traffic; the other forms have no place for some
  std::uint64_t comments = 0;
  std::uint64_t bytes = 0;
  // What the head of a file is to be replaced with, if it says how the recording ended; else empty.
  std::string finalHeader;
};

// Throws std::invalid_argument when an option is outside its range, or when a version without a bus column is to hold
// several buses.
RecordingSize generate(const RecordingOptions& options, const Sink& sink);

// Writes the recording to the file, "-" for standard output. Throws std::ios_base::failure when that fails.
RecordingSize generateFile(const RecordingOptions& options, const std::string& path);

}  // namespace tracegen
