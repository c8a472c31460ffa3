#include "orvo/thread_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/latch.h"

namespace {

using orvo::ThreadNames;
using orvo::threadNames;
using orvo_test::CountAllocations;
using orvo_test::Latch;
using orvo_test::ScopedAllocationFailure;

// Longer than a string holds without memory of its own.
const char* const kLongName = "a name that does not fit into the string itself";

static_assert(!std::is_polymorphic_v<ThreadNames>);
static_assert(!std::is_copy_constructible_v<ThreadNames>);
static_assert(std::is_same_v<decltype(threadNames), ThreadNames>);

// What an initialiser of this program sees, before main() has begun.
const std::string name_before_main = [] {
  threadNames.SetNameOfCurrentThread("main");
  return threadNames.GetNameOfCurrentThread();
}();

// Runs a function in a thread of its own, to its end.
template <typename Function>
void InAThread(Function function) {
  std::thread(function).join();
}

TEST(ThreadNames, IsReadyBeforeMain) {
  EXPECT_EQ(name_before_main, "main");
}

TEST(ThreadNames, CallsAThreadUnnamedThatNeverNamedItself) {
  ThreadNames names;
  EXPECT_EQ(names.GetNameOfCurrentThread(), "Unnamed thread");
  EXPECT_EQ(names.GetThreadName(std::this_thread::get_id()), "Unnamed thread");
  EXPECT_EQ(names.GetThreadName(std::thread::id()), "Unnamed thread");
}

TEST(ThreadNames, MakesNoEntryWhenReading) {
  ThreadNames names;
  const long before = CountAllocations();
  names.GetNameOfCurrentThread();
  names.GetThreadName(std::this_thread::get_id());
  EXPECT_EQ(CountAllocations() - before, 0);
}

TEST(ThreadNames, ReturnsTheNameThatTheThreadGaveItself) {
  ThreadNames names;
  names.SetNameOfCurrentThread("worker");
  EXPECT_EQ(names.GetNameOfCurrentThread(), "worker");
  EXPECT_EQ(names.GetThreadName(std::this_thread::get_id()), "worker");
}

TEST(ThreadNames, KeepsOnlyTheLastName) {
  ThreadNames names;
  names.SetNameOfCurrentThread("first");
  names.SetNameOfCurrentThread(kLongName);
  names.SetNameOfCurrentThread("second");
  EXPECT_EQ(names.GetNameOfCurrentThread(), "second");
}

TEST(ThreadNames, TakesAnyTextAsAName) {
  ThreadNames names;
  for (const std::string& name :
       {std::string(), std::string("a\0b", 3), std::string("\xff\n"),
        std::string("Unnamed thread"), std::string(100000, 'x')}) {
    names.SetNameOfCurrentThread(name);
    EXPECT_EQ(names.GetNameOfCurrentThread(), name);
  }
}

TEST(ThreadNames, CopiesTheName) {
  ThreadNames names;
  std::string name = kLongName;
  names.SetNameOfCurrentThread(name);
  name.assign("changed");
  std::string read = names.GetNameOfCurrentThread();
  read.clear();
  EXPECT_EQ(names.GetNameOfCurrentThread(), kLongName);
}

TEST(ThreadNames, TellsTheNamesOfOtherThreads) {
  ThreadNames names;
  names.SetNameOfCurrentThread("here");
  InAThread([&names, here = std::this_thread::get_id()] {
    EXPECT_EQ(names.GetNameOfCurrentThread(), "Unnamed thread");
    names.SetNameOfCurrentThread("there");
    EXPECT_EQ(names.GetNameOfCurrentThread(), "there");
    EXPECT_EQ(names.GetThreadName(here), "here");
  });
  EXPECT_EQ(names.GetNameOfCurrentThread(), "here");
}

TEST(ThreadNames, KeepsTheNameOfAThreadThatHasEnded) {
  ThreadNames names;
  std::thread::id id;
  InAThread([&] {
    id = std::this_thread::get_id();
    names.SetNameOfCurrentThread("ended");
  });
  EXPECT_EQ(names.GetThreadName(id), "ended");
}

TEST(ThreadNames, PassesANameOnToALaterThreadOfTheSameId) {
  constexpr int kMostThreads = 1000;
  ThreadNames names;
  std::thread::id id;
  InAThread([&] {
    id = std::this_thread::get_id();
    names.SetNameOfCurrentThread("first");
  });
  bool repeated = false;
  for (int i = 0; i < kMostThreads && !repeated; ++i) {
    InAThread([&] {
      repeated = std::this_thread::get_id() == id;
      if (!repeated) return;
      EXPECT_EQ(names.GetNameOfCurrentThread(), "first");
      names.SetNameOfCurrentThread("second");
      EXPECT_EQ(names.GetNameOfCurrentThread(), "second");
    });
  }
  if (!repeated) GTEST_SKIP() << "The system gave no thread this id again.";
  EXPECT_EQ(names.GetThreadName(id), "second");
}

TEST(ThreadNames, CanBeReadThroughAConstantReference) {
  ThreadNames names;
  names.SetNameOfCurrentThread("worker");
  const ThreadNames& constant = names;
  EXPECT_EQ(constant.GetNameOfCurrentThread(), "worker");
  EXPECT_EQ(constant.GetThreadName(std::this_thread::get_id()), "worker");
}

TEST(ThreadNames, SharesNothingBetweenRegistries) {
  ThreadNames names;
  names.SetNameOfCurrentThread("elsewhere");
  EXPECT_EQ(threadNames.GetNameOfCurrentThread(), "main");
}

TEST(ThreadNames, ReleasesTheMutexWhenMemoryRunsOut) {
  ThreadNames names;
  const std::string name = kLongName;
  names.SetNameOfCurrentThread(name);
  {
    const ScopedAllocationFailure failure;
    EXPECT_THROW(names.GetNameOfCurrentThread(), std::bad_alloc);
  }
  EXPECT_EQ(names.GetNameOfCurrentThread(), kLongName);
}

TEST(ThreadNames, MakesNoEntryWhenMemoryRunsOut) {
  for (const long allocations : {0, 1}) {
    SCOPED_TRACE(allocations);
    ThreadNames names;
    const std::string name = kLongName;
    {
      const ScopedAllocationFailure failure(allocations);
      EXPECT_THROW(names.SetNameOfCurrentThread(name), std::bad_alloc);
    }
    EXPECT_EQ(names.GetNameOfCurrentThread(), "Unnamed thread");
  }
}

TEST(ThreadNames, NeverMixesTheNamesOfConcurrentThreads) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 500;
  ThreadNames names;
  std::vector<std::thread::id> ids(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  Latch ready(kThreads);
  std::atomic<int> mixed{0};
  const auto is_whole = [](const std::string& name, int thread) {
    return name == "Unnamed thread" ||
           name == std::string(name.size(), static_cast<char>('a' + thread));
  };
  for (int self = 0; self < kThreads; ++self) {
    threads.emplace_back([&, self] {
      ids[static_cast<std::size_t>(self)] = std::this_thread::get_id();
      ready.Arrive();
      for (int round = 0; round < kRounds; ++round) {
        const std::string name(static_cast<std::size_t>(round % 50),
                               static_cast<char>('a' + self));
        names.SetNameOfCurrentThread(name);
        if (names.GetNameOfCurrentThread() != name) ++mixed;
        const int other = (self + round) % kThreads;
        if (!is_whole(names.GetThreadName(ids[static_cast<std::size_t>(other)]),
                      other)) {
          ++mixed;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(mixed, 0);
}

}  // namespace
