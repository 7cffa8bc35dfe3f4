#include "blf_conversion.hpp"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>

#include "command_failure.hpp"
#include "interrupt.hpp"
#include "library_folder.hpp"
#include "output.hpp"
#include "owned.hpp"
#include "target_writer.hpp"
#include "xlatr/objects.h"

namespace xlatr::cli {

namespace {

constexpr const char* kConverterName = "BLF2CSV.exe";

class BlfConversion {
 public:
  // Adds to the outcome each target file that it creates, and a warning.
  BlfConversion(const ConversionRequest& request, const BlfTarget& target,
                const std::function<void(double)>& onProgress, ConversionOutcome& outcome)
      : request_(request),
        target_(target),
        onProgress_(onProgress),
        outcome_(outcome),
        file_(TraceFileInfo_Construct(request.source.c_str())),
        info_(BlfInfo_Construct(file_.get())),
        reader_(BlfReader_Construct(info_.get(), std::filesystem::temp_directory_path().c_str())) {}

  // False after an interrupt.
  bool run() {
    BlfReader_setActive(reader_.get(), true);
    return waitForTable() && writeMessages();
  }

 private:
  bool waitForTable() {
    constexpr std::int32_t kEndedByInterrupt = 128 + SIGINT;
    std::int32_t exitCode = 0;
    while (!BlfReader_InitializePhaseTwoWaitBlfToCsv(reader_.get(), &exitCode)) {
      onProgress_(BlfReader_getPercentDone(reader_.get()));
      if (interruptRequested()) {
        stopConverter();
        return false;
      }
    }
    // Ctrl-C in a terminal reaches the converter as well, perhaps sooner.
    if (interruptRequested() || exitCode == kEndedByInterrupt) {
      return false;
    }
    BlfReader_InitializePhaseThreePrepareCsvReader(reader_.get(), exitCode);
    return true;
  }

  // A converter that does not stop in time is ended with this program.
  void stopConverter() {
    constexpr std::chrono::seconds kLimit(2);
    const auto start = std::chrono::steady_clock::now();
    BlfReader_KillBlfToCsv(reader_.get());
    std::int32_t exitCode = 0;
    while (!BlfReader_InitializePhaseTwoWaitBlfToCsv(reader_.get(), &exitCode) &&
           std::chrono::steady_clock::now() - start < kLimit) {
    }
  }

  bool writeMessages() {
    constexpr std::uint64_t kMessagesBetweenLooks = 4096;
    if (!target_.files.perBus) {
      currentWriter_ = openWriter(0, target_.files.stem + target_.files.extension);
    }
    BlfMessage* next = nullptr;
    std::uint64_t count = 0;
    while (BlfReader_ReadNextMessage(reader_.get(), &next)) {
      write(Owned<BlfMessage, BlfMessage_Destruct>(next).get());
      if (++count % kMessagesBetweenLooks == 0) {
        onProgress_(BlfReader_getPercentDone(reader_.get()));
        if (interruptRequested()) {
          return false;
        }
      }
    }
    for (const auto& [bus, writer] : writers_) {
      writer->close();
    }
    warnOfNoMessage(count);
    return true;
  }

  // To the reader, a converter that ends well and leaves no table looks like one that found no object that it knows.
  void warnOfNoMessage(std::uint64_t messages) {
    const bool logHasObjects = !std::isnan(BlfReader_getPercentDone(reader_.get()));
    if (messages == 0 && logHasObjects) {
      outcome_.text = std::string("no message was converted: ") + kConverterName +
                      " knows none of the log's objects, or left no table";
    }
  }

  void write(const BlfMessage* message) {
    TargetWriter& writer = writerOf(BlfMessage_getBus(message));
    if (BlfMessage_getValid(message)) {
      writer.writeMessage(reinterpret_cast<const IMessage*>(message));
    } else {
      writer.writeComment(libraryText<BlfMessage_getAsCommentarySize, BlfMessage_getAsCommentary>(message));
    }
  }

  TargetWriter& writerOf(std::uint32_t bus) {
    if (target_.files.perBus && (currentWriter_ == nullptr || currentBus_ != bus)) {
      const auto opened = writers_.find(bus);
      currentWriter_ =
          opened != writers_.end()
              ? opened->second.get()
              : openWriter(bus, target_.files.stem + "_BUS" + std::to_string(bus) + target_.files.extension);
      currentBus_ = bus;
    }
    return *currentWriter_;
  }

  TargetWriter* openWriter(std::uint32_t bus, const std::string& name) {
    auto writer =
        openTargetWriter({.format = request_.format, .version = target_.version, .separator = target_.separator},
                         request_.source, target_.files.directory + name);
    outcome_.files.push_back(name);
    writer->writeHeader(reinterpret_cast<const ITraceInfo*>(info_.get()), BlfReader_getCSVInfoStartTime(reader_.get()));
    return (writers_[bus] = std::move(writer)).get();
  }

  const ConversionRequest& request_;
  const BlfTarget& target_;
  const std::function<void(double)>& onProgress_;
  ConversionOutcome& outcome_;
  const Owned<TraceFileInfo, TraceFileInfo_Destruct> file_;
  const Owned<BlfInfo, BlfInfo_Destruct> info_;
  const Owned<BlfReader, BlfReader_Destruct> reader_;
  std::map<std::uint32_t, std::unique_ptr<TargetWriter>>
      writers_;  // by bus; a single one if the target holds all buses
  TargetWriter* currentWriter_ = nullptr;
  std::uint32_t currentBus_ = 0;
};

}  // namespace

void requireBlfConverter(const std::string& source) {
  const std::string path = libraryFolder() + "/" + kConverterName;
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::is_regular_file(status)) {
    throw CommandFailure(ExitCode::Failed,
                         source + ": the program that reads BLF logs, " + path + ", is missing; install it there");
  }
  if (!isExecutable(path)) {
    throw CommandFailure(ExitCode::Failed, source + ": the program that reads BLF logs, " + path +
                                               ", can't be run; check its permissions");
  }
}

ConversionOutcome runBlfConversion(const ConversionRequest& request, const BlfTarget& target,
                                   const std::function<void(double)>& onProgress) {
  ConversionOutcome outcome;
  outcome.status = XLATR_FAILED;
  try {
    outcome.interrupted = !BlfConversion(request, target, onProgress, outcome).run();
    outcome.status = XLATR_SUCCESS;
  } catch (const std::exception& failure) {
    outcome.text = oneLine(failure.what());
  }
  return outcome;
}

}  // namespace xlatr::cli
