#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "orvo/condition.h"
#include "orvo/errors.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "orvo/thread_names.h"
#include "tests/support/allocations.h"
#include "tests/support/capture.h"
#include "tests/support/debug_locks.h"
#include "tests/support/holder.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/latch.h"
#include "tests/support/source_lines.h"
#include "tests/support/virtual_slot.h"

namespace {

using orvo_test::Holder;
using orvo_test::kPollsPerBanner;
using orvo_test::Latch;
using orvo_test::Pieces;
using orvo_test::ScopedAllocationFailure;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using orvo_test::VirtualSlot;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

using DebugLock = orvo_test::OpenBooks<orvo::DebugLockImpl_>;

constexpr char kLockBanner[] =
    " \n\n\n********\n\n\ntester cannot acquire lock orders because A Thread  "
    "is not sharing.\n";
constexpr char kTryLockBanner[] =
    " \n\n\n********\n\n\ntester cannot acquire lock orders because  is not "
    "sharing.\n";

class DebugLockTest : public testing::Test {
 protected:
  DebugLockTest() { orvo::threadNames.SetNameOfCurrentThread("tester"); }

  DebugLock lock_{"orders"};
  const std::thread::id self_ = std::this_thread::get_id();
  const std::thread::id nobody_;
};

TEST_F(DebugLockTest, IsFreeAtFirst) {
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_FALSE(lock_.GetWaitWillUnlock(self_));
}

TEST_F(DebugLockTest, KnowsItsOwner) {
  lock_.lock();
  EXPECT_EQ(lock_.owner(), self_);
  lock_.unlock();
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_TRUE(lock_.try_lock());
  EXPECT_EQ(lock_.owner(), self_);
  lock_.unlock();
  EXPECT_EQ(lock_.owner(), nobody_);
  const Holder<DebugLock> holder(lock_);
  EXPECT_EQ(lock_.owner(), holder.id());
}

TEST_F(DebugLockTest, ServesAHandle) {
  orvo::Lock handle(std::make_unique<orvo::DebugLockImpl_>("orders"));
  {
    const orvo::ScopeLock scope(handle);
    EXPECT_THROW(
        {
          const StdoutCapture output;
          handle.ThrowIfOwnedByThisThread();
        },
        std::runtime_error);
  }
  EXPECT_THAT([&] { handle.unlock(); },
              ThrowsMessage<orvo::LockError>(
                  "tester tried to release lock orders without first "
                  "acquiring it."));
}

// The wait is over when the polls of two banners have been in vain.
TEST_F(DebugLockTest, WaitsAndPrintsABannerAtEachTimeOut) {
  Holder<DebugLock> holder(lock_);
  int polls = 0;
  bool slept_as_asked = true;
  const ScopedHook hook(
      orvo_test::nanosleep_calls, [&](const timespec* request, timespec*) {
        slept_as_asked &= request->tv_sec == 0 && request->tv_nsec == 2000;
        if (++polls == 2 * kPollsPerBanner + 1) holder.Release();
        return 0;
      });
  const Pieces output;
  lock_.lock();
  EXPECT_EQ(lock_.owner(), self_);
  EXPECT_EQ(polls, 2 * kPollsPerBanner + 1);
  EXPECT_TRUE(slept_as_asked);
  EXPECT_THAT(output.all(), ElementsAre(kLockBanner, kLockBanner));
  lock_.unlock();
}

// Fails as often as it is told to, then polls.
class ImpatientLock : public DebugLock {
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

TEST_F(DebugLockTest, WaitsFiveSecondsAtATimeWithItsBooksFree) {
  ImpatientLock lock("orders");
  lock.failures_ = 3;
  const Pieces output;
  lock.lock();
  EXPECT_THAT(lock.seconds_, ElementsAre(5.0, 5.0, 5.0, 5.0));
  EXPECT_TRUE(lock.free_books_);
  EXPECT_THAT(output.all(), ElementsAre(kLockBanner, kLockBanner, kLockBanner));
  lock.unlock();
}

TEST_F(DebugLockTest, PrintsItsBannersWithItsBooksTaken) {
  ImpatientLock lock("orders");
  lock.failures_ = 1;
  std::vector<bool> free;
  const Pieces output([&] { free.push_back(lock.BooksAreFree()); });
  lock.lock();
  std::thread([&] { lock.try_lock(); }).join();
  EXPECT_THAT(free, ElementsAre(false, false));
  lock.unlock();
}

TEST_F(DebugLockTest, PassesOnTheErrorOfAWait) {
  class BrokenLock : public orvo::DebugLockImpl_ {
   public:
    using DebugLockImpl_::DebugLockImpl_;
    bool TimedLock(double) override { throw orvo::LockError("broken"); }
  };
  BrokenLock lock("orders");
  EXPECT_THAT([&] { lock.lock(); }, ThrowsMessage<orvo::LockError>("broken"));
}

TEST_F(DebugLockTest, PrintsADifferentBannerWhenItCannotBeTakenAtOnce) {
  const Holder<DebugLock> holder(lock_);
  const Pieces output;
  EXPECT_FALSE(lock_.try_lock());
  EXPECT_EQ(lock_.owner(), holder.id());
  EXPECT_THAT(output.all(), ElementsAre(kTryLockBanner));
}

TEST_F(DebugLockTest, PrintsTheSameBannerToItsOwner) {
  lock_.lock();
  const Pieces output;
  EXPECT_FALSE(lock_.try_lock());
  EXPECT_THAT(output.all(), ElementsAre(kTryLockBanner));
  lock_.unlock();
}

// Runs a task in a thread that has no name. A new thread may have the id, and
// so the name, of an ended one, but not while that one's successor lives.
void RunInAThreadWithoutAName(const std::function<void()>& task) {
  Latch over;
  bool found = false;
  std::vector<std::thread> threads;
  while (!found && threads.size() < 100) {
    Latch looked;
    threads.emplace_back([&] {
      found = orvo::threadNames.GetNameOfCurrentThread() == "Unnamed thread";
      if (found) task();
      looked.CountDown();
      over.Wait();
    });
    looked.Wait();
  }
  over.CountDown();
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(found);
}

TEST_F(DebugLockTest, CallsAThreadWithoutANameUnnamed) {
  const Holder<DebugLock> holder(lock_);
  const Pieces output;
  std::string error;
  RunInAThreadWithoutAName([&] {
    lock_.try_lock();
    try {
      lock_.unlock();
    } catch (const orvo::LockError& e) {
      error = e.what();
    }
  });
  EXPECT_THAT(output.all(),
              ElementsAre(" \n\n\n********\n\n\nUnnamed thread cannot acquire "
                          "lock orders because  is not sharing.\n"));
  EXPECT_EQ(error,
            "Unnamed thread tried to release lock orders without first "
            "acquiring it.");
}

TEST_F(DebugLockTest, IsNotReleasedByAThreadThatDoesNotHoldIt) {
  const auto error = ThrowsMessage<orvo::LockError>(
      "tester tried to release lock orders without first acquiring it.");
  EXPECT_THAT([this] { lock_.unlock(); }, error);
  {
    const Holder<DebugLock> holder(lock_);
    EXPECT_THAT([this] { lock_.unlock(); }, error);
    EXPECT_EQ(lock_.owner(), holder.id());
    EXPECT_TRUE(lock_.BooksAreFree());
  }
  EXPECT_EQ(lock_.owner(), nobody_);
}

TEST_F(DebugLockTest, RecordsNothingWhenAProgramPollsItself) {
  EXPECT_TRUE(lock_.TimedLock(0.0));
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_THROW(lock_.unlock(), orvo::LockError);
  lock_.SetOwner(self_);
  lock_.unlock();
}

TEST_F(DebugLockTest, TakesTheOwnerItIsTold) {
  lock_.lock();
  lock_.SetOwner(nobody_);
  EXPECT_EQ(lock_.owner(), nobody_);
  EXPECT_THROW(lock_.unlock(), orvo::LockError);
  lock_.SetOwner(self_);
  lock_.unlock();
}

TEST_F(DebugLockTest, CountsNothing) {
  lock_.lock();
  EXPECT_EQ(lock_.count(), 0);
  lock_.SetCount(7);
  EXPECT_EQ(lock_.count(), 0);
  lock_.unlock();
}

int CountLines(const std::string& text) {
  return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

TEST_F(DebugLockTest, TurnsALockOfItsOwnerIntoAnError) {
  lock_.lock();
  const StdoutCapture output;
  std::vector<std::string> printed_at_sleep;
  timespec asked{};
  const ScopedHook hook(orvo_test::nanosleep_calls,
                        [&](const timespec* request, timespec*) {
                          asked = *request;
                          printed_at_sleep.push_back(output.Text());
                          return 0;
                        });
  try {
    lock_.ThrowIfOwnedByThisThread();
    ADD_FAILURE() << "no error";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "This lock is already owned by this thread.");
    EXPECT_EQ(typeid(error), typeid(std::runtime_error));
  }
  EXPECT_EQ(asked.tv_sec, 0);
  EXPECT_EQ(asked.tv_nsec, 10000000);
  EXPECT_THAT(printed_at_sleep, ElementsAre(output.Text()));
  EXPECT_THAT(output.Text(), testing::StartsWith("\nstack trace:\n"));
  EXPECT_EQ(lock_.owner(), self_);
  lock_.unlock();
}

// Through a volatile pointer, because a compiler may turn plain recursion into
// a loop.
int ThrowFromDepth(orvo::DebugLockImpl_& lock, int depth) {
  if (depth == 0) {
    lock.ThrowIfOwnedByThisThread();
    return 0;
  }
  int (*volatile next)(orvo::DebugLockImpl_&, int) = &ThrowFromDepth;
  return next(lock, depth - 1) + 1;
}

TEST_F(DebugLockTest, ShowsTwentyFramesOfItsOwner) {
  lock_.lock();
  const StdoutCapture output;
  EXPECT_THROW(ThrowFromDepth(lock_, 40), std::runtime_error);
  EXPECT_EQ(CountLines(output.Text()), 2 + 20);
  EXPECT_THAT(output.Text(), HasSubstr("ThrowIfOwnedByThisThread"));
  lock_.unlock();
}

TEST_F(DebugLockTest, LetsOtherThreadsPassTheSelfLockGuard) {
  const Pieces output;
  lock_.ThrowIfOwnedByThisThread();
  const Holder<DebugLock> holder(lock_);
  lock_.ThrowIfOwnedByThisThread();
  EXPECT_THAT(output.all(), IsEmpty());
}

TEST_F(DebugLockTest, ReadsItsOwnerWithoutTheBooksInTheSelfLockGuard) {
  Latch taken;
  Latch done;
  std::thread bookkeeper([&] {
    lock_.books_mutex_.lock();
    taken.CountDown();
    done.Wait();
    lock_.books_mutex_.unlock();
  });
  taken.Wait();
  lock_.ThrowIfOwnedByThisThread();
  done.CountDown();
  bookkeeper.join();
}

// Notes the calls that LockWithFilenameAndLineNumber() makes.
class NotedLock : public DebugLock {
 public:
  using OpenBooks::OpenBooks;
  void lock() override {
    calls_.emplace_back(BooksAreFree() ? "lock" : "lock in the books");
    OpenBooks::lock();
  }
  void SetPendingLockingCodeReference(const std::string& function,
                                      const std::string& file,
                                      int line) override {
    calls_.push_back(function + " " + file + " " + std::to_string(line));
    OpenBooks::SetPendingLockingCodeReference(function, file, line);
  }
  void SetCount(int count) override {
    calls_.push_back("SetCount " + std::to_string(count) +
                     (BooksAreFree() ? "" : " in the books"));
  }
  bool try_lock() override {
    calls_.emplace_back("try_lock");
    return OpenBooks::try_lock();
  }

  std::vector<std::string> calls_;
};

TEST_F(DebugLockTest, RecordsTheReferenceBeforeItLocks) {
  NotedLock lock("orders");
  lock.LockWithFilenameAndLineNumber("AddOrder", "orders.cpp", 62);
  EXPECT_THAT(lock.calls_, ElementsAre("AddOrder orders.cpp 62", "lock"));
  EXPECT_EQ(lock.owner(), self_);
  lock.unlock();
}

TEST_F(DebugLockTest, TakesAnyNumberOfReferences) {
  for (const char* function : {"AddOrder", "", "AddOrder"}) {
    lock_.SetPendingLockingCodeReference(function, "orders.cpp", 62);
  }
  EXPECT_EQ(lock_.owner(), nobody_);
}

TEST_F(DebugLockTest, NeedsNoMemoryToBeTaken) {
  const ScopedAllocationFailure failure;
  lock_.lock();
  lock_.unlock();
  EXPECT_TRUE(lock_.try_lock());
  lock_.unlock();
}

TEST_F(DebugLockTest, StaysUsableWhenMemoryRunsOut) {
  const std::string function = "AddOrder";
  const std::string file = "shop/a long name of a file.cpp";
  const struct {
    const char* what;
    std::function<void()> call;
  } cases[] = {
      {"SetPendingLockingCodeReference",
       [&] { lock_.SetPendingLockingCodeReference(function, file, 1); }},
      {"LockWithFilenameAndLineNumber",
       [&] {
         lock_.LockWithFilenameAndLineNumber(function, file, 1);
         lock_.unlock();
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    int failures = 0;
    for (bool finished = false; !finished; ++failures) {
      try {
        const ScopedAllocationFailure failure(failures);
        c.call();
        finished = true;
      } catch (const std::bad_alloc&) {
      }
      EXPECT_EQ(lock_.owner(), nobody_);
      const Holder<DebugLock> holder(lock_);
      EXPECT_EQ(lock_.owner(), holder.id());
    }
    EXPECT_GT(failures, 1);
  }
}

TEST_F(DebugLockTest, TriesTheMutexDirectly) {
  NotedLock lock("orders");
  EXPECT_TRUE(lock.try_lock());
  EXPECT_THAT(lock.calls_, ElementsAre("try_lock"));
  lock.unlock();
}

TEST_F(DebugLockTest, StaysOwnedWhenAWaitIsAnnounced) {
  NotedLock lock("orders");
  lock.lock();
  lock.calls_.clear();
  lock.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_TRUE(lock.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock.owner(), self_);
  EXPECT_THAT(lock.calls_, ElementsAre("SetCount 0 in the books"));
  lock.unlock();
}

TEST_F(DebugLockTest, IsOwnedAgainWhenTheWaitIsOver) {
  NotedLock lock("orders");
  lock.lock();
  lock.SetWaitWillUnlock(true, "a.cpp", 1);
  lock.unlock();
  lock.calls_.clear();
  lock.SetWaitWillUnlock(false, "a.cpp", 2);
  EXPECT_FALSE(lock.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock.owner(), self_);
  EXPECT_THAT(lock.calls_, ElementsAre("SetCount 1 in the books"));
}

TEST_F(DebugLockTest, AcceptsTheEndOfAWaitAfterItsOwnerWasCleared) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  lock_.SetOwner(nobody_);
  lock_.SetWaitWillUnlock(false, "a.cpp", 2);
  EXPECT_EQ(lock_.owner(), self_);
  lock_.SetWaitWillUnlock(true, "a.cpp", 3);
  EXPECT_TRUE(lock_.GetWaitWillUnlock(self_));
  lock_.unlock();
}

TEST_F(DebugLockTest, KeepsTheAnnouncementsOfThreadsApart) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  std::thread([&] {
    EXPECT_FALSE(lock_.GetWaitWillUnlock(std::this_thread::get_id()));
    EXPECT_TRUE(lock_.GetWaitWillUnlock(self_));
  }).join();
  EXPECT_FALSE(lock_.GetWaitWillUnlock(nobody_));
  lock_.unlock();
}

#if ORVO_ASSERTIONS

// The system's report of an assertion in the debug locks.
auto AssertionReport(const std::string& function,
                     const std::string& expression) {
  return testing::Matcher<const std::string&>(
      AllOf(HasSubstr("orvo_lock_debug.cpp:"), HasSubstr("::" + function + "("),
            HasSubstr("Assertion `" + expression + "' failed")));
}

using DebugLockDeathTest = DebugLockTest;

TEST_F(DebugLockDeathTest, EndsTheProcessAtASecondAnnouncement) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_DEATH(lock_.SetWaitWillUnlock(true, "a.cpp", 2),
               AssertionReport("SetWaitWillUnlock",
                               "!this->GetWaitWillUnlock(threadId)"));
  lock_.unlock();
}

TEST_F(DebugLockDeathTest, EndsTheProcessAtAWaitWithoutTheLock) {
  EXPECT_DEATH(
      lock_.SetWaitWillUnlock(true, "a.cpp", 1),
      AssertionReport("SetWaitWillUnlock", "this->owner_ == threadId"));
  const Holder<DebugLock> holder(lock_);
  EXPECT_DEATH(
      lock_.SetWaitWillUnlock(true, "a.cpp", 1),
      AssertionReport("SetWaitWillUnlock", "this->owner_ == threadId"));
}

TEST_F(DebugLockDeathTest, EndsTheProcessAtTheEndOfAWaitNeverAnnounced) {
  EXPECT_DEATH(lock_.SetWaitWillUnlock(false, "a.cpp", 1),
               AssertionReport("SetWaitWillUnlock",
                               "this->GetWaitWillUnlock(threadId)"));
}

TEST_F(DebugLockDeathTest, EndsTheProcessAtTheEndOfAWaitOnAnOwnedLock) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_DEATH(lock_.SetWaitWillUnlock(false, "a.cpp", 2),
               AssertionReport("SetWaitWillUnlock",
                               "this->owner_ == std::thread::id()"));
  lock_.unlock();
}

#else

// A report of the debug locks with the number of its own line.
std::string Report(const std::string& text) {
  return "Would have thrown. " + text + " line: " +
         std::to_string(
             orvo_test::ReportedLine("src/orvo_lock_debug.cpp", text)) +
         "\n";
}

TEST_F(DebugLockTest, ReportsASecondAnnouncementAndGoesOn) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  const Pieces output;
  lock_.SetWaitWillUnlock(true, "a.cpp", 2);
  EXPECT_THAT(
      output.all(),
      ElementsAre(Report("waitWillUnlock was previously set to true.")));
  EXPECT_TRUE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.owner(), self_);
  lock_.unlock();
}

TEST_F(DebugLockTest, ReportsAWaitWithoutTheLockAndGoesOn) {
  const Pieces output;
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  EXPECT_THAT(
      output.all(),
      ElementsAre(Report(
          "SetWaitWillUnlock(true) was called without owning the lock.")));
  EXPECT_TRUE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.owner(), self_);
}

TEST_F(DebugLockTest, ReportsTheEndOfAWaitNeverAnnouncedAndGoesOn) {
  const Pieces output;
  lock_.SetWaitWillUnlock(false, "a.cpp", 1);
  EXPECT_THAT(
      output.all(),
      ElementsAre(Report("waitWillUnlock was previously set to false.")));
  EXPECT_FALSE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.owner(), self_);
}

TEST_F(DebugLockTest, ReportsTheEndOfAWaitOnAnOwnedLockAndGoesOn) {
  lock_.lock();
  lock_.SetWaitWillUnlock(true, "a.cpp", 1);
  const Pieces output;
  lock_.SetWaitWillUnlock(false, "a.cpp", 2);
  EXPECT_THAT(output.all(),
              ElementsAre(Report(
                  "SetWaitWillUnlock(false) was called on an owned lock.")));
  EXPECT_FALSE(lock_.GetWaitWillUnlock(self_));
  EXPECT_EQ(lock_.owner(), self_);
  lock_.unlock();
}

TEST_F(DebugLockTest, ReportsEachInconsistencyOfOneCall) {
  const Holder<DebugLock> holder(lock_);
  const Pieces output;
  lock_.SetWaitWillUnlock(false, "a.cpp", 1);
  EXPECT_THAT(output.all(), ElementsAre(HasSubstr("previously set to false"),
                                        HasSubstr("called on an owned lock")));
  lock_.SetOwner(holder.id());
}

#endif

// Leaves everything to a debug lock, the places too.
class ForwardingLock : public orvo::OrvoLock {
 public:
  explicit ForwardingLock(orvo::DebugLockImpl_& impl) : impl_(impl) {}
  void lock() override { impl_.lock(); }
  void unlock() override { impl_.unlock(); }
  bool try_lock() override { return impl_.try_lock(); }
  pthread_mutex_t* get_mutex() override { return impl_.get_mutex(); }
  void SetOwner(const std::thread::id& owner) override {
    impl_.SetOwner(owner);
  }
  void LockWithFilenameAndLineNumber(const std::string& function,
                                     const std::string& file,
                                     int line) override {
    impl_.LockWithFilenameAndLineNumber(function, file, line);
  }
  void SetPendingLockingCodeReference(const std::string& function,
                                      const std::string& file,
                                      int line) override {
    impl_.SetPendingLockingCodeReference(function, file, line);
  }
  void SetWaitWillUnlock(bool waitWillUnlock, const std::string& file,
                         int line) override {
    impl_.SetWaitWillUnlock(waitWillUnlock, file, line);
  }

 private:
  orvo::DebugLockImpl_& impl_;
};

TEST_F(DebugLockTest, LearnsFromWhereAConditionTakesIt) {
  NotedLock lock("orders");
  ForwardingLock forwarding(lock);
  orvo::Condition condition;
  condition.Signal(forwarding);
  const int line = orvo_test::ReportedLine("src/condition.cpp", "\"Signal\"");
  EXPECT_THAT(lock.calls_,
              ElementsAre(AllOf(testing::StartsWith("Signal "),
                                testing::EndsWith("condition.cpp " +
                                                  std::to_string(line))),
                          "lock"));
  EXPECT_EQ(lock.owner(), nobody_);
}

TEST_F(DebugLockTest, LosesItsOwnerInASignalledWait) {
  orvo::Lock handle(std::make_unique<orvo::DebugLockImpl_>("orders"));
  orvo::Condition condition;
  Latch about_to_wait;
  bool ready = false;
  std::thread waiting([&] {
    handle.lock();
    about_to_wait.CountDown();
    while (!ready) condition.WaitWhileLocked(handle);
    EXPECT_THROW(handle.unlock(), orvo::LockError);
    handle.SetOwner(std::this_thread::get_id());
    handle.unlock();
  });
  about_to_wait.Wait();
  // Until the waiting thread waits, the lock is in its hands.
  pthread_mutex_lock(handle.get_mutex());
  pthread_mutex_unlock(handle.get_mutex());
  {
    const orvo::ScopeLock scope(handle);
    ready = true;
  }
  condition.SignalWhileLocked();
  waiting.join();
}

#ifdef __x86_64__
TEST(DebugLockImpl, KeepsTheOrderOfItsVirtualOperations) {
  using orvo::DebugLockImpl_;
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::lock), 2U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::unlock), 3U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::try_lock), 4U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::TimedLock), 5U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::SetOwner), 6U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::count), 7U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::SetWaitWillUnlock), 8U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::LockWithFilenameAndLineNumber), 9U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::SetPendingLockingCodeReference), 10U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::ThrowIfOwnedByThisThread), 11U);
  EXPECT_EQ(VirtualSlot(&DebugLockImpl_::SetCount), 12U);
}
#endif

}  // namespace
