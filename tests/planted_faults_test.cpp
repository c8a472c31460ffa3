// The checks that a build was made for find what they are there to find.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture.h"

namespace {

using orvo_test::ProgramPath;
using orvo_test::ProgramResult;
using orvo_test::RunProgram;
using testing::HasSubstr;

struct PlantedFault {
  const char* flag;  ///< The part of the compiler's flags that makes the check.
  std::vector<std::string> program;
  const char* report;
  testing::Matcher<int> exit_status = testing::Ne(0);
};

TEST(PlantedFaults, AreFoundByTheChecksOfThisBuild) {
  const PlantedFault cases[] = {
      {"=address", {"planted_fault", "behind_the_end"}, "heap-buffer-overflow"},
      {"=address", {"planted_fault", "leak"}, "detected memory leaks"},
      {"=address",
       {"planted_fault", "returned_local"},
       "stack-use-after-return"},
      {"=address", {"planted_order"}, "initialization-order-fiasco"},
      {",undefined", {"planted_fault", "overflow"}, "signed integer overflow"},
      {"float-cast-overflow", {"planted_fault", "cast"}, "outside the range"},
      {"=thread", {"planted_fault", "race"}, "data race"},
      {"-D_GLIBCXX_ASSERTIONS",
       {"planted_fault", "index"},
       "Assertion '__n < this->size()'"},
      {"-D_GLIBCXX_DEBUG",
       {"planted_fault", "foreign_iterators"},
       "iterators from different sequences"},
      {"-funsigned-char", {"planted_fault", "unsigned_char"}, "", 1},
  };
  const std::string flags = ORVO_TEST_COMPILER_FLAGS;
  bool checked = false;
  for (const PlantedFault& c : cases) {
    if (flags.find(c.flag) == std::string::npos) continue;
    checked = true;
    SCOPED_TRACE(c.program.back());
    std::vector<std::string> program = c.program;
    program[0] = ProgramPath(program[0]);
    const ProgramResult result = RunProgram(program);
    EXPECT_THAT(result.exit_status, c.exit_status);
    EXPECT_THAT(result.errors, HasSubstr(c.report));
  }
  if (!checked) GTEST_SKIP() << "No check belongs to " << flags;
}

}  // namespace
