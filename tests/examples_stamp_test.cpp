#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/capture.h"
#include "tests/support/time_zone.h"

namespace {

using orvo_test::ExamplePath;
using orvo_test::ProgramResult;
using orvo_test::RunProgram;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(Stamp, PrintsEveryFormOfATime) {
  const orvo_test::ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const ProgramResult result =
      RunProgram({ExamplePath("stamp"), "15724800.75"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "as a stream shows   15724800.750000\n"
            "double              15724800.750000000 s\n"
            "float               15724801 s\n"
            "whole seconds       15724801 s\n"
            "microseconds        15724800750000 us\n"
            "nanoseconds         15724800750000000 ns\n"
            "timeval             15724800 s, 750000 us\n"
            "timespec            15724800 s, 750000000 ns\n"
            "file name           1970-07-02T00-00-01Z\n"
            "ISO 8601            1970-07-02T00:00:01Z\n"
            "milliseconds        1970-07-02T00-00-00.750Z\n"
            "precise             1970-07-02T00-00-00.750000000Z\n"
            "UTC                 1970-07-02 00:00:00 GMT\n"
            "local time          1970-07-02 02:00:00 CEST\n");
}

TEST(Stamp, TakesTimesBefore1970) {
  const ProgramResult result = RunProgram({ExamplePath("stamp"), "-1.5"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_THAT(result.output, HasSubstr("timespec            -1 s, -500000000 "
                                       "ns\n"));
  EXPECT_THAT(result.output,
              HasSubstr("file name           1969-12-31T23-59-58Z\n"));
}

TEST(Stamp, PrintsTheCurrentTimeByDefault) {
  const ProgramResult result = RunProgram({ExamplePath("stamp")});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_THAT(result.output,
              MatchesRegex("as a stream shows   [0-9]+\\.[0-9]{6}\n(.|\n)*"));
}

TEST(Stamp, ReportsWhatIsNotATime) {
  for (const std::string text :
       {"", "x", "1x", " 1", "1 ", "1,5", "0x10", "nan", "inf", "1e300",
        "9223372037", "-9223372037"}) {
    SCOPED_TRACE(text);
    const ProgramResult result = RunProgram({ExamplePath("stamp"), text});
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "stamp: not a number of seconds within 292 years of 1970: " +
                  text + "\n");
  }
}

TEST(Stamp, ExplainsItsUse) {
  const ProgramResult result = RunProgram({ExamplePath("stamp"), "1", "2"});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "usage: stamp [SECONDS]\n");
}

}  // namespace
