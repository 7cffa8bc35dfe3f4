#include "target_writer.hpp"

#include "owned.hpp"

namespace xlatr::cli {

namespace {

// The functions of a family of writers, pasted together by its name.
#define XLATR_WRITER_FUNCTIONS(Family)                                                                       \
  Family##_Construct, Family##_Destruct, Family##_setSourcePath, Family##_setActive, Family##_WriteHeader_2, \
      Family##_WriteComment, Family##_WriteMessage

template <class Writer, auto Construct, auto Destruct, auto SetSourcePath, auto SetActive, auto WriteHeader,
          auto WriteComment, auto WriteMessage>
class FamilyWriter final : public TargetWriter {
 public:
  FamilyWriter(const std::string& target, double version) : writer_(Construct(target.c_str(), true, version)) {}

  // The writer itself, for what only one family can do.
  [[nodiscard]] Writer* get() const { return writer_.get(); }
  void open(const std::string& source) {
    SetSourcePath(get(), source.c_str());
    SetActive(get(), true);
  }

  void writeHeader(const ITraceInfo* source, double startDays) override { WriteHeader(get(), source, startDays); }
  void writeComment(const std::string& text) override { WriteComment(get(), text.c_str()); }
  void writeMessage(const IMessage* message) override { WriteMessage(get(), message); }
  void close() override { SetActive(get(), false); }

 private:
  Owned<Writer, Destruct> writer_;
};

using TrcTarget = FamilyWriter<TrcWriter, XLATR_WRITER_FUNCTIONS(TrcWriter)>;
using CsvTarget = FamilyWriter<CsvWriter, XLATR_WRITER_FUNCTIONS(CsvWriter)>;
using LinTarget = FamilyWriter<KorlWriter, XLATR_WRITER_FUNCTIONS(KorlWriter)>;

template <class Target>
std::unique_ptr<TargetWriter> opened(std::unique_ptr<Target> target, const std::string& source) {
  target->open(source);
  return target;
}

}  // namespace

std::unique_ptr<TargetWriter> openTargetWriter(const TargetOptions& options, const std::string& source,
                                               const std::string& target) {
  switch (options.format) {
    case XLATR_FORMAT_TRC:
      return opened(std::make_unique<TrcTarget>(target, options.version), source);
    case XLATR_FORMAT_LIN:
      return opened(std::make_unique<LinTarget>(target, options.version), source);
    case XLATR_FORMAT_CSV: {
      auto writer = std::make_unique<CsvTarget>(target, options.version);
      CsvWriter_setSeparator(writer->get(), std::string(1, options.separator).c_str());
      return opened(std::move(writer), source);
    }
    default:
      return nullptr;
  }
}

}  // namespace xlatr::cli
