#include "core/waiting_comments.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

}  // namespace
}  // namespace xlatr
