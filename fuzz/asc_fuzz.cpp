// A whole ASC log, read to its end and written as TRC, and from there as ASC again, through the exported functions. The
// lowest bits of the first byte choose the TRC version and the ASC form, the rest of the input is the file.
#include <array>
#include <span>

#include "exported_files.hpp"
#include "scratch_folder.hpp"

namespace {

using xlatr::test::AscReaderType;
using xlatr::test::AscWriterType;
using xlatr::test::TrcReaderType;
using xlatr::test::TrcWriterType;

constexpr std::array<double, 4> kTrcVersions{1.1, 1.3, 2.0, 3.0};
constexpr std::array<double, 2> kAscVersions{7.0, 8.0};

void logToTrace(const std::string& source, const std::string& target, double version) {
  double now = 0.0;
  const auto write = [&now](AscReader*, MessageAsc* message, TrcWriter* writer) {
    MessageAsc_getBus(message);
    const std::string text = fuzz::textOf<MessageAsc_getParsingTextSize, MessageAsc_getParsingText>(message);
    if (MessageAsc_getValid(message)) {
      MessageAsc_AdjustTime(message, &now);
      TrcWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
    } else {
      TrcWriter_WriteComment(writer, text.c_str());
    }
  };
  fuzz::rewrite<AscReaderType, TrcWriterType>(source, target, version, write);
}

void traceToLog(const std::string& source, const std::string& target, double version) {
  const auto write = [](TrcReader*, const MessageCan* message, AscWriter* writer) {
    if (MessageCan_getValid(message)) {
      AscWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
    }
  };
  fuzz::rewrite<TrcReaderType, AscWriterType>(source, target, version, write);
  // Without comments every line that is written is long enough to be read.
  fuzz::countMessages<AscReaderType>(target);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  const std::span<const std::uint8_t> input(data, size);
  folder.write("source.asc", input.subspan(1));
  fuzz::attempt([&] { logToTrace(folder.path("source.asc"), folder.path("middle.trc"), kTrcVersions[input[0] & 3]); });
  fuzz::attempt(
      [&] { traceToLog(folder.path("middle.trc"), folder.path("target.asc"), kAscVersions[input[0] >> 2 & 1]); });
  return 0;
}
