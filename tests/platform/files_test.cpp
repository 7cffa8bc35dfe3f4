#include "platform/files.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <ios>
#include <string>
#include <string_view>

#include "support/file_size_limit.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::platform {
namespace {

namespace fs = std::filesystem;

// The text of a failure after the path; empty if there is none.
template <typename Action>
std::string failureOf(const std::string& path, Action action) {
  try {
    action();
  } catch (const std::ios_base::failure& failure) {
    const std::string text = failure.what();
    EXPECT_TRUE(text.starts_with(path + ": ")) << text;
    return text.substr(std::min(text.size(), path.size() + 2));
  }
  return {};
}

std::string failureToCreate(const std::string& path, Creation creation, Pipes pipes = Pipes::Refuse) {
  return failureOf(path, [&] { static_cast<void>(File::createForWriting(path, creation, pipes)); });
}

class FilesTest : public testing::Test {
 protected:
  std::string makePipe(const char* name) {
    const std::string path = folder_.file(name);
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    return path;
  }
  std::string makeSocket(const char* name) {
    const std::string path = folder_.file(name);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(::bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(made);
    return path;
  }

  test::TempFolder folder_;
  const std::string file_ = folder_.write("file", "content");
};

TEST_F(FilesTest, tellsWhatStandsAtAPath) {
  fs::create_directory(folder_.file("folder"));
  fs::create_symlink(file_, folder_.file("link"));
  fs::create_symlink(folder_.file("none"), folder_.file("broken"));
  fs::create_symlink(folder_.file("broken"), folder_.file("as broken"));
  fs::create_symlink(folder_.file("loop"), folder_.file("loop"));
  fs::create_symlink(makePipe("pipe"), folder_.file("link to pipe"));
  struct Case {
    std::string path;
    PathKind kind;
    bool exists;
  };
  for (const auto& [path, kind, exists] : {
           Case{file_, PathKind::File, true},
           Case{folder_.file("link"), PathKind::File, true},
           Case{folder_.file("none"), PathKind::Nothing, false},
           Case{folder_.file("file/under"), PathKind::Nothing, false},
           Case{"", PathKind::Nothing, false},
           Case{folder_.file("folder"), PathKind::Folder, false},
           Case{folder_.file("broken"), PathKind::BrokenLink, false},
           Case{folder_.file("as broken"), PathKind::BrokenLink, false},
           Case{folder_.file("loop"), PathKind::BrokenLink, false},
           Case{folder_.file("pipe"), PathKind::Pipe, true},
           Case{folder_.file("link to pipe"), PathKind::Pipe, true},
           Case{makeSocket("socket"), PathKind::Pipe, true},
           Case{"/dev/null", PathKind::Device, true},
       }) {
    EXPECT_EQ(kindOfPath(path), kind) << path;
    EXPECT_EQ(fileExists(path), exists) << path;
  }
}

TEST_F(FilesTest, knowsAFileByAnyName) {
  fs::create_directory(folder_.file("folder"));
  fs::create_symlink(file_, folder_.file("link"));
  fs::create_hard_link(file_, folder_.file("second name"));
  fs::create_directory_symlink(folder_.path(), folder_.file("folder/up"));
  for (const std::string& name : {file_, folder_.file("./file"), folder_.file("folder/../file"), folder_.file("link"),
                                  folder_.file("second name"), folder_.file("folder/up/link")}) {
    EXPECT_TRUE(isSameFile(file_, name)) << name;
    EXPECT_TRUE(isSameFile(name, file_)) << name;
  }
  const std::string twin = folder_.write("twin", "content");
  for (const std::string& name :
       {twin, folder_.file("none"), std::string(), std::string("/dev/null"), folder_.path().string()}) {
    EXPECT_FALSE(isSameFile(file_, name)) << name;
    EXPECT_FALSE(isSameFile(name, file_)) << name;
  }
  EXPECT_FALSE(isSameFile(folder_.file("none"), folder_.file("none")));
  EXPECT_FALSE(isSameFile("/dev/null", "/dev/null"));
}

TEST_F(FilesTest, createsWhereNothingIs) {
  File::createForWriting(folder_.file("new"), Creation::New).write(std::string_view("new"));
  EXPECT_EQ(folder_.read("new"), "new");
  EXPECT_EQ(failureToCreate(file_, Creation::New), "cannot create: File exists");
  EXPECT_EQ(folder_.read("file"), "content");
  fs::create_symlink(folder_.file("victim"), folder_.file("broken"));
  EXPECT_EQ(failureToCreate(folder_.file("broken"), Creation::New), "cannot create: File exists");
  EXPECT_FALSE(folder_.has("victim"));
  for (const Creation creation : {Creation::New, Creation::Replace}) {
    EXPECT_EQ(failureToCreate(folder_.path().string(), creation), "cannot create: Is a directory");
    EXPECT_EQ(failureToCreate(folder_.file("none/new"), creation), "cannot create: No such file or directory");
  }
}

TEST_F(FilesTest, replacesTheContent) {
  File::createForWriting(file_).write(std::string_view("new"));
  EXPECT_EQ(folder_.read("file"), "new");
  File::createForWriting(folder_.file("second")).close();
  EXPECT_EQ(folder_.read("second"), "");
}

TEST_F(FilesTest, aFileHasOneWriterAtATime) {
  const std::string busy = "cannot create while another conversion is writing it: Device or resource busy";
  fs::create_hard_link(file_, folder_.file("second name"));
  File first = File::createForWriting(file_);
  first.write(std::string_view("first"));
  EXPECT_EQ(failureToCreate(file_, Creation::Replace), busy);
  EXPECT_EQ(failureToCreate(folder_.file("second name"), Creation::Replace), busy);
  EXPECT_FALSE(File::lockForWriting(file_).isOpen());
  EXPECT_EQ(folder_.read("file"), "first");
  first.close();
  EXPECT_EQ(failureToCreate(file_, Creation::Replace), "");
  EXPECT_EQ(folder_.read("file"), "");
}

TEST_F(FilesTest, aReservedFileIsForWhoeverHasReservedIt) {
  const File lock = File::lockForWriting(file_);
  ASSERT_TRUE(lock.isOpen());
  EXPECT_NE(failureToCreate(file_, Creation::Replace), "");
  EXPECT_EQ(folder_.read("file"), "content");
  EXPECT_EQ(failureToCreate(file_, Creation::Reserved), "");
  EXPECT_EQ(folder_.read("file"), "");
}

// A child has all files of its parent open, for as long as it lives.
TEST_F(FilesTest, aForkedProcessDoesNotKeepAFileBusy) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
  File file = File::createForWriting(file_);
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(ends[1]);
    char byte = 0;
    ::_exit(::read(ends[0], &byte, 1) == 0 ? 0 : 1);  // until the parent has seen enough
  }
  file.close();
  EXPECT_EQ(failureToCreate(file_, Creation::Replace), "");
  ::close(ends[0]);
  ::close(ends[1]);
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST_F(FilesTest, neverWaitsForTheReaderOfAPipe) {
  const std::string pipe = makePipe("pipe");
  const std::string refused = "cannot create, since this is a pipe; name a file: Operation not supported";
  EXPECT_EQ(failureToCreate(pipe, Creation::Replace), refused);
  EXPECT_EQ(failureToCreate(makeSocket("socket"), Creation::Replace), refused);
  EXPECT_EQ(failureToCreate(pipe, Creation::Replace, Pipes::Take),
            "cannot create, since nobody reads from this pipe: No such device or address");
}

TEST_F(FilesTest, writesToAPipeThatSomebodyReads) {
  const std::string pipe = makePipe("pipe");
  const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  File file = File::createForWriting(pipe, Creation::Replace, Pipes::Take);
  file.write(std::string_view("text"));
  std::array<char, 8> bytes{};
  EXPECT_EQ(::read(reader, bytes.data(), bytes.size()), 4);
  EXPECT_STREQ(bytes.data(), "text");
  ::close(reader);
  // The signal for this ends a process that does not expect it.
  EXPECT_EQ(failureOf(pipe, [&] { file.write(std::string_view("more")); }), "cannot write: Broken pipe");
}

TEST_F(FilesTest, aTemporaryFileKeepsWhatItIsGiven) {
  File file = File::createTemporary();
  ASSERT_TRUE(file.isOpen());
  file.write(std::string_view("kept aside"));
  file.seek(5);
  std::array<char, 8> bytes{};
  EXPECT_EQ(file.read(bytes), 5U);
  EXPECT_STREQ(bytes.data(), "aside");
}

TEST_F(FilesTest, writesToADeviceAsItIs) {
  EXPECT_EQ(failureToCreate("/dev/null", Creation::Replace), "");
  File full = File::createForWriting("/dev/full");
  EXPECT_EQ(failureOf("/dev/full", [&] { full.write(std::string_view("text")); }),
            "cannot write: No space left on device");
}

bool isPending(int signal) {
  sigset_t pending{};
  ::sigpending(&pending);
  return ::sigismember(&pending, signal) == 1;
}

bool isBlocked(int signal) {
  sigset_t blocked{};
  ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return ::sigismember(&blocked, signal) == 1;
}

// The signal for it would end the process here, too: nothing handles it.
TEST_F(FilesTest, aLimitOfTheSizeIsAFailureLikeAnyOther) {
  File file = File::createForWriting(file_);
  {
    const test::FileSizeLimit limit(6);
    EXPECT_EQ(failureOf(file_, [&] { file.write(std::string_view("ten bytes.")); }), "cannot write: File too large");
    EXPECT_EQ(failureOf(file_, [&] { file.write(std::string_view("more")); }), "cannot write: File too large");
  }
  EXPECT_EQ(folder_.read("file"), "ten by");
  for (const int signal : {SIGXFSZ, SIGPIPE}) {
    EXPECT_FALSE(isBlocked(signal));
    EXPECT_FALSE(isPending(signal));
  }
  file.write(std::string_view("tes."));
  file.close();
  EXPECT_EQ(folder_.read("file"), "ten bytes.");
}

}  // namespace
}  // namespace xlatr::platform
