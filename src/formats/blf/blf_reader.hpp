// Reads the messages of a BLF log.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "formats/blf/abandoned_converters.hpp"
#include "formats/blf/blf_info.hpp"
#include "formats/blf/blf_message.hpp"
#include "formats/blf/blf_shared_block.hpp"
#include "formats/csv/csv_reader.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

// Reading has three phases, because converting a large log takes long and the caller may want to show the progress:
//   1. setActive(true) starts the converter, which writes a table into a temporary file;
//   2. InitializePhaseTwoWaitBlfToCsv is called until it returns true: the converter has ended;
//   3. InitializePhaseThreePrepareCsvReader opens the table; the reader is active from then on.
// The temporary file has no name any more once it is open, so that nothing remains however the process ends;
// deactivation and destruction remove it in every other phase. A converter ends with the process and then leaves
// nothing either. All failures are ConverterProcessingException.
class BlfReader final : public TraceReader {
 public:
  // Copies the information object. The table, which takes a multiple of the log's size, goes into the folder.
  BlfReader(BlfInfo info, std::string temporaryFolder);
  ~BlfReader() override;

  [[nodiscard]] const BlfInfo& getTrace() const { return info_; }
  // One half for the converter's progress and one half for the part of the table that was read; NaN as long as the
  // count of objects is not known.
  [[nodiscard]] double getPercentDone() const override;

  // Waits for at most 10 ms, unless the converter died while it held the block's lock. Returns whether the converter
  // has ended; `exitCode` is then its exit code, and -1 before or if there is none.
  [[nodiscard]] bool InitializePhaseTwoWaitBlfToCsv(std::int32_t& exitCode);
  // Raises a failure for an exit code other than 0.
  void InitializePhaseThreePrepareCsvReader(std::int32_t exitCode);
  // Asks the converter to stop; it then ends by itself. False if there is none, or if it could not be asked in time.
  [[nodiscard]] bool KillBlfToCsv();

  // The start of the recording in days since 1899-12-30, from the table; 0.0 before phase three.
  [[nodiscard]] double getCSVInfoStartTime() const;

  // Reads on; false at the end of the table and while inactive. `message` is then null.
  [[nodiscard]] bool ReadNextMessage(std::unique_ptr<BlfMessage>& message);

 protected:
  // Returns true if the converter was started, though the reader is not active yet.
  bool open() override;
  void close() override;

 private:
  void requireTable();
  void letConverterGo() noexcept;

  BlfInfo info_;
  std::string temporaryFolder_;
  // The converter and its traces, in the form in which they can be handed over without memory.
  AbandonedConverters::Entries converter_;
  std::optional<BlfSharedBlock> sharedBlock_;
  double conversionProgress_ = 0.0;  // percent
  std::uint64_t objectsRead_ = 0;
  std::unique_ptr<CsvReader> csvReader_;
  CsvMessage row_;
};

}  // namespace xlatr
