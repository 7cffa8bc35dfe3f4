#include "formats/lin/lin_writer.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "formats/blf/blf_message.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using test::failureOf;
using test::StubInfo;

std::string golden(const std::string& name) {
  std::ifstream in(std::string(XLATR_GOLDEN_DIR) + "/lin-csv/" + name + "/" + name + ".ltrc", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

BlfLinMessage frame() {
  BlfLinMessage message;
  message.valid = true;
  message.kind = MessageKind::DT;
  message.id = 0x2A;
  message.linDirection = DirectionType::Publisher;
  message.checksumType = ChecksumType::Classic;
  message.checksum = 0x7C;
  message.objectType = 11;
  return message;
}

BlfLinMessage event(std::string_view text) {
  BlfLinMessage message;
  message.valid = true;
  message.kind = MessageKind::EV;
  message.eventText = text;
  return message;
}

class LinWriterTest : public testing::Test {
 protected:
  [[nodiscard]] std::string linesOf(KorlWriter& writer, const std::function<void()>& write) const {
    writer.setTargetPath(folder_.file("y.ltrc"));
    writer.setOverrideExistingFile(true);
    writer.setActive(true);
    write();
    writer.setActive(false);
    return folder_.read("y.ltrc");
  }

  test::TempFolder folder_;
};

// The messages of the golden files: every direction with every checksum type and every length, every combination of
// errors, and the events.
class GoldenMessages {
 public:
  explicit GoldenMessages(KorlWriter& writer) : writer_(writer) {}

  void write() {
    constexpr DirectionType kDirections[] = {DirectionType::Publisher, DirectionType::Subscriber,
                                             DirectionType::SubscriberAutoLength, DirectionType::Unknown};
    constexpr ChecksumType kChecksumTypes[] = {ChecksumType::Classic, ChecksumType::Enhanced, ChecksumType::Auto,
                                               ChecksumType::Unknown};
    for (const DirectionType direction : kDirections) {
      for (const ChecksumType checksumType : kChecksumTypes) {
        for (std::uint32_t length = 0; length <= 8; ++length) {
          writeFrame(direction, checksumType, length, 0);
        }
      }
    }
    writeEvent("Bus Sleep");
    for (std::uint32_t flags = 1; flags <= 0xFF; ++flags) {
      writeFrame(DirectionType::Subscriber, ChecksumType::Enhanced, index_ % 9, flags);
    }
    writeEvent("Bus Wake Up");
    writeFrame(DirectionType::Publisher, ChecksumType::Enhanced, 8, 0);
  }

 private:
  void writeFrame(DirectionType direction, ChecksumType checksumType, std::uint32_t length, std::uint32_t flags) {
    BlfLinMessage message = frame();
    message.kind = flags != 0 ? MessageKind::ER : MessageKind::DT;
    message.errorFlags = flags;
    message.linDirection = direction;
    message.checksumType = checksumType;
    message.id = index_ % 64;
    message.checksum = index_ * 3 % 256;
    message.length = length;
    for (std::uint32_t at = 0; at < length; ++at) {
      message.data.push_back(static_cast<std::uint8_t>(index_ * 7 + 31 * at + 5));
    }
    writeTimed(message);
  }
  void writeEvent(std::string_view text) { writeTimed(event(text)); }
  void writeTimed(BlfLinMessage message) {
    // Both units, to see that both give the same: 12345 microseconds per message.
    const bool tensOfMicroseconds = index_ % 2 == 0;
    message.objectFlags = tensOfMicroseconds ? 1 : 2;
    message.objectTicks = tensOfMicroseconds ? index_ / 2 * 2469 : std::uint64_t{index_} * 12345000;
    ++index_;
    writer_.WriteMessage(message);
  }

  KorlWriter& writer_;
  std::uint32_t index_ = 0;
};

TEST_F(LinWriterTest, writesTheGoldenFileOfEachVersion) {
  for (const auto& [version, name] : {std::pair(1.0, "all-1.0"), {1.1, "all-1.1"}, {1.2, "all-1.2"}}) {
    KorlWriter writer("", true, version);
    const std::string written = linesOf(writer, [&writer] {
      writer.WriteHeader(StubInfo("drive.blf"));
      GoldenMessages(writer).write();
    });
    EXPECT_TRUE(written == golden(name)) << name;
  }
}

TEST_F(LinWriterTest, aCanFrameIsACommentThatTakesNoNumber) {
  KorlWriter writer("", true, 1.2);
  BlfCanMessage can;
  can.objectType = 86;
  can.valid = true;
  EXPECT_EQ(linesOf(writer,
                    [&] {
                      writer.WriteMessage(frame());
                      writer.WriteMessage(can);
                      can.valid = false;
                      can.comment = "damaged";
                      writer.WriteMessage(can);
                      writer.WriteMessage(frame());
                    }),
            "     1)                0   Pub   2A  0                           7C  CL  \r\n"
            ";BLF Object Type 86 (CAN)\r\n;BLF Object Type 86 damaged (CAN)\r\n"
            "     2)                0   Pub   2A  0                           7C  CL  \r\n");
}

TEST_F(LinWriterTest, aMessageThatIsNotValidTakesItsNumberAndWritesNothing) {
  KorlWriter writer("", true, 1.2);
  BlfLinMessage broken = frame();
  broken.valid = false;
  EXPECT_EQ(linesOf(writer,
                    [&] {
                      writer.WriteMessage(broken);
                      writer.WriteMessage(frame());
                    }),
            "     2)                0   Pub   2A  0                           7C  CL  \r\n");
}

TEST_F(LinWriterTest, aBusEventIsACommentInVersion11) {
  KorlWriter writer("", true, 1.1);
  EXPECT_EQ(linesOf(writer, [&] { writer.WriteMessage(event("Bus Sleep")); }),
            ";     1)                0   ---   --  -  Bus Sleep                --  --\r\n");
}

TEST_F(LinWriterTest, numbersStartAgainInTheNextFile) {
  KorlWriter writer("", true, 1.2);
  const std::string first = linesOf(writer, [&] { writer.WriteMessage(frame()); });
  EXPECT_EQ(linesOf(writer, [&] { writer.WriteMessage(frame()); }), first);
}

TEST_F(LinWriterTest, headersKeepTheirSpelling) {
  KorlWriter writer("", true, 1.0);
  const std::string header = linesOf(writer, [&] { writer.WriteHeader(StubInfo("drive.blf")); });
  EXPECT_NE(header.find("\r\n;     SR = SlaveNOtResponding Error\r\n"), std::string::npos);
  EXPECT_NE(header.find("\r\n; Columns decription :\r\n"), std::string::npos);
}

TEST_F(LinWriterTest, otherVersionsHaveNoHeader) {
  for (const double version : {0.0, 1.3, 1.27, 2.0}) {
    KorlWriter writer("", true, version);
    EXPECT_EQ(linesOf(writer, [&] { writer.WriteHeader(StubInfo("drive.blf")); }), "") << version;
  }
  EXPECT_EQ(KorlWriter().getTargetVersion(), 1.3);
}

TEST_F(LinWriterTest, aSourceThatIsNotValidGetsAHeaderAllTheSame) {
  KorlWriter writer("", true, 1.1);
  EXPECT_NE(linesOf(writer, [&] { writer.WriteHeader(StubInfo("drive.blf", false)); }), "");
}

TEST_F(LinWriterTest, takesTheStartTimeOfTheSecondForm) {
  KorlWriter writer("", true, 1.1);
  const std::string header = linesOf(writer, [&] { writer.WriteHeader_2(StubInfo("drive.blf"), 44404.5); });
  EXPECT_NE(header.find(";$STARTTIME=44404.5\r\n"), std::string::npos);
  EXPECT_NE(header.find(";   Start time: 2021-07-27 12:00:00.000\r\n"), std::string::npos);
}

TEST_F(LinWriterTest, putsASemicolonInFrontOfComments) {
  KorlWriter writer("", true, 1.2);
  EXPECT_EQ(linesOf(writer,
                    [&] {
                      writer.WriteComment("a");
                      writer.WriteComment(";b");
                      writer.WriteComment("");
                    }),
            ";a\r\n;b\r\n;\r\n");
}

TEST_F(LinWriterTest, isRefusedWhileInactive) {
  KorlWriter writer;
  const std::string expected = "Writer is not initialized";
  EXPECT_EQ(failureOf([&] { writer.WriteHeader(StubInfo("drive.blf")); }), expected);
  EXPECT_EQ(failureOf([&] { writer.WriteComment("a"); }), expected);
  EXPECT_EQ(failureOf([&] { writer.WriteMessage(frame()); }), expected);
}

TEST_F(LinWriterTest, refusesMessagesOfOtherFormats) {
  KorlWriter writer("", true, 1.2);
  const std::string expected = "Object cannot be casted to any supported message trace";
  static_cast<void>(linesOf(writer, [&] {
    EXPECT_EQ(failureOf([&] { writer.WriteMessage(test::ForeignMessage()); }), expected);
    EXPECT_EQ(failureOf([&] { writer.WriteMessage(KorlMessage()); }), expected);
  }));
}

TEST_F(LinWriterTest, makesANewOneOfItsKind) {
  KorlWriter writer("a.ltrc", true, 1.1);
  writer.setOwnerBus(4);
  writer.setSourcePath("s.blf");
  const auto fresh = writer.CreateNew();
  EXPECT_EQ(fresh->getTargetPath(), "a.ltrc");
  EXPECT_TRUE(fresh->getOverrideExistingFile());
  EXPECT_EQ(fresh->getTargetVersion(), 1.1);
  EXPECT_EQ(fresh->getOwnerBus(), 4);
  EXPECT_EQ(fresh->getSourcePath(), "");
  EXPECT_EQ(fresh->getTargetFormat(), XLATR_FORMAT_LIN);
  EXPECT_EQ(fresh->getExtension(), ".ltrc");
  EXPECT_FALSE(fresh->getActive());
}

}  // namespace
}  // namespace xlatr
