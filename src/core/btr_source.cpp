#include "core/btr_source.hpp"

#include <utility>
#include <vector>

#include "formats/native/btr_session_reader.hpp"

namespace xlatr {
namespace {

class BtrSource final : public TraceSource {
 public:
  BtrSource(std::shared_ptr<const BtrInfo> file, std::size_t session)
      : file_(std::move(file)), reader_(file_->GetSession(session)) {
    sector_.reserve(DataSector::kEntries);
  }

  [[nodiscard]] const ITraceInfo& info() const override { return *file_; }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }

  // The information object is that of the whole file, and its start is that of the first session.
  void writeHeader(ITraceWriter& writer) override {
    writer.WriteHeader_2(*file_, reader_.session().description.dateAndTime.toDateTime().toOleDateFractionFirst());
  }

  [[nodiscard]] Read readNext() override {
    if (++current_ < sector_.size()) {
      return Read::Message;
    }
    current_ = 0;
    if (!reader_.readSector(sector_)) {
      return Read::End;
    }
    return sector_.empty() ? Read::Nothing : Read::Message;
  }

  // The logger has five buses, and what it recorded is written whether it makes sense or not.
  [[nodiscard]] bool warnsOfHighBuses() const override { return false; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return sector_[current_].entry.getSource() + 1U; }
  [[nodiscard]] Verdict judge(const TargetKind& /*target*/) const override { return Verdict::Write; }
  void write(ITraceWriter& writer, const TargetKind& /*target*/) override { writer.WriteMessage(sector_[current_]); }

 private:
  const std::shared_ptr<const BtrInfo> file_;
  BtrSessionReader reader_;
  std::vector<SessionMessage> sector_;  // the frames of the sector at hand
  std::size_t current_ = 0;
};

}  // namespace

std::unique_ptr<TraceSource> makeBtrSource(std::shared_ptr<const BtrInfo> file, std::size_t session) {
  return std::make_unique<BtrSource>(std::move(file), session);
}

}  // namespace xlatr
