#include "formats/asc/asc_format.hpp"

#include <array>

#include "formats/asc/asc_frames.hpp"
#include "formats/asc/asc_reader.hpp"
#include "formats/asc/asc_writer.hpp"
#include "io/format_makers.hpp"

namespace xlatr {
namespace {

class AscSource final : public TraceSource {
 public:
  explicit AscSource(const TraceFileInfo& file) : reader_(AscInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  // Relative times are summed over all frames, even those whose file can't be opened.
  [[nodiscard]] Read readNext() override {
    if (!reader_.readInto(message_)) {
      return Read::End;
    }
    if (message_.getValid()) {
      message_.AdjustTime(now_);
    }
    return Read::Message;
  }

  // A line whose bus was not read goes where the line before it went.
  [[nodiscard]] std::optional<std::uint32_t> bus() const override {
    return message_.bus == 0 ? std::nullopt : std::optional(message_.bus);
  }

  // Whatever the target can hold: only lines that were not understood become comments, empty ones included.
  [[nodiscard]] Verdict judge() const override { return message_.getValid() ? Verdict::Write : Verdict::Comment; }
  [[nodiscard]] std::string_view commentText() const override { return message_.parsingText; }

  void write(ITraceWriter& writer) override { writer.WriteMessage(message_); }

 private:
  AscReader reader_;
  AscMessage message_;
  RealSeconds now_{};  // the sum of the relative times so far
};

constexpr std::array kVersions = {0.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0, 13.0, 14.0, 15.0};
constexpr std::array<TraceFormat, 2> kTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_CSV};

}  // namespace

// "CANalyser" and "CANalyzer" differ in a letter; users know both names as they are.
constinit const FormatDescriptor kAscFormat = {
    .format = XLATR_FORMAT_ASC,
    .extension = ".asc",
    .shortName = "CANalyser-ASC",
    .description = "CANalyzer ASCII logging file",
    .currentVersion = 15.0,
    .lowestVersion = 7.0,
    .supportedVersions = kVersions,
    .allowedTargets = kTargets,
    .makeSources = makeOneSource<AscSource>,
    .makeWriter = makePlainWriter<AscWriter>,
    .frameCapacities = ascCapacities,
    .readsInOrder = true,
    .writesInOrder = true,
    .recognises = looksLikeAsc,
    .openFrames = openAscFrames,
    .createFrames = createAscFrames,
};

}  // namespace xlatr
