// What all families of a kind promise, driven through every one of them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <ios>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "support/btrc_image.hpp"
#include "support/mf4_samples.hpp"
#include "support/object_failures.hpp"
#include "support/object_families.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::test {
namespace {

constexpr char kFrozen[] = "Cannot change property value when object is active";
constexpr char kNotActive[] = "Writer is not initialized";

// The text of a pair whose functions take the object first.
template <typename Object>
std::string objectTextOf(const Object* object, std::uint32_t (*size)(const Object*),
                         void (*copy)(const Object*, char*, std::uint32_t)) {
  return textOf(size(object), [&](char* buffer, std::uint32_t bufferSize) { copy(object, buffer, bufferSize); });
}

struct FamilyName {
  template <typename Family>
  static std::string GetName(int) {
    return Family::kName;
  }
};

// ---- writers

template <typename Family>
class WriterFamily : public testing::Test {
 protected:
  using Writer = Owned<Family>;

  Writer make(bool overrideExistingFile = false) const {
    return Writer(Family::construct(target_.c_str(), overrideExistingFile, kFileKindOf<Family>.version));
  }
  Writer makeActive() const {
    Writer writer = make();
    Family::setActive(writer.get(), true);
    return writer;
  }
  static std::string targetPathOf(const Writer& writer) {
    return objectTextOf<typename Family::Object>(writer.get(), Family::getTargetPathSize, Family::getTargetPath);
  }
  static std::string sourcePathOf(const Writer& writer) {
    return objectTextOf<typename Family::Object>(writer.get(), Family::getSourcePathSize, Family::getSourcePath);
  }

  TempFolder folder_;
  std::string target_ = folder_.file("target.trace");
};

// Whether the format has a place for comments. If it has none, they are ignored in every state of the writer.
template <typename Family>
constexpr bool kWritesComments = !std::is_same_v<Family, MdfWriterType> && !std::is_same_v<Family, BtrWriterType>;

using WriterFamilies = testing::Types<TrcWriterType, AscWriterType, KorlWriterType, CsvWriterType, BtrcWriterType,
                                      BtrWriterType, MdfWriterType>;
TYPED_TEST_SUITE(WriterFamily, WriterFamilies, FamilyName);

TYPED_TEST(WriterFamily, ignoresNullInDestruct) {
  TypeParam::destruct(nullptr);
}

TYPED_TEST(WriterFamily, refusesNullEverywhereElse) {
  const std::string expected = "Object cannot be null";
  EXPECT_EQ(processingFailureOf([] { TypeParam::setActive(nullptr, true); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::createNew(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::getTargetPathSize(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { TypeParam::writeComment(nullptr, ""); }), expected);
}

TYPED_TEST(WriterFamily, startsAsItWasConstructed) {
  const auto writer = this->make(true);
  EXPECT_EQ(this->targetPathOf(writer), this->target_);
  EXPECT_EQ(this->sourcePathOf(writer), "");
  EXPECT_EQ(TypeParam::getTargetVersion(writer.get()), kFileKindOf<TypeParam>.version);
  EXPECT_EQ(TypeParam::getTargetFormat(writer.get()), kFileKindOf<TypeParam>.format);
  EXPECT_TRUE(TypeParam::getOverrideExistingFile(writer.get()));
  EXPECT_EQ(TypeParam::getOwnerBus(writer.get()), -1);
  EXPECT_FALSE(TypeParam::getActive(writer.get()));
  EXPECT_FALSE(std::filesystem::exists(this->target_));
}

TYPED_TEST(WriterFamily, keepsWhatItsSettersSet) {
  const auto writer = this->make();
  TypeParam::setTargetPath(writer.get(), "other");
  TypeParam::setSourcePath(writer.get(), "source");
  TypeParam::setTargetVersion(writer.get(), 12.5);
  TypeParam::setOverrideExistingFile(writer.get(), true);
  TypeParam::setOwnerBus(writer.get(), 5);
  EXPECT_EQ(this->targetPathOf(writer), "other");
  EXPECT_EQ(this->sourcePathOf(writer), "source");
  EXPECT_EQ(TypeParam::getTargetVersion(writer.get()), 12.5);
  EXPECT_TRUE(TypeParam::getOverrideExistingFile(writer.get()));
  EXPECT_EQ(TypeParam::getOwnerBus(writer.get()), 5);
  TypeParam::setTargetPath(writer.get(), nullptr);
  EXPECT_EQ(this->targetPathOf(writer), "");
}

TYPED_TEST(WriterFamily, givesItsPropertiesToANewWriter) {
  const auto writer = this->make(true);
  TypeParam::setOwnerBus(writer.get(), 5);
  TypeParam::setSourcePath(writer.get(), "source");
  TypeParam::setActive(writer.get(), true);
  const Owned<TypeParam> fresh(TypeParam::createNew(writer.get()));
  EXPECT_FALSE(TypeParam::getActive(fresh.get()));
  EXPECT_EQ(this->targetPathOf(fresh), this->target_);
  EXPECT_EQ(TypeParam::getTargetVersion(fresh.get()), kFileKindOf<TypeParam>.version);
  EXPECT_TRUE(TypeParam::getOverrideExistingFile(fresh.get()));
  EXPECT_EQ(TypeParam::getOwnerBus(fresh.get()), 5);
  // Only a writer of binary traces takes over the source path.
  EXPECT_EQ(this->sourcePathOf(fresh), kFileKindOf<TypeParam>.format == XLATR_FORMAT_BTRC ? "source" : "");
}

TYPED_TEST(WriterFamily, freezesItsPropertiesWhileItIsActive) {
  const auto writer = this->makeActive();
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setTargetPath(writer.get(), "x"); }), kFrozen);
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setTargetVersion(writer.get(), 12.5); }), kFrozen);
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setOverrideExistingFile(writer.get(), true); }), kFrozen);
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setOwnerBus(writer.get(), 5); }), kFrozen);
  std::thread([] { EXPECT_EQ(lastError(), ""); }).join();
  TypeParam::setSourcePath(writer.get(), "source");  // not frozen

  EXPECT_EQ(this->targetPathOf(writer), this->target_);
  EXPECT_EQ(TypeParam::getTargetVersion(writer.get()), kFileKindOf<TypeParam>.version);
  EXPECT_FALSE(TypeParam::getOverrideExistingFile(writer.get()));
  EXPECT_EQ(TypeParam::getOwnerBus(writer.get()), -1);
  EXPECT_EQ(this->sourcePathOf(writer), "source");

  TypeParam::setActive(writer.get(), false);
  TypeParam::setOwnerBus(writer.get(), 5);
  EXPECT_EQ(TypeParam::getOwnerBus(writer.get()), 5);
}

// Raises a ConverterProcessingException; the writer of binary traces raises ConverterParsingExceptions.
TYPED_TEST(WriterFamily, writesNothingBeforeItIsActive) {
  const auto writer = this->make();
  const std::string path = this->folder_.write("x.trc", ";$FILEVERSION=1.2\n1) 10.5 3 Rx 0123 1 AA\n");
  const Owned<TrcInfoType> info(TrcInfo_Construct_2(path.c_str()));
  const auto* const source = asTraceInfo(info.get());
  EXPECT_EQ(failureTextOf<ConverterGenericException>([&] { TypeParam::writeHeader(writer.get(), source); }),
            kNotActive);
  EXPECT_EQ(failureTextOf<ConverterGenericException>([&] { TypeParam::writeHeader2(writer.get(), source, 44403.25); }),
            kNotActive);
  if constexpr (kWritesComments<TypeParam>) {
    EXPECT_EQ(failureTextOf<ConverterGenericException>([&] { TypeParam::writeComment(writer.get(), "note"); }),
              kNotActive);
  } else {
    TypeParam::writeComment(writer.get(), "note");
  }

  const Owned<TrcReaderType> reader(TrcReader_Construct(info.get()));
  MessageCan* message = nullptr;
  ASSERT_TRUE(TrcReader_setActive(reader.get(), true));
  ASSERT_TRUE(TrcReader_ReadNextMessage(reader.get(), &message));
  const Owned<MessageCanType> owner(message);
  EXPECT_EQ(
      failureTextOf<ConverterGenericException>([&] { TypeParam::writeMessage(writer.get(), asMessage(message)); }),
      kNotActive);
  EXPECT_FALSE(std::filesystem::exists(this->target_));
}

TYPED_TEST(WriterFamily, becomesActiveAgain) {
  const auto writer = this->make();
  TypeParam::setActive(writer.get(), false);
  TypeParam::setActive(writer.get(), true);
  TypeParam::setActive(writer.get(), true);
  EXPECT_TRUE(TypeParam::getActive(writer.get()));
  TypeParam::setActive(writer.get(), false);
  EXPECT_FALSE(TypeParam::getActive(writer.get()));
  EXPECT_TRUE(std::filesystem::exists(this->target_));
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setActive(writer.get(), true); }), "File already exists - TargetPath");
  EXPECT_FALSE(TypeParam::getActive(writer.get()));
  TypeParam::setOverrideExistingFile(writer.get(), true);
  TypeParam::setActive(writer.get(), true);
  EXPECT_TRUE(TypeParam::getActive(writer.get()));
}

TYPED_TEST(WriterFamily, refusesTargetsThatAreNone) {
  const auto writer = this->make(true);
  TypeParam::setTargetPath(writer.get(), "");
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setActive(writer.get(), true); }),
            "Value cannot be null or empty - TargetPath");
  TypeParam::setTargetPath(writer.get(), "A/x");
  TypeParam::setSourcePath(writer.get(), "a/X");
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setActive(writer.get(), true); }),
            "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath");
  TypeParam::setTargetPath(writer.get(), std::string(260, 'x').c_str());
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setActive(writer.get(), true); }),
            "Target path too long (260). Maximum allowed is 260.");
  EXPECT_FALSE(TypeParam::getActive(writer.get()));
}

TYPED_TEST(WriterFamily, refusesItsSourceUnderAnyName) {
  namespace fs = std::filesystem;
  const std::string source = this->folder_.write("source.trace", "the source");
  fs::create_hard_link(source, this->folder_.file("hard"));
  fs::create_symlink(source, this->folder_.file("soft"));
  fs::create_directory(this->folder_.file("folder"));
  const auto writer = this->make(true);
  TypeParam::setSourcePath(writer.get(), source.c_str());
  for (const char* name : {"./source.trace", "folder/../source.trace", "hard", "soft"}) {
    TypeParam::setTargetPath(writer.get(), this->folder_.file(name).c_str());
    EXPECT_EQ(processingFailureOf([&] { TypeParam::setActive(writer.get(), true); }),
              "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath")
        << name;
  }
  EXPECT_EQ(this->folder_.read("source.trace"), "the source");
}

TYPED_TEST(WriterFamily, makesNoFileBehindALinkThatLeadsNowhere) {
  std::filesystem::create_symlink(this->folder_.file("elsewhere"), this->target_);
  const auto writer = this->make();
  EXPECT_EQ(processingFailureOf([&] { TypeParam::setActive(writer.get(), true); }), "File already exists - TargetPath");
  EXPECT_FALSE(this->folder_.has("elsewhere"));
  TypeParam::setOverrideExistingFile(writer.get(), true);
  TypeParam::setActive(writer.get(), true);
  EXPECT_TRUE(this->folder_.has("elsewhere"));
}

// Of the system: these texts are not stored.
template <typename Action>
std::string systemFailureOf(Action action) {
  try {
    action();
  } catch (const std::ios_base::failure& failure) {
    return failure.what();
  }
  return {};
}

TYPED_TEST(WriterFamily, hasItsTargetForItself) {
  const auto first = this->makeActive();
  const auto second = this->make(true);
  EXPECT_EQ(systemFailureOf([&] { TypeParam::setActive(second.get(), true); }),
            this->target_ + ": cannot create while another conversion is writing it: Device or resource busy");
  EXPECT_FALSE(TypeParam::getActive(second.get()));
  TypeParam::setActive(first.get(), false);
  TypeParam::setActive(second.get(), true);
  EXPECT_TRUE(TypeParam::getActive(second.get()));
}

TYPED_TEST(WriterFamily, neverWaitsForTheReaderOfAPipe) {
  ASSERT_EQ(::mkfifo(this->target_.c_str(), 0600), 0);
  const auto writer = this->make(true);
  EXPECT_EQ(systemFailureOf([&] { TypeParam::setActive(writer.get(), true); }),
            this->target_ + ": cannot create, since this is a pipe; name a file: Operation not supported");
}

// ---- readers

// A file of each format with two messages.
struct Sample {
  const char* name;
  std::string content;
};

template <typename InfoType>
Sample sampleOf();

template <>
Sample sampleOf<TrcInfoType>() {
  return {"x.trc", ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n1) 10.5 3 Rx 0123 1 AA\n2) 11.5 3 Rx 0123 1 BB\n"};
}

template <>
Sample sampleOf<AscInfoType>() {
  return {"x.asc",
          "date Mon Jul 26 06:00:00.000 am 2021\nbase hex  timestamps absolute\n// version 8.1.0\n"
          "   0.010500 3  123             Rx   d 1 AA\n   0.011500 3  123             Rx   d 1 BB\n"};
}

template <>
Sample sampleOf<KorlInfoType>() {
  return {"x.ltrc",
          ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n1) 10500 Pub 2A 1 AA 7C CL\n2) 11500 Sub 2A 0 7C EH TO\n"};
}

template <>
Sample sampleOf<BtrcInfoType>() {
  using namespace btrc;
  const std::string start =
      record(0x8003, number(kStart, 8) + number(2021, 2) + number(7, 1) + number(26, 1) + number(6, 1) + number(0, 7));
  return {"x.btrc", info() + start + plainFrame(kStart + 10500) + plainFrame(kStart + 11500)};
}

template <>
Sample sampleOf<MdfInfoType>() {
  return {"x.mf4", mf4Sample()};
}

// Whether a reader may read its file more than once.
template <typename Family>
constexpr bool kReadsAgain = !std::is_same_v<Family, MdfReaderType>;

template <typename Family>
class ReaderFamily : public testing::Test {
 protected:
  using InfoType = typename Family::InfoType;
  using MessageType = typename Family::MessageType;
  using Message = Owned<MessageType>;

  // A reader of the sample file; the information object that it is made from is gone already.
  Owned<Family> make() const {
    const Owned<InfoType> info(makeInfo());
    return Owned<Family>(Family::construct(info.get()));
  }
  Owned<InfoType> makeInfo() const { return openInfo<InfoType>(path_.c_str()); }
  static Message next(const Owned<Family>& reader) {
    typename MessageType::Object* message = nullptr;
    return Message(Family::readNextMessage(reader.get(), &message) ? message : nullptr);
  }
  static int countValid(const Owned<Family>& reader) {
    int count = 0;
    for (Message message = next(reader); message; message = next(reader)) {
      count += MessageType::getValid(message.get()) ? 1 : 0;
    }
    return count;
  }

  TempFolder folder_;
  const Sample sample_ = sampleOf<InfoType>();
  const std::string path_ = folder_.write(sample_.name, sample_.content);
};

using ReaderFamilies = testing::Types<TrcReaderType, AscReaderType, KorlReaderType, BtrcReaderType, MdfReaderType>;
TYPED_TEST_SUITE(ReaderFamily, ReaderFamilies, FamilyName);

TYPED_TEST(ReaderFamily, ignoresNullInDestruct) {
  TypeParam::destruct(nullptr);
  TypeParam::InfoType::destruct(nullptr);
  TypeParam::MessageType::destruct(nullptr);
}

TYPED_TEST(ReaderFamily, refusesNullEverywhereElse) {
  using MessageObject = typename TypeParam::MessageType::Object;
  const std::string expected = "Object cannot be null";
  MessageObject* message = nullptr;
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::construct(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::setActive(nullptr, true)); }), expected);
  EXPECT_EQ(processingFailureOf([&] { static_cast<void>(TypeParam::readNextMessage(nullptr, &message)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::InfoType::getValid(nullptr)); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::MessageType::getValid(nullptr)); }), expected);
}

TYPED_TEST(ReaderFamily, informationTellsOfTheFile) {
  using Info = typename TypeParam::InfoType;
  const auto info = this->makeInfo();
  EXPECT_TRUE(Info::getValid(info.get()));
  EXPECT_EQ(objectTextOf<typename Info::Object>(info.get(), Info::getPathSize, Info::getPath), this->path_);
  EXPECT_NEAR(Info::getStartTime(info.get()), 44403.25, 1e-8);
}

TYPED_TEST(ReaderFamily, informationTellsOfItsFormatWithoutAnObject) {
  using Info = typename TypeParam::InfoType;
  char extension[16];
  BaseTraceInfo_GetTraceExtension(kFileKindOf<TypeParam>.format, extension, sizeof extension);
  EXPECT_EQ(textOf(Info::getExtensionSize(), Info::getExtension), extension);
  char description[64];
  BaseTraceInfo_GetTraceFormatDescription(kFileKindOf<TypeParam>.format, description, sizeof description);
  EXPECT_EQ(textOf(Info::getFormatDescriptionSize(), Info::getFormatDescription), description);
  EXPECT_EQ(Info::getCurrentVersion(), BaseTraceInfo_GetTraceCurrentVersion(kFileKindOf<TypeParam>.format));

  TraceFormat targets = 0;
  for (std::uint32_t index = 0; index < Info::getAllowedConvertionsSize(); ++index) {
    targets |= Info::getAllowedConvertions()[index];
  }
  EXPECT_EQ(targets, xlatr_get_formats_convertible_from(kFileKindOf<TypeParam>.format));
  ASSERT_GT(Info::getSupportedVersionsSize(), 0U);
  EXPECT_GE(Info::getSupportedVersions()[0], 0.0);
}

TYPED_TEST(ReaderFamily, informationOfAnotherFormatIsNotValid) {
  using Info = typename TypeParam::InfoType;
  const auto info = openInfo<Info>(this->folder_.write("x.txt", "x").c_str());
  EXPECT_FALSE(Info::getValid(info.get()));
  EXPECT_EQ(Info::getStartTime(info.get()), 0.0);
}

TYPED_TEST(ReaderFamily, readsNothingWhileItIsInactive) {
  const auto reader = this->make();
  EXPECT_FALSE(this->next(reader));
  typename TypeParam::MessageType::Object* untouched = nullptr;
  auto* const marker = reinterpret_cast<decltype(untouched)>(&untouched);
  untouched = marker;
  EXPECT_FALSE(TypeParam::readNextMessage(reader.get(), &untouched));
  EXPECT_EQ(untouched, marker);
}

TYPED_TEST(ReaderFamily, readsAllMessagesAndTellsHowFarItIs) {
  const auto reader = this->make();
  ASSERT_TRUE(TypeParam::setActive(reader.get(), true));
  EXPECT_EQ(this->countValid(reader), 2);
  EXPECT_EQ(TypeParam::getPercentDone(reader.get()), 100.0);
  EXPECT_FALSE(TypeParam::setActive(reader.get(), false));
  EXPECT_FALSE(this->next(reader));
}

// A reader that reads its file only once is inactive after that.
TYPED_TEST(ReaderFamily, startsAgainWhenItIsActivatedAgain) {
  const auto reader = this->make();
  ASSERT_TRUE(TypeParam::setActive(reader.get(), true));
  EXPECT_TRUE(this->next(reader));
  EXPECT_EQ(TypeParam::setActive(reader.get(), true), kReadsAgain<TypeParam>);
  EXPECT_EQ(this->countValid(reader), kReadsAgain<TypeParam> ? 2 : 0);
}

TYPED_TEST(ReaderFamily, keepsAnInformationObjectOfItsOwn) {
  const auto reader = this->make();
  using Info = typename TypeParam::InfoType;
  const auto* const trace = TypeParam::getTrace(reader.get());
  EXPECT_EQ(trace, TypeParam::getTrace(reader.get()));
  EXPECT_EQ(objectTextOf<typename Info::Object>(trace, Info::getPathSize, Info::getPath), this->path_);
}

TYPED_TEST(ReaderFamily, messagesOutliveTheirReader) {
  auto reader = this->make();
  ASSERT_TRUE(TypeParam::setActive(reader.get(), true));
  const auto message = this->next(reader);
  reader.reset();
  ASSERT_TRUE(message);
  EXPECT_TRUE(TypeParam::MessageType::getValid(message.get()));
}

// Two threads with objects of their own share only the library.
TYPED_TEST(ReaderFamily, readsOnSeveralThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int index = 0; index < 2; ++index) {
    threads.emplace_back([this] {
      for (int round = 0; round < 20; ++round) {
        const auto reader = this->make();
        EXPECT_TRUE(TypeParam::setActive(reader.get(), true));
        EXPECT_EQ(this->countValid(reader), 2);
        EXPECT_EQ(processingFailureOf([] { static_cast<void>(TypeParam::construct(nullptr)); }),
                  "Object cannot be null");
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace xlatr::test
