// Linked to every program and library of rewritten sources: which mutant acts, and where to note which are reached.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "mutants.hpp"

namespace mutants {
namespace {

long wanted() {
  const char* const number = std::getenv("XLATR_MUTANT");
  return number != nullptr ? std::atol(number) : 0;
}

// The file is shared: a program, the libraries that it loads and the programs that it starts note in the same place.
unsigned char* notes() {
  const char* const path = std::getenv("XLATR_MUTANTS_REACHED");
  const int file = path != nullptr ? open(path, O_RDWR | O_CLOEXEC) : -1;
  if (file < 0) {
    return nullptr;
  }
  struct stat status = {};
  fstat(file, &status);
  void* const bytes =
      mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return bytes == MAP_FAILED ? nullptr : static_cast<unsigned char*>(bytes);
}

}  // namespace

long chosen = 0;
unsigned char* reached = nullptr;

namespace {

// Before anything else that is made when a program starts, since that may be rewritten too.
__attribute__((constructor(101))) void start() {
  chosen = wanted();
  reached = notes();
}

}  // namespace

}  // namespace mutants
