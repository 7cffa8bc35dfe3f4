#include "core/trc_source.hpp"

#include "formats/trc/trc_reader.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

class TrcSource final : public TraceSource {
 public:
  explicit TrcSource(const TraceFileInfo& file) : reader_(TrcInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return message_.bus; }

  // A line that the target can't hold survives as a comment, an empty one is not worth it.
  [[nodiscard]] Verdict judge(const TargetKind& target) const override {
    const bool fits =
        target.format == XLATR_FORMAT_TRC ? message_.ValidateForTargetVersion(target.version) : message_.getValid();
    if (fits) {
      return Verdict::Write;
    }
    return trimmed(message_.parsingText).empty() ? Verdict::Drop : Verdict::Comment;
  }
  [[nodiscard]] std::string_view commentText() const override { return message_.parsingText; }
  void write(ITraceWriter& writer, const TargetKind& /*target*/) override { writer.WriteMessage(message_); }

 private:
  TrcReader reader_;
  BrixMessage message_;
};

}  // namespace

std::unique_ptr<TraceSource> makeTrcSource(const TraceFileInfo& file) {
  return std::make_unique<TrcSource>(file);
}

}  // namespace xlatr
