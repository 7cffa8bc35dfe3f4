// A whole ASC log as frames. The input is the file. Reading it never fails, whatever it holds, and what was read can be
// written and read again.
#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/asc/asc_frames.hpp"
#include "frame_checks.hpp"
#include "frames/frame_sink.hpp"
#include "scratch_folder.hpp"

namespace {

using namespace xlatr;

// Writes all that a source holds, and reads as many frames again.
void writeAndReadAgain(const fuzz::ScratchFolder& folder) {
  const auto source = openAscFrames(folder.path("trace.asc"));
  FrameBatch batch;
  Account account;
  {
    const auto sink = createAscFrames(folder.path("again.asc"), source->head(), {});
    while (source->read(batch, account)) {
      sink->write(batch, account);
      batch.clear();
    }
    sink->close();
  }
  fuzz::require(account.written() == account.read() && account.dropped() == 0);
  const auto again = openAscFrames(folder.path("again.asc"));
  Account second;
  while (again->read(batch, second)) {
    batch.clear();
  }
  fuzz::require(second.read() == account.read());
  fuzz::require(second.noted(Remark::LineNotUnderstood).frames == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("trace.asc", std::span(data, size));
  fuzz::readWhole(*openAscFrames(folder.path("trace.asc")), size);
  static_cast<void>(looksLikeAsc({reinterpret_cast<const char*>(data), size}));
  writeAndReadAgain(folder);
  return 0;
}
