#include "frames/account.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

TEST(Account, keepsTheBeginningOfTheFirst) {
  Account account;
  EXPECT_EQ(account.met(Remark::LineNotUnderstood), "");
  account.note(Remark::LineNotUnderstood, 3, std::string_view("caf\xE9 closed"));
  account.note(Remark::LineNotUnderstood, 4, std::string_view("another"));
  EXPECT_EQ(account.met(Remark::LineNotUnderstood), "caf\xC3\xA9 closed");
  EXPECT_EQ(account.noted(Remark::LineNotUnderstood), (Account::Count{2, 3}));
  std::array<std::uint8_t, 20> record{0x00, 0xFF, 0x7A};
  account.note(Remark::RecordNotUnderstood, 1, record);
  EXPECT_EQ(account.met(Remark::RecordNotUnderstood), "00 FF 7A 00 00 00 00 00 00 00 00 00");
  account.note(Remark::RecordNotUnderstood, 2, std::span(record).first(1));
  EXPECT_EQ(account.met(Remark::RecordNotUnderstood), "00 FF 7A 00 00 00 00 00 00 00 00 00");
}

// Cut between characters, and never too long for the record of the C interface.
TEST(Account, keepsNoMoreThanAnybodyReads) {
  Account account;
  account.note(Remark::LineNotUnderstood, 1, std::string(30, 'x') + "\u20AC and more");
  EXPECT_EQ(account.met(Remark::LineNotUnderstood), std::string(30, 'x'));
  account.note(Remark::TextCut, 1, std::string(1000, '\xFF'));
  std::string latin;
  for (int at = 0; at < 31; ++at) {
    latin += "\u00FF";
  }
  EXPECT_EQ(account.met(Remark::TextCut), latin);
  EXPECT_LE(latin.size(), Account::kLongestMet);
  account.note(Remark::RecordNotUnderstood, 1, std::vector<std::uint8_t>(64));
  EXPECT_LE(account.met(Remark::RecordNotUnderstood).size(), Account::kLongestMet);
}

TEST(Account, keepsTheBeginningOfOthers) {
  Account first;
  Account second;
  second.note(Remark::LineNotUnderstood, 4, std::string_view("second"));
  first.add(second);
  EXPECT_EQ(first.met(Remark::LineNotUnderstood), "second");
  Account third;
  third.note(Remark::LineNotUnderstood, 5, std::string_view("third"));
  first.add(third);
  EXPECT_EQ(first.met(Remark::LineNotUnderstood), "second");
  EXPECT_EQ(first.noted(Remark::LineNotUnderstood), (Account::Count{2, 4}));
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
