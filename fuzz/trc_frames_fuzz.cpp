// A whole TRC trace as frames. The input is the file. Reading it never fails, whatever it holds.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/trc/trc_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("trace.trc", std::span(data, size));
  fuzz::readWhole(*xlatr::openTrcFrames(folder.path("trace.trc")), size);
  return 0;
}
