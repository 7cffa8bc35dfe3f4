// Reads the messages of a BLF log.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "formats/blf/blf_info.hpp"
#include "formats/blf/blf_message.hpp"
#include "formats/blf/blf_shared_block.hpp"
#include "formats/csv/csv_reader.hpp"
#include "io/trace_reader.hpp"
#include "platform/process.hpp"

namespace xlatr {

// Reading has three phases, since converting a large log takes long and the caller may want to show how far it is:
//   1. setActive(true) starts the converter, which writes a table into a temporary file;
//   2. InitializePhaseTwoWaitBlfToCsv is called until it answers true: the converter has ended;
//   3. InitializePhaseThreePrepareCsvReader opens the table; the reader is active from then on.
// Deactivation and destruction remove the temporary file in every phase. All failures are ConverterProcessingException.
class BlfReader final : public TraceReader {
 public:
  // Copies the information object. The table, which takes a multiple of the log's size, goes into the folder.
  BlfReader(BlfInfo info, std::string temporaryFolder);
  ~BlfReader() override;

  [[nodiscard]] const BlfInfo& getTrace() const { return info_; }
  // A half for what the converter has done and a half for what was read of the table; not a number as long as the count
  // of objects is not known.
  [[nodiscard]] double getPercentDone() const override;

  // Waits for 10 ms at most, unless the converter is dead and holds the block's lock. Answers whether the converter has
  // ended; `exitCode` is its exit code then, and -1 before or when there is none to be had.
  [[nodiscard]] bool InitializePhaseTwoWaitBlfToCsv(std::int32_t& exitCode);
  // Raises a failure for an exit code other than 0.
  void InitializePhaseThreePrepareCsvReader(std::int32_t exitCode);
  // Asks the converter to stop; it then ends by itself. False when there is none to ask, or it could not be asked in
  // time.
  [[nodiscard]] bool KillBlfToCsv();

  // The start of the recording in days since 1899-12-30, from the table; 0.0 before phase three.
  [[nodiscard]] double getCSVInfoStartTime() const;

  // Reads on; false at the end of the table and while inactive. `message` is then null.
  [[nodiscard]] bool ReadNextMessage(std::unique_ptr<BlfMessage>& message);

 protected:
  // Answers true when the converter runs, though the reader is not active yet.
  bool open() override;
  void close() override;

 private:
  [[nodiscard]] std::string blockName() const;
  void letConverterGo();

  BlfInfo info_;
  std::string temporaryFolder_;
  std::string temporaryPath_;  // empty when there is no temporary file
  platform::Process process_;
  std::optional<BlfSharedBlock> sharedBlock_;
  double conversionProgress_ = 0.0;  // per cent
  std::uint64_t objectsRead_ = 0;
  std::unique_ptr<CsvReader> csvReader_;
  CsvMessage row_;
};

}  // namespace xlatr
