#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/standard_library.h"

namespace {

using orvo_test::ProgramResult;

ProgramResult Wrap(std::vector<std::string> arguments,
                   std::string_view input = {}) {
  arguments.insert(arguments.begin(), orvo_test::ExamplePath("wrap"));
  return orvo_test::RunProgram(arguments, input);
}

TEST(WrapExample, WrapsTheStandardInput) {
  const ProgramResult result = Wrap({"9"}, "one two\nthree  four five\n");
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "one two\nthree\nfour five\n");
  EXPECT_EQ(result.errors, "");
}

TEST(WrapExample, KeepsParagraphsApartAndIndentsThem) {
  const ProgramResult result = Wrap({"7", "2"}, "a b c d\n\nlonger e\n \n");
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, "  a b c\n  d\n\n  longer\n  e\n\n");
}

TEST(WrapExample, PrintsNothingForNoText) {
  EXPECT_EQ(Wrap({"80"}).output, "");
}

TEST(WrapExample, ReadsAFile) {
  const ProgramResult result =
      Wrap({"60", "4", orvo_test::SourcePath("LICENSE")});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_THAT(result.output, testing::StartsWith("    "));
  EXPECT_EQ(result.errors, "");
}

TEST(WrapExample, ReportsABadArgumentInOneLine) {
  ORVO_NEEDS_LIBSTDCXX();
  const struct {
    std::vector<std::string> arguments;
    const char* errors;
  } cases[] = {
      {{}, "wrap: usage: wrap WIDTH [INDENT] [FILE]\n"},
      {{"1", "2", "3", "4"}, "wrap: usage: wrap WIDTH [INDENT] [FILE]\n"},
      {{"wide"},
       "wrap: WIDTH must be a whole number from 1 to 1000, not \"wide\"\n"},
      {{""}, "wrap: WIDTH must be a whole number from 1 to 1000, not \"\"\n"},
      {{"0"}, "wrap: WIDTH must be a whole number from 1 to 1000, not \"0\"\n"},
      {{"99999999999"},
       "wrap: WIDTH must be a whole number from 1 to 1000, not "
       "\"99999999999\"\n"},
      {{"40", "-1"},
       "wrap: INDENT must be a whole number from 0 to 1000, not \"-1\"\n"},
      {{"40", "0", "missing/file"}, "wrap: cannot read missing/file\n"},
      {{"40", "0", "/"}, "wrap: cannot read /\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.errors);
    const ProgramResult result = Wrap(c.arguments);
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, c.errors);
  }
}

}  // namespace
