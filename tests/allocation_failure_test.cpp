// Every exported function with each of its allocations failing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/allocation_sweep.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"

namespace {

using orvo_test::AllocationCase;
using orvo_test::Attempt;
using orvo_test::FindGaps;
using orvo_test::Just;
using orvo_test::OutOfMemory;
using orvo_test::Sweep;
using orvo_test::SweepFigures;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> ReadLines(const std::string& path) {
  std::istringstream text(orvo_test::ReadFile(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

std::vector<AllocationCase> AllCases() {
  std::vector<AllocationCase> cases = orvo_test::ValueCases();
  for (AllocationCase& c : orvo_test::LockCases()) {
    cases.push_back(std::move(c));
  }
  return cases;
}

TEST(AllocationFailure, IsTriedOnEveryExportedFunction) {
  const std::vector<std::string> symbols =
      ReadLines(orvo_test::SourcePath("tests/package/symbols.txt"));
  ASSERT_GT(symbols.size(), 300U);
  EXPECT_THAT(FindGaps(symbols, AllCases()), IsEmpty());
}

TEST(AllocationFailure, LeavesEverythingSound) {
  SweepFigures sum;
  int functions = 0;
  for (const AllocationCase& c : AllCases()) {
    SCOPED_TRACE(c.functions.front().prefix);
    SweepFigures figures;
    {
      const orvo_test::StdoutCapture capture;
      figures = Sweep(c);
    }
    EXPECT_TRUE(figures.as_expected) << "line " << figures.unsound_line;
    EXPECT_EQ(figures.leaked, 0);
    EXPECT_EQ(figures.failures == 0, c.expected == OutOfMemory::kNeverMatters);
    EXPECT_EQ(figures.ends != 0, c.expected == OutOfMemory::kEnds);
    for (const auto& function : c.functions) functions += function.count;
    sum += figures;
  }
  EXPECT_GE(functions, 300);
  std::cout << "allocation failure: " << functions << " functions, " << sum.runs
            << " runs, " << sum.failures << " with failed allocations, "
            << sum.ends << " ended by rule, " << sum.leaked << " leaks\n";
}

// Objects of the whole process are made while it loads, where nobody could
// catch an exception.
TEST(AllocationFailure, EndsAProcessThatCannotLoad) {
  int ends = 0;
  orvo_test::ProgramResult result;
  for (;; ++ends) {
    ASSERT_LT(ends, 1000);
    result = orvo_test::RunProgram(
        {"/usr/bin/env", "ORVO_TEST_ALLOCATIONS=" + std::to_string(ends),
         orvo_test::ProgramPath("failing_start")});
    if (result.exit_status == 0) break;
    ASSERT_EQ(result.exit_status, -SIGABRT) << ends;
    ASSERT_THAT(result.errors, testing::HasSubstr("bad_alloc"));
  }
  EXPECT_GT(ends, 10);
  EXPECT_EQ(result.output, "Unnamed thread 9 128\n");
  std::cout << "allocation failure: " << ends << " starts ended\n";
}

// What the sweep has to catch.

std::vector<std::unique_ptr<std::string>> lost;

void Leak() {
  auto* const text = new std::string;
  try {
    text->assign(100, 'x');
  } catch (const std::bad_alloc&) {
    lost.emplace_back(text);  // with room that was made before
    throw;
  }
  delete text;
}

// Compilers may leave out a string that nobody looks at, but no call of these.
void AllocateOnce() {
  operator delete(operator new(100));
}

pthread_mutex_t kept = PTHREAD_MUTEX_INITIALIZER;

void KeepALock() {
  pthread_mutex_lock(&kept);
  AllocateOnce();
  pthread_mutex_unlock(&kept);
}

void TryForEver() {
  for (;;) {
    try {
      AllocateOnce();
      return;
    } catch (const std::bad_alloc&) {
    }
  }
}

SweepFigures SweepOf(OutOfMemory expected, void (*call)()) {
  return Sweep({{}, expected, Just(call)});
}

TEST(AllocationSweep, SeesALeak) {
  lost.reserve(4);
  for (const auto expected : {OutOfMemory::kThrows, OutOfMemory::kEnds}) {
    const SweepFigures figures = SweepOf(expected, Leak);
    EXPECT_TRUE(figures.as_expected);
    EXPECT_EQ(figures.leaked, 2);
    lost.clear();
  }
}

TEST(AllocationSweep, TakesWhatAFirstCallKeepsForNoLeak) {
  static std::unique_ptr<std::string> first;
  const auto keep = [] {
    if (first == nullptr) first = std::make_unique<std::string>(100, 'x');
    AllocateOnce();
  };
  for (const auto expected : {OutOfMemory::kEnds, OutOfMemory::kThrows}) {
    const SweepFigures figures = SweepOf(expected, keep);
    EXPECT_TRUE(figures.as_expected);
    EXPECT_EQ(figures.leaked, 0);
  }
}

TEST(AllocationSweep, SeesALockThatIsKept) {
  const AllocationCase keeping = {
      {}, OutOfMemory::kThrows, [](Attempt& attempt) {
        attempt(KeepALock);
        const int held = pthread_mutex_trylock(&kept);
        pthread_mutex_unlock(&kept);
        attempt.Check(held == 0);
      }};
  EXPECT_FALSE(Sweep(keeping).as_expected);
}

TEST(AllocationSweep, EndsACallThatTriesForEver) {
  EXPECT_FALSE(SweepOf(OutOfMemory::kEnds, TryForEver).as_expected);
}

TEST(AllocationSweep, SeesAFailureThatIsSwallowed) {
  const auto swallow = [] {
    try {
      AllocateOnce();
    } catch (const std::bad_alloc&) {
    }
  };
  EXPECT_FALSE(SweepOf(OutOfMemory::kThrows, swallow).as_expected);
  EXPECT_TRUE(SweepOf(OutOfMemory::kMayBeKept, swallow).as_expected);
}

TEST(AllocationSweep, CountsRunsThatEndTheProcess) {
  const auto end = []() noexcept { AllocateOnce(); };
  const SweepFigures figures = SweepOf(OutOfMemory::kEnds, end);
  EXPECT_TRUE(figures.as_expected);
  EXPECT_EQ(figures.ends, 4);
}

TEST(AllocationSweep, FindsFunctionsThatNobodyTries) {
  const std::vector<std::string> symbols = {"orvo::Old(int)", "orvo::Old(long)",
                                            "orvo::New()", "orvo::object",
                                            "typeinfo for orvo::Class"};
  EXPECT_THAT(
      FindGaps(symbols, {{{{"orvo::Old(", 1}}, OutOfMemory::kThrows, {}}}),
      ElementsAre("orvo::New()", "orvo::Old(: -1"));
}

}  // namespace
