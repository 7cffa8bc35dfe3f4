// A whole CSV table of any version as frames. The input is the file. Reading it never fails, whatever it holds. What
// was read comes back from a table of version 2.0.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "formats/csv/csv_frames.hpp"
#include "frame_checks.hpp"
#include "scratch_folder.hpp"

namespace {

void checkTable(const fuzz::ScratchFolder& folder) {
  const std::string path = folder.path("table.csv");
  const auto source = xlatr::openCsvFrames(folder.path("trace.csv"));
  xlatr::FrameBatch batch;
  xlatr::FrameBatch again;
  xlatr::Account account;
  while (source->read(batch, account)) {
    const auto sink = xlatr::createCsvFrames(path, source->head(), xlatr::SinkSettings{.version = 2.0});
    sink->write(batch, account);
    sink->close();
    const auto copy = xlatr::openCsvFrames(path);
    fuzz::require(copy->head().start == source->head().start || source->head().version != 2.0);
    // A batch that is full by its bytes may be two when it is read.
    std::size_t row = 0;
    while (copy->read(again, account)) {
      for (std::size_t at = 0; at < again.size(); ++at, ++row) {
        fuzz::require(row < batch.size() && xlatr::sameFrame(again.at(at), batch.at(row)));
      }
      again.clear();
    }
    fuzz::require(row == batch.size());
    batch.clear();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("trace.csv", std::span(data, size));
  fuzz::readWhole(*xlatr::openCsvFrames(folder.path("trace.csv")), size);
  checkTable(folder);
  return 0;
}
