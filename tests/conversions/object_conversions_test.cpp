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

// Reads a text pair of an object.
template <typename Object>
std::string readText(const Object* object, std::uint32_t (*size)(const Object*),
                     void (*copy)(const Object*, char*, std::uint32_t)) {
  std::string text(size(object) + std::size_t{1}, '\0');
  copy(object, text.data(), static_cast<std::uint32_t>(text.size()));
  text.pop_back();
  return text;
}

// How a caller converts one message: what the target can hold is written, and the rest becomes a comment if the source
// has a text for it.
template <typename Writer>
void carry(const MessageCan* message, typename Writer::Object* writer, const Target& target) {
  const bool fits = target.format == XLATR_FORMAT_TRC ? MessageCan_ValidateForTargetVersion(message, target.version)
                                                      : MessageCan_getValid(message);
  if (fits) {
    Writer::writeMessage(writer, asMessage(message));
  } else if (const std::string text = readText(message, MessageCan_getParsingTextSize, MessageCan_getParsingText);
             !text.empty()) {
    Writer::writeComment(writer, text.c_str());
  }
}

template <typename Writer>
void carry(const MessageAsc* message, typename Writer::Object* writer, const Target&) {
  if (MessageAsc_getValid(message)) {
    Writer::writeMessage(writer, asMessage(message));
  } else {
    const std::string text = readText(message, MessageAsc_getParsingTextSize, MessageAsc_getParsingText);
    Writer::writeComment(writer, text.c_str());
  }
}

template <typename Writer>
void carry(const MessageLin* message, typename Writer::Object* writer, const Target&) {
  if (MessageLin_getValid(message)) {
    Writer::writeMessage(writer, asMessage(message));
  } else {
    const std::string text = readText(message, MessageLin_getParsingTextSize, MessageLin_getParsingText);
    Writer::writeComment(writer, text.c_str());
  }
}

template <typename Writer>
void carry(const MessageBinaryFD* message, typename Writer::Object* writer, const Target& target) {
  if (!MessageBinaryFD_getValid(message)) {
    return;
  }
  if (target.format != XLATR_FORMAT_TRC || MessageBinaryFD_ValidateForTargetVersion(message, target.version)) {
    Writer::writeMessage(writer, asMessage(message));
  }
  const std::string text = readText(message, MessageBinaryFD_getCommentarySize, MessageBinaryFD_getCommentary);
  if (!text.empty()) {
    Writer::writeComment(writer, text.c_str());
  }
}

template <typename Writer>
void carry(const MdfCanMessage* message, typename Writer::Object* writer, const Target&) {
  if (MdfCanMessage_getValid(message)) {
    Writer::writeMessage(writer, asMessage(message));
  }
}

// The bytes of a file without the time of its writing, which an MF4 file states.
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
  Writer::writeHeader(writer.get(), asTraceInfo(Reader::getTrace(reader.get())));
  ASSERT_TRUE(Reader::setActive(reader.get(), true));
  typename Reader::MessageType::Object* message = nullptr;
  while (Reader::readNextMessage(reader.get(), &message)) {
    const Owned<typename Reader::MessageType> owner(message);
    carry<Writer>(message, writer.get(), target);
  }
}

// The only session of a session file, sector by sector.
template <typename Writer>
void convertSessionByObjects(const std::string& source, const std::string& targetPath, const Target& target) {
  BtrInfo* const info = BtrInfo_Construct(source.c_str());
  BtrSessionEntry* const session = BtrInfo_GetSession(info, 0);
  BtrSessionReader* const reader = BtrSessionReader_Construct(session, true);
  const SessionDateTime* const start = SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(session));
  {
    const Owned<Writer> writer(Writer::construct(targetPath.c_str(), true, target.version));
    Writer::setActive(writer.get(), true);
    Writer::writeHeader2(writer.get(), reinterpret_cast<const ITraceInfo*>(info), SessionDateTime_toDouble(start));
    SessionMessage** messages = nullptr;
    std::uint32_t count = 0;
    std::uint32_t sector = 0;
    while (BtrSessionReader_ReadNextSector(reader, &messages, &count, &sector)) {
      for (std::uint32_t index = 0; index < count; ++index) {
        Writer::writeMessage(writer.get(), reinterpret_cast<const IMessage*>(messages[index]));
        SessionMessage_Destruct(messages[index]);
      }
      BtrSessionReader_DeleteSectors(messages);
    }
  }
  BtrSessionReader_Destruct(reader);
  BtrSessionEntry_Destruct(session);
  BtrInfo_Destruct(info);
}

class ObjectConversions : public testing::Test {
 protected:
  // A trace of one bus in this format, made from generated traffic of all kinds that it can hold.
  std::string sourceOf(TraceFormat format, const char* extension) const {
    tracegen::RecordingOptions options;
    options.traffic = {.seed = 23, .buses = 1, .identifiers = 20, .fdShare = 30, .remoteRate = 50};
    options.maxMessages = 500;
    std::string source = folder_.file("source" + std::string(extension));
    if (format == XLATR_FORMAT_LIN) {
      options.form = tracegen::Form::Lin;
      tracegen::generateFile(options, source);
      return source;
    }
    const std::string trc = folder_.file("generated.trc");
    tracegen::generateFile(options, trc);
    convertWhole(trc, "source" + std::string(extension), {format, format == XLATR_FORMAT_TRC ? 2.1 : -1.0});
    return source;
  }

  // By one call. Returns the bytes of the only target.
  std::string convertWhole(const std::string& source, const std::string& name, const Target& target) const {
    Result result;
    EXPECT_EQ(Options{.format = target.format}.version(target.version).convert(source, folder_.file(name), result),
              XLATR_SUCCESS)
        << result.text();
    return result.files().size() == 1 ? folder_.read(result.files().front()) : "";
  }

  void expectEqual(const std::string& written, const std::string& expected, TraceFormat format) const {
    EXPECT_GT(expected.size(), 5000U);
    EXPECT_EQ(withoutTimeOfWriting(written, format), withoutTimeOfWriting(expected, format));
  }

  template <typename Reader, typename Writer>
  void expectTheSameFile(const char* sourceExtension, const char* targetExtension, double version) const {
    const Target target{kFileKindOf<Writer>.format, version};
    const std::string source = sourceOf(kFileKindOf<Reader>.format, sourceExtension);
    const std::string name = "target" + std::string(targetExtension);
    const std::string expected = convertWhole(source, name, target);
    std::filesystem::remove(folder_.file(name));
    convertByObjects<Reader, Writer>(source, folder_.file(name), target);
    expectEqual(folder_.read(name), expected, target.format);
  }

  template <typename Writer>
  void expectTheSameSession(const char* targetExtension, double version) const {
    const Target target{kFileKindOf<Writer>.format, version};
    const std::string source = sourceOf(XLATR_FORMAT_BTR, ".btr");
    const std::string extension = targetExtension;
    const std::string expected = convertWhole(source, "target" + extension, target);
    // Headers name their file, and the path of a session has a second separator after the folder.
    convertSessionByObjects<Writer>(source, folder_.path().string() + "//target_S1" + extension, target);
    expectEqual(folder_.read("target_S1" + extension), expected, target.format);
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
  expectTheSameFile<TrcReaderType, BtrcWriterType>(".trc", ".btrc", 1.0);
  expectTheSameFile<TrcReaderType, BtrWriterType>(".trc", ".btr", 3.0);
}

TEST_F(ObjectConversions, ofBtr) {
  expectTheSameSession<TrcWriterType>(".trc", 2.1);
  expectTheSameSession<AscWriterType>(".asc", 8.1);
  expectTheSameSession<CsvWriterType>(".csv", 1.0);
}

TEST_F(ObjectConversions, ofBtrc) {
  expectTheSameFile<BtrcReaderType, TrcWriterType>(".btrc", ".trc", 2.1);
  expectTheSameFile<BtrcReaderType, AscWriterType>(".btrc", ".asc", 8.1);
  expectTheSameFile<BtrcReaderType, CsvWriterType>(".btrc", ".csv", 1.0);
}

TEST_F(ObjectConversions, ofLin) {
  expectTheSameFile<KorlReaderType, AscWriterType>(".ltrc", ".asc", 8.1);
  expectTheSameFile<KorlReaderType, CsvWriterType>(".ltrc", ".csv", 1.0);
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
