#include "frames/account.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string_view>

namespace xlatr {
namespace {

TEST(Account, addsUp) {
  Account account;
  account.addRead(10);
  account.addWritten(6);
  account.addCommented(Remark::FdNotHeld, 7);
  account.addCommented(Remark::FdNotHeld, 9);
  account.addDropped(Remark::KindNotHeld, 8);
  account.addDropped(Remark::BusNotHeld, 10);
  EXPECT_EQ(account.read(), account.written() + account.dropped());
  EXPECT_EQ(account.written(), 8U);
  EXPECT_EQ(account.commented(), 2U);
  EXPECT_EQ(account.dropped(), 2U);
  EXPECT_EQ(account.commented(Remark::FdNotHeld), (Account::Count{2, 7}));
  EXPECT_EQ(account.dropped(Remark::KindNotHeld), (Account::Count{1, 8}));
  EXPECT_EQ(account.dropped(Remark::FdNotHeld), (Account::Count{0, 0}));
  EXPECT_FALSE(account.complete());
}

TEST(Account, notesChangeNoSum) {
  Account account;
  account.addRead(1);
  account.addWritten(1);
  EXPECT_TRUE(account.complete());
  account.note(Remark::TimeRounded, 3);
  account.note(Remark::TimeRounded, 4);
  EXPECT_EQ(account.noted(Remark::TimeRounded), (Account::Count{2, 3}));
  EXPECT_EQ(account.written(), 1U);
  EXPECT_EQ(account.dropped(), 0U);
  EXPECT_FALSE(account.complete());
}

TEST(Account, takesOthersInTheirOrder) {
  Account first;
  first.addRead(2);
  first.addWritten(1);
  first.addDropped(Remark::XlNotHeld, 5);
  Account second;
  second.addRead(3);
  second.addCommented(Remark::FdNotHeld, 1);
  second.addDropped(Remark::XlNotHeld, 2);
  second.addDropped(Remark::XlNotHeld, 3);
  second.note(Remark::SourceCut, 4);
  first.add(second);
  EXPECT_EQ(first.read(), 5U);
  EXPECT_EQ(first.written(), 2U);
  EXPECT_EQ(first.dropped(Remark::XlNotHeld), (Account::Count{3, 5}));
  EXPECT_EQ(first.commented(Remark::FdNotHeld), (Account::Count{1, 1}));
  EXPECT_EQ(first.noted(Remark::SourceCut), (Account::Count{1, 4}));
}

TEST(Remarks, haveNamesOfTheirOwn) {
  std::set<std::string_view> names;
  for (const RemarkInfo& info : remarkTable()) {
    EXPECT_TRUE(names.insert(info.name).second) << info.name;
    EXPECT_EQ(info.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_"), std::string_view::npos) << info.name;
    EXPECT_FALSE(info.text.empty()) << info.name;
    EXPECT_EQ(&infoOf(info.remark), &info);
  }
}

}  // namespace
}  // namespace xlatr
