// Runs a program's tests. With XLATR_TEST_LOCALE they run in a process that has taken over this locale, as the programs
// do that load the library; where the system lacks it they are skipped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <iostream>
#include <locale>

#include <cstdlib>

namespace {

constexpr int kSkipped = 77;  // as tests/CMakeLists.txt says

bool takeOver(const char* name) {
  if (std::setlocale(LC_ALL, name) == nullptr) {
    return false;
  }
  std::locale::global(std::locale(name));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const char* const name = std::getenv("XLATR_TEST_LOCALE");
  if (name != nullptr && !takeOver(name)) {
    std::cout << "skipped: the system has no locale " << name << '\n';
    return kSkipped;
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
