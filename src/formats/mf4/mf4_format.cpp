#include "formats/mf4/mf4_format.hpp"

#include <array>

#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mdf_writer.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "io/format_makers.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

class MdfSource final : public TraceSource {
 public:
  explicit MdfSource(const TraceFileInfo& file) : reader_(MdfInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }

  void validate() override {
    std::string reason;
    if (!reader_.ValidateFile(reason)) {
      raiseFailure(FailureKind::Generic, reason);
    }
  }

  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return message_.bus; }

  // A record that was not understood has no text to show.
  [[nodiscard]] Verdict judge() const override { return message_.getValid() ? Verdict::Write : Verdict::Drop; }
  void write(ITraceWriter& writer) override { writer.WriteMessage(message_); }

 private:
  MdfReader reader_;
  MdfCanMessage message_;
};

std::unique_ptr<ITraceWriter> makeMdfWriter(const WriterSettings& settings) {
  auto writer = std::make_unique<MdfWriter>();
  writer->setZipped(settings.zipped);
  writer->setSorted(settings.sorted);
  return writer;
}

constexpr std::array kVersions = {4.1, 4.11, 4.2};
constexpr std::array<TraceFormat, 1> kTargets = {XLATR_FORMAT_TRC};

}  // namespace

constinit const FormatDescriptor kMf4Format = {
    .format = XLATR_FORMAT_MF4,
    .extension = ".mf4",
    .shortName = "ASAM MDF",
    .description = "ASAM Measurement Data Format",
    .currentVersion = 4.2,
    .lowestVersion = 4.1,
    .supportedVersions = kVersions,
    .allowedTargets = kTargets,
    .makeSources = makeOneSource<MdfSource>,
    .makeWriter = makeMdfWriter,
    .frameCapacities = mf4Capacities,
    .recognises = looksLikeMf4,
    .openFrames = openMf4Frames,
    .createFrames = createMf4Frames,
};

}  // namespace xlatr
