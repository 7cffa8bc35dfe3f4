#include "platform/process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/posix/parent_link.hpp"

namespace xlatr::platform {

namespace {

// Owns a descriptor, or none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (isOpen()) {
      ::close(number_);
    }
  }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  [[nodiscard]] bool isOpen() const { return number_ >= 0; }
  [[nodiscard]] int get() const { return number_; }

 private:
  int number_ = -1;
};

}  // namespace

struct Process::State {
  pid_t id = 0;
  Descriptor end;   // can be read once the program has ended; none where the system has no such thing
  Descriptor link;  // our end
  std::optional<std::uint32_t> exitCode;
};

struct Process::Launch {
  const std::string& program;
  std::span<const std::string> arguments;
  StandardStreams streams;
  ProgramTie tie = ProgramTie::None;
  int output = -1;  // the descriptor that gets the standard output instead, if any
};

namespace {

constexpr std::uint32_t kSignalBase = 128;
constexpr std::chrono::milliseconds kPollInterval(1);
constexpr std::chrono::milliseconds kLongestPoll(1000);

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

  // No signal is blocked, and the program hears of the ends of its own programs, whether or not we do.
  bool resetSignals() {
    sigset_t none;
    ::sigemptyset(&none);
    sigset_t ends;
    ::sigemptyset(&ends);
    ::sigaddset(&ends, SIGCHLD);
    return made_ && ::posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
           ::posix_spawnattr_setsigdefault(&attributes_, &ends) == 0 &&
           ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF) == 0;
  }
  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
  bool made_;
};

// Texts as the system wants to be given them.
class Words {
 public:
  // The program and its arguments.
  Words(const std::string& program, std::span<const std::string> arguments) {
    texts_.reserve(arguments.size() + 1);
    texts_.push_back(program);
    texts_.insert(texts_.end(), arguments.begin(), arguments.end());
    for (std::string& text : texts_) {
      pointers_.push_back(text.data());
    }
    pointers_.push_back(nullptr);
  }
  // The environment, with the link of the program if it has one.
  explicit Words(bool tied) {
    const std::string_view link = kParentLinkVariable;
    const std::string_view name = link.substr(0, link.find('=') + 1);
    for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
      if (!std::string_view(*entry).starts_with(name)) {
        pointers_.push_back(*entry);
      }
    }
    if (tied) {
      texts_.emplace_back(link);
      pointers_.push_back(texts_.back().data());
    }
    pointers_.push_back(nullptr);
  }

  [[nodiscard]] char* const* get() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
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

// Two ends of a link.
struct Link {
  Descriptor ours;
  Descriptor theirs;

  [[nodiscard]] bool open() {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      return false;
    }
    ours = Descriptor(ends[0]);
    theirs = Descriptor(ends[1]);
    return true;
  }
};

// Stands for the program alone, while its number may be given to another one as soon as somebody has taken its exit
// code. Not open on a system that has no such descriptors, and for a program that is gone already.
Descriptor openEnd(pid_t id) {
  return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, id, 0)));
}

// Whether the program has ended within the limit; a negative limit is none. Without a descriptor it only checks.
bool endsWithin(const Descriptor& end, int milliseconds) {
  pollfd wanted{.fd = end.get(), .events = POLLIN, .revents = 0};
  return ::poll(&wanted, 1, milliseconds) > 0;
}

std::uint32_t codeOf(const siginfo_t& info) {
  const auto status = static_cast<std::uint32_t>(info.si_status);
  return info.si_code == CLD_EXITED ? status : kSignalBase + status;
}

int uninterruptedWait(pid_t id, const Descriptor& end, siginfo_t& info, int options) {
  constexpr auto kByDescriptor = static_cast<idtype_t>(3);  // P_PIDFD, which not all headers have
  int answer = 0;
  do {
    info = {};
    answer = end.isOpen() ? ::waitid(kByDescriptor, static_cast<id_t>(end.get()), &info, options)
                          : ::waitid(P_PID, static_cast<id_t>(id), &info, options);
  } while (answer != 0 && errno == EINTR);
  return answer;
}

// What a program told over its link. A host that ignores SIGCHLD, or takes the exit codes of all its programs, leaves
// us no other.
std::uint32_t toldExitCode(const Descriptor& link) {
  unsigned char code = 0;
  return link.isOpen() && ::recv(link.get(), &code, sizeof code, MSG_DONTWAIT) == sizeof code ? code : kNoExitCode;
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
  static_cast<void>(waitFor(std::chrono::milliseconds(0)));
}

bool Process::start(const std::string& program, std::span<const std::string> arguments, StandardStreams streams,
                    ProgramTie tie) {
  return start(Launch{.program = program, .arguments = arguments, .streams = streams, .tie = tie});
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
  Link link;
  const bool tied = launch.tie == ProgramTie::Link;
  if (tied && (!link.open() || !actions.duplicate(link.theirs.get(), kParentLinkDescriptor))) {
    return false;
  }
  if (!actions.closeFrom(tied ? kParentLinkDescriptor + 1 : kParentLinkDescriptor) || !attributes.resetSignals()) {
    return false;
  }
  Words words(launch.program, launch.arguments);
  Words environment(tied);

  auto state = std::make_unique<State>();
  if (::posix_spawnp(&state->id, launch.program.c_str(), actions.get(), attributes.get(), words.get(),
                     environment.get()) != 0) {
    return false;
  }
  state->end = openEnd(state->id);
  state->link = std::move(link.ours);
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
  while (!reap()) {
    // Compared in milliseconds: the largest limit fits neither a point in time nor a finer unit.
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    if (waited >= limit) {
      break;
    }
    const auto left = std::min(limit - waited, kLongestPoll);
    if (state_->end.isOpen()) {
      static_cast<void>(endsWithin(state_->end, static_cast<int>(left.count())));
    } else {
      // The signal handlers belong to the host.
      std::this_thread::sleep_for(std::min(kPollInterval, left));
    }
  }
  return state_->exitCode;
}

std::uint32_t Process::wait() {
  if (!state_) {
    return kNoExitCode;
  }
  if (!state_->exitCode) {
    awaitEnd();
    static_cast<void>(reap());
  }
  return state_->exitCode.value_or(kNoExitCode);
}

// Whether the exit code is known, even if only in that nobody knows it any more.
bool Process::reap() {
  if (state_->exitCode) {
    return true;
  }
  siginfo_t info{};
  if (uninterruptedWait(state_->id, state_->end, info, WEXITED | WNOHANG) != 0) {
    state_->exitCode = toldExitCode(state_->link);
  } else if (info.si_pid != 0) {
    state_->exitCode = codeOf(info);
  }
  return state_->exitCode.has_value();
}

void Process::terminate() {
  if (state_ && !waitFor(std::chrono::milliseconds(0))) {
    kill();
    static_cast<void>(wait());
  }
}

void Process::awaitEnd() const {
  siginfo_t info{};
  if (state_) {
    static_cast<void>(uninterruptedWait(state_->id, state_->end, info, WEXITED | WNOWAIT));
  }
}

void Process::kill() const {
  if (state_ && state_->end.isOpen()) {
    ::syscall(SYS_pidfd_send_signal, state_->end.get(), SIGKILL, nullptr, 0);
  } else if (state_) {
    ::kill(state_->id, SIGKILL);
  }
}

}  // namespace xlatr::platform
