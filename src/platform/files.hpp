// Files as the operating system gives them: whether they are there, and raw reading and writing with 64-bit offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace xlatr::platform {

// Whether there is something at the path that can hold data: a file or a device, but no folder.
[[nodiscard]] bool fileExists(const std::string& path);
// Bytes; 0 if the system does not say.
[[nodiscard]] std::uint64_t fileSize(const std::string& path);
// No effect if there is no file.
void removeFile(const std::string& path);

// One open file. Closed by its destructor. Failures are std::ios_base::failure with the path and the system's reason in
// the text. On a file that is not open only isOpen and close may be called.
class File {
 public:
  File() = default;
  ~File();
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;

  // `path` must be a regular file: a folder, a pipe and a device are a failure here and not at the first read.
  [[nodiscard]] static File openForReading(const std::string& path);
  // Creates the file, or empties it if it exists.
  [[nodiscard]] static File createForWriting(const std::string& path);

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
  // Fills as much of `bytes` as the file still has and returns how much that was; 0 at the end.
  [[nodiscard]] std::size_t read(std::span<char> bytes);
  // Writes all of `bytes`.
  void write(std::span<const char> bytes);
  // Sets the offset, from the start of the file, of the next read or write.
  void seek(std::uint64_t offset);
  // Raises what the system reports only now, such as a full disk behind a network; the file is closed all the same.
  void close();

 private:
  File(int descriptor, std::string path);
  [[noreturn]] void fail(const char* action) const;

  int descriptor_ = -1;
  std::string path_;
};

}  // namespace xlatr::platform
