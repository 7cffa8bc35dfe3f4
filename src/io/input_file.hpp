// What a trace is read from: a file of the system, or bytes that a caller hands out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "platform/files.hpp"

namespace xlatr {

// Bytes that are no file. Any number of InputFiles may read the same ones, each at its own place, one at a time.
class InputBytes {
 public:
  virtual ~InputBytes() = default;
  InputBytes(const InputBytes&) = delete;
  InputBytes& operator=(const InputBytes&) = delete;

  // Fills as much of `bytes` as there still is from this offset on and returns how much that was; 0 at the end. Raises
  // std::ios_base::failure.
  [[nodiscard]] virtual std::size_t readAt(std::uint64_t offset, std::span<char> bytes) = 0;
  // Nothing if nobody knows.
  [[nodiscard]] virtual std::optional<std::uint64_t> size() const = 0;

 protected:
  InputBytes() = default;
};

// Bytes that come in order and can't be asked for again, such as those of a pipe. What was read is kept as long as it
// is among the first ones, which are those that tell the format, or in the last block; the rest is gone.
class SequentialBytes : public InputBytes {
 public:
  static constexpr std::size_t kFirstBytes = std::size_t{1} << 20;
  static constexpr std::size_t kLastBytes = std::size_t{256} * 1024;

  [[nodiscard]] std::size_t readAt(std::uint64_t offset, std::span<char> bytes) override;

 protected:
  // `name` begins the text of a failure.
  explicit SequentialBytes(std::string name);

  // Fills as much of `bytes` as is there and returns how much that was; 0 at the end. Raises std::ios_base::failure.
  [[nodiscard]] virtual std::size_t readNext(std::span<char> bytes) = 0;

 private:
  // The bytes that are held, from one of the offsets on.
  [[nodiscard]] std::span<const char> heldAt(std::uint64_t offset) const;
  [[nodiscard]] bool readBlock();

  std::string name_;
  std::unique_ptr<char[]> first_;  // those before kFirstBytes
  std::unique_ptr<char[]> last_;   // one block, which ends at end_
  std::size_t lastCount_ = 0;
  std::uint64_t end_ = 0;  // how many were read so far
};

// A name, and what it stands for: the file of that name if there are no other bytes.
class InputSource {
 public:
  InputSource(std::string path) : name_(std::move(path)) {}  // NOLINT(google-explicit-constructor): most are paths
  InputSource(std::string name, std::shared_ptr<InputBytes> bytes) : name_(std::move(name)), bytes_(std::move(bytes)) {}

  // For the user.
  [[nodiscard]] const std::string& name() const { return name_; }
  // Null for a file.
  [[nodiscard]] const std::shared_ptr<InputBytes>& bytes() const { return bytes_; }
  [[nodiscard]] bool exists() const { return bytes_ != nullptr || platform::fileExists(name_); }
  // In bytes. Nothing if nobody knows, which is never so of a file: std::ios_base::failure if the system does not say.
  [[nodiscard]] std::optional<std::uint64_t> size() const {
    return bytes_ != nullptr ? bytes_->size() : platform::fileSize(name_);
  }

 private:
  std::string name_;
  std::shared_ptr<InputBytes> bytes_;
};

// One place in what is read. Failures are std::ios_base::failure.
class InputFile {
 public:
  explicit InputFile(const InputSource& source)
      : bytes_(source.bytes()),
        file_(bytes_ != nullptr ? platform::File() : platform::File::openForReading(source.name())) {}

  // Fills as much of `bytes` as there still is and returns how much that was; 0 at the end.
  [[nodiscard]] std::size_t read(std::span<char> bytes) {
    if (bytes_ == nullptr) {
      return file_.read(bytes);
    }
    const std::size_t count = bytes_->readAt(offset_, bytes);
    offset_ += count;
    return count;
  }
  // Sets the offset, from the start, of the next read. It may lie beyond the end.
  void seek(std::uint64_t offset) {
    if (bytes_ == nullptr) {
      file_.seek(offset);
    }
    offset_ = offset;
  }

 private:
  std::shared_ptr<InputBytes> bytes_;  // null for a file
  platform::File file_;
  std::uint64_t offset_ = 0;  // of other bytes
};

}  // namespace xlatr
