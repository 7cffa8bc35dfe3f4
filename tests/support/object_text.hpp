// The texts of exported objects, read as a caller reads them.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace xlatr::test {

// Reads a text pair with buffers of several sizes, which must agree.
inline std::string textOf(std::uint32_t size, const std::function<void(char*, std::uint32_t)>& copy) {
  std::string whole(size + std::size_t{1}, '#');
  copy(whole.data(), size + 1);
  EXPECT_EQ(whole.back(), '\0');
  whole.pop_back();
  char one[2] = {'#', '#'};
  copy(one, 1);
  EXPECT_EQ(one[0], '\0');
  EXPECT_EQ(one[1], '#');
  copy(one, 0);
  copy(nullptr, 0);
  copy(nullptr, 5);
  EXPECT_EQ(one[0], '\0');
  std::string larger(size + std::size_t{10}, '#');
  copy(larger.data(), size + 10);
  EXPECT_EQ(larger.substr(0, larger.find('\0')), whole);
  if (size > 1) {
    std::string cut(size, '#');
    copy(cut.data(), size);
    EXPECT_EQ(cut.substr(0, cut.find('\0')), whole.substr(0, size - 1));
  }
  return whole;
}

}  // namespace xlatr::test

// The text that Family_nameSize and Family_name return for the object.
#define TEXT_OF(Family, name, nameSize, object)    \
  xlatr::test::textOf(Family##_##nameSize(object), \
                      [&](char* buffer, std::uint32_t bufferSize) { Family##_##name(object, buffer, bufferSize); })
