#include <exception>
#include <iostream>
#include <new>
#include <variant>

#include "command_failure.hpp"
#include "command_line.hpp"
#include "output.hpp"

namespace {

using namespace xlatr::cli;

struct RunCommand {
  ExitCode operator()(ExitCode code) const { return code; }
  ExitCode operator()(const ConvertArguments& arguments) const { return runConvert(arguments); }
  ExitCode operator()(const InfoArguments& arguments) const { return runInfo(arguments); }
  ExitCode operator()(const FormatsArguments& arguments) const { return runFormats(arguments); }
};

ExitCode runProgram(int argc, const char* const* argv) {
  try {
    const ExitCode code = std::visit(RunCommand{}, parseCommandLine(argc, argv));
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
  return static_cast<int>(runProgram(argc, argv));
}
