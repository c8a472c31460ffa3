#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/capture.h"

namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;

TEST(LockDoctor, ShowsWhatTheLibrarySaysOfEachAccident) {
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ExamplePath("lock_doctor")});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(
      result.output,
      AllOf(StartsWith("1. The waiter wants the stove while the cook has it\n"
                       "   ********\n"
                       "   waiter cannot acquire lock stove because  is not "
                       "sharing.\n"
                       "2. A guest turns off a stove that was never the "
                       "guest's\n"
                       "   Error: guest tried to release lock stove without "
                       "first acquiring it.\n"
                       "3. The cook waits for the cook\n"
                       "   stack trace:\n"),
            HasSubstr(" kitchen::CookWaitsForCook() + "),
            HasSubstr("   Error: This lock is already owned by this thread.\n"
                      "4. The cook closes the recipe once too often\n"
                      "   Error: cook tried to release lock recipe more times "
                      "than it was acquired.\n"
                      "5. The waiter waits for a dish that never comes\n"
                      "   Error: no dish within a second\n"
                      "5 of 5 accidents were reported.\n"),
            ContainsRegex("\nLock oven is held by cook, depth 1, last "
                          "announced from Roast --> examples/lock_doctor.cpp:"
                          "[0-9]+\\.\n$")));
}

}  // namespace
