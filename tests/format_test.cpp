#include "orvo/format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include "tests/support/allocations.h"
#include "tests/support/interpose/calls.h"

namespace {

using orvo_test::CountAllocations;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;

// Counts the formatting passes of the library while it lives.
class PassCounter {
 public:
  int passes() const { return static_cast<int>(bounds_.size()); }
  const std::vector<std::size_t>& bounds() const { return bounds_; }

 private:
  std::vector<std::size_t> bounds_;
  ScopedHook<int(char*, std::size_t, const char*, va_list)> hook_{
      orvo_test::vsnprintf_calls,
      [this](char* buffer, std::size_t size, const char* format,
             va_list arguments) {
        bounds_.push_back(size);
        return orvo_test::vsnprintf_calls.Real(buffer, size, format, arguments);
      }};
};

ORVO_PRINTF_LIKE(3, 4)
int CallVformat(char* buffer, unsigned long size, const char* fmt, ...) {
  va_list arguments;
  va_start(arguments, fmt);
  const int length = orvo::vformat(buffer, size, fmt, arguments);
  va_end(arguments);
  return length;
}

TEST(Vformat, ReturnsTheFullLengthAndCutsTheText) {
  char buffer[8] = "xxxxxxx";
  EXPECT_EQ(CallVformat(buffer, 4, "%s", "abcdef"), 6);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(buffer[4], 'x');
}

TEST(Vformat, ReturnsANegativeNumberOnFailure) {
  const ScopedFailure failure("vsnprintf", EOVERFLOW);
  char buffer[8];
  EXPECT_LT(CallVformat(buffer, sizeof buffer, "%d", 1), 0);
}

TEST(Format, ExpandsTheSameTextInBothOverloads) {
  EXPECT_EQ(orvo::format("%d-%d", 1, 2), "1-2");
  EXPECT_EQ(orvo::format(std::string("%d-%d"), 1, 2), "1-2");
}

TEST(Format, TakesTextWithoutConversionsAsItIs) {
  EXPECT_EQ(orvo::format("plain text"), "plain text");
  EXPECT_EQ(orvo::format(std::string("plain text")), "plain text");
  EXPECT_EQ(orvo::format(std::string()), "");
}

TEST(Format, KeepsNulCharacters) {
  EXPECT_EQ(orvo::format("a%cb", 0), std::string("a\0b", 3));
  EXPECT_EQ(orvo::format(std::string("a%cb"), 0), std::string("a\0b", 3));
}

TEST(Format, NeedsOnePassUpTo255Characters) {
  const std::string text(255, 'x');
  const PassCounter counter;
  EXPECT_EQ(orvo::format("%s", text.c_str()), text);
  EXPECT_EQ(orvo::format(std::string("%s"), text.c_str()), text);
  EXPECT_THAT(counter.bounds(), testing::ElementsAre(256, 256));
}

TEST(Format, NeedsASecondPassFrom256CharactersOn) {
  const std::string text(256, 'x');
  const PassCounter counter;
  EXPECT_EQ(orvo::format("%s", text.c_str()), text);
  EXPECT_EQ(orvo::format(std::string("%s"), text.c_str()), text);
  EXPECT_THAT(counter.bounds(), testing::ElementsAre(256, 257, 256, 257));
}

TEST(Format, ReturnsLongTextsWhole) {
  const std::string text(10000, 'x');
  EXPECT_EQ(orvo::format("%s", text.c_str()), text);
  EXPECT_EQ(orvo::format(std::string("<%s>"), text.c_str()), "<" + text + ">");
}

TEST(Format, AllocatesNothingBeyondItsResultUpTo255Characters) {
  const std::string text(255, 'x');
  const long before = CountAllocations();
  const std::string result = orvo::format("%s", text.c_str());
  EXPECT_EQ(CountAllocations() - before, 1);

  const long before_short = CountAllocations();
  const std::string short_result = orvo::format("%d", 7);
  EXPECT_EQ(CountAllocations() - before_short, 0);
}

TEST(Format, AllocatesOneArrayMoreFrom256CharactersOn) {
  const std::string text(256, 'x');
  const long before = CountAllocations();
  const std::string result = orvo::format("%s", text.c_str());
  EXPECT_EQ(CountAllocations() - before, 2);
}

TEST(Format, ThrowsWhenFormattingFails) {
  const ScopedFailure failure("vsnprintf", EOVERFLOW);
  EXPECT_THROW(orvo::format("%d", 1), std::length_error);
  EXPECT_THROW(orvo::format(std::string("%d"), 1), std::length_error);
}

TEST(Format, DoesNotExamineTheSecondPass) {
  const std::string text(300, 'x');
  const ScopedFailure failure("vsnprintf", EOVERFLOW, 1);
  EXPECT_EQ(orvo::format("%s", text.c_str()).size(), 300U);
}

TEST(Errmsg, HoldsTheSystemsTextIn256Characters) {
  const std::string text = orvo::errmsg(ENOENT);
  EXPECT_EQ(text.size(), 256U);
  EXPECT_STREQ(text.c_str(), "No such file or directory");
  EXPECT_EQ(text.substr(25), std::string(231, '\0'));
}

TEST(Errmsg, IsEmptyForANumberThatTheSystemDoesNotKnow) {
  EXPECT_EQ(orvo::errmsg(99999), "");
  EXPECT_EQ(orvo::errmsg(-1), "");
}

TEST(Errmsg, AsksTheReentrantFunctionForUpTo256Bytes) {
  std::size_t asked = 0;
  const ScopedHook hook(orvo_test::strerror_r_calls,
                        [&](int, char* buffer, std::size_t size) {
                          asked = size;
                          std::strcpy(buffer, "text");
                          return 0;
                        });
  EXPECT_STREQ(orvo::errmsg(1).c_str(), "text");
  EXPECT_EQ(asked, 256U);
}

TEST(Errmsg, IsEmptyWhenTheSystemFails) {
  const ScopedFailure failure("__xpg_strerror_r", ERANGE);
  EXPECT_EQ(orvo::errmsg(ENOENT), "");
}

}  // namespace
