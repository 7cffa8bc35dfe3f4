#include "platform/process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>
#include <utility>
#include <vector>

namespace xlatr::platform {

struct Process::State {
  pid_t id = 0;
  std::optional<std::uint32_t> exitCode;
};

struct Process::Launch {
  const std::string& program;
  std::span<const std::string> arguments;
  StandardStreams streams;
  int output = -1;  // the descriptor that gets the standard output instead, if any
};

namespace {

constexpr int kFirstPrivateDescriptor = STDERR_FILENO + 1;
constexpr std::uint32_t kSignalBase = 128;
constexpr std::chrono::milliseconds kPollInterval(1);

class FileActions {
 public:
  FileActions() : made_(::posix_spawn_file_actions_init(&actions_) == 0) {}
  ~FileActions() {
    if (made_) {
      ::posix_spawn_file_actions_destroy(&actions_);
    }
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  bool openNothing(int descriptor, int flags) {
    return made_ && ::posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", flags, 0) == 0;
  }
  bool duplicate(int descriptor, int target) {
    return made_ && ::posix_spawn_file_actions_adddup2(&actions_, descriptor, target) == 0;
  }
  bool closeFrom(int descriptor) {
    return made_ && ::posix_spawn_file_actions_addclosefrom_np(&actions_, descriptor) == 0;
  }
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
  bool made_;
};

class SpawnAttributes {
 public:
  SpawnAttributes() : made_(::posix_spawnattr_init(&attributes_) == 0) {}
  ~SpawnAttributes() {
    if (made_) {
      ::posix_spawnattr_destroy(&attributes_);
    }
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  bool unblockSignals() {
    sigset_t none;
    ::sigemptyset(&none);
    return made_ && ::posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
           ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK) == 0;
  }
  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
  bool made_;
};

// What a program prints. Reading never blocks for longer than asked.
class Pipe {
 public:
  Pipe() {
    if (::pipe2(ends_.data(), O_CLOEXEC) != 0) {
      ends_ = {-1, -1};
    }
  }
  ~Pipe() {
    closeWriteEnd();
    if (isOpen()) {
      ::close(ends_[0]);
    }
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  [[nodiscard]] bool isOpen() const { return ends_[0] >= 0; }
  [[nodiscard]] int writeEnd() const { return ends_[1]; }
  void closeWriteEnd() {
    if (ends_[1] >= 0) {
      ::close(std::exchange(ends_[1], -1));
    }
  }
  [[nodiscard]] bool atEnd() const { return atEnd_; }

  // Appends what there is, but only until `text` has the size `most`; the rest is lost. False if there was nothing
  // within the limit.
  bool read(std::string& text, std::size_t most, std::chrono::milliseconds limit) {
    pollfd wanted{.fd = ends_[0], .events = POLLIN, .revents = 0};
    if (atEnd_ || ::poll(&wanted, 1, static_cast<int>(limit.count())) <= 0) {
      return false;
    }
    std::array<char, 4096> piece;
    const ssize_t count = ::read(ends_[0], piece.data(), piece.size());
    if (count <= 0) {
      atEnd_ = count == 0 || errno != EINTR;
      return false;
    }
    text.append(piece.data(), std::min(static_cast<std::size_t>(count), most - std::min(most, text.size())));
    return true;
  }

 private:
  std::array<int, 2> ends_{-1, -1};
  bool atEnd_ = false;
};

// The exit code if the program has ended, even if nobody knows it any more: a host that ignores SIGCHLD or reaps all
// children takes it from us.
std::optional<std::uint32_t> reap(pid_t id, int options) {
  int status = 0;
  pid_t answer = 0;
  do {
    answer = ::waitpid(id, &status, options);
  } while (answer == -1 && errno == EINTR);
  if (answer == 0) {
    return std::nullopt;
  }
  if (answer == id && WIFEXITED(status)) {
    return static_cast<std::uint32_t>(WEXITSTATUS(status));
  }
  if (answer == id && WIFSIGNALED(status)) {
    return kSignalBase + static_cast<std::uint32_t>(WTERMSIG(status));
  }
  return kNoExitCode;
}

}  // namespace

Process::Process() = default;
Process::Process(Process&& other) noexcept = default;

Process& Process::operator=(Process&& other) noexcept {
  Process moved(std::move(other));
  std::swap(state_, moved.state_);
  return *this;
}

Process::~Process() {
  if (state_ && !state_->exitCode) {
    static_cast<void>(reap(state_->id, WNOHANG));
  }
}

bool Process::start(const std::string& program, std::span<const std::string> arguments, StandardStreams streams) {
  return start(Launch{.program = program, .arguments = arguments, .streams = streams});
}

bool Process::start(const Launch& launch) {
  *this = Process();
  FileActions actions;
  SpawnAttributes attributes;
  if (launch.streams == StandardStreams::Closed &&
      (!actions.openNothing(STDIN_FILENO, O_RDONLY) || !actions.openNothing(STDOUT_FILENO, O_WRONLY))) {
    return false;
  }
  if (launch.output >= 0 && !actions.duplicate(launch.output, STDOUT_FILENO)) {
    return false;
  }
  if (!actions.closeFrom(kFirstPrivateDescriptor) || !attributes.unblockSignals()) {
    return false;
  }
  std::vector<std::string> words;
  words.reserve(launch.arguments.size() + 1);
  words.push_back(launch.program);
  words.insert(words.end(), launch.arguments.begin(), launch.arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);

  auto state = std::make_unique<State>();
  if (::posix_spawnp(&state->id, launch.program.c_str(), actions.get(), attributes.get(), pointers.data(), ::environ) !=
      0) {
    return false;
  }
  state_ = std::move(state);
  return true;
}

std::optional<std::string> Process::run(const std::string& program, std::span<const std::string> arguments,
                                        std::size_t most) {
  Pipe pipe;
  if (!pipe.isOpen() ||
      !start(Launch{
          .program = program, .arguments = arguments, .streams = StandardStreams::Closed, .output = pipe.writeEnd()})) {
    return std::nullopt;
  }
  pipe.closeWriteEnd();
  std::string output;
  bool running = true;
  // A child of the program may hold the pipe open, and print, for longer than the program lives.
  do {
    running = !waitFor(std::chrono::milliseconds(0));
    while (pipe.read(output, most, running ? kPollInterval : std::chrono::milliseconds(0)) && output.size() < most) {
    }
  } while (running && !pipe.atEnd());
  static_cast<void>(wait());
  return output;
}

std::optional<std::uint32_t> Process::waitFor(std::chrono::milliseconds limit) {
  if (!state_) {
    return kNoExitCode;
  }
  const auto start = std::chrono::steady_clock::now();
  while (!state_->exitCode) {
    state_->exitCode = reap(state_->id, WNOHANG);
    // Compared in milliseconds: the largest limit fits neither a point in time nor a finer unit.
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    if (state_->exitCode || waited >= limit) {
      break;
    }
    // There is no wait for one child with a limit, and the signal handlers belong to the host.
    std::this_thread::sleep_for(std::min(kPollInterval, limit));
  }
  return state_->exitCode;
}

std::uint32_t Process::wait() {
  if (!state_) {
    return kNoExitCode;
  }
  if (!state_->exitCode) {
    state_->exitCode = reap(state_->id, 0);
  }
  return state_->exitCode.value_or(kNoExitCode);
}

void Process::terminate() {
  if (state_ && !waitFor(std::chrono::milliseconds(0))) {
    ::kill(state_->id, SIGKILL);
    static_cast<void>(wait());
  }
}

}  // namespace xlatr::platform
