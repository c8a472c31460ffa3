#include "orvo/operation_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <functional>
#include <iostream>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/recording_streambuf.h"

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

TEST(OperationLog, FlushesEachLineAsSoonAsItIsWritten) {
  orvo_test::RecordingStreambuf recorder;
  std::streambuf* const saved = std::cout.rdbuf(&recorder);
  orvo::LogAttempt("f", 1, "go");
  orvo::LogSuccess("f", 2, "go");
  std::cout.rdbuf(saved);
  EXPECT_THAT(
      recorder.calls,
      testing::ElementsAre("[DEBUG] f line 1: Go.\n", "(flush)",
                           "[DEBUG] f line 2: Succeeded go.\n", "(flush)"));
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

struct Call {
  const char* file;
  unsigned int line;
  std::string what;
};
std::vector<Call> filtered_calls;

TEST(LogFilter, HandsItsArgumentsOnOnceAsTheyAre) {
  filtered_calls.clear();
  const char file[] = "dir/file.cpp";
  orvo::LogFilter(
      [](const char* name, unsigned int line, const std::string& what) {
        filtered_calls.push_back({name, line, what});
      },
      file, 4294967295U, "open it", true);
  ASSERT_EQ(filtered_calls.size(), 1U);
  EXPECT_EQ(filtered_calls[0].file, +file);
  EXPECT_EQ(filtered_calls[0].line, 4294967295U);
  EXPECT_EQ(filtered_calls[0].what, "open it");
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

TEST(OperationLog, PrintsLineZeroAndBlanksInTheFileNameAsTheyAre) {
  EXPECT_EQ(OutputOf([] { orvo::LogAttempt("my file.cpp", 0, "go"); }),
            "[DEBUG] my file.cpp line 0: Go.\n");
  EXPECT_EQ(OutputOf([] { orvo::LogSuccess("my file.cpp", 0, "go"); }),
            "[DEBUG] my file.cpp line 0: Succeeded go.\n");
  EXPECT_EQ(orvo::CreateFailureMessage("my file.cpp", 0, "go", ""),
            "my file.cpp line 0: Error go.");
  EXPECT_EQ(orvo::CreateFailureMessage("my file.cpp", 0, "", ""),
            "my file.cpp line 0: Error.");
}

TEST(OperationLog, PrintsLinesThatNoIntHoldsAsNegativeOnes) {
  constexpr unsigned int kLine = 4294967295U;
  EXPECT_EQ(OutputOf([] { orvo::LogAttempt("f", kLine, "go"); }),
            "[DEBUG] f line -1: Go.\n");
  EXPECT_EQ(OutputOf([] { orvo::LogSuccess("f", kLine, "go"); }),
            "[DEBUG] f line -1: Succeeded go.\n");
  EXPECT_EQ(orvo::CreateFailureMessage("f", kLine, "go", "why"),
            "f line -1: Error go.\n        why");
  EXPECT_EQ(orvo::CreateFailureMessage("f", kLine, "", ""),
            "f line -1: Error.");
}

TEST(OperationLog, PassesOnThatMemoryRunsOut) {
  const std::string file(300, 'f');
  const std::string what(300, 'w');
  const struct {
    const char* function;
    std::function<void()> call;
  } cases[] = {
      {"LogAttempt", [&] { orvo::LogAttempt(file.c_str(), 1, what); }},
      {"LogSuccess", [&] { orvo::LogSuccess(file.c_str(), 1, what); }},
      {"LogFilter",
       [&] { orvo::LogFilter(orvo::LogAttempt, file.c_str(), 1, what, true); }},
      {"CreateFailureMessage",
       [&] { orvo::CreateFailureMessage(file.c_str(), 1, what, what); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function);
    const StdoutCapture capture;
    int failures = 0;
    for (bool finished = false; !finished; ++failures) {
      const orvo_test::ScopedAllocationFailure failure(failures);
      try {
        c.call();
        finished = true;
      } catch (const std::bad_alloc&) {
      }
    }
    EXPECT_GT(failures, 2);
  }
}

TEST(OperationLog, WritesTheStartOfALineWhenMemoryRunsOut) {
  const std::string what(300, 'w');
  EXPECT_EQ(OutputOf([&] {
              const orvo_test::ScopedAllocationFailure failure;
              EXPECT_THROW(orvo::LogSuccess("f", 1, what), std::bad_alloc);
            }),
            "[DEBUG] ");
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
