// How far the conversions are, shown while they run.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "xlatr/frames.h"

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
  // Makes room for lines on stdout. It comes back with the next that is added.
  void hide();

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

// One trace, or one job, of which the library tells how far it is. Must outlive it.
class Watch {
 public:
  explicit Watch(Progress& progress) : progress_(progress) {}

  // What the library calls, with the watch as its context: adds what has come since the last call, and cancels when
  // the program is asked to end.
  [[nodiscard]] static std::int32_t see(void* watch, const xlatr_job_progress* now);

 private:
  Progress& progress_;
  std::uint64_t bytes_ = 0;
  std::uint64_t frames_ = 0;
};

}  // namespace xlatr::cli
