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

namespace {

using namespace xlatr::cli;

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

ExitCode runProgram(const std::vector<std::string>& words) {
  try {
    const ExitCode code = run(words);
    finishOutput();
    return code;
  } catch (const CommandFailure& failure) {
    printError(failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    printError("out of memory; close other programs or convert on a machine with more");
  } catch (const std::exception& failure) {
    // The library's own failures and those of its files, with the path and the system's reason in the text.
    printError(failure.what());
  }
  return ExitCode::Failed;
}

}  // namespace

int main(int argc, char** argv) {
  return static_cast<int>(runProgram(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc)));
}
