// A whole TRC file, read to its end and written again in another version, through the exported functions. The lowest
// bits of the first byte choose the target version, the rest of the input is the file. What comes out is read again.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ios>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "scratch_folder.hpp"
#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace {

// The last is a version that nobody writes.
constexpr std::array<double, 8> kTargetVersions{1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0, 2.2};

template <auto kDestruct>
struct Destructor {
  template <typename Object>
  void operator()(Object* object) const {
    kDestruct(object);
  }
};

using FileInfo = std::unique_ptr<TraceFileInfo, Destructor<TraceFileInfo_Destruct>>;
using Info = std::unique_ptr<TrcInfo, Destructor<TrcInfo_Destruct>>;
using Reader = std::unique_ptr<TrcReader, Destructor<TrcReader_Destruct>>;
using Message = std::unique_ptr<MessageCan, Destructor<MessageCan_Destruct>>;
using Writer = std::unique_ptr<TrcWriter, Destructor<TrcWriter_Destruct>>;

const ITraceInfo* asTraceInfo(const TrcInfo* info) {
  return reinterpret_cast<const ITraceInfo*>(info);
}

const IMessage* asMessage(const MessageCan* message) {
  return reinterpret_cast<const IMessage*>(message);
}

void require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

// The text by the size and copy pair, into a buffer of exactly that size and into one that is too small.
std::string parsingText(const MessageCan* message) {
  const std::uint32_t size = MessageCan_getParsingTextSize(message);
  std::vector<char> buffer(size + std::size_t{1}, '?');
  MessageCan_getParsingText(message, buffer.data(), size + 1);
  require(buffer[size] == '\0');
  std::array<char, 4> small{'?', '?', '?', '?'};
  MessageCan_getParsingText(message, small.data(), small.size());
  require(std::memchr(small.data(), '\0', small.size()) != nullptr);
  return {buffer.data(), size};
}

Info openInfo(const std::string& path) {
  const FileInfo file(TraceFileInfo_Construct(path.c_str()));
  return Info(TrcInfo_Construct(file.get()));
}

Message readNext(TrcReader* reader) {
  MessageCan* message = nullptr;
  const bool read = TrcReader_ReadNextMessage(reader, &message);
  require(read == (message != nullptr));
  return Message(message);
}

// As a conversion does it: what can't stand in the target goes there as a comment. Answers how many messages were read.
std::size_t rewrite(TrcReader* reader, TrcWriter* writer, double version) {
  std::size_t count = 0;
  for (Message message = readNext(reader); message; message = readNext(reader)) {
    ++count;
    MessageCan_getBus(message.get());
    const std::string text = parsingText(message.get());
    const bool fits = MessageCan_ValidateForTargetVersion(message.get(), version);
    require(!fits || MessageCan_getValid(message.get()));
    if (fits) {
      TrcWriter_WriteMessage(writer, asMessage(message.get()));
    } else {
      TrcWriter_WriteComment(writer, text.c_str());
    }
  }
  return count;
}

void convert(const std::string& source, const std::string& target, double version) {
  const Info info = openInfo(source);
  TrcInfo_getStartTime(info.get());
  const Reader reader(TrcReader_Construct(info.get()));
  if (!TrcReader_setActive(reader.get(), true)) {
    return;
  }
  const Writer writer(TrcWriter_Construct(target.c_str(), true, version));
  TrcWriter_setActive(writer.get(), true);
  TrcWriter_WriteHeader(writer.get(), asTraceInfo(info.get()));
  const std::size_t count = rewrite(reader.get(), writer.get(), version);
  const double percent = TrcReader_getPercentDone(reader.get());
  require(!(percent < 0.0));
  TrcWriter_setActive(writer.get(), false);

  // A message becomes one line or none, a comment none that is read.
  const Info written = openInfo(target);
  const Reader again(TrcReader_Construct(written.get()));
  std::size_t countAgain = 0;
  if (TrcReader_setActive(again.get(), true)) {
    while (readNext(again.get())) {
      ++countAgain;
    }
  }
  require(countAgain <= count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  const std::span<const std::uint8_t> input(data, size);
  folder.write("source.trc", input.subspan(1));
  try {
    convert(folder.path("source.trc"), folder.path("target.trc"), kTargetVersions[input[0] % kTargetVersions.size()]);
  } catch (const xlatr::ConverterGenericException&) {
    // One of the two kinds of failure that may leave the library.
    return 0;
  } catch (const std::ios_base::failure&) {
    return 0;
  }
  return 0;
}
