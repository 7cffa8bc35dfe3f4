// Files as the operating system gives them: whether they are there, and raw reading and writing with 64-bit offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace xlatr::platform {

// Whether there is something at the path that can hold data: a file or a device, but no folder.
[[nodiscard]] bool fileExists(const std::string& path);
// What stands at a path, behind its links. A pipe is one that has a name, or a socket; a device is all else that is
// neither a file nor a folder. A broken link is one that leads nowhere. What this process may not look at is nothing;
// where the system fails to say, here and in what follows, it is a std::ios_base::failure.
enum class PathKind : std::uint8_t { Nothing, File, Folder, Device, Pipe, BrokenLink };
[[nodiscard]] PathKind kindOfPath(const std::string& path);
// Whether both paths lead to one file, however they are spelled and by whatever links; false unless both are files.
[[nodiscard]] bool isSameFile(const std::string& one, const std::string& other);
// The path itself if there are no links in it, or if there is nothing behind them.
[[nodiscard]] std::string pathBehindLinks(const std::string& path);
// How many bytes stand there; nothing if there is nothing at the path that can hold data.
[[nodiscard]] std::optional<std::uint64_t> dataSize(const std::string& path);
// Bytes; 0 for what has no size, such as a pipe. std::ios_base::failure if the system does not say.
[[nodiscard]] std::uint64_t fileSize(const std::string& path);
// No effect if there is no file.
void removeFile(const std::string& path);
// In one step: under the new name there is the old file or the whole new one at any time. Both are on the same volume.
// A file that is replaced gives its permissions to the one that replaces it. std::ios_base::failure on failure.
void replaceFile(const std::string& path, const std::string& by);
// The same where nothing may be replaced. False, with all as it was, if something has the name already.
[[nodiscard]] bool nameFile(const std::string& path, const std::string& by);

// What becomes of a path that is to be written.
enum class Creation : std::uint8_t {
  Replace,   // a file that is there is emptied, a device is written as it is
  New,       // nothing may be there, not even a broken link
  Reserved,  // a file that the caller has locked (lockForWriting) is emptied
};
// A pipe may make its writer wait for ever: only who is ready for that takes one.
enum class Pipes : std::uint8_t { Refuse, Take };

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
  // Nobody else can open a file so until it is closed: who tries learns that it is busy, and leaves it as it is. A pipe
  // is taken only while somebody reads from it.
  [[nodiscard]] static File createForWriting(const std::string& path, Creation creation = Creation::Replace,
                                             Pipes pipes = Pipes::Refuse);

  // Opens a file that was created so and closed with this size, to go on at its end. A failure if somebody else has
  // written to it since then, or does.
  [[nodiscard]] static File openForAppending(const std::string& path, Creation creation, std::uint64_t size);

  // Creates the file, or opens it as it is, and locks it until it is closed or the process ends, however it ends. A
  // file that is not open if somebody else has it locked. The lock binds only those who ask for it.
  [[nodiscard]] static File lockForWriting(const std::string& path);

  // A file for reading and writing that has no name, is nobody else's, and is gone when it is closed. One that is not
  // open if the system gives none.
  [[nodiscard]] static File createTemporary();

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
  // Fills as much of `bytes` as the file still has and returns how much that was; 0 at the end. A file that ends before
  // the end that it had when it was opened is a failure: somebody has cut it since then.
  [[nodiscard]] std::size_t read(std::span<char> bytes);
  // Writes all of `bytes`. Neither the limit of a file's size nor a pipe that nobody reads any more ends the process:
  // both are failures like any other.
  void write(std::span<const char> bytes);
  // Sets the offset, from the start of the file, of the next read or write.
  void seek(std::uint64_t offset);
  // Raises what the system reports only now, such as a full disk behind a network; the file is closed all the same.
  void close();

 private:
  // Not open if the system refuses. The flags are the system's.
  File(const std::string& path, int flags);

  void makeWaiting() const;
  [[nodiscard]] bool release() noexcept;
  [[noreturn]] void fail(const char* action) const;

  int descriptor_ = -1;
  bool locked_ = false;
  std::string path_;
  std::uint64_t offset_ = 0;      // of the next read
  std::uint64_t sizeAtOpen_ = 0;  // of a file that is read
};

}  // namespace xlatr::platform
