#include "progress.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <vector>

#include "output.hpp"
#include "signals.hpp"
#include "terminal.hpp"

namespace xlatr::cli {
namespace {

// Rounded down: it is 100 only at the end.
std::size_t percentOf(const ProgressState& state) {
  if (state.filesDone == state.files) {
    return 100;
  }
  if (state.bytesTotal == 0) {
    return 0;
  }
  const double share = static_cast<double>(state.bytesRead) / static_cast<double>(state.bytesTotal);
  return std::min<std::size_t>(99, static_cast<std::size_t>(100.0 * share));
}

double perSecond(std::uint64_t count, double seconds) {
  return seconds > 0.0 ? static_cast<double>(count) / seconds : 0.0;
}

std::string timeText(double seconds) {
  const auto whole = static_cast<std::uint64_t>(std::min(std::ceil(seconds), 359'999.0));
  const auto two = [](std::uint64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); };
  const std::string minutes = std::to_string(whole / 60 % 60);
  return whole < 3600 ? minutes + ":" + two(whole % 60)
                      : std::to_string(whole / 3600) + ":" + two(whole / 60 % 60) + ":" + two(whole % 60);
}

std::string leftText(const ProgressState& state) {
  if (state.bytesTotal == 0 || state.bytesRead == 0) {
    return {};
  }
  const auto left = static_cast<double>(state.bytesTotal - std::min(state.bytesTotal, state.bytesRead));
  return timeText(state.seconds * left / static_cast<double>(state.bytesRead)) + " left";
}

// What stands after the bar, the most important first.
std::vector<std::string> pieces(const ProgressState& state) {
  std::vector<std::string> all;
  if (state.bytesTotal != 0) {
    const std::string percent = std::to_string(percentOf(state));
    all.push_back(std::string(3 - std::min<std::size_t>(3, percent.size()), ' ') + percent + " %");
  }
  if (state.files > 1) {
    all.push_back("file " + std::to_string(std::min(state.filesDone + 1, state.files)) + " of " +
                  std::to_string(state.files));
  }
  all.push_back(leftText(state));
  all.push_back(countText(static_cast<std::uint64_t>(perSecond(state.frames, state.seconds))) + " frames/s");
  all.push_back(sizeText(static_cast<std::uint64_t>(perSecond(state.bytesRead, state.seconds))) + "/s");
  std::erase(all, std::string());
  return all;
}

std::string joined(const std::vector<std::string>& pieces) {
  std::string text;
  for (const std::string& piece : pieces) {
    text += (text.empty() ? "" : "  ") + piece;
  }
  return text;
}

}  // namespace

std::string progressBar(const ProgressState& state, std::size_t width) {
  constexpr std::size_t kFewestCells = 10;
  constexpr std::size_t kMostCells = 40;
  constexpr std::size_t kAround = 4;  // the brackets, and two blanks before the text
  const std::size_t bar = state.bytesTotal == 0 ? 0 : kAround + kFewestCells;
  std::vector<std::string> all = pieces(state);
  while (all.size() > 1 && joined(all).size() + bar > width) {
    all.pop_back();
  }
  std::string text = joined(all).substr(0, width);
  if (bar == 0 || text.size() + bar > width) {
    return text;
  }
  const std::size_t cells = std::min(kMostCells, width - text.size() - kAround);
  const std::size_t filled = percentOf(state) * cells / 100;
  return "[" + std::string(filled, '#') + std::string(cells - filled, '.') + "]  " + text;
}

std::string progressLine(const ProgressState& state) {
  return countText(state.frames) + " frames, " + joined(pieces(state));
}

std::string progressJson(const ProgressState& state) {
  const auto number = [](const char* name, std::uint64_t value) {
    return "\"" + std::string(name) + "\":" + std::to_string(value) + ",";
  };
  return "{" + number("bytes_read", state.bytesRead) + number("bytes_total", state.bytesTotal) +
         number("frames_read", state.frames) + number("files_done", state.filesDone) + number("files", state.files) +
         "\"seconds\":" + std::to_string(static_cast<std::uint64_t>(state.seconds)) + "." +
         std::to_string(static_cast<std::uint64_t>(state.seconds * 10) % 10) + "}";
}

Progress::Progress(ProgressForm form, std::size_t files, std::uint64_t bytesTotal) : form_(form) {
  state_.files = files;
  state_.bytesTotal = bytesTotal;
}

Progress::~Progress() {
  const std::lock_guard lock(mutex_);
  wipe();
}

void Progress::add(std::uint64_t bytes, std::uint64_t frames) {
  const std::lock_guard lock(mutex_);
  state_.bytesRead += bytes;
  state_.frames += frames;
  show(false);
}

void Progress::fileDone() {
  const std::lock_guard lock(mutex_);
  ++state_.filesDone;
  show(state_.filesDone == state_.files);
}

void Progress::printLine(const std::string& line) {
  const std::lock_guard lock(mutex_);
  wipe();
  std::cerr << line + "\n" << std::flush;
}

void Progress::hide() {
  const std::lock_guard lock(mutex_);
  wipe();
}

void Progress::show(bool always) {
  constexpr std::chrono::milliseconds kBetween{100};
  const auto now = std::chrono::steady_clock::now();
  state_.seconds = std::chrono::duration<double>(now - start_).count();
  if (takeProgressRequest()) {
    wipe();
    std::cerr << "xlatr: " + progressLine(state_) + "\n" << std::flush;
  }
  if (!always && now - shown_ < kBetween) {
    return;
  }
  shown_ = now;
  if (form_ == ProgressForm::Json) {
    std::cerr << progressJson(state_) + "\n" << std::flush;
  }
  if (form_ != ProgressForm::Bar) {
    return;
  }
  // The last column stays free: some terminals wrap when it is written.
  std::string text = progressBar(state_, terminalWidth() - 1);
  const std::size_t blanks = drawn_.size() - std::min(drawn_.size(), text.size());
  std::cerr << '\r' + text + std::string(blanks, ' ') + (blanks != 0 ? '\r' + text : "") << std::flush;
  drawn_ = std::move(text);
}

// Blanks rather than an escape sequence: every terminal knows those.
void Progress::wipe() {
  if (!drawn_.empty()) {
    std::cerr << '\r' + std::string(drawn_.size(), ' ') + '\r' << std::flush;
    drawn_.clear();
  }
}

std::int32_t Watch::see(void* watch, const xlatr_job_progress* now) {
  Watch& self = *static_cast<Watch*>(watch);
  self.progress_.add(now->bytes_read - self.bytes_, now->frames_read - self.frames_);
  self.bytes_ = now->bytes_read;
  self.frames_ = now->frames_read;
  return interruption() ? 1 : 0;
}

}  // namespace xlatr::cli
