// A whole TRC file, read to its end and written again in another version, through the exported functions. The lowest
// bits of the first byte choose the target version, the rest of the input is the file. What comes out is read again.
#include <array>
#include <cstring>
#include <span>

#include "exported_files.hpp"
#include "scratch_folder.hpp"

namespace {

using xlatr::test::TrcReaderType;
using xlatr::test::TrcWriterType;

// The last is a version that no writer knows.
constexpr std::array<double, 8> kTargetVersions{1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0, 2.2};

std::string parsingText(const MessageCan* message) {
  std::array<char, 4> small{'?', '?', '?', '?'};
  MessageCan_getParsingText(message, small.data(), small.size());
  fuzz::require(std::memchr(small.data(), '\0', small.size()) != nullptr);
  return fuzz::textOf<MessageCan_getParsingTextSize, MessageCan_getParsingText>(message);
}

// As a conversion does it: what the target can't hold becomes a comment there.
void convert(const std::string& source, const std::string& target, double version) {
  const auto write = [version](TrcReader*, const MessageCan* message, TrcWriter* writer) {
    MessageCan_getBus(message);
    const std::string text = parsingText(message);
    const bool fits = MessageCan_ValidateForTargetVersion(message, version);
    fuzz::require(!fits || MessageCan_getValid(message));
    if (fits) {
      TrcWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
    } else {
      TrcWriter_WriteComment(writer, text.c_str());
    }
  };
  const std::uint64_t count = fuzz::rewrite<TrcReaderType, TrcWriterType>(source, target, version, write);
  // A message becomes one line or none, a comment becomes none that is read.
  fuzz::require(count == 0 || fuzz::countMessages<TrcReaderType>(target) <= count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  const std::span<const std::uint8_t> input(data, size);
  folder.write("source.trc", input.subspan(1));
  fuzz::attempt([&] {
    convert(folder.path("source.trc"), folder.path("target.trc"), kTargetVersions[input[0] % kTargetVersions.size()]);
  });
  return 0;
}
