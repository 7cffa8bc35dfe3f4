// How the records of a written MDF file are laid out.
#pragma once

#include <cstdint>

namespace xlatr {

enum class MdfLayout : std::uint32_t {
  Unsorted = 0,          // one data group for all frames, each record with its record id
  SignalData = 1,        // unsorted, with the payloads of data frames in a signal data block
  SignalDataStream = 2,  // the same, marked as a stream (version 4.2)
  Sorted = 3,            // one data group for each kind of frame, records without record ids
};

struct MdfLayoutOptions {
  bool largePayload = true;  // room for the 64 bytes of CAN FD, otherwise for 8
  MdfLayout layout = MdfLayout::Unsorted;
  bool zipped = false;
  bool dataFramesOnly = false;  // no groups for remote and error frames

  [[nodiscard]] bool isSorted() const { return layout == MdfLayout::Sorted; }
  [[nodiscard]] bool usesSignalData() const {
    return layout == MdfLayout::SignalData || layout == MdfLayout::SignalDataStream;
  }
};

}  // namespace xlatr
