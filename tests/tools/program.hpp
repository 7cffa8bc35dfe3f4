// Runs the built command-line program in its own folder.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/temp_folder.hpp"

namespace xlatr::cli {

// What a program left that has ended. If a signal ended it, the exit code is 128 plus the signal.
struct Ended {
  int exitCode = -1;
  std::string output;
  std::string errors;
};

// The folder in which the program runs.
class Workspace {
 public:
  Workspace();
  // For another copy of the program than the built one.
  explicit Workspace(std::string program) : program_(std::move(program)) {}

  // The path of a name in the folder.
  [[nodiscard]] std::string path() const { return folder_.path().string(); }
  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return folder_.path() / name; }

  void write(std::string_view name, std::string_view contents) const {
    static_cast<void>(folder_.write(name, contents));
  }
  [[nodiscard]] std::string read(std::string_view name) const { return folder_.read(name); }
  // The names in the folder, sorted.
  [[nodiscard]] std::vector<std::string> names() const;

  // Runs the program to its end.
  [[nodiscard]] Ended run(const std::vector<std::string>& arguments) const;

  // The same by a line for the shell, in which xlatr is the program.
  [[nodiscard]] Ended shell(const std::string& line) const;

  // Starts it with stderr on the descriptor `errors`, and waits for its end: the exit code.
  [[nodiscard]] pid_t start(const std::vector<std::string>& arguments, int errors) const;
  [[nodiscard]] static int wait(pid_t program);

 private:
  [[nodiscard]] Ended runWords(std::vector<std::string> words) const;
  [[nodiscard]] pid_t startWords(std::vector<std::string> words, int errors) const;

  std::string program_;
  test::TempFolder folder_;
};

// A TRC trace of version 2.1 with one frame on each of the buses.
[[nodiscard]] std::string traceOfBuses(const std::vector<int>& buses);

// Whether the text is exactly one line that starts with the program's name.
[[nodiscard]] bool isOneErrorLine(std::string_view text);

}  // namespace xlatr::cli
