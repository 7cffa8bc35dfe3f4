#include "formats/mf4/mdf_writer.hpp"

#include <exception>
#include <utility>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"
#include "util/time_units.hpp"

namespace xlatr {
namespace {

using Accepted = MessageClasses<BrixMessage>;

// The time since 1970; 0 for a start before that and for one that has no date or no place in 64 bits.
UnsignedNanoseconds startOf(double startDays) {
  constexpr auto kLimit = std::chrono::duration_cast<std::chrono::seconds>(UnsignedNanoseconds::max());
  DateTime start;
  try {
    start = DateTime::fromOleDateTruncated(startDays);
  } catch (const std::exception&) {
    return UnsignedNanoseconds(0);
  }
  if (start.seconds < 0 || start.seconds >= kLimit.count()) {
    return UnsignedNanoseconds(0);
  }
  return UnsignedNanoseconds(std::chrono::seconds(start.seconds)) + UnsignedNanoseconds(start.fraction());
}

}  // namespace

MdfWriter::MdfWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriter(std::move(targetPath), overrideExistingFile, targetVersion) {}

MdfWriter::~MdfWriter() {
  try {
    setActive(false);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): whoever wants to know calls setActive
  }
}

void MdfWriter::setSorted(bool sorted) {
  if (sorted && options_.layout == MdfLayout::Unsorted) {
    options_.layout = MdfLayout::Sorted;
  } else if (!sorted && options_.layout == MdfLayout::Sorted) {
    options_.layout = MdfLayout::Unsorted;
  }
}

std::unique_ptr<ITraceWriter> MdfWriter::CreateNew() const {
  auto fresh = std::make_unique<MdfWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  fresh->setLayoutOptions(options_);
  return fresh;
}

void MdfWriter::open() {
  constexpr double kFirstVersionWithStreams = 4.2;
  if (options_.layout == MdfLayout::SignalDataStream && getTargetVersion() < kFirstVersionWithStreams) {
    requireUsableTarget();  // what is wrong with the path is told first
    throwProcessingFailure("VLSD stream is not supported by the target version");
  }
  TraceWriter::open();
  file_.reset();
}

MdfTargetFile& MdfWriter::file() {
  if (!file_) {
    file_ = std::make_unique<MdfTargetFile>(output(), options_);
  }
  return *file_;
}

void MdfWriter::WriteHeader(const ITraceInfo& source) {
  requireActive();
  if (!source.getValid()) {
    return;
  }
  const auto header =
      MdfFileHeader::createForWriting(file().options(), startOf(startDaysFrom(source)), getTargetVersion());
  file().writeTree(*header);
}

void MdfWriter::WriteMessage(const IMessage& message) {
  requireActive();
  const bool taken = dispatchMessage(Accepted{}, message, [this](const auto& known) { mapToMdf(known, mapped_); });
  if (!taken) {
    throwProcessingFailure("Object cannot be casted to any supported message trace");
  }
  if (mapped_.valid) {
    file().append(mapped_);
  }
}

void MdfWriter::close() {
  const std::unique_ptr<MdfTargetFile> file = std::move(file_);
  try {
    if (file) {
      file->finish();
    }
  } catch (const std::exception&) {
    TraceWriter::close();
    throw;
  }
  TraceWriter::close();
}

}  // namespace xlatr
