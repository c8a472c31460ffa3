#include "orvo/std_format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#ifdef __cpp_lib_format

namespace {

constexpr const char* kText = "12345678-9abc-def0-0123-456789abcdef";

TEST(StdFormat, TakesUUIDs) {
  EXPECT_EQ(std::format("<{}>", orvo::UUID(kText)),
            "<12345678-9abc-def0-0123-456789abcdef>");
}

TEST(StdFormat, TakesTimesAsIsoTexts) {
  EXPECT_EQ(std::format("<{}>", orvo::TimeValue(std::chrono::nanoseconds(
                                    1794777596123456789))),
            "<2026-11-15T21-19-56.123456789Z>");
  EXPECT_EQ(std::format("{}", orvo::TimeValue()),
            "1970-01-01T00-00-00.000000000Z");
}

TEST(StdFormat, TakesNotes) {
  EXPECT_EQ(std::format("{} {}", orvo::midi::Note(60), orvo::midi::Note(1)),
            "C3 C#-2");
}

TEST(StdFormat, TakesTheSpecificationsOfStrings) {
  EXPECT_EQ(std::format("[{:>5}]", orvo::midi::Note(60)), "[   C3]");
  EXPECT_EQ(std::format("[{:5}]", orvo::midi::Note(60)), "[C3   ]");
  EXPECT_EQ(std::format("[{:*^{}}]", orvo::midi::Note(60), 6), "[**C3**]");
  EXPECT_EQ(std::format("[{:*<40}]", orvo::UUID(kText)),
            "[12345678-9abc-def0-0123-456789abcdef****]");
  EXPECT_EQ(std::format("[{:.8}]", orvo::UUID(kText)), "[12345678]");
  EXPECT_EQ(std::format("[{:_>12.10}]", orvo::TimeValue()), "[__1970-01-01]");
}

TEST(StdFormat, RejectsTheSpecificationsOfNumbers) {
  const orvo::UUID uuid;
  EXPECT_THROW(
      static_cast<void>(std::vformat("{:d}", std::make_format_args(uuid))),
      std::format_error);
}

}  // namespace

#else

TEST(StdFormat, IsNotThere) {
  GTEST_SKIP() << "The standard library has no std::format().";
}

#endif
