// Programs that this process starts.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace xlatr::platform {

// The exit code of a program that ended without one that could be read, or that was never started.
inline constexpr std::uint32_t kNoExitCode = 0xFFFFFFFF;

// Where a program finds its standard input and leaves its standard output. Its standard error is always ours.
enum class StandardStreams {
  Inherited,  // the same as ours
  Closed,     // nothing is to be read, and what it prints is lost
};

// Whether a program is told when this process ends or the handle goes.
enum class ProgramTie {
  None,
  Link,  // by a ParentLink, over which it also tells its exit code
};

// A handle to one started program. The program lives on when its handle goes. It is sure to leave nothing in the
// system's process table only if its end was seen through the handle. One thread at a time, but for awaitEnd and kill.
class Process {
 public:
  Process();
  ~Process();
  Process(Process&& other) noexcept;
  Process& operator=(Process&& other) noexcept;

  // Starts the program with the arguments as they are, without a command processor, in this process's environment and
  // directory. A name without a separator is searched for as the system does. The program gets the standard streams,
  // the link if it is to have one, and no other open file of ours. False if it can't be started; the handle then refers
  // to no program. A program that the handle referred to before is let go.
  [[nodiscard]] bool start(const std::string& program, std::span<const std::string> arguments,
                           StandardStreams streams = StandardStreams::Inherited, ProgramTie tie = ProgramTie::None);

  // The same with the standard output going to us and nothing to be read: waits without a limit for the program's end
  // and returns the first `most` bytes of what it printed; wait() then returns the exit code. Nothing if it can't be
  // started.
  [[nodiscard]] std::optional<std::string> run(const std::string& program, std::span<const std::string> arguments,
                                               std::size_t most);

  // True from a successful start until the handle is moved from, even after the program has ended.
  [[nodiscard]] bool isStarted() const { return state_ != nullptr; }

  // The exit code, or nothing if the program still runs after the limit; a limit of 0 only checks. May be called again,
  // even after the end. If the system ended the program by a signal, the code is 128 plus the number of the signal. If
  // the process ignores the ends of its programs (SIGCHLD), only a program with a link has an exit code.
  [[nodiscard]] std::optional<std::uint32_t> waitFor(std::chrono::milliseconds limit);

  // The same without a limit.
  [[nodiscard]] std::uint32_t wait();

  // Ends the program at once, if it still runs, and waits for that.
  void terminate();

  // Waits without a limit for the end of the program, which the members above have not seen yet and see afterwards.
  void awaitEnd() const;
  // Ends the program at once, without waiting, while another thread may be in awaitEnd.
  void kill() const;

 private:
  struct State;
  struct Launch;

  [[nodiscard]] bool start(const Launch& launch);
  bool reap();

  std::unique_ptr<State> state_;
};

}  // namespace xlatr::platform
