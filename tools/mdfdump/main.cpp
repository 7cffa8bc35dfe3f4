// Prints the structure of MDF files: mdfdump FILE...
#include <cstdio>
#include <exception>
#include <string>

#include "mdf_structure.hpp"

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2) {
    std::fputs("usage: mdfdump FILE...\n", stderr);
    return 2;
  }
  int result = 0;
  for (int index = 1; index < argumentCount; ++index) {
    try {
      xlatr::BlockStream stream{std::string(arguments[index])};
      std::fputs(mdfdump::describeStructure(stream).c_str(), stdout);
    } catch (const std::exception& failure) {
      std::fprintf(stderr, "mdfdump: %s\n", failure.what());
      result = 1;
    }
  }
  return result;
}
