// A whole MF4 file as frames. The input is the file. Reading it never fails, whatever it holds.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/mf4/mf4_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("trace.mf4", std::span(data, size));
  fuzz::readWhole(*xlatr::openMf4Frames(folder.path("trace.mf4")), size);
  return 0;
}
