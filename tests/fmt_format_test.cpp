#include "orvo/fmt_format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace {

constexpr const char* kText = "12345678-9abc-def0-0123-456789abcdef";

TEST(FmtFormat, TakesUUIDs) {
  EXPECT_EQ(fmt::format("<{}>", orvo::UUID(kText)),
            "<12345678-9abc-def0-0123-456789abcdef>");
}

TEST(FmtFormat, TakesTimesAsIsoTexts) {
  EXPECT_EQ(fmt::format("<{}>", orvo::TimeValue(std::chrono::nanoseconds(
                                    1794777596123456789))),
            "<2026-11-15T21-19-56.123456789Z>");
  EXPECT_EQ(fmt::format("{}", orvo::TimeValue()),
            "1970-01-01T00-00-00.000000000Z");
}

TEST(FmtFormat, TakesNotes) {
  EXPECT_EQ(fmt::format("{} {}", orvo::midi::Note(60), orvo::midi::Note(1)),
            "C3 C#-2");
}

TEST(FmtFormat, TakesTheSpecificationsOfStrings) {
  EXPECT_EQ(fmt::format("[{:>5}]", orvo::midi::Note(60)), "[   C3]");
  EXPECT_EQ(fmt::format("[{:5}]", orvo::midi::Note(60)), "[C3   ]");
  EXPECT_EQ(fmt::format("[{:*^{}}]", orvo::midi::Note(60), 6), "[**C3**]");
  EXPECT_EQ(fmt::format("[{:*<40}]", orvo::UUID(kText)),
            "[12345678-9abc-def0-0123-456789abcdef****]");
  EXPECT_EQ(fmt::format("[{:.8}]", orvo::UUID(kText)), "[12345678]");
  EXPECT_EQ(fmt::format("[{:_>12.10}]", orvo::TimeValue()), "[__1970-01-01]");
}

TEST(FmtFormat, RejectsTheSpecificationsOfNumbers) {
  EXPECT_THROW(
      static_cast<void>(fmt::format(fmt::runtime("{:d}"), orvo::UUID())),
      fmt::format_error);
}

}  // namespace
