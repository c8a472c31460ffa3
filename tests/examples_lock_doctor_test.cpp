#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/capture.h"

namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;

TEST(LockDoctor, ShowsWhatTheLibrarySaysOfEachAccident) {
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ExamplePath("lock_doctor")});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(
      result.output,
      AllOf(HasSubstr("=== The waiter wants the stove while the cook has it\n"
                      " \n\n\n********\n\n\nwaiter cannot acquire lock stove "
                      "because  is not sharing.\n"),
            HasSubstr("Error: guest tried to release lock stove without first "
                      "acquiring it.\n"),
            HasSubstr("=== The cook waits for the cook\n\nstack trace:\n"),
            HasSubstr("kitchen::TurnUp(orvo::Lock&) + "),
            HasSubstr("Error: This lock is already owned by this thread.\n"),
            HasSubstr("Error: cook tried to release lock recipe more times "
                      "than it was acquired.\n"),
            HasSubstr("Error: no dish within a second\n"),
            HasSubstr("5 of 5 accidents were reported.\n"),
            ContainsRegex("\nLock oven is held by cook, depth 1, last "
                          "announced from Roast --> examples/lock_doctor.cpp:"
                          "[0-9]+\\.\n$")));
}

}  // namespace
