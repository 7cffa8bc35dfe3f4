#include "formats/blf/blf_reader.hpp"

#include <chrono>
#include <utility>

#include "formats/blf/abandoned_converters.hpp"
#include "platform/files.hpp"
#include "util/failures.hpp"
#include "util/host.hpp"
#include "util/paths.hpp"

namespace xlatr {

BlfReader::BlfReader(BlfInfo info, std::string temporaryFolder)
    : info_(std::move(info)), temporaryFolder_(std::move(temporaryFolder)) {
  // The list must outlive every reader, even one that lives as long as the process.
  AbandonedConverters::instance().sweep();
}

BlfReader::~BlfReader() {
  BlfReader::close();
}

double BlfReader::getPercentDone() const {
  constexpr double kShare = 0.5;
  return static_cast<double>(objectsRead_) * 100.0 / info_.objectsCount() * kShare + conversionProgress_ * kShare;
}

bool BlfReader::open() {
  close();
  csvReader_.reset();
  objectsRead_ = 0;
  invalidCount_ = 0;
  lineCount_ = 0;
  conversionProgress_ = 0.0;
  failure_.clear();
  std::string path;
  if (!makeUniqueFilePath(temporaryFolder_, std::string(kBlfTablePrefix), "CSV", path)) {
    throwProcessingFailure("Cannot get temporary file. Check path length.");
  }
  BlfSharedBlock::removeForgotten();
  AbandonedConverters::Entries made;
  AbandonedConverters::Entry& entry = made.emplace_back();
  entry.blockName = getFileStem(path);
  entry.table = std::move(path);
  if (!info_.converter().start(info_.getPath(), entry.table, entry.blockName, entry.process)) {
    throwProcessingFailure("Cannot launch BLF to CSV");
  }
  converter_ = std::move(made);
  sharedBlock_.emplace(entry.blockName);
  return true;
}

bool BlfReader::InitializePhaseTwoWaitBlfToCsv(std::int32_t& exitCode) {
  constexpr std::chrono::milliseconds kWait(10);
  constexpr double kProgressUnit = 100.0;
  if (sharedBlock_ && sharedBlock_->isOpen()) {
    if (const auto progress = sharedBlock_->readProgress()) {
      conversionProgress_ = *progress / kProgressUnit;
    }
  }
  exitCode = -1;
  if (converter_.empty()) {
    return true;
  }
  const auto ended = converter_.front().process.waitFor(kWait);
  if (!ended) {
    return false;
  }
  exitCode = static_cast<std::int32_t>(*ended);
  return true;
}

void BlfReader::InitializePhaseThreePrepareCsvReader(std::int32_t exitCode) {
  if (exitCode != 0) {
    throwProcessingFailure("Error while converting BLF to temporary CSV " + std::to_string(exitCode));
  }
  const std::string table = converter_.empty() ? std::string() : converter_.front().table;
  csvReader_ = std::make_unique<CsvReader>(CsvInfo(TraceFileInfo(table)));
  active_ = csvReader_->setActive(true);
  failure_ = csvReader_->failure();
  if (active_) {
    platform::removeFile(table);
  }
  if (!csvReader_->getTrace().getPath().empty()) {
    requireTable();  // without a table there is nothing to read, as every caller sees
  }
}

// The end of the table alone does not tell a failure from the end of the log.
void BlfReader::requireTable() {
  failure_ = csvReader_->failure();
  if (!failure_.empty()) {
    throwProcessingFailure(failure_);
  }
}

bool BlfReader::KillBlfToCsv() {
  return sharedBlock_ && sharedBlock_->isOpen() && sharedBlock_->requestStop();
}

double BlfReader::getCSVInfoStartTime() const {
  return csvReader_ ? csvReader_->getTrace().getStartTime() : 0.0;
}

bool BlfReader::ReadNextMessage(std::unique_ptr<BlfMessage>& message) {
  message.reset();
  if (!active_) {
    return false;
  }
  if (!csvReader_->readInto(row_)) {
    requireTable();
    return false;
  }
  ++objectsRead_;
  lineCount_ = csvReader_->lineCount();
  message = makeBlfMessage(row_);
  invalidCount_ += message->valid ? 0U : 1U;
  return true;
}

void BlfReader::close() {
  if (csvReader_) {
    csvReader_->setActive(false);  // its head stays known, for the start time
  }
  letConverterGo();
  active_ = false;
}

// A converter that is still running is not ended, because another program may be watching it. It is cleaned up later.
void BlfReader::letConverterGo() noexcept {
  sharedBlock_.reset();
  if (converter_.empty()) {
    return;
  }
  AbandonedConverters::Entry& entry = converter_.front();
  if (entry.process.waitFor(std::chrono::milliseconds(0))) {
    AbandonedConverters::cleanUpAfter(entry);
    converter_.clear();
  } else {
    platform::removeFile(entry.table);
    AbandonedConverters::instance().add(converter_);  // made by the constructor, so it needs no memory
  }
}

}  // namespace xlatr
