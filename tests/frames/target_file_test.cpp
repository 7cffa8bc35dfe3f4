#include "frames/target_file.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "frames/frame_failure.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::size_t filesIn(const std::string& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

template <typename Action>
void expectFailure(FrameProblem problem, const std::string& text, Action action) {
  try {
    action();
    ADD_FAILURE() << "no failure: " << text;
  } catch (const FrameFailure& failure) {
    EXPECT_EQ(failure.problem(), problem) << failure.what();
    EXPECT_TRUE(std::string(failure.what()).starts_with(text)) << failure.what();
  }
}

class TargetFileTest : public testing::Test {
 protected:
  // A target with one frame in it.
  void begin(TargetFile& target) {
    target.create(StreamHead{});
    FrameBatch batch;
    batch.append(Frame{.id = 0x123});
    target.write(batch, account_);
  }
  void write(const std::string& path, bool replaces) {
    TargetFile target(path, {.replaces = replaces});
    begin(target);
    target.finish();
  }

  test::TempFolder folder_;
  const std::string path_ = folder_.file("drive.trc");
  Account account_;
};

TEST_F(TargetFileTest, hasItsNameOnlyWhenItIsWhole) {
  {
    TargetFile target(path_, {});
    EXPECT_FALSE(target.isOpen());
    begin(target);
    EXPECT_TRUE(target.isOpen());
    EXPECT_FALSE(fs::exists(path_));
    EXPECT_TRUE(fs::exists(folder_.file(".drive.trc.xlatr-part")));
    target.finish();
    EXPECT_FALSE(target.isOpen());
    EXPECT_TRUE(fs::exists(path_));
  }
  EXPECT_EQ(filesIn(folder_.path().string()), 1U);
  // The head names the file as the user does.
  EXPECT_NE(contentOf(path_).find(path_), std::string::npos);
  EXPECT_EQ(contentOf(path_).find("xlatr-part"), std::string::npos);
}

TEST_F(TargetFileTest, isRemovedUnlessItIsFinished) {
  {
    TargetFile target(path_, {});
    begin(target);
  }
  EXPECT_EQ(filesIn(folder_.path().string()), 0U);
}

TEST_F(TargetFileTest, leavesTheOldFileUntilTheNewOneIsWhole) {
  static_cast<void>(folder_.write("drive.trc", "old"));
  expectFailure(FrameProblem::TargetExists, path_ + ": the file exists", [&] { TargetFile(path_, {}); });
  {
    TargetFile target(path_, {.replaces = true});
    begin(target);
    EXPECT_EQ(contentOf(path_), "old");
  }
  EXPECT_EQ(contentOf(path_), "old");
  fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  write(path_, true);
  EXPECT_NE(contentOf(path_), "old");
  EXPECT_EQ(fs::status(path_).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  EXPECT_EQ(filesIn(folder_.path().string()), 1U);
}

// The place was free when the second one looked, and the first one has finished since.
TEST_F(TargetFileTest, doesNotReplaceWhatAnotherFinishedMeanwhile) {
  TargetFile second(path_, {});
  write(path_, false);
  const std::string first = contentOf(path_);
  expectFailure(FrameProblem::TargetExists, path_ + ": the file exists", [&] { begin(second); });
  EXPECT_EQ(contentOf(path_), first);
}

TEST_F(TargetFileTest, keepsAFragmentUnderANameThatSaysSo) {
  {
    TargetFile target(path_, {.keepsPartial = true});
    begin(target);
  }
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_NE(contentOf(folder_.file("drive.partial.trc")).find(" 123"), std::string::npos)
      << contentOf(folder_.file("drive.partial.trc"));
  EXPECT_EQ(filesIn(folder_.path().string()), 1U);
  {
    TargetFile target(path_, {.keepsPartial = true});
    begin(target);
    target.finish();
  }
  EXPECT_TRUE(fs::exists(path_));
  EXPECT_EQ(filesIn(folder_.path().string()), 2U);
}

// Nobody who waits for the other end of a pipe, and nothing behind a link.
TEST_F(TargetFileTest, writesBesideItsNameIntoAFileAlone) {
  const std::string victim = folder_.write("victim", "kept");
  fs::create_symlink(victim, folder_.file(".drive.trc.xlatr-part"));
  TargetFile target(path_, {});
  expectFailure(FrameProblem::TargetRefused, path_ + ": cannot create", [&] { begin(target); });
  EXPECT_EQ(contentOf(victim), "kept");
  fs::remove(folder_.file(".drive.trc.xlatr-part"));
  ASSERT_EQ(mkfifo(folder_.file(".drive.trc.xlatr-part").c_str(), 0600), 0);
  expectFailure(FrameProblem::TargetRefused, path_ + ": cannot create", [&] { begin(target); });
}

TEST_F(TargetFileTest, replacesTheFileBehindALink) {
  const std::string old = folder_.write("old.trc", "old");
  fs::create_symlink(old, path_);
  write(path_, true);
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_NE(contentOf(old), "old");
}

TEST_F(TargetFileTest, writesOverNoSource) {
  const std::string source = folder_.write("source.trc", "the source");
  fs::create_hard_link(source, path_);
  for (const bool replaces : {false, true}) {
    expectFailure(FrameProblem::TargetIsSource, path_ + ": the target is the source", [&] {
      TargetFile(path_, {.replaces = replaces, .sources = {folder_.file("other"), source}});
    });
  }
  EXPECT_EQ(contentOf(source), "the source");
}

// Both names are made here: the user has not named them.
TEST_F(TargetFileTest, writesOverNoFragmentThatIsItsSource) {
  const std::string fragment = folder_.write(".drive.trc.xlatr-part", "a fragment");
  {
    TargetFile target(path_, {.sources = {fragment}});
    expectFailure(FrameProblem::TargetIsSource, path_ + ": the target is the source", [&] { begin(target); });
  }
  EXPECT_EQ(contentOf(fragment), "a fragment");
  fs::remove(fragment);
  const std::string partial = folder_.write("drive.partial.trc", "a fragment");
  {
    TargetFile target(path_, {.keepsPartial = true, .sources = {partial}});
    begin(target);
  }
  EXPECT_EQ(contentOf(partial), "a fragment");
  EXPECT_EQ(filesIn(folder_.path().string()), 1U);
}

TEST_F(TargetFileTest, doesNotReplaceWhatComesWhileItIsWritten) {
  {
    TargetFile target(path_, {});
    begin(target);
    static_cast<void>(folder_.write("drive.trc", "kept"));
    expectFailure(FrameProblem::TargetExists, path_ + ": the file exists", [&] { target.finish(); });
  }
  EXPECT_EQ(contentOf(path_), "kept");
  EXPECT_EQ(filesIn(folder_.path().string()), 1U);
}

TEST_F(TargetFileTest, keepsALinkThatLeadsNowhere) {
  fs::create_symlink(folder_.file("elsewhere"), path_);
  expectFailure(FrameProblem::TargetExists, path_ + ": a link that leads nowhere has this name",
                [&] { TargetFile(path_, {}); });
  write(path_, true);
  EXPECT_FALSE(fs::is_symlink(path_));
  EXPECT_FALSE(folder_.has("elsewhere"));
}

TEST_F(TargetFileTest, writesToAPipeThatSomebodyReads) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  {
    TargetFile target(path_, {});
    expectFailure(FrameProblem::TargetRefused, path_ + ": cannot create, since nobody reads from this pipe",
                  [&] { begin(target); });
  }
  const int reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  write(path_, false);
  std::string text(100'000, '\0');
  text.resize(static_cast<std::size_t>(::read(reader, text.data(), text.size())));
  ::close(reader);
  EXPECT_NE(text.find(" 123 "), std::string::npos);
  EXPECT_TRUE(fs::is_fifo(path_));
}

TEST_F(TargetFileTest, writesOverWhatAKilledProcessLeft) {
  static_cast<void>(folder_.write(".drive.trc.xlatr-part", std::string(100'000, 'x')));
  write(path_, false);
  EXPECT_LT(fs::file_size(path_), 10'000U);
  EXPECT_EQ(filesIn(folder_.path().string()), 1U);
}

TEST_F(TargetFileTest, refusesATargetThatIsBeingWritten) {
  TargetFile first(path_, {});
  begin(first);
  TargetFile second(path_, {});
  expectFailure(FrameProblem::TargetRefused, path_ + ": another conversion", [&] { begin(second); });
  first.finish();
  EXPECT_TRUE(fs::exists(path_));
}

TEST_F(TargetFileTest, writesToADeviceAsItIs) {
  TargetFile target(std::string("/dev/null"), {.format = XLATR_FORMAT_TRC});
  target.create(StreamHead{});
  target.finish();
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_FALSE(fs::exists("/dev/.null.xlatr-part"));
}

TEST_F(TargetFileTest, tellsWhatTheSystemRefuses) {
  expectFailure(FrameProblem::TargetRefused, folder_.path().string() + ": this is a folder",
                [&] { TargetFile(folder_.path().string(), {.replaces = true}); });
  TargetFile nowhere(folder_.file("none/a.trc"), {});
  expectFailure(FrameProblem::TargetRefused, folder_.file("none/a.trc") + ": cannot create", [&] { begin(nowhere); });
  TargetFile full(std::string("/dev/full"), {.format = XLATR_FORMAT_TRC});
  expectFailure(FrameProblem::TargetRefused, "/dev/full: cannot write", [&] {
    full.create(StreamHead{});
    full.finish();
  });
  TargetFile unknown(folder_.file("a.xyz"), {});
  expectFailure(FrameProblem::NotWritten, folder_.file("a.xyz"), [&] { begin(unknown); });
  EXPECT_EQ(filesIn(folder_.path().string()), 0U);
}

TEST_F(TargetFileTest, hasRoomForTheLongestName) {
  const std::string name = std::string(251, 'n') + ".trc";
  write(folder_.file(name), false);
  EXPECT_TRUE(fs::exists(folder_.file(name)));
}

}  // namespace
}  // namespace xlatr
