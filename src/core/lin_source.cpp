#include "core/lin_source.hpp"

#include "formats/lin/lin_reader.hpp"

namespace xlatr {
namespace {

class LinSource final : public TraceSource {
 public:
  explicit LinSource(const TraceFileInfo& file) : reader_(KorlInfo(file)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return reader_.getTrace(); }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }
  [[nodiscard]] Read readNext() override { return reader_.readInto(message_) ? Read::Message : Read::End; }

  // A trace is of one bus.
  [[nodiscard]] bool splitsByBus() const override { return false; }
  [[nodiscard]] bool warnsOfHighBuses() const override { return false; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return std::nullopt; }

  // A line that was not understood becomes a comment, also an empty one.
  [[nodiscard]] Verdict judge(const TargetKind& /*target*/) const override {
    return message_.getValid() ? Verdict::Write : Verdict::Comment;
  }
  [[nodiscard]] std::string_view commentText() const override { return message_.parsingText; }
  void write(ITraceWriter& writer, const TargetKind& /*target*/) override { writer.WriteMessage(message_); }

 private:
  KorlReader reader_;
  KorlMessage message_;
};

}  // namespace

std::unique_ptr<TraceSource> makeLinSource(const TraceFileInfo& file) {
  return std::make_unique<LinSource>(file);
}

}  // namespace xlatr
