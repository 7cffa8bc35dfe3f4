// A whole binary trace, read to its end and written as TRC, and from there as a binary trace again, through the
// exported functions. The lowest bits of the first byte choose the TRC version and whether blocks are skipped now and
// then, the rest of the input is the file.
#include <array>
#include <filesystem>
#include <span>

#include "exported_files.hpp"
#include "scratch_folder.hpp"

namespace {

using xlatr::test::BtrcInfoType;
using xlatr::test::BtrcReaderType;
using xlatr::test::BtrcWriterType;
using xlatr::test::TrcReaderType;
using xlatr::test::TrcWriterType;

constexpr std::array<double, 4> kTrcVersions{1.1, 1.3, 2.0, 3.0};
constexpr std::uint64_t kRecordsBetweenSkips = 7;
constexpr std::uint64_t kBlock = 8192;

void checkMessage(const MessageBinaryFD* message) {
  const std::string bytes =
      fuzz::textOf<MessageBinaryFD_getParsingBytesStringSize, MessageBinaryFD_getParsingBytesString>(message);
  fuzz::require(bytes.size() >= 11 && bytes.size() % 3 == 2);  // a record has a header at least
  fuzz::require(!MessageBinaryFD_getValid(message) || MessageBinaryFD_getCommentarySize(message) == 0);
}

void binaryToTrace(const std::string& source, const std::string& target, double version, bool skips) {
  std::uint64_t count = 0;
  const auto write = [&](BtrcReader* reader, const MessageBinaryFD* message, TrcWriter* writer) {
    checkMessage(message);
    if (MessageBinaryFD_ValidateForTargetVersion(message, version)) {
      TrcWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
    }
    if (skips && ++count % kRecordsBetweenSkips == 0) {
      std::array<char, 200> report{};
      BtrcReader_SkipCurrentBlock(reader, report.data(), report.size());
      fuzz::require(report[0] == 'B');
    }
  };
  fuzz::rewrite<BtrcReaderType, TrcWriterType>(source, target, version, write);
}

void traceToBinary(const std::string& source, const std::string& target) {
  const auto write = [](TrcReader*, const MessageCan* message, BtrcWriter* writer) {
    BtrcWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
  };
  if (fuzz::rewrite<TrcReaderType, BtrcWriterType>(source, target, 1.0, write) > 0) {
    fuzz::require(std::filesystem::file_size(target) % kBlock == 0);
    fuzz::require(BtrcInfoType::getValid(xlatr::test::openInfo<BtrcInfoType>(target.c_str()).get()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  if (size == 0) {
    return 0;
  }
  const std::span<const std::uint8_t> input(data, size);
  folder.write("source.btrc", input.subspan(1));
  fuzz::attempt([&] {
    binaryToTrace(folder.path("source.btrc"), folder.path("middle.trc"), kTrcVersions[input[0] & 3],
                  (input[0] & 4) != 0);
  });
  fuzz::attempt([&] { traceToBinary(folder.path("middle.trc"), folder.path("target.btrc")); });
  return 0;
}
