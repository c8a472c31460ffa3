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

TEST(NaturalSort, SortsTheLinesOfAFile) {
  const orvo_test::TemporaryFolder folder;
  orvo_test::WriteFile(folder / "names", "file10\nfile9\n\nfile1\n-10\n-5\n");
  const ProgramResult result =
      RunProgram({ExamplePath("natural_sort"), folder / "names"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "\n-5\n-10\nfile1\nfile9\nfile10\n");
  EXPECT_EQ(result.errors, "");
}

TEST(NaturalSort, ReadsTheStandardInputWithoutAFile) {
  const ProgramResult result =
      RunProgram({ExamplePath("natural_sort")}, "b2\nb10\nb1");
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "b1\nb2\nb10\n");
}

TEST(NaturalSort, WritesNothingForNoLines) {
  const ProgramResult result = RunProgram({ExamplePath("natural_sort")});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "");
}

TEST(NaturalSort, LeavesTiedLinesInTheirOrder) {
  const ProgramResult result =
      RunProgram({ExamplePath("natural_sort")}, "x7\nx007\nx07\nx1\n");
  EXPECT_EQ(result.output, "x1\nx7\nx007\nx07\n");
}

TEST(NaturalSort, RefusesAFileThatCannotBeRead) {
  ORVO_NEEDS_LIBSTDCXX();
  const orvo_test::TemporaryFolder folder;
  for (const std::string& path : {folder / "missing", folder.path()}) {
    SCOPED_TRACE(path);
    const ProgramResult result =
        RunProgram({ExamplePath("natural_sort"), path});
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "natural_sort: cannot read " + path + "\n");
  }
}

TEST(NaturalSort, RefusesMoreThanOneArgument) {
  const ProgramResult result =
      RunProgram({ExamplePath("natural_sort"), "a", "b"});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "natural_sort: more than one file; usage: natural_sort [FILE]\n");
}

}  // namespace
