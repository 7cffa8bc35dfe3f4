#include "tools/program.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace xlatr::cli {

namespace {

constexpr const char* kOutputName = ".stdout";
constexpr const char* kErrorsName = ".stderr";

int openForWriting(const std::filesystem::path& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

}  // namespace

Workspace::Workspace() : Workspace(XLATR_PROGRAM) {}

std::vector<std::string> Workspace::names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
    const std::string name = entry.path().filename().string();
    if (name != kOutputName && name != kErrorsName) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

Ended Workspace::run(const std::vector<std::string>& arguments) const {
  std::vector<std::string> words{program_};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return runWords(std::move(words));
}

Ended Workspace::shell(const std::string& line) const {
  return runWords({"/bin/sh", "-c", "xlatr() { \"" + program_ + "\" \"$@\"; }\n" + line});
}

Ended Workspace::runWords(std::vector<std::string> words) const {
  const int errors = openForWriting(*this / kErrorsName);
  const pid_t program = startWords(std::move(words), errors);
  ::close(errors);
  const int exitCode = wait(program);
  return {exitCode, read(kOutputName), read(kErrorsName)};
}

pid_t Workspace::start(const std::vector<std::string>& arguments, int errors) const {
  std::vector<std::string> words{program_};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return startWords(std::move(words), errors);
}

pid_t Workspace::startWords(std::vector<std::string> words, int errors) const {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (auto& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  const int output = openForWriting(*this / kOutputName);
  const pid_t program = ::fork();
  if (program == 0) {
    // Only calls that are safe between fork and exec.
    if (::chdir(folder_.path().c_str()) == 0 && ::dup2(output, STDOUT_FILENO) >= 0 &&
        ::dup2(errors, STDERR_FILENO) >= 0) {
      ::execv(pointers.front(), pointers.data());
    }
    ::_exit(127);
  }
  ::close(output);
  return program;
}

int Workspace::wait(pid_t program) {
  int status = 0;
  if (::waitpid(program, &status, 0) != program) {
    return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string traceOfBuses(const std::vector<int>& buses) {
  std::string trace =
      ";$FILEVERSION=2.1\r\n"
      ";$STARTTIME=44403.2222189948\r\n"
      ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
      ";\r\n";
  int number = 0;
  for (const int bus : buses) {
    ++number;
    trace += std::to_string(number) + " " + std::to_string(number * 10) + ".000 DT " + std::to_string(bus) +
             " 0123 Rx - 2 AB CD\r\n";
  }
  return trace;
}

bool isOneErrorLine(std::string_view text) {
  return text.starts_with("xlatr: ") && text.find('\n') == text.size() - 1;
}

}  // namespace xlatr::cli
