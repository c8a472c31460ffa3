#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture.h"

namespace {

using orvo_test::ProgramResult;

constexpr const char* kForms =
    "text           12345678-9abc-def0-0123-456789abcdef\n"
    "network        12 34 56 78 9a bc de f0 01 23 45 67 89 ab cd ef\n"
    "little-endian  78 56 34 12 bc 9a f0 de 01 23 45 67 89 ab cd ef\n";

ProgramResult Convert(std::vector<std::string> arguments,
                      std::string_view input = {}) {
  arguments.insert(arguments.begin(), orvo_test::ExamplePath("uuid_convert"));
  return orvo_test::RunProgram(arguments, input);
}

TEST(UuidConvertExample, PrintsThreeForms) {
  const ProgramResult result =
      Convert({"12345678-9ABC-DEF0-0123-456789ABCDEF"});
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, kForms);
  EXPECT_EQ(result.errors, "");
}

TEST(UuidConvertExample, ReadsTheStandardInput) {
  EXPECT_EQ(Convert({"-"}, "12345678-9abc-def0-0123-456789abcdef\n").output,
            kForms);
}

TEST(UuidConvertExample, RejectsATextWithoutFiveGroups) {
  const ProgramResult result = Convert({"1-2-3"});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "uuid_convert: a UUID has five groups of digits with \"-\" between "
            "them, unlike \"1-2-3\"\n");
  EXPECT_EQ(Convert({"-"}).exit_status, 2);
}

TEST(UuidConvertExample, WantsOneArgument) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"a", "b"}}) {
    const ProgramResult result = Convert(arguments);
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "usage: uuid_convert TEXT|-\n");
  }
}

}  // namespace
