#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>

#include "orvo/orvo_lock_debug.h"
#include "tests/support/grouped_digits.h"

namespace {

using orvo::LockingCodeReference;

// A file below the development root, which tests/CMakeLists.txt names.
std::string BelowRoot(const std::string& file) {
  return ORVO_TEST_DEVELOPMENT_ROOT "/" + file;
}

TEST(LockingCodeReference, IsEmptyByDefault) {
  const LockingCodeReference reference;
  EXPECT_FALSE(reference.HasReference());
  EXPECT_EQ(reference.GetAsString(), "");
}

TEST(LockingCodeReference, NamesFunctionFileAndLine) {
  const LockingCodeReference reference("Wait", BelowRoot("a/b.cpp"), 62);
  EXPECT_TRUE(reference.HasReference());
  EXPECT_EQ(reference.GetAsString(), "Wait --> a/b.cpp:62");
}

TEST(LockingCodeReference, CountsOnlyWithAFunction) {
  const LockingCodeReference reference("", BelowRoot("a/b.cpp"), 62);
  EXPECT_FALSE(reference.HasReference());
  EXPECT_EQ(reference.GetAsString(), "");
}

TEST(LockingCodeReference, ShowsFilesAgainstTheDevelopmentRoot) {
  const std::string root = ORVO_TEST_DEVELOPMENT_ROOT;
  const std::string first = root.substr(0, root.find('/', 1));
  const struct {
    std::string file;
    std::string text;
  } cases[] = {
      {"", "f --> :3"},
      {root, "f --> :3"},
      {"a.cpp", "f --> a.cpp:3"},
      {"relative/a.cpp", "f --> relative/a.cpp:3"},
      {"/no-such-directory/deep/down/in/it/a.cpp",
       "f --> no-such-directory/deep/down/in/it/a.cpp:3"},
      {first + "/x/x/x/x/x/x/a.cpp", "f --> x/x/x/x/x/x/a.cpp:3"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    EXPECT_EQ(LockingCodeReference("f", c.file, 3).GetAsString(), c.text);
  }
}

TEST(LockingCodeReference, ShowsAPathShorterThanTheRootAsItIs) {
  const std::string root = ORVO_TEST_DEVELOPMENT_ROOT;
  if (root.find('/', 1) == std::string::npos) {
    GTEST_SKIP() << "no path is shorter than " << root;
  }
  EXPECT_EQ(LockingCodeReference("f", "/a.cpp", 3).GetAsString(),
            "f --> /a.cpp:3");
}

TEST(LockingCodeReference, ShowsAnyLineInDecimal) {
  const struct {
    int line;
    const char* text;
  } cases[] = {
      {0, "f --> :0"},
      {-1, "f --> :-1"},
      {1234567, "f --> :1234567"},
      {INT_MAX, "f --> :2147483647"},
      {INT_MIN, "f --> :-2147483648"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    EXPECT_EQ(LockingCodeReference("f", "", c.line).GetAsString(), c.text);
  }
}

TEST(LockingCodeReference, DoesNotGroupDigitsAsTheLocaleDoes) {
  const orvo_test::ScopedGroupedDigits locale;
  EXPECT_EQ(LockingCodeReference("f", "a.cpp", 1234567).GetAsString(),
            "f --> a.cpp:1234567");
}

TEST(LockingCodeReference, KeepsBytesAsTheyAre) {
  const std::string odd("a\0\xff\n", 4);
  EXPECT_EQ(LockingCodeReference(odd, odd, 1).GetAsString(),
            odd + " --> " + odd + ":1");
}

TEST(LockingCodeReference, IsMovedAndCopiedAsAValue) {
  LockingCodeReference source("f", "a long name of a file.cpp", 3);
  const LockingCodeReference copy(source);
  LockingCodeReference assigned;
  assigned = copy;
  EXPECT_EQ(assigned.GetAsString(), "f --> a long name of a file.cpp:3");
  LockingCodeReference moved;
  moved = std::move(source);
  EXPECT_EQ(moved.GetAsString(), "f --> a long name of a file.cpp:3");
  const LockingCodeReference constructed(std::move(moved));
  EXPECT_EQ(constructed.GetAsString(), "f --> a long name of a file.cpp:3");
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<LockingCodeReference>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<LockingCodeReference>);
}

TEST(LockingCodeReference, HoldsTwoStringsAndALine) {
  struct Expected {
    std::string function;
    std::string file;
    int line;
  };
  EXPECT_EQ(sizeof(LockingCodeReference), sizeof(Expected));
}

}  // namespace
