// Between frames and the rows of a table of version 1.0.
#pragma once

#include "formats/csv/csv_message.hpp"
#include "frames/frame.hpp"
#include "frames/frame_comment.hpp"

namespace xlatr {

// Whether the table has a type for this kind of frame, perhaps one that it shares with others.
[[nodiscard]] bool hasCsvType(FrameKind kind);

// Fills a row that is like a new one, but for what its table has, from a frame of such a kind. What the cells can't
// show of it, its text says: it is then the comment from which all of the frame comes back.
class CsvRowMaker {
 public:
  void giveRow(const Frame& frame, CsvMessage& row);

 private:
  TextBuffer comment_;
};

// Reads rows.
class CsvRowTaker {
 public:
  // Fills a frame that is like a new one from a valid row. It refers to the row and to this object. False, with the
  // frame in any state, for what no frame has.
  [[nodiscard]] bool takeRow(const CsvMessage& row, Frame& frame);

 private:
  FrameCommentReader comments_;
};

}  // namespace xlatr
