#include "blf_conversion.hpp"

#include <chrono>
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
#include "target_writer.hpp"
#include "xlatr/objects.h"

namespace xlatr::cli {

namespace {

constexpr const char* kConverterName = "BLF2CSV.exe";

template <auto Destruct>
struct Destroy {
  template <class Object>
  void operator()(Object* object) const {
    Destruct(object);
  }
};

using FileInfo = std::unique_ptr<TraceFileInfo, Destroy<TraceFileInfo_Destruct>>;
using Info = std::unique_ptr<BlfInfo, Destroy<BlfInfo_Destruct>>;
using Reader = std::unique_ptr<BlfReader, Destroy<BlfReader_Destruct>>;
using Message = std::unique_ptr<BlfMessage, Destroy<BlfMessage_Destruct>>;

std::string commentaryOf(const BlfMessage* message) {
  std::string text(std::size_t{BlfMessage_getAsCommentarySize(message)} + 1, '\0');
  BlfMessage_getAsCommentary(message, text.data(), static_cast<std::uint32_t>(text.size()));
  text.pop_back();
  return text;
}

class BlfConversion {
 public:
  BlfConversion(const ConversionRequest& request, const BlfTarget& target,
                const std::function<void(double)>& onProgress)
      : request_(request),
        target_(target),
        onProgress_(onProgress),
        file_(TraceFileInfo_Construct(request.source.c_str())),
        info_(BlfInfo_Construct(file_.get())),
        reader_(BlfReader_Construct(info_.get(), std::filesystem::temp_directory_path().c_str())) {}

  // False after an interrupt.
  bool run() {
    BlfReader_setActive(reader_.get(), true);
    return waitForTable() && writeMessages();
  }

  [[nodiscard]] const std::vector<std::string>& files() const { return files_; }

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
    for (std::uint64_t count = 1; BlfReader_ReadNextMessage(reader_.get(), &next); ++count) {
      write(Message(next).get());
      if (count % kMessagesBetweenLooks == 0) {
        onProgress_(BlfReader_getPercentDone(reader_.get()));
        if (interruptRequested()) {
          return false;
        }
      }
    }
    for (const auto& [bus, writer] : writers_) {
      writer->close();
    }
    return true;
  }

  void write(const BlfMessage* message) {
    TargetWriter& writer = writerOf(BlfMessage_getBus(message));
    if (BlfMessage_getValid(message)) {
      writer.writeMessage(reinterpret_cast<const IMessage*>(message));
    } else {
      writer.writeComment(commentaryOf(message));
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
    files_.push_back(name);
    writer->writeHeader(reinterpret_cast<const ITraceInfo*>(info_.get()), BlfReader_getCSVInfoStartTime(reader_.get()));
    return (writers_[bus] = std::move(writer)).get();
  }

  const ConversionRequest& request_;
  const BlfTarget& target_;
  const std::function<void(double)>& onProgress_;
  FileInfo file_;
  Info info_;
  Reader reader_;
  std::map<std::uint32_t, std::unique_ptr<TargetWriter>> writers_;  // by bus; one alone where the target has them all
  TargetWriter* currentWriter_ = nullptr;
  std::uint32_t currentBus_ = 0;
  std::vector<std::string> files_;
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
    BlfConversion conversion(request, target, onProgress);
    outcome.interrupted = !conversion.run();
    outcome.status = XLATR_SUCCESS;
    outcome.files = conversion.files();
  } catch (const std::exception& failure) {
    outcome.text = oneLine(failure.what());
  }
  return outcome;
}

}  // namespace xlatr::cli
