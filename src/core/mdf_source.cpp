#include "core/mdf_source.hpp"

#include "formats/mf4/mdf_reader.hpp"
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

  // A record that was not understood has no text to be shown.
  [[nodiscard]] Verdict judge(const TargetKind& /*target*/) const override {
    return message_.getValid() ? Verdict::Write : Verdict::Drop;
  }
  void write(ITraceWriter& writer, const TargetKind& /*target*/) override { writer.WriteMessage(message_); }

 private:
  MdfReader reader_;
  MdfCanMessage message_;
};

}  // namespace

std::unique_ptr<TraceSource> makeMdfSource(const TraceFileInfo& file) {
  return std::make_unique<MdfSource>(file);
}

}  // namespace xlatr
