#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orvo/debug_locks.h"
#include "orvo/errors.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"
#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/debug_locks.h"
#include "tests/support/holder.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/source_lines.h"
#include "tests/support/virtual_slot.h"

namespace {

using orvo_test::Holder;
using orvo_test::kPollsPerBanner;
using orvo_test::Pieces;
using orvo_test::ScopedAllocationFailure;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using orvo_test::VirtualSlot;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

using DebugRLock = orvo_test::OpenBooks<orvo::DebugRLockImpl_>;

constexpr char kNobodyElse[] = "No other threads have acquired this lock.\n\n";

std::string Banner(const std::string& count) {
  return " \n\n\n********\n\n\ntester cannot acquire lock tree because  has "
         "acquired it " +
         count + " times.\n";
}

class DebugRLockTest : public testing::Test {
 protected:
  DebugRLockTest() { orvo::threadNames.SetNameOfCurrentThread("tester"); }

  DebugRLock lock_{"tree"};
  const std::thread::id self_ = std::this_thread::get_id();
  const std::thread::id nobody_;
};

TEST_F(DebugRLockTest, IsFreeAtFirst) {
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_EQ(lock_.GetCount(self_), 0);
  EXPECT_FALSE(lock_.GetWaitWillUnlock(self_));
}

TEST_F(DebugRLockTest, CountsUpAndDown) {
  for (int count = 1; count <= 3; ++count) {
    if (count == 2) {
      EXPECT_TRUE(lock_.try_lock());
    } else {
      lock_.lock();
    }
    EXPECT_EQ(lock_.GetCount(self_), count);
    EXPECT_EQ(lock_.owner(), self_);
  }
  for (int count = 2; count >= 0; --count) {
    lock_.unlock();
    EXPECT_EQ(lock_.GetCount(self_), count);
    EXPECT_EQ(lock_.owner(), count > 0 ? self_ : nobody_);
  }
  EXPECT_THAT([this] { lock_.unlock(); },
              ThrowsMessage<orvo::LockError>(
                  "tester tried to release lock tree more times than it was "
                  "acquired."));
  EXPECT_TRUE(lock_.BooksAreFree());
}

TEST_F(DebugRLockTest, IsFreeForOthersAfterTheLastRelease) {
  lock_.lock();
  lock_.lock();
  lock_.unlock();
  lock_.unlock();
  const Holder<DebugRLock> holder(lock_, 2);
  EXPECT_EQ(lock_.owner(), holder.id());
  EXPECT_EQ(lock_.GetCount(holder.id()), 2);
  EXPECT_EQ(lock_.GetCount(self_), 0);
}

TEST_F(DebugRLockTest, IsNotReleasedByAThreadThatDoesNotHoldIt) {
  const Holder<DebugRLock> holder(lock_, 2);
  EXPECT_THAT([this] { lock_.unlock(); },
              ThrowsMessage<orvo::LockError>(
                  "tester tried to release lock tree more times than it was "
                  "acquired."));
  EXPECT_EQ(lock_.owner(), holder.id());
  EXPECT_EQ(lock_.GetCount(holder.id()), 2);
}

TEST_F(DebugRLockTest, ServesAHandle) {
  orvo::RLock handle(std::make_unique<orvo::DebugRLockImpl_>("tree"));
  const orvo::ScopeLock outer(handle);
  const orvo::ScopeLock inner(handle);
  EXPECT_EQ(handle.count(), 0);
}

TEST_F(DebugRLockTest, AnswersACountOfNothing) {
  lock_.lock();
  EXPECT_EQ(lock_.count(), 0);
  lock_.unlock();
}

TEST_F(DebugRLockTest, RecordsNothingWhenAProgramPollsItself) {
  EXPECT_TRUE(lock_.TimedLock(0.0));
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_EQ(lock_.GetCount(self_), 0);
  EXPECT_THROW(lock_.unlock(), orvo::LockError);
  pthread_mutex_unlock(lock_.get_mutex());
}

TEST_F(DebugRLockTest, GuardsAgainstItsOwnerLikeTheOther) {
  lock_.lock();
  const StdoutCapture output;
  EXPECT_THAT([this] { lock_.ThrowIfOwnedByThisThread(); },
              ThrowsMessage<std::runtime_error>(
                  "This lock is already owned by this thread."));
  lock_.unlock();
}

TEST_F(DebugRLockTest, LocksWithAReferenceLikeTheOther) {
  lock_.LockWithFilenameAndLineNumber("Prune", "tree.cpp", 62);
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 1);
  lock_.unlock();
}

TEST_F(DebugRLockTest, WaitsAndPrintsBannerAndListAtEachTimeOut) {
  Holder<DebugRLock> holder(lock_, 3);
  int polls = 0;
  const ScopedHook hook(orvo_test::nanosleep_calls,
                        [&](const timespec*, timespec*) {
                          if (++polls == 2 * kPollsPerBanner + 1) {
                            holder.Release();
                          }
                          return 0;
                        });
  const Pieces output;
  lock_.lock();
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 1);
  EXPECT_EQ(lock_.GetCount(holder.id()), 0);
  EXPECT_EQ(polls, 2 * kPollsPerBanner + 1);
  EXPECT_THAT(output.all(),
              ElementsAre(Banner("3"), kNobodyElse, Banner("3"), kNobodyElse));
  lock_.unlock();
}

TEST_F(DebugRLockTest, PrintsTheSameWhenItCannotBeTakenAtOnce) {
  const Holder<DebugRLock> holder(lock_, 3);
  const Pieces output;
  EXPECT_FALSE(lock_.try_lock());
  EXPECT_EQ(lock_.owner(), holder.id());
  EXPECT_EQ(lock_.GetCount(self_), 0);
  EXPECT_THAT(output.all(), ElementsAre(Banner("3"), kNobodyElse));
}

TEST_F(DebugRLockTest, ListsOtherThreadsThatHaveACount) {
  const Holder<DebugRLock> holder(lock_);
  lock_.IncrementCount(self_);
  lock_.IncrementCount(self_);
  const Pieces output;
  EXPECT_FALSE(lock_.try_lock());
  EXPECT_THAT(output.all(),
              ElementsAre(Banner("1"),
                          "There are threads that appear to own this lock: \n"
                          "A Thread  has threadLockCount 2\n\n\n"));
  lock_.DecrementCount(self_);
  lock_.DecrementCount(self_);
}

// Only a program that takes the mutex behind the lock's back sees this one.
TEST_F(DebugRLockTest, CountsNothingForALockThatNobodyOwns) {
  const Holder<DebugRLock> holder(lock_);
  lock_.DebugLockImpl_::SetOwner(nobody_);
  const Pieces output;
  EXPECT_FALSE(lock_.try_lock());
  EXPECT_THAT(output.all(),
              ElementsAre(Banner("0"),
                          "There are threads that appear to own this lock: \n"
                          "A Thread  has threadLockCount 1\n\n\n"));
  lock_.DebugLockImpl_::SetOwner(holder.id());
}

// Fails as often as it is told to, then polls.
class ImpatientLock : public DebugRLock {
 public:
  using OpenBooks::OpenBooks;
  bool TimedLock(double seconds) override {
    seconds_.push_back(seconds);
    free_books_ = free_books_ && BooksAreFree();
    return static_cast<int>(seconds_.size()) > failures_ &&
           OpenBooks::TimedLock(seconds);
  }

  int failures_ = 0;
  bool free_books_ = true;
  std::vector<double> seconds_;
};

TEST_F(DebugRLockTest, WaitsFiveSecondsAtATimeWithItsBooksFree) {
  ImpatientLock lock("tree");
  lock.failures_ = 2;
  const Pieces output;
  lock.lock();
  EXPECT_THAT(lock.seconds_, ElementsAre(5.0, 5.0, 5.0));
  EXPECT_TRUE(lock.free_books_);
  EXPECT_THAT(output.all(),
              ElementsAre(Banner("0"), kNobodyElse, Banner("0"), kNobodyElse));
  lock.unlock();
}

TEST_F(DebugRLockTest, PrintsWithItsBooksTaken) {
  ImpatientLock lock("tree");
  lock.failures_ = 1;
  std::vector<bool> free;
  const Pieces output([&] { free.push_back(lock.BooksAreFree()); });
  lock.lock();
  std::thread([&] { lock.try_lock(); }).join();
  lock.PrintAllCountsGreaterThanZero(nobody_);
  EXPECT_THAT(free, ElementsAre(false, false, false, false, false));
  lock.unlock();
}

TEST_F(DebugRLockTest, TriesTheMutexDirectly) {
  class NotedLock : public DebugRLock {
   public:
    using OpenBooks::OpenBooks;
    bool try_lock() override {
      ++calls_;
      return OpenBooks::try_lock();
    }
    int calls_ = 0;
  };
  NotedLock lock("tree");
  EXPECT_TRUE(lock.try_lock());
  EXPECT_EQ(lock.calls_, 1);
  lock.unlock();
}

TEST_F(DebugRLockTest, IsFreeForOthersWhenMemoryRunsOut) {
  const struct {
    const char* what;
    void (*take)(DebugRLock& lock);
  } cases[] = {
      {"lock", [](DebugRLock& lock) { lock.lock(); }},
      {"try_lock", [](DebugRLock& lock) { lock.try_lock(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    DebugRLock lock("tree");
    {
      const ScopedAllocationFailure failure;
      EXPECT_THROW(c.take(lock), std::bad_alloc);
    }
    EXPECT_EQ(lock.owner(), nobody_);
    { const Holder<DebugRLock> holder(lock); }
    c.take(lock);
    EXPECT_EQ(lock.GetCount(self_), 1);
    lock.unlock();
    { const Holder<DebugRLock> holder(lock); }
  }
}

TEST(DebugRLockHandle, IsFreeAgainWhenMemoryRunsOutInItsBooks) {
  const struct {
    const char* what;
    bool (*take)(orvo::DebugRLock& lock);
  } cases[] = {
      {"TimedLock", [](orvo::DebugRLock& lock) { return lock.TimedLock(0.0); }},
      {"TryLockFor",
       [](orvo::DebugRLock& lock) {
         return lock.TryLockFor(std::chrono::seconds(0));
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    orvo::DebugRLock lock("tree");
    {
      const ScopedAllocationFailure failure;
      EXPECT_THROW(c.take(lock), std::bad_alloc);
    }
    EXPECT_EQ(lock.GetOwner(), std::thread::id());
    { const Holder<orvo::DebugRLock> holder(lock); }
    EXPECT_TRUE(c.take(lock));
    EXPECT_EQ(lock.GetDepth(), 1);
    lock.unlock();
  }
}

TEST_F(DebugRLockTest, KeepsItsOwnerWhenMemoryRunsOut) {
  lock_.lock();
  lock_.lock();
  {
    const ScopedAllocationFailure failure;
    EXPECT_THROW(lock_.SetOwner(nobody_), std::bad_alloc);
  }
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 2);
  EXPECT_TRUE(lock_.BooksAreFree());
  lock_.unlock();
  lock_.unlock();
  const Holder<DebugRLock> holder(lock_);
}

TEST_F(DebugRLockTest, CountsForAnyThread) {
  EXPECT_EQ(lock_.GetCount(nobody_), 0);
  EXPECT_EQ(lock_.IncrementCount(nobody_), 1);
  EXPECT_EQ(lock_.IncrementCount(nobody_), 2);
  EXPECT_EQ(lock_.DecrementCount(nobody_), 1);
  lock_.InitializeCountIfNeeded(nobody_);
  EXPECT_EQ(lock_.GetCount(nobody_), 1);
  lock_.InitializeCountIfNeeded(self_);
  EXPECT_EQ(lock_.GetCount(self_), 0);
  EXPECT_EQ(lock_.DecrementCount(nobody_), 0);
}

TEST_F(DebugRLockTest, SetsTheCountOfTheCallingThreadWithoutTheBooks) {
  const std::lock_guard<std::recursive_mutex> books(lock_.books_mutex_);
  std::thread([&] { lock_.SetCount(5); }).join();
  EXPECT_EQ(lock_.GetCount(self_), 0);
  lock_.SetCount(4);
  EXPECT_EQ(lock_.GetCount(self_), 4);
}

TEST_F(DebugRLockTest, WrapsACountAtItsLimit) {
  lock_.SetCount(INT_MAX);
  EXPECT_EQ(lock_.IncrementCount(self_), INT_MIN);
}

TEST_F(DebugRLockTest, ListsNobodyWithoutCounts) {
  lock_.InitializeCountIfNeeded(self_);
  const Pieces output;
  lock_.PrintAllCountsGreaterThanZero(nobody_);
  EXPECT_THAT(output.all(), ElementsAre(kNobodyElse));
}

TEST_F(DebugRLockTest, ListsEveryCountButThatOfOneThread) {
  lock_.SetCount(-2);
  std::thread([&] { lock_.SetCount(3); }).join();
  lock_.IncrementCount(nobody_);
  // The default id comes first; the order of the others is the system's.
  const Pieces output;
  lock_.PrintAllCountsGreaterThanZero(self_);
  EXPECT_THAT(output.all(),
              ElementsAre("There are threads that appear to own this lock: \n"
                          "A Thread  has threadLockCount 1\n"
                          "A Thread  has threadLockCount 3\n\n\n"));
  lock_.PrintAllCountsGreaterThanZero(nobody_);
  EXPECT_THAT(output.all().back(),
              AllOf(HasSubstr("A Thread  has threadLockCount -2\n"),
                    HasSubstr("A Thread  has threadLockCount 3\n"),
                    testing::Not(HasSubstr("threadLockCount 1\n"))));
}

TEST_F(DebugRLockTest, HandsItsCountOver) {
  lock_.lock();
  lock_.lock();
  std::thread other([&] {
    const std::thread::id id = std::this_thread::get_id();
    lock_.SetOwner(id);
    EXPECT_EQ(lock_.owner(), id);
    EXPECT_EQ(lock_.GetCount(id), 2);
    EXPECT_EQ(lock_.GetCount(self_), 0);
    lock_.SetOwner(self_);
  });
  other.join();
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 2);
  lock_.unlock();
  lock_.unlock();
}

TEST_F(DebugRLockTest, KeepsItsCountWhenHandedToItsOwner) {
  lock_.lock();
  lock_.lock();
  lock_.SetOwner(self_);
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 2);
  lock_.unlock();
  lock_.unlock();
}

TEST_F(DebugRLockTest, ReplacesAnyCountOfTheNewOwner) {
  lock_.lock();
  lock_.IncrementCount(nobody_);
  lock_.IncrementCount(nobody_);
  lock_.SetOwner(nobody_);
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_EQ(lock_.GetCount(nobody_), 1);
  EXPECT_EQ(lock_.GetCount(self_), 0);
  lock_.SetCount(1);
  lock_.unlock();
}

TEST_F(DebugRLockTest, CountsNothingForTheLengthOfAWait) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_TRUE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 0);
  lock_.DebugLockImpl_::SetOwner(nobody_);
  lock_.SetWaitWillUnlock(false, "a.cpp", 2);
  EXPECT_FALSE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 1);
  lock_.unlock();
  EXPECT_EQ(lock_.owner(), nobody_);
}

#if ORVO_ASSERTIONS

// The system's report of an assertion in the debug locks.
auto AssertionReport(const std::string& function,
                     const std::string& expression) {
  return testing::Matcher<const std::string&>(
      AllOf(HasSubstr("orvo_lock_debug.cpp:"), HasSubstr("::" + function + "("),
            HasSubstr("Assertion `" + expression + "' failed")));
}

using DebugRLockDeathTest = DebugRLockTest;

TEST_F(DebugRLockDeathTest, EndsTheProcessAtACountBelowZero) {
  EXPECT_DEATH(
      lock_.DecrementCount(self_),
      AssertionReport("DecrementCount", "this->GetCount(threadId) > 0"));
  lock_.SetCount(-1);
  EXPECT_DEATH(lock_.unlock(), AssertionReport("DecrementCount",
                                               "this->GetCount(threadId) > 0"));
}

TEST_F(DebugRLockDeathTest, EndsTheProcessWhenAFreeLockIsHandedOver) {
  EXPECT_DEATH(lock_.SetOwner(self_),
               AssertionReport("SetOwner", "threadLockCount > 0"));
  lock_.IncrementCount(nobody_);
  EXPECT_DEATH(lock_.SetOwner(self_),
               AssertionReport("SetOwner", "this->owner_!= std::thread::id()"));
}

TEST_F(DebugRLockDeathTest, EndsTheProcessAtAWaitAtAnotherDepthThanOne) {
  EXPECT_DEATH(lock_.SetWaitWillUnlock(true, "a.cpp", 1),
               AssertionReport("SetWaitWillUnlock", "threadLockCount == 1"));
  lock_.lock();
  lock_.lock();
  EXPECT_DEATH(lock_.SetWaitWillUnlock(true, "a.cpp", 1),
               AssertionReport("SetWaitWillUnlock", "threadLockCount == 1"));
  lock_.unlock();
  lock_.unlock();
}

TEST_F(DebugRLockDeathTest, EndsTheProcessAtASecondAnnouncement) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  lock_.lock();
  EXPECT_DEATH(lock_.SetWaitWillUnlock(true, "a.cpp", 2),
               AssertionReport("SetWaitWillUnlock",
                               "!this->GetWaitWillUnlock(threadId)"));
  lock_.unlock();
  pthread_mutex_unlock(lock_.get_mutex());
}

#else

TEST_F(DebugRLockTest, CountsBelowZeroInSilence) {
  const Pieces output;
  EXPECT_EQ(lock_.DecrementCount(self_), -1);
  lock_.DebugLockImpl_::SetOwner(self_);
  lock_.unlock();
  EXPECT_EQ(lock_.GetCount(self_), -2);
  EXPECT_EQ(lock_.owner(), self_);
  lock_.SetCount(INT_MIN);
  EXPECT_EQ(lock_.DecrementCount(self_), INT_MAX);
  EXPECT_THAT(output.all(), testing::IsEmpty());
}

TEST_F(DebugRLockTest, IsHandedOverWhileFree) {
  const Pieces output;
  lock_.SetOwner(self_);
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(lock_.GetCount(self_), 0);
  EXPECT_EQ(lock_.GetCount(nobody_), 0);
  EXPECT_THAT(output.all(), testing::IsEmpty());
}

TEST_F(DebugRLockTest, ReportsAWaitAtAnotherDepthThanOneAndGoesOn) {
  lock_.lock();
  lock_.lock();
  const Pieces output;
  lock_.SetWaitWillUnlock(true, "a.cpp", 62);
  const int reported = orvo_test::ReportedLine("src/orvo_lock_debug.cpp",
                                               "PrintNotAcquiredOnce(__LINE__");
  EXPECT_THAT(
      output.all(),
      ElementsAre("SetWaitWillUnlock called from a.cpp: 62 Would have thrown.\n"
                  "  Waiting on lock that has not been acquired exactly once. "
                  "threadLockCount = 2 line: " +
                  std::to_string(reported) + "\n"));
  EXPECT_TRUE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.GetCount(self_), 0);
  EXPECT_EQ(lock_.owner(), self_);
  lock_.SetCount(2);
  lock_.unlock();
  lock_.unlock();
}

TEST_F(DebugRLockTest, ReportsTheWaitOfAThreadWithoutTheLockTwice) {
  const Pieces output;
  lock_.SetWaitWillUnlock(true, "a.cpp", 62);
  EXPECT_THAT(output.all(),
              ElementsAre(HasSubstr("threadLockCount = 0 line: "),
                          HasSubstr("called without owning the lock")));
}

#endif

#ifdef __x86_64__
TEST(DebugRLockImpl, KeepsTheOrderOfItsVirtualOperations) {
  using orvo::DebugRLockImpl_;
  EXPECT_EQ(VirtualSlot(&DebugRLockImpl_::lock), 2U);
  EXPECT_EQ(VirtualSlot(&DebugRLockImpl_::unlock), 3U);
  EXPECT_EQ(VirtualSlot(&DebugRLockImpl_::try_lock), 4U);
  EXPECT_EQ(VirtualSlot(&DebugRLockImpl_::SetOwner), 6U);
  EXPECT_EQ(VirtualSlot(&DebugRLockImpl_::SetWaitWillUnlock), 8U);
  EXPECT_EQ(VirtualSlot(&DebugRLockImpl_::SetCount), 12U);
}
#endif

}  // namespace
