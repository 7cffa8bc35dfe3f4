#include "core/asc_source.hpp"

#include "formats/asc/asc_reader.hpp"

namespace xlatr {
namespace {

class AscSource final : public TraceSource {
 public:
  explicit AscSource(const TraceFileInfo& file) : reader_(AscInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  // Relative times are summed over every frame, also over one whose file can't be opened.
  [[nodiscard]] Read readNext() override {
    if (!reader_.readInto(message_)) {
      return Read::End;
    }
    if (message_.getValid()) {
      message_.AdjustTime(now_);
    }
    return Read::Message;
  }

  // A line whose bus was not read belongs where the line before it went.
  [[nodiscard]] std::optional<std::uint32_t> bus() const override {
    return message_.bus == 0 ? std::nullopt : std::optional(message_.bus);
  }

  // Whatever the target can hold: only a line that was not understood becomes a comment, also an empty one.
  [[nodiscard]] Verdict judge(const TargetKind& /*target*/) const override {
    return message_.getValid() ? Verdict::Write : Verdict::Comment;
  }
  [[nodiscard]] std::string_view commentText() const override { return message_.parsingText; }

  void write(ITraceWriter& writer, const TargetKind& /*target*/) override { writer.WriteMessage(message_); }

 private:
  AscReader reader_;
  AscMessage message_;
  double now_ = 0.0;  // seconds; the sum of the relative times so far
};

}  // namespace

std::unique_ptr<TraceSource> makeAscSource(const TraceFileInfo& file) {
  return std::make_unique<AscSource>(file);
}

}  // namespace xlatr
