#include "orvo/operation_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/capture.h"

namespace {

using orvo_test::StdoutCapture;

template <typename Action>
std::string OutputOf(Action action) {
  const StdoutCapture capture;
  action();
  return capture.Text();
}

TEST(LogAttempt, WritesACapitalisedSentence) {
  const struct {
    const char* what;
    const char* line;
  } cases[] = {
      {"open settings", "[DEBUG] a/b line 12: Open settings.\n"},
      {"", "[DEBUG] a/b line 12: Executing.\n"},
      {"x", "[DEBUG] a/b line 12: X.\n"},
      {"Open it", "[DEBUG] a/b line 12: Open it.\n"},
      {"3 tries", "[DEBUG] a/b line 12: 3 tries.\n"},
      {"stop.", "[DEBUG] a/b line 12: Stop..\n"},
      {"\xE9t\xE9", "[DEBUG] a/b line 12: \xE9t\xE9.\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(OutputOf([&] { orvo::LogAttempt("a/b", 12, c.what); }), c.line);
  }
}

TEST(LogAttempt, PrintsLineZeroAndBlanksInTheFileNameAsTheyAre) {
  EXPECT_EQ(OutputOf([] { orvo::LogAttempt("my file.cpp", 0, "go"); }),
            "[DEBUG] my file.cpp line 0: Go.\n");
}

TEST(LogAttempt, TakesDescriptionsOfAnyLength) {
  const std::string what(1000, 'y');
  EXPECT_EQ(OutputOf([&] { orvo::LogAttempt("f", 1, what); }),
            "[DEBUG] f line 1: Y" + std::string(999, 'y') + ".\n");
}

TEST(LogSuccess, KeepsTheDescriptionAsItIs) {
  const struct {
    const char* what;
    const char* line;
  } cases[] = {
      {"open settings", "[DEBUG] a/b line 12: Succeeded open settings.\n"},
      {"", "[DEBUG] a/b line 12: Succeeded executing.\n"},
      {"stop.", "[DEBUG] a/b line 12: Succeeded stop..\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(OutputOf([&] { orvo::LogSuccess("a/b", 12, c.what); }), c.line);
  }
}

TEST(LogFilter, DoesNothingWhenSwitchedOff) {
  EXPECT_EQ(OutputOf([] {
              orvo::LogFilter(orvo::LogAttempt, "f", 1, "go", false);
              orvo::LogFilter(nullptr, "f", 1, "go", false);
            }),
            "");
}

TEST(LogFilter, CallsTheFunctionWhenSwitchedOn) {
  EXPECT_EQ(OutputOf([] {
              orvo::LogFilter(orvo::LogAttempt, "f", 1, "go", true);
              orvo::LogFilter(orvo::LogSuccess, "f", 2, "", true);
            }),
            "[DEBUG] f line 1: Go.\n[DEBUG] f line 2: Succeeded executing.\n");
}

TEST(CreateFailureMessage, NamesPlaceOperationAndDetails) {
  const struct {
    const char* what;
    const char* details;
    const char* message;
  } cases[] = {
      {"reading header", "bad magic",
       "a/b line 7: Error reading header.\n        bad magic"},
      {"reading header", "", "a/b line 7: Error reading header."},
      {"", "bad magic", "a/b line 7: Error.\n        bad magic"},
      {"", "", "a/b line 7: Error."},
      {"x", "one\ntwo", "a/b line 7: Error x.\n        one\ntwo"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    EXPECT_EQ(orvo::CreateFailureMessage("a/b", 7, c.what, c.details),
              c.message);
  }
}

TEST(CreateFailureMessage, PrintsNothing) {
  EXPECT_EQ(OutputOf([] {
              EXPECT_NE(orvo::CreateFailureMessage("f", 1, "x", "y"), "");
            }),
            "");
}

TEST(OperationLog, WritesWholeLinesFromManyThreads) {
  constexpr int kThreads = 8;
  constexpr int kLines = 200;
  const std::string output = OutputOf([] {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([] {
        for (int j = 0; j < kLines; ++j) orvo::LogAttempt("file", 5, "work");
      });
    }
    for (std::thread& thread : threads) thread.join();
  });
  std::string expected;
  for (int i = 0; i < kThreads * kLines; ++i) {
    expected += "[DEBUG] file line 5: Work.\n";
  }
  EXPECT_EQ(output, expected);
}

}  // namespace
