#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "conversions/conversion_support.hpp"
#include "support/blf_builder.hpp"
#include "support/recordings.hpp"
#include "tracegen/generator.hpp"
#include "xlatr/objects.h"

// BLF logs read by the exported functions, with the converter that lies beside the library. The recorded ones lie
// outside the tree; lists beside them say what they hold.
namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

using test::blf::classicFrame;
using test::blf::file;
using test::blf::zipped;

// A reader of a log, with its temporary file in the current directory's folder "tmp".
class Log {
 public:
  explicit Log(const std::string& path)
      : file_(TraceFileInfo_Construct(path.c_str())),
        info_(BlfInfo_Construct(file_)),
        reader_(BlfReader_Construct(info_, "tmp")) {}
  ~Log() {
    BlfReader_Destruct(reader_);
    BlfInfo_Destruct(info_);
    TraceFileInfo_Destruct(file_);
  }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

  [[nodiscard]] BlfInfo* info() const { return info_; }
  [[nodiscard]] BlfReader* reader() const { return reader_; }

  // Waits for the converter and calls `onWait` again and again meanwhile.
  std::int32_t wait(const std::function<void()>& onWait = [] {}) const {
    std::int32_t exitCode = 0;
    while (!BlfReader_InitializePhaseTwoWaitBlfToCsv(reader_, &exitCode)) {
      onWait();
    }
    return exitCode;
  }

  // The rows of the table that is made of the log.
  std::string toRows(const std::string& table) const {
    BlfReader_setActive(reader_, true);
    BlfReader_InitializePhaseThreePrepareCsvReader(reader_, wait());
    CsvWriter* const writer = CsvWriter_Construct(table.c_str(), true, 1.0);
    CsvWriter_setActive(writer, true);
    for (BlfMessage* message = nullptr; BlfReader_ReadNextMessage(reader_, &message);) {
      CsvWriter_WriteMessage(writer, reinterpret_cast<const IMessage*>(message));
      BlfMessage_Destruct(message);
    }
    CsvWriter_Destruct(writer);
    return readFile(table);
  }

 private:
  TraceFileInfo* file_;
  BlfInfo* info_;
  BlfReader* reader_;
};

class BlfReaders : public testing::Test {
 protected:
  BlfReaders() { fs::create_directory("tmp"); }
  ~BlfReaders() override { EXPECT_TRUE(fs::is_empty("tmp")); }

 private:
  WorkingDirectory folder_;
};

std::string manyFrames(std::uint32_t count) {
  std::string content;
  for (std::uint32_t index = 0; index < count; ++index) {
    content += classicFrame({.channel = 2, .id = index % 0x700, .dlc = 8, .timestamp = index * 1'000'000ULL});
  }
  return content;
}

TEST_F(BlfReaders, workInThreePhases) {
  writeFile("a.blf", file({.objects = 100}, zipped(manyFrames(100))));
  const Log log("a.blf");
  EXPECT_EQ(BlfInfo_GetVersion(log.info()), 4.0701);
  BlfReader_setActive(log.reader(), true);
  EXPECT_EQ(log.wait(), 0);
  BlfMessage* none = nullptr;
  EXPECT_FALSE(BlfReader_ReadNextMessage(log.reader(), &none));
  EXPECT_EQ(BlfReader_getCSVInfoStartTime(log.reader()), 0.0);
  BlfReader_InitializePhaseThreePrepareCsvReader(log.reader(), 0);
  // 2024-12-31 23:59:58.500 in days since 1899-12-30.
  EXPECT_EQ(BlfReader_getCSVInfoStartTime(log.reader()), (1735689598.0 + 0.5 + 2209161600.0) / 86400.0);
  for (int read = 1; read <= 100; ++read) {
    BlfMessage* message = nullptr;
    ASSERT_TRUE(BlfReader_ReadNextMessage(log.reader(), &message));
    EXPECT_TRUE(BlfMessage_getValid(message));
    EXPECT_EQ(BlfMessage_getBus(message), 2U);
    BlfMessage_Destruct(message);
  }
  EXPECT_FALSE(BlfReader_ReadNextMessage(log.reader(), &none));
  EXPECT_GE(BlfReader_getPercentDone(log.reader()), 50.0);
  EXPECT_LE(BlfReader_getPercentDone(log.reader()), 100.0);
}

// Each reader has a temporary file and a shared block of its own.
TEST_F(BlfReaders, workInTenThreadsAtOnce) {
  writeFile("a.blf", file({.objects = 3000}, zipped(manyFrames(3000))));
  const std::string expected = Log("a.blf").toRows("alone.csv");
  EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 3000);
  std::array<std::string, 10> rows;
  std::vector<std::thread> threads;
  for (std::size_t index = 0; index < rows.size(); ++index) {
    threads.emplace_back([&rows, index] { rows[index] = Log("a.blf").toRows(std::to_string(index) + ".csv"); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const std::string& each : rows) {
    EXPECT_EQ(each, expected);
  }
}

TEST_F(BlfReaders, workInAHostThatIgnoresTheEndsOfItsPrograms) {
  writeFile("a.blf", file({.objects = 100}, zipped(manyFrames(100))));
  const auto former = std::signal(SIGCHLD, SIG_IGN);
  const std::string rows = Log("a.blf").toRows("a.csv");
  std::signal(SIGCHLD, former);
  EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 100);
}

TEST_F(BlfReaders, stopTheConverterInTheMiddle) {
  tracegen::RecordingOptions options;
  options.form = tracegen::Form::Blf;
  options.maxMessages = 1'000'000;
  options.traffic.makePlain();
  tracegen::generateFile(options, "large.blf");
  const Log log("large.blf");
  EXPECT_FALSE(BlfReader_KillBlfToCsv(log.reader()));
  BlfReader_setActive(log.reader(), true);
  double last = 0.0;
  bool asked = false;
  const std::int32_t exitCode = log.wait([&] {
    const double percent = BlfReader_getPercentDone(log.reader());
    EXPECT_GE(percent, last);
    last = percent;
    if (percent > 0.0 && !asked) {
      asked = BlfReader_KillBlfToCsv(log.reader());
    }
  });
  EXPECT_TRUE(asked);
  EXPECT_EQ(exitCode, 2);
  EXPECT_TRUE(fs::is_empty("tmp"));
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

// The row that a listed object becomes, without its number: time_ns, kind, bus, id, ide, dir, edl, brs, esi, dlc,
// length, data.
std::string rowOf(const std::vector<std::string>& listed) {
  const std::string& kind = listed.at(1);
  const std::uint64_t microseconds = std::strtoull(listed.at(0).c_str(), nullptr, 10) / 1000;
  std::string fraction = std::to_string(1000 + microseconds % 1000).substr(1);
  std::string row = std::to_string(microseconds / 1000) + "." + fraction + ";";
  const bool lin = kind == "lin";
  row += (lin ? "1" : listed.at(2)) + ";" + (listed.at(5) == "1" ? "Tx" : "Rx") + ";";
  static constexpr std::array<const char*, 4> kFdKinds = {"FD", "FB", "FE", "BI"};
  const auto bit = [&listed](std::size_t index) { return listed.at(index) == "1" ? 1U : 0U; };
  row += kind == "remote" ? "RR" : bit(6) != 0 ? kFdKinds.at(bit(7) + 2 * bit(8)) : "DT";
  // Only its value shows that an identifier is extended.
  const bool extended = std::strtoull(listed.at(3).c_str(), nullptr, 16) > 0x7FF;
  row +=
      ";" + std::string((extended ? 8U : 4U) - listed.at(3).size(), '0') + listed.at(3) + ";-;" + listed.at(10) + ";";
  std::string data;
  for (std::size_t index = 0; index + 1 < listed.at(11).size(); index += 2) {
    data += (index == 0 ? "" : ";") + listed.at(11).substr(index, 2);
  }
  std::transform(data.begin(), data.end(), data.begin(),
                 [](char digit) { return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit; });
  return row + data;
}

TEST_F(BlfReaders, findInRecordedLogsWhatIsListed) {
  const fs::path recordings = fs::path(XLATR_RECORDINGS_DIR) / "blf";
  if (!fs::exists(recordings)) {
    GTEST_SKIP() << "there are no recordings in " << recordings;
  }
  const std::vector<fs::path> logs = test::recordingsIn(recordings, ".blf");
  ASSERT_FALSE(logs.empty());
  for (const fs::path& log : logs) {
    SCOPED_TRACE(log.filename());
    std::vector<std::string> rows = splitLines(Log(log).toRows("rows.csv"));
    std::erase_if(rows, [](const std::string& row) { return split(row, ';').at(4) == "Unknown"; });
    std::vector<std::string> listed = splitLines(readFile(test::frameListOf(log)));
    listed.erase(listed.begin());
    std::erase_if(listed, [](const std::string& line) {
      return line.find(",error,") != std::string::npos || line.find(",overload,") != std::string::npos;
    });
    ASSERT_EQ(rows.size(), listed.size());
    ASSERT_FALSE(rows.empty());
    for (std::size_t index = 0; index < rows.size(); ++index) {
      ASSERT_EQ(rows[index].substr(rows[index].find(';') + 1), rowOf(split(listed[index], ','))) << listed[index];
    }
  }
}

}  // namespace
}  // namespace xlatr::conversions
