// A whole ASC log, read to its end and written as TRC, and from there as ASC again, through the exported functions. The
// lowest bits of the first byte choose the TRC version and the ASC form, the rest of the input is the file.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ios>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "scratch_folder.hpp"
#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace {

constexpr std::array<double, 4> kTrcVersions{1.1, 1.3, 2.0, 3.0};
constexpr std::array<double, 2> kAscVersions{7.0, 8.0};

template <auto kDestruct>
struct Destructor {
  template <typename Object>
  void operator()(Object* object) const {
    kDestruct(object);
  }
};

template <typename Object, auto kDestruct>
using Owned = std::unique_ptr<Object, Destructor<kDestruct>>;

using FileInfo = Owned<TraceFileInfo, TraceFileInfo_Destruct>;
using Log = Owned<AscInfo, AscInfo_Destruct>;
using LogReader = Owned<AscReader, AscReader_Destruct>;
using LogWriter = Owned<AscWriter, AscWriter_Destruct>;
using LogMessage = Owned<MessageAsc, MessageAsc_Destruct>;
using Trace = Owned<TrcInfo, TrcInfo_Destruct>;
using TraceReader = Owned<TrcReader, TrcReader_Destruct>;
using TraceWriter = Owned<TrcWriter, TrcWriter_Destruct>;
using TraceMessage = Owned<MessageCan, MessageCan_Destruct>;

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

Log openLog(const std::string& path) {
  const FileInfo file(TraceFileInfo_Construct(path.c_str()));
  return Log(AscInfo_Construct(file.get()));
}

std::string parsingText(const MessageAsc* message) {
  const std::uint32_t size = MessageAsc_getParsingTextSize(message);
  std::vector<char> buffer(size + std::size_t{1}, '?');
  MessageAsc_getParsingText(message, buffer.data(), size + 1);
  require(buffer[size] == '\0');
  return {buffer.data(), size};
}

LogMessage readNext(AscReader* reader) {
  MessageAsc* message = nullptr;
  const bool read = AscReader_ReadNextMessage(reader, &message);
  require(read == (message != nullptr));
  return LogMessage(message);
}

void logToTrace(const std::string& source, const std::string& target, double version) {
  const Log info = openLog(source);
  require(AscInfo_getValid(info.get()));
  AscInfo_getStartTime(info.get());
  const LogReader reader(AscReader_Construct(info.get()));
  if (!AscReader_setActive(reader.get(), true)) {
    return;
  }
  const TraceWriter writer(TrcWriter_Construct(target.c_str(), true, version));
  TrcWriter_setActive(writer.get(), true);
  TrcWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  double now = 0.0;
  for (LogMessage message = readNext(reader.get()); message; message = readNext(reader.get())) {
    MessageAsc_getBus(message.get());
    const std::string text = parsingText(message.get());
    if (MessageAsc_getValid(message.get())) {
      MessageAsc_AdjustTime(message.get(), &now);
      TrcWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(message.get()));
    } else {
      TrcWriter_WriteComment(writer.get(), text.c_str());
    }
  }
  TrcWriter_setActive(writer.get(), false);
}

void traceToLog(const std::string& source, const std::string& target, double version) {
  const Trace info(TrcInfo_Construct_2(source.c_str()));
  const TraceReader reader(TrcReader_Construct(info.get()));
  if (!TrcReader_setActive(reader.get(), true)) {
    return;
  }
  const LogWriter writer(AscWriter_Construct(target.c_str(), true, version));
  AscWriter_setActive(writer.get(), true);
  AscWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  MessageCan* next = nullptr;
  while (TrcReader_ReadNextMessage(reader.get(), &next)) {
    const TraceMessage message(next);
    if (MessageCan_getValid(message.get())) {
      AscWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(message.get()));
    }
  }
  AscWriter_setActive(writer.get(), false);

  // Without comments every line that is written is long enough to be read.
  const Log written = openLog(target);
  const LogReader again(AscReader_Construct(written.get()));
  if (AscReader_setActive(again.get(), true)) {
    while (readNext(again.get())) {
    }
  }
}

// The failures that may leave the library, a line that ends too early among them.
template <typename Action>
void attempt(Action action) {
  try {
    action();
  } catch (const xlatr::ConverterGenericException&) {
    return;
  } catch (const std::ios_base::failure&) {
    return;
  } catch (const std::out_of_range& failure) {
    require(std::string_view(failure.what()) == "invalid vector subscript");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  const std::span<const std::uint8_t> input(data, size);
  folder.write("source.asc", input.subspan(1));
  attempt([&] { logToTrace(folder.path("source.asc"), folder.path("middle.trc"), kTrcVersions[input[0] & 3]); });
  attempt([&] { traceToLog(folder.path("middle.trc"), folder.path("target.asc"), kAscVersions[input[0] >> 2 & 1]); });
  return 0;
}
