// What the tests compare to see that nobody changed the locale of the process.
#pragma once

#include <clocale>
#include <string>

namespace xlatr {

inline std::string processLocale() {
  return std::setlocale(LC_ALL, nullptr);
}

}  // namespace xlatr
