#include "util/failures.hpp"

#include <gtest/gtest.h>

#include <thread>

#include "platform/thread.hpp"

namespace xlatr {
namespace {

TEST(Failures, raisesTheClassOfTheKind) {
  EXPECT_THROW(raiseFailure(FailureKind::Parsing, "p"), ConverterParsingException);
  EXPECT_THROW(raiseFailure(FailureKind::Processing, "q"), ConverterProcessingException);
  try {
    raiseFailure(FailureKind::Generic, "g");
  } catch (const ConverterProcessingException&) {
    FAIL() << "a generic failure is no processing failure";
  } catch (const ConverterParsingException&) {
    FAIL() << "a generic failure is no parsing failure";
  } catch (const ConverterGenericException& failure) {
    EXPECT_STREQ(failure.what(), "g");
    EXPECT_EQ(failure.kind(), FailureKind::Generic);
  }
}

TEST(Failures, raisesTheGenericClassForAnUnknownKind) {
  try {
    raiseFailure(static_cast<FailureKind>(7), "seven");
  } catch (const ConverterGenericException& failure) {
    EXPECT_EQ(failure.kind(), FailureKind::Generic);
    EXPECT_STREQ(failure.what(), "seven");
  }
}

TEST(Failures, parsingFailureNamesTheItem) {
  try {
    throwParsingFailure("String is not a uint32", "abc");
  } catch (const ConverterParsingException& failure) {
    EXPECT_STREQ(failure.what(), "String is not a uint32: {abc}");
    EXPECT_EQ(failure.kind(), FailureKind::Parsing);
  }
}

TEST(LastError, keepsTheLaterTextOfAThread) {
  EXPECT_THROW(throwProcessingFailure("first"), ConverterProcessingException);
  EXPECT_THROW(throwParsingFailure("second", "x"), ConverterParsingException);
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), "second: {x}");
}

TEST(LastError, isEmptyForAnUnknownThread) {
  EXPECT_EQ(lastErrorText(0xFFFFFFFFU), "");
}

TEST(LastError, keepsTheTextsOfTwoThreadsApart) {
  EXPECT_THROW(throwProcessingFailure("mine"), ConverterProcessingException);
  std::uint32_t other = 0;
  std::thread([&other] {
    other = platform::currentThreadId();
    EXPECT_EQ(lastErrorText(other), "");
    EXPECT_THROW(throwProcessingFailure("theirs"), ConverterProcessingException);
  }).join();
  EXPECT_EQ(lastErrorText(platform::currentThreadId()), "mine");
  EXPECT_EQ(lastErrorText(other), "theirs");
}

}  // namespace
}  // namespace xlatr
