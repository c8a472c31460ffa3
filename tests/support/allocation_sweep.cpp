#include "tests/support/allocation_sweep.h"

#include <fcntl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <iostream>
#include <map>

namespace orvo_test {
namespace {

// A call that asks for more has no end.
constexpr long kMostAllocations = 100000;

bool IsAsExpected(const Attempt& attempt, OutOfMemory expected) {
  if (attempt.unsound_line() != 0) return false;
  if (attempt.failures() == 0) return attempt.returned();
  switch (expected) {
    case OutOfMemory::kNeverMatters:
      return false;
    case OutOfMemory::kThrows:
      return !attempt.returned();
    case OutOfMemory::kMayBeKept:
    case OutOfMemory::kEnds:
      return true;
  }
  return false;
}

// One run in this process.
SweepFigures RunHere(const AllocationCase& c, long after, long times) {
  const long live = CountLiveAllocations();
  Attempt attempt(after, times);
  c.run(attempt);
  SweepFigures figures;
  figures.runs = 1;
  figures.failures = attempt.failures();
  figures.leaked = CountLiveAllocations() - live;
  figures.as_expected = IsAsExpected(attempt, c.expected);
  figures.unsound_line = attempt.unsound_line();
  return figures;
}

// What a child tells with its exit status.
constexpr int kUnsound = 40;
constexpr int kSound = 48;  // to which is added:
constexpr int kNothingFailed = 1;
constexpr int kLeaked = 2;

// Ends a child that has no end of its own, by its processor time, which does
// not depend on how busy the machine is.
void LimitTime() {
  constexpr itimerval kTenSeconds = {{0, 0}, {10, 0}};
  setitimer(ITIMER_PROF, &kTenSeconds, nullptr);
}

[[noreturn]] void RunAsChild(const AllocationCase& c, long after, long times) {
  // The report of the end is wanted there, and no core file.
  dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  LimitTime();
  // What a first call keeps would count as leaked.
  RunHere(c, kMostAllocations, 1);
  const SweepFigures figures = RunHere(c, after, times);
  if (!figures.as_expected) _exit(kUnsound);
  _exit(kSound + (figures.failures == 0 ? kNothingFailed : 0) +
        (figures.leaked != 0 ? kLeaked : 0));
}

// One run in a child.
SweepFigures RunInChild(const AllocationCase& c, long after, long times) {
  std::cout.flush();
  const pid_t child = fork();
  if (child == 0) RunAsChild(c, after, times);
  int status = 0;
  waitpid(child, &status, 0);
  SweepFigures figures;
  figures.runs = 1;
  if (WIFEXITED(status)) {
    const int told = WEXITSTATUS(status) - kSound;
    figures.as_expected = told >= 0 && told <= kNothingFailed + kLeaked;
    figures.failures = (told & kNothingFailed) != 0 ? 0 : 1;
    figures.leaked = (told & kLeaked) != 0 ? 1 : 0;
  } else {
    figures.failures = 1;
    figures.ends = 1;
    figures.as_expected = WTERMSIG(status) == SIGABRT;
  }
  return figures;
}

SweepFigures SweepOnce(const AllocationCase& c, long times) {
  const auto run = c.expected == OutOfMemory::kEnds ? RunInChild : RunHere;
  SweepFigures figures;
  for (long after = 0; after < kMostAllocations; ++after) {
    const SweepFigures last = run(c, after, times);
    figures += last;
    if (last.failures == 0 || !figures.as_expected) return figures;
  }
  figures.as_expected = false;
  return figures;
}

bool BeginsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

bool IsFunction(const std::string& symbol) {
  return !BeginsWith(symbol, "typeinfo ") &&
         symbol.find('(') != std::string::npos;
}

}  // namespace

SweepFigures& SweepFigures::operator+=(const SweepFigures& other) {
  runs += other.runs;
  failures += other.failures;
  ends += other.ends;
  leaked += other.leaked;
  as_expected = as_expected && other.as_expected;
  if (unsound_line == 0) unsound_line = other.unsound_line;
  return *this;
}

SweepFigures Sweep(const AllocationCase& c) {
  SweepFigures figures;
  for (int round = 0; round < 2; ++round) {
    if (round == 1) figures.leaked = 0;
    for (const long times : {1L, -1L}) {
      if (figures.as_expected) figures += SweepOnce(c, times);
    }
  }
  return figures;
}

std::vector<std::string> FindGaps(const std::vector<std::string>& symbols,
                                  const std::vector<AllocationCase>& cases) {
  std::map<std::string, int> missing;
  for (const AllocationCase& c : cases) {
    for (const Exported& function : c.functions) {
      missing[function.prefix] += function.count;
    }
  }

  std::vector<std::string> gaps;
  for (const std::string& symbol : symbols) {
    if (!IsFunction(symbol)) continue;
    // The longest prefix counts.
    const std::string* covering = nullptr;
    for (const auto& [prefix, count] : missing) {
      if (BeginsWith(symbol, prefix)) covering = &prefix;
    }
    if (covering == nullptr) {
      gaps.push_back(symbol);
    } else {
      --missing[*covering];
    }
  }
  for (const auto& [prefix, count] : missing) {
    if (count != 0) gaps.push_back(prefix + ": " + std::to_string(count));
  }
  return gaps;
}

}  // namespace orvo_test
