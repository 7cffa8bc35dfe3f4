// A whole BLF log as frames. The input is the file. Reading it never fails, whatever it holds.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/blf/blf_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("log.blf", std::span(data, size));
  const auto source = xlatr::openBlfFrames(folder.path("log.blf"));
  fuzz::readWhole(*source, size);
  for (const xlatr::PassedOver& kind : source->passedOver()) {
    fuzz::require(!kind.name.empty() && kind.count > 0);
  }
  return 0;
}
