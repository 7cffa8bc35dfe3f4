// Writing a text trace: what all formats share whose lines are frames or comments.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "frames/frame_comment.hpp"
#include "frames/frame_sink.hpp"
#include "frames/frame_stream.hpp"
#include "io/buffered_output.hpp"
#include "io/output_target.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

inline constexpr std::string_view kLineEnd = "\r\n";  // on every platform

// `Lines` prints the lines of one format:
// - `Lines(const OutputTarget& target, const StreamHead& head, const SinkSettings& settings)`.
// - `const FrameCapacity& capacity()`: what the files of its version can hold.
// - `kCommentMark`: what a comment begins with.
// - `void appendHeader(TextBuffer& out)`: appends the lines before the first frame, each with kLineEnd.
// - `void appendFrame(TextBuffer& out, const Frame& frame)`: appends the line of a frame as reduceTo() made it, with
//   kLineEnd. Never a comment.
// - `void appendEnd(TextBuffer& out)`: appends the lines after the last frame.
// - only if comments have no mark: `bool standsAsComment(std::string_view line)`: whether the text of a comment is read
//   as one, wherever the line stands.
// A template, so that writing a line calls no virtual function.
template <class Lines>
class TextFrameSink final : public FrameSink {
 public:
  TextFrameSink(const OutputTarget& target, const StreamHead& head, const SinkSettings& settings)
      : lines_(target, head, settings) {
    output_.open(target);
    lines_.appendHeader(out_);
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
    lines_.appendEnd(out_);
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
    const FrameCapacity& capacity = lines_.capacity();
    if (const std::optional<Remark> reason = whyNotHeld(capacity, frame)) {
      appendFrameLine(frame);
      account.addCommented(*reason, frame.place);
      return;
    }
    account.addWritten(1);
    if (frame.kind == FrameKind::Comment) {
      appendComment(frame);
      return;
    }
    reduceTo(capacity, frame, account);
    lines_.appendFrame(out_, frame);
    inHeader_ = false;
  }

  // A plain comment right after the header would be taken for a line of it.
  void appendComment(const Frame& frame) {
    const std::string_view text = frame.text.value_or(std::string_view());
    if (!standsAsComment(text) || saysMoreThanText(frame)) {
      appendFrameLine(frame);
      return;
    }
    out_.append(Lines::kCommentMark);
    out_.append(text);
    out_.append(kLineEnd);
  }

  [[nodiscard]] bool standsAsComment(std::string_view text) const {
    if constexpr (requires { lines_.standsAsComment(text); }) {
      return isPlainComment(text) && lines_.standsAsComment(text);
    } else {
      return !inHeader_ && isPlainComment(text);
    }
  }

  void appendFrameLine(const Frame& frame) {
    out_.append(Lines::kCommentMark);
    appendFrameComment(out_, frame);
    out_.append(kLineEnd);
    inHeader_ = false;
  }

  Lines lines_;
  BufferedOutput output_;
  TextBuffer out_;
  Frame frame_;  // the one that is being written
  bool inHeader_ = true;
};

}  // namespace xlatr
