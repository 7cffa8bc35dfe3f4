// A whole binary trace, read to its end and written as TRC, and from there as a binary trace again, through the
// exported functions. The lowest bits of the first byte choose the TRC version and whether blocks are skipped now and
// then, the rest of the input is the file.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ios>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "scratch_folder.hpp"
#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace {

constexpr std::array<double, 4> kTrcVersions{1.1, 1.3, 2.0, 3.0};
constexpr std::uint64_t kRecordsBetweenSkips = 7;

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
using Binary = Owned<BtrcInfo, BtrcInfo_Destruct>;
using BinaryReader = Owned<BtrcReader, BtrcReader_Destruct>;
using BinaryWriter = Owned<BtrcWriter, BtrcWriter_Destruct>;
using BinaryMessage = Owned<MessageBinaryFD, MessageBinaryFD_Destruct>;
using Trace = Owned<TrcInfo, TrcInfo_Destruct>;
using TraceReader = Owned<TrcReader, TrcReader_Destruct>;
using TraceWriter = Owned<TrcWriter, TrcWriter_Destruct>;
using TraceMessage = Owned<MessageCan, MessageCan_Destruct>;

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

Binary openBinary(const std::string& path) {
  const FileInfo file(TraceFileInfo_Construct(path.c_str()));
  return Binary(BtrcInfo_Construct(file.get()));
}

BinaryMessage readNext(BtrcReader* reader) {
  MessageBinaryFD* message = nullptr;
  const bool read = BtrcReader_ReadNextMessage(reader, &message);
  require(read == (message != nullptr));
  return BinaryMessage(message);
}

void checkMessage(const MessageBinaryFD* message) {
  const std::uint32_t size = MessageBinaryFD_getParsingBytesStringSize(message);
  require(size >= 11 && size % 3 == 2);  // a record has a header at least
  std::vector<char> buffer(size + std::size_t{1}, '?');
  MessageBinaryFD_getParsingBytesString(message, buffer.data(), size + 1);
  require(buffer[size] == '\0');
  require(!MessageBinaryFD_getValid(message) || MessageBinaryFD_getCommentarySize(message) == 0);
}

void binaryToTrace(const std::string& source, const std::string& target, double version, bool skips) {
  const Binary info = openBinary(source);
  BtrcInfo_getStartTime(info.get());
  const BinaryReader reader(BtrcReader_Construct(info.get()));
  if (!BtrcReader_setActive(reader.get(), true)) {
    return;
  }
  const TraceWriter writer(TrcWriter_Construct(target.c_str(), true, version));
  TrcWriter_setActive(writer.get(), true);
  TrcWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  std::uint64_t count = 0;
  for (BinaryMessage message = readNext(reader.get()); message; message = readNext(reader.get())) {
    checkMessage(message.get());
    if (MessageBinaryFD_ValidateForTargetVersion(message.get(), version)) {
      TrcWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(message.get()));
    }
    if (skips && ++count % kRecordsBetweenSkips == 0) {
      std::array<char, 200> report{};
      BtrcReader_SkipCurrentBlock(reader.get(), report.data(), report.size());
      require(report[0] == 'B');
    }
  }
  TrcWriter_setActive(writer.get(), false);
}

void traceToBinary(const std::string& source, const std::string& target) {
  const Trace info(TrcInfo_Construct_2(source.c_str()));
  const TraceReader reader(TrcReader_Construct(info.get()));
  if (!TrcReader_setActive(reader.get(), true)) {
    return;
  }
  const BinaryWriter writer(BtrcWriter_Construct(target.c_str(), true, 1.0));
  BtrcWriter_setActive(writer.get(), true);
  BtrcWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  MessageCan* next = nullptr;
  while (TrcReader_ReadNextMessage(reader.get(), &next)) {
    const TraceMessage message(next);
    BtrcWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(message.get()));
  }
  BtrcWriter_setActive(writer.get(), false);

  constexpr std::uint64_t kBlock = 8192;
  const FileInfo written(TraceFileInfo_Construct(target.c_str()));
  require(TraceFileInfo_getSize(written.get()) % kBlock == 0);
  const Binary head = openBinary(target);
  require(BtrcInfo_GetValid(head.get()));
}

// The failures that may leave the library.
template <typename Action>
void attempt(Action action) {
  try {
    action();
  } catch (const xlatr::ConverterGenericException&) {
    return;
  } catch (const std::ios_base::failure&) {
    return;
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
  folder.write("source.btrc", input.subspan(1));
  attempt([&] {
    binaryToTrace(folder.path("source.btrc"), folder.path("middle.trc"), kTrcVersions[input[0] & 3],
                  (input[0] & 4) != 0);
  });
  attempt([&] { traceToBinary(folder.path("middle.trc"), folder.path("target.btrc")); });
  return 0;
}
