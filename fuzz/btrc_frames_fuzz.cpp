// A whole BTRC trace as frames. The first byte is not looked at, so that both targets can have the same seeds; the rest
// of the input is the file. Reading it never fails, whatever it holds.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/native/btrc_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  folder.write("trace.btrc", std::span(data, size).subspan(1));
  fuzz::readWhole(*xlatr::openBtrcFrames(folder.path("trace.btrc")), size - 1);
  return 0;
}
