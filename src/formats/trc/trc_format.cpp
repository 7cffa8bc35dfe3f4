#include "formats/trc/trc_format.hpp"

#include <array>

#include "formats/trc/trc_frames.hpp"
#include "formats/trc/trc_reader.hpp"
#include "formats/trc/trc_version.hpp"
#include "formats/trc/trc_writer.hpp"
#include "io/format_makers.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

class TrcSource final : public TraceSource {
 public:
  explicit TrcSource(const TraceFileInfo& file) : reader_(TrcInfo(file)) {}

  void setTarget(const TargetKind& target) override {
    intoTrc_ = target.format == XLATR_FORMAT_TRC;
    targetVersion_ = findTrcVersion(target.version);
  }
  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return message_.bus; }

  // A line that the target can't hold survives as a comment, unless it is empty.
  [[nodiscard]] Verdict judge() const override {
    if (intoTrc_ ? message_.canStandIn(targetVersion_) : message_.getValid()) {
      return Verdict::Write;
    }
    return trimmed(message_.parsingText).empty() ? Verdict::Drop : Verdict::Comment;
  }
  [[nodiscard]] std::string_view commentText() const override { return message_.parsingText; }
  void write(ITraceWriter& writer) override { writer.WriteMessage(message_); }

 private:
  TrcReader reader_;
  BrixMessage message_;
  bool intoTrc_ = false;
  const TrcVersion* targetVersion_ = nullptr;  // of a TRC target; null if unknown
};

constexpr std::array<TraceFormat, 6> kTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC,  XLATR_FORMAT_CSV,
                                                 XLATR_FORMAT_BTR, XLATR_FORMAT_BTRC, XLATR_FORMAT_MF4};

}  // namespace

constinit const FormatDescriptor kTrcFormat = {
    .format = XLATR_FORMAT_TRC,
    .extension = ".trc",
    .shortName = "BRIX-Trace",
    .description = "BRIX trace file",
    .currentVersion = kTrcVersionNumbers.back(),
    .lowestVersion = kTrcVersionNumbers.front(),
    .supportedVersions = kTrcVersionNumbers,
    .allowedTargets = kTargets,
    .splitsByBus = splitsTrcByBus,
    .busLimit = BusLimit{16, "Only BRIX trace files with bus numbers from 1 to 16 are supported"},
    .makeSources = makeOneSource<TrcSource>,
    .makeWriter = makePlainWriter<TrcWriter>,
    .frameCapacities = trcCapacities,
    .readsInOrder = true,
    .writesInOrder = true,
    .recognises = looksLikeTrc,
    .openFrames = openTrcFrames,
    .createFrames = createTrcFrames,
};

}  // namespace xlatr
