// Reading a text file line by line.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "io/input_file.hpp"

namespace xlatr {

// Hands out the lines of a file as views into its own buffer, which holds one block of the file, or one line if that
// is longer. One thread at a time. Failures are std::ios_base::failure.
class LineInput {
 public:
  explicit LineInput(const InputSource& source);

  // Goes on reading at this offset in bytes.
  void seek(std::uint64_t offset);

  // The next line without its line end (a line feed and a carriage return directly before it); returns false at the end
  // of the file. The view is valid until the next call. The last line may lack a line end, but is not empty then.
  [[nodiscard]] bool next(std::string_view& line);

  // The offset after the last line handed out, line end included.
  [[nodiscard]] std::uint64_t position() const { return position_; }

 private:
  [[nodiscard]] bool refill();

  InputFile file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_;
  std::size_t begin_ = 0;    // first byte not handed out
  std::size_t scanned_ = 0;  // first byte not searched for a line feed
  std::size_t end_ = 0;      // after the last byte held
  std::uint64_t position_ = 0;
};

}  // namespace xlatr
