#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/capture.h"

namespace {

using testing::HasSubstr;

TEST(DebugImplementationBehindALock, EndsTheProcessAfterAWaitThatIsSignalled) {
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ProgramPath("debug_lock_wait")});
  EXPECT_EQ(result.exit_status, -SIGABRT);
  EXPECT_THAT(result.errors,
              HasSubstr("waiter tried to release lock orders without first "
                        "acquiring it."));
}

}  // namespace
