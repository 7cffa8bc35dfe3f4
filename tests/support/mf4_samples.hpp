// A small MF4 file for tests that need any one.
#pragma once

#include <string>

namespace xlatr::test {

// Unsorted, version 4.11, from 2021-07-26 06:00 on: a data frame on bus 3 at 10.5 ms and one on bus 4 at 11.5 ms.
[[nodiscard]] std::string mf4Sample();

}  // namespace xlatr::test
