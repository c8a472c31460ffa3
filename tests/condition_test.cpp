#include "orvo/condition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <functional>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

#include "orvo/scope_lock.h"
#include "tests/support/capture.h"
#include "tests/support/is_free.h"
#include "tests/support/latch.h"

namespace {

using orvo_test::IsFree;
using orvo_test::Latch;
using orvo_test::StdoutCapture;

// Far enough in the future that only a wake-up ends the wait.
constexpr int kLong = 100000;

TEST(Condition, IsASystemConditionAndNothingElse) {
  EXPECT_EQ(sizeof(orvo::Condition), sizeof(pthread_cond_t));
  EXPECT_FALSE(std::is_copy_constructible_v<orvo::Condition>);
  EXPECT_FALSE(std::is_move_constructible_v<orvo::Condition>);
}

TEST(Condition, ReportsATimeOutAtOnceWhenTheDeadlineHasPassed) {
  orvo::Condition condition;
  orvo::Lock lock("a lock");
  const StdoutCapture output;
  for (const int seconds : {0, -1, -3600, INT_MIN}) {
    SCOPED_TRACE(seconds);
    EXPECT_FALSE(condition.TimedWait(lock, seconds));
    EXPECT_TRUE(IsFree(lock));
  }
  EXPECT_EQ(output.Text(), "");
}

TEST(Condition, TimesOutAtADeadlineThatIsStillToCome) {
  orvo::Condition condition;
  orvo::Lock lock("a lock");
  EXPECT_FALSE(condition.TimedWait(lock, 1));
  EXPECT_TRUE(IsFree(lock));
}

TEST(Condition, NamesItsPlaceWhileTheProcessExits) {
  const orvo_test::ProgramResult result =
      orvo_test::RunProgram({orvo_test::ProgramPath("signal_at_exit")});
  EXPECT_EQ(result.exit_status, 0) << result.errors;
  EXPECT_THAT(result.output,
              testing::MatchesRegex("Signal [^\n]*condition.cpp\n"
                                    "Signal [^\n]*condition.cpp\n"));
}

TEST(Condition, HoldsTheLockAgainAfterATimeOut) {
  orvo::Condition condition;
  orvo::Lock lock("a lock");
  lock.lock();
  EXPECT_FALSE(condition.TimedWaitWhileLocked(lock, 0));
  EXPECT_FALSE(IsFree(lock));
  lock.unlock();
}

TEST(Condition, SignalsNobodyInVain) {
  orvo::Condition condition;
  orvo::Lock lock("a lock");
  condition.Signal(lock);
  condition.Broadcast(lock);
  condition.SignalWhileLocked();
  condition.BroadcastWhileLocked();
  EXPECT_TRUE(IsFree(lock));
  EXPECT_FALSE(condition.TimedWait(lock, 0));
}

template <typename LockType>
class ConditionWith : public testing::Test {
 protected:
  // Takes the lock and, holding it, lets the others know before it waits; so
  // whoever gets the lock after that finds this thread waiting.
  void WaitLocked(const std::function<void()>& wait) {
    const orvo::ScopeLock scope(lock_);
    about_to_wait_.CountDown();
    while (!ready_) wait();
    EXPECT_FALSE(IsFree(lock_));
  }

  void MakeReady() {
    about_to_wait_.Wait();
    const orvo::ScopeLock scope(lock_);
    ready_ = true;
  }

  LockType lock_{"a lock"};
  orvo::Condition condition_;
  Latch about_to_wait_;
  bool ready_ = false;  // guarded by lock_
};

using Locks = testing::Types<orvo::Lock, orvo::RLock>;
TYPED_TEST_SUITE(ConditionWith, Locks);

TYPED_TEST(ConditionWith, WakesAWaitingThreadBySignal) {
  std::thread waiting([this] {
    this->WaitLocked([this] { this->condition_.WaitWhileLocked(this->lock_); });
  });
  this->MakeReady();
  this->condition_.Signal(this->lock_);
  waiting.join();
  EXPECT_TRUE(IsFree(this->lock_));
}

TYPED_TEST(ConditionWith, WakesAThreadThatWaitsForALimitedTime) {
  std::thread waiting([this] {
    this->WaitLocked([this] {
      EXPECT_TRUE(this->condition_.TimedWaitWhileLocked(this->lock_, kLong));
    });
  });
  this->MakeReady();
  this->condition_.Broadcast(this->lock_);
  waiting.join();
  EXPECT_TRUE(IsFree(this->lock_));
}

TYPED_TEST(ConditionWith, WakesByTheFormsForCallersThatHoldTheLock) {
  for (const auto wake : {&orvo::Condition::SignalWhileLocked,
                          &orvo::Condition::BroadcastWhileLocked}) {
    Latch about_to_wait;
    this->ready_ = false;
    std::thread waiting([&] {
      const orvo::ScopeLock scope(this->lock_);
      about_to_wait.CountDown();
      while (!this->ready_) this->condition_.WaitWhileLocked(this->lock_);
    });
    about_to_wait.Wait();
    {
      const orvo::ScopeLock scope(this->lock_);
      this->ready_ = true;
      (this->condition_.*wake)();
    }
    waiting.join();
  }
}

TYPED_TEST(ConditionWith, WakesAllWaitingThreadsByBroadcast) {
  Latch about_to_wait(3);
  std::vector<std::thread> waiting;
  for (int i = 0; i < 3; ++i) {
    waiting.emplace_back([&] {
      const orvo::ScopeLock scope(this->lock_);
      about_to_wait.CountDown();
      while (!this->ready_) this->condition_.WaitWhileLocked(this->lock_);
    });
  }
  about_to_wait.Wait();
  {
    const orvo::ScopeLock scope(this->lock_);
    this->ready_ = true;
  }
  this->condition_.Broadcast(this->lock_);
  for (std::thread& thread : waiting) thread.join();
}

// The plain waits test nothing, so the other thread signals until they return.
TYPED_TEST(ConditionWith, TakesAndReleasesTheLockInThePlainWaits) {
  for (const bool timed : {false, true}) {
    SCOPED_TRACE(timed);
    std::atomic<bool> woken{false};
    std::thread waiting([&] {
      if (timed) {
        EXPECT_TRUE(this->condition_.TimedWait(this->lock_, kLong));
      } else {
        this->condition_.Wait(this->lock_);
      }
      woken = true;
    });
    while (!woken) {
      this->condition_.Broadcast(this->lock_);
      std::this_thread::yield();
    }
    waiting.join();
    EXPECT_TRUE(IsFree(this->lock_));
  }
}

TEST(Condition, WaitsWithAScopeLock) {
  orvo::Condition condition;
  orvo::Lock lock("a lock");
  Latch about_to_wait;
  bool ready = false;
  std::thread waiting([&] {
    orvo::ScopeLock scope(lock);
    about_to_wait.CountDown();
    while (!ready) condition.WaitWhileLocked(scope);
  });
  about_to_wait.Wait();
  {
    const orvo::ScopeLock scope(lock);
    ready = true;
    condition.SignalWhileLocked();
  }
  waiting.join();
}

// A scope lock knows where it was made and refuses any other place.
TEST(Condition, LeavesAScopeLockAsItIsInThePlainForms) {
  orvo::Condition condition;
  orvo::Lock lock("a lock");
  orvo::ScopeLock scope(lock);
  EXPECT_THROW(condition.Signal(scope), std::logic_error);
  EXPECT_FALSE(IsFree(lock));
  scope.unlock();
  EXPECT_THROW(condition.Signal(scope), std::logic_error);
  EXPECT_TRUE(IsFree(lock));
}

TEST(Condition, ServesManyThreadsAtOnce) {
  constexpr int kItems = 2000;
  orvo::Condition filled;
  orvo::Lock lock("queue");
  std::vector<int> queue;  // guarded by lock, -1 ends a thread
  long sum = 0;            // guarded by lock
  std::vector<std::thread> consumers;
  for (int i = 0; i < 3; ++i) {
    consumers.emplace_back([&] {
      const orvo::ScopeLock scope(lock);
      for (;;) {
        while (queue.empty()) filled.WaitWhileLocked(lock);
        const int item = queue.back();
        if (item < 0) return;
        queue.pop_back();
        sum += item;
      }
    });
  }
  for (int item = 1; item <= kItems; ++item) {
    {
      const orvo::ScopeLock scope(lock);
      queue.push_back(item);
    }
    filled.Signal(lock);
  }
  {
    const orvo::ScopeLock scope(lock);
    queue.insert(queue.begin(), -1);
  }
  filled.Broadcast(lock);
  for (std::thread& consumer : consumers) consumer.join();
  EXPECT_EQ(sum, kItems * (kItems + 1) / 2);
}

}  // namespace
