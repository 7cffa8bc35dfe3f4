#include "core/btrc_source.hpp"

#include <string>

#include "formats/native/btrc_reader.hpp"
#include "util/paths.hpp"

namespace xlatr {
namespace {

class BtrcSource final : public TraceSource {
 public:
  explicit BtrcSource(const TraceFileInfo& file) : reader_(BtrcInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }

  // Whoever reads the target must know that its start time is a makeshift.
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

  // What is no frame is there for the logger's own tools; its text would fill the target.
  [[nodiscard]] Verdict judge(const TargetKind& /*target*/) const override {
    return message_.getValid() ? Verdict::Write : Verdict::Drop;
  }

  // A record that can't be written costs the rest of its block and not the conversion.
  void write(ITraceWriter& writer, const TargetKind& target) override {
    try {
      if (target.format != XLATR_FORMAT_TRC || message_.ValidateForTargetVersion(target.version)) {
        writer.WriteMessage(message_);
      }
      if (!message_.commentary.empty()) {
        writer.WriteComment(message_.commentary);
      }
    } catch (...) {
      const std::string report = reader_.SkipCurrentBlock();
      writer.WriteComment("-->INTEGRITY PROBLEM. Raw data: " + message_.getParsingBytesString());
      writer.WriteComment("-->Block skipped | " + report);
    }
  }

 private:
  BtrcReader reader_;
  ZelkBinaryMessage message_;
};

}  // namespace

std::unique_ptr<TraceSource> makeBtrcSource(const TraceFileInfo& file) {
  return std::make_unique<BtrcSource>(file);
}

}  // namespace xlatr
