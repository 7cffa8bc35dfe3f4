// Writing a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/files.hpp"

namespace xlatr {

// Collects what is written and hands it to the system in blocks. One thread at a time. Failures are
// std::ios_base::failure; after one, what was not yet written is dropped, so that closing does not fail again.
class BufferedOutput {
 public:
  BufferedOutput() = default;
  // Closes; a failure to do so is not reported.
  ~BufferedOutput();
  BufferedOutput(BufferedOutput&&) = default;
  BufferedOutput& operator=(BufferedOutput&&) = default;

  // Creates the file, or empties an existing one.
  void open(const std::string& path);
  [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
  void write(std::string_view bytes);
  // Sets the offset, from the start of the file, of the next write. What was written before goes to the system.
  void seek(std::uint64_t offset);
  // Hands all that was written to the system.
  void flush();
  // Flushes and closes; no effect when no file is open.
  void close();

 private:
  platform::File file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t used_ = 0;
};

}  // namespace xlatr
