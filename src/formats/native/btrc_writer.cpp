#include "formats/native/btrc_writer.hpp"

#include <exception>
#include <utility>

#include "formats/native/btrc_blocks.hpp"
#include "formats/native/btrc_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"
#include "util/render.hpp"

namespace xlatr {

BtrcWriter::BtrcWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriter(std::move(targetPath), overrideExistingFile, targetVersion) {}

BtrcWriter::~BtrcWriter() {
  try {
    setActive(false);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): whoever wants to know closes the writer
  }
}

std::unique_ptr<ITraceWriter> BtrcWriter::CreateNew() const {
  auto fresh = std::make_unique<BtrcWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  fresh->setSourcePath(getSourcePath());
  return fresh;
}

void BtrcWriter::open() {
  TraceWriter::open();
  blocks_.begin();
}

void BtrcWriter::close() {
  if (getActive()) {
    blocks_.finish();
  }
  TraceWriter::close();
}

void BtrcWriter::requireWriting() const {
  if (!getActive()) {
    raiseFailure(FailureKind::Parsing, "Writer is not initialized");
  }
}

void BtrcWriter::WriteHeader(const ITraceInfo& source) {
  requireWriting();
  const double startDays = startDaysFrom(source);
  const std::string version = formatFixed(getTargetVersion(), 0);
  const bool calibrated = version == "1";
  if (!calibrated && version != "0") {
    return;
  }
  scratch_.clear();
  systemTime_ = UnsignedMicroseconds::zero();
  if (calibrated) {
    const DateTime start = DateTime::fromOleDate(startDays);
    systemTime_ = btrcSystemTime(start);
    appendBtrcHead(scratch_, start);
  } else {
    Native_RecordInfo info;
    info.timeScalingExponent = TimeScale::kMicroseconds;
    appendFields(scratch_, info);
  }
  blocks_.writeHead(scratch_);
}

void BtrcWriter::WriteComment(std::string_view text) {
  constexpr UnsignedMicroseconds kNoTime(0);
  requireWriting();
  Bytes record;
  appendComment(record, text);
  blocks_.write(kNoTime, record);
}

void BtrcWriter::WriteMessage(const IMessage& message) {
  requireWriting();
  const bool taken = dispatchMessage(MessageClasses<BrixMessage>{}, message, [this](const BrixMessage& known) {
    if (known.kind == MessageKind::XL) {
      return;
    }
    mapToBtrc(known, mapped_);
    mapped_.AdjustTimestamp(systemTime_);
    blocks_.write(mapped_.timestamp, mapped_.rawBytes);
  });
  if (!taken) {
    raiseFailure(FailureKind::Parsing, "Object cannot be casted to any supported message trace");
  }
}

}  // namespace xlatr
