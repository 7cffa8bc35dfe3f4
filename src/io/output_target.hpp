// What a trace is written to: a file of the system, or a caller that takes its bytes.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <utility>

#include "platform/files.hpp"

namespace xlatr {

// Takes bytes in order. None can be changed afterwards.
class OutputBytes {
 public:
  virtual ~OutputBytes() = default;
  OutputBytes(const OutputBytes&) = delete;
  OutputBytes& operator=(const OutputBytes&) = delete;

  // Raises std::ios_base::failure.
  virtual void write(std::span<const char> bytes) = 0;

 protected:
  OutputBytes() = default;
};

class OutputTarget {
 public:
  OutputTarget(std::string path)  // NOLINT(google-explicit-constructor): most are paths
      : path_(std::move(path)), name_(path_) {}
  OutputTarget(std::string path, platform::Creation creation, platform::Pipes pipes = platform::Pipes::Refuse)
      : path_(std::move(path)), name_(path_), creation_(creation), pipes_(pipes) {}
  // A file that was reserved, and that the user knows, or will know, under another name.
  OutputTarget(std::string path, std::string name)
      : path_(std::move(path)), name_(std::move(name)), creation_(platform::Creation::Reserved) {}
  OutputTarget(std::string name, std::shared_ptr<OutputBytes> bytes)
      : path_(std::move(name)), name_(path_), bytes_(std::move(bytes)) {}

  // Of the file; no meaning for other bytes.
  [[nodiscard]] const std::string& path() const { return path_; }
  // For the user.
  [[nodiscard]] const std::string& name() const { return name_; }
  // How a file comes to be; no meaning for other bytes.
  [[nodiscard]] platform::Creation creation() const { return creation_; }
  [[nodiscard]] platform::Pipes pipes() const { return pipes_; }
  // Null for a file.
  [[nodiscard]] const std::shared_ptr<OutputBytes>& bytes() const { return bytes_; }

 private:
  std::string path_;
  std::string name_;
  platform::Creation creation_ = platform::Creation::Replace;
  platform::Pipes pipes_ = platform::Pipes::Refuse;
  std::shared_ptr<OutputBytes> bytes_;
};

}  // namespace xlatr
