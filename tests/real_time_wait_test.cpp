// Waits in real time: on locks and on conditions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "orvo/condition.h"
#include "orvo/deadline.h"
#include "orvo/debug_locks.h"
#include "orvo/errors.h"
#include "orvo/lock.h"
#include "orvo/scope_lock.h"
#include "tests/support/capture.h"
#include "tests/support/holder.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/is_free.h"
#include "tests/support/latch.h"
#include "tests/support/recording_lock.h"

namespace {

using orvo_test::Holder;
using orvo_test::IsFree;
using orvo_test::Latch;
using orvo_test::ScopedFailure;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::ThrowsMessage;

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

std::int64_t Nanoseconds(const orvo::Deadline& deadline) {
  const timespec time = deadline.GetAsTimespec();
  return static_cast<std::int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

std::int64_t Now() {
  return steady_clock::now().time_since_epoch().count();
}

TEST(Deadline, IsATimePointOfTheSteadyClock) {
  using TimePoint = steady_clock::time_point;
  using Hours = std::chrono::time_point<steady_clock, hours>;
  using Doubles =
      std::chrono::time_point<steady_clock, std::chrono::duration<double>>;
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint(nanoseconds(1)))), 1);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint(nanoseconds(5000000001)))),
            5000000001);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint::min())), 0);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint::max())), kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint::max() - nanoseconds(1))),
            kMost - 1);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(Hours(hours(2)))), 7200000000000);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(Hours::max())), kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(
                Doubles(std::chrono::duration<double>(0.25)))),
            250000000);
}

TEST(Deadline, IsALengthOfTimeFromNow) {
  const std::int64_t before = Now();
  const std::int64_t deadline = Nanoseconds(orvo::Deadline::After(seconds(5)));
  const std::int64_t after = Now();
  EXPECT_GE(deadline, before + 5000000000);
  EXPECT_LE(deadline, after + 5000000000);
}

TEST(Deadline, StopsAtTheLimits) {
  using Doubles = std::chrono::duration<double>;
  using Floats = std::chrono::duration<float, std::nano>;
  using Days = std::chrono::duration<std::int64_t, std::ratio<86400>>;
  using Limits = std::numeric_limits<double>;
  EXPECT_EQ(Nanoseconds(orvo::Deadline::After(nanoseconds::max())), kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::After(hours::max())), kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::After(Days::max())), kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::After(Doubles(Limits::infinity()))),
            kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::After(Doubles(1e300))), kMost);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::After(Floats(1e30F))), kMost);
  for (const orvo::Deadline& past :
       {orvo::Deadline::After(nanoseconds::min()),
        orvo::Deadline::After(hours::min()), orvo::Deadline::After(Days::min()),
        orvo::Deadline::After(seconds(0)), orvo::Deadline::After(seconds(-1)),
        orvo::Deadline::After(Doubles(-Limits::infinity())),
        orvo::Deadline::After(Doubles(Limits::quiet_NaN()))}) {
    EXPECT_LE(Nanoseconds(past), Now());
  }
}

TEST(Deadline, RoundsFractionsOfANanosecondUp) {
  using Picoseconds = std::chrono::duration<std::int64_t, std::pico>;
  using TimePoint = std::chrono::time_point<steady_clock, Picoseconds>;
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint(Picoseconds(1)))), 1);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint(Picoseconds(1000)))), 1);
  EXPECT_EQ(Nanoseconds(orvo::Deadline::At(TimePoint(Picoseconds(1001)))), 2);
}

template <typename LockType>
class RealTime : public testing::Test {
 protected:
  LockType lock_{"a lock"};
  orvo::Condition condition_;
};

using Locks =
    testing::Types<orvo::Lock, orvo::RLock, orvo::DebugLock, orvo::DebugRLock>;
TYPED_TEST_SUITE(RealTime, Locks);

TYPED_TEST(RealTime, TakesAFreeLockAtOnce) {
  EXPECT_TRUE(this->lock_.TryLockFor(seconds(-1)));
  this->lock_.unlock();
  EXPECT_TRUE(this->lock_.TryLockFor(hours::max()));
  this->lock_.unlock();
  EXPECT_TRUE(this->lock_.TryLockUntil(steady_clock::time_point::min()));
  this->lock_.unlock();
  EXPECT_TRUE(this->lock_.TryLockUntil(steady_clock::now() + seconds(1)));
  this->lock_.unlock();
}

TYPED_TEST(RealTime, GivesUpALockThatStaysHeldAndNotBefore) {
  const StdoutCapture output;
  const Holder<TypeParam> holder(this->lock_);
  EXPECT_FALSE(this->lock_.TryLockFor(seconds(0)));
  EXPECT_FALSE(this->lock_.TryLockFor(nanoseconds::min()));
  EXPECT_FALSE(this->lock_.TryLockUntil(steady_clock::time_point()));
  const auto deadline = steady_clock::now() + milliseconds(20);
  EXPECT_FALSE(this->lock_.TryLockFor(milliseconds(20)));
  EXPECT_GE(steady_clock::now(), deadline);
  EXPECT_EQ(output.Text(), "");
}

TYPED_TEST(RealTime, WaitsForALockThatIsReleased) {
  Holder<TypeParam> holder(this->lock_);
  Latch about_to_wait;
#ifndef __SANITIZE_THREAD__  // which never sees this call
  const ScopedHook hook(
      orvo_test::pthread_mutex_clocklock_calls,
      [&](pthread_mutex_t* mutex, clockid_t clock, const timespec* time) {
        about_to_wait.CountDown();
        return orvo_test::pthread_mutex_clocklock_calls.Real(mutex, clock,
                                                             time);
      });
#endif
  std::thread waiting([&] {
#ifdef __SANITIZE_THREAD__
    about_to_wait.CountDown();
#endif
    // More than 32 bits of nanoseconds.
    const bool taken = this->lock_.TryLockFor(hours(24));
    EXPECT_TRUE(taken);
    if (taken) this->lock_.unlock();
    about_to_wait.CountDown();
  });
  about_to_wait.Wait();
  holder.Release();
  waiting.join();
}

TYPED_TEST(RealTime, WaitsUntilWokenAndHoldsTheLockAgain) {
  bool ready = false;  // guarded by lock_
  const auto is_ready = [&] { return ready; };
  const auto soon = steady_clock::now() + hours(24);
  for (int form = 0; form < 5; ++form) {
    SCOPED_TRACE(form);
    Latch waits;
    ready = false;
    std::thread waiting([&] {
      const orvo::ScopeLock scope(this->lock_);
      waits.CountDown();
      orvo::Condition& condition = this->condition_;
      switch (form) {
        case 0:
          while (!ready) EXPECT_TRUE(condition.WaitFor(this->lock_, hours(24)));
          break;
        case 1:
          while (!ready) EXPECT_TRUE(condition.WaitUntil(this->lock_, soon));
          break;
        case 2:
          EXPECT_TRUE(condition.WaitFor(this->lock_, hours::max(), is_ready));
          break;
        case 3:
          EXPECT_TRUE(condition.WaitUntil(this->lock_, soon, is_ready));
          break;
        default:
          condition.WaitUntilTrue(this->lock_, is_ready);
      }
      EXPECT_TRUE(ready);
      EXPECT_FALSE(IsFree(this->lock_));
    });
    waits.Wait();
    {
      const orvo::ScopeLock scope(this->lock_);
      ready = true;
      this->condition_.BroadcastWhileLocked();
    }
    waiting.join();
  }
}

TYPED_TEST(RealTime, EndsAWaitAtTheDeadlineAndNotBefore) {
  const orvo::ScopeLock scope(this->lock_);
  const auto never = [] { return false; };
  orvo::Condition& condition = this->condition_;
  EXPECT_FALSE(condition.WaitFor(this->lock_, seconds(-1)));
  EXPECT_FALSE(condition.WaitFor(this->lock_, nanoseconds::min(), never));
  EXPECT_FALSE(condition.WaitUntil(this->lock_, steady_clock::time_point()));
  const auto deadline = steady_clock::now() + milliseconds(20);
  EXPECT_FALSE(condition.WaitUntil(this->lock_, deadline, never));
  EXPECT_GE(steady_clock::now(), deadline);
}

TYPED_TEST(RealTime, TestsThePredicateBeforeAndAfterTheWait) {
  const orvo::ScopeLock scope(this->lock_);
  int tests = 0;
  const auto count = [&] { return ++tests > 1; };
  EXPECT_TRUE(this->condition_.WaitFor(this->lock_, seconds(0), count));
  EXPECT_EQ(tests, 2);
  EXPECT_TRUE(this->condition_.WaitFor(this->lock_, seconds(0), count));
  EXPECT_EQ(tests, 3);
  this->condition_.WaitUntilTrue(this->lock_, count);
  EXPECT_EQ(tests, 4);
}

TYPED_TEST(RealTime, PassesOnTheErrorOfAPredicate) {
  const orvo::ScopeLock scope(this->lock_);
  const auto fails = []() -> bool { throw std::runtime_error("no idea"); };
  EXPECT_THAT([&] { this->condition_.WaitUntilTrue(this->lock_, fails); },
              ThrowsMessage<std::runtime_error>("no idea"));
  EXPECT_THAT([&] { this->condition_.WaitFor(this->lock_, hours(1), fails); },
              ThrowsMessage<std::runtime_error>("no idea"));
}

template <typename LockType>
class RealTimeBooks : public RealTime<LockType> {};

using DebugLocks = testing::Types<orvo::DebugLock, orvo::DebugRLock>;
TYPED_TEST_SUITE(RealTimeBooks, DebugLocks);

TYPED_TEST(RealTimeBooks, AreKept) {
  EXPECT_TRUE(this->lock_.TryLockFor(seconds(1)));
  EXPECT_EQ(this->lock_.GetOwner(), std::this_thread::get_id());
  EXPECT_EQ(this->lock_.GetDepth(), 1);
  EXPECT_FALSE(this->condition_.WaitFor(this->lock_, seconds(0)));
  EXPECT_EQ(this->lock_.GetOwner(), std::this_thread::get_id());
  EXPECT_EQ(this->lock_.GetDepth(), 1);
  this->lock_.unlock();
  EXPECT_EQ(this->lock_.GetDepth(), 0);
}

TEST(RealTimeBooks, CountTheHolderOfARecursiveLock) {
  orvo::DebugRLock lock("tree");
  for (int depth = 1; depth <= 3; ++depth) {
    EXPECT_TRUE(lock.TryLockFor(seconds(0)));
    EXPECT_EQ(lock.GetDepth(), depth);
  }
  for (int depth = 2; depth >= 0; --depth) {
    lock.unlock();
    EXPECT_EQ(lock.GetDepth(), depth);
  }
}

TEST(RealTimeBooks, AreKeptBehindAPlainHandle) {
  orvo::Lock lock(std::make_unique<orvo::DebugLockImpl_>("orders"));
  EXPECT_TRUE(lock.TryLockFor(seconds(1)));
  lock.unlock();
  EXPECT_THROW(lock.unlock(), orvo::LockError);
  orvo::RLock tree(std::make_unique<orvo::DebugRLockImpl_>("tree"));
  EXPECT_TRUE(tree.TryLockFor(seconds(1)));
  EXPECT_TRUE(tree.TryLockFor(seconds(1)));
  tree.unlock();
  tree.unlock();
  EXPECT_THROW(tree.unlock(), orvo::LockError);
}

TEST(RealTimeCalls, WaitOnTheMonotonicClock) {
  orvo_test::RecordingLock lock;
  orvo::Condition condition;
  timespec deadline{};
  const ScopedHook hook(orvo_test::pthread_cond_clockwait_calls,
                        [&](pthread_cond_t*, pthread_mutex_t* mutex,
                            clockid_t clock, const timespec* time) {
                          EXPECT_EQ(mutex, lock.get_mutex());
                          EXPECT_EQ(clock, CLOCK_MONOTONIC);
                          deadline = *time;
                          return 0;
                        });
  EXPECT_TRUE(
      condition.WaitUntil(lock, steady_clock::time_point(milliseconds(5250))));
  EXPECT_EQ(deadline.tv_sec, 5);
  EXPECT_EQ(deadline.tv_nsec, 250000000);
  EXPECT_THAT(lock.TakeCalls(), ElementsAre("get_mutex", "get_mutex"));
}

TEST(RealTimeCalls, PrintAnUnexpectedErrorOfAWait) {
  orvo::Lock lock("a lock");
  orvo::Condition condition;
  const StdoutCapture output;
  const orvo::ScopeLock scope(lock);
  const ScopedFailure failure("pthread_cond_clockwait", EINVAL);
  EXPECT_FALSE(condition.WaitFor(lock, seconds(1)));
  EXPECT_FALSE(condition.WaitFor(lock, seconds(1), [] { return false; }));
  EXPECT_EQ(output.Text(),
            "pthread_cond_clockwait errcode 22\n"
            "pthread_cond_clockwait errcode 22\n");
}

#ifndef __SANITIZE_THREAD__  // which never sees this call
TEST(RealTimeCalls, LockOnTheMonotonicClock) {
  orvo::Lock lock("a lock");
  timespec deadline{};
  const ScopedHook hook(
      orvo_test::pthread_mutex_clocklock_calls,
      [&](pthread_mutex_t* mutex, clockid_t clock, const timespec* time) {
        EXPECT_EQ(mutex, lock.get_mutex());
        EXPECT_EQ(clock, CLOCK_MONOTONIC);
        deadline = *time;
        return ETIMEDOUT;
      });
  EXPECT_FALSE(lock.TryLockUntil(steady_clock::time_point(milliseconds(5250))));
  EXPECT_EQ(deadline.tv_sec, 5);
  EXPECT_EQ(deadline.tv_nsec, 250000000);
}

TEST(RealTimeCalls, EndInAnErrorWhereTheMutexCannotBeTaken) {
  const ScopedFailure failure("pthread_mutex_clocklock", EINVAL);
  const auto error = ThrowsMessage<orvo::LockError>(
      "pthread_mutex_clocklock failed with error 22");
  orvo::Lock lock("a lock");
  EXPECT_THAT([&] { lock.TryLockFor(seconds(1)); }, error);
  orvo::DebugLock debug("a lock");
  EXPECT_THAT([&] { debug.TryLockFor(seconds(1)); }, error);
  EXPECT_EQ(debug.GetDepth(), 0);
}
#endif

TYPED_TEST(RealTime, IsALockableOfTheStandardLibrary) {
  TypeParam other("another");
  { const std::lock_guard<TypeParam> guard(this->lock_); }
  {
    std::unique_lock<TypeParam> guard(this->lock_, std::defer_lock);
    EXPECT_TRUE(guard.try_lock());
    guard.unlock();
    guard.lock();
  }
  { const std::scoped_lock both(this->lock_, other); }
  std::lock(this->lock_, other);
  this->lock_.unlock();
  other.unlock();
}

TYPED_TEST(RealTime, WorksWithAStandardCondition) {
  std::condition_variable_any changed;
  Latch about_to_wait;
  bool ready = false;  // guarded by lock_
  std::thread waiting([&] {
    std::unique_lock<TypeParam> guard(this->lock_);
    about_to_wait.CountDown();
    changed.wait(guard, [&] { return ready; });
  });
  about_to_wait.Wait();
  {
    const std::lock_guard<TypeParam> guard(this->lock_);
    ready = true;
  }
  changed.notify_one();
  waiting.join();
}

}  // namespace
