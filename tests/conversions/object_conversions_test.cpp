// Each source format read to its end and written to each of its targets, object by object: the files equal those of a
// whole conversion, byte for byte.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "support/conversion.hpp"
#include "support/object_families.hpp"
#include "support/temp_folder.hpp"
#include "tracegen/generator.hpp"

namespace xlatr::test {
namespace {

struct Target {
  TraceFormat format;
  double version;
};

std::string parsingTextOf(const MessageCan* message) {
  std::string text(MessageCan_getParsingTextSize(message) + std::size_t{1}, '\0');
  MessageCan_getParsingText(message, text.data(), static_cast<std::uint32_t>(text.size()));
  text.pop_back();
  return text;
}

std::string parsingTextOf(const MessageAsc* message) {
  std::string text(MessageAsc_getParsingTextSize(message) + std::size_t{1}, '\0');
  MessageAsc_getParsingText(message, text.data(), static_cast<std::uint32_t>(text.size()));
  text.pop_back();
  return text;
}

// How a caller carries one message over: what the target can hold is written, what it can't becomes a comment where the
// source has text for one.
template <typename Writer>
void carry(const MessageCan* message, typename Writer::Object* writer, const Target& target) {
  const bool fits = target.format == XLATR_FORMAT_TRC ? MessageCan_ValidateForTargetVersion(message, target.version)
                                                      : MessageCan_getValid(message);
  if (fits) {
    Writer::writeMessage(writer, MessageCanType::asMessage(message));
  } else if (const std::string text = parsingTextOf(message); !text.empty()) {
    Writer::writeComment(writer, text.c_str());
  }
}

template <typename Writer>
void carry(const MessageAsc* message, typename Writer::Object* writer, const Target&) {
  if (MessageAsc_getValid(message)) {
    Writer::writeMessage(writer, MessageAscType::asMessage(message));
  } else {
    Writer::writeComment(writer, parsingTextOf(message).c_str());
  }
}

template <typename Writer>
void carry(const MdfCanMessage* message, typename Writer::Object* writer, const Target&) {
  if (MdfCanMessage_getValid(message)) {
    Writer::writeMessage(writer, MdfCanMessageType::asMessage(message));
  }
}

// A file as it would be had it been written at another time: an MF4 file says when it was.
std::string withoutTimeOfWriting(std::string file, TraceFormat format) {
  constexpr std::size_t kTimeOfWriting = 208;
  if (format == XLATR_FORMAT_MF4) {
    file.replace(kTimeOfWriting, 8, 8, '\0');
  }
  return file;
}

template <typename Reader, typename Writer>
void convertByObjects(const std::string& source, const std::string& targetPath, const Target& target) {
  using Info = typename Reader::InfoType;
  const auto info = openInfo<Info>(source.c_str());
  const Owned<Reader> reader(Reader::construct(info.get()));
  const Owned<Writer> writer(Writer::construct(targetPath.c_str(), true, target.version));
  Writer::setSourcePath(writer.get(), source.c_str());
  Writer::setActive(writer.get(), true);
  Writer::writeHeader(writer.get(), Info::asTraceInfo(Reader::getTrace(reader.get())));
  ASSERT_TRUE(Reader::setActive(reader.get(), true));
  typename Reader::MessageType::Object* message = nullptr;
  while (Reader::readNextMessage(reader.get(), &message)) {
    const Owned<typename Reader::MessageType> owner(message);
    carry<Writer>(message, writer.get(), target);
  }
}

class ObjectConversions : public testing::Test {
 protected:
  // A trace of one bus in this format, made from generated traffic of all kinds.
  std::string sourceOf(TraceFormat format, const char* extension) const {
    tracegen::RecordingOptions options;
    options.traffic = {.seed = 23, .buses = 1, .identifiers = 20, .fdShare = 30, .remoteRate = 50};
    options.maxMessages = 500;
    const std::string trc = folder_.file("generated.trc");
    tracegen::generateFile(options, trc);
    const std::string source = folder_.file("source" + std::string(extension));
    Result result;
    EXPECT_EQ(Options{.format = format}.version(format == XLATR_FORMAT_TRC ? 2.1 : -1.0).convert(trc, source, result),
              XLATR_SUCCESS)
        << result.text();
    return source;
  }

  template <typename Reader, typename Writer>
  void expectTheSameFile(const char* sourceExtension, const char* targetExtension, double version) const {
    const std::string source = sourceOf(Reader::InfoType::kFormat, sourceExtension);
    const std::string name = "target" + std::string(targetExtension);
    Result result;
    ASSERT_EQ(Options{.format = Writer::kFormat}.version(version).convert(source, folder_.file(name), result),
              XLATR_SUCCESS)
        << result.text();
    const std::string expected = folder_.read(name);
    std::filesystem::remove(folder_.file(name));

    convertByObjects<Reader, Writer>(source, folder_.file(name), {Writer::kFormat, version});
    EXPECT_GT(expected.size(), 5000U);
    EXPECT_EQ(withoutTimeOfWriting(folder_.read(name), Writer::kFormat),
              withoutTimeOfWriting(expected, Writer::kFormat));
  }

  TempFolder folder_;
};

TEST_F(ObjectConversions, ofTrc) {
  for (const double version : {1.2, 2.1, 3.0}) {
    SCOPED_TRACE(version);
    expectTheSameFile<TrcReaderType, TrcWriterType>(".trc", ".trc", version);
  }
  expectTheSameFile<TrcReaderType, AscWriterType>(".trc", ".asc", 8.1);
  expectTheSameFile<TrcReaderType, CsvWriterType>(".trc", ".csv", 1.0);
  expectTheSameFile<TrcReaderType, MdfWriterType>(".trc", ".mf4", 4.2);
}

TEST_F(ObjectConversions, ofMdf) {
  expectTheSameFile<MdfReaderType, TrcWriterType>(".mf4", ".trc", 2.1);
}

TEST_F(ObjectConversions, ofAsc) {
  expectTheSameFile<AscReaderType, TrcWriterType>(".asc", ".trc", 2.1);
  expectTheSameFile<AscReaderType, CsvWriterType>(".asc", ".csv", 1.0);
}

}  // namespace
}  // namespace xlatr::test
