#include "formats/lin/lin_format.hpp"

#include <array>

#include "formats/lin/lin_frames.hpp"
#include "formats/lin/lin_reader.hpp"
#include "io/format_makers.hpp"

namespace xlatr {
namespace {

class LinSource final : public TraceSource {
 public:
  explicit LinSource(const TraceFileInfo& file) : reader_(KorlInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }

  // A trace has one bus.
  [[nodiscard]] bool splitsByBus() const override { return false; }
  [[nodiscard]] bool warnsOfHighBuses() const override { return false; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return std::nullopt; }

  // A line that was not understood becomes a comment, even an empty one.
  [[nodiscard]] Verdict judge() const override { return message_.getValid() ? Verdict::Write : Verdict::Comment; }
  [[nodiscard]] std::string_view commentText() const override { return message_.parsingText; }
  void write(ITraceWriter& writer) override { writer.WriteMessage(message_); }

 private:
  KorlReader reader_;
  KorlMessage message_;
};

constexpr std::array kVersions = {1.0, 1.1, 1.2};
constexpr std::array<TraceFormat, 2> kTargets = {XLATR_FORMAT_ASC, XLATR_FORMAT_CSV};

}  // namespace

// No conversion writes LIN traces: KorlWriter takes only messages of BLF logs, which no conversion reads.
constinit const FormatDescriptor kLinFormat = {
    .format = XLATR_FORMAT_LIN,
    .extension = ".ltrc",
    .shortName = "KORL-Trace",
    .description = "KORL trace file",
    .currentVersion = 1.2,
    .lowestVersion = 1.0,
    .supportedVersions = kVersions,
    .allowedTargets = kTargets,
    .makeSources = makeOneSource<LinSource>,
    .frameCapacities = linCapacities,
    .readsInOrder = true,
    .writesInOrder = true,
    .recognises = looksLikeLin,
    .openFrames = openLinFrames,
    .createFrames = createLinFrames,
};

}  // namespace xlatr
