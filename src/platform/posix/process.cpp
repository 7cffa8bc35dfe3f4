#include "platform/process.hpp"

#include <signal.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>
#include <vector>

namespace xlatr::platform {

struct Process::State {
  pid_t id = 0;
  std::optional<std::uint32_t> exitCode;
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

// The exit code if the program has ended, also if nobody can tell it any more: a host that ignores SIGCHLD or reaps all
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

bool Process::start(const std::string& program, std::span<const std::string> arguments) {
  *this = Process();
  FileActions actions;
  SpawnAttributes attributes;
  if (!actions.closeFrom(kFirstPrivateDescriptor) || !attributes.unblockSignals()) {
    return false;
  }
  std::vector<std::string> words;
  words.reserve(arguments.size() + 1);
  words.push_back(program);
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);

  auto state = std::make_unique<State>();
  if (::posix_spawnp(&state->id, program.c_str(), actions.get(), attributes.get(), pointers.data(), ::environ) != 0) {
    return false;
  }
  state_ = std::move(state);
  return true;
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
    // A wait for one child with a limit does not exist; a signal handler belongs to the host.
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

}  // namespace xlatr::platform
