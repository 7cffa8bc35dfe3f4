#include "core/waiting_comments.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/file_size_limit.hpp"

namespace xlatr {
namespace {

std::vector<std::string> handedOut(WaitingComments& comments) {
  std::vector<std::string> texts;
  comments.handOut([&texts](std::string_view text) { texts.emplace_back(text); });
  return texts;
}

TEST(WaitingComments, handsOutTextsInOrderOnce) {
  WaitingComments comments;
  comments.add("first");
  comments.add("");
  comments.add(std::string("with\nline\0end", 13));
  EXPECT_EQ(handedOut(comments), (std::vector<std::string>{"first", "", std::string("with\nline\0end", 13)}));
  EXPECT_EQ(handedOut(comments), std::vector<std::string>{});
}

TEST(WaitingComments, keepsTheOrderOfMoreThanItHoldsInMemory) {
  WaitingComments comments;
  std::vector<std::string> expected;
  for (int number = 0; number < 60000; ++number) {
    expected.push_back(std::to_string(number) + std::string(static_cast<std::size_t>(number % 100), 'x'));
    comments.add(expected.back());
  }
  EXPECT_TRUE(handedOut(comments) == expected);
}

TEST(WaitingComments, takesTextsOfAnySize) {
  WaitingComments comments;
  const std::string large(3000000, 'y');
  comments.add("small");
  comments.add(large);
  comments.add("small again");
  EXPECT_TRUE(handedOut(comments) == (std::vector<std::string>{"small", large, "small again"}));
}

// Nothing is lost while there is no room for a file; once there is, it is used.
TEST(WaitingComments, staysInMemoryWhenTheDiskIsFull) {
  WaitingComments comments;
  std::vector<std::string> expected;
  const auto add = [&](int count) {
    for (; count > 0; --count) {
      expected.push_back(std::to_string(count) + std::string(1000, 'z'));
      comments.add(expected.back());
    }
  };
  add(1500);  // the first MiB is in the file
  {
    const test::FileSizeLimit limit(1'500'000);
    add(5000);
  }
  add(5000);
  EXPECT_TRUE(handedOut(comments) == expected);
}

}  // namespace
}  // namespace xlatr
