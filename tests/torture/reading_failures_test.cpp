// What becomes of a failure of the system while a trace is read, one case at a time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <ios>
#include <memory>
#include <string>
#include <vector>

#include "core/conversion_registry.hpp"
#include "formats/asc/asc_info.hpp"
#include "formats/blf/blf_reader.hpp"
#include "formats/csv/csv_info.hpp"
#include "formats/lin/lin_info.hpp"
#include "formats/mf4/mdf_reader.hpp"
#include "formats/native/btr_info.hpp"
#include "formats/native/btrc_reader.hpp"
#include "formats/trc/trc_reader.hpp"
#include "io/input_file.hpp"
#include "support/blf_stand_in.hpp"
#include "support/faults.hpp"
#include "support/temp_folder.hpp"
#include "support/writer_stubs.hpp"
#include "torture/torture_cases.hpp"
#include "xlatr/xlatr.h"

namespace xlatr::test {
namespace {

constexpr unsigned kReads = faultBit(FaultKind::Read);
constexpr char kCannotRead[] = ": cannot read: Input/output error";

std::unique_ptr<ITraceInfo> infoOf(const TraceToRead& trace) {
  const TraceFileInfo file(trace.path);
  switch (trace.format->format) {
    case XLATR_FORMAT_TRC:
      return std::make_unique<TrcInfo>(file);
    case XLATR_FORMAT_ASC:
      return std::make_unique<AscInfo>(file);
    case XLATR_FORMAT_CSV:
      return std::make_unique<CsvInfo>(file);
    case XLATR_FORMAT_LIN:
      return std::make_unique<KorlInfo>(file);
    case XLATR_FORMAT_BTR:
      return std::make_unique<BtrInfo>(file);
    case XLATR_FORMAT_BTRC:
      return std::make_unique<BtrcInfo>(file);
    case XLATR_FORMAT_MF4:
      return std::make_unique<MdfInfo>(file);
    default:
      return nullptr;  // a BLF log is looked at by its converter
  }
}

TEST(ReadingFailures, anInformationObjectKeepsTheFailureOfEachOfItsCalls) {
  const TempFolder folder;
  for (const TraceToRead& trace : smallTraces(folder)) {
    FaultPlan plan = {.kinds = kFileFaults, .pathEnd = trace.path};
    const auto look = [&] {
      const Faults faults(plan);
      static_cast<void>(infoOf(trace));
      return faults.calls();
    };
    const std::uint64_t calls = look();
    plan.error = EIO;
    plan.kinds = kReads;
    for (plan.nth = 1; plan.nth <= calls; ++plan.nth) {
      const Faults faults(plan);
      const auto info = infoOf(trace);
      if (faults.struck()) {
        EXPECT_EQ(info->failure(), trace.path + kCannotRead) << trace.format->shortName << ", " << faultText(plan);
      }
    }
  }
}

TEST(ReadingFailures, aFileThatNobodyMayOpenIsNotValidAndNothingElse) {
  const TempFolder folder;
  for (const TraceToRead& trace : smallTraces(folder)) {
    const Faults faults(
        {.kinds = faultBit(FaultKind::Open), .nth = 1, .forGood = true, .error = EACCES, .pathEnd = trace.path});
    if (const auto info = infoOf(trace)) {
      EXPECT_EQ(info->failure(), "") << trace.path;
      EXPECT_TRUE(trace.format->format == XLATR_FORMAT_CSV || trace.format->format == XLATR_FORMAT_ASC ||
                  !info->getValid())
          << trace.path;
    }
  }
}

TEST(ReadingFailures, aReaderOfAFileThatCouldNotBeLookedAtStaysInactive) {
  const TempFolder folder;
  for (const TraceToRead& trace : smallTraces(folder)) {
    const FaultPlan once = {.kinds = kReads, .nth = 1, .error = EIO, .pathEnd = trace.path};
    std::unique_ptr<TraceReader> reader;
    {
      const Faults faults(once);
      const TraceFileInfo file(trace.path);
      if (trace.format->format == XLATR_FORMAT_TRC) {
        reader = std::make_unique<TrcReader>(TrcInfo(file));
      } else if (trace.format->format == XLATR_FORMAT_BTRC) {
        reader = std::make_unique<BtrcReader>(BtrcInfo(file));
      } else if (trace.format->format == XLATR_FORMAT_MF4) {
        reader = std::make_unique<MdfReader>(MdfInfo(file));
      } else {
        continue;
      }
    }
    EXPECT_FALSE(reader->setActive(true)) << trace.path;
    EXPECT_EQ(reader->failure(), trace.path + kCannotRead);
  }
}

struct Converted {
  std::int32_t status = 0;
  std::string text;
  Files files;
};

Converted convertToTrc(const std::string& source, const FaultPlan& plan) {
  const TempFolder folder;
  ConversionOptions options{};
  options.target_format = XLATR_FORMAT_TRC;
  ConversionResult result{};
  Converted converted;
  {
    const Faults faults(plan);
    converted.status =
        ConversionRegistry::instance().convert(source.c_str(), folder.file("out.trc").c_str(), options, &result);
  }
  converted.text = result.text;
  std::free(result.text);
  for (std::uint32_t index = 0; index < result.file_count; ++index) {
    std::free(result.files[index]);
  }
  std::free(result.files);
  converted.files = filesIn(folder);
  return converted;
}

// The first read is that of the line ends or of the session table, which made such a source an empty one.
TEST(ReadingFailures, aConversionWhoseSourceCouldNotBeLookedAtFailsAndTouchesNoTarget) {
  const TempFolder folder;
  for (const TraceToRead& trace : smallTraces(folder)) {
    if (trace.format->makeSources == nullptr ||
        std::ranges::find(trace.format->allowedTargets, XLATR_FORMAT_TRC) == trace.format->allowedTargets.end()) {
      continue;
    }
    const Converted converted =
        convertToTrc(trace.path, {.kinds = kReads, .nth = 1, .error = EIO, .pathEnd = trace.path});
    EXPECT_EQ(converted.status, XLATR_FAILED) << trace.path;
    EXPECT_TRUE(converted.text == trace.path + kCannotRead || converted.text == trace.path + kCannotRead + " ")
        << converted.text;
    EXPECT_TRUE(converted.files.empty()) << trace.path;
  }
}

class BlfTableFailures : public testing::Test {
 protected:
  BlfTableFailures() {
    std::filesystem::create_directory(folder_.file("temporary"));
    writeStandIn(folder_);
  }

  // Ready for the third phase.
  void convertTable(BlfReader& log) {
    ASSERT_TRUE(log.setActive(true));
    std::int32_t exitCode = 0;
    while (!log.InitializePhaseTwoWaitBlfToCsv(exitCode)) {
    }
    ASSERT_EQ(exitCode, 0);
  }
  [[nodiscard]] BlfReader reader() const {
    return {BlfInfo(TraceFileInfo(folder_.write("x.blf", kConverterTable)), BlfConverter(folder_.path().string())),
            folder_.file("temporary")};
  }

  TempFolder folder_;
};

TEST_F(BlfTableFailures, aTableThatCannotBeReadIsNoEmptyOne) {
  BlfReader log = reader();
  convertTable(log);
  const Faults faults({.kinds = kReads, .nth = 1, .error = EIO, .pathEnd = ".CSV"});
  const std::string text = failureOf([&] { log.InitializePhaseThreePrepareCsvReader(0); });
  EXPECT_TRUE(text.ends_with(kCannotRead)) << text;
  EXPECT_FALSE(log.getActive());
}

TEST_F(BlfTableFailures, aTableThatCannotBeReadOnDoesNotEndThere) {
  BlfReader log = reader();
  convertTable(log);
  log.InitializePhaseThreePrepareCsvReader(0);
  std::unique_ptr<BlfMessage> message;
  const Faults faults({.kinds = kReads, .nth = 1, .error = EIO, .pathEnd = ".CSV"});
  const std::string text = failureOf([&] { static_cast<void>(log.ReadNextMessage(message)); });
  EXPECT_TRUE(text.ends_with(kCannotRead)) << text;
  EXPECT_EQ(message, nullptr);
  EXPECT_EQ(log.failure(), text);
}

TEST(ReadingFailures, aFileThatIsCutWhileItIsReadDoesNotEndThere) {
  const TempFolder folder;
  const std::string path = folder.write("a", std::string(1000, 'a'));
  InputFile file{InputSource(path)};
  std::string bytes(100, '\0');
  EXPECT_EQ(file.read(bytes), 100U);
  std::filesystem::resize_file(path, 100);
  try {
    static_cast<void>(file.read(bytes));
    FAIL() << "no failure";
  } catch (const std::ios_base::failure& failure) {
    EXPECT_EQ(failure.what(), path + ": cannot read: the file became shorter in the meantime");
  }
  file.seek(1000);
  EXPECT_EQ(file.read(bytes), 0U) << "where the end was";
}

}  // namespace
}  // namespace xlatr::test
