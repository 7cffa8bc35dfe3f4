// A whole session file as frames, and each of its sessions. The first byte is not looked at, so that both targets can
// have the same seeds; the rest of the input is the file. Reading it never fails, whatever it holds.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "formats/native/btr_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMostSessions = 20;
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  folder.write("sessions.btr", std::span(data, size).subspan(1));
  const std::string path = folder.path("sessions.btr");
  fuzz::readWhole(*xlatr::openBtrFrames(path), size - 1);
  for (std::size_t place = 0; place < kMostSessions; ++place) {
    const std::unique_ptr<xlatr::FrameSource> source = xlatr::openBtrSessionFrames(path, place);
    if (source == nullptr) {
      break;
    }
    fuzz::readWhole(*source, size - 1);
  }
  return 0;
}
