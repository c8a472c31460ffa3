// The tests' own tools.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <new>
#include <sstream>
#include <string>
#include <thread>

#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/grouped_digits.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/is_free.h"
#include "tests/support/latch.h"
#include "tests/support/standard_library.h"

namespace {

using orvo_test::ProgramResult;
using orvo_test::RunProgram;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using orvo_test::TemporaryFolder;

int SleepOneNanosecond() {
  const timespec request{0, 1};
  return nanosleep(&request, nullptr);
}

TEST(ScopedHook, TakesTheCallsWhileItLives) {
  int calls = 0;
  {
    const ScopedHook hook(orvo_test::nanosleep_calls,
                          [&](const timespec* request, timespec*) {
                            ++calls;
                            return static_cast<int>(request->tv_nsec) + 6;
                          });
    EXPECT_EQ(SleepOneNanosecond(), 7);
  }
  EXPECT_EQ(SleepOneNanosecond(), 0);
  EXPECT_EQ(calls, 1);
}

TEST(ScopedHook, LetsTheHookCallTheSystem) {
  const ScopedHook hook(
      orvo_test::nanosleep_calls, [](const timespec*, timespec* remainder) {
        const timespec impossible{0, -1};
        return orvo_test::nanosleep_calls.Real(&impossible, remainder);
      });
  EXPECT_EQ(SleepOneNanosecond(), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST(ScopedFailure, FailsTheCallsWhileItLives) {
  {
    const ScopedFailure failure("nanosleep", EINVAL);
    EXPECT_EQ(SleepOneNanosecond(), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(SleepOneNanosecond(), -1);
  }
  EXPECT_EQ(SleepOneNanosecond(), 0);
}

TEST(ScopedFailure, LetsCallsThroughBeforeAndAfter) {
  const ScopedFailure failure("nanosleep", EINVAL, 1, 2);
  EXPECT_EQ(SleepOneNanosecond(), 0);
  EXPECT_EQ(SleepOneNanosecond(), -1);
  EXPECT_EQ(SleepOneNanosecond(), -1);
  EXPECT_EQ(SleepOneNanosecond(), 0);
  EXPECT_EQ(SleepOneNanosecond(), 0);
  EXPECT_EQ(failure.count(), 2);
}

TEST(ScopedFailureDeathTest, StopsTheProgramForAFunctionItDoesNotHave) {
  EXPECT_DEATH(ScopedFailure("mkdir", EACCES), "does not interpose mkdir");
}

TEST(StdoutCapture, HoldsWhatAnyLayerWrites) {
  const StdoutCapture capture;
  std::cout << "stream ";
  std::cout.flush();
  std::printf("stdio ");
  std::fflush(stdout);
  ASSERT_EQ(write(STDOUT_FILENO, "call", 4), 4);
  EXPECT_EQ(capture.Text(), "stream stdio call");
}

TEST(StdoutCapture, EndsWithItsObject) {
  const StdoutCapture outer;
  {
    const StdoutCapture inner;
    std::cout << "inner";
  }
  std::cout << "outer";
  EXPECT_EQ(outer.Text(), "outer");
}

TEST(TemporaryFolder, IsThereOnlyWhileItsObjectLives) {
  std::string path;
  {
    const TemporaryFolder folder;
    path = folder.path();
    orvo_test::WriteFile(folder / "file", "content");
    EXPECT_EQ(orvo_test::ReadFile(path + "/file"), "content");
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(CountOpenDescriptors, SeesEachOpenFile) {
  const int before = orvo_test::CountOpenDescriptors();
  const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(orvo_test::CountOpenDescriptors(), before + 1);
  close(file);
  EXPECT_EQ(orvo_test::CountOpenDescriptors(), before);
}

TEST(CountAllocations, SeesEachAllocationOfThisThread) {
  ORVO_NEEDS_LIBSTDCXX();
  const long before = orvo_test::CountAllocations();
  ::operator delete(::operator new(1));
  ::operator delete[](::operator new[](1));
  std::thread([] { ::operator delete(::operator new(1)); }).join();
  // The thread's own start takes one of this thread.
  EXPECT_EQ(orvo_test::CountAllocations() - before, 3);
}

TEST(CountLiveAllocations, SeesWhatIsNotReleased) {
  const long before = orvo_test::CountLiveAllocations();
  void* const kept = ::operator new(1);
  void* const array = ::operator new[](1, std::nothrow);
  EXPECT_EQ(orvo_test::CountLiveAllocations(), before + 2);
  ::operator delete(kept);
  ::operator delete[](array);
  EXPECT_EQ(orvo_test::CountLiveAllocations(), before);
}

TEST(ScopedAllocationFailure, FailsAsOftenAsItIsTold) {
  const orvo_test::ScopedAllocationFailure failure(1, 2);
  const auto succeeds = [] {
    void* const memory = ::operator new(1, std::nothrow);
    ::operator delete(memory);
    return memory != nullptr;
  };
  const bool seen[] = {succeeds(), succeeds(), succeeds(), succeeds()};
  EXPECT_THAT(seen, testing::ElementsAre(true, false, false, true));
  EXPECT_EQ(failure.count(), 2);
}

TEST(Latch, OpensAfterItsCount) {
  orvo_test::Latch latch(2);
  std::atomic<bool> arrived{false};
  std::thread other([&] {
    arrived = true;
    latch.Arrive();
  });
  latch.Arrive();
  EXPECT_TRUE(arrived);
  other.join();
}

TEST(RunProgram, TellsHowItEndedAndWhatItWrote) {
  const ProgramResult result =
      RunProgram({"/bin/sh", "-c", "cat; echo bad >&2; exit 3"}, "input");
  EXPECT_EQ(result.exit_status, 3);
  EXPECT_EQ(result.output, "input");
  EXPECT_EQ(result.errors, "bad\n");
}

TEST(RunProgram, TellsTheSignalThatEndedIt) {
  EXPECT_EQ(RunProgram({"/bin/sh", "-c", "kill -KILL $$"}).exit_status,
            -SIGKILL);
}

TEST(RunProgram, TellsThatThereIsNoSuchProgram) {
  EXPECT_EQ(RunProgram({"/missing/program"}).exit_status, 127);
}

std::string WriteNumbers() {
  std::ostringstream stream;
  stream << 1234567 << ' ' << 0.5;
  return stream.str();
}

TEST(ScopedGroupedDigits, ChangesHowNumbersAreWrittenWhileItLives) {
  const std::string before = WriteNumbers();
  {
    const orvo_test::ScopedGroupedDigits locale;
    EXPECT_EQ(WriteNumbers(), "1.234.567 0,5");
  }
  EXPECT_NE(before, "1.234.567 0,5");
  EXPECT_EQ(WriteNumbers(), before);
}

TEST(IsFree, AsksForAnotherThread) {
  std::recursive_mutex mutex;
  EXPECT_TRUE(orvo_test::IsFree(mutex.native_handle()));
  mutex.lock();
  EXPECT_FALSE(orvo_test::IsFree(mutex.native_handle()));
  mutex.unlock();
  EXPECT_TRUE(orvo_test::IsFree(mutex.native_handle()));
}

}  // namespace
