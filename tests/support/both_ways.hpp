// A TRC trace written on both ways, for tests of what is the same and what is not.
#pragma once

#include <string>

#include "formats/trc/trc_frames.hpp"
#include "formats/trc/trc_reader.hpp"
#include "frames/frame_sink.hpp"
#include "io/format.hpp"
#include "io/trace_writer.hpp"
#include "support/temp_folder.hpp"
#include "util/text.hpp"

namespace xlatr::test {

// Writes the trace as a conversion does. The writer must not be active yet.
inline void writeTrace(const std::string& trc, ITraceWriter& writer) {
  TrcReader reader{TrcInfo(TraceFileInfo(trc))};
  reader.setActive(true);
  writer.setActive(true);
  writer.WriteHeader(reader.getTrace());
  BrixMessage message;
  while (reader.readInto(message)) {
    if (message.getValid()) {
      writer.WriteMessage(message);
    } else if (!trimmed(message.parsingText).empty()) {
      writer.WriteComment(message.parsingText);
    }
  }
  writer.setActive(false);
}

// What the compatible way writes of a trace: the file of a writer that `Writer` makes of it and the other arguments.
template <class Writer, typename... Arguments>
std::string compatibleOf(const TempFolder& folder, const std::string& trc, Arguments... arguments) {
  Writer writer(folder.file("compatible"), arguments...);
  writeTrace(trc, writer);
  return folder.read("compatible");
}

// What the complete way writes of it in a format.
inline std::string completeOf(const TempFolder& folder, const std::string& trc, const FormatDescriptor& format,
                              Account& account, const SinkSettings& settings = {}) {
  const auto source = openTrcFrames(trc);
  const auto sink = format.createFrames(folder.file("complete"), source->head(), settings);
  FrameBatch batch;
  while (source->read(batch, account)) {
    sink->write(batch, account);
    batch.clear();
  }
  sink->close();
  return folder.read("complete");
}

}  // namespace xlatr::test
