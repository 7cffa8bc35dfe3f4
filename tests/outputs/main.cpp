// xlatr_outputs SOURCE [KEPT]: prints what the library does with a trace, by conversions and by objects, in a form that
// two builds of the library can be compared by. scripts/compare-outputs runs it. The files that are written go into a
// folder per case below KEPT, or are removed.
//
// Which library is used is for the dynamic linker's search path to say.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <span>
#include <string>

#include "outputs/report.hpp"
#include "outputs/single_objects.hpp"
#include "outputs/whole_conversions.hpp"
#include "support/temp_folder.hpp"

int main(int argc, char** argv) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  if (arguments.size() < 2 || arguments.size() > 3) {
    std::cerr << "usage: xlatr_outputs SOURCE [KEPT]\n";
    return 2;
  }
  try {
    const std::string source = std::filesystem::absolute(arguments[1]).string();
    outputs::Report report;
    if (arguments.size() > 2) {
      report.keepFilesIn(std::filesystem::absolute(arguments[2]));
    }
    const xlatr::test::TempFolder folder;
    std::filesystem::current_path(folder.path());
    outputs::reportConversions(report, source);
    outputs::reportObjects(report, source);
    std::filesystem::current_path("/");
  } catch (const std::exception& failure) {
    std::cerr << "xlatr_outputs: " << failure.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
