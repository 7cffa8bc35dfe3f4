// How far the conversions are, shown while they run.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

namespace xlatr::cli {

enum class ProgressForm : std::uint8_t { None, Bar, Json };

struct ProgressState {
  std::uint64_t bytesRead = 0;
  std::uint64_t bytesTotal = 0;  // 0 if nobody knows
  std::uint64_t frames = 0;
  double seconds = 0.0;
  std::size_t filesDone = 0;
  std::size_t files = 1;
};

// One line of at most this width: percent, rates, time left, file k of n; less of it where there is no room.
[[nodiscard]] std::string progressBar(const ProgressState& state, std::size_t width);
// One line for the log, without a bar.
[[nodiscard]] std::string progressLine(const ProgressState& state);
// One line of JSON.
[[nodiscard]] std::string progressJson(const ProgressState& state);

// Draws on stderr, where lines for the user go too: those of printLine make room for themselves. Any thread.
class Progress {
 public:
  Progress(ProgressForm form, std::size_t files, std::uint64_t bytesTotal);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Of a file that is at work: what has come to it since the last call.
  void add(std::uint64_t bytes, std::uint64_t frames);
  void fileDone();
  // Writes a line to stderr.
  void printLine(const std::string& line);

 private:
  void show(bool always);
  void wipe();

  std::mutex mutex_;
  const ProgressForm form_;
  ProgressState state_;
  std::string drawn_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point shown_ = start_;
};

}  // namespace xlatr::cli
