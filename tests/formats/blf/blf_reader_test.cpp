#include "formats/blf/blf_reader.hpp"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/shared_memory.hpp"
#include "support/blf_stand_in.hpp"
#include "support/writer_stubs.hpp"

namespace xlatr {
namespace {

using std::chrono::milliseconds;
using test::failureOf;

// A stand-in notes what it was given, so that the test sees what becomes of it.
constexpr char kNoteArguments[] = R"(printf '%s' "$3" > "$(dirname "$0")/block"; echo $$ > "$(dirname "$0")/pid"; )";

class BlfReaderTest : public testing::Test {
 protected:
  BlfReaderTest() { std::filesystem::create_directory(temporary_); }

  void standIn(const std::string& conversion) const { test::writeStandIn(folder_, kNoteArguments + conversion); }
  [[nodiscard]] BlfReader reader(const std::string& content = test::kConverterTable) const {
    return {BlfInfo(TraceFileInfo(folder_.write("x.blf", content)), BlfConverter(folder_.path().string())), temporary_};
  }
  // Phase two to its end; returns the exit code.
  static std::int32_t waitForConverter(BlfReader& reader) {
    std::int32_t exitCode = 0;
    while (!reader.InitializePhaseTwoWaitBlfToCsv(exitCode)) {
      EXPECT_EQ(exitCode, -1);
    }
    return exitCode;
  }
  static void readAllPhases(BlfReader& reader) {
    ASSERT_TRUE(reader.setActive(true));
    reader.InitializePhaseThreePrepareCsvReader(waitForConverter(reader));
  }
  // Waits until the stand-in has noted what it was given, and returns it.
  [[nodiscard]] std::string noted(const char* name) const {
    while (folder_.read("pid").find('\n') == std::string::npos) {
      std::this_thread::yield();
    }
    return folder_.read(name);
  }
  [[nodiscard]] pid_t standInId() const { return std::stoi(noted("pid")); }
  // No temporary file, no shared name and no process.
  void expectNothingLeft() const {
    EXPECT_TRUE(std::filesystem::is_empty(temporary_));
    EXPECT_EQ(test::countSharedNames(noted("block")), 0U);
    EXPECT_EQ(::kill(standInId(), 0), -1) << "the converter is still there";
  }

  test::TempFolder folder_;
  const std::string temporary_ = folder_.file("temporary");
};

struct Seen {
  std::uint32_t objectType;
  bool valid;
  std::uint32_t bus;
};

TEST_F(BlfReaderTest, readsTheRowsOfTheTable) {
  standIn(R"(cp "$1" "$2")");
  BlfReader log = reader();
  EXPECT_FALSE(log.getActive());
  EXPECT_TRUE(log.setActive(true));
  EXPECT_FALSE(log.getActive()) << "not before phase three";
  EXPECT_EQ(log.getCSVInfoStartTime(), 0.0);
  EXPECT_EQ(waitForConverter(log), 0);
  log.InitializePhaseThreePrepareCsvReader(0);
  EXPECT_TRUE(log.getActive());
  EXPECT_EQ(log.getCSVInfoStartTime(), 44403.25);

  std::unique_ptr<BlfMessage> message;
  ASSERT_TRUE(log.ReadNextMessage(message));
  const auto* const frame = dynamic_cast<const BlfCanMessage*>(message.get());
  ASSERT_NE(frame, nullptr);
  EXPECT_TRUE(frame->valid);
  EXPECT_EQ(frame->id, 291U);
  EXPECT_EQ(frame->bus, 2U);
  EXPECT_EQ(frame->milliseconds(), RealMilliseconds(1.0));
  EXPECT_EQ(frame->data, (std::vector<std::uint8_t>{0xAA, 0xBB}));
  ASSERT_TRUE(log.ReadNextMessage(message));
  const auto* const linFrame = dynamic_cast<const BlfLinMessage*>(message.get());
  ASSERT_NE(linFrame, nullptr);
  EXPECT_EQ(linFrame->linDirection, DirectionType::Publisher);
  EXPECT_EQ(linFrame->checksum, 124U);
  EXPECT_EQ(linFrame->microseconds(), RealMicroseconds(2500.0));
  ASSERT_TRUE(log.ReadNextMessage(message));
  EXPECT_FALSE(message->valid);
  EXPECT_EQ(message->getAsCommentary(), "BLF Object Type 2 not-understood");
  EXPECT_FALSE(log.ReadNextMessage(message));
  EXPECT_EQ(message, nullptr);
  EXPECT_EQ(log.invalidCount(), 1U);
  EXPECT_EQ(log.failure(), "");
  log.setActive(false);
  EXPECT_EQ(log.getCSVInfoStartTime(), 44403.25) << "for the header of a target that is written afterwards";
  expectNothingLeft();
  EXPECT_TRUE(log.setActive(true));
  EXPECT_EQ(log.getCSVInfoStartTime(), 0.0) << "not before phase three";
}

// However the process ends that reads it.
TEST_F(BlfReaderTest, anOpenTableHasNoName) {
  standIn(R"(cp "$1" "$2")");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  const std::int32_t exitCode = waitForConverter(log);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(temporary_), {}), 1);
  log.InitializePhaseThreePrepareCsvReader(exitCode);
  EXPECT_TRUE(std::filesystem::is_empty(temporary_));
  std::unique_ptr<BlfMessage> message;
  int count = 0;
  while (log.ReadNextMessage(message)) {
    ++count;
  }
  EXPECT_EQ(count, 3);
}

TEST_F(BlfReaderTest, removesItsFileWhenItIsDestroyed) {
  standIn(R"(cp "$1" "$2")");
  {
    BlfReader log = reader();
    ASSERT_TRUE(log.setActive(true));
    EXPECT_EQ(waitForConverter(log), 0);
    EXPECT_FALSE(std::filesystem::is_empty(temporary_));
  }
  expectNothingLeft();
}

TEST_F(BlfReaderTest, startsAnewFromEveryPhase) {
  standIn(R"(cp "$1" "$2")");
  BlfReader log = reader();
  readAllPhases(log);
  std::unique_ptr<BlfMessage> message;
  ASSERT_TRUE(log.ReadNextMessage(message));
  readAllPhases(log);
  int count = 0;
  while (log.ReadNextMessage(message)) {
    ++count;
  }
  EXPECT_EQ(count, 3);
  log.setActive(true);
  EXPECT_FALSE(log.getActive());
  EXPECT_EQ(log.getPercentDone(), 0.0);
  waitForConverter(log);
  log.setActive(false);
  expectNothingLeft();
}

TEST_F(BlfReaderTest, returnsNothingWhileInactive) {
  BlfReader log = reader();
  std::unique_ptr<BlfMessage> message = std::make_unique<BlfLinMessage>();
  EXPECT_FALSE(log.ReadNextMessage(message));
  EXPECT_EQ(message, nullptr);
  EXPECT_FALSE(log.KillBlfToCsv());
  std::int32_t exitCode = 5;
  EXPECT_TRUE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  EXPECT_EQ(exitCode, -1);
  log.InitializePhaseThreePrepareCsvReader(0);
  EXPECT_FALSE(log.getActive());
  EXPECT_FALSE(log.setActive(false));
}

TEST_F(BlfReaderTest, halfOfTheProgressIsTheConverters) {
  standIn(R"(printf '\020\047\000\000' > /dev/shm/"$3"; cp "$1" "$2"; mkfifo "$2.gate"; read line < "$2.gate")");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  std::int32_t exitCode = 0;
  while (log.getPercentDone() == 0.0) {
    ASSERT_FALSE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  }
  EXPECT_DOUBLE_EQ(log.getPercentDone(), 50.0);
  for (bool opened = false; !opened;) {
    for (const auto& entry : std::filesystem::directory_iterator(temporary_)) {
      if (entry.path().extension() == ".gate") {
        std::ofstream(entry.path()) << "go\n";
        std::filesystem::remove(entry.path());
        opened = true;
        break;
      }
    }
  }
  log.InitializePhaseThreePrepareCsvReader(waitForConverter(log));
  std::unique_ptr<BlfMessage> message;
  ASSERT_TRUE(log.ReadNextMessage(message));
  EXPECT_DOUBLE_EQ(log.getPercentDone(), 50.0 + 50.0 / 3);
  ASSERT_TRUE(log.ReadNextMessage(message));
  ASSERT_TRUE(log.ReadNextMessage(message));
  EXPECT_DOUBLE_EQ(log.getPercentDone(), 100.0);
  log.setActive(false);
  expectNothingLeft();
}

TEST_F(BlfReaderTest, percentDoneIsNoNumberWithoutACountOfObjects) {
  test::writeStandIn(folder_, R"(cp "$1" "$2")", "-GetObjectsCount) echo -1 ;;\n");
  BlfReader log = reader();
  EXPECT_EQ(log.getTrace().objectsCount(), 0U);
  EXPECT_TRUE(std::isnan(log.getPercentDone()));
}

TEST_F(BlfReaderTest, anExitCodeOf5RefusesPhaseThree) {
  standIn("echo half > \"$2\"; exit 5");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  const std::int32_t exitCode = waitForConverter(log);
  EXPECT_EQ(exitCode, 5);
  EXPECT_EQ(failureOf([&] { log.InitializePhaseThreePrepareCsvReader(exitCode); }),
            "Error while converting BLF to temporary CSV 5");
  EXPECT_EQ(failureOf([&] { log.InitializePhaseThreePrepareCsvReader(-1); }),
            "Error while converting BLF to temporary CSV -1");
  EXPECT_FALSE(log.getActive());
  log.setActive(false);
  expectNothingLeft();
}

TEST_F(BlfReaderTest, aConverterThatIsKilledHasAnExitCode) {
  standIn("head -c 100 \"$1\" > \"$2\"; touch /dev/shm/\"$3\"; kill -9 $$");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  const std::int32_t exitCode = waitForConverter(log);
  EXPECT_EQ(exitCode, 128 + 9);
  EXPECT_EQ(failureOf([&] { log.InitializePhaseThreePrepareCsvReader(exitCode); }),
            "Error while converting BLF to temporary CSV 137");
  log.setActive(false);
  expectNothingLeft();
}

TEST_F(BlfReaderTest, aConverterKilledAtAnyMomentLeavesNothing) {
  standIn(R"(while :; do cat "$1" >> "$2"; done)");
  for (int round = 0; round < 10; ++round) {
    BlfReader log = reader();
    ASSERT_TRUE(log.setActive(true));
    std::filesystem::remove(folder_.file("pid"));
    std::int32_t exitCode = 0;
    while (!folder_.has("pid") && !log.InitializePhaseTwoWaitBlfToCsv(exitCode)) {
    }
    if (folder_.has("pid")) {
      std::this_thread::sleep_for(milliseconds(round));
      ::kill(standInId(), SIGKILL);
    }
    EXPECT_EQ(waitForConverter(log), 128 + 9);
    log.setActive(false);
    expectNothingLeft();
  }
}

TEST_F(BlfReaderTest, aConverterThatCantBeStartedIsAFailure) {
  const std::string expected = "Cannot launch BLF to CSV";
  BlfReader log = reader();
  EXPECT_EQ(failureOf([&] { log.setActive(true); }), expected);
  static_cast<void>(folder_.write("BLF2CSV.exe", "#!/bin/sh\n"));
  EXPECT_EQ(failureOf([&] { log.setActive(true); }), expected) << "not executable";
  EXPECT_FALSE(log.getActive());
  EXPECT_TRUE(std::filesystem::is_empty(temporary_));
}

TEST_F(BlfReaderTest, aFolderOf250CharactersIsRefused) {
  test::writeStandIn(folder_);
  BlfReader log(reader().getTrace(), std::string(250, 'd'));
  EXPECT_EQ(failureOf([&] { log.setActive(true); }), "Cannot get temporary file. Check path length.");
}

TEST_F(BlfReaderTest, theConverterGetsThreeArgumentsAsTheyAre) {
  standIn(R"(test $# = 3 && cp "$1" "$2")");
  const std::string path = folder_.write("a \"b\" $HOME 'c'.blf", test::kConverterTable);
  BlfReader log(BlfInfo(TraceFileInfo(path), BlfConverter(folder_.path().string())), temporary_);
  readAllPhases(log);
  std::unique_ptr<BlfMessage> message;
  EXPECT_TRUE(log.ReadNextMessage(message));
  EXPECT_EQ(noted("block").size(), 3U + 32U);
  EXPECT_TRUE(noted("block").starts_with("BLF"));
}

TEST_F(BlfReaderTest, asksAConverterToStop) {
  standIn(R"sh(
    until test "$(od -An -tu2 -j2 -N2 /dev/shm/"$3" 2> /dev/null)" -eq 1 2> /dev/null; do sleep 0.01; done
    exit 2)sh");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  std::int32_t exitCode = 0;
  EXPECT_FALSE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  EXPECT_TRUE(log.KillBlfToCsv());
  EXPECT_EQ(waitForConverter(log), 2);
  log.setActive(false);
  expectNothingLeft();
}

TEST_F(BlfReaderTest, aHangingConverterIsWaitedForInSmallSteps) {
  standIn("exec sleep 1000");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  const auto start = std::chrono::steady_clock::now();
  std::int32_t exitCode = 0;
  for (int poll = 0; poll < 5; ++poll) {
    EXPECT_FALSE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  }
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, milliseconds(50));
  EXPECT_LT(waited, std::chrono::seconds(20));
  ::kill(standInId(), SIGKILL);
  EXPECT_EQ(waitForConverter(log), 128 + 9);
  log.setActive(false);
  expectNothingLeft();
}

// As it is when the converter ends in the middle of an access.
TEST_F(BlfReaderTest, keepsTheOldProgressWhileTheLockIsNotToBeHad) {
  standIn(R"(printf '\020\047\000\000' > /dev/shm/"$3"; exec sleep 1000)");
  BlfReader log = reader();
  ASSERT_TRUE(log.setActive(true));
  std::int32_t exitCode = 0;
  while (log.getPercentDone() == 0.0) {
    ASSERT_FALSE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  }
  platform::NamedMutex lock;
  ASSERT_TRUE(lock.open(noted("block") + "_MUTEX"));
  ASSERT_TRUE(lock.lock(milliseconds(1000)));
  platform::SharedMemory memory;
  ASSERT_TRUE(memory.open(noted("block"), 4));
  memory.bytes()[1] = std::byte{0};

  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, milliseconds(4900));
  EXPECT_LT(waited, std::chrono::seconds(30));
  EXPECT_EQ(exitCode, -1);
  EXPECT_DOUBLE_EQ(log.getPercentDone(), 50.0);
  EXPECT_FALSE(log.KillBlfToCsv());
  EXPECT_EQ(memory.bytes()[2], std::byte{0}) << "it was not asked to stop";

  lock.unlock();
  EXPECT_FALSE(log.InitializePhaseTwoWaitBlfToCsv(exitCode));
  EXPECT_LT(log.getPercentDone(), 50.0);
  EXPECT_TRUE(log.KillBlfToCsv());
  ::kill(standInId(), SIGKILL);
  EXPECT_EQ(waitForConverter(log), 128 + 9);
  log.setActive(false);
  expectNothingLeft();
}

TEST_F(BlfReaderTest, aConverterRunsOnWithoutItsReader) {
  standIn("exec sleep 1000");
  std::string block;
  pid_t id = 0;
  {
    BlfReader log = reader();
    ASSERT_TRUE(log.setActive(true));
    block = noted("block");
    id = standInId();
    EXPECT_EQ(test::countSharedNames(block), 2U);
  }
  EXPECT_EQ(test::countSharedNames(block), 0U);
  EXPECT_EQ(::kill(id, 0), 0) << "it still runs";
  EXPECT_TRUE(std::filesystem::is_empty(temporary_));
  ::kill(id, SIGKILL);
  while (::kill(id, 0) == 0) {
    std::this_thread::yield();  // nobody need use the library for what was left running to be cleaned up
  }
  expectNothingLeft();
}

TEST_F(BlfReaderTest, severalConvertersRunOnWithoutTheirReaders) {
  standIn("exec sleep 1000");
  std::vector<pid_t> ids;
  for (int round = 0; round < 3; ++round) {
    std::filesystem::remove(folder_.file("pid"));
    BlfReader log = reader();
    ASSERT_TRUE(log.setActive(true));
    ids.push_back(standInId());
  }
  // Not in the order in which they were let go.
  for (const pid_t id : {ids[2], ids[0], ids[1]}) {
    ::kill(id, SIGKILL);
    while (::kill(id, 0) == 0) {
      std::this_thread::yield();
    }
  }
  expectNothingLeft();
}

TEST_F(BlfReaderTest, removesTheNamesThatAProcessLeftWhenItWasKilled) {
  const std::string name = "BLF" + std::string(32, 'A');
  platform::SharedMemory memory;
  platform::NamedMutex mutex;
  ASSERT_TRUE(memory.open(name, 4));
  ASSERT_TRUE(mutex.open(name + "_MUTEX"));
  memory.close();
  mutex.close();
  std::filesystem::last_write_time("/dev/shm/" + name,
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  standIn(R"(cp "$1" "$2")");
  BlfReader log = reader();
  EXPECT_EQ(test::countSharedNames(name), 2U);
  ASSERT_TRUE(log.setActive(true));
  EXPECT_EQ(test::countSharedNames(name), 0U);
}

TEST_F(BlfReaderTest, aTableThatComesTooLateIsRemovedAllTheSame) {
  ASSERT_EQ(::mkfifo(folder_.file("gate").c_str(), 0600), 0);
  standIn(R"(read line < "$(dirname "$0")/gate"; cp "$1" "$2"; : > /dev/shm/"$3"; : > /dev/shm/sem."$3"_MUTEX)");
  {
    BlfReader log = reader();
    ASSERT_TRUE(log.setActive(true));
  }
  const pid_t id = standInId();
  std::ofstream(folder_.file("gate")) << "go\n";
  while (::kill(id, 0) == 0) {
    std::this_thread::yield();
  }
  expectNothingLeft();
}

using BlfReaderDeathTest = BlfReaderTest;

TEST_F(BlfReaderDeathTest, theEndOfTheProcessEndsConvertersThatNobodyWaitsFor) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // Both processes come here, each with a folder of its own: the child's stand-in tells its id on standard error.
  standIn("exec sleep 1000");
  EXPECT_EXIT(
      {
        {
          BlfReader log = reader();
          log.setActive(true);
          std::cerr << "id " << standInId() << " end" << std::endl;
          std::ofstream("/tmp/xlatr_blf_reader_death_" + std::to_string(::getppid())) << standInId();
        }
        std::exit(0);
      },
      testing::ExitedWithCode(0), "id [0-9]+ end");
  const std::string note = "/tmp/xlatr_blf_reader_death_" + std::to_string(::getpid());
  pid_t id = 0;
  std::ifstream(note) >> id;
  std::filesystem::remove(note);
  ASSERT_GT(id, 0);
  EXPECT_EQ(::kill(id, 0), -1);
}

TEST_F(BlfReaderTest, takesGarbageForWhatItIs) {
  standIn("cp \"$1\" \"$2\"");
  std::string garbage;
  std::uint32_t state = 1;
  for (int byte = 0; byte < 100000; ++byte) {
    state = state * 1664525 + 1013904223;
    garbage += static_cast<char>(state >> 24);
  }
  for (const std::string& table : {std::string(), garbage, std::string(test::kConverterHead) + garbage,
                                   std::string(test::kConverterHead) + "1;1;x;2;1\n\n;;;;\n"}) {
    BlfReader log = reader(table);
    readAllPhases(log);
    std::unique_ptr<BlfMessage> message;
    while (log.ReadNextMessage(message)) {
      EXPECT_FALSE(message->valid);
    }
    EXPECT_TRUE(log.getActive());
  }
}

TEST_F(BlfReaderTest, aTableThatIsNotThereLeavesTheReaderInactive) {
  standIn("exit 0");
  BlfReader log = reader();
  readAllPhases(log);
  EXPECT_FALSE(log.getActive());
  EXPECT_NE(log.failure(), "");
}

// Reads the log a few times and returns whether all rows were there each time.
bool readOften(const std::function<BlfReader()>& makeReader) {
  bool complete = true;
  for (int round = 0; round < 3; ++round) {
    BlfReader log = makeReader();
    log.setActive(true);
    std::int32_t exitCode = 0;
    while (!log.InitializePhaseTwoWaitBlfToCsv(exitCode)) {
    }
    log.InitializePhaseThreePrepareCsvReader(exitCode);
    int count = 0;
    for (std::unique_ptr<BlfMessage> message; log.ReadNextMessage(message);) {
      ++count;
    }
    complete = complete && count == 3;
  }
  return complete;
}

bool readOnTenThreads(const std::function<BlfReader()>& makeReader) {
  std::atomic<int> complete = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 10; ++thread) {
    threads.emplace_back([&] { complete += readOften(makeReader) ? 1 : 0; });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return complete == 10;
}

TEST_F(BlfReaderTest, twoProcessesOfTenThreadsDoNotGetInEachOthersWay) {
  test::writeStandIn(folder_);
  const std::string path = folder_.write("x.blf", test::kConverterTable);
  const auto makeReader = [&] {
    return BlfReader(BlfInfo(TraceFileInfo(path), BlfConverter(folder_.path().string())), temporary_);
  };
  const pid_t child = ::fork();
  const bool complete = readOnTenThreads(makeReader);
  if (child == 0) {
    ::_exit(complete ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(complete);
  EXPECT_TRUE(std::filesystem::is_empty(temporary_));
}

}  // namespace
}  // namespace xlatr
