// The library from the first initialiser of a program to its last exit handler.
#include <gtest/gtest.h>

#include "tests/support/capture.h"
#include "tests/support/files.h"

namespace {

TEST(Library, IsOfUseFromStartToExit) {
  const orvo_test::TemporaryFolder folder;
  const orvo_test::ProgramResult result = orvo_test::RunProgram(
      {orvo_test::ProgramPath("lifetime"), folder.path()});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors,
            "first ok\n"
            "constructor ok\n"
            "main ok\n"
            "handler ok\n"
            "destructor ok\n"
            "last ok\n");
}

}  // namespace
