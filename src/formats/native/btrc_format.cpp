#include "formats/native/btrc_format.hpp"

#include <array>
#include <new>
#include <string>

#include "formats/native/btrc_frames.hpp"
#include "formats/native/btrc_reader.hpp"
#include "formats/native/btrc_writer.hpp"
#include "formats/trc/trc_version.hpp"
#include "io/format_makers.hpp"
#include "util/paths.hpp"

namespace xlatr {
namespace {

class BtrcSource final : public TraceSource {
 public:
  explicit BtrcSource(const TraceFileInfo& file) : reader_(BtrcInfo(file)) {}

  void setTarget(const TargetKind& target) override {
    intoTrc_ = target.format == XLATR_FORMAT_TRC;
    trcVersion_ = findTrcVersion(target.version);
  }

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }

  // Readers of the target must know that its start time is a substitute.
  void begin(ITraceWriter& writer, std::string& message) override {
    const BtrcFileHeader& header = reader_.getTrace().GetHeader();
    if (!header.errorOnRtc) {
      return;
    }
    const std::string name = getFileName(info().getPath());
    writer.WriteComment("-->INVALID CALCULATION TIME RECORD (RTC). Raw data: " + header.getRTCRawDataString() + ".");
    writer.WriteComment("-->RTC replaced by creation information of the file " + name + ".");
    message += "The source file '" + name + "' had an invalid calculation time record (RTC).\n" +
               "This information was replaced with the creation date/time of the source file.\n";
  }

  [[nodiscard]] bool warnsOfHighBuses() const override { return false; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return message_.bus + 1; }

  // Records that are not frames are for the logger's own tools; their texts would fill the target.
  [[nodiscard]] Verdict judge() const override { return message_.getValid() ? Verdict::Write : Verdict::Drop; }

  // A record that can't be written costs the rest of its block, not the conversion. That is for records that no line
  // has a place for; lack of memory has nothing to do with the record, and a target that has failed once refuses the
  // comment.
  void write(ITraceWriter& writer) override {
    try {
      if (!intoTrc_ || message_.canStandIn(trcVersion_)) {
        writer.WriteMessage(message_);
      }
      if (!message_.commentary.empty()) {
        writer.WriteComment(message_.commentary);
      }
    } catch (const std::bad_alloc&) {
      throw;
    } catch (...) {
      const std::string report = reader_.SkipCurrentBlock();
      writer.WriteComment("-->INTEGRITY PROBLEM. Raw data: " + message_.getParsingBytesString());
      writer.WriteComment("-->Block skipped | " + report);
    }
  }

 private:
  BtrcReader reader_;
  ZelkBinaryMessage message_;
  bool intoTrc_ = false;
  const TrcVersion* trcVersion_ = nullptr;  // of a TRC target; null if unknown
};

constexpr std::array kVersions = {1.0};
constexpr std::array<TraceFormat, 3> kTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC, XLATR_FORMAT_CSV};

}  // namespace

constinit const FormatDescriptor kBtrcFormat = {
    .format = XLATR_FORMAT_BTRC,
    .extension = ".btrc",
    .shortName = "ZELK binary trace",
    .description = "ZELK binary trace file",
    .currentVersion = 1.0,
    .lowestVersion = 1.0,
    .supportedVersions = kVersions,
    .allowedTargets = kTargets,
    .makeSources = makeOneSource<BtrcSource>,
    .makeWriter = makePlainWriter<BtrcWriter>,
    .frameCapacities = btrcCapacities,
    .readsInOrder = true,
    .writesInOrder = true,
    .recognises = looksLikeBtrc,
    .openFrames = openBtrcFrames,
    .createFrames = createBtrcFrames,
};

}  // namespace xlatr
