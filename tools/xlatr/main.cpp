#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "command_failure.hpp"
#include "command_line.hpp"
#include "help.hpp"
#include "output.hpp"
#include "signals.hpp"

namespace {

using namespace xlatr::cli;

constexpr char kOutOfMemory[] = "out of memory; close other programs or convert on a machine with more";

std::terminate_handler handlerBefore = nullptr;

// The last place for a lack of memory, which may come where nothing can be caught: before main, or once more when a
// lack of memory is told.
[[noreturn]] void endAtOnce() {
  try {
    if (const std::exception_ptr failure = std::current_exception()) {
      std::rethrow_exception(failure);
    }
    handlerBefore();
  } catch (const std::bad_alloc&) {
    static_cast<void>(std::fprintf(stderr, "xlatr: %s\n", kOutOfMemory));
    std::_Exit(static_cast<int>(ExitCode::Failed));
  } catch (...) {
    handlerBefore();
  }
  std::abort();
}

struct LastResort {
  LastResort() { handlerBefore = std::set_terminate(endAtOnce); }
};

// Before all other variables of the program, which may allocate: those of its command-line parser do.
[[gnu::init_priority(101)]] const LastResort kLastResort;

ExitCode run(const std::vector<std::string>& words) {
  const char* const defaults = std::getenv("XLATR_DEFAULTS");  // NOLINT(concurrency-mt-unsafe): there is one thread yet
  const CommandLine line = parseCommandLine(words, defaults == nullptr ? "" : defaults);
  if (line.version) {
    std::cout << "xlatr " XLATR_PROGRAM_VERSION "\n";
    return ExitCode::Done;
  }
  if (line.arguments.help) {
    std::cout << (line.command == nullptr ? helpText() : helpText(*line.command));
    return ExitCode::Done;
  }
  return line.command->run(line.arguments);
}

ExitCode runProgram(int argc, char** argv) {
  expectFullFiles();
  try {
    const ExitCode code = run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    finishOutput();
    return code;
  } catch (const CommandFailure& failure) {
    printError(failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    printError(kOutOfMemory);
  } catch (const std::exception& failure) {
    // The library's own failures and those of its files, with the path and the system's reason in the text.
    printError(failure.what());
  }
  return ExitCode::Failed;
}

}  // namespace

int main(int argc, char** argv) {
  return static_cast<int>(runProgram(argc, argv));
}
