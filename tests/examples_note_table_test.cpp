#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/capture.h"

namespace {

using orvo_test::ExamplePath;
using orvo_test::ProgramResult;
using orvo_test::RunProgram;

TEST(NoteTableExample, PrintsALineForEachNote) {
  const ProgramResult result = RunProgram({ExamplePath("note_table")});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 128);
  EXPECT_THAT(result.output, testing::StartsWith("   0    C-2     C-2     \n"));
  EXPECT_THAT(result.output,
              testing::HasSubstr("\n  61    C#3     Db3     \n"));
  EXPECT_THAT(result.output, testing::EndsWith("\n 127    G8      G8      \n"));
  EXPECT_EQ(result.errors, "");
}

TEST(NoteTableExample, TakesNoArguments) {
  const ProgramResult result = RunProgram({ExamplePath("note_table"), "C3"});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "usage: note_table\n");
}

}  // namespace
