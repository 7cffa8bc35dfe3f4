// Writing a file, or bytes that a caller takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "io/output_target.hpp"
#include "platform/files.hpp"

namespace xlatr {

// Collects what is written and hands it to the system in blocks. One thread at a time. Failures are
// std::ios_base::failure, or what the bytes' own way of being written raises. After one, what was not yet written is
// dropped, and each later call raises the same again, up to and including close: whoever passes over a failure does not
// make a whole file of it.
class BufferedOutput {
 public:
  BufferedOutput() = default;
  // Closes; a failure to do so is not reported.
  ~BufferedOutput();
  BufferedOutput(BufferedOutput&&) = default;
  BufferedOutput& operator=(BufferedOutput&&) = default;

  // Creates the file, or empties an existing one.
  void open(const OutputTarget& target);
  [[nodiscard]] bool isOpen() const { return bytes_ != nullptr || file_.isOpen() || resting_; }
  void write(std::string_view bytes);
  // Sets the offset, from the start of the file, of the next write. What was written before goes to the system. Bytes
  // that are no file are written in order: the offset must be the one that they have reached.
  void seek(std::uint64_t offset);
  // The offset of the next write.
  [[nodiscard]] std::uint64_t position() const { return handed_ + used_; }
  // Hands all that was written to the system.
  void flush();
  // Flushes, and gives back the file and the buffer until the next write, which opens the file anew and goes on at its
  // end; a failure if somebody else has written to it meanwhile. Only for a file that is written in order.
  void rest();
  // Flushes and closes, whatever has failed before; no effect when no file is open.
  void close();

 private:
  void resume();
  void hand(std::span<const char> bytes);
  void remember();
  void requireWhole() const;

  std::string name_;
  std::string path_;
  platform::Creation creation_{};
  platform::File file_;
  std::shared_ptr<OutputBytes> bytes_;  // null for a file
  std::unique_ptr<char[]> buffer_;
  bool resting_ = false;
  std::size_t used_ = 0;
  std::uint64_t handed_ = 0;    // the offset at which the buffer begins
  std::exception_ptr failure_;  // the first one; the file then lacks something
};

}  // namespace xlatr
