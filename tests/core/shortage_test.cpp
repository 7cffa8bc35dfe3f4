// What becomes of conversions when the system has no memory or no threads left. Every allocation of a conversion fails
// in its turn, so this is a program of its own.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "core/conversion_registry.hpp"
#include "core/conversion_worker.hpp"
#include "formats/blf/blf_reader.hpp"
#include "io/format.hpp"
#include "support/blf_stand_in.hpp"
#include "support/no_threads.hpp"
#include "support/temp_folder.hpp"

namespace {

constexpr long kAll = -1;

// How many allocations, of any thread, are given yet.
std::atomic<long> given = kAll;
// Whether those after the one that is not given fail too.
std::atomic<bool> lasting = false;

bool isRefused() {
  long left = given.load();
  while (left != kAll && !(left == 0 && lasting) && !given.compare_exchange_weak(left, left - 1)) {
  }
  return left == 0;
}

void* allocate(std::size_t size) {
  void* const memory = isRefused() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  return allocate(size);
}
void* operator new[](std::size_t size) {
  return allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

// The linker has the library call the second one instead of calloc, and gives that the name of the first.
extern "C" void* systemCalloc(std::size_t count, std::size_t size) __asm__("__real_calloc");
extern "C" void* refusingCalloc(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
void* refusingCalloc(std::size_t count, std::size_t size) {
  return isRefused() ? nullptr : systemCalloc(count, size);
}

namespace xlatr {
namespace {

// Refuses an allocation while it lives.
class Shortage {
 public:
  Shortage(long allocationsBefore, bool isLasting) {
    lasting = isLasting;
    given = allocationsBefore;
  }
  ~Shortage() { given = kAll; }
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;

  // Whether it came to that.
  [[nodiscard]] static bool wasFelt() { return lasting ? given == 0 : given == kAll; }
};

// What a caller of the C interface has and frees.
struct Result {
  Result() = default;
  ~Result() {
    std::free(record.text);
    for (std::uint32_t index = 0; index < record.file_count; ++index) {
      std::free(record.files[index]);
    }
    std::free(static_cast<void*>(record.files));
  }
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;

  [[nodiscard]] std::string_view text() const { return record.text == nullptr ? "(null)" : record.text; }

  ConversionResult record{};
};

ConversionOptions traceOptions(ConversionProgress* progress = nullptr) {
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  options.progress = progress;
  return options;
}

std::int32_t convert(const std::string& source, const std::string& target, Result& result,
                     const ConversionOptions& options = traceOptions()) {
  return ConversionRegistry::instance().convert(source.c_str(), target.c_str(), options, &result.record);
}

class ShortageTest : public testing::Test {
 protected:
  test::TempFolder folder_;
  const std::string source_ = folder_.write("source.trc",
                                            ";$FILEVERSION=1.1\n;$STARTTIME=44403.25\n"
                                            "1) 10.5 Rx 0123 1 AA\n"
                                            "a line that is none\n"
                                            "2) 11.5 Rx 0124 2 AA BB\n");
  const std::string target_ = folder_.file("target.trc");
};

TEST_F(ShortageTest, ofMemoryFailsAConversionAndNotItsProcess) {
  static_cast<void>(ConversionRegistry::instance());
  constexpr int kBeforeFirstText = 12;
  for (const bool isLasting : {false, true}) {
    bool felt = true;
    int mute = 0;
    int failures = 0;
    for (long before = 0; felt; ++before) {
      Result result;
      std::int32_t code = XLATR_UNEXPECTED;
      {
        const Shortage shortage(before, isLasting);
        code = convert(source_, target_, result);
        felt = Shortage::wasFelt();
      }
      SCOPED_TRACE(before);
      EXPECT_TRUE(result.record.finished == 1);
      EXPECT_EQ(result.record.status, code);
      if (code == XLATR_FAILED) {
        ++failures;
        EXPECT_NE(result.text(), "");
        mute += result.record.text == nullptr ? 1 : 0;
      } else {
        EXPECT_EQ(code, XLATR_SUCCESS);
        EXPECT_EQ(result.record.file_count, 1U);
      }
    }
    EXPECT_GT(failures, 20);
    // From the first text on there is one for every failure.
    EXPECT_LE(mute, isLasting ? kBeforeFirstText : 0);
  }
  Result result;
  EXPECT_EQ(convert(source_, target_, result), XLATR_SUCCESS);
}

// The first ones are those of the registry, whose making fails as it always did: by an exception.
TEST_F(ShortageTest, ofMemoryMayComeBeforeTheFirstConversion) {
  for (long before = 0; before < 12; ++before) {
    const pid_t child = ::fork();
    if (child == 0) {
      const Shortage shortage(before, true);
      try {
        Result result;
        static_cast<void>(convert(source_, target_, result));
      } catch (const std::bad_alloc&) {
      }
      std::exit(0);  // waits for the threads of the registry
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << before;
  }
}

TEST_F(ShortageTest, ofThreadsFailsAConversion) {
  static_cast<void>(ConversionRegistry::instance());
  for (const bool asynchronous : {false, true}) {
    Result result;
    ConversionProgress progress{};
    ConversionOptions options = traceOptions(&progress);
    options.asynchronous = asynchronous ? 1 : 0;
    {
      const test::NoThreads shortage;
      EXPECT_EQ(convert(source_, target_, result, options), XLATR_FAILED);
    }
    while (ConversionRegistry::instance().fillProgress(&progress) == XLATR_SUCCESS) {
      std::this_thread::yield();
    }
    EXPECT_TRUE(result.record.finished == 1);
    EXPECT_EQ(result.record.status, XLATR_FAILED);
    EXPECT_EQ(result.text(), "The system starts no thread for the conversion: Resource temporarily unavailable ");
    EXPECT_EQ(result.record.file_count, 0U);
    EXPECT_FALSE(folder_.has("target.trc"));
  }
  Result result;
  EXPECT_EQ(convert(source_, target_, result), XLATR_SUCCESS);
}

TEST_F(ShortageTest, ofThreadsFailsAWorker) {
  EventGroup events;
  const TraceFileInfo file(source_);
  auto sources = formatOf(file.getFormat()).makeSources(file, SessionSelection{});
  ConversionWorker worker(WorkOrder{file, &formatOf(XLATR_FORMAT_TRC), target_, 2.1, {}, false},
                          std::move(sources.front().source), events);
  const test::NoThreads shortage;
  EXPECT_FALSE(worker.start());
  EXPECT_EQ(events.waitAny(), worker.failureEvent());
  EXPECT_EQ(worker.message(), "The conversion thread is not joinable");
}

// Most workers are started by the thread that waits for their ends, where nothing could catch a failure.
TEST_F(ShortageTest, ofMemoryFailsAWorker) {
  EventGroup events;
  const TraceFileInfo file(source_);
  auto sources = formatOf(file.getFormat()).makeSources(file, SessionSelection{});
  ConversionWorker worker(WorkOrder{file, &formatOf(XLATR_FORMAT_TRC), target_, 2.1, {}, false},
                          std::move(sources.front().source), events);
  {
    const Shortage shortage(0, true);
    EXPECT_FALSE(worker.start());
  }
  EXPECT_EQ(events.waitAny(), worker.failureEvent());
  EXPECT_EQ(worker.message(), "Out of memory");
}

// The end of a reader whose converter still runs: it is handed over to a thread that can't be started.
TEST_F(ShortageTest, ofMemoryDoesNotKeepAReaderFromEnding) {
  test::writeStandIn(folder_, "echo $$ > \"$(dirname \"$0\")/pid\"; exec sleep 1000");
  const BlfInfo info(TraceFileInfo(folder_.write("log.blf", "")), BlfConverter(folder_.path().string()));
  auto reader = std::make_unique<BlfReader>(info, folder_.path().string());
  ASSERT_TRUE(reader->setActive(true));
  while (folder_.read("pid").find('\n') == std::string::npos) {
    std::this_thread::yield();
  }
  const pid_t converter = std::stoi(folder_.read("pid"));
  {
    const Shortage shortage(0, true);
    reader.reset();
  }
  EXPECT_EQ(::kill(converter, SIGKILL), 0) << "it runs on";
  while (::kill(converter, 0) == 0) {
    BlfReader(info, folder_.path().string());  // sees to what has no thread
  }
}

}  // namespace
}  // namespace xlatr
