// Frames as comments: what stands in a text trace for a frame that its format has no line for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frames/frame.hpp"
#include "util/text_buffer.hpp"

namespace xlatr {

// Appends the text of a comment that stands for a frame and from which all of the frame comes back:
// " xlatr: data time=1.500000000 bus=2 id=1A flags=extended,fd dlc=9 data=0011 error_type=1 text=words". What is 0 or
// missing is left out, but for the time. It is the last thing of the line; line ends and backslashes in it are escaped.
void appendFrameComment(TextBuffer& out, const Frame& frame);

// Reads such comments.
class FrameCommentReader {
 public:
  // Fills a frame, which must be like a new one, from a comment's text. Data and text of the frame stay until the next
  // call. False, with the frame in any state, for every other text.
  [[nodiscard]] bool read(std::string_view comment, Frame& frame);

 private:
  [[nodiscard]] bool readField(std::string_view name, std::string_view value, Frame& frame);
  [[nodiscard]] bool readData(std::string_view digits, Frame& frame);

  std::vector<std::uint8_t> data_;
  std::string text_;
};

// Whether a comment's text begins like one that stands for a frame.
[[nodiscard]] bool looksLikeFrameComment(std::string_view text);

// Whether a comment's text can be written as it is: it has one line, and does not look like a frame's.
[[nodiscard]] bool isPlainComment(std::string_view text);

// Whether a comment says more than its text, all of which stands in a plain one.
[[nodiscard]] bool saysMoreThanText(const Frame& frame);

}  // namespace xlatr
