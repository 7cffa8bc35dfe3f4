// A whole LIN trace as frames. The input is the file. Reading it never fails, whatever it holds.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/lin/lin_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("trace.ltrc", std::span(data, size));
  fuzz::readWhole(*xlatr::openLinFrames(folder.path("trace.ltrc")), size);
  return 0;
}
