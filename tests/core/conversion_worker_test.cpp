// The worker's loop, driven by a source whose messages are all written out in the test.
#include "core/conversion_worker.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <deque>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "formats/trc/trc_message.hpp"
#include "support/temp_folder.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

using Names = std::vector<std::string>;

// A message of the scripted source and what the source says about it.
struct Step {
  std::optional<std::uint32_t> bus = 1;
  Verdict verdict = Verdict::Write;
  std::string text = {};  // of the event that is written, or of the comment
  TraceSource::Read read = TraceSource::Read::Message;
};

struct Script {
  std::deque<Step> steps;
  bool endless = false;  // after the steps come endless messages, none of which is written
  bool splitsByBus = true;
  bool warnsOfHighBuses = true;
  bool opens = true;
  std::string failureAtEnd;
  std::function<void()> validate = [] {};
  std::function<void(ITraceWriter&, std::string&)> begin = [](ITraceWriter&, std::string&) {};
  std::function<void(const Step&)> beforeWrite = [](const Step&) {};
};

Script* currentScript = nullptr;

class ScriptedReader final : public ITraceReader {
 public:
  [[nodiscard]] bool getActive() const override { return active_; }
  bool setActive(bool active) override { return active ? open() : (close(), false); }
  [[nodiscard]] double getPercentDone() const override { return 50.0; }
  [[nodiscard]] const std::string& failure() const override { return failure_; }
  void fail(const std::string& text) { failure_ = text; }

 protected:
  bool open() override {
    active_ = currentScript->opens;
    failure_ = active_ ? "" : "the source is locked";
    return active_;
  }
  void close() override { active_ = false; }

 private:
  bool active_ = false;
  std::string failure_;
};

class ScriptedInfo final : public TraceInfo {
 public:
  explicit ScriptedInfo(const TraceFileInfo& file) : TraceInfo(file, XLATR_FORMAT_TRC) {}
  // No header is written for a source that is not valid, which keeps the expected files short.
  [[nodiscard]] bool getValid() const override { return false; }
};

class ScriptedSource final : public TraceSource {
 public:
  explicit ScriptedSource(const TraceFileInfo& file) : info_(file) {}

  [[nodiscard]] const ITraceInfo& info() const override { return info_; }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  void validate() override { currentScript->validate(); }
  void begin(ITraceWriter& writer, std::string& message) override { currentScript->begin(writer, message); }
  [[nodiscard]] bool splitsByBus() const override { return currentScript->splitsByBus; }
  [[nodiscard]] bool warnsOfHighBuses() const override { return currentScript->warnsOfHighBuses; }
  [[nodiscard]] Read readNext() override {
    if (currentScript->steps.empty() && currentScript->endless) {
      step_ = {1, Verdict::Drop};
      return Read::Message;
    }
    if (currentScript->steps.empty()) {
      if (!currentScript->failureAtEnd.empty()) {
        reader_.fail(currentScript->failureAtEnd);
      }
      return Read::End;
    }
    step_ = currentScript->steps.front();
    currentScript->steps.pop_front();
    return step_.read;
  }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return step_.bus; }
  [[nodiscard]] Verdict judge() const override { return step_.verdict; }
  [[nodiscard]] std::string_view commentText() const override { return step_.text; }
  void write(ITraceWriter& writer) override {
    currentScript->beforeWrite(step_);
    BrixMessage message;
    message.valid = true;
    message.kind = MessageKind::EV;
    message.columnSet = trc_column::kBus;
    message.bus = step_.bus.value_or(0);
    message.comment = step_.text;
    writer.WriteMessage(message);
  }

 private:
  ScriptedInfo info_;
  ScriptedReader reader_;
  Step step_;
};

struct Outcome {
  bool started = false;
  bool failed = false;
  std::string message;
  Names files;
  float percent = 0;
};

class ConversionWorkerTest : public testing::Test {
 protected:
  ConversionWorkerTest() { currentScript = &script_; }

  [[nodiscard]] std::unique_ptr<TraceSource> scripted() const {
    return std::make_unique<ScriptedSource>(TraceFileInfo(source_));
  }

  Outcome convert(double version) { return convert(version, scripted(), formatOf(XLATR_FORMAT_TRC)); }
  Outcome convert(double version, std::unique_ptr<TraceSource> source, const FormatDescriptor& target) {
    EventGroup events;
    ConversionWorker worker({TraceFileInfo(source_), &target, folder_.file("out.trc"), version, {}, safe_, mustBeNew_},
                            std::move(source), events);
    Outcome outcome;
    outcome.started = worker.start();
    outcome.failed = events.waitAny() == worker.failureEvent();
    outcome.message = worker.message();
    outcome.files = worker.outputFiles();
    outcome.percent = worker.percent();
    return outcome;
  }

  [[nodiscard]] static std::string eventLine(std::string_view bus, std::string_view text) {
    return "        0.000 EV " + std::string(bus) + std::string(text) + "\r\n";
  }

  test::TempFolder folder_;
  std::string source_ = folder_.write("source.trc", "");
  bool safe_ = false;
  bool mustBeNew_ = false;
  Script script_;
};

TEST_F(ConversionWorkerTest, writesMessagesAndCommentsInOrder) {
  script_.steps = {{1, Verdict::Write, "one"},
                   {2, Verdict::Comment, "two"},
                   {3, Verdict::Drop, "three"},
                   {4, Verdict::Write, "four", TraceSource::Read::Nothing},
                   {5, Verdict::Write, "five"}};
  const Outcome outcome = convert(2.1);
  EXPECT_TRUE(outcome.started);
  EXPECT_FALSE(outcome.failed);
  EXPECT_EQ(outcome.message, "");
  EXPECT_EQ(outcome.files, Names{"out.trc"});
  EXPECT_EQ(outcome.percent, 100.0F);
  EXPECT_EQ(folder_.read("out.trc"), eventLine("1  ", "one") + ";two\r\n" + eventLine("5  ", "five"));
}

TEST_F(ConversionWorkerTest, splitsByBusForTargetsWithoutABusColumn) {
  for (const double version : {0.9, 1.0, 1.1, 2.0}) {
    script_.steps = {{2, Verdict::Comment, "b"}, {5, Verdict::Comment, "e"}, {2, Verdict::Comment, "b again"}};
    const Outcome outcome = convert(version);
    EXPECT_EQ(outcome.files, (Names{"out_BUS2.trc", "out_BUS5.trc"})) << version;
    EXPECT_FALSE(folder_.has("out.trc")) << version;
    EXPECT_EQ(folder_.read("out_BUS2.trc"), ";b\r\n;b again\r\n") << version;
    EXPECT_EQ(folder_.read("out_BUS5.trc"), ";e\r\n") << version;
  }
  for (const double version : {1.2, 1.3, 2.1, 2.5, 3.0}) {
    script_.steps = {{2, Verdict::Comment, "b"}};
    EXPECT_EQ(convert(version).files, Names{"out.trc"}) << version;
  }
}

TEST_F(ConversionWorkerTest, neverSplitsASourceThatDoesNot) {
  script_.splitsByBus = false;
  script_.steps = {{2, Verdict::Comment, "b"}};
  EXPECT_EQ(convert(2.0).files, Names{"out.trc"});
}

TEST_F(ConversionWorkerTest, opensNoFileForWhatIsNotWritten) {
  script_.steps = {{3, Verdict::Drop, ""}, {4, Verdict::Comment, "d"}};
  EXPECT_EQ(convert(2.0).files, Names{"out_BUS4.trc"});
  script_.steps = {};
  const Outcome outcome = convert(2.0);
  EXPECT_FALSE(outcome.failed);
  EXPECT_EQ(outcome.files, Names{});
  EXPECT_EQ(outcome.percent, 100.0F);
}

TEST_F(ConversionWorkerTest, holdsCommentsWithoutABusForTheFirstFile) {
  script_.steps = {{std::nullopt, Verdict::Comment, "early 1"},
                   {std::nullopt, Verdict::Comment, "early 2"},
                   {7, Verdict::Comment, "g"},
                   {std::nullopt, Verdict::Comment, "late"},
                   {8, Verdict::Comment, "h"},
                   {std::nullopt, Verdict::Comment, "later"}};
  EXPECT_EQ(convert(2.0).files, (Names{"out_BUS7.trc", "out_BUS8.trc"}));
  EXPECT_EQ(folder_.read("out_BUS7.trc"), ";early 1\r\n;early 2\r\n;g\r\n;late\r\n");
  EXPECT_EQ(folder_.read("out_BUS8.trc"), ";h\r\n;later\r\n");
}

TEST_F(ConversionWorkerTest, failsOnAMessageWithoutABusBeforeAnyFileIsOpen) {
  script_.steps = {{std::nullopt, Verdict::Write, "nowhere"}};
  const Outcome outcome = convert(2.0);
  EXPECT_TRUE(outcome.failed);
  EXPECT_EQ(outcome.message, "Writer is not initialized");
}

TEST_F(ConversionWorkerTest, skipsTheBusWhoseFileCannotBeOpenedAndKeepsTheOthers) {
  std::filesystem::create_directory(folder_.path() / "out_BUS2.trc");
  std::filesystem::create_directory(folder_.path() / "out_BUS4.trc");
  script_.steps = {{1, Verdict::Comment, "a"}, {2, Verdict::Comment, "b"}, {3, Verdict::Comment, "c"},
                   {4, Verdict::Comment, "d"}, {2, Verdict::Comment, "b"}, {1, Verdict::Comment, "a again"}};
  const Outcome outcome = convert(2.0);
  EXPECT_TRUE(outcome.failed);
  EXPECT_EQ(outcome.message, folder_.file("out_BUS2.trc") + ": cannot create: Is a directory");
  EXPECT_EQ(outcome.files, (Names{"out_BUS1.trc", "out_BUS3.trc"}));
  EXPECT_EQ(folder_.read("out_BUS1.trc"), ";a\r\n;a again\r\n");
  EXPECT_EQ(folder_.read("out_BUS3.trc"), ";c\r\n");
}

TEST_F(ConversionWorkerTest, neverWritesABusFileOverItsSource) {
  source_ = folder_.write("out_BUS2.trc", "the source");
  script_.steps = {{1, Verdict::Comment, "a"}, {2, Verdict::Comment, "b"}};
  const Outcome outcome = convert(2.0);
  EXPECT_TRUE(outcome.failed);
  EXPECT_EQ(outcome.message, "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath");
  EXPECT_EQ(folder_.read("out_BUS2.trc"), "the source");
}

TEST_F(ConversionWorkerTest, knowsItsSourceByAnyName) {
  source_ = folder_.write("source.trc", "the source");
  const std::string given = source_;
  std::filesystem::create_hard_link(given, folder_.file("out_BUS2.trc"));
  for (const bool safe : {false, true}) {
    safe_ = safe;
    source_ = given;
    std::filesystem::remove(folder_.file("out.trc"));
    script_.steps = {{1, Verdict::Comment, "a"}, {2, Verdict::Comment, "b"}};
    const Outcome split = convert(2.0);
    EXPECT_EQ(split.message, kTargetIsSource);
    std::filesystem::create_symlink(given, folder_.file("out.trc"));
    const Outcome whole = convert(2.1);
    EXPECT_EQ(whole.message, kTargetIsSource);
    EXPECT_EQ(whole.files, Names{});
    // The place beside the target, which an interrupted conversion has left.
    std::filesystem::remove(folder_.file("out.trc"));
    static_cast<void>(folder_.write(".out.trc.xlatr-part", "a fragment"));
    source_ = folder_.file("saved.trc");
    std::filesystem::remove(source_);
    std::filesystem::create_hard_link(folder_.file(".out.trc.xlatr-part"), source_);
    const Outcome saved = convert(2.1);
    EXPECT_EQ(saved.message, safe ? kTargetIsSource : "");
    EXPECT_EQ(folder_.read(".out.trc.xlatr-part"), "a fragment");
  }
  EXPECT_EQ(folder_.read("source.trc"), "the source");
}

TEST_F(ConversionWorkerTest, keepsATargetThatIsThere) {
  mustBeNew_ = true;
  static_cast<void>(folder_.write("out.trc", "kept"));
  for (const bool safe : {false, true}) {
    safe_ = safe;
    EXPECT_EQ(convert(2.1).message, "File already exists - TargetPath");
    EXPECT_EQ(folder_.read("out.trc"), "kept");
  }
  // It comes while the conversion runs.
  std::filesystem::remove(folder_.file("out.trc"));
  script_.steps = {{1, Verdict::Write, "a"}};
  script_.beforeWrite = [this](const Step&) { static_cast<void>(folder_.write("out.trc", "kept")); };
  EXPECT_EQ(convert(2.1).message, folder_.file("out.trc") + ": the file exists and is not to be replaced");
  EXPECT_EQ(folder_.read("out.trc"), "kept");
  EXPECT_FALSE(folder_.has(".out.trc.xlatr-part"));
}

// A reader that does not read would hold the conversion up for ever: whoever names a pipe says that he knows that.
TEST_F(ConversionWorkerTest, writesToAPipeOnlyWhenItIsAskedTo) {
  const std::string target = folder_.file("out.trc");
  ASSERT_EQ(::mkfifo(target.c_str(), 0600), 0);
  const int reader = ::open(target.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_EQ(convert(2.1).message,
            target + ": cannot create, since this is a pipe; name a file: Operation not supported");
  safe_ = true;
  script_.steps = {{1, Verdict::Write, "a"}};
  EXPECT_EQ(convert(2.1).message, "");
  std::array<char, 100> bytes{};
  EXPECT_GT(::read(reader, bytes.data(), bytes.size()), 0);
  ::close(reader);
  EXPECT_EQ(convert(2.1).message,
            target + ": cannot create, since nobody reads from this pipe: No such device or address");
}

TEST_F(ConversionWorkerTest, keepsBusesApartWhateverTheirNumber) {
  script_.steps = {
      {0xFFFFFFFF, Verdict::Comment, "x"}, {0x80000000, Verdict::Comment, "y"}, {0, Verdict::Comment, "z"}};
  EXPECT_EQ(convert(2.0).files, (Names{"out_BUS4294967295.trc", "out_BUS2147483648.trc", "out_BUS0.trc"}));
}

TEST_F(ConversionWorkerTest, warnsOfBusesAbove16) {
  script_.steps = {{300, Verdict::Drop}, {17, Verdict::Write, "q"}, {16, Verdict::Write, "p"}, {17, Verdict::Drop}};
  const Outcome outcome = convert(2.1);
  EXPECT_FALSE(outcome.failed);
  EXPECT_EQ(outcome.message,
            "The Converted file 'out.trc' contents at least one invalid BUS number: 17 300.\n"
            "Only BRIX trace files with bus numbers from 1 to 16 are supported");
  EXPECT_EQ(outcome.percent, 100.0F);
  script_.warnsOfHighBuses = false;
  script_.steps = {{300, Verdict::Drop}};
  EXPECT_EQ(convert(2.1).message, "");
}

TEST_F(ConversionWorkerTest, hearsOfItsSourceBeforeTheFirstMessage) {
  script_.begin = [](ITraceWriter& writer, std::string& message) {
    writer.WriteComment("calibration");
    message = "The clock was replaced.";
  };
  script_.steps = {{1, Verdict::Comment, "a"}};
  const Outcome outcome = convert(2.1);
  EXPECT_EQ(outcome.message, "The clock was replaced.");
  EXPECT_EQ(folder_.read("out.trc"), ";calibration\r\n;a\r\n");
}

TEST_F(ConversionWorkerTest, failsWithTheReasonWhyASourceCannotBeConverted) {
  script_.validate = [] { raiseFailure(FailureKind::Generic, "not finished by its logger"); };
  const Outcome outcome = convert(2.1);
  EXPECT_TRUE(outcome.started);
  EXPECT_TRUE(outcome.failed);
  EXPECT_EQ(outcome.message, "not finished by its logger");
  EXPECT_FALSE(folder_.has("out.trc"));
}

TEST_F(ConversionWorkerTest, failsWhenTheSourceCannotBeOpened) {
  script_.opens = false;
  const Outcome outcome = convert(2.1);
  EXPECT_TRUE(outcome.failed);
  EXPECT_EQ(outcome.message, "the source is locked");
}

TEST_F(ConversionWorkerTest, failsWhenReadingBreaksOff) {
  script_.steps = {{1, Verdict::Comment, "a"}};
  script_.failureAtEnd = "a bad block";
  const Outcome outcome = convert(2.1);
  EXPECT_TRUE(outcome.failed);
  EXPECT_EQ(outcome.message, "a bad block");
  EXPECT_EQ(folder_.read("out.trc"), ";a\r\n");
}

TEST_F(ConversionWorkerTest, endsAsFailedWithTheTextOfAnyException) {
  const struct {
    std::function<void(const Step&)> raise;
    const char* message;
  } cases[] = {
      {[](const Step&) { throw std::out_of_range("invalid vector subscript"); }, "invalid vector subscript"},
      {[](const Step&) { throw std::runtime_error(""); }, "Unknown exception"},
      {[](const Step&) { throw 42; }, "Unknown exception"},
  };
  for (const auto& test : cases) {
    script_.beforeWrite = test.raise;
    script_.steps = {{1, Verdict::Comment, "kept"}, {1, Verdict::Write, "raises"}, {1, Verdict::Comment, "never read"}};
    const Outcome outcome = convert(2.1);
    EXPECT_TRUE(outcome.failed) << test.message;
    EXPECT_EQ(outcome.message, test.message);
    EXPECT_EQ(outcome.percent, 50.0F) << test.message;
    EXPECT_EQ(folder_.read("out.trc"), ";kept\r\n") << test.message;
  }
}

TEST_F(ConversionWorkerTest, refusesATargetThatTheSourceDoesNotAllow) {
  for (const TraceFormat target : {XLATR_FORMAT_LIN, XLATR_FORMAT_BLF, XLATR_FORMAT_NONE}) {
    const Outcome outcome = convert(2.1, scripted(), formatOf(target));
    EXPECT_FALSE(outcome.started);
    EXPECT_TRUE(outcome.failed);
    EXPECT_EQ(outcome.message, "The specified conversion is invalid or not supported");
  }
}

TEST_F(ConversionWorkerTest, refusesAFormatThatNobodyReadsOrWrites) {
  const Outcome unread = convert(2.1, nullptr, formatOf(XLATR_FORMAT_TRC));
  EXPECT_FALSE(unread.started);
  EXPECT_TRUE(unread.failed);
  EXPECT_EQ(unread.message, "The specified converting object is invalid");
  constexpr FormatDescriptor kUnwritten{.format = XLATR_FORMAT_ASC};
  const Outcome unwritten = convert(2.1, scripted(), kUnwritten);
  EXPECT_FALSE(unwritten.started);
  EXPECT_EQ(unwritten.message, "The specified converting object is invalid");
}

TEST_F(ConversionWorkerTest, takesTheSourcesPathWhenThereIsNoOther) {
  EventGroup events;
  ConversionWorker worker({TraceFileInfo(source_), &formatOf(XLATR_FORMAT_TRC), "", 2.1, {}}, scripted(), events);
  worker.start();
  EXPECT_EQ(events.waitAny(), worker.failureEvent());
  EXPECT_EQ(worker.message(),
            "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath");
}

TEST_F(ConversionWorkerTest, endsAtTheNextMessageWhenItIsGivenUp) {
  script_.endless = true;
  EventGroup events;
  ConversionWorker worker({TraceFileInfo(source_), &formatOf(XLATR_FORMAT_TRC), folder_.file("out.trc"), 2.1, {}},
                          scripted(), events);
  EXPECT_TRUE(worker.start());
}

}  // namespace
}  // namespace xlatr
