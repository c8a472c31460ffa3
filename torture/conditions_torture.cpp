// Hand-overs through conditions, none of which may be lost or stuck; timed
// waits that begin in every phase of a second and must not end early; and
// clocks that are set by an hour meanwhile.
//
//   conditions_torture [--hand-overs=N] [--rounds=N] [--limit=SECONDS]
//                      [--twin=NAME]
//
// The twins are faults to be found: forgets_signals leaves out the second half
// of them, early_clock lets the library's clock lag by a second, and wall_clock
// turns waits in real time into waits on the clock that is set.
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <thread>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/lock.h"
#include "orvo/scope_lock.h"
#include "orvo/time_value.h"
#include "tests/support/interpose/calls.h"
#include "torture/support.h"

namespace {

using orvo_test::ScopedHook;
using orvo_torture::Faults;
using orvo_torture::InThreads;
using orvo_torture::Options;
using orvo_torture::Stopwatch;
using std::chrono::milliseconds;

// --- Hand-overs ------------------------------------------------------------

// Two threads take turns, each waiting for its own in one of the ways there
// are.
template <typename Handle>
class PingPong {
 public:
  PingPong(long turns, long forgotten) : turns_(turns), forgotten_(forgotten) {}

  void Play(int player) {
    for (long mine = player; mine < turns_; mine += 2) {
      orvo::DebugScopeLock scope(lock_, "Play", "ping_pong.cpp", player);
      Wait(scope, mine);
      faults_.Check(turn_ == mine, "the turns come one after the other");
      turn_ = mine + 1;
      if (mine < forgotten_) HandOver(scope, mine);
    }
  }

  Faults& Finish() {
    faults_.Check(turn_ == turns_, "all turns were taken");
    return faults_;
  }

 private:
  void Wait(orvo::OrvoLock& scope, long mine) {
    const auto is_mine = [&] { return turn_ == mine; };
    switch (mine % 5) {
      case 0:
        while (!is_mine()) changed_.WaitWhileLocked(lock_);
        break;
      case 1:
        while (!is_mine()) changed_.TimedWaitWhileLocked(scope, 1000);
        break;
      case 2:
        changed_.WaitUntilTrue(scope, is_mine);
        break;
      case 3:
        changed_.WaitUntil(
            scope, std::chrono::steady_clock::now() + std::chrono::hours(1),
            is_mine);
        break;
      default:
        changed_.WaitFor(lock_, std::chrono::hours(1), is_mine);
    }
  }

  void HandOver(orvo::DebugScopeLock& scope, long mine) {
    switch (mine % 7) {
      case 0:
        return changed_.BroadcastWhileLocked();
      case 1:
        scope.unlock();
        return changed_.Broadcast(lock_);
      case 2:
        scope.unlock();
        return changed_.Signal(lock_);
      default:
        return changed_.SignalWhileLocked();
    }
  }

  const long turns_;
  const long forgotten_;  // no hand-over from this turn on
  Handle lock_{"ping pong"};
  orvo::Condition changed_;
  long turn_ = 0;  // guarded by lock_
  Faults faults_;
};

template <typename Handle>
void HandOver(const std::string& name, long turns, long forgotten) {
  const Stopwatch watch;
  PingPong<Handle> game(turns, forgotten);
  InThreads(2, [&](int player) { game.Play(player); });
  orvo_torture::Report("conditions, " + name,
                       std::to_string(turns) + " hand-overs", game.Finish(),
                       watch);
}

// The forms that take the lock themselves wait for nothing but a signal, which
// therefore comes again until it was heard.
void WakeUp(long times) {
  const Stopwatch watch;
  orvo::Lock lock("wake-up");
  orvo::Condition changed;
  Faults faults;
  std::atomic<long> awake{0};
  InThreads(2, [&](int player) {
    for (long i = 0; i < times; ++i) {
      if (player == 1) {
        while (awake == i) {
          i % 2 == 0 ? changed.Signal(lock) : changed.Broadcast(lock);
          sched_yield();
        }
        continue;
      }
      if (i % 2 == 0) {
        changed.Wait(lock);
      } else {
        faults.Check(changed.TimedWait(lock, 1000), "a signal wakes the wait");
      }
      ++awake;
    }
  });
  faults.Check(lock.try_lock(), "the lock is free in the end");
  lock.unlock();
  orvo_torture::Report("conditions, wake-ups", std::to_string(times) + " waits",
                       faults, watch);
}

// --- Timed waits -----------------------------------------------------------

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
}

std::int64_t WallClock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return Nanoseconds(now);
}

void Raise(std::atomic<std::int64_t>& most, std::int64_t value) {
  std::int64_t former = most;
  while (former < value && !most.compare_exchange_weak(former, value)) {
  }
}

// Waits that begin at this moment of the wall clock.
class PhasedWaits {
 public:
  void WaitFrom(std::chrono::system_clock::time_point moment, int number) {
    std::this_thread::sleep_until(moment);
    orvo::Lock plain("plain");
    orvo::DebugLock debug("debug");
    if (number % 2 == 0) {
      WaitForSecond(plain, 1 + number / 2 % 2);
    } else {
      WaitForSecond(debug, 1 + number / 2 % 2);
    }
    WaitInRealTime(debug, std::chrono::microseconds(number % 100 * 97));
  }

  Faults& faults() { return faults_; }
  double MostMillisecondsLate() const {
    return static_cast<double>(most_late_.load()) / 1e6;
  }

 private:
  void WaitForSecond(orvo::OrvoLock& lock, int seconds) {
    orvo::Condition never;
    // What time() reads, which lags behind the other clock by up to a tick.
    timespec start{};
    clock_gettime(CLOCK_REALTIME_COARSE, &start);
    const bool woken = never.TimedWait(lock, seconds);
    const std::int64_t end = WallClock();
    const std::int64_t earliest =
        (start.tv_sec + seconds) * std::int64_t{1000000000};
    faults_.Check(!woken, "nobody wakes the wait");
    faults_.Check(end >= earliest, "a timed wait does not end early");
    Raise(most_late_, end - earliest);
  }

  void WaitInRealTime(orvo::OrvoLock& lock, std::chrono::nanoseconds length) {
    orvo::Condition never;
    const orvo::ScopeLock scope(lock);
    const auto start = std::chrono::steady_clock::now();
    faults_.Check(!never.WaitFor(lock, length), "nobody wakes the wait");
    const auto elapsed = std::chrono::steady_clock::now() - start;
    faults_.Check(elapsed >= length, "a wait in real time does not end early");
  }

  Faults faults_;
  std::atomic<std::int64_t> most_late_{0};
};

void WaitInAllPhases(long rounds) {
  constexpr int kPhases = 1000;
  const Stopwatch watch;
  PhasedWaits waits;
  for (long round = 0; round < rounds; ++round) {
    const auto start = std::chrono::time_point_cast<std::chrono::seconds>(
                           std::chrono::system_clock::now()) +
                       std::chrono::seconds(1);
    InThreads(kPhases, [&](int number) {
      waits.WaitFrom(start + milliseconds(number), number);
    });
  }
  orvo_torture::Report(
      "conditions, timed waits",
      std::to_string(rounds * kPhases) + " waits over all phases, at most " +
          std::to_string(waits.MostMillisecondsLate()) + " ms late",
      waits.faults(), watch);
}

// --- Clocks that are set ---------------------------------------------------

constexpr std::int64_t kHour = std::int64_t{3600} * 1000000000;

timespec AsTimespec(std::int64_t nanoseconds) {
  timespec time{};
  time.tv_sec = nanoseconds / 1000000000;
  time.tv_nsec = nanoseconds % 1000000000;
  return time;
}

// A wall clock that can be set. As in the system, waits that end at a moment
// of it notice.
class SettableClock {
 public:
  void Step(std::int64_t nanoseconds) { step_ += nanoseconds; }

  std::int64_t Now() const { return RealNow() + step_; }

 private:
  static std::int64_t RealNow() {
    timespec now{};
    orvo_test::clock_gettime_calls.Real(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
  }

  int TimedWait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                const timespec* deadline) const {
    constexpr std::int64_t kLook = 1000000;
    for (;;) {
      const std::int64_t left = Nanoseconds(*deadline) - Now();
      const timespec end = AsTimespec(RealNow() + std::min(left, kLook));
      const int result =
          orvo_test::pthread_cond_timedwait_calls.Real(condition, mutex, &end);
      if (result != ETIMEDOUT || left <= 0) return result;
    }
  }

  std::atomic<std::int64_t> step_{0};
  ScopedHook<std::time_t(std::time_t*)> time_{
      orvo_test::time_calls,
      [this](std::time_t*) { return std::time_t{Now() / 1000000000}; }};
  ScopedHook<int(clockid_t, timespec*)> clock_gettime_{
      orvo_test::clock_gettime_calls, [this](clockid_t clock, timespec* now) {
        const int result = orvo_test::clock_gettime_calls.Real(clock, now);
        if (clock == CLOCK_REALTIME) *now = AsTimespec(Now());
        return result;
      }};
  ScopedHook<int(pthread_cond_t*, pthread_mutex_t*, const timespec*)>
      timed_wait_{orvo_test::pthread_cond_timedwait_calls,
                  [this](pthread_cond_t* condition, pthread_mutex_t* mutex,
                         const timespec* deadline) {
                    return TimedWait(condition, mutex, deadline);
                  }};
};

// A timed wait in a thread of its own.
class Waiter {
 public:
  explicit Waiter(int seconds)
      : thread_([this, seconds] {
          const orvo::ScopeLock scope(lock_);
          begun_ = waiting_ = true;
          woken_ = changed_.TimedWaitWhileLocked(lock_, seconds);
          waiting_ = false;
        }) {
    while (!HasBegun()) std::this_thread::yield();
  }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;
  ~Waiter() { End(); }

  bool IsWaiting() {
    const orvo::ScopeLock scope(lock_);
    return waiting_;
  }

  void Wake() { changed_.Signal(lock_); }

  /// Whether it was woken.
  bool End() {
    if (thread_.joinable()) thread_.join();
    return woken_;
  }

 private:
  bool HasBegun() {
    const orvo::ScopeLock scope(lock_);
    return begun_;
  }

  orvo::Lock lock_{"waiter"};
  orvo::Condition changed_;
  bool begun_ = false;    // guarded by lock_
  bool waiting_ = false;  // guarded by lock_
  bool woken_ = false;
  std::thread thread_;
};

// The last step forward to the end of a wait.
void StepBeyond(SettableClock& clock, Waiter& waiter, Faults& faults) {
  // Longer than the clock takes to look at a deadline.
  std::this_thread::sleep_for(milliseconds(20));
  faults.Check(waiter.IsWaiting(),
               "no wait ends before its moment on the clock");
  clock.Step(kHour);
  faults.Check(!waiter.End(), "the time is up when the clock is set forward");
}

void SetForward(SettableClock& clock, Faults& faults) {
  Waiter waiter(1800);
  StepBeyond(clock, waiter, faults);
}

void SetBackward(SettableClock& clock, Faults& faults) {
  Waiter waiter(1);
  clock.Step(-kHour);
  std::this_thread::sleep_for(milliseconds(1100));
  faults.Check(waiter.IsWaiting(), "a clock set back lengthens the wait");
  waiter.Wake();
  faults.Check(waiter.End(), "a signal wakes the wait");
}

void SetBackwardAndForward(SettableClock& clock, Faults& faults) {
  Waiter waiter(1800);
  clock.Step(-kHour);
  clock.Step(kHour);
  StepBeyond(clock, waiter, faults);
}

void CheckLength(const char* what, Faults& faults,
                 const std::function<void()>& wait) {
  const Stopwatch watch;
  wait();
  faults.Check(watch.Seconds() >= 0.02,
               (std::string(what) + " is not too short").c_str());
  // An hour too long would be the fault; a busy machine is none.
  faults.Check(watch.Seconds() < 60,
               (std::string(what) + " is not too long").c_str());
}

void WaitInRealTime(Faults& faults) {
  constexpr milliseconds kLength(20);
  orvo::Lock lock("real time");
  orvo::Condition never;
  const orvo::ScopeLock scope(lock);
  for (int i = 0; i < 10; ++i) {
    CheckLength("WaitFor()", faults, [&] { never.WaitFor(lock, kLength); });
    CheckLength("TryLockFor()", faults, [&] {
      faults.Check(!lock.TryLockFor(kLength), "a held lock is not taken");
    });
    CheckLength("Sleep()", faults, [] { orvo::Sleep(20); });
  }
}

// Waits in real time, and the monotonic clock, while the clock is set again and
// again.
void SetAllTheTime(SettableClock& clock, Faults& faults) {
  std::atomic<bool> over{false};
  InThreads(3, [&](int player) {
    if (player == 0) {
      WaitInRealTime(faults);
      over = true;
    }
    for (orvo::TimeValue last = orvo::TimeValue::GetNow(); !over;) {
      if (player == 1) {
        clock.Step(kHour);
        std::this_thread::sleep_for(milliseconds(1));
        clock.Step(-kHour);
        std::this_thread::sleep_for(milliseconds(1));
        continue;
      }
      const orvo::TimeValue now = orvo::TimeValue::GetNow();
      faults.Check(now >= last, "the monotonic clock is never set back");
      faults.Check(now - last < orvo::TimeValue(60),
                   "the monotonic clock is never set forward");
      last = now;
    }
  });
}

void SetClocks(long rounds) {
  const Stopwatch watch;
  Faults faults;
  SettableClock clock;
  for (long round = 0; round < rounds; ++round) {
    SetForward(clock, faults);
    SetBackward(clock, faults);
    SetBackwardAndForward(clock, faults);
    SetAllTheTime(clock, faults);
  }
  orvo_torture::Report("conditions, clock steps",
                       std::to_string(rounds) + " rounds of steps of an hour",
                       faults, watch);
}

// --- Broken twins ----------------------------------------------------------

void BreakWithEarlyClock(long rounds) {
  const ScopedHook hook(orvo_test::time_calls, [](std::time_t* seconds) {
    return orvo_test::time_calls.Real(seconds) - 1;
  });
  WaitInAllPhases(rounds);
}

void BreakWithWallClock(long rounds) {
  const ScopedHook hook(
      orvo_test::pthread_cond_clockwait_calls,
      [](pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
         const timespec* deadline) {
        timespec now{};
        clock_gettime(clock, &now);
        const timespec moment =
            AsTimespec(WallClock() + Nanoseconds(*deadline) - Nanoseconds(now));
        return pthread_cond_timedwait(condition, mutex, &moment);
      });
  SetClocks(rounds);
}

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const orvo_torture::TimeLimit limit(options.Number("limit", 120),
                                      "the waits of the conditions");
  const long turns = options.Number("hand-overs", 50000);
  const long rounds = options.Number("rounds", 1);
  const std::string twin = options.Text("twin");
  if (twin == "forgets_signals") {
    HandOver<orvo::Lock>(twin, turns, turns / 2);
  } else if (twin == "early_clock") {
    BreakWithEarlyClock(rounds);
  } else if (twin == "wall_clock") {
    BreakWithWallClock(rounds);
  } else {
    HandOver<orvo::Lock>("Lock", turns, turns);
    HandOver<orvo::RLock>("RLock", turns, turns);
    HandOver<orvo::DebugLock>("DebugLock", turns, turns);
    HandOver<orvo::DebugRLock>("DebugRLock", turns, turns);
    WakeUp(turns / 50);
    WaitInAllPhases(rounds);
    SetClocks(rounds);
  }
  return orvo_torture::ExitStatus();
}
