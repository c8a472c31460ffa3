#include "orvo/format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"

namespace {

using orvo_test::CountAllocations;
using orvo_test::ScopedAllocationFailure;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using testing::ThrowsMessage;

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

// Lets other threads go on as soon as the system has written a text.
class Interruptions {
  ScopedHook<int(char*, std::size_t, const char*, va_list)> vsnprintf_{
      orvo_test::vsnprintf_calls, [](auto... arguments) {
        const int length = orvo_test::vsnprintf_calls.Real(arguments...);
        std::this_thread::yield();
        return length;
      }};
  ScopedHook<int(int, char*, std::size_t)> strerror_r_{
      orvo_test::strerror_r_calls, [](auto... arguments) {
        const int result = orvo_test::strerror_r_calls.Real(arguments...);
        std::this_thread::yield();
        return result;
      }};
};

// How often a check fails that each of eight threads makes again and again, all
// of them at once. The check takes the thread's number.
template <typename Check>
int FailuresInThreads(Check check) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 50;
  const Interruptions interruptions;
  std::atomic<int> failures{0};
  orvo_test::Latch start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      start.Arrive();
      for (int round = 0; round < kRounds; ++round) {
        if (!check(thread)) ++failures;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  return failures;
}

// Of different lengths, of which some need a second pass.
std::string TextOfThread(int thread) {
  return std::string(static_cast<std::size_t>(200 + 16 * thread),
                     static_cast<char>('a' + thread));
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

TEST(Vformat, KeepsTheTextsOfSeveralThreadsApart) {
  EXPECT_EQ(FailuresInThreads([](int thread) {
              const std::string text = TextOfThread(thread);
              char buffer[512];
              const int length =
                  CallVformat(buffer, sizeof buffer, "%s", text.c_str());
              return length == 200 + 16 * thread && buffer == text;
            }),
            0);
}

TEST(Format, ExpandsTheSameTextInBothOverloads) {
  EXPECT_EQ(orvo::format("%d-%d", 1, 2), "1-2");
  EXPECT_EQ(orvo::format(std::string("%d-%d"), 1, 2), "1-2");
  EXPECT_EQ(orvo::format("%.0f %s", 15.0, "m"), "15 m");
  EXPECT_EQ(orvo::format(std::string("%.0f %s"), 22.0, "m"), "22 m");
}

TEST(Format, TakesTextWithoutConversionsAsItIs) {
  EXPECT_EQ(orvo::format("plain text"), "plain text");
  EXPECT_EQ(orvo::format(std::string("plain text")), "plain text");
  EXPECT_EQ(orvo::format(std::string()), "");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-zero-length"
  EXPECT_EQ(orvo::format(""), "");
#pragma GCC diagnostic pop
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

TEST(Format, PassesOnThatMemoryRunsOut) {
  const std::string text(256, 'x');
  const std::string as_text = "%s";
  for (const long allocations : {0, 1}) {  // the array, the result
    SCOPED_TRACE(allocations);
    {
      const ScopedAllocationFailure failure(allocations);
      EXPECT_THROW(orvo::format("%s", text.c_str()), std::bad_alloc);
    }
    const ScopedAllocationFailure failure(allocations);
    EXPECT_THROW(orvo::format(as_text, text.c_str()), std::bad_alloc);
  }
  const ScopedAllocationFailure failure;
  EXPECT_THROW(orvo::format("%s", text.c_str() + 1), std::bad_alloc);
  EXPECT_THROW(orvo::format(as_text, text.c_str() + 1), std::bad_alloc);
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

TEST(Format, KeepsTheTextsOfSeveralThreadsApart) {
  EXPECT_EQ(FailuresInThreads([](int thread) {
              const std::string text = TextOfThread(thread);
              return orvo::format("%s", text.c_str()) == text &&
                     orvo::format(std::string("%s"), text.c_str()) == text;
            }),
            0);
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

TEST(Errmsg, KeepsTheTextsOfSeveralThreadsApart) {
  EXPECT_EQ(FailuresInThreads([](int thread) {
              return thread % 2 == 0
                         ? std::strcmp(orvo::errmsg(ENOENT).c_str(),
                                       "No such file or directory") == 0
                         : std::strcmp(orvo::errmsg(EACCES).c_str(),
                                       "Permission denied") == 0;
            }),
            0);
}

TEST(FastFormatter, WritesNineDigits) {
  EXPECT_EQ(FastFormatter<10>("%09ld", 5L), "000000005");
  EXPECT_EQ(FastFormatter<10>("%09ld", 123456789L), "123456789");
  EXPECT_EQ(FastFormatter<10>("%09ld", 0L), "000000000");
}

TEST(FastFormatter, TakesUpToItsNumberOfCharacters) {
  EXPECT_EQ(FastFormatter<10>("%09ld", 1234567890L), "1234567890");
  EXPECT_EQ(FastFormatter<10>("%09ld", -500000000L), "-500000000");
  EXPECT_EQ(FastFormatter<3>("%s", "abc"), "abc");
  EXPECT_EQ(FastFormatter<1>("%s", ""), "");
  const std::string text(1000, 'x');
  EXPECT_EQ(FastFormatter<1000>("%s", text.c_str()), text);
}

TEST(FastFormatter, TakesTextsThatNeedAStringOfTheirOwn) {
  const std::string text(1024, 'x');
  EXPECT_EQ(FastFormatter<1023>("%.1023s", text.c_str()), text.substr(1));
  EXPECT_EQ(FastFormatter<1024>("%s", text.c_str()), text);
  EXPECT_EQ(FastFormatter<1025>("%s", text.c_str()), text);
  EXPECT_THROW(FastFormatter<1023>("%s", text.c_str()), std::logic_error);
  EXPECT_THROW(FastFormatter<1024>("%sy", text.c_str()), std::logic_error);
}

TEST(FastFormatter, ThrowsForALongerText) {
  EXPECT_THAT(
      [] { FastFormatter<10>("%09ld", 12345678901L); },
      ThrowsMessage<std::logic_error>(
          "formatted length (11) is greater than requested buffer size (10)"));
  EXPECT_THAT(
      [] { FastFormatter<3>("%d", -123); },
      ThrowsMessage<std::logic_error>(
          "formatted length (4) is greater than requested buffer size (3)"));
  EXPECT_THAT(
      [] { FastFormatter<1>("%100000d", 1); },
      ThrowsMessage<std::logic_error>(
          "formatted length (100000) is greater than requested buffer size "
          "(1)"));
}

TEST(FastFormatter, KeepsNulCharacters) {
  EXPECT_EQ(FastFormatter<10>("a%cb", 0), std::string("a\0b", 3));
}

TEST(FastFormatter, ReturnsTheReasonWhenFormattingFails) {
  const ScopedFailure failure("vsnprintf", EOVERFLOW);
  EXPECT_EQ(FastFormatter<10>("%d", 1),
            "Formatting error: Value too large for defined data type");
  EXPECT_EQ(FastFormatter<100>("%d", 1),
            "Formatting error: Value too large for defined data type");
}

TEST(FastFormatter, CannotWriteWideCharactersOutsideTheLocale) {
  const std::string locale = std::setlocale(LC_CTYPE, nullptr);
  std::setlocale(LC_CTYPE, "C");
  const wchar_t text[] = {0x20AC, 0};
  EXPECT_EQ(FastFormatter<10>("%ls", text),
            "Formatting error: Invalid or incomplete multibyte or wide "
            "character");
  std::setlocale(LC_CTYPE, locale.c_str());
}

TEST(FastFormatter, NeedsNoMemoryForTenCharacters) {
  const long before = CountAllocations();
  const std::string text = FastFormatter<10>("%09ld", 123456789L);
  EXPECT_EQ(CountAllocations() - before, 0);
}

TEST(Concatenate, AppendsToWhatTheTargetHolds) {
  std::string target = "abc";
  const std::string piece = "def";
  EXPECT_EQ(Concatenate(&target, ".", piece, "Z"), &target);
  EXPECT_EQ(target, "abc.defZ");
}

TEST(Concatenate, TakesTemporariesAndVariables) {
  std::string target;
  std::string variable = "b";
  Concatenate(&target, ".", std::string("a"), "Z");
  Concatenate(&target, ".", variable, "Z");
  Concatenate(&target, variable, "1");
  Concatenate(&target, std::string("c"), "2");
  Concatenate(&target, "3");
  EXPECT_EQ(target, ".aZ.bZb1c23");
  EXPECT_EQ(variable, "b");
}

TEST(Concatenate, TakesAnyNumberOfPiecesOfAnyLength) {
  std::string target;
  const std::string long_piece(1000, 'x');
  Concatenate(&target, "", "one", std::string(), "two, ", long_piece, "", "!");
  EXPECT_EQ(target, "onetwo, " + long_piece + "!");
}

TEST(Concatenate, KeepsNulCharactersOfStrings) {
  std::string target;
  Concatenate(&target, std::string("a\0b", 3), "c");
  EXPECT_EQ(target, std::string("a\0bc", 4));
}

TEST(Concatenate, StopsAtTheNulOfAnArray) {
  std::string target = "a";
  char none[2] = "";
  char one[2] = "b";
  Concatenate(&target, "", "\0", none, one, "c\0d", "e");
  EXPECT_EQ(target, "abce");
}

TEST(Concatenate, AppendsTheTargetToItselfPieceByPiece) {
  std::string target = "ab";
  Concatenate(&target, target, "-", target);
  EXPECT_EQ(target, "abab-abab-");
}

}  // namespace
