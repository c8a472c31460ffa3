#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/standard_library.h"

namespace {

using orvo_test::ExamplePath;
using orvo_test::ProgramResult;
using orvo_test::RunProgram;
using orvo_test::TemporaryFolder;
using orvo_test::WriteFile;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(WordCount, PrintsATableOfAllFiles) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "one two\nthree\n");
  WriteFile(folder / "b", "  four");
  const ProgramResult result =
      RunProgram({ExamplePath("word_count"), folder / "a", folder / "b"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output,
              EndsWith("    lines     words       bytes  file\n"
                       "        2         3          14  " +
                       (folder / "a") +
                       "\n"
                       "        0         1           6  " +
                       (folder / "b") +
                       "\n"
                       "        2         4          20  total\n"));
}

TEST(WordCount, LogsEachAttemptAndSuccessIfAsked) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "x");
  const ProgramResult result =
      RunProgram({ExamplePath("word_count"), "-v", folder / "a"});
  EXPECT_THAT(
      result.output,
      AllOf(
          MatchesRegex(
              "\\[DEBUG\\] examples/word_count.cpp line [0-9]+: Count [^\n]*\n"
              "\\[DEBUG\\] examples/word_count.cpp line [0-9]+: Succeeded "
              "count [^\n]*\n(.|\n)*"),
          HasSubstr(": Count " + (folder / "a") + ".\n"),
          HasSubstr(": Succeeded count " + (folder / "a") + ".\n")));
}

TEST(WordCount, ReportsUnreadableFilesAndCountsTheOthers) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "one\n");
  const ProgramResult result =
      RunProgram({ExamplePath("word_count"), folder / "missing", folder / "a"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(
      result.errors,
      AllOf(MatchesRegex("examples/word_count.cpp line [0-9]+: [^\n]*\n"
                         "        No such file or directory\n"),
            HasSubstr(": Error count " + (folder / "missing") + ".\n")));
  EXPECT_THAT(result.output,
              HasSubstr("        1         1           4  total\n"));
}

TEST(WordCount, ReportsAFolder) {
  ORVO_NEEDS_LIBSTDCXX();
  const TemporaryFolder folder;
  const ProgramResult result =
      RunProgram({ExamplePath("word_count"), folder.path()});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_THAT(result.errors, EndsWith("\n        Is a directory\n"));
}

TEST(WordCount, ExplainsItsUse) {
  const ProgramResult result = RunProgram({ExamplePath("word_count")});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "usage: word_count [-v] FILE...\n");
}

}  // namespace
