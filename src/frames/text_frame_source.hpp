// Frames of a text trace: what all formats share whose lines are frames, comments, or neither.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frames/frame_comment.hpp"
#include "frames/frame_stream.hpp"
#include "io/line_input.hpp"
#include "util/utf8.hpp"

namespace xlatr {

// The comments of most formats.
struct SemicolonComments {
  static constexpr std::string_view kCommentMark = ";";
};

// `Lines` knows the lines of one format:
// - `kCommentMark`: what a comment begins with.
// - `bool isHeader(std::string_view line)`: whether the line belongs to the header; it then takes note of it. The first
//   line that does not ends the header and is a line like those after it.
// - `static bool headerGoesOnAfter(std::string_view line)`, where a format has it: whether more of the header may
//   follow a line that is none of it. Such lines are kept, as long as they are few.
// - `void takeHead(StreamHead& head)`: tells what the header said.
// - `bool understand(std::string_view line, Frame& frame)`: whether the line is a frame, which it then fills. What the
//   frame refers to stays until the next call.
// - only if comments have no mark: `bool isComment(std::string_view line)`.
// A template, so that reading a line calls no virtual function.
template <class Lines>
class TextFrameSource final : public FrameSource {
 public:
  explicit TextFrameSource(const InputSource& source, Lines lines = Lines())
      : input_(source), lines_(std::move(lines)) {
    std::string_view line;
    while (input_.next(line)) {
      ++line_;
      const bool standsForFrame = isFrameComment(line);
      if (!standsForFrame && lines_.isHeader(line)) {
        continue;
      }
      kept_.push_back({line_, std::string(line)});
      if (standsForFrame || !headerGoesOnAfter(line)) {
        break;
      }
    }
    head_.path = source.name();
    lines_.takeHead(head_);
  }

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] std::uint64_t bytesRead() const override { return input_.position(); }

  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override {
    if (!kept_.empty()) {
      appendKept(batch, account);
    }
    std::string_view line;
    while (!batch.full() && input_.next(line)) {
      ++line_;
      append(line, line_, batch, account);
    }
    // Not even a header: what was to be copied or recorded here was not.
    if (line_ == 0 && !std::exchange(emptinessTold_, true)) {
      account.note(Remark::SourceCut, 1);
    }
    account.addRead(batch.size());
    return !batch.empty();
  }

 private:
  struct KeptLine {
    std::uint64_t number;
    std::string text;
  };

  // Whether more of the header may follow this line, which is the last one that was kept.
  bool headerGoesOnAfter(std::string_view line) {
    constexpr std::size_t kMostBytes = std::size_t{1} << 16;
    constexpr std::size_t kMostLines = 1000;
    if constexpr (requires { Lines::headerGoesOnAfter(line); }) {
      keptBytes_ += line.size();
      return Lines::headerGoesOnAfter(line) && keptBytes_ < kMostBytes && kept_.size() < kMostLines;
    } else {
      return false;
    }
  }

  void appendKept(FrameBatch& batch, Account& account) {
    for (const KeptLine& line : kept_) {
      append(line.text, line.number, batch, account);
    }
    kept_.clear();
  }

  // Empty and blank lines say nothing.
  void append(std::string_view line, std::uint64_t number, FrameBatch& batch, Account& account) {
    if (line.empty()) {
      return;
    }
    frame_.reset();
    if (isComment(line)) {
      takeComment(line.substr(Lines::kCommentMark.size()));
    } else if (!lines_.understand(line, frame_)) {
      if (line.find_first_not_of(" \t") == std::string_view::npos) {
        return;
      }
      frame_.reset();
      makeComment(line);
      account.note(Remark::LineNotUnderstood, number, line);
    }
    timeNs_ = frame_.timeNs;
    frame_.place = number;
    if (frame_.text) {
      frame_.text = usableText(*frame_.text, number, account);
    }
    batch.append(frame_);
  }

  [[nodiscard]] bool isComment(std::string_view line) const {
    if constexpr (requires { lines_.isComment(line); }) {
      return lines_.isComment(line);
    } else {
      return line.starts_with(Lines::kCommentMark);
    }
  }

  // Whether the line stands for a frame. Such a line is no header's, though it looks like one.
  [[nodiscard]] static bool isFrameComment(std::string_view line) {
    return line.starts_with(Lines::kCommentMark) && !isPlainComment(line.substr(Lines::kCommentMark.size()));
  }

  void takeComment(std::string_view text) {
    if (!frameComments_.read(text, frame_)) {
      frame_.reset();
      makeComment(text);
    } else if (frame_.kind == FrameKind::Comment) {
      frame_.timeNs = timeNs_;
    }
  }

  // A comment has no time of its own: it belongs to what stands before it.
  void makeComment(std::string_view text) {
    frame_.kind = FrameKind::Comment;
    frame_.timeNs = timeNs_;
    frame_.text = text;
  }

  std::string_view usableText(std::string_view bytes, std::uint64_t number, Account& account) {
    const std::string_view text = asUtf8(bytes, converted_);
    if (text.size() <= FrameBatch::kLongestText) {
      return text;
    }
    account.note(Remark::TextCut, number);
    return text.substr(0, utf8Boundary(text, FrameBatch::kLongestText));
  }

  LineInput input_;
  Lines lines_;
  StreamHead head_;
  std::vector<KeptLine> kept_;  // those that ended the header, or stood in it, and are no part of it
  std::size_t keptBytes_ = 0;
  std::uint64_t line_ = 0;  // the last one that was read, counted from 1
  bool emptinessTold_ = false;
  std::int64_t timeNs_ = 0;  // of the last frame
  Frame frame_;
  FrameCommentReader frameComments_;
  std::string converted_;
};

}  // namespace xlatr
