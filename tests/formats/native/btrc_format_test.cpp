#include "formats/native/btrc_format.hpp"

#include <gtest/gtest.h>

#include <ios>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_writer.hpp"
#include "io/output_target.hpp"
#include "io/trace_source.hpp"
#include "io/trace_writer.hpp"
#include "support/btrc_image.hpp"
#include "support/format_facts.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using namespace test::btrc;
using Texts = std::vector<std::string>;

// Notes down what is written, and refuses the messages with one identifier.
class NotingWriter final : public TraceWriter {
 public:
  NotingWriter() : TraceWriter("out", false, 1.0) {}
  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override { return nullptr; }
  void WriteHeader(const ITraceInfo& /*source*/) override {}
  void WriteComment(std::string_view text) override { notes.emplace_back(text); }
  void WriteMessage(const IMessage& message) override {
    if (message.getIdentifier() == kRefused) {
      throw std::runtime_error("no room");
    }
    notes.push_back("message " + std::to_string(message.getIdentifier()));
  }
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_TRC; }

  static constexpr std::uint32_t kRefused = 666;
  Texts notes;
};

std::unique_ptr<TraceSource> makeBtrcSource(const TraceFileInfo& file) {
  return std::move(kBtrcFormat.makeSources(file, {}).at(0).source);
}

TEST(BtrcFormat, isWhatCallersKnow) {
  test::expectFacts(
      kBtrcFormat,
      {32, ".btrc", "ZELK binary trace", "ZELK binary trace file", 1.0, 1.0, {1.0}, {1, 4, 16}, true, true});
}

class BtrcSourceTest : public testing::Test {
 protected:
  // Everything that a conversion to this target writes.
  Texts convert(const std::string& content, const TargetKind& target = {XLATR_FORMAT_TRC, 2.1}) {
    const auto source = makeBtrcSource(TraceFileInfo(folder_.write("in.btrc", content)));
    source->setTarget(target);
    NotingWriter writer;
    EXPECT_TRUE(source->reader().setActive(true));
    source->begin(writer, message_);
    while (source->readNext() == TraceSource::Read::Message) {
      const Verdict verdict = source->judge();
      EXPECT_NE(verdict, Verdict::Comment);
      if (verdict == Verdict::Write) {
        buses_.push_back(source->bus().value_or(999));
        source->write(writer);
      }
    }
    return writer.notes;
  }

  test::TempFolder folder_;
  std::string message_;
  std::vector<std::uint32_t> buses_;
};

TEST_F(BtrcSourceTest, writesFramesAndNothingElse) {
  EXPECT_EQ(convert(filled(head() + plainFrame(kStart, 0, 1) + record(0x8002, "text") + counter(0, 1, 1) +
                           record(9, std::string(12, 'x')) + plainFrame(kStart, 6, 2))),
            (Texts{"message 1", "message 2"}));
  EXPECT_EQ(buses_, (std::vector<std::uint32_t>{1, 7})) << "counted from 1";
  EXPECT_EQ(message_, "");
}

TEST_F(BtrcSourceTest, leavesOutWhatATrcTargetCanNotHold) {
  const std::string fd = received(3, kStart, frameInfo(0, 9, 0x10, 5), "123456789012");
  const std::string file = filled(head() + fd + plainFrame(kStart, 0, 1));
  EXPECT_EQ(convert(file, {XLATR_FORMAT_TRC, 1.3}), Texts{"message 1"});
  EXPECT_EQ(convert(file, {XLATR_FORMAT_TRC, 2.0}), (Texts{"message 5", "message 1"}));
  EXPECT_EQ(convert(file, {XLATR_FORMAT_ASC, 7.0}), (Texts{"message 5", "message 1"}));
}

TEST_F(BtrcSourceTest, recordThatCanNotBeWrittenCostsTheRestOfItsBlock) {
  const std::string refused = plainFrame(kStart, 0, NotingWriter::kRefused);
  EXPECT_EQ(convert(filled(head() + plainFrame(kStart, 0, 1) + refused + plainFrame(kStart, 0, 2)) +
                    filled(counter(0, 3, 3) + plainFrame(kStart, 0, 3))),
            (Texts{"message 1",
                   "-->INTEGRITY PROBLEM. Raw data: 18 00 01 00 C6 29 66 22 C8 20 E3 00 00 04 00 00 9A 02 00 00 01 02 "
                   "03 04",
                   "-->Block skipped | Block Size: 8192 | Old position: 80 | New position 8192 | 8112 bytes advanced",
                   "message 3"}));
}

// Whatever the guard around one record catches, a target that lacks something is not whole, and lack of memory is no
// matter of the record.
TEST_F(BtrcSourceTest, failuresOfTheSystemAreNoMatterOfTheRecord) {
  class FailingOnce final : public OutputBytes {
   public:
    void write(std::span<const char> /*bytes*/) override {
      if (!std::exchange(failed_, true)) {
        throw std::ios_base::failure("out.trc: no", std::make_error_code(std::errc::io_error));
      }
    }

   private:
    bool failed_ = false;
  };
  class WithoutMemory final : public TraceWriter {
   public:
    WithoutMemory() : TraceWriter("out", false, 1.0) {}
    [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override { return nullptr; }
    void WriteHeader(const ITraceInfo& /*source*/) override {}
    void WriteComment(std::string_view /*text*/) override { ADD_FAILURE() << "a comment about the record"; }
    void WriteMessage(const IMessage& /*message*/) override { throw std::bad_alloc(); }
    [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_TRC; }
  };
  std::string content = filled(head() + plainFrame(kStart, 0, 1));
  for (int block = 1; block < 30; ++block) {
    std::string frames;
    for (int frame = 0; frame < 200; ++frame) {
      frames += plainFrame(kStart, 0, 1);
    }
    content += filled(frames);
  }
  const auto source = makeBtrcSource(TraceFileInfo(folder_.write("in.btrc", content)));
  source->setTarget({XLATR_FORMAT_TRC, 2.1});
  EXPECT_TRUE(source->reader().setActive(true));
  TrcWriter writer("out.trc", false, 2.1);
  writer.setOutput({"out.trc", std::make_shared<FailingOnce>()});
  writer.setActive(true);
  const auto convertAll = [&](ITraceWriter& target) {
    while (source->readNext() == TraceSource::Read::Message) {
      source->write(target);
    }
  };
  EXPECT_THROW(convertAll(writer), std::ios_base::failure);
  EXPECT_THROW(convertAll(writer), std::ios_base::failure);
  EXPECT_THROW(writer.setActive(false), std::ios_base::failure);
  EXPECT_FALSE(writer.getActive());
  EXPECT_TRUE(source->reader().setActive(true));
  WithoutMemory withoutMemory;
  EXPECT_THROW(convertAll(withoutMemory), std::bad_alloc);
}

TEST_F(BtrcSourceTest, impossibleDateIsReported) {
  EXPECT_EQ(
      convert(filled(info() + calibration(kStart, 13) + plainFrame(5, 0, 1))),
      (Texts{"-->INVALID CALCULATION TIME RECORD (RTC). Raw data: 18 00 03 80 C6 29 66 22 C8 20 E3 00 EA 07 0D 15 "
             "0D 0E 0F 00 06 12 0F 00 .",
             "-->RTC replaced by creation information of the file in.btrc.", "message 1"}));
  EXPECT_EQ(message_,
            "The source file 'in.btrc' had an invalid calculation time record (RTC).\n"
            "This information was replaced with the creation date/time of the source file.\n");
}

TEST_F(BtrcSourceTest, knowsOfNoInvalidBuses) {
  const auto source = makeBtrcSource(TraceFileInfo(folder_.write("in.btrc", filled(head()))));
  EXPECT_FALSE(source->warnsOfHighBuses());
  EXPECT_TRUE(source->splitsByBus());
}

}  // namespace
}  // namespace xlatr
