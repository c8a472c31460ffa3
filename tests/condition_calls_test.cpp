// How a condition calls the lock and the system, and what it makes of failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "orvo/condition.h"
#include "orvo/scope_lock.h"
#include "tests/support/capture.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/recording_lock.h"
#include "tests/support/source_lines.h"

namespace {

using orvo_test::RecordingLock;
using orvo_test::ScopedHook;
using orvo_test::StdoutCapture;
using testing::ElementsAre;
using testing::EndsWith;
using testing::ThrowsMessage;

// Answers every call of the condition family itself and notes it.
class ConditionCalls : public testing::Test {
 protected:
  orvo::Condition condition_;
  RecordingLock lock_;
  pthread_mutex_t* mutex_ = nullptr;  // what a wait was given
  timespec deadline_{};
  time_t now_ = 1000;
  int result_ = 0;  // of every call
  std::vector<std::string> calls_;

  // The calls of lock and system so far, in order; forgets them.
  std::vector<std::string> TakeCalls() {
    NoteLockCalls();
    return std::move(calls_);
  }

 private:
  void NoteLockCalls() {
    for (const std::string& call : lock_.TakeCalls()) calls_.push_back(call);
  }

  int Note(const char* call) {
    NoteLockCalls();
    calls_.emplace_back(call);
    return result_;
  }

  ScopedHook<int(pthread_cond_t*)> signal_{
      orvo_test::pthread_cond_signal_calls,
      [this](pthread_cond_t*) { return Note("pthread_cond_signal"); }};
  ScopedHook<int(pthread_cond_t*)> broadcast_{
      orvo_test::pthread_cond_broadcast_calls,
      [this](pthread_cond_t*) { return Note("pthread_cond_broadcast"); }};
  ScopedHook<int(pthread_cond_t*, pthread_mutex_t*)> wait_{
      orvo_test::pthread_cond_wait_calls,
      [this](pthread_cond_t*, pthread_mutex_t* mutex) {
        mutex_ = mutex;
        return Note("pthread_cond_wait");
      }};
  ScopedHook<int(pthread_cond_t*, pthread_mutex_t*, const timespec*)>
      timed_wait_{orvo_test::pthread_cond_timedwait_calls,
                  [this](pthread_cond_t*, pthread_mutex_t* mutex,
                         const timespec* deadline) {
                    mutex_ = mutex;
                    deadline_ = *deadline;
                    return Note("pthread_cond_timedwait");
                  }};
  ScopedHook<time_t(time_t*)> time_{orvo_test::time_calls, [this](time_t*) {
                                      Note("time");
                                      return now_;
                                    }};
};

constexpr char kTaken[] = "LockWithFilenameAndLineNumber";

TEST_F(ConditionCalls, OfWaitTakeTheLockAndAskItForItsMutex) {
  condition_.Wait(lock_);
  EXPECT_THAT(TakeCalls(),
              ElementsAre(kTaken, "get_mutex", "pthread_cond_wait", "unlock"));
  EXPECT_EQ(mutex_, lock_.get_mutex());
}

TEST_F(ConditionCalls, OfTimedWaitTakeTheLockAndAskItForItsMutex) {
  EXPECT_TRUE(condition_.TimedWait(lock_, 5));
  EXPECT_THAT(TakeCalls(), ElementsAre(kTaken, "time", "get_mutex",
                                       "pthread_cond_timedwait", "unlock"));
  EXPECT_EQ(mutex_, lock_.get_mutex());
}

TEST_F(ConditionCalls, OfSignalTakeTheLock) {
  condition_.Signal(lock_);
  EXPECT_THAT(TakeCalls(),
              ElementsAre(kTaken, "pthread_cond_signal", "unlock"));
}

TEST_F(ConditionCalls, OfBroadcastTakeTheLock) {
  condition_.Broadcast(lock_);
  EXPECT_THAT(TakeCalls(),
              ElementsAre(kTaken, "pthread_cond_broadcast", "unlock"));
}

TEST_F(ConditionCalls, OfTheLockedFormsLeaveTheLockAlone) {
  condition_.WaitWhileLocked(lock_);
  EXPECT_THAT(TakeCalls(), ElementsAre("get_mutex", "pthread_cond_wait"));
  EXPECT_EQ(mutex_, lock_.get_mutex());
  TakeCalls();

  EXPECT_TRUE(condition_.TimedWaitWhileLocked(lock_, 5));
  EXPECT_THAT(TakeCalls(),
              ElementsAre("time", "get_mutex", "pthread_cond_timedwait"));
  EXPECT_EQ(mutex_, lock_.get_mutex());
  TakeCalls();

  condition_.SignalWhileLocked();
  EXPECT_THAT(TakeCalls(), ElementsAre("pthread_cond_signal"));
  condition_.BroadcastWhileLocked();
  EXPECT_THAT(TakeCalls(), ElementsAre("pthread_cond_broadcast"));
}

TEST_F(ConditionCalls, OfTheLockedFormsAskThroughScopeLocksForTheMutexOnly) {
  orvo::ScopeLock outer(lock_);
  outer.unlock();
  orvo::ScopeLock inner(outer);
  TakeCalls();
  condition_.WaitWhileLocked(inner);
  EXPECT_THAT(TakeCalls(), ElementsAre("get_mutex", "pthread_cond_wait"));
  EXPECT_TRUE(condition_.TimedWaitWhileLocked(inner, 5));
  EXPECT_THAT(TakeCalls(),
              ElementsAre("time", "get_mutex", "pthread_cond_timedwait"));
}

TEST_F(ConditionCalls, NameTheFunctionAndItsPlaceToTheLock) {
  const struct {
    const char* function;
    std::function<void()> call;
  } cases[] = {
      {"Wait", [this] { condition_.Wait(lock_); }},
      {"TimedWait", [this] { condition_.TimedWait(lock_, 1); }},
      {"Signal", [this] { condition_.Signal(lock_); }},
      {"Broadcast", [this] { condition_.Broadcast(lock_); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.function);
    const std::string quoted = '"' + std::string(c.function) + '"';
    c.call();
    EXPECT_EQ(lock_.function(), c.function);
    EXPECT_THAT(lock_.file(), EndsWith("condition.cpp"));
    EXPECT_EQ(lock_.line(),
              orvo_test::ReportedLine("src/condition.cpp", quoted));
  }
}

TEST_F(ConditionCalls, WaitUntilAWholeSecondOfTheWallClock) {
  const struct {
    time_t now;
    int seconds;
    time_t deadline;
  } cases[] = {
      {1000, 0, 1000},
      {1000, 2, 1002},
      {1000, -3, 997},
      {1800000000, INT_MAX, 3947483647},
      {1800000000, INT_MIN, -347483648},
      {5000000000, 1, 5000000001},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seconds);
    now_ = c.now;
    condition_.TimedWait(lock_, c.seconds);
    EXPECT_EQ(deadline_.tv_sec, c.deadline);
    EXPECT_EQ(deadline_.tv_nsec, 0);
    deadline_ = timespec{};
    condition_.TimedWaitWhileLocked(lock_, c.seconds);
    EXPECT_EQ(deadline_.tv_sec, c.deadline);
    EXPECT_EQ(deadline_.tv_nsec, 0);
  }
}

TEST_F(ConditionCalls, ReportATimeOutInSilence) {
  const StdoutCapture output;
  result_ = ETIMEDOUT;
  EXPECT_FALSE(condition_.TimedWait(lock_, 1));
  EXPECT_FALSE(condition_.TimedWaitWhileLocked(lock_, 1));
  EXPECT_EQ(output.Text(), "");
}

TEST_F(ConditionCalls, AnswerInSilenceWhenWoken) {
  const StdoutCapture output;
  EXPECT_TRUE(condition_.TimedWait(lock_, 1));
  EXPECT_TRUE(condition_.TimedWaitWhileLocked(lock_, 1));
  EXPECT_EQ(output.Text(), "");
}

TEST_F(ConditionCalls, PrintAnUnexpectedErrorOfATimedWait) {
  const StdoutCapture output;
  result_ = EINVAL;
  EXPECT_FALSE(condition_.TimedWait(lock_, 1));
  EXPECT_EQ(output.Text(), "pthread_cond_timedwait errcode 22\n");
  result_ = EPERM;
  EXPECT_FALSE(condition_.TimedWaitWhileLocked(lock_, 1));
  EXPECT_EQ(output.Text(),
            "pthread_cond_timedwait errcode 22\n"
            "pthread_cond_timedwait errcode 1\n");
}

TEST_F(ConditionCalls, IgnoreTheErrorsOfAllOthers) {
  const StdoutCapture output;
  result_ = EINVAL;
  condition_.Wait(lock_);
  condition_.Signal(lock_);
  condition_.Broadcast(lock_);
  EXPECT_THAT(TakeCalls(),
              ElementsAre(kTaken, "get_mutex", "pthread_cond_wait", "unlock",
                          kTaken, "pthread_cond_signal", "unlock",  //
                          kTaken, "pthread_cond_broadcast", "unlock"));
  EXPECT_EQ(output.Text(), "");
}

TEST_F(ConditionCalls, EndWithTheErrorOfALockThatCannotBeTaken) {
  lock_.Forbid(kTaken);
  const auto error =
      ThrowsMessage<orvo::LockError>("no LockWithFilenameAndLineNumber");
  EXPECT_THAT([this] { condition_.Wait(lock_); }, error);
  EXPECT_THAT([this] { condition_.TimedWait(lock_, 1); }, error);
  EXPECT_THAT([this] { condition_.Signal(lock_); }, error);
  EXPECT_THAT([this] { condition_.Broadcast(lock_); }, error);
  EXPECT_THAT(TakeCalls(), ElementsAre(kTaken, kTaken, kTaken, kTaken));
}

TEST_F(ConditionCalls, ReleaseTheLockWhenTheWaitFails) {
  lock_.Forbid("get_mutex");
  EXPECT_THAT([this] { condition_.Wait(lock_); },
              ThrowsMessage<orvo::LockError>("no get_mutex"));
  EXPECT_THAT([this] { condition_.TimedWait(lock_, 1); },
              ThrowsMessage<orvo::LockError>("no get_mutex"));
  EXPECT_THAT(TakeCalls(), ElementsAre(kTaken, "get_mutex", "unlock",  //
                                       kTaken, "time", "get_mutex", "unlock"));
}

TEST(Condition, IsInitialisedWithDefaultAttributesAndDestroyedOnce) {
  std::vector<std::string> calls;
  const ScopedHook init(
      orvo_test::pthread_cond_init_calls,
      [&](pthread_cond_t*, const pthread_condattr_t* attributes) {
        calls.emplace_back(attributes == nullptr ? "init" : "init with more");
        return 0;
      });
  const ScopedHook destroy(orvo_test::pthread_cond_destroy_calls,
                           [&](pthread_cond_t*) {
                             calls.emplace_back("destroy");
                             return 0;
                           });
  { const orvo::Condition condition; }
  EXPECT_THAT(calls, ElementsAre("init", "destroy"));
}

}  // namespace
