// Threads take and release one lock in all the ways there are, and check at
// each step that they hold it alone. Sleeps last for a turn of the other
// threads.
//
//   locks_torture [--acquisitions=N] [--debug=N] [--threads=N]
//                 [--limit=SECONDS] [--twin=NAME]
//
// Without --threads for 2, 4, 10 and 32 of them, each with N acquisitions of
// every plain and of every debug lock. Faults to be found: --threads=1, with
// which nobody meets, and --twin=NAME, which takes a broken lock in place of
// one of them; see kTwins below.
#include <sched.h>
#include <semaphore.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <memory>
#include <random>
#include <type_traits>
#include <utility>

#include "orvo/condition.h"
#include "orvo/debug_locks.h"
#include "orvo/lock.h"
#include "orvo/orvo_lock_debug.h"
#include "orvo/scope_lock.h"
#include "tests/support/interpose/calls.h"
#include "tests/support/silence.h"
#include "torture/support.h"

namespace {

using orvo_torture::Faults;
using orvo_torture::Options;
using orvo_torture::Scatter;

constexpr unsigned kSeed = 20261121;

template <typename Handle>
constexpr bool kKeepsBooks = std::is_base_of_v<orvo::DebugLock, Handle>;

template <typename Handle>
constexpr bool kRecursive = std::is_base_of_v<orvo::RLock, Handle> ||
                            std::is_base_of_v<orvo::DebugRLock, Handle>;

// Lets a holder wait until another thread has come to the lock, however seldom
// a busy machine runs the two at once.
class Guests {
 public:
  Guests() { sem_init(&visits_, 0, 0); }
  Guests(const Guests&) = delete;
  Guests& operator=(const Guests&) = delete;
  ~Guests() { sem_destroy(&visits_); }

  /// Whether the calling thread is to visit the holder.
  bool Invited() {
    return invitation_.load(std::memory_order_relaxed) &&
           invitation_.exchange(false, std::memory_order_relaxed);
  }

  void Visited() { sem_post(&visits_); }

  /// Whether somebody came within a millisecond; else all may be waiting for
  /// the lock.
  bool Await() {
    timespec deadline{};
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_nsec += 1000000;
    deadline.tv_sec += deadline.tv_nsec / 1000000000;
    deadline.tv_nsec %= 1000000000;
    // Forgets who came too late for an earlier invitation.
    while (sem_trywait(&visits_) == 0) {
    }
    invitation_.store(true, std::memory_order_relaxed);
    const bool visited = sem_timedwait(&visits_, &deadline) == 0;
    invitation_.store(false, std::memory_order_relaxed);
    return visited;
  }

 private:
  std::atomic<bool> invitation_{false};
  sem_t visits_;
};

// What the threads of one run share.
template <typename Handle>
struct Arena {
  Arena(Handle handle, long goal_of_each, bool may_wait)
      : lock(std::move(handle)), goal(goal_of_each), waits(may_wait) {}

  Handle lock;
  orvo::Condition changed;
  const long goal;   // acquisitions of each thread
  const bool waits;  // which do not ask the implementation
  Faults faults;
  std::atomic<int> inside{0};
  std::atomic<std::uint64_t> expected{0};  // sum of the values of all threads
  // What the lock guards: several words, so that an intruder is seen in one.
  std::uint64_t checksum = 0;
  long acquisitions = 0;
  int last = 0;
  Guests guests;
  std::atomic<long> meetings{0};
  std::atomic<long> refusals{0};
};

// How often threads wanted a lock that was held, over all runs.
struct Contention {
  long meetings = 0;
  long refusals = 0;
};

// One thread of a run.
template <typename Handle>
class Player {
 public:
  Player(Arena<Handle>& arena, int number)
      : arena_(arena),
        number_(number),
        random_(kSeed + static_cast<unsigned>(number)) {}

  void Play() {
    while (acquired_ < arena_.goal) {
      try {
        Step();
      } catch (const std::exception& error) {
        arena_.faults.Add(error.what());
        ++acquired_;  // else a lock that always fails would last for ever
      }
    }
    arena_.expected += sum_;
  }

 private:
  void Step() {
    if (arena_.guests.Invited()) {
      random_() % 2 == 0 ? PlayTryLock() : PlayTimedLock();
      return arena_.guests.Visited();
    }
    switch (random_() % 16) {
      case 0:
        return PlayNested();
      case 1:
      case 2:
        return PlayScopeLock();
      case 3:
        return PlayDebugScopeLock();
      case 4:
        return PlayTimedLock();
      case 5:
        return PlayTryLockFor();
      case 6:
      case 7:
      case 8:
        return PlayTryLock();
      case 9:
        return PlayCondition();
      default:
        arena_.lock.lock();
        Enter();
        Leave();
        arena_.lock.unlock();
        CheckReleased();
    }
  }

  void PlayTryLock() {
    if (!arena_.lock.try_lock()) return Refuse();
    Enter();
    Leave();
    arena_.lock.unlock();
  }

  void PlayTimedLock() {
    const double seconds = 1e-6 * static_cast<double>(random_() % 8);
    if (!arena_.lock.TimedLock(seconds)) return Refuse();
    Enter();
    Leave();
    arena_.lock.unlock();
  }

  void PlayTryLockFor() {
    if (!arena_.waits) return;
    const std::chrono::microseconds length(random_() % 20);
    if (!arena_.lock.TryLockFor(length)) return Refuse();
    Enter();
    Leave();
    arena_.lock.unlock();
  }

  void PlayScopeLock() {
    orvo::ScopeLock scope(arena_.lock);
    Enter();
    Leave();
    scope.unlock();
    CheckReleased();
    if (random_() % 2 == 0) {
      scope.lock();
    } else if (!scope.try_lock()) {
      return;
    }
    Enter();
    Leave();
  }

  void PlayDebugScopeLock() {
    const orvo::DebugScopeLock scope(arena_.lock, "Play", "player.cpp",
                                     number_);
    Enter();
    if constexpr (kKeepsBooks<Handle>) {
      const auto place =
          arena_.lock.GetPendingReference(std::this_thread::get_id());
      arena_.faults.Check(place.GetAsString() ==
                              "Play --> player.cpp:" + std::to_string(number_),
                          "the books name the place");
    }
    Leave();
  }

  void PlayNested() {
    const int deepest =
        kRecursive<Handle> ? 2 + static_cast<int>(random_() % 3) : 1;
    arena_.lock.lock();
    Enter();
    for (int depth = 2; depth <= deepest; ++depth) {
      TakeAgain();
      CheckHeld(depth);
      Count();
    }
    for (int depth = deepest; depth > 1; --depth) {
      arena_.lock.unlock();
      CheckHeld(depth - 1);
    }
    if (random_() % 32 == 0) WaitForOthers();
    Leave();
    arena_.lock.unlock();
    CheckReleased();
  }

  void TakeAgain() {
    switch (random_() % 3) {
      case 0:
        return arena_.lock.lock();
      case 1:
        return arena_.faults.Check(arena_.lock.try_lock(),
                                   "a holder's try_lock() succeeds");
      default:
        return arena_.faults.Check(arena_.lock.TimedLock(0),
                                   "a holder's TimedLock() succeeds");
    }
  }

  void PlayCondition() {
    if (!arena_.waits) return;
    switch (random_() % 8) {
      case 0:
        return arena_.changed.Broadcast(arena_.lock);
      case 1:
        return WaitInside(
            [&] { arena_.changed.TimedWaitWhileLocked(arena_.lock, 0); });
      case 2:
        return WaitInside([&] {
          arena_.changed.WaitFor(arena_.lock, std::chrono::microseconds(20));
        });
      default:
        return arena_.changed.Signal(arena_.lock);
    }
  }

  template <typename Wait>
  void WaitInside(Wait wait) {
    const orvo::ScopeLock scope(arena_.lock);
    Enter();
    Leave();
    wait();
    Enter();
    Leave();
  }

  // Another thread has the lock.
  void Refuse() {
    ++arena_.refusals;
    CheckReleased();
  }

  // The lock was just taken, for the first time.
  void Enter() {
    arena_.faults.Check(arena_.inside.fetch_add(1) == 0,
                        "a holder is alone (at first)");
    CheckHeld(1);
    Count();
  }

  void Count() {
    const std::uint64_t value = Scatter(static_cast<std::uint64_t>(number_),
                                        static_cast<std::uint64_t>(acquired_));
    const std::uint64_t before = arena_.checksum;
    ++arena_.acquisitions;
    arena_.last = number_;
    if (value % 256 == 0) WaitForOthers();
    arena_.faults.Check(arena_.last == number_, "what is guarded stays");
    arena_.checksum = before + value;
    sum_ += value;
    ++acquired_;
  }

  void WaitForOthers() {
    if (arena_.guests.Await()) ++arena_.meetings;
  }

  // The lock is about to be released for the last time.
  void Leave() {
    arena_.faults.Check(arena_.inside.fetch_sub(1) == 1,
                        "a holder is alone (to the end)");
  }

  void CheckHeld([[maybe_unused]] int depth) {
    arena_.faults.Check(arena_.inside == 1, "a holder is alone (meanwhile)");
    if constexpr (kKeepsBooks<Handle>) {
      arena_.faults.Check(arena_.lock.GetOwner() == std::this_thread::get_id(),
                          "the books name the holder");
      arena_.faults.Check(arena_.lock.GetDepth() == depth,
                          "the books count the depth");
    }
  }

  void CheckReleased() {
    if constexpr (kKeepsBooks<Handle>) {
      arena_.faults.Check(arena_.lock.GetOwner() != std::this_thread::get_id(),
                          "the books forget who released");
    }
  }

  Arena<Handle>& arena_;
  const int number_;
  std::minstd_rand random_;
  std::uint64_t sum_ = 0;
  long acquired_ = 0;
};

// Takes the lock after the others are done, with a time limit of its own.
template <typename Handle>
void CheckFree(Arena<Handle>& arena) {
  arena.faults.Check(arena.checksum == arena.expected, "the checksum is right");
  bool free = false;
  std::thread([&] {
    free = arena.lock.try_lock();
    if (free) arena.lock.unlock();
  }).join();
  arena.faults.Check(free, "the lock is free in the end");
  if constexpr (kKeepsBooks<Handle>) {
    arena.faults.Check(arena.lock.GetOwner() == std::thread::id(),
                       "the books name no holder in the end");
    arena.faults.Check(arena.lock.GetDepth() == 0, "the depth is 0 in the end");
  }
}

template <typename Handle>
Contention Torture(const std::string& name, Handle handle, int threads,
                   long acquisitions, bool waits) {
  const orvo_torture::Stopwatch watch;
  Arena<Handle> arena(std::move(handle), (acquisitions + threads - 1) / threads,
                      waits);
  orvo_torture::InThreads(
      threads, [&arena](int number) { Player<Handle>(arena, number).Play(); });
  CheckFree(arena);
  orvo_torture::Report("locks, " + name,
                       std::to_string(threads) + " threads, " +
                           std::to_string(arena.acquisitions) +
                           " acquisitions, " + std::to_string(arena.meetings) +
                           " meetings, " + std::to_string(arena.refusals) +
                           " refusals",
                       arena.faults, watch);
  return {arena.meetings, arena.refusals};
}

// --- Broken twins ----------------------------------------------------------

class DoesNothing : public orvo::LockImpl_ {
 public:
  using LockImpl_::LockImpl_;
  void lock() override {}
  void unlock() override {}
  bool try_lock() override { return true; }
  bool TimedLock(double) override { return true; }
};

// Gives up every hundredth acquisition as soon as it has it.
class UnlocksTooEarly : public orvo::LockImpl_ {
 public:
  using LockImpl_::LockImpl_;

  void lock() override {
    LockImpl_::lock();
    if (++count_ % 100 != 0) return;
    released_ = true;
    LockImpl_::unlock();
  }

  void unlock() override {
    if (!std::exchange(released_, false)) LockImpl_::unlock();
  }

 private:
  std::atomic<int> count_{0};
  static thread_local bool released_;
};
thread_local bool UnlocksTooEarly::released_ = false;

// Says yes to who does not have it.
class PretendsToBeFree : public orvo::LockImpl_ {
 public:
  using LockImpl_::LockImpl_;

  bool try_lock() override {
    pretended_ = !LockImpl_::try_lock();
    return true;
  }

  void unlock() override {
    if (!std::exchange(pretended_, false)) LockImpl_::unlock();
  }

 protected:
  static thread_local bool pretended_;
};
thread_local bool PretendsToBeFree::pretended_ = false;

// The same when the time is up.
class SucceedsAtTimeOut : public PretendsToBeFree {
 public:
  using PretendsToBeFree::PretendsToBeFree;
  bool try_lock() override {
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): this twin's is sound
    return LockImpl_::try_lock();
  }
  bool TimedLock(double seconds) override {
    pretended_ = !LockImpl_::TimedLock(seconds);
    return true;
  }
};

// Counts one acquisition too few.
class RecursionOffByOne : public orvo::RLockImpl_ {
 public:
  using RLockImpl_::RLockImpl_;

  void lock() override {
    RLockImpl_::lock();
    ++depth_;
  }
  bool try_lock() override {
    if (!RLockImpl_::try_lock()) return false;
    ++depth_;
    return true;
  }
  bool TimedLock(double seconds) override {
    if (!RLockImpl_::TimedLock(seconds)) return false;
    ++depth_;
    return true;
  }
  void unlock() override {
    const int depth = depth_--;
    if (depth == 1 && std::exchange(early_, false)) return;
    if (depth == 2) {
      RLockImpl_::unlock();
      early_ = true;
    }
    RLockImpl_::unlock();
  }

 private:
  static thread_local int depth_;
  static thread_local bool early_;  // already released for good
};
thread_local int RecursionOffByOne::depth_ = 0;
thread_local bool RecursionOffByOne::early_ = false;

class ForgetsItsOwner : public orvo::DebugLockImpl_ {
 public:
  using DebugLockImpl_::DebugLockImpl_;
  void lock() override {
    DebugLockImpl_::lock();
    SetOwner(std::thread::id());
  }
  void unlock() override {
    SetOwner(std::this_thread::get_id());
    DebugLockImpl_::unlock();
  }
};

constexpr int kTwinThreads = 4;
constexpr long kTwinAcquisitions = 200000;

template <typename Handle, typename Impl>
void TortureTwin(const std::string& name) {
  Torture(name, Handle(std::make_unique<Impl>(name)), kTwinThreads,
          kTwinAcquisitions, false);
}

const struct {
  const char* name;
  void (*torture)(const std::string& name);
} kTwins[] = {
    {"does_nothing", TortureTwin<orvo::Lock, DoesNothing>},
    {"unlocks_too_early", TortureTwin<orvo::Lock, UnlocksTooEarly>},
    {"pretends_to_be_free", TortureTwin<orvo::Lock, PretendsToBeFree>},
    {"succeeds_at_time_out", TortureTwin<orvo::Lock, SucceedsAtTimeOut>},
    {"recursion_off_by_one", TortureTwin<orvo::RLock, RecursionOffByOne>},
    {"forgets_its_owner", TortureTwin<orvo::DebugLock, ForgetsItsOwner>},
};

void TortureTwinNamed(const std::string& name) {
  for (const auto& twin : kTwins) {
    if (twin.name == name) return twin.torture(name);
  }
  std::fprintf(stderr, "There is no twin %s.\n", name.c_str());
  std::_Exit(2);
}

void TortureAll(int threads, const Options& options, Contention& contention) {
  const long plain = options.Number("acquisitions", 100000);
  const long debug = options.Number("debug", 50000);
  for (const Contention& each :
       {Torture("Lock", orvo::Lock("arena"), threads, plain, true),
        Torture("RLock", orvo::RLock("arena"), threads, plain, true),
        Torture("DebugLock", orvo::DebugLock("arena"), threads, debug, true),
        Torture("DebugRLock", orvo::DebugRLock("arena"), threads, debug,
                true)}) {
    contention.meetings += each.meetings;
    contention.refusals += each.refusals;
  }
}

// A lock that nobody wants would prove nothing.
void CheckContention(const Contention& contention) {
  const orvo_torture::Stopwatch watch;
  Faults faults;
  faults.Check(contention.meetings > 0, "threads come to a lock that is held");
  faults.Check(contention.refusals > 0, "a held lock is refused");
  orvo_torture::Report("locks, in all",
                       std::to_string(contention.meetings) + " meetings, " +
                           std::to_string(contention.refusals) + " refusals",
                       faults, watch);
}

// With this many threads or, if that is 0, with fewer and with more.
void TortureAll(const Options& options) {
  const int threads = static_cast<int>(options.Number("threads", 0));
  Contention contention;
  if (threads != 0) {
    TortureAll(threads, options, contention);
  } else {
    for (const int each : {2, 4, 10, 32}) TortureAll(each, options, contention);
  }
  CheckContention(contention);
}

}  // namespace

int main(int argc, char** argv) {
  const Options options(argc, argv);
  const orvo_torture::TimeLimit limit(options.Number("limit", 600),
                                      "the games with the locks");
  const orvo_test::Silence silence;
  const orvo_test::ScopedHook hook(
      orvo_test::nanosleep_calls,
      [](const timespec*, timespec*) { return sched_yield(); });
  const std::string twin = options.Text("twin");
  if (!twin.empty()) {
    TortureTwinNamed(twin);
  } else {
    TortureAll(options);
  }
  return orvo_torture::ExitStatus();
}
