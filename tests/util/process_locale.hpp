// What the tests compare to check that nothing changed the locale of the process.
#pragma once

#include <clocale>
#include <string>

namespace xlatr {

inline std::string processLocale() {
  return std::setlocale(LC_ALL, nullptr);
}

}  // namespace xlatr
