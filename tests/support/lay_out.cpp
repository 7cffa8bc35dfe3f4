// lay_out FILE: writes the bytes of a layout to the standard output.
#include <exception>
#include <iostream>

#include "support/layout.hpp"

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: lay_out FILE\n";
    return 2;
  }
  try {
    std::cout << xlatr::test::layOutFile(arguments[1], {});
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return std::cout.flush() ? 0 : 1;
}
