// What the families of MF4 files have that no other family has.
#include <gtest/gtest.h>

#include <algorithm>

#include <cstdint>
#include <string>
#include <vector>

#include "support/mf4_checker.hpp"
#include "support/mf4_samples.hpp"
#include "support/object_failures.hpp"
#include "support/object_families.hpp"
#include "support/object_text.hpp"
#include "support/temp_folder.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {
namespace {

class MdfObjectsTest : public testing::Test {
 protected:
  [[nodiscard]] Owned<MdfReaderType> readerOf(const std::string& path) const {
    const auto info = openInfo<MdfInfoType>(path.c_str());
    return Owned<MdfReaderType>(MdfReader_Construct(info.get()));
  }
  static std::string validationOf(const Owned<MdfReaderType>& reader, bool& valid) {
    char text[100] = "unchanged";
    valid = MdfReader_ValidateFile(reader.get(), text, sizeof text);
    return text;
  }

  TempFolder folder_;
  std::string path_ = folder_.write("x.mf4", mf4Sample());
};

TEST_F(MdfObjectsTest, tellTheVersionAndStart) {
  const auto info = openInfo<MdfInfoType>(path_.c_str());
  EXPECT_TRUE(MdfInfo_getValid(info.get()));
  EXPECT_EQ(MdfInfo_GetVersion(info.get()), 4.11);
  EXPECT_EQ(MdfInfo_getStartTime(info.get()), 44403.25);
}

TEST_F(MdfObjectsTest, sayThatAFileCanBeConverted) {
  const auto reader = readerOf(path_);
  bool valid = false;
  EXPECT_EQ(validationOf(reader, valid), "");
  EXPECT_TRUE(valid);
  EXPECT_TRUE(MdfReader_ValidateFile(reader.get(), nullptr, 0));
}

TEST_F(MdfObjectsTest, sayWhyAFileCanNotBeConverted) {
  std::string unfinished = mf4Sample();
  unfinished[60] = 1;
  const auto reader = readerOf(folder_.write("unfinished.mf4", unfinished));
  bool valid = true;
  EXPECT_EQ(validationOf(reader, valid), "Only finalized MDF4 files are supported");
  EXPECT_FALSE(valid);
  char cut[5] = "####";
  EXPECT_FALSE(MdfReader_ValidateFile(reader.get(), cut, sizeof cut));
  EXPECT_STREQ(cut, "Only");
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MdfReader_ValidateFile(nullptr, nullptr, 0)); }),
            "Object cannot be null");
}

TEST_F(MdfObjectsTest, handOutMessagesWithTheirBus) {
  const auto reader = readerOf(path_);
  ASSERT_TRUE(MdfReader_setActive(reader.get(), true));
  std::vector<std::uint32_t> buses;
  MdfCanMessage* message = nullptr;
  while (MdfReader_ReadNextMessage(reader.get(), &message)) {
    const Owned<MdfCanMessageType> owner(message);
    EXPECT_TRUE(MdfCanMessage_getValid(message));
    buses.push_back(MdfCanMessage_getBus(message));
  }
  EXPECT_EQ(buses, (std::vector<std::uint32_t>{3, 4}));
}

TEST_F(MdfObjectsTest, serveOnePassOverAFile) {
  const auto info = openInfo<MdfInfoType>(path_.c_str());
  const Owned<MdfReaderType> reader(MdfReader_Construct(info.get()));
  ASSERT_TRUE(MdfReader_setActive(reader.get(), true));
  EXPECT_FALSE(MdfReader_setActive(reader.get(), false));
  EXPECT_FALSE(MdfReader_setActive(reader.get(), true));
  EXPECT_FALSE(MdfInfo_getValid(info.get()));
  bool valid = true;
  EXPECT_EQ(validationOf(reader, valid), "Only finalized MDF4 files are supported");
  EXPECT_FALSE(valid);
}

TEST_F(MdfObjectsTest, giveFramesToATrcWriter) {
  const auto reader = readerOf(path_);
  const Owned<TrcWriterType> writer(TrcWriter_Construct(folder_.file("x.trc").c_str(), false, 2.1));
  TrcWriter_setActive(writer.get(), true);
  ASSERT_TRUE(MdfReader_setActive(reader.get(), true));
  MdfCanMessage* message = nullptr;
  while (MdfReader_ReadNextMessage(reader.get(), &message)) {
    const Owned<MdfCanMessageType> owner(message);
    TrcWriter_WriteMessage(writer.get(), asMessage(message));
  }
  TrcWriter_setActive(writer.get(), false);
  EXPECT_EQ(folder_.read("x.trc"),
            "      1        10.500 DT     0123 Rx 1    AA\r\n      2        11.500 DT     0123 Rx 1    BB\r\n");
}

// A file of each layout from a remote frame, by the setters alone.
TEST_F(MdfObjectsTest, writeInAllFourLayouts) {
  const std::string source =
      folder_.write("s.trc", ";$FILEVERSION=1.2\n;$STARTTIME=44403.25\n1) 10.5 3 Rx 0123 8 RTR\n");
  for (const bool sorted : {false, true}) {
    for (const bool zipped : {false, true}) {
      const auto info = openInfo<TrcInfoType>(source.c_str());
      const Owned<TrcReaderType> reader(TrcReader_Construct(info.get()));
      ASSERT_TRUE(TrcReader_setActive(reader.get(), true));
      MessageCan* message = nullptr;
      ASSERT_TRUE(TrcReader_ReadNextMessage(reader.get(), &message));
      const Owned<MessageCanType> owner(message);

      const Owned<MdfWriterType> original(MdfWriter_Construct(folder_.file("y.mf4").c_str(), true, 4.1));
      MdfWriter_setSorted(original.get(), sorted);
      MdfWriter_setZipped(original.get(), zipped);
      const Owned<MdfWriterType> writer(MdfWriter_CreateNew(original.get()));
      MdfWriter_setActive(writer.get(), true);
      MdfWriter_WriteHeader(writer.get(), asTraceInfo(info.get()));
      MdfWriter_WriteMessage(writer.get(), asMessage(message));
      MdfWriter_setActive(writer.get(), false);

      const Mf4Report report = checkMf4(folder_.read("y.mf4"));
      EXPECT_EQ(faultsOf(report), "");
      EXPECT_EQ(report.version, 4.1);
      EXPECT_EQ(report.startNs, 1627279200000000000U);
      ASSERT_EQ(report.groups.size(), 3U);
      const auto isRemote = [](const Mf4Group& group) { return group.name == "CAN_RemoteFrame"; };
      const auto group = std::ranges::find_if(report.groups, isRemote);
      EXPECT_EQ(group->cycleCount, 1U);
      EXPECT_EQ(group->dataGroup, sorted ? 1U : 0U);
      const auto blockCount = [&report](const char* id) { return std::ranges::count(report.blocks, id); };
      EXPECT_EQ(blockCount("DZ"), zipped ? 1 : 0);
      EXPECT_EQ(blockCount("DT"), zipped ? 0 : (sorted ? 3 : 1));
    }
  }
}

TEST_F(MdfObjectsTest, refuseSettersOfNoObject) {
  const std::string expected = "Object cannot be null";
  EXPECT_EQ(processingFailureOf([] { MdfWriter_setZipped(nullptr, true); }), expected);
  EXPECT_EQ(processingFailureOf([] { MdfWriter_setSorted(nullptr, true); }), expected);
  EXPECT_EQ(processingFailureOf([] { static_cast<void>(MdfCanMessage_getBus(nullptr)); }), expected);
}

}  // namespace
}  // namespace xlatr::test
