#include "formats/csv/csv_table_frames.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "formats/csv/csv_record_input.hpp"
#include "formats/csv/csv_table.hpp"
#include "formats/csv/csv_table_head.hpp"
#include "frames/frame_comment.hpp"
#include "io/buffered_output.hpp"
#include "util/text_buffer.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

constexpr double kTableVersion = 2.0;

// The header row, with its empty lines before it.
CsvTableColumns columnsOf(CsvRecordInput& input) {
  CsvRecord record;
  while (input.nextLine(record)) {
    if (auto columns = CsvTableColumns::parse(record.text)) {
      input.setSeparator(columns->separator());
      return *std::move(columns);
    }
  }
  return *CsvTableColumns::parse("time_ns");  // the file has changed since somebody looked
}

class TableSource final : public FrameSource {
 public:
  explicit TableSource(const InputSource& source) : input_(source), rows_(columnsOf(input_)) {
    head_.path = source.name();
    head_.format = XLATR_FORMAT_CSV;
    head_.version = kTableVersion;
    held_ = input_.next(record_);
    if (held_ && isHeadRow()) {
      held_ = input_.next(record_);
    }
  }

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override { return input_.position(); }

  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    for (; held_ && !batch.full(); held_ = input_.next(record_)) {
      // Empty lines say nothing, as nowhere in a text trace.
      if (!record_.text.empty()) {
        append(batch, account);
      }
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  // Whether the record is the row that says when the trace started, which is then taken note of.
  [[nodiscard]] bool isHeadRow() {
    frame_.reset();
    return !record_.broken && rows_.read(record_.text, frame_) && frame_.kind == FrameKind::Comment &&
           readCsvTableHead(*frame_.text, head_);
  }

  void append(FrameBatch& batch, Account& account) {
    frame_.reset();
    if (record_.broken || !rows_.read(record_.text, frame_)) {
      frame_.reset();
      frame_.kind = FrameKind::Comment;
      frame_.timeNs = timeNs_;
      frame_.text = record_.text;
      account.note(Remark::LineNotUnderstood, record_.line, record_.text);
    } else if (frame_.kind == FrameKind::Comment && looksLikeFrameComment(*frame_.text)) {
      takeFrameComment();
    }
    timeNs_ = frame_.timeNs;
    frame_.place = record_.line;
    if (frame_.text) {
      frame_.text = usableText(*frame_.text, account);
    }
    batch.append(frame_);
  }

  // The comment stands for a frame that a row can't hold, or for a comment that looks like that.
  void takeFrameComment() {
    Frame meant;
    if (!comments_.read(*frame_.text, meant)) {
      return;
    }
    frame_ = meant;
    if (frame_.kind == FrameKind::Comment && !frame_.text) {
      frame_.text = std::string_view();
    }
  }

  std::string_view usableText(std::string_view bytes, Account& account) {
    const std::string_view text = asUtf8(bytes, converted_);
    if (text.size() <= FrameBatch::kLongestText) {
      return text;
    }
    account.note(Remark::TextCut, record_.line);
    return text.substr(0, utf8Boundary(text, FrameBatch::kLongestText));
  }

  CsvRecordInput input_;
  CsvTableRows rows_;
  StreamHead head_;
  CsvRecord record_;
  bool held_ = false;        // there is a record that was not yet handed out
  std::int64_t timeNs_ = 0;  // of the last frame
  Frame frame_;
  FrameCommentReader comments_;
  std::string converted_;
};

class TableSink final : public FrameSink {
 public:
  TableSink(const OutputTarget& target, const StreamHead& head, const FrameCapacity& capacity) : capacity_(capacity) {
    output_.open(target);
    appendCsvTableHeader(out_);
    appendCsvTableHead(text_, head);
    appendComment(0);
  }

  void write(const FrameBatch& batch, Account& account) override {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      batch.get(row, frame_);
      write(frame_, account);
      if (out_.size() >= kBlock) {
        hand();
      }
    }
    hand();
  }

  void close() override {
    hand();
    output_.close();
  }

  [[nodiscard]] std::uint64_t bytesWritten() const override { return output_.position() + out_.size(); }

 private:
  static constexpr std::size_t kBlock = std::size_t{1} << 16;

  void hand() {
    output_.write(out_.view());
    out_.clear();
  }

  // Changes the frame.
  void write(Frame& frame, Account& account) {
    if (const std::optional<Remark> reason = whyNotHeld(capacity_, frame)) {
      account.addCommented(*reason, frame.place);
      appendFrameRow(frame);
      return;
    }
    account.addWritten(1);
    if (frame.kind == FrameKind::Comment && !isRow(frame)) {
      appendFrameRow(frame);
      return;
    }
    reduceTo(capacity_, frame, account);
    appendCsvTableRow(out_, frame);
  }

  // Whether the row of a comment says all of it, and is not taken for that of another frame.
  [[nodiscard]] static bool isRow(const Frame& frame) {
    constexpr std::size_t kLongestPayload = 2048;
    constexpr std::uint16_t kBoth = frame_flag::kReceived | frame_flag::kTransmitted;
    return frame.text && !looksLikeFrameComment(*frame.text) && frame.data.size() <= kLongestPayload &&
           (frame.flags & kBoth) != kBoth && frame.timeNs >= -kFarthestNs && frame.timeNs <= kFarthestNs;
  }

  // A comment for a frame.
  void appendFrameRow(const Frame& frame) {
    text_.clear();
    appendFrameComment(text_, frame);
    appendComment(frame.timeNs >= -kFarthestNs && frame.timeNs <= kFarthestNs ? frame.timeNs : 0);
  }

  void appendComment(std::int64_t timeNs) {
    Frame comment;
    comment.kind = FrameKind::Comment;
    comment.timeNs = timeNs;
    comment.text = text_.view();
    appendCsvTableRow(out_, comment);
  }

  const FrameCapacity& capacity_;
  BufferedOutput output_;
  TextBuffer out_;
  TextBuffer text_;
  Frame frame_;  // the one that is being written
};

}  // namespace

std::unique_ptr<FrameSource> openCsvTable(const InputSource& input) {
  return std::make_unique<TableSource>(input);
}

std::unique_ptr<FrameSink> createCsvTable(const OutputTarget& target, const StreamHead& head,
                                          const FrameCapacity& capacity) {
  return std::make_unique<TableSink>(target, head, capacity);
}

}  // namespace xlatr
