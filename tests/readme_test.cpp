#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/capture.h"
#include "tests/support/files.h"

namespace {

using orvo_test::ExamplePath;
using orvo_test::ReadFile;
using orvo_test::RunProgram;
using orvo_test::SourcePath;

// What stands between the first such fence and the next line of three
// backquotes.
std::string FirstBlock(const std::string& text, const std::string& fence) {
  const std::size_t begin = text.find("\n" + fence + "\n");
  if (begin == std::string::npos) return "no block " + fence;
  const std::size_t start = begin + fence.size() + 2;
  return text.substr(start, text.find("\n```", start) + 1 - start);
}

TEST(Readme, ShowsAnExampleAsItIs) {
  EXPECT_EQ(FirstBlock(ReadFile(SourcePath("README.md")), "```cpp"),
            ReadFile(SourcePath("examples/foreign_unlock.cpp")));
}

TEST(Readme, ShowsTheOutputOfThatExample) {
  EXPECT_EQ(FirstBlock(ReadFile(SourcePath("README.md")), "```text"),
            RunProgram({ExamplePath("foreign_unlock")}).output);
}

}  // namespace
