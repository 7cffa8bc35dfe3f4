#include "frames/frame_job.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "frames/frame_failure.hpp"
#include "frames/trace_file.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kHeader =
    ";$FILEVERSION=2.1\r\n"
    ";$STARTTIME=43894.5\r\n"
    ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n";

JobReport run(const JobSettings& settings, const ReadProgressFunction& progress = {}) {
  JobReport report;
  runJob(settings, report, progress);
  return report;
}

class FrameJob : public testing::Test {
 protected:
  std::string writeTrc(const std::string& name, const std::string& lines) {
    return folder_.write(name, kHeader + lines);
  }

  Texts read(const std::string& path) {
    const auto source = openTrace(path);
    head_ = source->head();
    Account account;
    return test::textsOf(*source, account);
  }

  // The problem of a job, and what its failure says.
  void expectFailure(const JobSettings& settings, FrameProblem problem, const std::string& text) {
    try {
      static_cast<void>(run(settings));
      ADD_FAILURE() << "no failure: " << text;
    } catch (const FrameFailure& failure) {
      EXPECT_EQ(failure.problem(), problem) << failure.what();
      EXPECT_NE(std::string(failure.what()).find(text), std::string::npos) << failure.what();
    }
  }

  test::TempFolder folder_;
  StreamHead head_;
};

TEST_F(FrameJob, writesWhatItReads) {
  const std::string source = writeTrc("a.trc",
                                      "1 1.5 DT 1 0123 Rx - 2 01 02\r\n"
                                      "2 2.5 FB 2 0124 Tx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C\r\n"
                                      "; lunch\r\n"
                                      "3 3.5 EV 1 an event\r\n");
  const JobReport report =
      run({.sources = {{source}}, .target = folder_.file("b.trc"), .writing = {.sink = {.version = 1.2}}});
  EXPECT_EQ(report.account.read(), 4U);
  EXPECT_EQ(report.account.written(), 4U);
  EXPECT_EQ(report.account.commented(), 2U);
  EXPECT_EQ(report.account.commented(Remark::FdNotHeld), (Account::Count{1, 5}));
  EXPECT_EQ(report.account.commented(Remark::KindNotHeld), (Account::Count{1, 7}));
  EXPECT_EQ(report.progress.bytesRead, std::filesystem::file_size(source));
  EXPECT_EQ(read(folder_.file("b.trc")), read(source));
  EXPECT_EQ(head_.start, (TraceStart{.sinceEpochNs = 1'583'323'200'000'000'000}));
}

TEST_F(FrameJob, selects) {
  const std::string source = writeTrc("a.trc",
                                      "1 1.0 DT 1 0001 Rx - 0\r\n"
                                      "2 2.0 DT 2 0002 Tx - 0\r\n"
                                      "3 3.0 DT 3 00000002 Rx - 0\r\n"
                                      "4 4.0 RR 1 0003 Rx - 0\r\n"
                                      "; comment\r\n");
  struct Case {
    FrameSelection selection;
    Texts ids;
  };
  FrameSelection byMask;
  byMask.identifiers = {{.first = 1, .mask = 1U}};
  const std::vector<Case> cases = {
      {{}, {"1", "2", "2", "3", "0"}},
      {{.fromNs = 2'000'000, .untilNs = 3'000'000}, {"2"}},
      {{.buses = {{2, 3}}}, {"2", "2"}},
      {{.buses = {{2, 3}}, .otherBuses = true}, {"1", "3", "0"}},
      {{.identifiers = {{.first = 2, .last = 3}}}, {"2", "2", "3"}},
      {{.identifiers = {{.first = 2, .last = 2, .extended = true}}}, {"2"}},
      {{.identifiers = {{.first = 2, .last = 2}}, .otherIdentifiers = true}, {"1", "3", "0"}},
      {byMask, {"1", "3"}},
      {{.kinds = kindBit(FrameKind::Remote)}, {"3"}},
      {{.directions = frame_flag::kTransmitted}, {"2"}},
      {{.fromNs = 2'000'000, .buses = {{1, 2}}, .kinds = kindBit(FrameKind::Data)}, {"2"}},
  };
  for (const Case& test : cases) {
    const JobReport report = run({.sources = {{source}},
                                  .target = folder_.file("b.trc"),
                                  .writing = {.replaces = true},
                                  .selection = test.selection});
    const auto target = openTrace(folder_.file("b.trc"));
    Texts ids;
    FrameBatch batch;
    Account account;
    while (target->read(batch, account)) {
      for (const std::uint32_t id : batch.ids()) {
        ids.push_back(std::to_string(id));
      }
      batch.clear();
    }
    EXPECT_EQ(ids, test.ids);
    EXPECT_EQ(report.account.dropped(), 5 - ids.size());
    EXPECT_EQ(report.account.dropped(Remark::NotSelected).frames, 5 - ids.size());
    EXPECT_EQ(report.account.read(), report.account.written() + report.account.dropped());
    EXPECT_TRUE(report.account.complete());
  }
}

TEST_F(FrameJob, changesTimesAndBuses) {
  const std::string source = writeTrc("a.trc", "1 10.0 DT 1 0001 Rx - 0\r\n2 12.0 DT 2 0002 Rx - 0\r\n");
  static_cast<void>(run({.sources = {{source}},
                         .target = folder_.file("b.trc"),
                         .changes = {.shiftNs = 1'000'000, .rebase = true, .buses = {{1, 7}, {7, 1}}}}));
  EXPECT_EQ(read(folder_.file("b.trc")), (Texts{"1000000 data 7 1 Rx", "3000000 data 2 2 Rx"}));
  EXPECT_EQ(head_.start, (TraceStart{.sinceEpochNs = 1'583'323'200'010'000'000}));
}

TEST_F(FrameJob, rebasesToTheFirstWantedFrame) {
  const std::string source = writeTrc("a.trc", "1 10.0 DT 1 0001 Rx - 0\r\n2 12.0 DT 2 0002 Rx - 0\r\n");
  static_cast<void>(run({.sources = {{source}},
                         .target = folder_.file("b.trc"),
                         .selection = {.buses = {{2, 2}}},
                         .changes = {.rebase = true}}));
  EXPECT_EQ(read(folder_.file("b.trc")), (Texts{"0 data 2 2 Rx"}));
  EXPECT_EQ(head_.start, (TraceStart{.sinceEpochNs = 1'583'323'200'012'000'000}));
}

TEST_F(FrameJob, mergesByTime) {
  const std::string first = writeTrc("a.trc", "1 1.0 DT 1 0001 Rx - 0\r\n2 5.0 DT 1 0002 Rx - 0\r\n");
  const std::string later = folder_.write("b.trc",
                                          ";$FILEVERSION=2.1\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
                                          ";   Start time: 04.03.2020 12:00:00.002.000\r\n"
                                          "1 0.5 DT 2 0003 Rx - 0\r\n2 3.0 DT 2 0004 Rx - 0\r\n");
  const JobReport report = run({.sources = {{later}, {first}}, .target = folder_.file("c.trc")});
  EXPECT_EQ(read(folder_.file("c.trc")),
            (Texts{"1000000 data 1 1 Rx", "2500000 data 2 3 Rx", "5000000 data 2 4 Rx", "5000000 data 1 2 Rx"}));
  EXPECT_EQ(head_.start, (TraceStart{.sinceEpochNs = 1'583'323'200'000'000'000}));
  EXPECT_EQ(report.account.read(), 4U);
}

// Recordings of one another after the other, and a third one that states an hour later.
TEST_F(FrameJob, mergesAsIfStartedTogetherOrWithoutGaps) {
  const auto recording = [this](const std::string& name, const std::string& start, const std::string& lines) {
    return folder_.write(name, ";$FILEVERSION=2.1\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n;   Start time: 04.03.2020 " +
                                   start + ".000.000\r\n" + lines);
  };
  const std::string first = recording("a.trc", "12:00:00", "1 1.0 DT 1 0001 Rx - 0\r\n2 9.0 DT 1 0002 Rx - 0\r\n");
  const std::string within = recording("b.trc", "12:00:00", "1 5.0 DT 2 0003 Rx - 0\r\n");
  const std::string later = recording("c.trc", "13:00:00", "1 2.0 DT 3 0004 Rx - 0\r\n2 4.0 DT 3 0005 Rx - 0\r\n");
  JobSettings settings{.sources = {{later}, {first}, {within}},
                       .target = folder_.file("t.trc"),
                       .writing = {.replaces = true},
                       .merging = {.alignsStarts = true}};
  static_cast<void>(run(settings));
  EXPECT_EQ(read(folder_.file("t.trc")), (Texts{"1000000 data 1 1 Rx", "2000000 data 3 4 Rx", "4000000 data 3 5 Rx",
                                                "5000000 data 2 3 Rx", "9000000 data 1 2 Rx"}));
  settings.merging = {.closesGaps = true};
  static_cast<void>(run(settings));
  EXPECT_EQ(read(folder_.file("t.trc")), (Texts{"1000000 data 1 1 Rx", "5000000 data 2 3 Rx", "9000000 data 1 2 Rx",
                                                "9000000 data 3 4 Rx", "11000000 data 3 5 Rx"}));
}

TEST_F(FrameJob, selectsByTheClockOfTheTrace) {
  const std::string source = writeTrc("a.trc", "1 1.0 DT 1 0001 Rx - 0\r\n2 2.0 DT 1 0002 Rx - 0\r\n");
  constexpr std::int64_t kStart = 1'583'323'200'000'000'000;
  JobSettings settings{.sources = {{source}},
                       .target = folder_.file("b.trc"),
                       .selection = {.fromNs = kStart + 1'500'000, .untilNs = kStart + 9'000'000, .absolute = true}};
  static_cast<void>(run(settings));
  EXPECT_EQ(read(folder_.file("b.trc")), (Texts{"2000000 data 1 2 Rx"}));
  settings.sources = {{folder_.write("c.trc", ";$FILEVERSION=2.1\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n")}};
  settings.writing.replaces = true;
  expectFailure(settings, FrameProblem::BadArgument, "c.trc: the trace does not say when it started");
}

TEST_F(FrameJob, canBeCancelledAndLeavesNoTarget) {
  const std::string source = writeTrc("a.trc", "1 1.0 DT 1 0001 Rx - 0\r\n");
  const std::string target = folder_.file("b.trc");
  EXPECT_THROW(static_cast<void>(run({.sources = {{source}}, .target = target},
                                     [](const ReadProgress& progress) { return progress.framesRead == 0; })),
               FrameFailure);
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(FrameJob, refusesWhatItCantDo) {
  const std::string source = writeTrc("a.trc", "1 1.0 DT 1 0001 Rx - 0\r\n");
  const std::string existing = folder_.write("there.trc", "kept");
  const std::string link = folder_.file("link.trc");
  std::filesystem::create_hard_link(source, link);
  expectFailure({.target = folder_.file("b.trc")}, FrameProblem::BadArgument, "no source");
  expectFailure({.sources = {{source}}}, FrameProblem::BadArgument, "no target");
  expectFailure({.sources = {{folder_.file("missing.trc")}}, .target = folder_.file("b.trc")}, FrameProblem::NotFound,
                "missing.trc: there is no such file");
  expectFailure({.sources = {{source}}, .target = existing}, FrameProblem::TargetExists, "there.trc: the file exists");
  expectFailure({.sources = {{source}}, .target = link, .writing = {.replaces = true}}, FrameProblem::TargetIsSource,
                "link.trc: the target is the source");
  expectFailure({.sources = {{source}}, .target = folder_.file("b.xyz")}, FrameProblem::NotWritten,
                "the extension names no format");
  expectFailure({.sources = {{source}}, .target = folder_.file("b.trc"), .writing = {.sink = {.version = 9.0}}},
                FrameProblem::NotWritten, "there is no version 9.0 of .trc; there are 1.0, 1.1");
  expectFailure({.sources = {{folder_.write("archive.trc", "PK\x03\x04 and more")}}, .target = folder_.file("b.trc")},
                FrameProblem::NotATrace, "a zip archive");
  expectFailure({.sources = {{folder_.write("letter.txt", "hello\n")}}, .target = folder_.file("b.trc")},
                FrameProblem::NotATrace, "a text of another kind");
  expectFailure({.sources = {{folder_.write("nothing.txt", "")}}, .target = folder_.file("b.trc")},
                FrameProblem::NotATrace, "the file is empty");
  expectFailure({.sources = {{source, XLATR_FORMAT_TRC | XLATR_FORMAT_ASC}}, .target = folder_.file("b.trc")},
                FrameProblem::BadArgument, "no such format");
  EXPECT_TRUE(std::filesystem::exists(source));
  EXPECT_FALSE(std::filesystem::exists(folder_.file("b.trc")));
  EXPECT_EQ(std::filesystem::file_size(existing), 4U);
}

// Only the system has limits here, and it is the one to tell them.
TEST_F(FrameJob, takesLongPaths) {
  const std::string source = writeTrc("a.trc", "1 1.0 DT 1 0001 Rx - 0\r\n");
  std::string folder = folder_.path().string();
  for (int depth = 0; depth < 3; ++depth) {
    folder += "/" + std::string(150, 'd');
    std::filesystem::create_directory(folder);
  }
  EXPECT_EQ(run({.sources = {{source}}, .target = folder + "/b.trc"}).account.written(), 1U);
  EXPECT_EQ(read(folder + "/b.trc").size(), 1U);
  const std::string tooLong = folder_.file(std::string(300, 'n') + ".trc");
  expectFailure({.sources = {{source}}, .target = tooLong}, FrameProblem::TargetRefused, tooLong + ": cannot create: ");
}

TEST_F(FrameJob, writesNoPartOverASource) {
  const std::string first = writeTrc("a.trc", "1 1.0 DT 1 0001 Rx - 0\r\n");
  const std::string second = writeTrc("b.trc", "1 1.0 DT 2 0001 Rx - 0\r\n");
  std::filesystem::create_hard_link(second, folder_.file("c_BUS2.trc"));
  const std::string before = folder_.read("b.trc");
  expectFailure({.sources = {{first}, {second}},
                 .target = folder_.file("c.trc"),
                 .writing = {.replaces = true},
                 .split = {.buses = true}},
                FrameProblem::TargetIsSource, "c_BUS2.trc: the target is the source");
  EXPECT_EQ(folder_.read("b.trc"), before);
}

TEST_F(FrameJob, tellsFormatsByContent) {
  const std::string misnamed = writeTrc("a.asc", "1 1.0 DT 1 0001 Rx - 0\r\n");
  EXPECT_EQ(formatOfTrace(misnamed).format, XLATR_FORMAT_TRC);
  EXPECT_EQ(formatOfTrace(folder_.write("b.trc", ";$FILEVERSION=1.1\n;  Checksum Type description :\n")).format,
            XLATR_FORMAT_LIN);
  EXPECT_EQ(formatOfTrace(folder_.write("c.trc", "")).format, XLATR_FORMAT_TRC);
}

// Two formats have this head. Their frames tell them apart, and where there are none the name does.
TEST_F(FrameJob, tellsFormatsWithTheSameHeadByTheirFrames) {
  const std::string head = ";$FILEVERSION=1.1\n;$STARTTIME=44403.25\n";
  const std::string lin = "1) 1000 Pub 2A 2 01 02 7C CL\n";
  const std::string can = "     1)        10.0  Rx         0123  2  0A B0\n";
  for (const char* const name : {"a.trc", "a.ltrc", "a"}) {
    // More than is looked at, which then ends within a line.
    for (const int lines : {1, 1000}) {
      std::string lins = head;
      std::string cans = head;
      for (int line = 0; line < lines; ++line) {
        lins += lin;
        cans += can;
      }
      EXPECT_EQ(formatOfTrace(folder_.write(name, lins)).format, XLATR_FORMAT_LIN) << name << ", " << lines;
      EXPECT_EQ(formatOfTrace(folder_.write(name, cans)).format, XLATR_FORMAT_TRC) << name << ", " << lines;
    }
  }
  EXPECT_EQ(formatOfTrace(folder_.write("a.trc", head)).format, XLATR_FORMAT_TRC);
  EXPECT_EQ(formatOfTrace(folder_.write("a.ltrc", head)).format, XLATR_FORMAT_LIN);
}

}  // namespace
}  // namespace xlatr
